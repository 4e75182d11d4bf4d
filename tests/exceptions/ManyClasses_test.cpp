// Designs with more through points than classes, over whole runs (Runs.h).
#include "tests/exceptions/Runs.h"

#include <string>

namespace {

using namespace Support::Runs;

class ManyClasses : public ExceptionRuns {};

// A row of gates, each with an exception through it: a path passes them all, so that each needs a class.
TEST_F(ManyClasses, MoreThanThereAreClassesFor) {
    constexpr int gates = 66;
    std::string wires = "(INTERCONNECT a r0/CLK (0)) (INTERCONNECT a r1/CLK (0))\n", cells, lines;
    std::string last = "r0/Q";
    for (int gate = 0; gate < gates; ++gate) {
        const std::string name = "g" + std::to_string(gate);
        wires += "(INTERCONNECT " + last + " " + name + "/A (0))\n";
        cells += cell("BUF", name);
        lines += "set_multicycle_path 2 -through " + name + "/Z\n";
        last = name + "/Z";
    }
    wires += "(INTERCONNECT " + last +
             " r1/D (0))\n"
             "(INTERCONNECT b t/CLK (0)) (INTERCONNECT din r0/D (0)) (INTERCONNECT r1/Q dout (0))\n";
    cells += cell("DFF", "r0") + cell("DFF", "r1") + cell("DFF", "t");
    EXPECT_EQ(
        messages(lines, sdfOf(wires, cells)),
        "2: error: the exceptions need 66 classes of paths, and there are 64: 0 for start points, the others "
        "for -through points. Most of these, 66, lie before 'r1/D': those of lines 2, 3, 4, 5, 6, 7, 8, 9, "
        "10, "
        "11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21 and 46 more; expected fewer -through points: -to with "
        "the "
        "end points that are meant, one point for a stage in place of one for each cell in it, or -from and "
        "-to");
}

// Gates side by side are distinguished by seven classes, also if all lead to one end point; every second one
// has a cycle more.
TEST_F(ManyClasses, ManyThroughPointsShareClasses) {
    constexpr int gates = 100;
    std::string wires = "(INTERCONNECT a r0/CLK (0)) (INTERCONNECT a r1/CLK (0))\n", lines;
    std::string cells = "(CELL (CELLTYPE \"WIDE\") (INSTANCE w) (DELAY (ABSOLUTE\n", buffers;
    for (int gate = 0; gate < gates; ++gate) {
        const std::string number = std::to_string(gate);
        wires += "(INTERCONNECT r0/Q g" + number + "/A (0)) (INTERCONNECT g" + number + "/Z w/I" + number +
                 " (0))\n";
        cells += "(IOPATH I" + number + " Z (0." + std::to_string(100 + gate) + "))\n";
        buffers += cell("BUF", "g" + number);
        lines += "set_max_delay " + std::to_string(gate % 2 == 0 ? 4 : 5) + " -through g" + number + "/Z\n";
    }
    wires += "(INTERCONNECT w/Z r1/D (0)) (INTERCONNECT b t/CLK (0)) (INTERCONNECT din r0/D (0)) "
             "(INTERCONNECT r1/Q dout (0))\n";
    cells += ")))\n" + buffers + cell("DFF", "r0") + cell("DFF", "r1") + cell("DFF", "t");
    const Report::Report report = run(lines, sdfOf(wires, cells));
    const auto end = std::ranges::find(report.endpoints, "r1/D", &Report::Endpoint::pin);
    ASSERT_NE(end, report.endpoints.end());
    // The slowest of the tighter half, g98: 1 from r0, 1 through it, 0.198 through w, of 4.
    EXPECT_EQ(end->setupSlack, 4000 - 2198);
    ASSERT_TRUE(end->setupException);
    EXPECT_EQ(end->setupException->line, 100U);
    EXPECT_EQ(std::ranges::count(report.exceptions, "governs", &Report::ExceptionUse::status), gates);
}

} // namespace
