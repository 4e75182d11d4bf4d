// Clocks: what the commands leave behind, and what replaces what.
#include "tests/support/command/Script.h"

using Support::Row;

namespace {

class SdcClocks : public testing::TestWithParam<Row> {};

TEST_P(SdcClocks, LeavesTheExpectedState) {
    const Support::Outcome outcome = Support::run(GetParam().script);
    EXPECT_EQ(outcome.constraints, GetParam().expected) << GetParam().script << "\n" << outcome.allMessages();
}

const Row created[] = {
    {"create_clock -period 10 [get_ports clk]", "clock clk 10 {0 5} on clk\n"},
    {"create_clock -period 10 clk", "clock clk 10 {0 5} on clk\n"},
    {"create_clock -p 5 -name c {clk clk2}", "clock c 5 {0 2.5} on clk clk2\n"},
    {"create_clock -name v -period 0.3", "clock v 0.3 {0 0.15}\n"},
    {"create_clock -name v -period 10 -waveform {2 6}", "clock v 10 {2 6}\n"},
    {"create_clock -name v -period 10 -waveform {5 10} -comment {any text}", "clock v 10 {5 10}\n"},
    {"create_clock -name c -period 8 [get_nets clk]", "clock c 8 {0 4} on clk\n"},
    {"create_clock -name c -period 8 [get_nets mid]", "clock c 8 {0 4} on r0/Q\n"},
    {"create_clock -name c -period 8 r0/Q", "clock c 8 {0 4} on r0/Q\n"},
    {"set_units -time 10ps; create_clock -name v -period 25", "clock v 0.25 {0 0.125}\n"},
    {"set_units -time ps -capacitance pF\ncreate_clock -name v -period 1e4", "clock v 10 {0 5}\n"},
    {"set p 4\nforeach c {x y} { create_clock -name $c -period [expr {$p * 2}] }",
     "clock x 8 {0 4}\nclock y 8 {0 4}\n"},
};
INSTANTIATE_TEST_SUITE_P(Created, SdcClocks, testing::ValuesIn(created));

const Row generated[] = {
    {"create_generated_clock -source clk -divide_by 2 r0/Q", "clock r0/Q from clk / 2 on r0/Q\n"},
    {"create_generated_clock -name g -source [get_pins r0/CLK] -multiply_by 3 -duty_cycle 40 -invert r0/Q",
     "clock g from r0/CLK * 3 duty 40 inverted on r0/Q\n"},
    {"create_generated_clock -name g -source clk -edges {1 3 5} -edge_shift {0 0.5 1} r0/Q",
     "clock g from clk e1 e3 e5 +0 +0.5 +1 on r0/Q\n"},
    {"create_clock -period 4 clk\ncreate_generated_clock -source clk -master_clock clk -phase 90 -offset "
     "0.25 r0/Q",
     "clock clk 4 {0 2} on clk\nclock r0/Q from clk / 1 master 0 offset 0.25 phase 90 on r0/Q\n"},
    {"create_generated_clock -source clk -combinational l0/Z", "clock l0/Z from clk / 1 on l0/Z\n"},
    {"derive_pll_clocks\n\nderive_pll_clocks -create_base_clocks", "pll line 1\npll line 3\n"},
};
INSTANTIATE_TEST_SUITE_P(Generated, SdcClocks, testing::ValuesIn(generated));

const Row replaced[] = {
    // Another name: the first clock goes, and its delays with it.
    {"create_clock -name a -period 10 clk; set_input_delay 1 -clock a rst; set_clock_latency 2 a\n"
     "create_clock -name b -period 5 clk",
     "clock a removed 10 {0 5} ideal network 2 2\nclock b 5 {0 2.5} on clk\n"},
    // The same name: what named it stays.
    {"create_clock -name a -period 10 clk; set_input_delay 1 -clock a rst; set_clock_latency 2 a\n"
     "set_clock_uncertainty 0.1 a; set_false_path -from a -to out\n"
     "create_clock -name a -period 5 clk",
     "clock a 5 {0 2.5} on clk ideal network 2 2 uncertainty 0.1 0.1\ninput rst 1 1 a\nfalse from {clock a} "
     "to {out}\n"},
    {"create_clock -name a -period 10 clk; create_clock -name a -period 5 clk2",
     "clock a 5 {0 2.5} on clk2\n"},
    // Both live.
    {"create_clock -name a -period 10 clk; create_clock -add -name b -period 5 clk",
     "clock a 10 {0 5} on clk\nclock b 5 {0 2.5} on clk\n"},
    // A clock keeps the targets that no other takes.
    {"create_clock -name a -period 10 {clk clk2}; create_clock -name b -period 5 clk",
     "clock a 10 {0 5} on clk2\nclock b 5 {0 2.5} on clk\n"},
    {"create_clock -name g -period 10 r0/Q; create_generated_clock -name h -source clk r0/Q",
     "clock g removed 10 {0 5}\nclock h from clk / 1 on r0/Q\n"},
    // A virtual clock has nothing to lose.
    {"create_clock -name v -period 10; create_clock -name b -period 5 clk",
     "clock v 10 {0 5}\nclock b 5 {0 2.5} on clk\n"},
    // Exceptions keep the objects that are left, groups that had several end where one is left.
    {"create_clock -name a -period 10 clk; create_clock -name b -period 10 clk2; create_clock -name v "
     "-period 1\n"
     "set_false_path -from {a b} -to out; set_false_path -from a\n"
     "set_clock_groups -asynchronous -group a -group b; set_clock_groups -asynchronous -group {a b} -group "
     "v\n"
     "set_clock_uncertainty 1 -from a -to b; set_clock_uncertainty 1 -from b -to v\n"
     "create_clock -name n -period 3 clk",
     "clock a removed 10 {0 5}\nclock b 10 {0 5} on clk2\nclock v 1 {0 0.5}\nclock n 3 {0 1.5} on clk\n"
     "uncertainty b v = 1 1\ngroups {b} {v}\nfalse from {clock b} to {out}\n"},
    {"create_clock -name a -period 10 clk; create_generated_clock -source clk -master_clock a r0/Q\n"
     "create_clock -name n -period 3 clk",
     "clock a removed 10 {0 5}\nclock r0/Q from clk / 1 on r0/Q\nclock n 3 {0 1.5} on clk\n"},
    // The name of a removed clock is free again.
    {"create_clock -name a -period 10 clk; create_clock -name b -period 5 clk; create_clock -name a -period "
     "4 clk2",
     "clock a removed 10 {0 5}\nclock b 5 {0 2.5} on clk\nclock a 4 {0 2} on clk2\n"},
};
INSTANTIATE_TEST_SUITE_P(Replaced, SdcClocks, testing::ValuesIn(replaced));

#define TWO_CLOCKS "create_clock -name a -period 10 clk; create_clock -name b -period 20 clk2\n"
#define A "clock a 10 {0 5} on clk"
#define B "clock b 20 {0 10} on clk2"

const Row latencies[] = {
    {TWO_CLOCKS "set_clock_latency 2 a", A " ideal network 2 2\n" B "\n"},
    {TWO_CLOCKS "set_clock_latency -source -early 1 a; set_clock_latency -source -late 2 a",
     A " source 1 2\n" B "\n"},
    {TWO_CLOCKS "set_clock_latency 1 -min [all_clocks]; set_clock_latency 2 -max a",
     A " ideal network 1 2\n" B " ideal network 1 -\n"},
    {TWO_CLOCKS "set_clock_latency 2 a; set_propagated_clock a", A " propagated\n" B "\n"},
    {TWO_CLOCKS "set_propagated_clock {a b}; set_clock_latency 2 a",
     A " ideal network 2 2\n" B " propagated\n"},
    {TWO_CLOCKS "set_clock_latency -source 3 a; set_propagated_clock a", A " propagated source 3 3\n" B "\n"},
    {TWO_CLOCKS "set_propagated_clock [get_ports clk2]", A "\n" B " propagated\n"},
    {TWO_CLOCKS "set_clock_latency -source -rise 1 a; set_clock_latency -source -fall 1.5 a",
     A " source 1 1.5\n" B "\n"},
    {TWO_CLOCKS "set_clock_latency -source -0.5 a", A " source -0.5 -0.5\n" B "\n"},
    {TWO_CLOCKS "set_clock_uncertainty 0.2 a", A " uncertainty 0.2 0.2\n" B "\n"},
    {TWO_CLOCKS "set_clock_uncertainty 0.2 -setup [all_clocks]; set_clock_uncertainty -hold 0.1 b",
     A " uncertainty 0.2 -\n" B " uncertainty 0.2 0.1\n"},
    {TWO_CLOCKS "set_clock_uncertainty 1 -from a -to {a b}; set_clock_uncertainty 2 -from a -to b -hold",
     A "\n" B "\nuncertainty a a = 1 1\nuncertainty a b = 1 2\n"},
    {TWO_CLOCKS "set_clock_uncertainty 1 r0; set_clock_uncertainty -setup 2 [get_pins r0/CLK]; "
                "set_clock_uncertainty 3 [get_ports clk]",
     A "\n" B "\nuncertainty r0/CLK = 2 1\nuncertainty clk = 3 3\n"},
};
INSTANTIATE_TEST_SUITE_P(Latencies, SdcClocks, testing::ValuesIn(latencies));

const Row groups[] = {
    {TWO_CLOCKS "set_clock_groups -asynchronous -group a -group [get_clocks b]",
     A "\n" B "\ngroups {a} {b}\n"},
    {TWO_CLOCKS "set_clock_groups -name g -exclusive -group {a}", A "\n" B "\ngroups g {a}\n"},
    {TWO_CLOCKS "set_clock_groups -logically -group {a b}", A "\n" B "\ngroups {a b}\n"},
    // One group that is left over of two must not stand against all clocks.
    {TWO_CLOCKS "set_clock_groups -asynchronous -group a -group zz", A "\n" B "\nunmatched 1\n"},
};
INSTANTIATE_TEST_SUITE_P(Groups, SdcClocks, testing::ValuesIn(groups));

class SdcClockMessages : public testing::TestWithParam<Row> {};

TEST_P(SdcClockMessages, AreExact) {
    EXPECT_EQ(Support::run(GetParam().script).allMessages(), GetParam().expected) << GetParam().script;
}

const Row messages[] = {
    {"create_clock -name a -period 10 clk\ncreate_clock -name b -period 10 clk",
     "x.sdc:2: note: the clock 'b' replaces 'a'\n"},
    {"create_clock -name a -period 10 clk\nset_input_delay 1 -clock a rst\ncreate_clock -name b -period 10 "
     "clk",
     "x.sdc:3: warning: the clock 'b' replaces 'a', and what named it is dropped (1 entry)\n"},
    {"create_clock -name a -period 10 clk\nset c [get_clocks a]\ncreate_clock -name b -period 10 "
     "clk\nset_false_path -from $c",
     "x.sdc:3: note: the clock 'b' replaces 'a'\n"
     "x.sdc:4: warning: set_false_path: -from: the clock 'a' was replaced\n"
     "x.sdc:4: warning: set_false_path: -from: no objects: the command has no effect\n"},
    {TWO_CLOCKS "set_clock_groups -asynchronous -group a -group zz",
     "x.sdc:2: warning: set_clock_groups: -group: no clock matches 'zz'\n"
     "x.sdc:2: warning: set_clock_groups: -group: too few clocks: the command has no effect\n"},
    {TWO_CLOCKS "set_propagated_clock r0/Q",
     "x.sdc:2: warning: set_propagated_clock: no clock is defined on 'r0/Q'\n"
     "x.sdc:2: warning: set_propagated_clock: no objects: the command has no effect\n"},
    {TWO_CLOCKS "set_clock_uncertainty 1 -rise_from a -to b",
     "x.sdc:2: warning: set_clock_uncertainty: a clock's edges are not told apart: the value holds for "
     "both\n"},
    {"create_clock -period 10 [get_nets {led[4]}]",
     "x.sdc:1: warning: create_clock: nothing drives the net 'led[4]'\n"
     "x.sdc:1: warning: create_clock: no objects: the command has no effect\n"},
    {"create_clock -period 10 zz", "x.sdc:1: warning: create_clock: no port, pin or net matches 'zz'\n"
                                   "x.sdc:1: warning: create_clock: no objects: the command has no effect\n"},
};
INSTANTIATE_TEST_SUITE_P(Warnings, SdcClockMessages, testing::ValuesIn(messages));

const Row errors[] = {
    {"create_clock clk", "x.sdc:1: error: create_clock: needs -period\n"},
    {"create_clock -period x clk", "x.sdc:1: error: create_clock: -period: expected a time, found 'x'\n"},
    {"create_clock -period", "x.sdc:1: error: create_clock: -period: expected a time, found nothing\n"},
    {"create_clock -period -name c",
     "x.sdc:1: error: create_clock: -period: expected a time, found nothing\n"},
    {"create_clock -period 0 clk",
     "x.sdc:1: error: create_clock: -period: expected a time above 0, found '0'\n"},
    {"create_clock -period -2 clk",
     "x.sdc:1: error: create_clock: -period: expected a time above 0, found '-2'\n"},
    {"create_clock -period 5", "x.sdc:1: error: create_clock: needs -name or targets\n"},
    {"create_clock -period 5 -period 6 clk", "x.sdc:1: error: create_clock: -period is given twice\n"},
    {"create_clock -period 5 clk clk2", "x.sdc:1: error: create_clock: unexpected argument 'clk2'\n"},
    {"create_clock -period 5 -name {} clk",
     "x.sdc:1: error: create_clock: -name: expected a name, found ''\n"},
    {"create_clock -period 5 -form clk", "x.sdc:1: error: create_clock: unknown option '-form'\n"},
    {"create_clock -period 10 clk -waveform {5 3}", "x.sdc:1: error: create_clock: -waveform: expected two "
                                                    "increasing times within one period, found '5 3'\n"},
    {"create_clock -period 10 clk -waveform {0 10}", "x.sdc:1: error: create_clock: -waveform: expected two "
                                                     "increasing times within one period, found '0 10'\n"},
    {"create_clock -period 10 clk -waveform {0 3 5}", "x.sdc:1: error: create_clock: -waveform: expected two "
                                                      "increasing times within one period, found '0 3 5'\n"},
    {"create_clock -period 10 clk -waveform {0 y}", "x.sdc:1: error: create_clock: -waveform: expected two "
                                                    "increasing times within one period, found '0 y'\n"},
    {"create_clock -period 10 [get_cells r0]",
     "x.sdc:1: error: create_clock: expected a port, pin or net, found the cell 'r0'\n"},
    {"create_generated_clock r0/Q", "x.sdc:1: error: create_generated_clock: needs -source\n"},
    {"create_generated_clock -source clk",
     "x.sdc:1: error: create_generated_clock: expected objects, found nothing\n"},
    {"create_generated_clock -source {clk clk2} r0/Q",
     "x.sdc:1: error: create_generated_clock: -source: expected one port or pin, found 2\n"},
    {"create_generated_clock -source clk -divide_by 2 -multiply_by 3 r0/Q",
     "x.sdc:1: error: create_generated_clock: only one of -divide_by, -multiply_by, -edges or -combinational "
     "can be given\n"},
    {"create_generated_clock -source clk -divide_by 0 r0/Q",
     "x.sdc:1: error: create_generated_clock: -divide_by: expected a whole number above 0, found '0'\n"},
    {"create_generated_clock -source clk -divide_by 1.5 r0/Q",
     "x.sdc:1: error: create_generated_clock: -divide_by: expected a whole number, found '1.5'\n"},
    {"create_generated_clock -source clk -edges {1 3 3} r0/Q",
     "x.sdc:1: error: create_generated_clock: -edges: expected three increasing edge numbers, found '1 3 "
     "3'\n"},
    {"create_generated_clock -source clk -edges {1 3} r0/Q",
     "x.sdc:1: error: create_generated_clock: -edges: expected three increasing edge numbers, found '1 3'\n"},
    {"create_generated_clock -source clk -edge_shift {1 2 3} r0/Q",
     "x.sdc:1: error: create_generated_clock: -edge_shift goes with -edges only\n"},
    {"create_generated_clock -source clk -duty_cycle 100 r0/Q",
     "x.sdc:1: error: create_generated_clock: -duty_cycle: expected a percentage between 0 and 100, found "
     "'100'\n"},
    {"create_generated_clock -source clk -phase 360.1 r0/Q",
     "x.sdc:1: error: create_generated_clock: -phase: expected degrees from -360 to 360, found '360.1'\n"},
    {"create_generated_clock -source clk -phase -1e30 r0/Q",
     "x.sdc:1: error: create_generated_clock: -phase: expected degrees from -360 to 360, found '-1e30'\n"},
    {"create_generated_clock -source clk -edges {1 3 5} -duty_cycle 40 r0/Q",
     "x.sdc:1: error: create_generated_clock: -duty_cycle does not go with -edges\n"},
    {"::create_clock clk", "x.sdc:1: error: create_clock: needs -period\n"},
    {"set_clock_groups -group a", "x.sdc:1: error: set_clock_groups: needs -asynchronous, "
                                  "-logically_exclusive, -physically_exclusive or -exclusive\n"},
    {"set_clock_groups -asynchronous", "x.sdc:1: error: set_clock_groups: needs -group\n"},
    {"set_clock_latency late a", "x.sdc:1: error: set_clock_latency: expected a time, found 'late'\n"},
    {"set_clock_latency 1", "x.sdc:1: error: set_clock_latency: expected objects, found nothing\n"},
    {"set_clock_uncertainty 1", "x.sdc:1: error: set_clock_uncertainty: needs objects, or -from and -to\n"},
    {TWO_CLOCKS "set_clock_uncertainty 1 -from a",
     "x.sdc:2: error: set_clock_uncertainty: -from and -to go together\n"},
    {TWO_CLOCKS "set_clock_uncertainty 1 -from a -to b a",
     "x.sdc:2: error: set_clock_uncertainty: objects do not go with -from and -to\n"},
    {"set_units -time 3ns", "x.sdc:1: error: set_units: -time: expected a unit such as 1ns, found '3ns'\n"},
    {"set_units -time 1m", "x.sdc:1: error: set_units: -time: expected a unit such as 1ns, found '1m'\n"},
};
INSTANTIATE_TEST_SUITE_P(Errors, SdcClockMessages, testing::ValuesIn(errors));

TEST(SdcFiles, ShareOneStateButNotTheUnit) {
    const Support::Outcome outcome = Support::run(
        std::vector<std::string>{"set_units -time ps\ncreate_clock -name a -period 5000 clk\nset x 3",
                                 "create_clock -name b -period $x clk2"});
    EXPECT_EQ(outcome.constraints, "clock a 5 {0 2.5} on clk\nclock b 3 {0 1.5} on clk2\n");
    ASSERT_EQ(outcome.result.files.size(), 2U);
    const Design::Origin first = outcome.result.clocks.front().origin,
                         second = outcome.result.clocks.back().origin;
    EXPECT_EQ(first.file.number(), 0U);
    EXPECT_EQ(first.line, 2U);
    EXPECT_EQ(second.file.number(), 1U);
    EXPECT_EQ(second.line, 1U);
}

} // namespace
