// What is a clock, what a set or a reset, in cells as libraries have them: one instance of each type.
#include "tests/support/command/Annotated.h"

#include <gtest/gtest.h>

namespace {

using Support::Annotated;
using Support::cell;

struct Row {
    const char* name;
    std::string cells;
    const char* roles;
    const char* resets;
    const char* messages = "";
};

void check(std::span<const Row> rows) {
    for (const Row& row : rows) {
        const Annotated found(row.cells);
        EXPECT_EQ(found.roles(), row.roles) << row.name;
        EXPECT_EQ(found.resets(), row.resets) << row.name;
        EXPECT_EQ(found.messages(), row.messages) << row.name;
    }
}

const std::string toQ = "(IOPATH (posedge C) Q (3) (4))", setup = "(SETUPHOLD D (posedge C) (5) (2))";

TEST(Classify, TellsSetsAndResetsByTheEdgeThatTheySetOff) {
    const Row rows[] = {
        {"older files: a reset is checked by SETUP and HOLD",
         cell("R", "r", toQ + "(IOPATH RN Q () (2))",
              setup + "(SETUP RN (posedge C) (1)) (HOLD RN (posedge C) (1))"),
         "clock: r/C; data: r/RN r/D; output: r/Q", "r/RN > r/Q"},
        {"with two outputs",
         cell("R", "r", toQ + "(IOPATH (posedge C) QN (3) (4)) (IOPATH RN Q () (2)) (IOPATH RN QN (2) ())",
              setup + "(SETUP RN (posedge C) (1))"),
         "clock: r/C; data: r/RN r/D; output: r/Q r/QN", "r/RN > r/Q, r/RN > r/QN"},
        {"without a check", cell("R", "r", toQ + "(IOPATH RN Q () (2))", setup),
         "clock: r/C; data: r/D; output: r/Q", "r/RN > r/Q"},
        {"without any check in the file", cell("R", "r", toQ + "(IOPATH (negedge RN) Q () (2))"),
         "clock: r/C; data:; output: r/Q", "r/RN > r/Q"},
        {"the edges apart in two entries make a whole way",
         cell("L", "l", "(IOPATH G Q (3) (4)) (IOPATH D Q (2) ()) (IOPATH D Q () (3))",
              "(SETUPHOLD D (negedge G) (5) (2))"),
         "clock: l/G; data: l/D; output: l/Q", ""},
        {"under conditions, for both edges together",
         cell("L", "l", "(IOPATH G Q (3) (4)) (COND A (IOPATH D Q (2) ())) (COND !A (IOPATH D Q () (3)))",
              "(SETUPHOLD D (negedge G) (5) (2))"),
         "clock: l/G; data: l/D; output: l/Q", ""},
        {"another output of a reset is timed through",
         cell("R", "r", toQ + "(IOPATH RN Q () (2)) (IOPATH RN Y (1) (1))", setup),
         "clock: r/C; data: r/D; output: r/Q", "r/RN > r/Q"},
        {"no register: one direction alone is no reset",
         cell("G", "g", "(IOPATH A Y (1) ()) (IOPATH B Y () (1))"), "clock:; data:; output:", ""},
        {"in another instance of the type",
         cell("R", "r", toQ + "(IOPATH RN Q () (2))") + cell("R", "s", "", setup),
         "clock: r/C s/C; data: s/D; output: r/Q", "r/RN > r/Q"},
    };
    check(rows);
}

TEST(Classify, TellsSetsFromResets) {
    const char* const idle =
        "note: 1 checks of a set or a reset against another (not used), first 'r/S against r/R'\n";
    const Row rows[] = {
        {"recovery against the clock, a window between set and reset",
         cell("R", "r", toQ + "(IOPATH (negedge R) Q () (2)) (IOPATH (negedge S) Q (2) ())",
              setup + "(RECREM (posedge R) (posedge C) (1) (1)) (RECREM (posedge S) (posedge C) (1) (1))"
                      "(SETUPHOLD (posedge S) (posedge R) (1) (1))"),
         "clock: r/C; data: r/R r/S r/D; output: r/Q", "r/R > r/Q, r/S > r/Q", idle},
        {"the same as recovery",
         cell("R", "r", toQ + "(IOPATH (negedge R) Q (2)) (IOPATH (negedge S) Q (2))",
              setup + "(RECREM (posedge R) (posedge C) (1) (1)) (RECREM (posedge S) (posedge C) (1) (1))"
                      "(RECOVERY (posedge S) (posedge R) (1))"),
         "clock: r/C; data: r/R r/S r/D; output: r/Q", "r/R > r/Q, r/S > r/Q", idle},
        {"both ways, without recovery",
         cell("R", "r", toQ + "(IOPATH R Q (1) (2)) (IOPATH S Q (2) (1))",
              setup + "(SETUP R (posedge C) (1)) (SETUP S (posedge C) (1)) (HOLD S R (1)) (HOLD R S (1))"),
         "clock: r/C; data: r/R r/S r/D; output: r/Q", "",
         "note: 2 checks of a set or a reset against another (not used), first 'r/S against r/R'\n"},
        {"without D",
         cell("R", "r", toQ + "(IOPATH R Q () (2)) (IOPATH S Q (2) ())",
              "(RECREM R (posedge C) (1) (1)) (RECREM S (posedge C) (1) (1)) (SETUPHOLD S R (1) (1))"),
         "clock: r/C; data: r/R r/S; output: r/Q", "r/R > r/Q, r/S > r/Q", idle},
        {"the set is checked against the reset alone",
         cell("R", "r", toQ + "(IOPATH R Q () (2)) (IOPATH S Q (2) ())",
              setup + "(RECREM R (posedge C) (1) (1)) (SETUPHOLD S R (1) (1))"),
         "clock: r/C; data: r/R r/D; output: r/Q", "r/R > r/Q, r/S > r/Q", idle},
        {"no clock at all", cell("SR", "r", "(IOPATH S Q (2) ()) (IOPATH R Q () (2))", "(HOLD S R (1))"),
         "clock:; data:; output:", "", idle},
        {"each by one edge, without checks: the clock sets off both directions",
         cell("R", "r", toQ + "(IOPATH (posedge R) Q () (2)) (IOPATH (posedge S) Q (2) ())"),
         "clock: r/C; data:; output: r/Q", "r/R > r/Q, r/S > r/Q"},
        {"each by one edge, one checked: that is no clock",
         cell("R", "r", toQ + "(IOPATH (posedge R) Q (2)) (IOPATH (posedge S) Q (2))", setup),
         "clock: r/C; data: r/D; output: r/Q", "r/R > r/Q, r/S > r/Q"},
        {"a period tells the clock",
         cell("R", "r", "(IOPATH (posedge C) Q (2)) (IOPATH (posedge R) Q (2))",
              "(PERIOD (posedge C) (9)) (WIDTH R (1))"),
         "clock: r/C; data:; output: r/Q", "r/R > r/Q"},
    };
    check(rows);
}

TEST(Classify, LooksAtAllCellsOfAType) {
    const Row rows[] = {
        {"one of them inverts its clock, and there are no checks",
         cell("R", "r", "(IOPATH (posedge C) Q (3))") + cell("R", "s", "(IOPATH (negedge C) Q (3))"),
         "clock: r/C s/C; data:; output: r/Q s/Q", ""},
        {"one of them names no edge",
         cell("R", "r", "(IOPATH (posedge C) Q (3))") + cell("R", "s", "(IOPATH C Q (3))"),
         "clock: r/C s/C; data:; output: r/Q s/Q", ""},
        {"a cell with both edges is no register",
         cell("X", "x", "(IOPATH (posedge A) Y (3))") +
             cell("X", "y", "(IOPATH (posedge A) Y (3)) (IOPATH (negedge A) Y (3))"),
         "clock:; data:; output:", ""},
        {"types are apart", cell("R", "r", toQ, setup) + cell("X", "x", "(IOPATH C Q (3))"),
         "clock: r/C; data: r/D; output: r/Q", ""},
    };
    check(rows);
}

TEST(Classify, KeepsClocksThatCheckEachOther) {
    const Row rows[] = {
        {"write and read side",
         cell("RAM", "m", "(IOPATH (posedge RC) DO (3))",
              "(SETUP WA (posedge WC) (1)) (SETUP RA (posedge RC) (1)) (SETUP WC (posedge RC) (1))"),
         "clock: m/RC m/WC; data: m/WC m/WA m/RA; output: m/DO", ""},
        {"in recovery checks, both ways",
         cell("RAM", "m", "(IOPATH (posedge A) QA (3)) (IOPATH (posedge B) QB (3))",
              "(SETUP DA (posedge A) (1)) (SETUP DB (posedge B) (1)) (RECOVERY (posedge A) (posedge B) (1))"
              "(RECOVERY (posedge B) (posedge A) (1))"),
         "clock: m/A m/B; data: m/A m/B m/DA m/DB; output: m/QA m/QB", ""},
        {"the read side is constant, and has its checks nowhere",
         cell("RAM", "m", "(IOPATH (posedge RC) DO (3) (3))", "(SETUP WA (posedge WC) (1))"),
         "clock: m/RC m/WC; data: m/WA; output: m/DO", ""},
        {"a reset of both sides",
         cell("FIFO", "f",
              "(IOPATH (posedge W) FULL (3)) (IOPATH (posedge R) EMPTY (3)) (IOPATH (posedge X) FULL (2))"
              "(IOPATH (posedge X) EMPTY (2))",
              "(SETUP DI (posedge W) (1)) (SETUP RE (posedge R) (1)) (RECREM X (posedge W) (1) (1)) (RECREM "
              "X (posedge R) (1) (1))"),
         "clock: f/W f/R; data: f/X f/DI f/RE; output: f/FULL f/EMPTY", "f/X > f/FULL, f/X > f/EMPTY"},
    };
    check(rows);
}

TEST(Classify, KnowsLatchesGatesAndScanRegisters) {
    const Row rows[] = {
        {"a latch: data passes it",
         cell("L", "l", "(IOPATH D Q (2) (2)) (IOPATH (posedge G) Q (3) (3))",
              "(SETUPHOLD D (negedge G) (5) (2))"),
         "clock: l/G; data: l/D; output: l/Q", ""},
        {"a latch with a reset",
         cell("L", "l", "(IOPATH D Q (2) (2)) (IOPATH G Q (3) (3)) (IOPATH RN Q () (1))",
              "(SETUPHOLD D (negedge G) (5) (2)) (RECREM RN (negedge G) (1) (1))"),
         "clock: l/G; data: l/D l/RN; output: l/Q", "l/RN > l/Q"},
        {"a clock gate",
         cell("CG", "g", "(IOPATH CK Y (3) (3))",
              "(SETUPHOLD E (posedge CK) (5) (2)) (SETUPHOLD TE (posedge CK) (5) (2))"),
         "clock: g/CK; data: g/E g/TE; output: g/Y", ""},
        {"a scan register",
         cell("S", "s", "(IOPATH (posedge CK) Q (3) (3)) (IOPATH RN Q () (3))",
              "(SETUPHOLD D (posedge CK) (5) (2)) (SETUPHOLD SI (posedge CK) (5) (2)) (SETUPHOLD SE (posedge "
              "CK) (5) (2))"
              "(RECREM (posedge RN) (posedge CK) (1) (1)) (WIDTH (negedge RN) (2))"),
         "clock: s/CK; data: s/RN s/D s/SI s/SE; output: s/Q", "s/RN > s/Q"},
        {"width and period alone",
         cell("P", "p", "(IOPATH I O (3))", "(WIDTH (posedge I) (1)) (PERIOD I (3))"),
         "clock:; data:; output:", ""},
        {"a buffer that is switched on by an enable",
         cell("T", "t", "(IOPATH A Y (1) (1)) (IOPATH E Y () () (2) (3) (2) (4))"),
         "clock:; data:; output:", ""},
    };
    check(rows);
}

// Without a netlist a wire names a cell before its CELL does: the type must not be lost, since cells of one
// type are looked at together.
TEST(Classify, KeepsTheTypesOfCellsThatWiresNamedFirst) {
    const Annotated read(Support::wires("(INTERCONNECT r/Q g/C (1))") +
                         cell("R", "r", "(IOPATH (posedge C) Q (3))", setup) +
                         cell("G", "g", "(IOPATH C Y (1))"));
    EXPECT_EQ(read.roles(), "clock: r/C; data: r/D; output: r/Q");
}

} // namespace
