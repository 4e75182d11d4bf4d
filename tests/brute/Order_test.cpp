// The order of cells, delays, checks and nets in the files has no influence: designs with many equal delays
// are written in two orders, and the reports must be the same, byte for byte.
//
// VORLEN_SEED and VORLEN_DESIGNS choose other designs and another number of them.
#include "Generate.h"
#include "Random.h"
#include "Write.h"

#include "analysis/Session.h"
#include "report/Json.h"
#include "tests/support/Sdf.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Brute::Random;
using Support::TemporaryFolder;

std::uint64_t number(const char* variable, std::uint64_t otherwise) {
    const char* value = std::getenv(variable);
    return value ? std::strtoull(value, nullptr, 10) : otherwise;
}

template <class T>
void shuffle(std::vector<T>& members, Random& random) {
    for (std::size_t i = members.size(); i > 1; --i)
        std::swap(members[i - 1],
                  members[static_cast<std::size_t>(random.between(0, static_cast<int>(i) - 1))]);
}

// Shuffles the members, and returns the new place of each one.
template <class T>
std::vector<int> shuffleKnown(std::vector<T>& members, Random& random) {
    std::vector<int> order(members.size());
    for (std::size_t i = 0; i < order.size(); ++i)
        order[i] = static_cast<int>(i);
    shuffle(order, random);
    std::vector<T> shuffled;
    std::vector<int> place(members.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        place[static_cast<std::size_t>(order[i])] = static_cast<int>(i);
        shuffled.push_back(std::move(members[static_cast<std::size_t>(order[i])]));
    }
    members = std::move(shuffled);
    return place;
}

// One or two delays for all arcs, one set of values for all checks.
void equalize(Brute::Design& design, Random& random) {
    const int values = random.between(1, 2);
    const auto same = [](int value) { return Brute::Triple{value, value, value}; };
    for (Brute::Arc& arc : design.arcs)
        for (Brute::Triple& triple : arc.values)
            triple = same(100 * random.between(1, values));
    for (Brute::Check& check : design.checks)
        for (std::optional<Brute::Triple>* value : {&check.setup, &check.hold})
            if (*value)
                *value = same(50);
}

// The same design in another order, for the writers of delays and netlists. Its constraints are unchanged.
Brute::Design reordered(Brute::Design design, Random& random) {
    const std::vector<int> cells = shuffleKnown(design.cells, random),
                           nets = shuffleKnown(design.nets, random);
    for (Brute::Pin& pin : design.pins) {
        if (pin.cell != Brute::none)
            pin.cell = cells[static_cast<std::size_t>(pin.cell)];
        if (pin.net != Brute::none)
            pin.net = nets[static_cast<std::size_t>(pin.net)];
    }
    for (Brute::Cell& cell : design.cells)
        shuffle(cell.pins, random);
    for (Brute::Net& net : design.nets)
        shuffle(net.sinks, random);
    shuffle(design.arcs, random);
    shuffle(design.checks, random);
    return design;
}

enum class Netlist { none, json, verilog };

// Counts the paths of the slack of the one before. The report is without the inputs' sums and the places of
// what is said of the files that differ.
std::string reportOf(const TemporaryFolder& folder, const Brute::Design& design, const std::string& sdc,
                     Netlist netlist, std::size_t& ties) {
    Analysis::SessionOptions options;
    options.sdf = folder.write("d.sdf", writeSdf(design));
    if (!sdc.empty())
        options.sdc = {folder.write("d.sdc", sdc)};
    if (netlist == Netlist::json)
        options.netlist = folder.write("d.json", writeJson(design));
    else if (netlist == Netlist::verilog)
        options.netlist = folder.write("d.v", writeVerilog(design));
    options.unconstrained = true;
    options.paths = 20;
    options.perEndpoint = 4;
    Report::Report report = Analysis::Session().run(options);
    report.inputs.clear();
    for (std::size_t path = 1; path < report.paths.size(); ++path)
        ties += report.paths[path - 1].slack == report.paths[path].slack ? 1U : 0U;
    for (Base::Diagnostic& diagnostic : report.diagnostics)
        if (sdc.empty() || diagnostic.place.file != options.sdc.front())
            diagnostic.place = {};
    std::ranges::sort(report.diagnostics, {}, [](const Base::Diagnostic& of) { return toString(of); });
    std::ostringstream json;
    writeJson(report, json);
    return json.str();
}

// The first lines that differ.
std::string difference(const std::string& a, const std::string& b) {
    std::istringstream first(a), second(b);
    std::string one, other, text;
    for (int line = 1; std::getline(first, one) && std::getline(second, other); ++line)
        if (one != other)
            return "line " + std::to_string(line) + ": " + one + "\n and " + other;
    return "one ends early";
}

TEST(Order, OfTheFilesDecidesNothing) {
    constexpr std::uint64_t designs = 600, share = 5; // fewer: each design runs many times
    const std::uint64_t first = number("VORLEN_SEED", 1),
                        count = std::max<std::uint64_t>(number("VORLEN_DESIGNS", designs * share) / share, 1);
    std::cout << "seeds " << first << " to " << first + count - 1 << "\n";
    const TemporaryFolder folder;
    std::size_t ties = 0;
    for (std::uint64_t seed = first; seed < first + count && !HasFailure(); ++seed) {
        Random random(seed);
        Brute::Shape shape;
        shape.maximumRegisters = 6; // and many gates: ways that separate and meet again
        shape.minimumGates = 10;
        shape.maximumGates = 35;
        shape.maximumClocks = 3;
        shape.pads = shape.bareWires = seed % 3 == static_cast<unsigned>(Netlist::json);
        shape.exceptions = seed % 2 == 0 ? Brute::ExceptionMode::overlapping : Brute::ExceptionMode::without;
        Brute::Design design = Brute::generate(seed, shape);
        auto netlist = static_cast<Netlist>(seed % 3);
        if (netlist != Netlist::json &&
            !std::ranges::none_of(design.arcs, &Brute::Values::empty, &Brute::Arc::values))
            netlist = Netlist::json; // the delays do not show all directions
        equalize(design, random);
        const std::string sdc = seed % 7 == 0 ? "" : writeSdc(design); // none: clocks at the roots
        const std::string expected = reportOf(folder, design, sdc, netlist, ties);
        const std::string found = reportOf(folder, reordered(design, random), sdc, netlist, ties);
        EXPECT_TRUE(found == expected) << "seed " << seed << ", " << difference(expected, found);
    }
    EXPECT_GT(ties, count);
}

// --- By hand ---

// Two ways of equal length from a to b, through cells in the given order.
std::string twoWays(const std::vector<std::string>& gates) {
    std::string wires = "(INTERCONNECT clk a/C (0))(INTERCONNECT clk b/C (0))(INTERCONNECT m/Z b/D (5))",
                cells;
    for (std::size_t i = 0; i < gates.size(); ++i) {
        wires += "(INTERCONNECT a/Q " + gates[i] + "/A (5))(INTERCONNECT " + gates[i] + "/Z m/" + gates[i] +
                 " (5))";
        cells += Support::cell("G", gates[i], "(IOPATH A Z (7))");
        cells += Support::cell("M", "m", "(IOPATH " + gates[i] + " Z (7))");
    }
    for (const char* name : {"b", "a"})
        cells += Support::flipFlop(name, {.type = "R"});
    return Support::sdf(cells + Support::wires(wires));
}

// The gates that the setup paths pass, in the order of the report.
TEST(Order, EqualPathsAreInTheOrderOfNames) {
    struct Row {
        std::vector<std::string> gates;
        unsigned perEndpoint;
        std::vector<std::string> expected;
    };
    const Row rows[] = {
        {{"x", "y"}, 1, {"x/A"}},
        {{"y", "x"}, 1, {"x/A"}},
        {{"z", "x", "y"}, 2, {"x/A", "y/A"}},
        {{"y", "z", "x"}, 3, {"x/A", "y/A", "z/A"}},
        {{"g10", "g9", "g1"}, 3, {"g1/A", "g10/A", "g9/A"}}, // in byte order
    };
    for (const Row& row : rows) {
        const TemporaryFolder folder;
        Analysis::SessionOptions options;
        options.sdf = folder.write("d.sdf", twoWays(row.gates));
        options.sdc = {folder.write("d.sdc", "create_clock -period 10 [get_ports clk]\n")};
        options.perEndpoint = row.perEndpoint;
        options.holdPaths = false;
        std::vector<std::string> found;
        for (const Report::Path& path : Analysis::Session().run(options).paths)
            for (const Report::Point& point : path.points)
                if (point.pin.ends_with("/A"))
                    found.push_back(point.pin);
        EXPECT_EQ(found, row.expected) << row.gates.front();
    }
}

} // namespace
