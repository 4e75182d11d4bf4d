// The reference itself, on values worked out by hand, so that it can be trusted as the judge of the library:
// map operations and the three propagations.
#include "ReferenceSweepBench.h"

#include "tests/support/Recorder.h"
#include "tests/support/Rows.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace oracle::bench;
using oracle::ReferenceSweep;

// --- Map operations ---

TEST(ReferenceSweepMaps, OperationsOnOneMap) {
    struct Row {
        const char* name;
        Map before;
        std::function<void(ReferenceSweep&, Map&)> operation;
        std::string after;
    };
    const Map ten{{0, t(10, 20)}};
    const Map keys{{0, t(2, 5)}, {1, t(1, 4)}, {6, t(3, 9)}};
    const Map halves{{0, Timing()}, {1, t(undefined, 7)}, {2, t(3, undefined)}};
    const Row rows[] = {
        {"filter nothing", keys, [](auto& s, auto& map) { s.filter(m(0), map); }, "0:[2:5] 1:[1:4] 6:[3:9]"},
        {"filter one bit", keys, [](auto& s, auto& map) { s.filter(m(2), map); }, "0:[2:5] 1:[1:4]"},
        {"filter all bits", keys, [](auto& s, auto& map) { s.filter(m(~0UL), map); }, "0:[2:5]"},
        {"filter equal pair", keys, [](auto& s, auto& map) { s.filter(m(1), m(1), map); }, "0:[2:5] 6:[3:9]"},
        {"filter empty pair", keys, [](auto& s, auto& map) { s.filter(m(0), m(0), map); },
         "0:[2:5] 1:[1:4] 6:[3:9]"},
        {"filter maximum", keys, [](auto& s, auto& map) { s.filter(m(1), m(0), map); },
         "0:[2:5] 1:[1:minimum] 6:[3:9]"},
        {"filter minimum", keys, [](auto& s, auto& map) { s.filter(m(0), m(4), map); },
         "0:[2:5] 1:[1:4] 6:[maximum:9]"},
        {"filter both", keys, [](auto& s, auto& map) { s.filter(m(2), m(5), map); },
         "0:[2:5] 1:[maximum:4] 6:[maximum:minimum]"},
        {"sensibilize all",
         {{1, t(2, 5)}, {2, t(1, 4)}},
         [](auto& s, auto& map) { s.sensibilize(m(0), map); },
         "0:[1:5]"},
        {"sensibilize some", keys, [](auto& s, auto& map) { s.sensibilize(m(3), map); },
         "0:[2:5] 1:[1:4] 2:[3:9]"},
        {"sensibilize halves", halves, [](auto& s, auto& map) { s.sensibilize(m(0), map); }, "0:[3:7]"},
        {"sensibilize empty", {}, [](auto& s, auto& map) { s.sensibilize(m(0), map); }, ""},
        {"mingle nothing", keys, [](auto& s, auto& map) { s.mingle(m(0), map); }, "0:[2:5] 1:[1:4] 6:[3:9]"},
        {"mingle", {{0, t(2, 5)}, {4, t(1, 3)}}, [](auto& s, auto& map) { s.mingle(m(4), map); }, "4:[1:5]"},
        {"combine", keys,
         [](auto& s, auto& map) {
             s.combine({{1, t(0, 2)}, {8, t(6, 6)}, {0, Timing()}}, map);
         },
         "0:[2:5] 1:[0:4] 6:[3:9] 8:[6:6]"},
        {"combine undefined",
         {},
         [](auto& s, auto& map) {
             s.combine({{1, Timing()}}, map);
         },
         "1:[undefined:undefined]"},
        {"addDelay 3", ten, [](auto& s, auto& map) { s.addDelay(d(3), map); }, "0:[13:23]"},
        {"addDelay 1 3", ten, [](auto& s, auto& map) { s.addDelay(d(1), d(3), map); }, "0:[11:23]"},
        {"addDelay specials", keys, [](auto& s, auto& map) { s.addDelay(d(undefined), d(maximum), map); },
         "0:[undefined:maximum] 1:[undefined:maximum] 6:[undefined:maximum]"},
        {"minusDelay 3", ten, [](auto& s, auto& map) { s.minusDelay(d(3), map); }, "0:[7:17]"},
        {"minusDelay 1 3", ten, [](auto& s, auto& map) { s.minusDelay(d(1), d(3), map); }, "0:[7:19]"},
        {"addLatchTiming", ten, [](auto& s, auto& map) { s.addLatchTiming(t(1, 3), map); }, "0:[11:23]"},
        {"minusLatchTiming", ten, [](auto& s, auto& map) { s.minusLatchTiming(t(1, 3), map); }, "0:[7:19]"},
        {"takeSetupHold", ten, [](auto& s, auto& map) { s.takeSetupHold(d(2), d(3), map); }, "0:[8:23]"},
        {"freeSetupHold", ten, [](auto& s, auto& map) { s.freeSetupHold(d(2), d(3), map); }, "0:[7:22]"},
    };
    Bench bench;
    ReferenceSweep sweep(bench.subdomain(bench.clk, rise, bench.clk, rise));
    for (const Row& row : rows) {
        Map map = row.before;
        row.operation(sweep, map);
        EXPECT_EQ(textOf(map), row.after) << row.name;
    }
}

TEST(ReferenceSweepMaps, MultiplyCycleCount) {
    struct Row {
        int low, high;
        std::vector<unsigned long> multipliers;
        Map before;
        std::string after;
    };
    const Row rows[] = {
        {5, 100, {3}, {}, "0:[100:5] 1:[300:5]"},
        {5, 100, {}, {{0, t(1, 2)}, {8, t(1, 1)}}, "0:[100:5] 8:[1:1]"},
        {5, 100, {3, 4}, {{1, t(7, 8)}, {8, t(1, 1)}}, "0:[100:5] 1:[300:5] 2:[400:5] 8:[1:1]"},
        {-5, -3, {2}, {}, "0:[-3:-5] 1:[-6:-5]"},
        {5, 100, {(1UL << 32) + 2}, {}, "0:[100:5] 1:[200:5]"}, // the low 32 bits
        {3, 3, {(1UL << 31) + 1}, {}, "0:[3:3] 1:[-2147483645:3]"},
        {undefined, undefined, {3}, {}, "0:[undefined:undefined] 1:[undefined:undefined]"},
        {1, maximum, {3}, {}, "0:[maximum:1] 1:[maximum:1]"},
    };
    for (const Row& row : rows) {
        Bench bench;
        Pole* input = Pole::createInput(bench.owner, "in");
        Pole* output = Pole::createOutput(bench.owner, "out");
        bench.arc(input, output, row.low, row.high);
        for (const unsigned long multiplier : row.multipliers)
            MPath::create({{}, {}}, multiplier);
        FPath::create({{}, {}});
        bench.classify();
        Subdomain* subdomain = bench.subdomain(nullptr, none, nullptr, none);
        subdomain->captureLaunch(input);
        subdomain->captureLatch(output);
        ReferenceSweep sweep(subdomain);
        sweep.clockAnalyze();
        sweep.arrivalAnalyze();
        Map map = row.before;
        sweep.multiplyCycleCount(m(~0UL), map);
        EXPECT_EQ(textOf(map), row.after) << row.low << ":" << row.high;
    }
}

TEST(ReferenceSweepMaps, DivideCycleCount) {
    struct Row {
        ClockMode::Code launch, latch;
        unsigned long duty;
        std::vector<unsigned long> multipliers; // of class 1
        int before, after;                      // the maximum
    };
    const Row rows[] = {
        {rise, rise, 50, {2}, 101, 51},
        {rise, rise, 50, {1}, 101, 101},
        {rise, rise, 50, {3, 2, 4}, 101, 51},
        {fall, fall, 50, {4}, 102, 26},
        {rise, rise, 50, {2}, -7, -3},
        {rise, fall, 50, {2}, 101, 34}, // factor 3
        {rise, fall, 40, {2}, 100, 29}, // factor 3.5
        {fall, rise, 40, {2}, 100, 38}, // factor 2.67
        {rise, fall, 40, {1}, 100, 100},
        {rise, rise, 50, {2}, undefined, undefined},
        {rise, rise, 50, {2}, maximum, maximum},
        {rise, rise, 50, {2}, minimum, minimum},
        {rise, rise, 50, {100000000}, 101, 101},
        {rise, rise, 50, {99999999}, 101, 1},
        {rise, rise, 50, {(1UL << 32) + 2}, 101, 51}, // as 32 bits: 2
        {rise, rise, 50, {1UL << 31}, 101, 101},      // as 32 bits: undefined
        {rise, rise, 50, {1UL << 31, 3}, 101, 34},
        {rise, rise, 50, {(1UL << 32) - 1}, 101, 101}, // as 32 bits: -1
        {rise, rise, 50, {}, 101, 101},
    };
    for (const Row& row : rows) {
        Bench bench;
        analyzer->setDutyRatio(bench.clk, row.duty);
        for (const unsigned long multiplier : row.multipliers)
            MPath::create({{}, {}}, multiplier)->setPseudoMask(m(1));
        FPath::create({{}, {}})->setPseudoMask(m(1));
        ReferenceSweep sweep(bench.subdomain(bench.clk, row.launch, bench.clk, row.latch));
        Map map{{0, t(1, 101)}, {1, t(9, row.before)}, {2, t(2, 101)}};
        sweep.divideCycleCount(map);
        EXPECT_EQ(map[1], t(9, row.after)) << row.before << " " << row.duty;
        EXPECT_EQ(textOf(Map{{0, map[0]}, {2, map[2]}}), "0:[1:101] 2:[2:101]");
    }
}

TEST(ReferenceSweepMaps, DivideCycleCountBetweenClocks) {
    struct Row {
        bool debug, muted;
        Support::Lines lines;
    };
    const Row rows[] = {
        {false, false, {}},
        {true, true, {}},
        {true,
         false,
         {"warning: first is not available for clk:rising -> clk2:rising",
          "warning: second is not available for clk:rising -> clk2:rising"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        Bench bench;
        MPath::create({{}, {}}, 2)->setAlias("first");
        MPath::create({{}, {}}, 3)->setAlias("second");
        DPath::createMaximum({{}, {}}, d(5));
        DPath::createMinimum({{}, {}}, d(5));
        bench.classify();
        ReferenceSweep sweep(bench.subdomain(bench.clk, rise, bench.clk2, rise));
        const Support::DebugMode debug(row.debug);
        Analyzer::_muted = row.muted;
        Support::Recorder recorder;
        Map map{{0, t(1, 101)}, {3, t(1, 101)}, {4, t(2, 5)}, {8, t(2, 5)}, {12, t(2, 5)}};
        sweep.divideCycleCount(map);
        Analyzer::_muted = false;
        EXPECT_EQ(textOf(map), "0:[1:101] 3:[1:101] 4:[2:minimum] 8:[maximum:5] 12:[maximum:minimum]");
        EXPECT_EQ(recorder.getLines(), row.lines);
    }
}

TEST(ReferenceSweepMaps, PriorityMask) {
    Bench bench;
    for (const int delay : {10, 5, 5})
        DPath::createMaximum({{}, {}}, d(delay)); // 1, 2, 4
    for (const int delay : {3, 7, 7})
        DPath::createMinimum({{}, {}}, d(delay)); // 8, 16, 32
    for (const unsigned long multiplier : {4UL, 2UL, 2UL, ~0UL})
        MPath::create({{}, {}}, multiplier); // 64, 128, 256, 512
    FPath::create({{}, {}});                 // 1024
    bench.classify();
    struct Row {
        unsigned long mask, longest, shortest;
    };
    const Row rows[] = {
        {0, 0, 0},       {1024, 0, 0},  {1, 1, 1},          {7, 2, 1},       {5, 4, 1},
        {6, 2, 2},       {56, 8, 16},   {48, 16, 16},       {40, 8, 32},     {448, 128, 128},
        {320, 256, 256}, {64, 64, 64},  {512, 0, 0},        {2047, 2, 16},   {1 | 64, 1, 1},
        {8 | 64, 64, 8}, {1 | 8, 1, 8}, {1 | 8 | 64, 1, 8}, {1 | 512, 1, 1}, {8 | 512, 0, 8},
    };
    const ReferenceSweep sweep(bench.subdomain(bench.clk, rise, bench.clk, rise));
    for (const Row& row : rows) {
        EXPECT_EQ(sweep.getPriorityMask(m(row.mask), true).getBits(), row.longest) << row.mask;
        EXPECT_EQ(sweep.getPriorityMask(m(row.mask), false).getBits(), row.shortest) << row.mask;
    }
    // A class without a path of this kind.
    analyzer->setMaxdelayPathMask(m(1024));
    analyzer->setMindelayPathMask(m(64));
    EXPECT_EQ(sweep.getPriorityMask(m(1024 | 256), true), m(0));
    EXPECT_EQ(sweep.getPriorityMask(m(64 | 256), false), m(0));
}

// --- Clock arrival ---

TEST(ReferenceSweepClock, ArrivalAtLeaves) {
    struct Row {
        const char* name;
        std::function<void(Bench&, Subdomain*)> build;
        std::string launch, latch;
    };
    const Row rows[] = {
        {"chain and reconvergence",
         [](Bench& b, Subdomain* s) {
             Pole *early = b.gate("early"), *late = b.gate("late"), *pin = b.clockPin("ff");
             b.arc(b.clk, early, 1, 2), b.arc(b.clk, late, 5, 9), b.arc(early, pin, 1, 1),
                 b.arc(late, pin, 2, 3);
             b.arc(b.clk2, pin, 50, 60);
             s->captureLaunch(pin), s->captureLatch(pin);
         },
         "ff 0:[2:12]", "ff 0:[2:12]"},
        {"ports at time 0, inactive arcs, leaves not reached",
         [](Bench& b, Subdomain* s) {
             Pole *in = Pole::createInput(b.owner, "in"), *out = Pole::createOutput(b.owner, "out");
             Pole *cut = b.clockPin("cut"), *alone = b.clockPin("alone");
             b.arc(b.clk, in, 3, 4), b.arc(b.clk, cut, 1, 1)->disactivate();
             s->captureLaunch(in), s->captureLaunch(cut), s->captureLaunch(alone), s->captureLaunch(out);
             s->captureLatch(out), s->captureLatch(in);
         },
         "in 0:[0:0]", "in 0:[3:4], out 0:[0:0]"},
        {"feedback seeds, bounds as they are; the root itself is a leaf",
         [](Bench& b, Subdomain* s) {
             Pole* pin = b.clockPin("ff");
             b.arc(b.clk, pin, 10, 11);
             analyzer->setPLLFeedbackDelay(b.clk, d(1), d(3));
             s->captureLaunch(b.clk), s->captureLaunch(pin), s->captureLatch(b.clk);
         },
         "clk 0:[-1:-3], ff 0:[9:8]", "clk 0:[-1:-3]"},
        {"a loop ends at the walk's own path; its later leaf is met on the way",
         [](Bench& b, Subdomain* s) {
             Pole *one = b.clockPin("one"), *two = b.clockPin("two");
             b.arc(two, one, 1, 1), b.arc(one, two, 2, 2), b.arc(b.clk, two, 10, 10);
             s->captureLaunch(one), s->captureLaunch(two);
         },
         "one 0:[11:11]", ""},
        {"all classes cut by a false path: an empty map",
         [](Bench& b, Subdomain* s) {
             Pole *mid = b.gate("mid"), *pin = b.clockPin("ff");
             b.arc(b.clk, mid, 1, 2)->sensitize(m(1)), b.arc(mid, pin, 1, 2);
             FPath::create({{b.clk}, {pin}});
             b.classify();
             s->captureLaunch(pin);
         },
         "ff 0:[maximum:minimum]", ""},
        {"classes end on arcs that are not theirs",
         [](Bench& b, Subdomain* s) {
             Pole *mid = b.gate("mid"), *pin = b.clockPin("ff");
             b.arc(b.clk, mid, 1, 2), b.arc(mid, pin, 1, 2);
             FPath::create({{b.clk}, {pin}});
             b.classify();
             s->captureLaunch(pin);
         },
         "ff 0:[2:4]", ""},
        {"undefined arcs are passed over",
         [](Bench& b, Subdomain* s) {
             Pole *mid = b.gate("mid"), *pin = b.clockPin("ff"), *half = b.clockPin("half");
             b.arc(b.clk, mid, 1, 2), b.arc(b.clk, pin, undefined, 7), b.arc(mid, pin, 1, undefined);
             b.arc(b.clk, half, undefined, 7);
             s->captureLaunch(pin), s->captureLaunch(half);
         },
         "ff 0:[2:7], half 0:[maximum:7]", ""},
    };
    for (const Row& row : rows) {
        Bench bench;
        Subdomain* subdomain = bench.subdomain(bench.clk, rise, bench.clk, rise);
        row.build(bench, subdomain);
        ReferenceSweep sweep(subdomain);
        sweep.clockAnalyze();
        EXPECT_EQ(textOf(sweep.getLaunchAT()), row.launch) << row.name;
        EXPECT_EQ(textOf(sweep.getLatchAT()), row.latch) << row.name;
        for (Pole* pole : bench.owner->getPoles())
            EXPECT_FALSE(pole->isMarked()) << row.name;
    }
    Bench bench;
    Subdomain* subdomain = bench.subdomain(nullptr, none, nullptr, none);
    subdomain->captureLaunch(Pole::createInput(bench.owner));
    ReferenceSweep sweep(subdomain);
    sweep.clockAnalyze();
    EXPECT_EQ(textOf(sweep.getLaunchAT()), "");
}

// One step of the clock walk: what a pole opens and closes, observed before the leaves drop it. Class 1 is a
// false path, class 2 a multicycle.
TEST(ReferenceSweepClock, Steps) {
    struct Row {
        const char* name;
        std::function<void(const CPath::Objects&)> make;
        bool opens, closes; // the gate behind the root; the root opens too
        unsigned long tag;  // of the arc
        std::string root, gate;
    };
    const auto falsePath = [](const CPath::Objects& o) { FPath::create(o); };
    const auto multicycle = [](const CPath::Objects& o) { MPath::create(o, 2); };
    const Row rows[] = {
        {"a false path is opened at the root", falsePath, false, false, 1, "1:[0:0]", "1:[1:2]"},
        {"another exception is not", multicycle, false, false, 1, "0:[0:0]", "0:[1:2]"},
        {"a class ends on an arc that is not its own", falsePath, false, false, 0, "1:[0:0]", "0:[1:2]"},
        {"a false path closes", falsePath, false, true, 1, "1:[0:0]", ""},
        {"another exception does not close", multicycle, false, true, 1, "0:[0:0]", "0:[1:2]"},
        {"every exception is opened behind the root", multicycle, true, false, 0, "0:[0:0]", "1:[1:2]"},
    };
    for (const Row& row : rows) {
        Bench bench;
        Pole* gate = bench.gate("g");
        Edge* arc = bench.arc(bench.clk, gate, 1, 2);
        CPath::Objects objects{{bench.clk}, {}};
        if (row.opens)
            objects.sources.push_back(gate);
        if (row.closes)
            objects.targets.push_back(gate);
        row.make(objects);
        bench.classify();
        arc->sensitize(m(row.tag));
        ReferenceSweep sweep(bench.subdomain(bench.clk, rise, bench.clk, rise));
        ReferenceSweep::PoleMap clockAT;
        sweep.updateClockATMapMap(arc, clockAT);
        EXPECT_TRUE(clockAT.empty()) << row.name; // no source yet
        sweep.updateClockATMapMap(bench.clk, clockAT);
        sweep.updateClockATMapMap(arc, clockAT);
        EXPECT_EQ(textOf(clockAT[bench.clk]), row.root) << row.name;
        EXPECT_EQ(textOf(clockAT[gate]), row.gate) << row.name;
    }
}

} // namespace
