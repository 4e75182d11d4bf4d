// Which poles there are: starts and ends of paths, by pin and edge.
#include "tests/support/command/Built.h"

#include <gtest/gtest.h>

namespace {

using Support::Built;
using Support::cell;
using Support::wires;

const std::string rising = "(IOPATH (posedge C) Q (4))", setup = "(SETUP D (posedge C) (1))";
const std::string nets =
    wires("(INTERCONNECT clk r/C (1)) (INTERCONNECT clk s/C (1)) (INTERCONNECT d r/D (1))"
          "(INTERCONNECT r/Q s/D (1)) (INTERCONNECT s/Q q (1))");
const std::string clk = "create_clock -name c -period 10 [get_ports clk]\n";

struct Row {
    std::string cells, script;
    const char* expected;
};

void check(std::span<const Row> rows) {
    for (const Row& row : rows)
        EXPECT_EQ(Built(row.cells, row.script).poles(), row.expected) << row.cells << row.script;
}

TEST(TimingModel, HasStartsAndEndsOnTheirEdges) {
    const std::string second = cell("R", "s", rising, setup);
    const Row rows[] = {
        {nets + cell("R", "r", rising, setup) + second, clk,
         "starts: r/C rise, s/C rise, ends: r/D by r/C rise, s/D by s/C rise,"},
        // A hold alone makes an end.
        {nets + cell("R", "r", rising, "(HOLD D (posedge C) (1))") + second, clk,
         "starts: r/C rise, s/C rise, ends: r/D by r/C rise, s/D by s/C rise,"},
        // An arc without an edge launches on the edges of the checks, and a check without one captures on
        // those of the arcs.
        {nets + cell("R", "r", "(IOPATH C Q (4))", "(SETUP D (negedge C) (1))") + second, clk,
         "starts: r/C fall, s/C rise, ends: r/D by r/C fall, s/D by s/C rise,"},
        {nets + cell("R", "r", "(IOPATH (negedge C) Q (4))", "(SETUP D C (1))") + second, clk,
         "starts: r/C fall, s/C rise, ends: r/D by r/C fall, s/D by s/C rise,"},
        {nets + cell("R", "r", "(IOPATH C Q (4))", "(SETUP D C (1))") + second, clk,
         "starts: r/C rise, s/C rise, ends: r/D by r/C rise, s/D by s/C rise,"},
        // Each edge has its own.
        {nets + cell("R", "r", rising, "(SETUP D (negedge C) (1))") + second, clk,
         "starts: r/C fall, r/C rise, s/C rise, ends: r/D by r/C fall, s/D by s/C rise,"},
        {nets +
             cell("R", "r", "(IOPATH (posedge C) Q (4)) (IOPATH (negedge C) Q (5))",
                  "(SETUP D (posedge C) (1)) (SETUP D (negedge C) (1))") +
             second,
         clk,
         "starts: r/C fall, r/C rise, s/C rise, ends: r/D by r/C fall, r/D by r/C rise, s/D by s/C rise,"},
        // Reset pins are ends.
        {nets +
             cell("R", "r", rising + "(IOPATH (negedge N) Q (5))",
                  setup + "(RECOVERY (posedge N) (posedge C) (1))") +
             second,
         clk, "starts: r/C rise, s/C rise, ends: r/D by r/C rise, r/N by r/C rise, s/D by s/C rise,"},
        // Without a clock there is nothing, and the clock pins are reported.
        {nets + cell("R", "r", rising, setup) + second, "create_clock -name v -period 1\n",
         "starts: ends: unclocked: r/C, s/C,"},
        {nets + cell("R", "r", rising, setup) + second, "create_clock -name c -period 1 [get_pins r/C]\n",
         "starts: r/C rise, ends: r/D by r/C rise, unclocked: s/C,"},
        // Disabled and constant.
        {nets + cell("R", "r", rising, setup) + second, clk + "set_disable_timing [get_pins s/D]\n",
         "starts: r/C rise, s/C rise, ends: r/D by r/C rise,"},
        {nets + cell("R", "r", rising, setup) + second, clk + "set_case_analysis 0 [get_pins r/D]\n",
         "starts: r/C rise, s/C rise, ends: s/D by s/C rise,"},
    };
    check(rows);
}

TEST(TimingModel, HasAPoleForEachReferenceEdgeOfAPort) {
    const std::string cells = nets + cell("R", "r", rising, setup) + cell("R", "s", rising, setup);
    const std::string in = "set_input_delay 1 -clock c ", out = "set_output_delay 1 -clock c ";
    const std::string regs = "r/C rise, s/C rise, ends: ", ends = "r/D by r/C rise, s/D by s/C rise,";
    const struct {
        std::string script, expected;
    } rows[] = {
        {in + "[get_ports d]", "starts: d rise, " + regs + ends},
        {in + "-clock_fall [get_ports d]", "starts: d fall, " + regs + ends},
        {in + "[get_ports d]\n" + in + "-add_delay -clock_fall [get_ports d]",
         "starts: d fall, d rise, " + regs + ends},
        {out + "[get_ports q]", "starts: " + regs + "q rise, " + ends},
        {out + "[get_ports q]\n" + out + "-add_delay -clock_fall [get_ports q]",
         "starts: " + regs + "q fall, q rise, " + ends},
        // No reference: not timed. A clock's own source is no data input.
        {"set_input_delay 1 [get_ports d]", "starts: " + regs + ends},
        {in + "[get_ports clk]", "starts: " + regs + ends},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Built(cells, clk + row.script).poles(), row.expected) << row.script;
}

TEST(TimingModel, HasUndelayedPortsWhereSomethingTimesThem) {
    Built built(nets + cell("R", "r", rising, setup) + cell("R", "s", rising, setup), clk);
    const auto& design = built.annotated.design;
    EXPECT_EQ(built.poles({design.findPort("d"), design.findPort("q")}),
              "starts: d rise, r/C rise, s/C rise, ends: q rise, r/D by r/C rise, s/D by s/C rise,");
}

TEST(TimingModel, StartsAClockThatIsUsedAsDataAtItsSource) {
    const std::string cells =
        wires("(INTERCONNECT clk r/C (1)) (INTERCONNECT clk r/D (1))") + cell("R", "r", rising, setup);
    EXPECT_EQ(Built(cells, clk).poles(),
              "starts: clk fall source, clk rise source, r/C rise, ends: r/D by r/C rise,");
}

TEST(TimingModel, KeepsDataOutOfTheClockNetwork) {
    // The gate's enable leads to the clock pin alone: it is no way for data.
    const std::string cells =
        wires("(INTERCONNECT clk g/K (1)) (INTERCONNECT en g/E (1)) (INTERCONNECT g/Y r/C (1))") +
        cell("G", "g", "(IOPATH K Y (1)) (IOPATH E Y (1))") + cell("R", "r", rising, setup);
    EXPECT_EQ(Built(cells, clk + "set_input_delay 1 -clock c [get_ports en]").poles(),
              "starts: r/C rise, ends: r/D by r/C rise,");
}

TEST(TimingModel, RefusesDelaysThatDoNotFitTogether) {
    const std::string far =
        wires("(INTERCONNECT clk r/C (1)) (INTERCONNECT clk s/C (1)) (INTERCONNECT r/Q b/A (%))"
              "(INTERCONNECT b/Y s/D (%))") +
        cell("R", "r", rising, setup) + cell("R", "s", rising, setup) + cell("B", "b", "(IOPATH A Y (1))");
    const auto with = [&](const std::string& value) {
        std::string cells = far;
        for (std::size_t at = cells.find('%'); at != std::string::npos; at = cells.find('%'))
            cells.replace(at, 1, value);
        return Support::buildErrorOf(cells, clk);
    };
    EXPECT_EQ(with("500000000"), "no error");
    EXPECT_EQ(with("1000000000"),
              "the delays of a path may add up to 4000000008 units of 1e-12 s: expected at most "
              "2147483646; a coarser --resolution may help");
    EXPECT_EQ(Support::buildErrorOf(nets + cell("R", "r", rising, setup) + cell("R", "s", rising, setup),
                                    clk + "set_clock_latency -source 1000000 [get_clocks c]\n"
                                          "set_input_delay 1000000 -clock c [get_ports d]\n"),
              "the delays of a path may add up to 3000000006 units of 1e-12 s: expected at most 2147483646; "
              "a coarser "
              "--resolution may help");
}

} // namespace
