// The clocks as the analysis has them: waveforms, masters, insertion delays, reach, latencies, uncertainties.
#include "tests/support/command/Built.h"

#include <gtest/gtest.h>

namespace {

using Support::Built;
using Support::cell;
using Support::wires;

const std::string reg = "(IOPATH (posedge C) Q (300:400:500))";
const std::string check = "(SETUPHOLD D (posedge C) (50) (20))";
// A divider: clk to the register r, whose output clocks s.
const std::string divider = wires("(INTERCONNECT clk r/C (100:110:120)) (INTERCONNECT r/Q s/C (10))") +
                            cell("R", "r", reg, check) + cell("R", "s", reg, check);

// --- Waveforms ---

TEST(Clocks, HaveTheirWaveforms) {
    const std::pair<const char*, const char*> rows[] = {
        {"create_clock -name c -period 10", "c: 10000 {0 5000}\n"},
        {"create_clock -name c -period 10 -waveform {2 5}", "c: 10000 {2000 5000}\n"},
        {"create_clock -name c -period 10 -waveform {7 12}", "c: 10000 {7000 12000}\n"},
        {"create_clock -name c -period 3.3333", "c: 3333 {0 1667}\n"},
        {"create_clock -period 10 [get_ports clk]", "clk: 10000 {0 5000} at clk 0 0\n"},
        {"set_units -time ps\ncreate_clock -name c -period 10", "c: 10 {0 5}\n"},
        {"create_clock -name c -period 0.002", "c: 2 {0 1}\n"},
        {"create_clock -name c -period 0.0016 -waveform {0.0006 0.0016}", "c: 2 {1 2}\n"},
    };
    for (const auto& [script, expected] : rows)
        EXPECT_EQ(Built(divider, script).waves(), expected) << script;
}

struct GeneratedRow {
    const char* master; // options of the master
    const char* generated;
    const char* expected; // its period and waveform
};

TEST(Clocks, AreGenerated) {
    const GeneratedRow rows[] = {
        {"-period 10", "", "10000 {0 5000}"},
        {"-period 10", "-divide_by 1", "10000 {0 5000}"},
        {"-period 10", "-divide_by 2", "20000 {0 10000}"},
        {"-period 10", "-divide_by 3", "30000 {0 15000}"},
        {"-period 10", "-divide_by 4", "40000 {0 20000}"},
        {"-period 10 -waveform {0 3}", "-divide_by 1", "10000 {0 3000}"},
        {"-period 10 -waveform {0 3}", "-divide_by 2", "20000 {0 10000}"},
        {"-period 10 -waveform {0 3}", "-divide_by 3", "30000 {0 15000}"},
        {"-period 10 -waveform {2 7}", "-divide_by 2", "20000 {2000 12000}"},
        {"-period 10", "-multiply_by 2", "5000 {0 2500}"},
        {"-period 10 -waveform {0 2}", "-multiply_by 2", "5000 {0 1000}"},
        {"-period 10 -waveform {4 9}", "-multiply_by 5", "2000 {4000 5000}"},
        // Inverted after scaling: the fall of the one is the rise of the other.
        {"-period 10", "-divide_by 1 -invert", "10000 {5000 10000}"},
        {"-period 10", "-divide_by 2 -invert", "20000 {10000 20000}"},
        {"-period 10", "-multiply_by 2 -invert", "5000 {2500 5000}"},
        {"-period 10", "-edges {1 3 5}", "20000 {0 10000}"},
        {"-period 10", "-edges {2 4 6}", "20000 {5000 15000}"},
        {"-period 10 -waveform {0 3}", "-edges {1 2 5}", "20000 {0 3000}"},
        {"-period 10", "-edges {1 3 5} -edge_shift {1 2 1}", "20000 {1000 12000}"},
        {"-period 10", "-multiply_by 2 -duty_cycle 40", "5000 {0 2000}"},
        {"-period 10", "-divide_by 2 -duty_cycle 25", "20000 {0 5000}"},
        {"-period 10", "-multiply_by 2 -duty_cycle 33.3", "5000 {0 1665}"},
        {"-period 10", "-divide_by 1 -phase 90", "10000 {2500 7500}"},
        {"-period 10", "-divide_by 2 -phase -45", "20000 {-2500 7500}"},
        {"-period 10", "-divide_by 1 -phase 360", "10000 {10000 15000}"},
        {"-period 10", "-divide_by 1 -phase -360", "10000 {-10000 -5000}"},
        {"-period 10", "-divide_by 1 -offset 1.5", "10000 {1500 6500}"},
        {"-period 10", "-multiply_by 3", "3333 {0 1667}"},
    };
    for (const GeneratedRow& row : rows) {
        const Built built(divider,
                          "create_clock -name m " + std::string(row.master) +
                              " [get_ports clk]\ncreate_generated_clock -name g -source [get_pins r/C] " +
                              row.generated + " [get_pins r/Q]\n");
        const std::string waves = built.waves();
        EXPECT_EQ(waves.substr(waves.find("g: ")),
                  "g: " + std::string(row.expected) + " of m at r/Q 400 620\n")
            << row.master << " " << row.generated;
    }
}

TEST(Clocks, NoteARoundedPeriod) {
    const Built built(
        divider, "create_clock -name m -period 10 [get_ports clk]\n"
                 "create_generated_clock -name g -source [get_pins r/C] -multiply_by 3 [get_pins r/Q]\n");
    EXPECT_EQ(built.messages(), "2: note: the period of 'g' is rounded to a whole unit\n");
}

// --- Masters and insertion delays ---

TEST(Clocks, HaveInsertionDelays) {
    const std::string clk = "create_clock -name m -period 10 [get_ports clk]\n";
    const std::string half =
        "create_generated_clock -name h -source [get_pins r/C] -divide_by 2 [get_pins r/Q]\n";
    const std::string quarter =
        "create_generated_clock -name q -source [get_pins s/C] -divide_by 2 [get_pins s/Q]\n";
    struct Row {
        std::string script;
        const char* expected;
        const char* messages;
    };
    const Row rows[] = {
        {clk + half, "m: 10000 {0 5000} at clk 0 0\nh: 20000 {0 10000} of m at r/Q 400 620\n", ""},
        // The master's own insertion delay comes on top; the order of the commands does not matter to it.
        {clk + half + quarter,
         "m: 10000 {0 5000} at clk 0 0\nh: 20000 {0 10000} of m at r/Q 400 620\nq: 40000 {0 20000} of h at "
         "s/Q 710 1130\n",
         ""},
        // By way of the source pin, where that is behind a register that is no clock of its own.
        {clk + "create_generated_clock -name q -source [get_ports clk] -divide_by 4 [get_pins s/Q]\n",
         "m: 10000 {0 5000} at clk 0 0\nq: 40000 {0 20000} of m at s/Q 710 1130\n", ""},
        // At its own source.
        {clk + "create_generated_clock -name d -add -source [get_ports clk] -divide_by 2 [get_ports clk]\n",
         "m: 10000 {0 5000} at clk 0 0\nd: 20000 {0 10000} of m at clk 0 0\n", ""},
        // An ideal one takes none.
        {clk + half + "set_clock_latency 0 [get_clocks h]\n",
         "m: 10000 {0 5000} at clk 0 0\nh: 20000 {0 10000} of m at r/Q 0 0\n", ""},
        // Nor one whose source latency is given.
        {clk + half + "set_clock_latency -source 1 [get_clocks h]\n",
         "m: 10000 {0 5000} at clk 0 0\nh: 20000 {0 10000} of m at r/Q 0 0\n", ""},
        {clk + "create_generated_clock -name z -source [get_ports clk] -divide_by 2 [get_pins r/D]\n",
         "m: 10000 {0 5000} at clk 0 0\nz: 20000 {0 10000} of m at r/D 0 0\n",
         "2: warning: nothing leads from 'm' to 'r/D': 'z' has no insertion delay there\n"},
        // Two clocks at the source.
        {clk + "create_clock -add -name n -period 8 [get_ports clk]\n" + half,
         "m: 10000 {0 5000} at clk 0 0\nn: 8000 {0 4000} at clk 0 0\nh: 20000 {0 10000} of m at r/Q 400 "
         "620\n",
         "3: warning: create_generated_clock: several clocks reach the source 'r/C' of 'h': 'm' is taken; "
         "name one by "
         "-master_clock\n"},
        {clk + "create_clock -add -name n -period 8 [get_ports clk]\n"
               "create_generated_clock -name h -source [get_pins r/C] -master_clock n -divide_by 2 [get_pins "
               "r/Q]\n",
         "m: 10000 {0 5000} at clk 0 0\nn: 8000 {0 4000} at clk 0 0\nh: 16000 {0 8000} of n at r/Q 400 620\n",
         ""},
    };
    for (const Row& row : rows) {
        const Built built(divider, row.script);
        EXPECT_EQ(built.waves(), row.expected) << row.script;
        EXPECT_EQ(built.messages(), row.messages) << row.script;
    }
}

TEST(Clocks, InheritTheMastersSourceLatency) {
    const Built built(divider,
                      "create_clock -name m -period 10 [get_ports clk]\n"
                      "create_generated_clock -name h -source [get_pins r/C] -divide_by 2 [get_pins r/Q]\n"
                      "set_clock_latency -source -early 0.3 [get_clocks m]\n"
                      "set_clock_latency -source -late 0.7 [get_clocks m]\n");
    EXPECT_EQ(built.clock("h").source, (Model::Latency{300, 700}));
    EXPECT_EQ(built.clock("h").atPorts(true, true), (Model::Latency{700, 1320}));
    EXPECT_EQ(built.clock("h").atPorts(false, true), (Model::Latency{0, 0}));
}

// --- Reach ---

TEST(Clocks, ReachPinsUpToRegistersAndOtherClocks) {
    const std::string clk = "create_clock -name m -period 10 [get_ports clk]\n";
    const struct {
        std::string script, clock;
        const char* expected;
    } rows[] = {
        {clk, "m", "clk r/C"},
        {clk + "create_generated_clock -name h -source [get_pins r/C] -divide_by 2 [get_pins r/Q]\n", "h",
         "r/Q s/C"},
        {clk + "create_clock -name n -period 4 [get_pins r/C]\n", "m", "clk"},
        {clk + "create_clock -name n -period 4 [get_pins r/C]\n", "n", "r/C"},
        {clk + "set_case_analysis 0 [get_pins r/C]\n", "m", "clk"},
        {"create_clock -name v -period 10", "v", ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Built(divider, row.script).reach(row.clock), row.expected) << row.script;
}

// --- Latencies and uncertainties ---

TEST(Clocks, HaveTheUncertaintyOfThePairThePinOrTheClock) {
    const Built built(divider, "create_clock -name a -period 10 [get_ports clk]\n"
                               "create_clock -add -name b -period 10 [get_ports clk]\n"
                               "set_clock_uncertainty -setup 0.1 [get_clocks b]\n"
                               "set_clock_uncertainty -hold 0.2 [get_clocks b]\n"
                               "set_clock_uncertainty -setup 0.3 [get_pins r/C]\n"
                               "set_clock_uncertainty -setup -from [get_clocks a] -to [get_clocks b] 0.4\n");
    const Design::PinId pin = built.annotated.design.findPin(built.annotated.design.findCell("r"), "C");
    const Design::PinId none;
    const Design::ClockId a(0U), b(1U);
    using enum Base::Side;
    const struct {
        Design::ClockId launch, capture;
        Design::PinId pin;
        Base::Side side;
        Model::Time expected;
    } rows[] = {
        {a, a, none, setup, 0},  {b, b, none, setup, 100}, {b, b, none, hold, 200},
        {b, b, pin, setup, 300}, {b, b, pin, hold, 200},   {a, b, none, setup, 400},
        {a, b, pin, setup, 400}, {a, b, pin, hold, 200},   {a, a, pin, setup, 300},
    };
    for (const auto& row : rows)
        EXPECT_EQ(built.clocks->uncertainty(row.launch, row.capture, row.pin, row.side), row.expected)
            << row.launch.number() << row.capture.number() << (row.side == setup) << (row.pin == pin);
}

// --- Errors ---

TEST(Clocks, RefuseWhatGivesNoClock) {
    const std::string clk = "create_clock -name m -period 10 [get_ports clk]\n";
    const std::string generated = "create_generated_clock -name g -source [get_pins r/C] ";
    const std::pair<std::string, const char*> rows[] = {
        {clk + "create_generated_clock -name g -source [get_pins r/D] [get_pins r/Q]\n",
         "2: create_generated_clock: no clock reaches the source 'r/D' of 'g'; expected a clock there"},
        {"create_generated_clock -name g -source [get_pins s/C] [get_pins r/Q]\n"
         "create_generated_clock -name h -source [get_pins r/Q] [get_pins r/C]\n",
         "1: create_generated_clock: no clock reaches the source 's/C' of 'g'; expected a clock there"},
        {clk + generated + "-edges {1 3 5} -edge_shift {6 -6 0} [get_pins r/Q]\n",
         "2: create_generated_clock: 'g' gets no waveform: expected a rise and a fall within one period"},
        // What rounds to no period or to no pulse.
        {"create_clock -name m -period 5e-9 [get_ports clk]\n",
         "1: create_clock: the period of 'm' rounds to 0 units of 1ps (0.000000005 ns): the file's times are "
         "in "
         "ns, since it does not say set_units -time; expected another unit there, a longer period, or a "
         "finer "
         "--resolution"},
        {"set_units -time 10ps\ncreate_clock -name m -period 0.04 [get_ports clk]\n",
         "2: create_clock: the period of 'm' rounds to 0 units of 1ps (0.0004 ns): the file's times are in "
         "10ps, as its set_units -time says; expected another unit there, a longer period, or a finer "
         "--resolution"},
        {"create_clock -name m -period 0.001\n",
         "1: create_clock: the rise and the fall of 'm' round to the same unit of 1ps (0.001 ns): the file's "
         "times are in ns, since it does not say set_units -time; expected another unit there, a longer "
         "period, or a finer --resolution"},
        {"create_clock -name m -period 10 -waveform {0 0.0004}\n",
         "1: create_clock: the rise and the fall of 'm' round to the same unit of 1ps (10 ns): the file's "
         "times are in ns, since it does not say set_units -time; expected another unit there, a longer "
         "period, or a finer --resolution"},
        {"create_clock -name m -period 10 -waveform {0 9.9996}\n",
         "1: create_clock: the rise and the fall of 'm' round to the same unit of 1ps (10 ns): the file's "
         "times are in ns, since it does not say set_units -time; expected another unit there, a longer "
         "period, or a finer --resolution"},
        {clk + generated + "-multiply_by 30000 [get_pins r/Q]\n",
         "2: create_generated_clock: the period of 'g' rounds to 0 units of 1ps: expected a finer "
         "--resolution"},
        {clk + generated + "-multiply_by 10000 [get_pins r/Q]\n",
         "2: create_generated_clock: the rise and the fall of 'g' round to the same unit of 1ps: expected a "
         "finer --resolution"},
        {clk + generated + "-multiply_by 100 -duty_cycle 0.1 [get_pins r/Q]\n",
         "2: create_generated_clock: the rise and the fall of 'g' round to the same unit of 1ps: expected a "
         "finer --resolution"},
        {"create_clock -name m -period 2000000 [get_ports clk]\n",
         "1: the time 2000000 ns does not fit: expected at most 1073741823 units of 1e-12 s"},
        {"create_clock -name m -period 1000000 [get_ports clk]\n" + generated +
             "-divide_by 2 [get_pins r/Q]\n",
         "2: the period of 'g' does not fit the engine's integers"},
        // What would not fit 64 bits either.
        {clk + generated + "-divide_by 2147483647 -duty_cycle 99 [get_pins r/Q]\n",
         "2: the period of 'g' does not fit the engine's integers"},
        {clk + generated + "-edges {1 2 2147483647} -phase 360 [get_pins r/Q]\n",
         "2: the period of 'g' does not fit the engine's integers"},
        {clk + generated + "-edges {2147483641 2147483642 2147483643} [get_pins r/Q]\n",
         "2: the waveform of 'g' does not fit the engine's integers"},
        {"create_clock -name m -period 1000000 [get_ports clk]\n" + generated +
             "-offset 100000 -phase 360 [get_pins r/Q]\n",
         "2: the waveform of 'g' does not fit the engine's integers"},
        {clk + "set_clock_latency -source 1e7 [get_clocks m]\n",
         "1: the time 10000000 ns does not fit: expected at most 1073741823 units of 1e-12 s"},
    };
    for (const auto& [script, expected] : rows)
        EXPECT_EQ(Support::buildErrorOf(divider, script), expected) << script;
}

} // namespace
