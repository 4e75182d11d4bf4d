// The paths of an end point, worst first, each with the slack of its own delays.
#include "analysis/PathSearch.h"

#include "Analyzed.h"
#include "analysis/EngineRun.h"
#include "analysis/Harvest.h"

#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;

// Three ways from r0 to r1, through a, b and c. Those through b and c take the same time.
std::string threeWays() {
    std::string nets = "(INTERCONNECT clk r0/C (0)) (INTERCONNECT clk r1/C (0)) (INTERCONNECT w/Z r1/D (0)) ";
    std::string gates, inputs;
    for (const auto& [name, delay] :
         {std::pair("c", "20:20:40"), std::pair("a", "10:10:50"), std::pair("b", "20:20:40")}) {
        const std::string gate(name), input = "I" + gate;
        nets += "(INTERCONNECT r0/Q " + gate + "/A (0)) (INTERCONNECT " + gate + "/Y w/" + input + " (0)) ";
        gates += Support::cell("G", gate, "(IOPATH A Y (" + std::string(delay) + "))");
        inputs += "(IOPATH " + input + " Z (1)) ";
    }
    return Support::wires(nets) + gates + Support::cell("W", "w", inputs) +
           Support::cell("R", "r0", "(IOPATH (posedge C) Q (100))") +
           Support::cell("R", "r1", "(IOPATH (posedge C) Q (100))", "(SETUPHOLD D (posedge C) (5) (3))");
}

// Each path as its side, its slack and the gate in its middle.
Lines pathsOf(std::size_t perEndpoint) {
    Support::Analyzed design(threeWays(), "create_clock -period 1 [get_ports clk]\n");
    Analysis::Harvest harvest(design.analyzed(), {{10, perEndpoint}, {true, true}});
    Analysis::EngineRun(design.application(), false).launch(harvest);
    Lines lines;
    for (const Report::Path& path : harvest.take().paths) {
        EXPECT_EQ(path.slack, path.setup ? path.required - path.arrival : path.arrival - path.required);
        const auto gate =
            std::ranges::find_if(path.points, [](const Report::Point& point) { return point.cell == "G"; });
        lines.push_back((path.setup ? "setup " : "hold ") + std::to_string(path.slack) + " " +
                        gate->pin.substr(0, 1));
    }
    return lines;
}

TEST(PathSearch, WorstFirstAndEqualOnesByTheirNames) {
    EXPECT_EQ(pathsOf(1), (Lines{"setup 844 a", "hold 108 a"}));
    EXPECT_EQ(pathsOf(2), (Lines{"setup 844 a", "setup 854 b", "hold 108 a", "hold 118 b"}));
    EXPECT_EQ(pathsOf(9),
              (Lines{"setup 844 a", "setup 854 b", "setup 854 c", "hold 108 a", "hold 118 b", "hold 118 c"}));
}

} // namespace
