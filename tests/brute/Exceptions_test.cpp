// The reference itself, on exceptions timed by hand: which of them governs. See Bench.h for the design.
#include "Bench.h"
#include "tests/support/Rows.h"

#include <gtest/gtest.h>

namespace Brute {

namespace {

using Kind = Exception::Kind;
using Slack = std::optional<std::int64_t>;
const Slack untimed;
constexpr auto falsePath = Kind::falsePath;
constexpr auto multicycle = Kind::multicycle;

TEST(Multicycle, MovesTheEdges) {
    struct Command {
        int count;
        std::optional<bool> setup, start;
    };
    const std::optional<bool> both, implied;
    const struct {
        int periodA, periodB;
        std::vector<Command> commands;
        int setup, hold; // relations
    } rows[]{
        {10000, 20000, {{2, true, false}}, 30000, 20000},
        {10000, 20000, {{2, true, implied}}, 30000, 20000},
        {10000, 20000, {{2, true, true}}, 20000, 10000},
        {10000, 20000, {{2, both, implied}}, 30000, 20000},
        {10000, 20000, {{2, true, implied}, {1, false, implied}}, 30000, 10000},
        {10000, 20000, {{2, true, implied}, {1, false, false}}, 30000, 0},
        {10000, 10000, {{3, true, implied}, {2, false, implied}}, 30000, 0},
        {10000, 10000, {{1, false, implied}}, 10000, -10000},
        {20000, 10000, {{1, false, implied}}, 10000, -20000},
        {20000, 10000, {{1, false, false}}, 10000, -10000},
        {10000, 15000, {{2, true, implied}}, 20000, 15000},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(Support::rowOf(rows, r));
        Bench bench(r.periodA, r.periodB);
        for (const Command& c : r.commands)
            bench.except(multicycle, c.count, {bench.cell("r0")}, {}, {}, c.setup, c.start);
        EXPECT_EQ(bench.setup("r1/D"), r.setup - 1000);
        EXPECT_EQ(bench.hold("r1/D"), 1000 - r.hold);
    }
}

TEST(FalsePath, SidesAreApart) {
    for (std::optional<bool> side :
         {std::optional<bool>(), std::optional<bool>(true), std::optional<bool>(false)}) {
        Bench bench;
        bench.except(falsePath, 0, {}, {}, {bench.cell("r1")}, side);
        EXPECT_EQ(bench.setup("r1/D"), side == false ? Slack(9000) : untimed);
        EXPECT_EQ(bench.hold("r1/D"), side == true ? Slack(1000) : untimed);
    }
}

TEST(Exceptions, WhatNamesAPath) {
    const struct {
        const char* what;
        void (*make)(Bench&);
        bool named;
    } rows[]{
        {"from cell", [](Bench& x) { x.except(falsePath, 0, {x.cell("r0")}, {}, {}); }, true},
        {"from clock pin", [](Bench& x) { x.except(falsePath, 0, {x.pin("r0/CLK")}, {}, {}); }, true},
        {"from output pin", [](Bench& x) { x.except(falsePath, 0, {x.pin("r0/Q")}, {}, {}); }, true},
        {"from another", [](Bench& x) { x.except(falsePath, 0, {x.cell("r1")}, {}, {}); }, false},
        {"from one of two",
         [](Bench& x) {
             x.except(falsePath, 0, {x.cell("r1"), x.cell("r0")}, {}, {});
         },
         true},
        {"from a pin on the way", [](Bench& x) { x.except(falsePath, 0, {x.pin("g/Z")}, {}, {}); }, true},
        {"to a pin on the way", [](Bench& x) { x.except(falsePath, 0, {}, {}, {x.pin("h/A")}); }, true},
        {"from clock", [](Bench& x) { x.except(falsePath, 0, {Bench::clock(0)}, {}, {}); }, true},
        {"from the capture clock", [](Bench& x) { x.except(falsePath, 0, {Bench::clock(1)}, {}, {}); },
         false},
        {"to clock", [](Bench& x) { x.except(falsePath, 0, {}, {}, {Bench::clock(1)}); }, true},
        {"to data pin", [](Bench& x) { x.except(falsePath, 0, {}, {}, {x.pin("r1/D")}); }, true},
        {"to the start", [](Bench& x) { x.except(falsePath, 0, {}, {}, {x.cell("r0")}); }, false},
        {"through net", [](Bench& x) { x.except(falsePath, 0, {}, {{x.net("g/Z")}}, {}); }, true},
        {"through cell", [](Bench& x) { x.except(falsePath, 0, {}, {{x.cell("h")}}, {}); }, true},
        {"in order",
         [](Bench& x) {
             x.except(falsePath, 0, {}, {{x.pin("g/Z")}, {x.pin("h/Z")}}, {});
         },
         true},
        {"out of order",
         [](Bench& x) {
             x.except(falsePath, 0, {}, {{x.pin("h/Z")}, {x.pin("g/Z")}}, {});
         },
         false},
        {"any of a group",
         [](Bench& x) {
             x.except(falsePath, 0, {}, {{x.pin("r1/Q"), x.pin("g/A")}}, {});
         },
         true},
        {"from and to differ", [](Bench& x) { x.except(falsePath, 0, {x.cell("r0")}, {}, {x.port("out")}); },
         false},
    };
    for (const auto& r : rows) {
        Bench bench;
        r.make(bench);
        EXPECT_EQ(bench.setup("r1/D"), r.named ? untimed : Slack(9000)) << r.what;
    }
}

TEST(Exceptions, ClocksNameTheirPortsToo) {
    Bench bench;
    bench.delay(true, 1, {}, 0);
    bench.delay(false, 0, {}, 0);
    bench.except(falsePath, 0, {Bench::clock(1)}, {}, {});
    EXPECT_EQ(bench.setup("r0/D"), untimed);
    EXPECT_EQ(bench.setup("out"), untimed);
    EXPECT_EQ(bench.setup("r1/D"), 9000);
}

// --- Maximum and minimum delays ---

TEST(Delays, BetweenRegisters) {
    Bench bench(10000, 15000);
    bench.arc("clkA", "r0/CLK").values = {{100, 100, 100}};
    bench.arc("clkB", "r1/CLK").values = {{330, 330, 330}};
    bench.check("r1/D").setup = Triple{70, 70, 70};
    bench.check("r1/D").hold = Triple{25, 25, 25};
    bench.d.uncertainties = {{none, 1, {}, 9}};
    bench.except(Kind::maximumDelay, 3000, {bench.cell("r0")}, {}, {});
    EXPECT_EQ(bench.setup("r1/D"), 3000 + 330 - 9 - 70 - 1100);
    EXPECT_EQ(bench.hold("r1/D"), 1100 - 330 - 9 - 25) << "a maximum leaves the hold check";
    bench.except(Kind::minimumDelay, 500, {bench.cell("r0")}, {}, {});
    EXPECT_EQ(bench.hold("r1/D"), 1100 - (500 + 330 + 9 + 25));
    for (Exception& e : bench.d.exceptions)
        e.ignoreLatency = true;
    bench.options.propagated = false;
    bench.d.latencies = {{Latency::Kind::network, 0, {}, 100}, {Latency::Kind::source, 1, {}, 330}};
    EXPECT_EQ(bench.setup("r1/D"), 3000 - 70 - 1000);
    EXPECT_EQ(bench.hold("r1/D"), 1000 - 500 - 25);
}

TEST(Delays, AtPorts) {
    Bench bench;
    bench.except(Kind::maximumDelay, 3000, {bench.port("in")}, {}, {});
    bench.except(Kind::minimumDelay, 200, {bench.port("in")}, {}, {});
    bench.except(Kind::maximumDelay, 900, {}, {}, {bench.port("out")});
    EXPECT_EQ(bench.setup("r0/D"), 2500) << "an undelayed input starts at 0";
    EXPECT_EQ(bench.hold("r0/D"), 300);
    EXPECT_EQ(bench.setup("out"), 200) << "an undelayed output has no external delay";
    EXPECT_EQ(bench.hold("out"), untimed);
    bench.delay(true, 0, {}, 150);
    bench.delay(false, 1, {}, 60);
    bench.d.uncertainties = {{none, 1, {}, 5}};
    bench.d.latencies = {{Latency::Kind::source, 1, {}, 40}};
    EXPECT_EQ(bench.setup("r0/D"), 2350) << "the input delay adds to the arrival";
    EXPECT_EQ(bench.hold("r0/D"), 450);
    EXPECT_EQ(bench.setup("out"), 900 + 40 - 5 - 60 - 740) << "the output delay is taken off";
}

// A delay without a clock counts, but no clock's latency does.
TEST(Delays, AtPortsWithoutAClock) {
    Bench bench;
    bench.d.latencies = {{Latency::Kind::source, 0, {}, 40}, {Latency::Kind::source, 1, {}, 30}};
    bench.delay(true, none, {}, 150);
    bench.delay(false, none, {}, 60);
    EXPECT_EQ(bench.setup("r0/D"), untimed);
    EXPECT_EQ(bench.setup("out"), untimed);
    bench.except(multicycle, 2, {}, {}, {bench.cell("r0"), bench.port("out")});
    EXPECT_EQ(bench.setup("r0/D"), untimed);
    bench.except(Kind::maximumDelay, 3000, {}, {}, {Bench::clock(0)});
    bench.except(Kind::minimumDelay, 200, {}, {{bench.port("in")}}, {});
    bench.except(Kind::maximumDelay, 900, {bench.cell("r1")}, {}, {});
    EXPECT_EQ(bench.setup("r0/D"), 3000 + 40 - 150 - 500);
    EXPECT_EQ(bench.hold("r0/D"), 150 + 500 - 200 - 40);
    EXPECT_EQ(bench.setup("out"), 900 - 60 - 730);
    EXPECT_EQ(bench.hold("out"), untimed);
    bench.delay(true, 0, {}, 0, true);
    EXPECT_EQ(bench.setup("r0/D"), 3000 + 40 - 150 - 500) << "the worse of both";
    EXPECT_EQ(bench.hold("r0/D"), 0 + 500 - 200);
    bench.d.portDelays[0].maximum = false;
    EXPECT_EQ(bench.setup("r0/D"), 3000 - 500) << "only the one with a clock has a maximum";
    bench.except(falsePath, 0, {bench.port("in")}, {}, {});
    EXPECT_EQ(bench.setup("r0/D"), untimed);
}

// --- Precedence ---

TEST(Precedence, TypeBeatsSpecificity) {
    Bench bench;
    bench.except(multicycle, 2, {bench.cell("r0")}, {{bench.pin("g/Z")}}, {bench.pin("r1/D")}, true);
    EXPECT_EQ(bench.setup("r1/D"), 19000);
    bench.except(Kind::maximumDelay, 4000, {}, {}, {Bench::clock(1)});
    EXPECT_EQ(bench.setup("r1/D"), 3000);
    EXPECT_EQ(bench.hold("r1/D"), 1000 - 10000) << "the hold check follows the multicycle";
    bench.except(falsePath, 0, {}, {}, {Bench::clock(1)});
    EXPECT_EQ(bench.setup("r1/D"), untimed);
}

// Each form of naming against each other form: the higher row governs, whichever comes last and whichever is
// tighter.
TEST(Precedence, FormsInOrder) {
    for (int high = 1; high < 32; ++high)
        for (int low = 1; low < high; ++low)
            for (bool highFirst : {true, false})
                for (bool highTighter : {true, false}) {
                    const auto fits = [](int form) {
                        return !(form & 16 && form & 2) && !(form & 8 && form & 1);
                    };
                    if (!fits(high) || !fits(low))
                        continue;
                    Bench bench;
                    const auto add = [&](int form, int count) {
                        std::vector<Object> from, to;
                        std::vector<std::vector<Object>> through;
                        if (form & 16)
                            from = {bench.pin("r0/CLK")};
                        if (form & 8)
                            to = {bench.pin("r1/D")};
                        if (form & 4)
                            through = {{bench.net("g/Z")}};
                        if (form & 2)
                            from = {Bench::clock(0)};
                        if (form & 1)
                            to = {Bench::clock(1)};
                        bench.except(multicycle, count, from, through, to, true);
                    };
                    const int count = highTighter ? 2 : 3;
                    if (highFirst)
                        add(high, count);
                    add(low, 5 - count);
                    if (!highFirst)
                        add(high, count);
                    EXPECT_EQ(bench.setup("r1/D"), count * 10000 - 1000) << high << " against " << low;
                }
}

TEST(Precedence, IdenticalObjectsTheLastCommandPerCombination) {
    Bench bench;
    bench.except(Kind::maximumDelay, 2000, {bench.cell("r0")}, {}, {});
    bench.except(Kind::maximumDelay, 5000, {bench.cell("r0"), bench.cell("r1")}, {}, {});
    EXPECT_EQ(bench.setup("r1/D"), 4000);
    bench.except(Kind::maximumDelay, 3000, {bench.cell("r1")}, {}, {});
    EXPECT_EQ(bench.setup("r1/D"), 4000);
    bench.except(Kind::maximumDelay, 7000, {bench.cell("r0")}, {}, {});
    EXPECT_EQ(bench.setup("r1/D"), 6000);
}

// Objects of several kinds for one place are different objects: the tightest governs, not the last.
TEST(Precedence, ACellAndItsPinAreDifferentObjects) {
    using Points = std::pair<std::vector<Object>, std::vector<Object>>; // -from and -to
    Bench names;
    const Object cell = names.cell("r0"), clock = names.pin("r0/CLK"), output = names.pin("r0/Q");
    const std::vector<std::pair<Points, Points>> different = {
        {{{cell}, {}}, {{clock}, {}}},
        {{{}, {names.cell("r1")}}, {{}, {names.pin("r1/D")}}},
        {{{cell}, {names.cell("r1")}}, {{cell}, {names.pin("r1/D")}}},
        {{{clock}, {names.cell("r1")}}, {{cell}, {names.cell("r1")}}},
    };
    for (const auto& [one, other] : different)
        for (const bool turned : {false, true}) {
            SCOPED_TRACE(turned);
            Bench bench;
            const Points &first = turned ? other : one, &second = turned ? one : other;
            bench.except(Kind::maximumDelay, 2000, first.first, {}, first.second);
            bench.except(Kind::maximumDelay, 5000, second.first, {}, second.second);
            EXPECT_EQ(bench.setup("r1/D"), 1000);
            bench.except(Kind::maximumDelay, 6000, first.first, {}, first.second);
            EXPECT_EQ(bench.setup("r1/D"), 4000);
        }
    for (const Object& through : {names.cell("g"), names.net("g/Z")}) {
        Bench bench;
        bench.except(Kind::maximumDelay, 2000, {}, {{names.pin("g/Z")}}, {});
        bench.except(Kind::maximumDelay, 5000, {}, {{through}}, {});
        EXPECT_EQ(bench.setup("r1/D"), 1000);
        bench.except(Kind::maximumDelay, 6000, {}, {{through, names.pin("g/Z")}}, {});
        EXPECT_EQ(bench.setup("r1/D"), 5000);
    }
    Bench bench;
    bench.except(Kind::maximumDelay, 2000, {output}, {}, {});
    bench.except(Kind::maximumDelay, 5000, {cell}, {{output}}, {});
    EXPECT_EQ(bench.setup("r1/D"), 1000) << "a register through its output is an object of its own";
    bench.except(Kind::maximumDelay, 6000, {output, cell}, {}, {});
    EXPECT_EQ(bench.setup("r1/D"), 4000);
}

// Data from a clock's source on a register's output starts at the cell, but not at its clock pin.
TEST(Exceptions, AClocksSourceOnARegister) {
    const auto setup = [](const char* pin) {
        Bench bench;
        Generated half;
        half.factor = 2;
        bench.addGenerated("half", "r0/CLK", "r0/Q", half);
        bench.except(Kind::maximumDelay, 2000, {pin ? bench.pin(pin) : bench.cell("r0")}, {}, {});
        return bench.setup("r1/D");
    };
    EXPECT_EQ(setup("r0/Q"), 2000 - 600 - 400);
    EXPECT_EQ(setup("r0/CLK"), 9000);
    EXPECT_EQ(setup(nullptr), 2000 - 600 - 400) << "a cell is all that it makes";
}

TEST(Precedence, EqualRankTheTightest) {
    for (bool turned : {false, true}) {
        SCOPED_TRACE(turned);
        Bench bench;
        bench.except(Kind::maximumDelay, turned ? 3000 : 2000, {}, {{bench.pin("g/Z")}}, {});
        bench.except(Kind::maximumDelay, turned ? 2000 : 3000, {}, {{bench.pin("h/Z")}}, {});
        EXPECT_EQ(bench.setup("r1/D"), 1000);
        bench.except(Kind::minimumDelay, turned ? 300 : 200, {}, {{bench.pin("g/Z")}}, {});
        bench.except(Kind::minimumDelay, turned ? 200 : 300, {}, {{bench.pin("h/Z")}}, {});
        EXPECT_EQ(bench.hold("r1/D"), 700);
        bench.d.exceptions.clear();
        bench.except(multicycle, turned ? 2 : 3, {}, {{bench.pin("g/Z")}}, {}, true);
        bench.except(multicycle, turned ? 3 : 2, {}, {{bench.pin("h/Z")}}, {}, true);
        bench.except(multicycle, turned ? 1 : 0, {}, {{bench.pin("g/Z")}}, {}, false);
        bench.except(multicycle, turned ? 0 : 1, {}, {{bench.pin("h/Z")}}, {}, false);
        EXPECT_EQ(bench.setup("r1/D"), 19000);
        EXPECT_EQ(bench.hold("r1/D"), 1000 - 10000);
    }
}

TEST(Precedence, AFlagBeatsNoneAtEqualRank) {
    Bench bench;
    bench.except(multicycle, 2, {}, {{bench.pin("g/Z")}}, {});
    bench.except(multicycle, 3, {}, {{bench.pin("h/Z")}}, {}, true);
    EXPECT_EQ(bench.setup("r1/D"), 29000);
    EXPECT_EQ(bench.hold("r1/D"), 1000 - 20000);
    bench.except(multicycle, 1, {}, {{bench.pin("h/Z")}}, {}, false);
    EXPECT_EQ(bench.hold("r1/D"), 1000 - 10000);
    bench.except(multicycle, 4, {bench.cell("r0")}, {}, {});
    EXPECT_EQ(bench.setup("r1/D"), 39000) << "the more specific one competes on both sides";
    EXPECT_EQ(bench.hold("r1/D"), 1000 - 30000);
}

TEST(Result, TellsWhichPairAndWhichException) {
    Bench bench;
    bench.except(falsePath, 0, {bench.cell("r1")}, {}, {});
    bench.except(multicycle, 2, {bench.cell("r0")}, {}, {}, true);
    const Result result = analyse(bench.d, bench.options);
    ASSERT_EQ(result.size(), 1u);
    EXPECT_EQ(result.at("r1/D").setup->pairs, (std::set<Worst>{{"a", "b", 1}}));
    EXPECT_EQ(result.at("r1/D").hold->pairs, (std::set<Worst>{{"a", "b", 1}}));
}

} // namespace

} // namespace Brute
