// What the report says of exceptions, what is refused, and what multicycles make of achieved periods.
//
//   din -> r0/D   r0/Q -> g/A  g/Z -> r1/D   r1/Q -> dout   s/Q -> t/D
//
// r0, r1 and s are clocked by a (period 10), t by b (period 10) and by c, a clock on no register of its own.
// From Q to D it takes 3 ns, from din and to dout 1 ns; checks take nothing.
#include "cli/Session.h"
#include "tests/support/Rows.h"
#include "tests/support/Sdf.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace {

std::string cell(const std::string& type, const std::string& name) {
    return type == "BUF"
               ? Support::cell("BUF", name, "(IOPATH A Z (1))")
               : Support::flipFlop(name, {.clock = "CLK", .clockToOutput = 1, .setup = 0, .hold = 0});
}

std::string sdfOf(const std::string& wires, const std::string& cells) {
    return Support::sdf(Support::wires(wires) + cells, "1ns");
}

const std::string& smallSdf() {
    static const std::string text =
        sdfOf("(INTERCONNECT a r0/CLK (0)) (INTERCONNECT a r1/CLK (0)) (INTERCONNECT a s/CLK (0))\n"
              "(INTERCONNECT b t/CLK (0)) (INTERCONNECT din r0/D (1)) (INTERCONNECT r0/Q g/A (1))\n"
              "(INTERCONNECT g/Z r1/D (0)) (INTERCONNECT r1/Q dout (0)) (INTERCONNECT s/Q t/D (2))\n",
              cell("DFF", "r0") + cell("DFF", "r1") + cell("DFF", "s") + cell("DFF", "t") + cell("BUF", "g"));
    return text;
}

constexpr const char* clocks = "create_clock -period 10 a; create_clock -period 10 b; "
                               "set_input_delay 0 -clock a din; set_output_delay 0 -clock a dout\n";

class Exceptions : public testing::Test {
protected:
    // The lines after that of the clocks, from line 2 on.
    Report::Report run(const std::string& lines, const std::string& sdf = smallSdf(),
                       const std::string& json = "") {
        folder_.write("d.sdf", sdf);
        folder_.write("d.sdc", clocks + lines + "\n");
        Cli::Options options;
        options.sdf = folder_.at("d.sdf");
        options.sdc = {folder_.at("d.sdc")};
        if (!json.empty()) {
            folder_.write("d.json", json);
            options.netlist = folder_.at("d.json");
        }
        return Cli::Session().run(options);
    }
    // What is said of the constraints: warnings and notes by line, and at last what ends the run.
    std::string messages(const std::string& lines, const std::string& sdf = smallSdf()) {
        std::string text;
        const auto add = [&](const Base::Place& place, const std::string& message) {
            text += (text.empty() ? "" : "\n") + std::to_string(place.line) + ": " + message;
        };
        try {
            for (const Base::Diagnostic& diagnostic : run(lines, sdf).diagnostics)
                add(diagnostic.place,
                    std::string(Base::toString(diagnostic.severity)) + ": " + diagnostic.text);
        } catch (const Base::BadInput& error) {
            const std::string whole = error.what();
            text += (text.empty() ? "" : "\n") + whole.substr(whole.find("d.sdc:") + 6);
        }
        return text;
    }

private:
    Support::TemporaryFolder folder_;
};

std::string table(const Report::Report& report) {
    std::string text;
    for (const Report::ExceptionUse& use : report.exceptions) {
        text += (text.empty() ? "" : "; ") + std::to_string(use.exception.line) + " " + use.exception.kind +
                " " + std::to_string(use.setupEndpoints) + " " + std::to_string(use.holdEndpoints) + " " +
                std::to_string(use.paths) + " " + use.status;
        for (const unsigned line : use.overruledBy)
            text += " " + std::to_string(line);
    }
    return text;
}

// Setup and hold slack of an end point; "-" for none.
std::string slacksAt(const Report::Report& report, const std::string& pin) {
    const auto shown = [](const Report::MaybeTime& slack) {
        return slack ? std::to_string(*slack) : std::string("-");
    };
    const auto end = std::ranges::find(report.endpoints, pin, &Report::Endpoint::pin);
    return end == report.endpoints.end() ? "- -" : shown(end->setupSlack) + " " + shown(end->holdSlack);
}

struct Row {
    const char *lines, *expected;
};

// By line: kind, end points of setup and of hold, reported paths, status, overruling lines.
TEST_F(Exceptions, Table) {
    const std::vector<Row> rows = {
        {"", ""},
        {"set_false_path -to r1", "2 false_path 1 1 0 governs"},
        {"set_false_path -setup -to {r0 r1}", "2 false_path 2 0 0 governs"},
        {"set_multicycle_path 2 -from [get_clocks a]", "2 multicycle_path 4 4 8 governs"},
        {"set_multicycle_path 2 -setup -from r0\nset_multicycle_path 1 -hold -from r0",
         "2 multicycle_path 1 0 1 governs; 3 multicycle_path 0 1 1 governs"},
        {"set_max_delay 5 -to dout", "2 max_delay 1 0 1 governs"},
        {"group_path -name mine -to {r1 dout}", "2 path_group 2 2 4 governs"},
        {"group_path -name mine -to r1\nset_false_path -from r0",
         "2 path_group 0 0 0 always overruled 3; 3 false_path 1 1 0 governs"},
        // Through a register's clock pin: all that it launches.
        {"set_false_path -through r0/CLK", "2 false_path 1 1 0 governs"},
        {"set_max_delay 5 -from r0 -through r0/CLK -to r1", "2 max_delay 1 0 1 governs"},
        // Names that are not there, and lists that are empty.
        {"set_false_path -from [get_cells -quiet nothing] -to r1\nset_false_path -to r1\nset_max_delay 3 -to "
         "x",
         "2 false_path 0 0 0 matches nothing; 3 false_path 1 1 0 governs; 4 max_delay 0 0 0 matches nothing"},
        // Objects between which there is no path, in the wrong order, or without a clock.
        {"set_false_path -from r1 -to r0", "2 false_path 0 0 0 matches no path"},
        {"set_false_path -through g/Z -through g/A", "2 false_path 0 0 0 matches no path"},
        {"set_false_path -from s -through g/Z", "2 false_path 0 0 0 matches no path"},
        {"create_clock -name c -period 5\nset_false_path -from [get_clocks c]",
         "3 false_path 0 0 0 matches no path"},
        // Others come before it on all of its paths, or on some.
        {"set_multicycle_path 2 -to r1\nset_false_path -from [get_clocks a]",
         "2 multicycle_path 0 0 0 always overruled 3; 3 false_path 4 4 0 governs"},
        {"set_max_delay 5 -to r1\nset_max_delay 6 -to r1",
         "2 max_delay 0 0 0 always overruled 3; 3 max_delay 1 0 1 governs"},
        {"set_max_delay 5 -to {r0 r1}\nset_max_delay 6 -to r1",
         "2 max_delay 1 0 1 governs; 3 max_delay 1 0 1 governs"},
        {"set_multicycle_path 2 -setup -to {r0 r1}\nset_max_delay 6 -to r0\nset_max_delay 7 -to "
         "r1\nset_min_delay 0 "
         "-to {r0 r1}",
         "2 multicycle_path 0 0 0 always overruled 3 4; 3 max_delay 1 0 1 governs; 4 max_delay 1 0 1 "
         "governs; "
         "5 min_delay 0 2 2 governs"},
        // Clock groups take the paths away.
        {"set_clock_groups -asynchronous -group a -group b\nset_max_delay 5 -from s -to t",
         "3 max_delay 0 0 0 always overruled 2"},
        {"set_max_delay 5 -from [get_clocks a] -to [get_clocks b]\nset_clock_groups -exclusive -group b",
         "2 max_delay 0 0 0 always overruled 3"},
        {"set_clock_groups -asynchronous -group a -group b\nset_false_path -from r0 -to t",
         "3 false_path 0 0 0 matches no path"},
        {"set_clock_groups -asynchronous -group a -group b\nset_false_path -from {r0 s}",
         "3 false_path 1 1 0 governs"},
        // Without a clock at both ends only a delay times a path, so nothing else governs there.
        {"set_output_delay 0 dout\nset_max_delay 5 -to dout\nset_multicycle_path 2 -to dout",
         "3 max_delay 1 0 1 governs; 4 multicycle_path 0 0 0 always overruled 3"},
        {"set_output_delay 0 dout\nset_min_delay 5 -from s\nset_multicycle_path 2 -to dout",
         "3 min_delay 0 1 1 governs; 4 multicycle_path 0 0 0 matches no path"},
        {"set_output_delay 0 dout\nset_min_delay 0 -from r1\nset_false_path -to dout",
         "3 min_delay 0 0 0 always overruled 4; 4 false_path 0 1 0 governs"},
        // Edges of clocks.
        {"set_false_path -rise_from [get_clocks a] -to r1", "2 false_path 1 1 0 governs"},
        {"set_false_path -fall_from [get_clocks a] -to r1", "2 false_path 0 0 0 matches no path"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(table(run(row.lines)), row.expected) << row.lines;
}

// A port whose delay has no clock, or which has none, is timed only by a delay that covers its paths: an
// input delay is when data arrives, an output delay is taken off, and no clock's latency counts on that side.
TEST_F(Exceptions, PortsWithoutAClock) {
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
TEST_F(Exceptions, APortWithoutAClockThatGoesBothWays) {
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
TEST_F(Exceptions, PathsOfPortsWithoutAClock) {
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

// Data that starts at a clock's source on a register's output starts at the cell, but not at its clock pin.
TEST_F(Exceptions, FromARegisterThatMakesAClock) {
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
TEST_F(Exceptions, FromARegisterWhoseOutputIsAClockPin) {
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
TEST_F(Exceptions, APortIsOneObject) {
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
TEST_F(Exceptions, ACellOfTwoClockPins) {
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

TEST_F(Exceptions, Messages) {
    const std::vector<Row> rows = {
        {"set_false_path", "2: error: set_false_path: needs -from, -through or -to"},
        {"set_false_path -to r1 -fast", "2: error: set_false_path: unknown option '-fast'"},
        {"set_multicycle_path -to r1",
         "2: error: set_multicycle_path: expected a whole number, found nothing"},
        {"set_multicycle_path two -to r1",
         "2: error: set_multicycle_path: expected a whole number, found 'two'"},
        {"set_multicycle_path 2 -start -end -to r1",
         "2: error: set_multicycle_path: only one of -start or -end can be given"},
        {"set_max_delay 3 -from r0 -rise_from r1",
         "2: error: set_max_delay: only one of -from, -rise_from or -fall_from can be given"},
        {"set_max_delay 3 -to [get_nets g/Z]",
         "2: error: set_max_delay: -to: expected a clock, port, cell or pin, found the net 'g/Z'"},
        {"set_max_delay 3 -from g/Z",
         "2: error: set_max_delay: -from 'g/Z' is no start point, which would cut the "
         "paths there; expected a clock, a register or its clock pin, or an input port"},
        {"set_min_delay 3 -to g/A",
         "2: error: set_min_delay: -to 'g/A' is no end point, which would cut the paths "
         "there; expected a clock, a register or its data pin, or an output port"},
        {"set_false_path -from g/Z",
         "2: warning: set_false_path: -from 'g/Z' is no start point: taken as -through"},
        {"group_path -name x -from g/Z",
         "2: warning: group_path: -from 'g/Z' is no start point: taken as -through"},
        {"group_path -name x -rise_to r1",
         "2: note: group_path: edges of data are not told apart: taken for rising and falling ones"},
        {"set_multicycle_path 2 -to g",
         "2: warning: set_multicycle_path: -to 'g' is no end point: taken as -through"},
        {"set_false_path -from [get_cells none]",
         "2: warning: get_cells: no cell matches 'none'\n2: warning: set_false_path: -from: no objects: the "
         "command has no effect"},
        {"set_false_path -from [list]",
         "2: warning: set_false_path: -from: no objects: the command has no effect"},
        {"set_false_path -rise_to r1",
         "2: note: set_false_path: edges of data are not told apart: taken for rising "
         "and falling ones"},
        {"set_false_path -rise_to [get_clocks b]", ""},
        {"group_path -name x -weight 2 -to r1",
         "2: note: group_path: -weight and -critical_range are accepted, and "
         "not applied"},
        {"set_case_analysis 1 g/A",
         "2: note: set_case_analysis: constants stop at the pins that they are given for, "
         "since what cells make of them is not known"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(messages(row.lines), row.expected) << row.lines;
}

// A row of gates, each with an exception through it: a path passes them all, so that each needs a class.
TEST_F(Exceptions, MoreThanThereAreClassesFor) {
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

// Gates side by side are told apart by seven classes, also where all lead to one end point; every second one
// has a cycle more.
TEST_F(Exceptions, ManyThroughPointsShareClasses) {
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

// What arrives at a pin that goes both ways passes it, and so does what it drives.
TEST_F(Exceptions, ThroughAPinThatGoesBothWays) {
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

// Registers with early and with late clocks, too many to be told apart, lead to one end point.
TEST_F(Exceptions, LatenciesThatCannotBeIgnored) {
    const auto wide = [](int registers) {
        std::string wires =
            "(INTERCONNECT b t/CLK (0)) (INTERCONNECT w/Z t/D (0)) (INTERCONNECT din r0/D (0)) "
            "(INTERCONNECT r0/Q dout (0))\n";
        std::string inputs, cells;
        for (int i = 0; i < registers; ++i) {
            const std::string number = std::to_string(i);
            wires += "(INTERCONNECT a r" + number + "/CLK (" + std::to_string(i % 2) + ")) (INTERCONNECT r" +
                     number + "/Q w/I" + number + " (0))\n";
            inputs += "(IOPATH I" + number + " Z (1))\n";
            cells += cell("DFF", "r" + number);
        }
        return sdfOf(wires, "(CELL (CELLTYPE \"WIDE\") (INSTANCE w) (DELAY (ABSOLUTE\n" + inputs + ")))\n" +
                                cells + cell("DFF", "t"));
    };
    const std::string ignoring = "set_max_delay 5 -to t -ignore_clock_latency";
    EXPECT_EQ(messages(ignoring, wide(499)), "");
    EXPECT_EQ(
        messages(ignoring, wide(500)),
        "2: error: -ignore_clock_latency: the clock reaches the start points at different times; expected "
        "-from with registers or ports, or an ideal clock");
    EXPECT_EQ(messages(ignoring + "\nset_clock_latency 1 a", wide(500)), "");
}

// The period at which setup would just be met: a path of n cycles needs an n-th of its time.
TEST_F(Exceptions, AchievedPeriods) {
    struct Case {
        const char* lines;
        Report::MaybeTime period; // of a
    };
    // Without exceptions r0 to r1 needs 3 ns; din to r0 and r1 to dout 1.
    const std::vector<Case> cases = {
        {"", 3000},
        {"set_multicycle_path 2 -to r1", 1500},
        {"set_multicycle_path 2 -setup -to r1\nset_multicycle_path 1 -hold -to r1", 1500},
        {"set_multicycle_path 2 -start -to r1", 1500},
        {"set_multicycle_path 7 -to r1", 1000},
        {"set_false_path -to r1", 1000},
        {"set_max_delay 2 -to r1", 1000},
        {"set_clock_uncertainty 1 -setup a", 4000},
        {"set_clock_uncertainty 1 -setup a\nset_multicycle_path 4 -to r1", 2000},
        {"set_multicycle_path 0 -to r1", 1000},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(Support::rowOf(cases, row));
        const Report::Report report = run(row.lines);
        const auto clock = std::ranges::find(report.clocks, "a", &Report::Clock::name);
        ASSERT_NE(clock, report.clocks.end());
        EXPECT_EQ(clock->achievedPeriod, row.period) << row.lines;
    }
}

TEST_F(Exceptions, PathGroups) {
    const std::vector<std::pair<const char*, const char*>> rows = {
        {"", "a"},
        {"group_path -name mine -to r1", "mine"},
        {"group_path -name mine -from [get_clocks a]\ngroup_path -name yours -through g/Z", "yours"},
        {"group_path -name mine -to r1\ngroup_path -name yours -to {r0 r1}", "yours"},
        {"group_path -default -to r1", "default"},
    };
    for (const auto& [lines, group] : rows) {
        std::vector<std::string> groups;
        for (const Report::Path& path : run(lines).paths)
            if (path.endpoint == "r1/D")
                groups.push_back(path.group);
        EXPECT_EQ(groups, std::vector<std::string>(2, group)) << lines;
    }
}

} // namespace
