// What objects name, over whole runs: cells and their pins, ports, pins that are clocks (Runs.h).
#include "tests/exceptions/Runs.h"

#include <array>
#include <string>
#include <vector>

namespace {

using namespace Support::Runs;

class Objects : public ExceptionRuns {};

// Data that starts at a clock's source on a register's output starts at the cell, but not at its clock pin.
TEST_F(Objects, FromARegisterThatMakesAClock) {
    const std::string clock = "create_generated_clock -name half -divide_by 2 -source r0/CLK r0/Q\n";
    // From the source to r1/D it takes 2 ns.
    const std::vector<Row> rows = {
        {"set_max_delay 5 -from r0", "2000"},
        {"set_max_delay 5 -from r0/CLK", "7000"},
        {"set_max_delay 5 -from r0/Q", "2000"},
        {"set_max_delay 5 -from [get_clocks half]", "2000"},
        {"set_max_delay 5 -from r0; set_max_delay 6 -from r0/Q", "2000"},
        {"set_max_delay 5 -through r0/Q", "2000"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(slacksAt(run(clock + row.lines), "r1/D").substr(0, 4), row.expected) << row.lines;
}

// Also if that output is a clock pin of the cell as well: m/Q sets off m/Q2 and begins a clock.
TEST_F(Objects, FromARegisterWhoseOutputIsAClockPin) {
    const std::string sdf =
        sdfOf("(INTERCONNECT a m/CLK (0)) (INTERCONNECT a r1/CLK (0)) (INTERCONNECT m/Q r1/D (1))\n"
              "(INTERCONNECT m/Q2 t/D (1)) (INTERCONNECT b t/CLK (0))\n"
              "(INTERCONNECT r1/Q dout (0))\n",
              cell("DFF", "r1") + cell("DFF", "t") +
                  "(CELL (CELLTYPE \"COUNT\") (INSTANCE m) (DELAY (ABSOLUTE (IOPATH (posedge CLK) Q (1)) "
                  "(IOPATH (posedge Q) Q2 (1)))))\n");
    const std::string reg =
        R"({"type": "DFF", "port_directions": {"CLK": "input", "D": "input", "Q": "output"}, "connections": )";
    const std::string json =
        R"({"modules": {"top": {"attributes": {"top": "1"}, "ports": {
 "a": {"direction": "input", "bits": [2]}, "b": {"direction": "input", "bits": [3]},
 "din": {"direction": "input", "bits": [4]}, "dout": {"direction": "output", "bits": [5]}}, "cells": {
 "m": {"type": "COUNT", "port_directions": {"CLK": "input", "Q": "output", "Q2": "output"},
  "connections": {"CLK": [2], "Q": [6], "Q2": [7]}}, "r1": )" +
        reg + R"({"CLK": [2], "D": [6], "Q": [5]}}, "t": )" + reg +
        R"({"CLK": [3], "D": [7], "Q": []}}}, "netnames": {}}}})";
    const std::string clock = "create_generated_clock -name half -divide_by 2 -source m/CLK m/Q\n";
    const std::vector<std::array<const char*, 3>> rows = {
        {"", "8000", "7000"}, // from m/Q: 1 to the clock's source, 1 or 2 beyond it
        {"set_max_delay 5 -from m", "3000", "2000"},
        {"set_max_delay 5 -from m/Q", "3000", "2000"},
        {"set_max_delay 5 -from m/CLK", "8000", "7000"},
    };
    for (const auto& [lines, data, second] : rows) {
        const Report::Report report = run(clock + lines, sdf, json);
        EXPECT_EQ(slacksAt(report, "r1/D").substr(0, 4), data) << lines;
        EXPECT_EQ(slacksAt(report, "t/D").substr(0, 4), second) << lines;
    }
}

// The same port, however it is asked for.
TEST_F(Objects, APortIsOneObject) {
    const std::vector<std::array<const char*, 3>> rows = {
        {"set_max_delay 5 -from [get_ports din]\nset_max_delay 6 -from [all_inputs]", "5000 1000",
         "9000 1000"},
        {"set_max_delay 5 -to [all_outputs]\nset_max_delay 6 -to [get_ports -of_objects [get_nets r1/Q]]",
         "9000 1000", "5000 1000"},
        {"set_max_delay 5 -through din\nset_max_delay 6 -through [get_ports d*]", "5000 1000", "5000 1000"},
    };
    for (const auto& [lines, din, dout] : rows) {
        const Report::Report report = run(lines);
        EXPECT_EQ(slacksAt(report, "r0/D"), din) << lines;
        EXPECT_EQ(slacksAt(report, "dout"), dout) << lines;
    }
}

// A cell with two clock pins is one object, whichever of them a path starts at.
TEST_F(Objects, ACellOfTwoClockPins) {
    const std::string sdf =
        sdfOf("(INTERCONNECT a m/C1 (0)) (INTERCONNECT b m/C2 (0)) (INTERCONNECT a r1/CLK (0))\n"
              "(INTERCONNECT m/Q1 r1/D (0)) (INTERCONNECT m/Q2 t/D (0)) (INTERCONNECT b t/CLK (0))\n"
              "(INTERCONNECT din m/D1 (0)) (INTERCONNECT r1/Q dout (0))\n",
              cell("DFF", "r1") + cell("DFF", "t") +
                  "(CELL (CELLTYPE \"RAM\") (INSTANCE m) (DELAY (ABSOLUTE (IOPATH (posedge C1) Q1 (1)) "
                  "(IOPATH (posedge C2) Q2 (1)))) (TIMINGCHECK (SETUPHOLD D1 (posedge C1) (0) (0)) "
                  "(SETUPHOLD D2 (posedge C2) (0) (0))))\n");
    const std::vector<std::array<const char*, 3>> rows = {
        {"set_max_delay 5 -from m\nset_max_delay 6 -from m", "5000 1000", "5000 1000"},
        {"set_max_delay 5 -from m\nset_max_delay 6 -from m/C1", "4000 1000", "4000 1000"},
        {"set_max_delay 5 -from m/C2\nset_max_delay 6 -from m", "5000 1000", "4000 1000"},
        {"set_max_delay 5 -through m\nset_max_delay 6 -through m", "5000 1000", "5000 1000"},
        {"set_max_delay 5 -through m/C1\nset_max_delay 6 -through m", "4000 1000", "5000 1000"},
    };
    for (const auto& [lines, first, second] : rows) {
        const Report::Report report = run(lines, sdf);
        EXPECT_EQ(slacksAt(report, "r1/D"), first) << lines;
        EXPECT_EQ(slacksAt(report, "t/D"), second) << lines;
    }
}

// What arrives at a pin that goes both ways passes it, and so does what it drives.
TEST_F(Objects, ThroughAPinThatGoesBothWays) {
    const std::string sdf =
        sdfOf("(INTERCONNECT a r0/CLK (0)) (INTERCONNECT a s/CLK (0)) (INTERCONNECT a r1/CLK (0))\n"
              "(INTERCONNECT b t/CLK (0)) (INTERCONNECT din r0/D (0)) (INTERCONNECT r1/Q dout (0))\n"
              "(INTERCONNECT r0/Q p/A (0)) (INTERCONNECT p/IO r1/D (0))\n"
              "(INTERCONNECT s/Q p/IO (0)) (INTERCONNECT p/Y t/D (0))\n",
              cell("DFF", "r0") + cell("DFF", "r1") + cell("DFF", "s") + cell("DFF", "t") +
                  "(CELL (CELLTYPE \"PAD\") (INSTANCE p) (DELAY (ABSOLUTE (IOPATH A IO (1)) "
                  "(IOPATH IO Y (1)))))\n");
    EXPECT_EQ(table(run("set_false_path -through p/IO", sdf)), "2 false_path 2 2 0 governs");
    EXPECT_EQ(table(run("set_false_path -from r0 -through p/IO", sdf)), "2 false_path 1 1 0 governs");
    EXPECT_EQ(table(run("set_false_path -from s -through p/IO", sdf)), "2 false_path 1 1 0 governs");
}

} // namespace
