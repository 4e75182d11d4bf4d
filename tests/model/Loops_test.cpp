// Combinational loops: the paths that are there after they were opened, in each form, and what is said of it.
#include "tests/support/command/Built.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <sstream>

namespace {

using Model::LoopLimits;
using Support::Built;
using Support::cell;
using Support::wires;

// "a>g/A g/Y>h/B": wires of 1, and a gate without delay for every cell: from its inputs to Y.
std::string circuit(const std::string& text) {
    std::string entries, cells;
    std::map<std::string, std::set<std::string>> inputs;
    std::istringstream in(text);
    for (std::string wire; in >> wire;) {
        const std::size_t arrow = wire.find('>');
        const std::string from = wire.substr(0, arrow), to = wire.substr(arrow + 1);
        entries += "(INTERCONNECT " + from + " " + to + " (1)) ";
        if (const std::size_t slash = to.find('/'); slash != std::string::npos)
            inputs[to.substr(0, slash)].insert(to.substr(slash + 1));
    }
    for (const auto& [gate, pins] : inputs) {
        std::string arcs;
        for (const std::string& pin : pins)
            arcs += "(IOPATH " + pin + " Y (0)) ";
        cells += cell("G", gate, arcs);
    }
    return wires(entries) + cells;
}

std::string exactly(const std::string& loops) { return "note: " + loops + "\n"; }

const char* const pair = "a>g/A b>h/A g/Y>h/B h/Y>g/B g/Y>y h/Y>z";
const char* const pathsOfPair = "a g/A g/Y h/B h/Y z\n"
                                "a g/A g/Y y\n"
                                "b h/A h/Y g/B g/Y y\n"
                                "b h/A h/Y z\n";

TEST(Loops, HaveEveryPathThatPassesNoPinTwice) {
    const struct {
        const char* circuit;
        const char* script;
        std::string paths, loops;
    } rows[] = {
        {"a>g/A g/Y>y", "", "a g/A g/Y y\n", ""},
        // Entered at two pins and left at two.
        {pair, "", pathsOfPair,
         exactly(
             "1 combinational loop is timed along every path that passes no pin twice: g/Y, h/B, h/Y, g/B")},
        // A gate that drives itself.
        {"a>g/A g/Y>g/B g/Y>y", "", "a g/A g/Y y\n",
         exactly("1 combinational loop is timed along every path that passes no pin twice: g/Y, g/B")},
        // Two loops that share g.
        {"a>g/A b>h/A c>k/A g/Y>h/B h/Y>g/B g/Y>k/B k/Y>g/C g/Y>y h/Y>z", "",
         "a g/A g/Y h/B h/Y z\n"
         "a g/A g/Y y\n"
         "b h/A h/Y g/B g/Y y\n"
         "b h/A h/Y z\n"
         "c k/A k/Y g/C g/Y h/B h/Y z\n"
         "c k/A k/Y g/C g/Y y\n",
         exactly(
             "1 combinational loop is timed along every path that passes no pin twice: g/Y, h/B, h/Y, g/B, "
             "k/B, k/Y, g/C")},
        // One within another: g > h > k > g, and h > g.
        {"a>g/A g/Y>h/A h/Y>k/A k/Y>g/B h/Y>g/C b>k/B g/Y>y k/Y>z", "",
         "a g/A g/Y h/A h/Y k/A k/Y z\n"
         "a g/A g/Y y\n"
         "b k/B k/Y g/B g/Y y\n"
         "b k/B k/Y z\n",
         exactly(
             "1 combinational loop is timed along every path that passes no pin twice: g/Y, h/A, h/Y, k/A, "
             "k/Y, g/B, g/C")},
        // Two by themselves, one behind the other.
        {"a>g/A g/Y>h/A h/Y>g/B h/Y>k/A k/Y>l/A l/Y>k/B l/Y>y", "", "a g/A g/Y h/A h/Y k/A k/Y l/A l/Y y\n",
         exactly("2 combinational loops are timed along every path that passes no pin twice: g/Y, h/A, h/Y, "
                 "g/B; k/Y, l/A, l/Y, k/B")},
        // Nothing enters the loop, so no path comes out of it.
        {"g/Y>h/A h/Y>g/A h/Y>k/A k/Y>y a>k/B", "", "a k/B k/Y y\ng/Y h/A h/Y k/A k/Y y\n",
         exactly(
             "1 combinational loop is timed along every path that passes no pin twice: g/Y, h/A, h/Y, g/A")},
        // No loop where a constraint opens it.
        {pair, "set_disable_timing -from B -to Y [get_cells h]",
         "a g/A g/Y y\nb h/A h/Y g/B g/Y y\nb h/A h/Y z\n", ""},
        {pair, "create_clock -period 9 [get_pins h/Y]", "a g/A g/Y y\nh/Y g/B g/Y y\nh/Y z\n", ""},
    };
    for (const auto& row : rows) {
        const Built built(circuit(row.circuit), row.script);
        EXPECT_EQ(built.paths(), row.paths) << row.circuit << "\n" << row.script;
        EXPECT_EQ(built.messages(), row.loops) << row.circuit << "\n" << row.script;
    }
}

// Two pads on one net, each with logic from what it receives to what it drives. Each side of a pad counts.
TEST(Loops, PassEachSideOfABidirectionalPinOnce) {
    const std::string pad = "(IOPATH I IO (5)) (IOPATH IO O (6))";
    const Built built(cell("B", "b", pad) + cell("B", "c", pad) +
                          cell("G", "g", "(IOPATH A Y (1)) (IOPATH B Y (1))") +
                          cell("G", "h", "(IOPATH B Y (1))"),
                      "",
                      "a<n0 s<>n1 y>n5 b:B(IO<>n1 I<n2 O>n3) c:B(IO<>n1 I<n4 O>n5) g:G(A<n0 B<n3 Y>n2) "
                      "h:G(B<n5 Y>n4)");
    EXPECT_EQ(built.paths(), "a g/A g/Y b/I b/IO c/IO c/O h/B h/Y c/I c/IO s\n"
                             "a g/A g/Y b/I b/IO c/IO c/O y\n"
                             "a g/A g/Y b/I b/IO s\n"
                             "s b/IO b/O g/B g/Y b/I b/IO c/IO c/O h/B h/Y c/I c/IO s\n"
                             "s b/IO b/O g/B g/Y b/I b/IO c/IO c/O y\n"
                             "s b/IO b/O g/B g/Y b/I b/IO s\n"
                             "s c/IO c/O h/B h/Y c/I c/IO b/IO b/O g/B g/Y b/I b/IO s\n"
                             "s c/IO c/O h/B h/Y c/I c/IO s\n"
                             "s c/IO c/O y\n");
    EXPECT_EQ(
        built.messages(),
        exactly("1 combinational loop is timed along every path that passes no pin twice: b/IO, b/I, b/O, "
                "c/IO, c/I, c/O, g/B, g/Y, h/B, h/Y and 2 more pins"));
}

// A loop of two gates has 4 pins and 4 arcs: 8 nodes and 6 arcs in the exact form, 8 and 8 in two layers.
TEST(Loops, FallBackWhereALimitIsMet) {
    const std::string exact = exactly(
        "1 combinational loop is timed along every path that passes no pin twice: g/Y, h/B, h/Y, g/B");
    const std::string layered =
        "note: a combinational loop of 4 pins is too large to be timed exactly: some paths that pass a pin "
        "twice are timed too, so slacks behind it are safe, but may be too small: g/Y, h/B, h/Y, g/B\n";
    const std::string cut =
        "warning: a combinational loop of 4 pins is too large to be timed: it is cut from g/B to g/Y\n"
        "warning: the arcs at which loops are cut hide paths: the slacks of these end points may be too "
        "large: "
        "y, z; expected set_disable_timing on arcs that no signal takes\n";
    const std::string pathsOfLayers = std::string("a g/A g/Y h/B h/Y g/B g/Y h/B h/Y z\n") +
                                      "a g/A g/Y h/B h/Y g/B g/Y y\n" + "a g/A g/Y h/B h/Y z\n" +
                                      "a g/A g/Y y\n" + "b h/A h/Y g/B g/Y h/B h/Y z\n" +
                                      "b h/A h/Y g/B g/Y y\n" + "b h/A h/Y z\n";
    const std::string pathsOfCut = "a g/A g/Y h/B h/Y z\na g/A g/Y y\nb h/A h/Y z\n";
    constexpr std::uint64_t plenty = 1'000'000;
    const struct {
        LoopLimits limits;
        std::string paths, messages;
    } rows[] = {
        {{}, pathsOfPair, exact},
        {{8, plenty, plenty, plenty, 0}, pathsOfPair, exact},
        {{7, plenty, plenty, plenty, 0}, pathsOfLayers, layered},
        {{8, 10, plenty, plenty, 0}, pathsOfLayers, layered},
        {{8, plenty, 8, plenty, 0}, pathsOfPair, exact},
        {{8, plenty, 7, plenty, 0}, pathsOfPair, exact},
        {{8, plenty, 6, plenty, 0}, pathsOfLayers, layered},
        {{8, plenty, plenty, 12, 0}, pathsOfPair, exact},
        {{8, plenty, plenty, 8, 0}, pathsOfLayers, layered},
        {{7, plenty, 4, plenty, 0}, pathsOfLayers, layered},
        {{7, plenty, 3, plenty, 0}, pathsOfCut, cut},
        {{7, plenty, plenty, 8, 0}, pathsOfLayers, layered},
        {{7, plenty, plenty, 7, 0}, pathsOfCut, cut},
        {{7, plenty, 0, 0, 1}, pathsOfLayers, layered}, // 8 pins and 10 arcs in the design
    };
    for (const auto& row : rows) {
        const Built built(circuit(pair), "", {}, row.limits);
        EXPECT_EQ(built.paths(), row.paths) << &row - rows;
        EXPECT_EQ(built.messages(), row.messages) << &row - rows;
    }
}

// Slacks that a cut loop has to do with: what its paths lead to, and what it clocks.
TEST(Loops, NameTheEndPointsBehindACut) {
    const std::string registers = cell("R", "r", "(IOPATH (posedge C) Q (1))", "(SETUP D (posedge C) (1))") +
                                  cell("R", "s", "(IOPATH (posedge C) Q (1))", "(SETUP D (posedge C) (1))");
    const LoopLimits none{0, 0, 0, 0, 0};
    const char* const before =
        "warning: a combinational loop of 4 pins is too large to be timed: it is cut from g/B to g/Y\n"
        "warning: the arcs at which loops are cut hide paths: the slacks of these end points may be too "
        "large: ";
    const char* const after = "; expected set_disable_timing on arcs that no signal takes\n";
    const struct {
        const char* more;
        const char* ends;
    } rows[] = {
        {"h/Y>r/D r/Q>s/D", "r/D"},
        {"h/Y>r/C d>r/D r/Q>s/D s/Q>z", "r/D, s/D"},
    };
    for (const auto& row : rows) {
        std::string entries;
        std::istringstream in(row.more);
        for (std::string wire; in >> wire;)
            entries += "(INTERCONNECT " + wire.substr(0, wire.find('>')) + " " +
                       wire.substr(wire.find('>') + 1) + " (1)) ";
        const Built built(circuit("a>g/A g/Y>h/B h/Y>g/B") + wires(entries) + registers, "", {}, none);
        EXPECT_EQ(built.messages(), std::string(before) + row.ends + after) << row.more;
    }
    // 21 gates that drive themselves, each with a port behind it.
    std::string many;
    for (int i = 0; i < 21; ++i) {
        const std::string gate = "g" + std::to_string(i), index = std::to_string(i);
        many += "a" + index + ">" + gate + "/A " + gate + "/Y>" + gate + "/B " + gate + "/Y>y" + index + " ";
    }
    const std::string messages = Built(circuit(many), "", {}, none).messages();
    EXPECT_EQ(std::ranges::count(messages, '\n'), 22);
    EXPECT_NE(messages.find("warning: 1 more arc of combinational loops is cut\n"), std::string::npos);
    EXPECT_NE(messages.find(", y19 and 1 more end point; expected"), std::string::npos) << messages;
    EXPECT_EQ(Built(circuit(many), "").messages(),
              "note: 21 combinational loops are timed along every path that passes no pin twice: g0/Y, g0/B; "
              "g1/Y, g1/B; g2/Y, g2/B; g3/Y, g3/B; g4/Y, g4/B; and 16 more\n");
    const std::string layered = Built(circuit(many), "", {}, {1, 1000, 1000, 1000, 4}).messages();
    EXPECT_EQ(std::ranges::count(layered, '\n'), 21);
    EXPECT_TRUE(layered.ends_with("note: 1 more combinational loop is too large to be timed exactly\n"))
        << layered;
}

// A ring of 100,000 pins, entered and left everywhere: no recursion over its length, and two layers.
TEST(Loops, OfAnyLengthAreLinear) {
    constexpr int gates = 50'000;
    std::string text;
    for (int i = 0; i < gates; ++i) {
        const std::string gate = "b" + std::to_string(i);
        text += "a" + std::to_string(i) + ">" + gate + "/A " + gate + "/Y>b" +
                std::to_string((i + 1) % gates) + "/B ";
    }
    const Built built(circuit(text + "b7/Y>y"), "");
    EXPECT_EQ(
        built.messages(),
        "note: a combinational loop of 100000 pins is too large to be timed exactly: some paths that "
        "pass a pin twice are timed too, so slacks behind it are safe, but may be too small: b0/Y, b1/B, "
        "b1/Y, b2/B, b2/Y, b3/B, b3/Y, b4/B, b4/Y, b5/B and 99990 more pins\n");
    EXPECT_EQ(built.network->size(), 4 * gates + 1 + 2 * gates);
}

// Sixteen gates, each of which drives all others: too many subsets to be told apart.
TEST(Loops, OfManyWaysAreLayered) {
    constexpr int gates = 16;
    std::string text = "a>g0/A g15/Y>y ";
    for (int from = 0; from < gates; ++from)
        for (int to = 0; to < gates; ++to)
            if (from != to)
                text += "g" + std::to_string(from) + "/Y>g" + std::to_string(to) + "/I" +
                        std::to_string(from) + " ";
    const Built built(circuit(text), "");
    EXPECT_TRUE(built.messages().starts_with("note: a combinational loop of ")) << built.messages();
    EXPECT_EQ(built.messages().find("warning"), std::string::npos);
}

TEST(Loops, AClockReachesWhatLiesBehindThem) {
    const Built built(circuit("clk>g/A g/Y>h/B h/Y>g/B") +
                          wires("(INTERCONNECT h/Y r/C (1)) (INTERCONNECT g/Y s/C (1))") +
                          cell("R", "r", "(IOPATH (posedge C) Q (1))", "(SETUP D (posedge C) (1))") +
                          cell("R", "s", "(IOPATH (posedge C) Q (1))", "(SETUP D (posedge C) (1))"),
                      "create_clock -period 9 [get_ports clk]\n"
                      "create_generated_clock -name half -source [get_pins h/Y] -divide_by 2 [get_pins r/Q]");
    EXPECT_EQ(built.reach("clk"), "clk g/A g/B g/Y h/B h/Y r/C s/C");
    EXPECT_EQ(built.waves(), "clk: 9000 {0 4500} at clk 0 0\nhalf: 18000 {0 9000} of clk at r/Q 4 4\n");
}

} // namespace
