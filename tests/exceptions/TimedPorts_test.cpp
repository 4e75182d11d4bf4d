// Ports that only an exception times, over whole runs (Runs.h).
#include "tests/exceptions/Runs.h"

#include <array>
#include <string>
#include <vector>

namespace {

using namespace Support::Runs;

class TimedPorts : public ExceptionRuns {};

// A port whose delay has no clock, or which has none, is timed only by a delay that covers its paths: an
// input delay is when data arrives, an output delay is taken off, and no clock's latency counts on that side.
TEST_F(TimedPorts, PortsWithoutAClock) {
    struct Case {
        const char *lines, *din, *dout; // setup and hold slack of what din leads to, r0/D, and of dout
    };
    const char* const none = "- -";
    // r1/CLK to dout takes 1 ns, din to r0/D 1 ns; without -clock a command replaces the delays of before.
    const std::vector<Case> cases = {
        {"", "9000 1000", "9000 1000"},
        {"set_input_delay 0.3 din; set_output_delay 0.2 dout", none, none},
        // By whichever option the paths are covered.
        {"set_output_delay 0.2 dout; set_max_delay 4 -from r1", "9000 1000", "2800 -"},
        {"set_output_delay 0.2 dout; set_max_delay 4 -from r1/CLK -to dout", "9000 1000", "2800 -"},
        {"set_output_delay 0.2 dout; set_max_delay 4 -through r1/Q", "9000 1000", "2800 -"},
        {"set_output_delay 0.2 dout; set_max_delay 4 -through [get_cells r1]", "9000 1000", "2800 -"},
        {"set_output_delay 0.2 dout; set_max_delay 4 -from [get_clocks a]", "3000 1000", "2800 -"},
        {"set_output_delay 0.2 dout; set_max_delay 4 -to dout", "9000 1000", "2800 -"},
        {"set_input_delay 0.3 din; set_max_delay 4 -from din", "2700 -", "9000 1000"},
        {"set_input_delay 0.3 din; set_max_delay 4 -through din", "2700 -", "9000 1000"},
        {"set_input_delay 0.3 din; set_max_delay 4 -through r0/D", "2700 -", "9000 1000"},
        {"set_input_delay 0.3 din; set_max_delay 4 -to r0", "2700 -", "9000 1000"},
        {"set_input_delay 0.3 din; set_max_delay 4 -to r0/D", "2700 -", "9000 1000"},
        {"set_input_delay 0.3 din; set_max_delay 4 -to [get_clocks a]", "2700 -", "3000 1000"},
        // Which does not cover them.
        {"set_output_delay 0.2 dout; set_max_delay 4 -from r0", "9000 1000", none},
        {"set_output_delay 0.2 dout; set_max_delay 4 -to [get_clocks a]", "3000 1000", none},
        {"set_output_delay 0.2 dout; set_max_delay 4 -from r1 -to [get_clocks a]", "9000 1000", none},
        {"set_input_delay 0.3 din; set_max_delay 4 -from [get_clocks a]", none, "3000 1000"},
        {"set_input_delay 0.3 din; set_max_delay 4 -from [get_clocks a] -to r0", none, "9000 1000"},
        // Each side by itself.
        {"set_output_delay 0.2 dout; set_min_delay 0.4 -from r1", "9000 1000", "- 800"},
        {"set_input_delay 0.3 din; set_min_delay 0.4 -to r0", "- 900", "9000 1000"},
        {"set_input_delay -max 0.3 din; set_max_delay 4 -to r0; set_min_delay 0.4 -to r0", "2700 -",
         "9000 1000"},
        {"set_input_delay -min 0.3 din; set_max_delay 4 -to r0; set_min_delay 0.4 -to r0", "- 900",
         "9000 1000"},
        {"set_output_delay -max 0.2 dout; set_max_delay 4 -from r1; set_min_delay 0.4 -from r1", "9000 1000",
         "2800 -"},
        {"set_output_delay -min 0.2 dout; set_max_delay 4 -from r1; set_min_delay 0.4 -from r1", "9000 1000",
         "- 800"},
        // Beside a delay with a clock: this one always counts, the other one only under a delay.
        {"set_input_delay -0.5 -add_delay din", "9000 1000", "9000 1000"},
        {"set_input_delay 0.3 -add_delay din; set_max_delay 4 -to r0", "2700 1000", "9000 1000"},
        {"set_input_delay -0.5 -add_delay din; set_min_delay 0 -to r0", "9000 500", "9000 1000"},
        {"set_output_delay 0.2 -add_delay dout; set_max_delay 4 -from r1", "9000 1000", "2800 1000"},
        // No delay at all.
        {"remove", none, none},
        {"remove; set_max_delay 4 -from r1; set_min_delay 0.4 -through r1/Q", none, "3000 600"},
        {"remove; set_max_delay 4 -to [get_clocks a]; set_min_delay 0.4 -through r0/D", "3000 600", none},
        // What beats a delay, and what it beats.
        {"set_output_delay 0.2 dout; set_max_delay 4 -from r1; set_false_path -setup -to dout", "9000 1000",
         none},
        {"set_output_delay 0.2 dout; set_max_delay 4 -from r1; set_multicycle_path 2 -to dout", "9000 1000",
         "2800 -"},
        {"set_output_delay 0.2 dout; set_multicycle_path 2 -from r1", "9000 1000", none},
        {"set_input_delay 0.3 din; set_max_delay 4 -to r0; set_false_path -from din", none, "9000 1000"},
        // The latency of the clock at the other end counts, and so does the uncertainty of the capture.
        {"set_clock_latency -source 0.1 a; set_output_delay 0.2 dout; set_max_delay 4 -from r1", "9000 1000",
         "2700 -"},
        {"set_clock_latency -source 0.1 a; set_input_delay 0.3 din; set_max_delay 4 -to r0", "2800 -",
         "9000 1000"},
        {"set_clock_uncertainty 0.1 a; set_input_delay 0.3 din; set_max_delay 4 -to r0", "2600 -",
         "8900 900"},
        {"set_clock_uncertainty 0.1 a; set_output_delay 0.2 dout; set_max_delay 4 -from r1", "8900 900",
         "2800 -"},
        {"set_clock_latency -source 0.1 a; set_output_delay 0.2 dout\n"
         "set_max_delay 4 -from r1 -ignore_clock_latency",
         "9000 1000", "2800 -"},
        {"set_clock_latency -source 0.1 a; set_input_delay 0.3 din\n"
         "set_max_delay 4 -to r0 -ignore_clock_latency",
         "2700 -", "9000 1000"},
    };
    for (const Case& row : cases) {
        std::string lines = row.lines;
        if (lines.starts_with("remove")) // the delays go with their clock
            lines = "create_clock -name gone -period 3 s/Q\nset_input_delay 0 -clock gone din\n"
                    "set_output_delay 0 -clock gone dout\ncreate_clock -name new -period 3 s/Q\n" +
                    lines.substr(lines.find(';') == std::string::npos ? lines.size() : lines.find(';') + 1);
        const Report::Report report = run(lines);
        EXPECT_EQ(slacksAt(report, "r0/D"), row.din) << row.lines;
        EXPECT_EQ(slacksAt(report, "dout"), row.dout) << row.lines;
        // A port without a slack is counted as before.
        const std::size_t untimed =
            (slacksAt(report, "r0/D") == none ? 1U : 0U) + (slacksAt(report, "dout") == none ? 1U : 0U);
        EXPECT_EQ(report.unconstrainedEndpoints, untimed + 1) << row.lines; // s/D
    }
}

// A port that goes both ways is an input and an output, each with a delay of its own.
TEST_F(TimedPorts, APortWithoutAClockThatGoesBothWays) {
    const std::string json =
        R"({"modules": {"top": {"attributes": {"top": "1"}, "ports": {
 "a": {"direction": "input", "bits": [2]}, "b": {"direction": "input", "bits": [6]},
 "din": {"direction": "input", "bits": [7]}, "dout": {"direction": "output", "bits": [4]},
 "io": {"direction": "inout", "bits": [3]}}, "cells": {
 "r0": {"type": "DFF", "port_directions": {"CLK": "input", "D": "input", "Q": "output"},
  "connections": {"CLK": [2], "D": [7], "Q": [5]}},
 "r1": {"type": "DFF", "port_directions": {"CLK": "input", "D": "input", "Q": "output"},
  "connections": {"CLK": [2], "D": [3], "Q": [4]}},
 "p": {"type": "PAD", "port_directions": {"A": "input", "IO": "inout"}, "connections": {"A": [5], "IO": [3]}}},
 "netnames": {}}}})";
    const std::string sdf = sdfOf("(INTERCONNECT io r1/D (1)) (INTERCONNECT p/IO r1/D (4))\n",
                                  cell("DFF", "r0") + cell("DFF", "r1") +
                                      "(CELL (CELLTYPE \"PAD\") (INSTANCE p) (DELAY (ABSOLUTE (IOPATH A IO "
                                      "(1)))))\n");
    const std::string delays = "set_input_delay 0.3 io; set_output_delay 0.2 io\n";
    // It takes 2 ns from r0/CLK to io, 1 from io to r1/D, 6 from r0/CLK to r1/D.
    const std::vector<std::array<const char*, 3>> rows = {
        {"", "- -", "4000 6000"},
        {"set_max_delay 7 -from r0", "4800 -", "1000 6000"},
        {"set_min_delay 0.1 -to r1", "- -", "4000 1200"},
        {"set_min_delay 0.1 -from io", "- -", "4000 1200"},
        {"set_max_delay 7 -to io", "4800 -", "4000 6000"},
        {"set_min_delay 0.1 -through io", "- 2100", "4000 1200"},
    };
    for (const auto& [lines, io, data] : rows) {
        const Report::Report report = run(delays + lines, sdf, json);
        EXPECT_EQ(slacksAt(report, "io"), io) << lines;
        EXPECT_EQ(slacksAt(report, "r1/D"), data) << lines;
    }
    EXPECT_EQ(slacksAt(run("set_min_delay 0.1 -to r1", sdf, json), "r1/D"), "4000 900") << "without a delay";
}

// What the report shows of such a path.
TEST_F(TimedPorts, PathsOfPortsWithoutAClock) {
    const auto path = [&](const std::string& lines, const std::string& end) {
        for (const Report::Path& each : run(lines).paths)
            if (each.endpoint == end)
                return each.startDescription + " | " + each.endDescription + " | " + each.group + " | " +
                       std::to_string(each.inputDelay) + " " + std::to_string(each.outputDelay) + " | " +
                       std::to_string(each.points.front().arrival) + " " + std::to_string(each.arrival) +
                       " " + std::to_string(each.required) + " " + std::to_string(each.slack);
        return std::string("none");
    };
    EXPECT_EQ(path("set_input_delay 0.3 din; set_max_delay 4 -to r0", "r0/D"),
              "input port | rising edge-triggered register clocked by a | a | 300 0 | 300 1300 4000 2700");
    EXPECT_EQ(path("set_input_delay 0.3 din; set_min_delay 0.4 -to r0", "r0/D"),
              "input port | rising edge-triggered register clocked by a | a | 300 0 | 300 1300 400 900");
    EXPECT_EQ(path("set_output_delay 0.2 dout; set_max_delay 4 -from r1", "dout"),
              "rising edge-triggered register clocked by a | output port | default | 0 200 | 0 1000 3800 "
              "2800");
    EXPECT_EQ(path("set_output_delay 0.2 dout; set_min_delay 0.4 -from r1", "dout"),
              "rising edge-triggered register clocked by a | output port | default | 0 200 | 0 1000 200 "
              "800");
}

} // namespace
