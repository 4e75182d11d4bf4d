// What becomes of the entries of an SDF file: delays, checks, values, and what is passed over.
#include "tests/support/command/Annotated.h"

#include <gtest/gtest.h>

namespace {

using Readers::AnnotateOptions;
using Readers::Corner;
using Support::Annotated;
using Support::cell;
using Support::errorOf;
using Support::wires;

// --- Values ---

struct ValueRow {
    const char* values;
    Corner corner;
    int scale;
    const char* expected; // of the one arc
};

TEST(Annotate, TakesTheValuesThatTheCornerAsksFor) {
    using enum Corner;
    const ValueRow rows[] = {
        {"(1:2:3)", minimum, -12, "1 1"},
        {"(1:2:3)", typical, -12, "2 2"},
        {"(1:2:3)", maximum, -12, "3 3"},
        {"(1:2:3)", minmax, -12, "1 3"},
        {"(5)", minmax, -12, "5 5"},
        // A missing member: the next one.
        {"(:2:)", minmax, -12, "2 2"},
        {"(1::3)", typical, -12, "3 3"},
        {"(1::3)", minmax, -12, "1 3"},
        {"(::3)", minimum, -12, "3 3"},
        // Rise and fall together; what is beyond the second value concerns other transitions.
        {"(1:2:3) (2:4:6)", minmax, -12, "1 6"},
        {"(4) (3)", minmax, -12, "3 4"},
        {"(4) (3)", typical, -12, "3 4"},
        {"() (3)", minmax, -12, "3 3"},
        {"(1) (2) (9)", minmax, -12, "1 2"},
        {"(1) (2) (9) (9) (9) (9)", minmax, -12, "1 2"},
        // Rounding to the nearest unit, halves away from zero.
        {"(0.4)", minmax, -12, "0 0"},
        {"(0.5)", minmax, -12, "1 1"},
        {"(1.499)", minmax, -12, "1 1"},
        {"(1.5)", minmax, -12, "2 2"},
        {"(-0.5)", minmax, -12, "-1 -1"},
        {"(-1.2e+03)", minmax, -12, "-1200 -1200"},
        {"(.5)", minmax, -13, "5 5"},
        {"(1.2345)", minmax, -15, "1235 1235"},
        {"(1.0000001e3)", minmax, -15, "1000000 1000000"},
        // The largest that fits.
        {"(1073741823)", minmax, -12, "1073741823 1073741823"},
        {"(-1073741823)", minmax, -12, "-1073741823 -1073741823"},
    };
    for (const ValueRow& row : rows) {
        const Annotated read(cell("BUF", "b", "(IOPATH A Y " + std::string(row.values) + ")"), {},
                             AnnotateOptions{row.corner, row.scale});
        EXPECT_EQ(read.arcs(), "b/A > b/Y " + std::string(row.expected) + "\n") << row.values;
        EXPECT_EQ(read.messages(), "") << row.values;
    }
}

TEST(Annotate, TakesTheUnitOfTheFile) {
    const std::pair<const char*, const char*> rows[] = {
        {"(TIMESCALE 1ps)", "2 2"},
        {"(TIMESCALE 10 ps)", "15 15"},
        {"(TIMESCALE 100 ps)", "150 150"},
        {"(TIMESCALE 1 ns)", "1500 1500"},
        {"(TIMESCALE 100ns)", "150000 150000"},
        {"(TIMESCALE 1us)", "1500000 1500000"},
        {"(TIMESCALE 100fs)", "0 0"},
        {"(TIMESCALE 1fs)", "0 0"},
        {"", "1500 1500"}, // ns
    };
    for (const auto& [timescale, expected] : rows) {
        const Annotated read("(DELAYFILE (SDFVERSION \"2.1\") " + std::string(timescale) +
                             cell("BUF", "b", "(IOPATH A Y (1.5))") + ")");
        EXPECT_EQ(read.arcs(), "b/A > b/Y " + std::string(expected) + "\n") << timescale;
    }
}

TEST(Annotate, ExchangesMinimumAndMaximumWithAWarning) {
    const Annotated read(cell("BUF", "b", "(IOPATH A Y (3:2:1) (5:4:4))"));
    EXPECT_EQ(read.arcs(), "b/A > b/Y 1 5\n");
    EXPECT_EQ(read.messages(), "2:54: warning: 2 triples whose minimum is above their maximum (exchanged)\n");
}

// --- Arcs ---

struct ArcRow {
    std::string cells;
    const char* expected;
};

TEST(Annotate, MakesArcs) {
    const ArcRow rows[] = {
        {cell("DFF", "r", "(IOPATH (posedge C) Q (4)) (IOPATH (negedge R) Q (5)) (IOPATH A Q (6))"),
         "r/C rise > r/Q 4 4\nr/R fall > r/Q 5 5\nr/A > r/Q 6 6\n"},
        // The later ABSOLUTE replaces, an INCREMENT adds; each edge is an arc of its own.
        {cell("B", "b", "(IOPATH A Y (4)) (IOPATH A Y (3))"), "b/A > b/Y 3 3\n"},
        {cell("B", "b", "(IOPATH A Y (4:5:6))") + cell("B", "b", "(IOPATH A Y (1:2:3))", "", "INCREMENT"),
         "b/A > b/Y 5 9\n"},
        {cell("B", "b", "(IOPATH A Y (4))") + cell("B", "b", "(IOPATH A Y (-1))", "", "INCREMENT"),
         "b/A > b/Y 3 3\n"},
        {cell("B", "b", "(IOPATH (posedge A) Y (4)) (IOPATH (negedge A) Y (3))"),
         "b/A rise > b/Y 4 4\nb/A fall > b/Y 3 3\n"},
        {wires("(INTERCONNECT a b/A (4))") + cell("top", "", "(INTERCONNECT a b/A (2))", "", "INCREMENT"),
         "a ~ b/A 6 6\n"},
        // Under conditions: all of them.
        {cell("B", "b", "(COND S (IOPATH A Y (2))) (COND !S (IOPATH A Y (7))) (CONDELSE (IOPATH A Y (5)))"),
         "b/A > b/Y 2 7\n"},
        {cell("B", "b", "(IOPATH A Y (5)) (COND S (IOPATH A Y (2)))"), "b/A > b/Y 2 5\n"},
        // Without a value there is no arc; from a pin to itself neither.
        {cell("B", "b", "(IOPATH A Y ()) (IOPATH Y Y (1)) (IOPATH B Y (1))"), "b/B > b/Y 1 1\n"},
        // Bits, escapes, hierarchy.
        {cell("RAM", "u1/u2/ram", "(IOPATH (posedge CLK) RDATA[3] (4))"),
         "u1/u2/ram/CLK rise > u1/u2/ram/RDATA[3] 4 4\n"},
        {wires("(INTERCONNECT u1/b/Y u2/\\$x\\.y\\[1\\]/A[0] (4))"), "u1/b/Y ~ u2/$x.y[1]/A[0] 4 4\n"},
        // In a cell of the hierarchy, paths count from there.
        {cell("sub", "u1", "(INTERCONNECT b/Y c/A (4))"), "u1/b/Y ~ u1/c/A 4 4\n"},
        // A DEVICE is all arcs, or those to one output; its place in the file does not matter.
        {cell("B", "b", "(DEVICE (9)) (IOPATH A Y (1)) (IOPATH B Z (2))"), "b/A > b/Y 9 9\nb/B > b/Z 9 9\n"},
        {cell("B", "b", "(IOPATH A Y (1)) (IOPATH B Z (2)) (DEVICE Z (9))"),
         "b/A > b/Y 1 1\nb/B > b/Z 9 9\n"},
        {cell("B", "b", "(IOPATH A Y (1)) (IOPATH B Z (2))") +
             cell("B", "b", "(DEVICE (9))", "", "INCREMENT"),
         "b/A > b/Y 10 10\nb/B > b/Z 11 11\n"},
    };
    for (const ArcRow& row : rows)
        EXPECT_EQ(Annotated(row.cells).arcs(), row.expected) << row.cells;
}

TEST(Annotate, MakesArcsOfACellWithoutAnyForADevice) {
    const Annotated read(cell("B", "b", "(DEVICE (9))"), "a<n1 y>n2 b:B(A<n1 B<n3 Y>n2)");
    EXPECT_EQ(read.arcs(), "b/A > b/Y 9 9\nb/B > b/Y 9 9\na ~ b/A ?\nb/Y ~ y ?\n");
}

TEST(Annotate, KnowsTheDirectionsOfACellThatHasADeviceAlone) {
    const struct {
        const char *what, *netlist, *cells, *arcs, *messages;
    } rows[] = {
        {"the wires tell", "a<n1 y>n2 b:B(A?n1 Y?n2)", "(INTERCONNECT a b/A (1)) (INTERCONNECT b/Y y (2))",
         "b/A > b/Y 9 9\na ~ b/A 1 1\nb/Y ~ y 2 2\n", ""},
        {"inputs are on driven nets, the pin that is left is the output",
         "a<n1 b<n2 y>n3 b:B(A?n1 B?n2 Y?n3)", "",
         "b/A > b/Y 9 9\nb/B > b/Y 9 9\na ~ b/A ?\nb ~ b/B ?\nb/Y ~ y ?\n", ""},
        {"two pins are left", "a<n1 b:B(A?n1 Y?n2 Z?n3)", "", "a ~ b/A ?\n",
         "2:52: warning: 2 pins of cells with DEVICE delays that have no delay, since nothing tells their "
         "direction, first 'b/Y'\n"},
    };
    for (const auto& row : rows) {
        const std::string wired = *row.cells ? wires(row.cells) : "";
        const Annotated read(wired + cell("B", "b", "(DEVICE (9))"), row.netlist);
        EXPECT_EQ(read.arcs(), row.arcs) << row.what;
        EXPECT_EQ(read.messages(), row.messages) << row.what;
    }
}

TEST(Annotate, AppliesToAllCellsOfATypeForAStar) {
    const Annotated read(cell("B", "*", "(IOPATH A Y (3))") + cell("B", "c", "(IOPATH A Y (4))"),
                         "b:B(A< Y>) c:B(A< Y>) d:D(A< Y>)");
    EXPECT_EQ(read.arcs(), "b/A > b/Y 3 3\nc/A > c/Y 4 4\n");
}

TEST(Annotate, MergesConditionsWithWhatHoldsWithoutOne) {
    const std::string with2 = "(COND S (IOPATH A Y (2)))", with7 = "(COND !S (IOPATH A Y (7)))",
                      plain = "(IOPATH A Y (5))", otherwise = "(CONDELSE (IOPATH A Y (9)))";
    const auto more = [](std::string_view delays) { return cell("B", "b", delays, "", "INCREMENT"); };
    const ArcRow rows[] = {
        // In any order of writing, also in CELLs of their own.
        {cell("B", "b", with2 + with7 + plain), "b/A > b/Y 2 7\n"},
        {cell("B", "b", with2 + plain + with7), "b/A > b/Y 2 7\n"},
        {cell("B", "b", plain + with7 + with2), "b/A > b/Y 2 7\n"},
        {cell("B", "b", with2 + otherwise + plain), "b/A > b/Y 2 9\n"},
        {cell("B", "b", otherwise + plain), "b/A > b/Y 5 9\n"},
        {cell("B", "b", with2) + cell("B", "b", plain) + cell("B", "b", with7), "b/A > b/Y 2 7\n"},
        // What holds without a condition replaces what was said so before, and only that.
        {cell("B", "b", with2 + with7 + "(IOPATH A Y (9))" + plain), "b/A > b/Y 2 7\n"},
        {cell("B", "b", "(IOPATH A Y (1))" + with2 + with7 + plain), "b/A > b/Y 2 7\n"},
        {cell("B", "b", with2 + "(DEVICE (5))"), "b/A > b/Y 2 5\n"},
        // An increment adds to all; under a condition perhaps to one of them, perhaps to none.
        {cell("B", "b", with2 + with7 + plain) + more("(IOPATH A Y (10))"), "b/A > b/Y 12 17\n"},
        {cell("B", "b", with2 + with7 + plain) + more("(COND S (IOPATH A Y (10)))"), "b/A > b/Y 2 17\n"},
        {cell("B", "b", plain) + more("(COND S (IOPATH A Y (10)))"), "b/A > b/Y 5 15\n"},
        {cell("B", "b", plain) + more("(COND S (IOPATH A Y (-3)))"), "b/A > b/Y 2 5\n"},
        {cell("B", "b", with2) + more("(IOPATH A Y (10))") + cell("B", "b", plain), "b/A > b/Y 5 12\n"},
        // RETAIN has no effect on it.
        {cell("B", "b", "(COND S (IOPATH A Y (RETAIN (1)) (2)))" + plain), "b/A > b/Y 2 5\n"},
        // Each edge of the input is an arc of its own.
        {cell("B", "b", "(COND S (IOPATH (posedge A) Y (2)))" + plain),
         "b/A rise > b/Y 2 2\nb/A > b/Y 5 5\n"},
    };
    for (const ArcRow& row : rows)
        EXPECT_EQ(Annotated(row.cells).arcs(), row.expected) << row.cells;
}

TEST(Annotate, LeavesTheEdgesOfWhichAnEntryHasNoValue) {
    const ArcRow rows[] = {
        {cell("B", "b", "(IOPATH A Y (2) ()) (IOPATH A Y () (7))"), "b/A > b/Y 2 7\n"},
        {cell("B", "b", "(IOPATH A Y (2) (7)) (IOPATH A Y () (5))"), "b/A > b/Y 2 7\n"},
        {cell("B", "b", "(IOPATH A Y (2) (7)) (IOPATH A Y (5) (5))"), "b/A > b/Y 5 5\n"},
        {cell("B", "b", "(IOPATH A Y () (7)) (IOPATH A Y () (5))"), "b/A > b/Y 5 5\n"},
        // Neither edge, but the times in which the output is switched on.
        {cell("B", "b", "(IOPATH E Y () () (1) (3) (1) (4))"), "b/E > b/Y 3 4\n"},
        {cell("B", "b", "(IOPATH E Y () () (1))"), ""},
    };
    for (const ArcRow& row : rows)
        EXPECT_EQ(Annotated(row.cells).arcs(), row.expected) << row.cells;
}

// --- Checks ---

TEST(Annotate, MakesChecks) {
    const ArcRow rows[] = {
        {"(SETUP D (posedge C) (5))", "r/D at r/C rise: 5 -\n"},
        {"(HOLD D (posedge C) (2))", "r/D at r/C rise: - 2\n"},
        {"(SETUP D (posedge C) (5)) (HOLD D (posedge C) (2))", "r/D at r/C rise: 5 2\n"},
        {"(SETUPHOLD D (negedge C) (5) (-2))", "r/D at r/C fall: 5 -2\n"},
        {"(SETUPHOLD D C (5) (2))", "r/D at r/C: 5 2\n"},
        {"(SETUPHOLD D (posedge C) (5) ())", "r/D at r/C rise: 5 -\n"},
        {"(SETUPHOLD D (posedge C) () ())", ""},
        // Both edges of the data: the worst of each side. Both of the clock: two checks.
        {"(SETUPHOLD (posedge D) (posedge C) (5) (2)) (SETUPHOLD (negedge D) (posedge C) (4) (3))",
         "r/D at r/C rise: 5 3\n"},
        {"(SETUPHOLD D (posedge C) (5) (2)) (SETUPHOLD D (negedge C) (4) (3))",
         "r/D at r/C rise: 5 2\nr/D at r/C fall: 4 3\n"},
        {"(SETUPHOLD (COND E D) (COND E (posedge C)) (5) (2))", "r/D at r/C rise: 5 2\n"},
        {"(RECREM (posedge R) (posedge C) (6) (3))", "r/R at r/C rise: 6 3 reset\n"},
        {"(RECOVERY (posedge R) (posedge C) (6))", "r/R at r/C rise: 6 - reset\n"},
        {"(REMOVAL (posedge R) (posedge C) (3))", "r/R at r/C rise: - 3 reset\n"},
        // minmax: the largest member of a triple, for both sides.
        {"(SETUPHOLD D (posedge C) (1:5:3) (4:2:3))", "r/D at r/C rise: 5 4\n"},
        {"(SETUPHOLD C C (5) (2))", ""},
    };
    for (const ArcRow& row : rows)
        EXPECT_EQ(Annotated(cell("DFF", "r", "", row.cells)).checks(), row.expected) << row.cells;
}

TEST(Annotate, TakesChecksOfTheCorner) {
    const std::pair<Corner, const char*> rows[] = {{Corner::minimum, "1 4"},
                                                   {Corner::typical, "5 2"},
                                                   {Corner::maximum, "3 3"},
                                                   {Corner::minmax, "5 4"}};
    for (const auto& [corner, expected] : rows)
        EXPECT_EQ(Annotated(cell("DFF", "r", "", "(SETUPHOLD D (posedge C) (1:5:3) (4:2:3))"), {},
                            AnnotateOptions{corner, -12})
                      .checks(),
                  "r/D at r/C rise: " + std::string(expected) + "\n");
}

TEST(Annotate, MakesPulseChecks) {
    const ArcRow rows[] = {
        {"(PERIOD (posedge C) (9))", "r/C period 9\n"},
        {"(PERIOD C (9)) (PERIOD (posedge C) (8))", "r/C period 9\n"},
        {"(WIDTH (posedge C) (4)) (WIDTH (negedge C) (5))", "r/C rise width 4\nr/C fall width 5\n"},
        {"(WIDTH (posedge C) (4)) (WIDTH (posedge C) (6))", "r/C rise width 6\n"},
        {"(WIDTH (posedge C) ())", ""},
    };
    for (const ArcRow& row : rows)
        EXPECT_EQ(Annotated(cell("DFF", "r", "", row.cells)).pulses(), row.expected) << row.cells;
}

TEST(Annotate, CountsWhatItDoesNotUse) {
    const Annotated read(cell("DFF", "r", "(IOPATH (posedge C) Q (RETAIN (1)) (4))",
                              "(SKEW C D (1)) (SKEW C D (1)) (NOCHANGE D C (1) (1))"));
    EXPECT_EQ(read.arcs(), "r/C rise > r/Q 4 4\n");
    EXPECT_EQ(read.messages(), "2:139: note: 1 NOCHANGE checks (not used)\n"
                               "2:76: note: 1 RETAIN entries (not used)\n"
                               "2:109: note: 2 SKEW checks (not used)\n");
}

// --- What the netlist does not have ---

TEST(Annotate, CountsWhatTheNetlistDoesNotHave) {
    const char* const netlist = "clk<n1 d<n4 r:DFF(C<n1 D<n4 Q>n2) s:DFF(C<n1 D<n2 Q>)";
    const ArcRow rows[] = {
        {cell("DFF", "x", "(IOPATH (posedge C) Q (4))") + cell("DFF", "y", ""),
         "2:1: warning: 2 instances that the netlist does not have, first 'x'\n"},
        // Pins that may be r/D, of which there is nothing else.
        {cell("DFF", "r", "", "(SETUP E (posedge C) (4)) (HOLD E (posedge C) (4))"),
         "2:50: warning: 2 delays and checks of pins that the netlist does not have, first 'r/E'\n"},
        {wires("(INTERCONNECT r/Q s/C (4)) (INTERCONNECT clk r/D (4))"),
         "2:53: warning: 2 delays between pins that the netlist does not connect, first 'r/Q to s/C'\n"},
        {wires("(INTERCONNECT x/Q s/D (4))"),
         "2:53: warning: 1 delays and checks of pins that the netlist does not have, first 'x/Q'\n"},
        {cell("DFF", "r", "", "(SETUP D (posedge G) (4)) (WIDTH G (1))"),
         "2:50: warning: 2 delays and checks of pins that the netlist does not have, first 'r/G'\n"},
        {cell("DFF", "r", "(IOPATH (posedge C) Y (4))"),
         "2:54: warning: 1 delays and checks of pins that the netlist does not have, first 'r/Y'\n"},
        {wires("(PORT r/E (4)) (NETDELAY r/E (4))"),
         "2:53: warning: 2 delays and checks of pins that the netlist does not have, first 'r/E'\n"},
        {cell("DFF", "r", "(IOPATH (posedge C) Z (4)) (IOPATH (posedge C) Q (4))", "(SETUP D C (1))") +
             wires("(INTERCONNECT r/Z s/D (4))"),
         "3:53: warning: 1 delays and checks of pins that the netlist does not have, first 'r/Z'\n"},
        {wires("(IOPATH clk q (4))"), "2:53: warning: 1 cell delays of the top itself, first 'clk'\n"},
        {wires("(INTERCONNECT r/Q s/D (4))"), ""},
    };
    for (const ArcRow& row : rows)
        EXPECT_EQ(Annotated(row.cells, netlist).messages(), row.expected) << row.cells;
}

// --- Rounded values ---

TEST(Annotate, CountsTheValuesThatItRounds) {
    struct RoundingRow {
        std::string cells;
        int scale;
        const char* expected;
    };
    const RoundingRow rows[] = {
        {cell("B", "b", "(IOPATH A Y (1.000:2.0:3)) (IOPATH B Y (0.0) (1200e-2))"), -12, ""},
        {cell("B", "b", "(IOPATH A Y (1.5))"), -12,
         "2:52: note: 1 value is rounded to 1ps; --resolution 100fs keeps it\n"},
        // Each value once; those that the corner does not take are not looked at.
        {cell("B", "b", "(IOPATH A Y (1.1:2.2:3.3) (1.25:1.255:1.25))"), -12,
         "2:52: note: 3 values are rounded to 1ps; --resolution 10fs keeps them all\n"},
        {cell("B", "b", "(IOPATH A Y (1)) (IOPATH B Y (1.1))", "(SETUP A B (0.125)) (WIDTH B (1))"), -13,
         "2:103: note: 1 value is rounded to 100fs; --resolution 1fs keeps it\n"},
        {cell("B", "b", "(IOPATH A Y (0.12345)) (IOPATH B Y (0.5))"), -12,
         "2:52: note: 2 values are rounded to 1ps; no --resolution keeps them all, the finest is 1fs\n"},
        {cell("B", "b", "(IOPATH A Y (0.0001))"), -15,
         "2:52: note: 1 value is rounded to 1fs; no --resolution keeps it, the finest is 1fs\n"},
    };
    for (const RoundingRow& row : rows) {
        Annotated read(row.cells, {}, AnnotateOptions{Corner::minmax, row.scale});
        read.rounding.report(row.scale, read.diagnostics);
        EXPECT_EQ(read.messages(), row.expected) << row.cells;
    }
}

// --- Errors ---

TEST(Annotate, RefusesWhatItCannotTake) {
    struct Row {
        std::string cells;
        int scale;
        const char* expected;
    };
    const Row rows[] = {
        {cell("B", "b", "(IOPATH A Y (1073741824))"), -12,
         "2:52: error: the value 1073741824 does not fit: expected at most 1073741823 units of 1e-12 s; a "
         "coarser --resolution may help"},
        {cell("B", "b", "(IOPATH A Y (2e6))"), -15,
         "2:52: error: the value 2000000 does not fit: expected at most 1073741823 units of 1e-15 s; a "
         "coarser --resolution may help"},
        {cell("B", "b", "", "(SETUP A C (-2e9))"), -12,
         "2:48: error: the value -2000000000 does not fit: expected at most 1073741823 units of 1e-12 s; a "
         "coarser --resolution may help"},
        {cell("B", "b", "(IOPATH A Y (1000000000))") +
             cell("B", "b", "(IOPATH A Y (1000000000))", "", "INCREMENT"),
         -12, "3:53: error: the increments do not fit: expected at most 1073741823 units of 1e-12 s in all"},
        {cell("B", "b", "(PORT A (4))"), -12,
         "2:52: error: PORT delays do not say what drives 'A': expected a netlist (--netlist)"},
        {wires("(NETDELAY n (4))"), -12,
         "2:53: error: NETDELAY does not say what 'n' connects: expected a netlist (--netlist)"},
    };
    for (const Row& row : rows) {
        const std::string found = errorOf(row.cells, {}, AnnotateOptions{Corner::minmax, row.scale});
        EXPECT_EQ(found, row.expected) << row.cells;
    }
}

} // namespace
