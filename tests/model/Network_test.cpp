// What is left of a design: what constraints take out, constants, clock sources. Loops: Loops_test.cpp.
#include "tests/support/command/Built.h"

#include <gtest/gtest.h>

namespace {

using Support::Built;
using Support::cell;
using Support::wires;

struct Row {
    std::string cells;
    const char* script;
    const char* arcs;
    const char* messages;
};

void check(std::span<const Row> rows) {
    for (const Row& row : rows) {
        const Built built(row.cells, row.script);
        EXPECT_EQ(built.arcs(), row.arcs) << row.cells << row.script;
        EXPECT_EQ(built.messages(), row.messages) << row.cells << row.script;
    }
}

const std::string buffer =
    wires("(INTERCONNECT a b/A (1)) (INTERCONNECT b/Y y (2))") + cell("B", "b", "(IOPATH A Y (3))");

TEST(Network, JoinsArcsBetweenTheSamePins) {
    const Row rows[] = {
        {buffer, "", "a > b/A 1 1\nb/Y > y 2 2\nb/A > b/Y 3 3\n", ""},
        // Both edges of a combinational input.
        {cell("B", "b", "(IOPATH (posedge A) Y (3)) (IOPATH (negedge A) Y (5))"), "", "b/A > b/Y 3 5\n", ""},
        // A register's edges stay apart; a reset is gone.
        {cell("R", "r", "(IOPATH (posedge C) Q (3)) (IOPATH (negedge C) Q (5)) (IOPATH (negedge N) Q (9))",
              "(SETUP D (posedge C) (1))"),
         "", "r/C > r/Q 3 3 launch rise\nr/C > r/Q 5 5 launch fall\n", ""},
        {cell("R", "r", "(IOPATH C Q (3))", "(SETUP D (posedge C) (1))"), "", "r/C > r/Q 3 3 launch\n", ""},
    };
    check(rows);
}

TEST(Network, TakesOutWhatIsDisabled) {
    const std::string gate = wires("(INTERCONNECT a g/A (1)) (INTERCONNECT b g/B (1))") +
                             cell("G", "g", "(IOPATH A Y (2)) (IOPATH B Y (3)) (IOPATH A Z (4))");
    const char *const a = "a > g/A 1 1\n", *const b = "b > g/B 1 1\n";
    const struct {
        const char* script;
        std::string arcs;
    } rows[] = {
        {"set_disable_timing [get_cells g]", std::string(a) + b},
        {"set_disable_timing -from A [get_cells g]", std::string(a) + b + "g/B > g/Y 3 3\n"},
        {"set_disable_timing -to Y [get_cells g]", std::string(a) + b + "g/A > g/Z 4 4\n"},
        {"set_disable_timing -from A -to Z [get_cells g]",
         std::string(a) + b + "g/A > g/Y 2 2\ng/B > g/Y 3 3\n"},
        {"set_disable_timing [get_pins g/A]", std::string(b) + "g/B > g/Y 3 3\n"},
        {"set_disable_timing [get_ports b]",
         std::string(a) + "g/A > g/Y 2 2\ng/B > g/Y 3 3\ng/A > g/Z 4 4\n"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Built(gate, row.script).arcs(), row.arcs) << row.script;
}

TEST(Network, TakesOutChecksOfWhatIsDisabled) {
    const std::string reg = cell("R", "r", "", "(SETUP D (posedge C) (1)) (SETUP E (posedge C) (1))");
    const struct {
        const char* script;
        const char* disabled;
    } rows[] = {
        {"", ""},
        {"set_disable_timing [get_cells r]", "r/D r/E "},
        {"set_disable_timing [get_pins r/D]", "r/D "},
        {"set_disable_timing [get_pins r/C]", "r/D r/E "},
        {"set_disable_timing -from C -to E [get_cells r]", "r/E "},
    };
    for (const auto& row : rows) {
        const Built built(reg, row.script);
        std::string disabled;
        for (const Design::Check& check : built.annotated.design.checks)
            if (built.network->isDisabled(check))
                disabled += built.annotated.design.pinName(check.data) + " ";
        EXPECT_EQ(disabled, row.disabled) << row.script;
    }
}

TEST(Network, KeepsNothingAtConstants) {
    const char* const note =
        "1: note: set_case_analysis: constants stop at the pins that they are given for, since what "
        "cells make of them is not known\n";
    const Row rows[] = {
        {buffer, "set_case_analysis 0 [get_ports a]", "b/Y > y 2 2\nb/A > b/Y 3 3\n", note},
        {buffer, "set_case_analysis 1 [get_pins b/Y]", "a > b/A 1 1\n", note},
    };
    check(rows);
}

TEST(Network, HidesArcsIntoClockSources) {
    const Row rows[] = {
        {buffer, "create_clock -period 1 [get_pins b/Y]", "a > b/A 1 1\nb/Y > y 2 2\nb/A > b/Y 3 3 hidden\n",
         ""},
        {buffer, "create_clock -period 1 [get_ports a]", "a > b/A 1 1\nb/Y > y 2 2\nb/A > b/Y 3 3\n", ""},
    };
    check(rows);
}

TEST(Network, HasTwoSidesOfABidirectionalPin) {
    const Built built(cell("B", "b", "(IOPATH I IO (5)) (IOPATH IO O (6))"), "",
                      "s<>n1 b:B(IO<>n1 I<n2 O>n3)");
    const auto& design = built.annotated.design;
    const Design::PinId port = design.findPort("s");
    EXPECT_NE(built.network->sinkOf(port), built.network->sourceOf(port));
    EXPECT_EQ(built.network->pinOf(built.network->sourceOf(port)), port);
    // In from the port to O; out from I to the port; never from I to O.
    const auto reaches = [&](Model::NodeId from, Model::NodeId to) {
        std::vector<Model::NodeId> next = {from};
        for (std::size_t at = 0; at < next.size(); ++at) {
            if (next[at] == to)
                return true;
            for (const Model::ArcId arc : built.network->out(next[at]))
                next.push_back(built.network->arcs()[arc].to);
        }
        return false;
    };
    const Design::CellId b = design.findCell("b");
    const Model::NodeId in = built.network->sinkOf(design.findPin(b, "I")),
                        out = built.network->sinkOf(design.findPin(b, "O"));
    EXPECT_TRUE(reaches(built.network->sourceOf(port), out));
    EXPECT_TRUE(reaches(in, built.network->sinkOf(port)));
    EXPECT_FALSE(reaches(in, out));
}

} // namespace
