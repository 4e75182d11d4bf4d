// Port delays, exceptions, disabled arcs and constants: what each command leaves behind, and its errors.
#include "tests/support/command/Script.h"

using Support::Row;

namespace {

constexpr const char* clocks = "create_clock -name a -period 10 clk; create_clock -name b -period 20 clk2\n";
constexpr const char* clocksText = "clock a 10 {0 5} on clk\nclock b 20 {0 10} on clk2\n";

class SdcPaths : public testing::TestWithParam<Row> {};

TEST_P(SdcPaths, LeaveTheExpectedState) {
    const Support::Outcome outcome = Support::run(std::string(clocks) + GetParam().script);
    EXPECT_EQ(outcome.constraints, std::string(clocksText) + GetParam().expected) << GetParam().script << "\n"
                                                                                  << outcome.allMessages();
}

const Row delays[] = {
    {"set_input_delay 2 -clock a rst", "input rst 2 2 a\n"},
    {"set_input_delay 2 rst", "input rst 2 2\n"},
    {"set_input_delay -max 2 -clock a rst", "input rst - 2 a\n"},
    {"set_input_delay -clock a -max 2 rst; set_input_delay -clock a -min 1 rst", "input rst 1 2 a\n"},
    {"set_input_delay -clock a -max 2 rst; set_input_delay -clock a -max 3 rst", "input rst - 3 a\n"},
    // Another clock or edge replaces, unless it is added.
    {"set_input_delay -clock a 2 rst; set_input_delay -clock b -max 3 rst", "input rst - 3 b\n"},
    {"set_input_delay -clock a 2 rst; set_input_delay -clock a -clock_fall 3 rst", "input rst 3 3 a fall\n"},
    {"set_input_delay -clock a 2 rst; set_input_delay -clock b 3 rst -add_delay",
     "input rst 2 2 a\ninput rst 3 3 b\n"},
    {"set_input_delay -clock a 2 rst; set_input_delay 3 -add_delay -clock a -clock_fall rst",
     "input rst 2 2 a\ninput rst 3 3 a fall\n"},
    {"set_input_delay -clock a 2 rst; set_input_delay -clock b 3 rst -add_delay; set_input_delay 4 -clock b "
     "rst",
     "input rst 4 4 b\n"},
    // On one clock edge the worst is kept.
    {"set_input_delay -clock a 2 rst; set_input_delay -clock a 3 rst -add_delay", "input rst 2 3 a\n"},
    {"set_input_delay -clock a 2 rst; set_input_delay -clock a -max 1 rst -add_delay", "input rst 2 2 a\n"},
    {"set_input_delay -clock a -min 2 rst; set_input_delay -clock a -1 rst -add_delay",
     "input rst -1 -1 a\n"},
    // The worse of both data edges.
    {"set_input_delay -clock a -rise 2 rst; set_input_delay -clock a -fall 3 rst", "input rst 2 3 a\n"},
    {"set_input_delay -clock a -rise 2 rst; set_input_delay -clock a -fall 3 rst; set_input_delay -clock a "
     "-fall 1 rst",
     "input rst 1 2 a\n"},
    {"set_input_delay -clock a -source_latency_included -network_latency_included 1 {a b}",
     "input a 1 1 a with-source with-network\ninput b 1 1 a with-source with-network\n"},
    {"set_output_delay -clock [get_clocks b] -0.5 [get_ports {led[3]}]", "output led[3] -0.5 -0.5 b\n"},
    {"set_input_delay 1 -clock a bidi; set_output_delay 2 -clock a bidi",
     "input bidi 1 1 a\noutput bidi 2 2 a\n"},
    {"set_units -time ps; set_output_delay 1500 -clock a out", "output out 1.5 1.5 a\n"},
    // Ports that go the other way are left out.
    {"set_output_delay 1 -clock a {rst out}", "output out 1 1 a\n"},
};
INSTANTIATE_TEST_SUITE_P(Delays, SdcPaths, testing::ValuesIn(delays));

const Row exceptions[] = {
    {"set_false_path -from a -to b", "false from {clock a} to {clock b}\n"},
    {"set_false_path -from [get_clocks *] -to [get_ports out]", "false from {clock a, clock b} to {out}\n"},
    {"set_false_path -from [get_ports a]", "false from {a}\n"},
    {"set_multicycle_path +2 -to out", "multicycle 2 to {out}\n"},
    {"set_false_path -setup -from rst", "false setup from {rst}\n"},
    {"set_false_path -hold -setup -to out", "false setup hold to {out}\n"},
    {"set_false_path -from [get_cells r0] -to r1/D", "false from {cell r0} to {r1/D}\n"},
    {"set_false_path -from {r1 r0 rst r0}", "false from {rst, cell r0, cell r1}\n"},
    {"set_false_path -through r0/Q -through {mid l0} -to out",
     "false through {r0/Q} through {cell l0, net mid} to {out}\n"},
    {"set_false_path -rise_from clk2 -fall_to r1/D", "false from rise {clk2} to fall {r1/D}\n"},
    {"set_false_path -rise_through l0/Z -fall -to out", "false through rise {l0/Z} to fall {out}\n"},
    {"set_multicycle_path 2 -from r0 -to r1", "multicycle 2 from {cell r0} to {cell r1}\n"},
    {"set_multicycle_path -setup 2 -end -to r1", "multicycle 2 setup end to {cell r1}\n"},
    {"set_multicycle_path -hold 1 -start -to r1", "multicycle 1 hold start to {cell r1}\n"},
    {"set_multicycle_path 0 -setup -hold -to r1", "multicycle 0 setup hold to {cell r1}\n"},
    {"set_max_delay 4.5 -from rst -ignore_clock_latency", "max 4.5 ignore-latency from {rst}\n"},
    {"set_min_delay -to out -1", "min -1 to {out}\n"},
    {"group_path -name slow -weight 2 -to out", "group slow to {out}\n"},
    {"group_path -default -from rst", "group default from {rst}\n"},
    {"proc cut {f t} { set_false_path -from $f -to $t }\nforeach p {rst bidi} { cut $p out }",
     "false from {rst} to {out}\nfalse from {bidi} to {out}\n"},
};
INSTANTIATE_TEST_SUITE_P(Exceptions, SdcPaths, testing::ValuesIn(exceptions));

const Row others[] = {
    {"set_disable_timing l0", "disable cell l0\n"},
    {"set_disable_timing -from A -to Z [get_cells l0]", "disable cell l0 from A to Z\n"},
    {"set_disable_timing {rst r0/Q}", "disable rst\ndisable r0/Q\n"},
    {"set_disable_timing -from Y l0", "unmatched 1\n"},
    {"set_disable_timing -to Y {l0 r0}; set_disable_timing -to Q {l0 r0}",
     "disable cell r0 to Q\nunmatched 3\n"},
    {"set_case_analysis 0 rst; set_case_analysis 1 {a r0/D}; set_case_analysis one rst",
     "case rst 1\ncase a 1\ncase r0/D 1\n"},
};
INSTANTIATE_TEST_SUITE_P(Others, SdcPaths, testing::ValuesIn(others));

TEST(SdcExceptions, KeepTheirWordsAndTheirLine) {
    const Support::Outcome outcome =
        Support::run("\n\nset_false_path \\\n  -from [get_ports rst] \\\n  -to [all_registers]\n"
                     "if 1 {\n  set_false_path -to [get_pins */D]\n}\n"
                     "set_false_path -to {out led[3] led[4] bidi}\n");
    const struct {
        unsigned line;
        const char* text;
    } rows[] = {{3, "set_false_path -from rst -to {r0 r1 u1/u2/ff}"},
                {7, "set_false_path -to {r0/D r1/D u1/u2/ff/D}"},
                {9, "set_false_path -to {out led[3] led[4] and 1 more}"}};
    ASSERT_EQ(outcome.result.exceptions.size(), std::size(rows)) << outcome.allMessages();
    for (const Design::ExceptionId id : outcome.result.exceptions.ids()) {
        EXPECT_EQ(outcome.result.exceptions[id].origin.line, rows[id.number()].line);
        EXPECT_EQ(outcome.result.exceptions[id].text, rows[id.number()].text);
    }
}

class SdcPathMessages : public testing::TestWithParam<Row> {};

TEST_P(SdcPathMessages, AreExact) {
    EXPECT_EQ(Support::run(std::string(clocks) + GetParam().script).allMessages(), GetParam().expected)
        << GetParam().script;
}

const Row messages[] = {
    {"set_false_path -from zz",
     "x.sdc:2: warning: set_false_path: -from: no clock, port, cell or pin matches 'zz'\n"
     "x.sdc:2: warning: set_false_path: -from: no objects: the command has no effect\n"},
    {"set_false_path -from [get_ports -quiet zz] -to out",
     "x.sdc:2: warning: set_false_path: -from: no objects: the command has no effect\n"},
    {"set_false_path -from {rst zz}",
     "x.sdc:2: warning: set_false_path: -from: no clock, port, cell or pin matches 'zz'\n"},
    {"set_input_delay 1 -clock zz rst",
     "x.sdc:2: warning: set_input_delay: -clock: no clock matches 'zz'\n"
     "x.sdc:2: warning: set_input_delay: -clock: no objects: the command has no effect\n"},
    {"set_output_delay 1 -clock a rst",
     "x.sdc:2: warning: set_output_delay: 'rst' is no output: it gets no delay\n"},
    {"set_disable_timing -from Y l0",
     "x.sdc:2: warning: set_disable_timing: -from: the cell 'l0' has no pin 'Y'\n"},
    {"current_design other",
     "x.sdc:2: warning: current_design: 'other' is not the design that is read, 'top'\n"},
    {"set sdc_version 2.1; set_sdc_version 2.1; current_design top; set_units -capacitance 1pF", ""},
    {"set_load 2 out\nset_load -pin_load 3 {x}\n::set_drive 1 rst\nset_max_time_borrow 1 "
     "a\nset_timing_derate -late 1.1",
     "x.sdc:2: note: set_load is accepted, and not applied (2 times)\n"
     "x.sdc:4: note: set_drive is accepted, and not applied\n"
     "x.sdc:5: note: set_max_time_borrow is accepted, and not applied\n"
     "x.sdc:6: note: set_timing_derate is accepted, and not applied\n"},
};
INSTANTIATE_TEST_SUITE_P(Warnings, SdcPathMessages, testing::ValuesIn(messages));

const Row errors[] = {
    {"set_false_path", "x.sdc:2: error: set_false_path: needs -from, -through or -to\n"},
    {"set_false_path -form rst", "x.sdc:2: error: set_false_path: unknown option '-form'\n"},
    {"set_false_path -f rst",
     "x.sdc:2: error: set_false_path: ambiguous option '-f': it could be -fall, -from, -fall_from, -fall_to, "
     "-fall_through\n"},
    {"set_false_path -from rst out", "x.sdc:2: error: set_false_path: unexpected argument 'out'\n"},
    {"set_false_path -from rst -from a", "x.sdc:2: error: set_false_path: -from is given twice\n"},
    {"set_false_path -from rst -rise_from a",
     "x.sdc:2: error: set_false_path: only one of -from, -rise_from or -fall_from can be given\n"},
    {"set_false_path -from [get_nets mid]",
     "x.sdc:2: error: set_false_path: -from: expected a clock, port, cell or pin, found the net 'mid'\n"},
    {"set_false_path -rise -from rst", "x.sdc:2: error: set_false_path: -rise and -fall need -to\n"},
    {"set_multicycle_path -to out",
     "x.sdc:2: error: set_multicycle_path: expected a whole number, found nothing\n"},
    {"set_multicycle_path 1.5 -to out",
     "x.sdc:2: error: set_multicycle_path: expected a whole number, found '1.5'\n"},
    {"set_multicycle_path 2000000 -to out",
     "x.sdc:2: error: set_multicycle_path: expected a number of cycles, found '2000000'\n"},
    {"set_multicycle_path 2 -start -end -to out",
     "x.sdc:2: error: set_multicycle_path: only one of -start or -end can be given\n"},
    {"set_max_delay -to out", "x.sdc:2: error: set_max_delay: expected a time, found nothing\n"},
    {"set_max_delay 5", "x.sdc:2: error: set_max_delay: needs -from, -through or -to\n"},
    {"group_path -to out", "x.sdc:2: error: group_path: needs -name or -default\n"},
    {"set_input_delay -clock a 1", "x.sdc:2: error: set_input_delay: expected objects, found nothing\n"},
    {"set_input_delay -clock {a b} 1 rst",
     "x.sdc:2: error: set_input_delay: -clock: expected one clock, found 2\n"},
    {"set_input_delay -clock [get_ports clk] 1 rst",
     "x.sdc:2: error: set_input_delay: -clock: expected a clock, found the port 'clk'\n"},
    {"set_input_delay -clock_fall 1 rst", "x.sdc:2: error: set_input_delay: -clock_fall needs -clock\n"},
    {"set_input_delay 1 -clock a [get_pins r0/D]",
     "x.sdc:2: error: set_input_delay: expected a port, found the pin 'r0/D'\n"},
    {"set_case_analysis rising rst", "x.sdc:2: error: set_case_analysis: expected 0 or 1, found 'rising'\n"},
    {"set_disable_timing -from A r0/Q",
     "x.sdc:2: error: set_disable_timing: -from and -to are pins of a cell; 'r0/Q' is a pin\n"},
};
INSTANTIATE_TEST_SUITE_P(Errors, SdcPathMessages, testing::ValuesIn(errors));

// What reports show of a command is cut where it gets long.
TEST(SdcExceptions, KeepTheirText) {
    const std::string longName(100, 'n');
    const std::pair<std::string, std::string> rows[] = {
        {"set_false_path -from [get_ports {rst in[0] in[1] a b}] -to out",
         "set_false_path -from {rst in[0] in[1] and 2 more} -to out"},
        {"set_false_path -to out -comment " + longName, "set_false_path -to out -comment " + longName},
        {"set_false_path -to out -comment {" + longName + " " + longName + "}",
         "set_false_path -to out -comment {" + longName + " " + longName.substr(0, 26) + " ..."},
    };
    for (const auto& [script, text] : rows) {
        SCOPED_TRACE(script);
        const Support::Outcome outcome = Support::run(script);
        ASSERT_EQ(outcome.result.exceptions.size(), 1U) << outcome.allMessages();
        EXPECT_EQ(outcome.result.exceptions.front().text, text);
    }
}

} // namespace
