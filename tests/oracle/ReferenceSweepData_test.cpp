// The reference itself, on values worked out by hand, so that it can be trusted as the judge of the library:
// data arrivals and required times.
#include "ReferenceSweepBench.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace oracle::bench;
using oracle::ReferenceSweep;

// --- Data arrival ---

// Two registers "ff1" and "ff2" on `clk`, "ff2" with a check "D", and a gate "g" between them; clock arrivals
// 1:2 and 10:13.
struct Pair {
    explicit Pair(Bench& bench) {
        launch = bench.clockPin("ff1");
        latch = bench.clockPin("ff2");
        gate = bench.gate("g");
        check = Pole::createCheck(latch, "D");
        bench.arc(bench.clk, launch, 1, 2);
        bench.arc(bench.clk, latch, 10, 13);
        launchArc = bench.arc(launch, gate, 20, 30);
        checkArc = bench.arc(gate, check, 3, 5);
    }
    Pole *launch, *latch, *gate, *check;
    Edge *launchArc, *checkArc;
};

struct DataRow {
    const char* name;
    Pole* Bench::*launchRoot;
    Pole* Bench::*latchRoot;
    std::function<void(Bench&, Subdomain*)> build;
    std::string arrivals, required;
    int lat, sat;
};

constexpr Pole* Bench::*noRoot = nullptr;

Pole* rootOf(const Bench& bench, Pole* Bench::*root) { return root ? bench.*root : nullptr; }

TEST(ReferenceSweepData, ArrivalsAndRequiredTimes) {
    // Relations: setup 100, hold -4.
    const DataRow rows[] = {
        {"register to register", &Bench::clk, &Bench::clk,
         [](Bench& b, Subdomain* s) {
             const Pair pair(b);
             s->captureLaunch(pair.launch), s->captureLatch(pair.latch);
         },
         "ff1 0:[1:2], g 0:[21:32], D 0:[18:37]", "ff1 0:[75:0], g 0:[105:20], D 0:[110:17]", 27, 5},
        {"a start pole that is not a leaf", &Bench::clk, &Bench::clk,
         [](Bench& b, Subdomain* s) {
             const Pair pair(b);
             Pole* other = b.clockPin("other");
             b.arc(other, pair.gate, 1, 1000);
             s->captureLaunch(pair.launch), s->captureLatch(pair.latch);
         },
         "ff1 0:[1:2], g 0:[21:32], D 0:[18:37]", "ff1 0:[75:0], g 0:[105:20], D 0:[110:17]", 27, 5},
        {"a launch leaf without a launch map; an end pole without one", &Bench::clk2, &Bench::clk,
         [](Bench& b, Subdomain* s) {
             const Pair pair(b);
             s->captureLaunch(pair.launch), s->captureLatch(pair.latch);
         },
         "", "", undefined, undefined},
        {"input port with a constraint", &Bench::clk, &Bench::clk,
         [](Bench& b, Subdomain* s) {
             const Pair pair(b);
             Pole* in = Pole::createInput(b.owner, "in");
             b.arc(in, pair.gate, 1, 1);
             analyzer->setInputConstraint(in, IOConstraint(b.clk, rise, d(2), d(5)));
             s->captureLaunch(in), s->captureLatch(pair.latch);
         },
         "g 0:[3:6], D 0:[0:11], in 0:[2:5]", "g 0:[105:20], D 0:[110:17], in 0:[104:19]", 1, -13},
        {"a clock source launches, initial or not, and is not walked through", &Bench::clk, &Bench::clk,
         [](Bench& b, Subdomain* s) {
             const Pair pair(b);
             b.clk->setInitial(false);
             b.arc(pair.launch, b.clk, 500, 500);
             b.arc(b.clk, pair.check, 3, 5);
             s->captureLaunch(b.clk), s->captureLatch(pair.latch);
         },
         "clk 0:[0:0], D 0:[-3:5]", "clk 0:[105:20], D 0:[110:17]", -5, -16},
        {"no roots: ports at 0, constraints not heard", noRoot, noRoot,
         [](Bench& b, Subdomain* s) {
             Pole *in = Pole::createInput(b.owner, "in"), *out = Pole::createOutput(b.owner, "out");
             b.arc(in, out, 4, 7);
             analyzer->setInputConstraint(in, IOConstraint(nullptr, none, d(2), d(5)));
             analyzer->setOutputConstraint(out, IOConstraint(nullptr, none, d(2), d(5)));
             s->captureLaunch(in), s->captureLatch(out);
         },
         "in 0:[0:0], out 0:[4:7]", "in 0:[93:0], out 0:[100:4]", 7, 4},
        {"output port with a constraint", &Bench::clk, &Bench::clk,
         [](Bench& b, Subdomain* s) {
             const Pair pair(b);
             Pole* out = Pole::createOutput(b.owner, "out");
             b.arc(pair.gate, out, 1, 2);
             analyzer->setOutputConstraint(out, IOConstraint(b.clk, rise, d(2), d(5)));
             s->captureLaunch(pair.launch), s->captureLatch(out);
         },
         "ff1 0:[1:2], g 0:[21:32], out 0:[22:34]", "ff1 0:[63:-19], g 0:[93:1], out 0:[95:2]", 39, 24},
        {"a loop is cut at the current walk, inactive arcs are not followed", &Bench::clk, &Bench::clk,
         [](Bench& b, Subdomain* s) {
             const Pair pair(b);
             Pole* back = b.gate("back");
             b.arc(pair.gate, back, 1, 1), b.arc(back, pair.gate, 1, 1);
             b.arc(pair.launch, back, 500, 500)->disactivate();
             s->captureLaunch(pair.launch), s->captureLatch(pair.latch);
         },
         "ff1 0:[1:2], g 0:[21:32], D 0:[18:37]", "ff1 0:[75:0], g 0:[105:20], D 0:[110:17]", 27, 5},
    };
    for (const DataRow& row : rows) {
        Bench bench;
        Subdomain* subdomain =
            bench.subdomain(rootOf(bench, row.launchRoot), rise, rootOf(bench, row.latchRoot), rise);
        row.build(bench, subdomain);
        subdomain->setSetupRelation(d(100));
        subdomain->setHoldRelation(d(-4));
        ReferenceSweep sweep(subdomain);
        sweep.clockAnalyze();
        sweep.arrivalAnalyze();
        sweep.requireAnalyze();
        EXPECT_EQ(textOf(sweep.getDataAT()), row.arrivals) << row.name;
        EXPECT_EQ(textOf(sweep.getDataRT()), row.required) << row.name;
        EXPECT_EQ(int(subdomain->getLAT()), row.lat) << row.name;
        EXPECT_EQ(int(subdomain->getSAT()), row.sat) << row.name;
        EXPECT_EQ(sweep.getArrivalTiming(), Timing(subdomain->getSAT(), subdomain->getLAT())) << row.name;
        for (Pole* pole : bench.owner->getPoles())
            EXPECT_FALSE(pole->isMarked()) << row.name;
    }
}

// The two registers of `Pair` with one exception from the first to the check, on arcs that belong to it or do
// not.
TEST(ReferenceSweepData, Exceptions) {
    struct Row {
        const char* name;
        std::function<void(const CPath::Objects&)> make;
        bool tagged;
        std::string arrivals, required;
        int lat;
        bool critical;
    };
    const Row rows[] = {
        {"false", [](const auto& o) { FPath::create(o); }, true, "ff1 1:[1:2], g 1:[21:32], D ",
         "ff1 , g 1:[105:20], D 1:[110:17]", undefined, false},
        {"false elsewhere", [](const auto& o) { FPath::create(o); }, false,
         "ff1 1:[1:2], g 0:[21:32], D 0:[18:37]", "ff1 0:[75:0], g 0:[105:20], D 1:[110:17]", 27, false},
        {"multicycle", [](const auto& o) { MPath::create(o, 2); }, true,
         "ff1 1:[1:2], g 1:[21:32], D 1:[18:37]", "ff1 , g 1:[105:20], D 1:[110:17]", 14, true},
        {"multicycle elsewhere", [](const auto& o) { MPath::create(o, 2); }, false,
         "ff1 1:[1:2], g 0:[21:32], D 0:[18:37]", "ff1 0:[75:0], g 0:[105:20], D 1:[110:17]", 27, false},
        {"maximum delay", [](const auto& o) { DPath::createMaximum(o, d(9)); }, true,
         "ff1 1:[1:2], g 1:[21:32], D 1:[18:37]", "ff1 , g 1:[105:20], D 1:[110:17]", minimum, false},
    };
    for (const Row& row : rows) {
        Bench bench;
        Subdomain* subdomain = bench.subdomain(bench.clk, rise, bench.clk, rise);
        const Pair pair(bench);
        row.make({{pair.launch}, {pair.check}});
        bench.classify();
        if (row.tagged)
            pair.launchArc->sensitize(m(1)), pair.checkArc->sensitize(m(1));
        subdomain->captureLaunch(pair.launch);
        subdomain->captureLatch(pair.latch);
        subdomain->setSetupRelation(d(100));
        subdomain->setHoldRelation(d(-4));
        ReferenceSweep sweep(subdomain);
        sweep.clockAnalyze();
        sweep.arrivalAnalyze();
        sweep.requireAnalyze();
        EXPECT_EQ(textOf(sweep.getDataAT()), row.arrivals) << row.name;
        EXPECT_EQ(textOf(sweep.getDataRT()), row.required) << row.name;
        EXPECT_EQ(int(subdomain->getLAT()), row.lat) << row.name;
        EXPECT_EQ(subdomain->isMPathCritical(), row.critical) << row.name;
    }
}

// Exceptions that open or close at the gate between the registers. Forwards, the target of an arc opens a
// class; backwards, the source of an arc closes it.
TEST(ReferenceSweepData, ExceptionsInside) {
    struct Row {
        const char* name;
        bool opens, closes, isFalse, tagged;
        std::string arrivals, required;
    };
    const Row rows[] = {
        {"opened", true, false, false, true, "ff1 0:[1:2], g 1:[21:32], D 1:[18:37]",
         "ff1 0:[75:0], g 0:[105:20], D 0:[110:17]"},
        {"opened, not on the arc behind", true, false, false, false, "ff1 0:[1:2], g 1:[21:32], D 0:[18:37]",
         "ff1 0:[75:0], g 0:[105:20], D 0:[110:17]"},
        {"closed", false, true, false, true, "ff1 0:[1:2], g 0:[21:32], D 0:[18:37]",
         "ff1 1:[75:0], g 1:[105:20], D 0:[110:17]"},
        {"closed, not on the arc before", false, true, false, false, "ff1 0:[1:2], g 0:[21:32], D 0:[18:37]",
         "ff1 0:[75:0], g 1:[105:20], D 0:[110:17]"},
        {"a false path, opened and closed", true, true, true, true, "ff1 0:[1:2], g 1:[21:32], D 1:[18:37]",
         "ff1 1:[75:0], g 1:[105:20], D 0:[110:17]"},
    };
    for (const Row& row : rows) {
        Bench bench;
        Subdomain* subdomain = bench.subdomain(bench.clk, rise, bench.clk, rise);
        const Pair pair(bench);
        CPath::Objects objects;
        if (row.opens)
            objects.sources.push_back(pair.gate);
        if (row.closes)
            objects.targets.push_back(pair.gate);
        if (row.isFalse)
            FPath::create(objects);
        else
            MPath::create(objects, 2);
        bench.classify();
        if (row.tagged)
            pair.launchArc->sensitize(m(1)), pair.checkArc->sensitize(m(1));
        subdomain->captureLaunch(pair.launch), subdomain->captureLatch(pair.latch);
        subdomain->setSetupRelation(d(100)), subdomain->setHoldRelation(d(-4));
        ReferenceSweep sweep(subdomain);
        sweep.clockAnalyze(), sweep.arrivalAnalyze(), sweep.requireAnalyze();
        EXPECT_EQ(textOf(sweep.getDataAT()), row.arrivals) << row.name;
        EXPECT_EQ(textOf(sweep.getDataRT()), row.required) << row.name;
    }
}

// If several classes equal the longest arrival, the last one in the order of its bits decides.
TEST(ReferenceSweepData, MulticycleCriticality) {
    struct Row {
        bool pure;
        int plain, multicycle;
        bool before, after;
    };
    const Row rows[] = {
        {true, 10, 9, true, false}, {true, 10, 10, false, true},  {true, 9, 10, false, true},
        {false, 10, 9, true, true}, {false, 9, 10, false, false},
    };
    for (const Row& row : rows) {
        Bench bench;
        Pole* root = row.pure ? bench.clk : bench.clk2;
        Pole *one = bench.clockPin("one"), *two = bench.clockPin("two"), *latch = bench.clockPin("latch");
        Pole *gate = bench.gate("g"), *check = Pole::createCheck(latch);
        bench.arc(bench.clk, latch, 0, 0), bench.arc(root, one, 0, 0), bench.arc(root, two, 0, 0);
        MPath::create({{two}, {check}}, 1);
        bench.classify();
        bench.arc(one, gate, 0, row.plain);
        bench.arc(two, gate, 0, row.multicycle)->sensitize(m(1));
        bench.arc(gate, check, 0, 0)->sensitize(m(1));
        Subdomain* subdomain = bench.subdomain(root, rise, bench.clk, rise);
        subdomain->captureLaunch(one), subdomain->captureLaunch(two), subdomain->captureLatch(latch);
        if (row.before)
            subdomain->setMPathCritical();
        ReferenceSweep sweep(subdomain);
        sweep.clockAnalyze();
        sweep.arrivalAnalyze();
        EXPECT_EQ(subdomain->isMPathCritical(), row.after) << row.plain << " " << row.multicycle;
    }
}

} // namespace
