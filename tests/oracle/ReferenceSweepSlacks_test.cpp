// The reference itself, on values worked out by hand: slacks of arcs and ports, path searches, rejected
// calls.
#include "ReferenceSweepBench.h"
#include "tests/support/Rows.h"

#include <gtest/gtest.h>

#include <functional>
#include <typeinfo>

namespace {

using namespace oracle::bench;
using oracle::ReferenceSweep;

// Two inputs "a" and "b" through a gate "g" to the check "D" of a register on `clk`, clock arrivals at 0; an
// output "out" behind the same gate. Relations: setup 100, hold 0. Slacks to "D": setup a 79, b 74; hold a 8,
// b 3.
struct Fork {
    explicit Fork(Bench& bench, Pole* launchRoot, ClockMode::Code launchMode, Pole* latchRoot,
                  ClockMode::Code latchMode)
        : subdomain(bench.subdomain(launchRoot, launchMode, latchRoot, latchMode)) {
        latch = bench.clockPin("ff");
        a = Pole::createInput(bench.owner, "a");
        b = Pole::createInput(bench.owner, "b");
        gate = bench.gate("g");
        check = Pole::createCheck(latch, "D");
        out = Pole::createOutput(bench.owner, "out");
        bench.arc(bench.clk, latch, 0, 0);
        bench.arc(bench.clk2, latch, 0, 0);
        aArc = bench.arc(a, gate, 10, 15);
        bArc = bench.arc(b, gate, 5, 20);
        checkArc = bench.arc(gate, check, 2, 6);
        outArc = bench.arc(gate, out, 1, 3);
        for (Pole* leaf : {a, b})
            subdomain->captureLaunch(leaf);
        subdomain->captureLatch(latchRoot ? latch : out);
        subdomain->setSetupRelation(d(100));
        subdomain->setHoldRelation(d(0));
    }
    explicit Fork(Bench& bench) : Fork(bench, bench.clk, rise, bench.clk, rise) {}

    ReferenceSweep sweep() const {
        ReferenceSweep made(subdomain);
        made.clockAnalyze();
        made.arrivalAnalyze();
        made.requireAnalyze();
        return made;
    }
    // One exception from "a" to "D", on its arcs.
    void except(Bench& bench, const std::function<void(const CPath::Objects&)>& make) const {
        make({{a}, {check}});
        bench.classify();
        aArc->sensitize(m(1)), checkArc->sensitize(m(1));
    }

    Subdomain* subdomain;
    Pole *latch, *a, *b, *gate, *check, *out;
    Edge *aArc, *bArc, *checkArc, *outArc;
};

// --- Slack of an arc ---

TEST(ReferenceSweepSlacks, OneArc) {
    struct Row {
        const char* name;
        std::function<void(const CPath::Objects&)> make;
        unsigned long mask;
        bool under; // whether the exception is given
        int aLong, aShort, checkLong, checkShort;
    };
    const auto adjusted = [](int longest, int shortest) {
        return [=](const CPath::Objects& objects) {
            MPath::create(objects, 2)->setAdjuster([=](const Subdomain&, bool l) {
                return d(l ? longest : shortest);
            });
        };
    };
    // Arrivals 0 at "a", 30 at "g".
    const Row rows[] = {
        {"no exception", [](const auto&) {}, 0, false, 79, 8, 64, 28},
        {"plain, under the class: key 0 alone", adjusted(7, 9), 1, false, undefined, undefined, undefined,
         undefined},
        // "a" opens the class, so its arc is under it in any case.
        {"plain, not under the class", adjusted(7, 9), 0, false, undefined, undefined, 64, 28},
        {"adjusted", adjusted(7, 9), 1, true, 86, 17, 71, 37},
        {"an undefined adjustment is not added", adjusted(undefined, undefined), 1, true, 79, 8, 64, 28},
        {"the maximum special", adjusted(maximum, maximum), 1, true, maximum, maximum, maximum, maximum},
        {"a false path under its class", [](const auto& o) { FPath::create(o); }, 1, false, undefined,
         undefined, undefined, undefined},
        {"a false path, not under its class", [](const auto& o) { FPath::create(o); }, 0, false, undefined,
         undefined, 64, 28},
    };
    for (const Row& row : rows) {
        Bench bench;
        const Fork fork(bench);
        fork.except(bench, row.make);
        ReferenceSweep sweep = fork.sweep();
        CPath* path = row.under ? analyzer->getCPaths().getFirst() : nullptr;
        EXPECT_EQ(int(sweep.calculateLSlack(fork.aArc, m(row.mask), d(0), path)), row.aLong) << row.name;
        EXPECT_EQ(int(sweep.calculateSSlack(fork.aArc, m(row.mask), d(0), path)), row.aShort) << row.name;
        EXPECT_EQ(int(sweep.calculateLSlack(fork.checkArc, m(row.mask), d(30), path)), row.checkLong)
            << row.name;
        EXPECT_EQ(int(sweep.calculateSSlack(fork.checkArc, m(row.mask), d(30), path)), row.checkShort)
            << row.name;
        EXPECT_EQ(int(sweep.calculateLSlack(fork.outArc, m(row.mask), d(30), path)), undefined) << row.name;
        EXPECT_EQ(int(sweep.calculateSSlack(fork.outArc, m(row.mask), d(30), path)), undefined) << row.name;
    }
}

// Classes that meet: at the target of an arc, and with a false path on the same way.
TEST(ReferenceSweepSlacks, ClassesTogether) {
    Bench bench;
    const Fork fork(bench);
    MPath* opening = MPath::create({{fork.gate}, {fork.check}}, 2); // 1: opens at the gate
    FPath* cut = FPath::create({{fork.a}, {fork.check}});           // 2
    FPath::create({{fork.out}, {fork.out}});                        // 4
    bench.classify();
    fork.subdomain->captureLatch(fork.out);
    for (Edge* edge : {fork.aArc, fork.bArc, fork.checkArc})
        edge->sensitize(m(3));
    ReferenceSweep sweep = fork.sweep();
    struct Row {
        Edge* edge;
        unsigned long mask;
        CPath* path;
        int longest, shortest;
    };
    const Row rows[] = {
        {fork.checkArc, 1, opening, 94, -2},
        {fork.checkArc, 3, opening, undefined, undefined}, // no requirement is left of the false path
        {fork.checkArc, 3, nullptr, undefined, undefined},
        {fork.bArc, 0, nullptr, 77, 6},                // through "out" only: the class opens behind the arc,
        {fork.bArc, 0, opening, undefined, undefined}, // and its requirement goes no further back
        {fork.checkArc, 0, cut, maximum, maximum},     // not a path of it: only the adjustment
        {fork.outArc, 0, nullptr, undefined, undefined}, // a false path that opens and closes at the target
    };
    for (const Row& row : rows) {
        EXPECT_EQ(int(sweep.calculateLSlack(row.edge, m(row.mask), d(0), row.path)), row.longest) << row.mask;
        EXPECT_EQ(int(sweep.calculateSSlack(row.edge, m(row.mask), d(0), row.path)), row.shortest)
            << row.mask;
    }
}

TEST(ReferenceSweepSlacks, TaggedSlacksAndDutyCycles) {
    struct Row {
        ClockMode::Code launch, latch;
        bool sameRoot;
        unsigned long duty;
        int slackBefore; // slack of the arc from "a"; its best is 79
        unsigned long dutyBefore;
        int slack;
        unsigned long dutyAfter;
    };
    const Row rows[] = {
        {rise, fall, true, 40, undefined, 100, 79, 100}, // the first write leaves the duty cycle
        {rise, fall, true, 40, 80, 100, 79, 40},         {fall, rise, true, 40, 80, 100, 79, 60},
        {rise, rise, true, 40, 80, 30, 79, 100},         {fall, fall, true, 40, 80, 30, 79, 100},
        {rise, none, true, 40, 80, 30, 79, 100},         {none, fall, true, 40, 80, 30, 79, 100},
        {rise, fall, false, 40, 80, 30, 79, 100},        {rise, fall, true, 40, 79, 100, 79, 40}, // a tie
        {rise, fall, true, 40, 79, 40, 79, 40},          {rise, fall, true, 40, 79, 30, 79, 30},
        {rise, fall, true, 40, 78, 100, 78, 100}, // worse before
        {rise, fall, true, 40, maximum, 100, 79, 40},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        Bench bench;
        analyzer->setDutyRatio(bench.clk, row.duty);
        const Fork fork(bench, row.sameRoot ? bench.clk : bench.clk2, row.launch, bench.clk, row.latch);
        fork.aArc->setSlack(d(row.slackBefore));
        fork.aArc->setMinDutyCycle(row.dutyBefore);
        fork.outArc->setMinDutyCycle(70);
        fork.sweep().tagSlacks();
        EXPECT_EQ(int(fork.aArc->getSlack()), row.slack);
        EXPECT_EQ(fork.aArc->getMinDutyCycle(), row.dutyAfter) << row.slackBefore << " " << row.dutyBefore;
        EXPECT_EQ(int(fork.bArc->getSlack()), 74);
        EXPECT_EQ(int(fork.checkArc->getSlack()), 74);
        EXPECT_EQ(int(fork.outArc->getSlack()), undefined);
        EXPECT_EQ(fork.outArc->getMinDutyCycle(), 70u);
    }
}

TEST(ReferenceSweepSlacks, TaggedUnderExceptions) {
    struct Row {
        const char* name;
        std::function<void(const CPath::Objects&)> make;
        int a, b, check;
    };
    const Row rows[] = {
        {"false", [](const auto& o) { FPath::create(o); }, undefined, 74, 74},
        {"maximum delay 10: 90 less", [](const auto& o) { DPath::createMaximum(o, d(10)); }, -11, 74, -11},
        {"minimum delay: not timed", [](const auto& o) { DPath::createMinimum(o, d(10)); }, undefined, 74,
         74},
        {"no kind: not timed", [](const auto& o) { CPath::create(o); }, undefined, 74, 74},
        {"multicycle without a period", [](const auto& o) { MPath::create(o, 2); }, 79, 74, 74},
    };
    for (const Row& row : rows) {
        Bench bench;
        const Fork fork(bench);
        fork.except(bench, row.make);
        fork.sweep().tagSlacks();
        EXPECT_EQ(int(fork.aArc->getSlack()), row.a) << row.name;
        EXPECT_EQ(int(fork.bArc->getSlack()), row.b) << row.name;
        EXPECT_EQ(int(fork.checkArc->getSlack()), row.check) << row.name;
    }
}

// --- Port slacks ---

TEST(ReferenceSweepSlacks, Ports) {
    struct Row {
        const char* name;
        bool launchRoot, latchRoot;
        std::function<void(const Fork&)> change;
        int aLong, aShort, outLong, outShort;
    };
    const Row rows[] = {
        {"launched by a clock, latched by a register", true, true, [](const Fork&) {}, 79, 8, undefined,
         undefined},
        {"no launch root", false, true, [](const Fork&) {}, undefined, undefined, undefined, undefined},
        {"no latch root", true, false, [](const Fork&) {}, 82, 11, undefined, undefined},
        {"no arc with a slack", true, true,
         [](const Fork& f) { f.subdomain->setSetupRelation(d(undefined)); }, maximum, 8, undefined,
         undefined},
        {"no arc at all", true, true, [](const Fork& f) { f.aArc->destroy(); }, maximum, maximum, undefined,
         undefined},
        {"an output besides", true, true, [](const Fork& f) { f.subdomain->captureLatch(f.out); }, 79, 8, 77,
         6},
        {"an output besides, not reached", true, true,
         [](const Fork& f) {
             f.subdomain->captureLatch(f.out);
             f.outArc->destroy();
         },
         79, 8, maximum, maximum},
        {"a constraint", true, true,
         [](const Fork& f) {
             analyzer->setInputConstraint(f.a, IOConstraint(f.subdomain->getLaunchRoot(), rise, d(1), d(2)));
         },
         77, 9, undefined, undefined},
    };
    for (const Row& row : rows) {
        Bench bench;
        const Fork fork(bench, row.launchRoot ? bench.clk : nullptr, rise,
                        row.latchRoot ? bench.clk : nullptr, rise);
        row.change(fork);
        fork.sweep().iodelaySlackAnalyze();
        EXPECT_EQ(int(analyzer->getIODelayLongestSlack(fork.a)), row.aLong) << row.name;
        EXPECT_EQ(int(analyzer->getIODelayShortestSlack(fork.a)), row.aShort) << row.name;
        EXPECT_EQ(int(analyzer->getIODelayLongestSlack(fork.out)), row.outLong) << row.name;
        EXPECT_EQ(int(analyzer->getIODelayShortestSlack(fork.out)), row.outShort) << row.name;
    }
}

// --- Path search ---

TEST(ReferenceSweepSearch, BoundAndCount) {
    struct Row {
        int limit;
        unsigned long count;
        std::string longest, shortest;
    };
    const std::string bothLong = "b -> D 74, a -> D 79";
    const std::string bothShort = "b -> D 3, a -> D 8";
    const Row rows[] = {
        {maximum, 10, bothLong, bothShort},
        {maximum, 2, bothLong, bothShort},
        {maximum, 1, "b -> D 74", "b -> D 3"},
        {maximum, 0, "", ""},
        {79, 10, bothLong, bothShort},
        {78, 10, "b -> D 74", bothShort},
        {8, 10, "", bothShort},
        {7, 10, "", "b -> D 3"},
        {2, 10, "", ""},
        {minimum, 10, "", ""},
    };
    for (const Row& row : rows) {
        Bench bench;
        const Fork fork(bench);
        ReferenceSweep sweep = fork.sweep();
        sweep.searchLongestPaths(d(row.limit), row.count);
        sweep.searchShortestPaths(d(row.limit), row.count);
        EXPECT_EQ(textOf(fork.subdomain->getLongestPaths()), row.longest) << row.limit << " " << row.count;
        EXPECT_EQ(textOf(fork.subdomain->getShortestPaths()), row.shortest) << row.limit << " " << row.count;
    }
}

TEST(ReferenceSweepSearch, Graphs) {
    struct Row {
        const char* name;
        std::function<void(Bench&, const Fork&)> change;
        unsigned long count;
        std::string longest, shortest;
    };
    const auto except = [](const std::function<void(const CPath::Objects&)>& make) {
        return [=](Bench& bench, const Fork& fork) { fork.except(bench, make); };
    };
    const Row rows[] = {
        {"a false path ends where its class closes", except([](const auto& o) { FPath::create(o); }), 10,
         "b -> D 74", "b -> D 3"},
        {"a maximum delay of 10, for setup alone",
         except([](const auto& o) { DPath::createMaximum(o, d(10)); }), 10, "a -> D -11, b -> D 74",
         "b -> D 3, a -> D 8"},
        {"a minimum delay of 20, for hold alone",
         except([](const auto& o) { DPath::createMinimum(o, d(20)); }), 10, "b -> D 74, a -> D 79",
         "a -> D -12, b -> D 3"},
        {"an undefined adjustment makes no path", except([](const auto& o) {
             MPath::create(o, 2)->setAdjuster([](const Subdomain&, bool) { return d(undefined); });
         }),
         10, "b -> D 74", "b -> D 3"},
        {"an inactive arc", [](Bench&, const Fork& f) { f.bArc->disactivate(); }, 10, "a -> D 79",
         "a -> D 8"},
        {"a loop is cut where it closes on the path",
         [](Bench& b, const Fork& f) {
             Pole* back = b.gate("back");
             b.arc(f.gate, back, 1, 1), b.arc(back, f.gate, 1, 1), b.arc(back, f.check, 2, 6);
             f.checkArc->destroy(); // so that the walk reaches the gate through the loop
             b.arc(f.gate, f.check, 2, 6);
         },
         10, "b -> D 73, b -> D 74, a -> D 78, a -> D 79", "b -> D 3, b -> D 4, a -> D 8, a -> D 9"},
        {"an arc with a special delay leaves the arrival of its siblings alone",
         [](Bench& b, const Fork& f) {
             Pole* far = b.gate("far");
             b.arc(f.b, far, minimum, maximum), b.arc(far, f.check, 2, 6);
             f.bArc->destroy();
             b.arc(f.b, f.gate, 5, 20);
         },
         10, "b -> D minimum, b -> D 74, a -> D 79", "b -> D minimum, b -> D 3, a -> D 8"},
        {"a full set: equal slacks are not better", [](Bench&, const Fork& f) { f.aArc->setMaxDelay(d(20)); },
         1, "a -> D 74", "b -> D 3"},
        {"no requirement, no path",
         [](Bench&, const Fork& f) { f.subdomain->setSetupRelation(d(undefined)); }, 10, "",
         "b -> D 3, a -> D 8"},
    };
    for (const Row& row : rows) {
        Bench bench;
        const Fork fork(bench);
        row.change(bench, fork);
        ReferenceSweep sweep = fork.sweep();
        sweep.searchLongestPaths(d(maximum), row.count);
        sweep.searchShortestPaths(d(maximum), row.count);
        EXPECT_EQ(textOf(fork.subdomain->getLongestPaths()), row.longest) << row.name;
        EXPECT_EQ(textOf(fork.subdomain->getShortestPaths()), row.shortest) << row.name;
        for (CPath* path : analyzer->getCPaths())
            for (Path* kept : fork.subdomain->getLongestPaths())
                EXPECT_EQ(kept->getConstrainedPath(), kept->getAlias() == "a -> D" ? path : nullptr)
                    << row.name;
    }
}

// A path that the full set rejects is not created, so its exception is not called.
TEST(ReferenceSweepSearch, WhatAnExceptionHears) {
    struct Row {
        unsigned long count;
        int longest, shortest;
    };
    const Row rows[] = {{1, undefined, undefined}, {2, 79, 8}};
    for (const Row& row : rows) {
        Bench bench;
        const Fork fork(bench);
        fork.except(bench, [](const auto& o) { MPath::create(o, 2); });
        ReferenceSweep sweep = fork.sweep();
        sweep.searchLongestPaths(d(maximum), row.count);
        sweep.searchShortestPaths(d(maximum), row.count);
        EXPECT_EQ(int(analyzer->getCPaths().getFirst()->getLongestSlack()), row.longest) << row.count;
        EXPECT_EQ(int(analyzer->getCPaths().getFirst()->getShortestSlack()), row.shortest) << row.count;
    }
}

// The clock arrivals that a path gets, and the slacks that are passed to its exception.
TEST(ReferenceSweepSearch, WhatAPathIsGiven) {
    Bench bench;
    Pole *launch = bench.clockPin("ff1"), *latch = bench.clockPin("ff2"),
         *check = Pole::createCheck(latch, "D");
    bench.arc(bench.clk, launch, 1, 2), bench.arc(bench.clk, latch, 10, 13);
    Edge* arc = bench.arc(launch, check, 3, 5);
    MPath* path = MPath::create({{launch}, {check}}, 2);
    path->setAdjuster([](const Subdomain&, bool longest) { return d(longest ? 7 : 9); });
    bench.classify();
    arc->sensitize(m(1));
    Subdomain* subdomain = bench.subdomain(bench.clk, rise, bench.clk, rise);
    subdomain->captureLaunch(launch), subdomain->captureLatch(latch);
    subdomain->setSetupRelation(d(100)), subdomain->setHoldRelation(d(-4));
    ReferenceSweep sweep(subdomain);
    sweep.clockAnalyze(), sweep.arrivalAnalyze(), sweep.requireAnalyze();
    sweep.searchLongestPaths(d(maximum), 1);
    sweep.searchShortestPaths(d(maximum), 1);
    struct Row {
        Path* path;
        int launch, latch, adjustment, slack;
    };
    const Row rows[] = {
        {subdomain->getLongestPaths().getFirst(), 2, 10, 7, 100 + 10 - 2 - 5 + 7},
        {subdomain->getShortestPaths().getFirst(), 1, 13, 9, 1 - 3 - (13 + 4) + 9},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        ASSERT_TRUE(row.path);
        EXPECT_EQ(int(row.path->getLaunchDelay()), row.launch);
        EXPECT_EQ(int(row.path->getLatchDelay()), row.latch);
        EXPECT_EQ(int(row.path->getAdjustment()), row.adjustment);
        EXPECT_EQ(int(row.path->getSlack()), row.slack);
        EXPECT_EQ(row.path->getConstrainedPath(), path);
    }
    EXPECT_EQ(int(path->getLongestSlack()), rows[0].slack);
    EXPECT_EQ(int(path->getShortestSlack()), rows[1].slack);
}

// --- Refusals ---

TEST(ReferenceSweepErrors, Refusals) {
    struct Row {
        const char* message;
        const std::type_info& kind;
        Ruvex::Place place;
        std::function<void(Bench&)> action;
    };
    const std::type_info& factory = typeid(Ruvex::FactoryFailed);
    const std::type_info& invalid = typeid(Ruvex::InvalidRequest);
    const auto sweep = [](Bench& bench) { return Fork(bench).sweep(); };
    // Two exceptions of one class.
    const auto crowded = [](Bench& bench) {
        const Fork fork(bench);
        fork.except(bench, [](const auto& o) { MPath::create(o, 2); });
        MPath::create({{}, {}}, 3)->setPseudoMask(m(1));
        return fork.sweep();
    };
    const Row rows[] = {
        {"Null subdomain", factory, {"Sweep", "preCreate", 73}, [](Bench&) { ReferenceSweep made(nullptr); }},
        {"Null edge",
         invalid,
         {"Sweep", "calculateLSlack", 811},
         [&](Bench& b) { sweep(b).calculateLSlack(nullptr, m(0), d(0)); }},
        {"Null edge",
         invalid,
         {"Sweep", "calculateSSlack", 908},
         [&](Bench& b) { sweep(b).calculateSSlack(nullptr, m(0), d(0)); }},
        {"Not an output pole",
         invalid,
         {"Sweep", "arrivalAnalyze", 1280},
         [](Bench& b) {
             Subdomain* subdomain = b.subdomain(nullptr, none, nullptr, none);
             subdomain->captureLatch(b.clk);
             ReferenceSweep(subdomain).arrivalAnalyze();
         }},
        {"Not an input pole",
         invalid,
         {"Sweep", "requireAnalyze", 1598},
         [](Bench& b) {
             Subdomain* subdomain = b.subdomain(nullptr, none, nullptr, none);
             subdomain->captureLaunch(b.clk);
             ReferenceSweep(subdomain).requireAnalyze();
         }},
        {"Undefined maximumSlack",
         invalid,
         {"Sweep", "searchLongestPaths", 3060},
         [&](Bench& b) { sweep(b).searchLongestPaths(d(undefined), 1); }},
        {"Undefined maximumSlack",
         invalid,
         {"Sweep", "searchShortestPaths", 3145},
         [&](Bench& b) { sweep(b).searchShortestPaths(d(undefined), 1); }},
        {"Multiple constraints",
         invalid,
         {"Sweep", "searchLongestPaths", 3307},
         [&](Bench& b) { crowded(b).searchLongestPaths(d(maximum), 2); }},
        {"Multiple constraints",
         invalid,
         {"Sweep", "searchShortestPaths", 3567},
         [&](Bench& b) { crowded(b).searchShortestPaths(d(maximum), 2); }},
        {"Invalid maxdelay",
         invalid,
         {"DPath", "getMaxdelay", 123},
         [&](Bench& b) {
             DPath::createMinimum({{}, {}}, d(1))->setPseudoMask(m(1));
             analyzer->setMaxdelayPathMask(m(1));
             sweep(b).getPriorityMask(m(1), true);
         }},
        {"Invalid mindelay",
         invalid,
         {"DPath", "getMindelay", 135},
         [&](Bench& b) {
             DPath::createMaximum({{}, {}}, d(1))->setPseudoMask(m(1));
             analyzer->setMindelayPathMask(m(1));
             sweep(b).getPriorityMask(m(1), false);
         }},
    };
    for (const Row& row : rows) {
        Bench bench;
        try {
            row.action(bench);
            ADD_FAILURE() << row.place.function << " threw nothing";
        } catch (const Ruvex::Exception& exception) {
            EXPECT_EQ(typeid(exception), row.kind) << row.place.function;
            EXPECT_EQ(exception.getMessage(), row.message);
            EXPECT_EQ(exception.getPlace(), row.place) << exception._getLabel();
        }
    }
}

} // namespace
