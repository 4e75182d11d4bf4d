// Data arrival: the seeds at the launch leaves, the fold of one arc, the walk, and what the ends of the paths
// make of it for the subdomain.
#include "tests/support/Builder.h"
#include "tests/support/Sweeps.h"
#include "tests/support/Thrown.h"

#include "Vorlen/Sweep.h"
#include "tests/support/Rows.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace Support;
using Pelko::analyzer;
using Pelko::MPath;
using Pelko::Pole;
using Pelko::PseudoMask;
using Vorlen::PoleSet;
using Vorlen::Sweep;

Table arrivalsOf(const Sweep& sweep) { return tableOf(sweep, &Sweep::hasArrivalTimingMap); }

struct Bench : SubdomainBench {
    using SubdomainBench::SubdomainBench;

    Pole* addCheck(const std::string& name, Pole* latch, Pole* data, int hold, int setup) {
        Pole* check = design.addCheck(latch, name);
        design.connect(data, check, hold, setup);
        return check;
    }
};

struct Row {
    const char* what;
    std::function<void(Bench&)> build;
    Table arrivals;
    std::pair<int, int> extremes; // shortest and latest arrival of the subdomain
};

void expect(const Row& row, bool fromClock, bool toClock) {
    SCOPED_TRACE(row.what);
    Bench bench(fromClock, toClock);
    row.build(bench);
    const SweepPointer sweep(Sweep::create(bench.subdomain));
    sweep->clockAnalyze();
    sweep->arrivalAnalyze();
    EXPECT_EQ(arrivalsOf(*sweep), row.arrivals);
    EXPECT_EQ(std::pair(int(bench.subdomain->getSAT()), int(bench.subdomain->getLAT())), row.extremes);
    EXPECT_EQ(marked(), Names{});
}

constexpr std::pair<int, int> never{undefined, undefined};

TEST(DataArrival, FromRegisterToRegister) {
    const Row rows[] = {
        {"nothing to time", [](Bench&) {}, {}, never},
        {"clock, logic and check add up; the latch edge is subtracted, crossed",
         [](Bench& b) {
             Pole* d = b.add("d", b.add("q", b.addLaunch("a", 1, 2), 10, 20), 100, 200);
             b.addCheck("z/check", b.addLatch("z", 3, 5), d, 4, 7);
         },
         {{"a", {{0, {1, 2}}}},
          {"q", {{0, {11, 22}}}},
          {"d", {{0, {111, 222}}}},
          {"z/check", {{0, {107, 229}}}}},
         {102, 226}},
        {"reconvergent: the earliest and the latest",
         [](Bench& b) {
             Pole* a = b.addLaunch("a");
             Pole* d = b.add("d", b.add("fast", a, 1, 2), 0, 0);
             b.design.connect(b.add("slow", a, 5, 9), d, 0, 0);
             b.addCheck("z/check", b.addLatch("z"), d, 0, 0);
         },
         {{"a", {{0, {0, 0}}}},
          {"fast", {{0, {1, 2}}}},
          {"slow", {{0, {5, 9}}}},
          {"d", {{0, {1, 9}}}},
          {"z/check", {{0, {1, 9}}}}},
         {1, 9}},
        {"two checks at one clock pin, one data pin at two clock pins",
         [](Bench& b) {
             Pole* a = b.addLaunch("a");
             Pole* d = b.add("d", a, 10, 20);
             Pole* e = b.add("e", a, 30, 40);
             Pole* z = b.addLatch("z", 1, 1);
             b.addCheck("z/d", z, d, 0, 0);
             b.addCheck("z/e", z, e, 0, 0);
             b.addCheck("y/d", b.addLatch("y", 50, 50), d, 0, 0);
         },
         {{"a", {{0, {0, 0}}}},
          {"d", {{0, {10, 20}}}},
          {"e", {{0, {30, 40}}}},
          {"z/d", {{0, {10, 20}}}},
          {"z/e", {{0, {30, 40}}}},
          {"y/d", {{0, {10, 20}}}}},
         {-40, 39}},
        {"a latch leaf that the clock does not reach is skipped",
         [](Bench& b) {
             Pole* d = b.add("d", b.addLaunch("a"), 10, 20);
             Pole* z = b.design.addClock("z");
             b.subdomain->captureLatch(z);
             b.addCheck("z/check", z, d, 0, 0);
         },
         {},
         never},
        {"a launch leaf that the clock does not reach launches nothing",
         [](Bench& b) {
             Pole* a = b.design.addClock("a");
             b.subdomain->captureLaunch(a);
             b.addCheck("z/check", b.addLatch("z"), b.add("d", a, 10, 20), 0, 0);
         },
         {},
         never},
        {"a start that is no launch leaf launches nothing, and nothing is timed behind it alone",
         [](Bench& b) {
             Pole* a = b.addLaunch("a");
             Pole* other = b.design.addClock("other");
             b.design.connect(b.clk, other, 70, 70);
             Pole* both = b.add("both", a, 10, 20);
             Pole* alone = b.add("alone", other, 1, 1);
             b.design.connect(alone, both, 500, 500);
             b.addCheck("z/both", b.addLatch("z"), both, 0, 0);
             b.addCheck("y/alone", b.addLatch("y"), alone, 0, 0);
         },
         {{"a", {{0, {0, 0}}}}, {"both", {{0, {10, 20}}}}, {"z/both", {{0, {10, 20}}}}},
         {10, 20}},
        {"a start ends the walk: its fan-in is not followed",
         [](Bench& b) {
             Pole* up = b.addLaunch("up");
             Pole* a = b.design.addClock("a");
             b.design.connect(b.clk, a, 0, 0);
             b.design.connect(b.add("logic", up, 9, 9), a, 9, 9);
             b.subdomain->captureLaunch(a);
             b.addCheck("z/check", b.addLatch("z"), b.add("d", a, 10, 20), 0, 0);
         },
         // The clock walk passes through the logic to its leaf. Data starts there all the same.
         {{"a", {{0, {0, 18}}}}, {"d", {{0, {10, 38}}}}, {"z/check", {{0, {10, 38}}}}},
         {10, 38}},
        {"so does a clock source that is not initial",
         [](Bench& b) {
             Pole* source = b.add("source", b.addLaunch("a"), 10, 20);
             source->setClockSource(true);
             b.addCheck("z/check", b.addLatch("z"), b.add("d", source, 1, 1), 0, 0);
         },
         {},
         never},
        {"inactive arcs are not followed",
         [](Bench& b) {
             Pole* a = b.addLaunch("a");
             Pole* d = b.add("d", a, 10, 20);
             b.design.connect(b.add("cut", a, 1, 99), d, 0, 0)->disactivate();
             b.addCheck("z/check", b.addLatch("z"), d, 0, 0);
         },
         {{"a", {{0, {0, 0}}}}, {"d", {{0, {10, 20}}}}, {"z/check", {{0, {10, 20}}}}},
         {10, 20}},
        {"a loop is cut where its closing arc comes from the current walk",
         [](Bench& b) {
             Pole* first = b.add("first", b.addLaunch("a"), 1, 2);
             Pole* second = b.add("second", first, 10, 20);
             b.design.connect(second, first, 500, 500);
             b.addCheck("z/check", b.addLatch("z"), second, 0, 0);
         },
         {{"a", {{0, {0, 0}}}},
          {"first", {{0, {1, 2}}}},
          {"second", {{0, {11, 22}}}},
          {"z/check", {{0, {11, 22}}}}},
         {11, 22}},
        {"also where its source has some arrival already",
         [](Bench& b) {
             Pole* a = b.addLaunch("a");
             Pole* second = b.add("second", a, 3, 4);
             Pole* first = b.add("first", a, 1, 2);
             b.design.connect(first, second, 10, 20);
             b.design.connect(second, first, 500, 500);
             b.addCheck("z/check", b.addLatch("z"), second, 0, 0);
         },
         {{"a", {{0, {0, 0}}}},
          {"first", {{0, {1, 2}}}},
          {"second", {{0, {3, 22}}}},
          {"z/check", {{0, {3, 22}}}}},
         {3, 22}},
        {"undefined delays absorb, each bound by itself",
         [](Bench& b) {
             b.addCheck("z/check", b.addLatch("z"), b.add("d", b.addLaunch("a"), undefined, 20), 0, 0);
         },
         {{"a", {{0, {0, 0}}}}, {"d", {{0, {undefined, 20}}}}, {"z/check", {{0, {undefined, 20}}}}},
         {undefined, 20}},
        {"a latch leaf that is no clock pin and no port is an end point itself",
         [](Bench& b) {
             Pole* d = b.add("d", b.addLaunch("a"), 10, 20);
             b.design.connect(b.clk, d, 3, 4);
             b.subdomain->captureLatch(d);
         },
         {{"a", {{0, {0, 0}}}}, {"d", {{0, {10, 20}}}}},
         {-10, 17}}, // the clock reaches it on both ways: (3, 20)
    };
    for (const Row& row : rows)
        expect(row, true, true);
}

TEST(DataArrival, FromAndToPortsOfAClock) {
    const auto constrainInput = [](Bench& b, Pole* port, int min, int max) {
        b.design.constrainInput(port, b.clk, rising, min, max);
    };
    const auto constrainOutput = [](Bench& b, Pole* port, int min, int max) {
        b.design.constrainOutput(port, b.clk, rising, min, max);
    };
    const Row rows[] = {
        {"an input without a constraint",
         [](Bench& b) { b.addOutput("out", b.addInput("in"), 10, 20); },
         {{"in", {{0, {0, 0}}}}, {"out", {{0, {10, 20}}}}},
         {10, 20}},
        {"an input constraint is added to the launch",
         [&](Bench& b) {
             Pole* in = b.addInput("in");
             constrainInput(b, in, 2, 5);
             b.addOutput("out", in, 10, 20);
         },
         {{"in", {{0, {2, 5}}}}, {"out", {{0, {12, 25}}}}},
         {12, 25}},
        {"a bound that was not given is undefined",
         [&](Bench& b) {
             Pole* in = b.addInput("in");
             constrainInput(b, in, undefined, 5);
             b.addOutput("out", in, 10, 20);
         },
         {{"in", {{0, {undefined, 5}}}}, {"out", {{0, {undefined, 25}}}}},
         {undefined, 25}},
        {"one that is not defined counts as none",
         [](Bench& b) {
             Pole* in = b.addInput("in");
             analyzer->setInputConstraint(in, Pelko::IOConstraint());
             b.addOutput("out", in, 10, 20);
         },
         {{"in", {{0, {0, 0}}}}, {"out", {{0, {10, 20}}}}},
         {10, 20}},
        {"an output constraint counts at the end only",
         [&](Bench& b) {
             Pole* out = b.addOutput("out", b.addInput("in"), 10, 20);
             constrainOutput(b, out, 3, 7);
         },
         {{"in", {{0, {0, 0}}}}, {"out", {{0, {10, 20}}}}},
         {13, 27}},
        {"what is no port any more has no constraint",
         [&](Bench& b) {
             Pole* in = b.addInput("in");
             Pole* out = b.addOutput("out", in, 10, 20);
             constrainInput(b, in, 2, 5);
             constrainOutput(b, out, 3, 7);
             in->setInput(false);
             out->setOutput(false);
             b.design.connect(b.clk, in, 0, 0);
             b.design.connect(b.clk, out, 100, 100);
         },
         {{"in", {{0, {0, 0}}}}, {"out", {{0, {10, 20}}}}},
         {-90, 10}}, // the clock reaches the pole on both ways: (10, 100)
        {"both",
         [&](Bench& b) {
             Pole* in = b.addInput("in");
             constrainInput(b, in, 2, 5);
             constrainOutput(b, b.addOutput("out", in, 10, 20), 3, 7);
         },
         {{"in", {{0, {2, 5}}}}, {"out", {{0, {12, 25}}}}},
         {15, 32}},
        {"a port that is constrained on the side that it does not use",
         [&](Bench& b) {
             Pole* in = b.addInput("in");
             in->setOutput(true);
             constrainOutput(b, in, 100, 100);
             b.addOutput("out", in, 10, 20);
         },
         {{"in", {{0, {0, 0}}}}, {"out", {{0, {10, 20}}}}},
         {10, 20}},
    };
    for (const Row& row : rows)
        expect(row, true, true);
}

TEST(DataArrival, FromAndToPortsWithoutAClock) {
    const Row rows[] = {
        {"inputs start at zero, and no latch timing is subtracted",
         [](Bench& b) { b.addOutput("out", b.addInput("in"), 10, 20); },
         {{"in", {{0, {0, 0}}}}, {"out", {{0, {10, 20}}}}},
         {10, 20}},
        {"constraints of ports do not count",
         [](Bench& b) {
             Pole* in = b.addInput("in");
             Pole* out = b.addOutput("out", in, 10, 20);
             b.design.constrainInput(in, b.clk, rising, 2, 5);
             b.design.constrainOutput(out, b.clk, rising, 3, 7);
         },
         {{"in", {{0, {0, 0}}}}, {"out", {{0, {10, 20}}}}},
         {10, 20}},
        {"the opening classes of the start",
         [](Bench& b) {
             Pole* in = b.addInput("in");
             open(in, 6);
             b.addOutput("out", in, 10, 20);
         },
         {{"in", {{6, {0, 0}}}}, {"out", {{0, {10, 20}}}}},
         {10, 20}},
        {"several outputs widen",
         [](Bench& b) {
             Pole* in = b.addInput("in");
             b.addOutput("one", in, 10, 20);
             b.addOutput("two", in, 5, 15);
         },
         {{"in", {{0, {0, 0}}}}, {"one", {{0, {10, 20}}}}, {"two", {{0, {5, 15}}}}},
         {5, 20}},
        {"an output that nothing reaches",
         [](Bench& b) { b.addOutput("out", b.design.addPole("floating"), 10, 20); },
         {},
         never},
    };
    for (const Row& row : rows)
        expect(row, false, false);
}

TEST(DataArrival, OverriddenBoundsDoNotCountAtPorts) {
    // Two outputs: one under no class, one under class 1.
    const struct {
        const char* what;
        unsigned long maxMask;
        unsigned long minMask;
        bool hasPlain;
        std::pair<int, int> extremes;
    } rows[] = {
        {"no delay class", 0, 0, true, {1, 90}},
        {"a maximum delay: its latest does not count", 1, 0, true, {1, 9}},
        {"a minimum delay: its shortest does not count", 0, 1, true, {3, 90}},
        {"equal masks: the entry does not count", 1, 1, true, {3, 9}},
        {"a maximum delay alone leaves the bound that loses", 1, 0, false, {1, minimum}},
        {"a minimum delay alone", 0, 1, false, {maximum, 90}},
        {"equal masks alone: no arrival", 1, 1, false, never},
        {"another class", 2, 4, true, {1, 90}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Bench bench(false, false);
        if (row.hasPlain)
            bench.addOutput("plain", bench.addInput("a"), 3, 9);
        Pole* in = bench.addInput("in");
        Pole* out = bench.addOutput("out", in, 1, 90);
        open(in, 1);
        out->getIncomingEdges().getFirst()->sensitize(PseudoMask(1));
        analyzer->setMaxdelayPathMask(PseudoMask(row.maxMask));
        analyzer->setMindelayPathMask(PseudoMask(row.minMask));
        const SweepPointer sweep(Sweep::create(bench.subdomain));
        sweep->arrivalAnalyze();
        EXPECT_EQ(std::pair(int(bench.subdomain->getSAT()), int(bench.subdomain->getLAT())), row.extremes);
        // The pole's own arrival is not changed.
        EXPECT_EQ(arrivalsOf(*sweep)["out"], (Entries{{1, {1, 90}}}));
    }
}

TEST(DataArrival, FoldsAnArc) {
    // An arc of delay (1, 3) from in to d. The arrival at in is {classes: (10, 20)}, through an arc from a
    // start.
    const struct {
        const char* what;
        unsigned long source;
        unsigned long closing;
        unsigned long falseMask;
        unsigned long arc;
        unsigned long opening;
        bool check;
        Entries after;
    } rows[] = {
        {"plain", 0, 0, 0, 0, 0, false, {{0, {11, 23}}}},
        {"a check takes its hold and setup value", 0, 0, 0, 0, 0, true, {{0, {9, 23}}}},
        {"a class that the arc is for", 3, 0, 0, 1, 0, false, {{1, {11, 23}}}},
        {"a class that it is not for", 3, 0, 0, 4, 0, false, {{0, {11, 23}}}},
        {"a false path that closes", 1, 1, 1, 1, 0, false, {}},
        {"a false path that closes, and takes other classes along", 3, 1, 1, 3, 0, false, {}},
        {"another class that closes goes on", 1, 1, 2, 1, 0, false, {{1, {11, 23}}}},
        {"a class that is closed before the arc drops it", 1, 1, 1, 0, 0, false, {}},
        {"a class opens", 0, 0, 0, 0, 2, false, {{2, {11, 23}}}},
        {"a class opens beside another", 1, 0, 0, 1, 2, false, {{3, {11, 23}}}},
        {"a false path opens too", 0, 0, 2, 0, 2, false, {{2, {11, 23}}}},
        {"a class opens at a check", 0, 0, 0, 0, 2, true, {{2, {9, 23}}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Bench bench(false, false);
        Pole* start = bench.addInput("start");
        Pole* in = bench.add("in", start, 10, 20);
        Pole* d = bench.add("d", in, 1, 3);
        open(start, row.source);
        in->getIncomingEdges().getFirst()->sensitize(PseudoMask(row.source));
        Pelko::Edge* edge = d->getIncomingEdges().getFirst();
        edge->sensitize(PseudoMask(row.arc));
        close(d, row.closing);
        open(d, row.opening);
        d->setSetupCheck(row.check);
        analyzer->setFalsePathMask(PseudoMask(row.falseMask));
        const SweepPointer sweep(Sweep::create(bench.subdomain));
        sweep->updateDataATMapMap(edge);
        EXPECT_EQ(arrivalsOf(*sweep), Table{}) << "a source without arrival";
        PoleSet path;
        sweep->arrivalAnalyze(in, path);
        sweep->updateDataATMapMap(edge);
        EXPECT_EQ(arrivalsOf(*sweep)["in"], (Entries{{row.source, {10, 20}}}));
        EXPECT_EQ(arrivalsOf(*sweep).count("d"), 1U);
        EXPECT_EQ(arrivalsOf(*sweep)["d"], row.after);
        analyzer->unmark();
    }
}

TEST(DataArrival, EitherCheckBitMakesACheck) {
    const struct {
        bool setup;
        bool hold;
        Entries after;
    } rows[] = {{false, false, {{0, {11, 23}}}},
                {true, false, {{0, {9, 23}}}},
                {false, true, {{0, {9, 23}}}},
                {true, true, {{0, {9, 23}}}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        Bench bench(false, false);
        Pole* d = bench.add("d", bench.add("in", bench.addInput("start"), 10, 20), 1, 3);
        d->setSetupCheck(row.setup);
        d->setHoldCheck(row.hold);
        const SweepPointer sweep(Sweep::create(bench.subdomain));
        PoleSet path;
        sweep->arrivalAnalyze(d, path);
        EXPECT_EQ(arrivalsOf(*sweep)["d"], row.after) << row.setup << row.hold;
        EXPECT_EQ(namesOf(path), Names{});
        EXPECT_EQ(marked(), (Names{"start", "in", "d"}));
        analyzer->unmark();
    }
}

// Nor has it an arrival.
TEST(DataArrival, AMarkedPoleIsNotEnteredByTheWholePhase) {
    Bench bench;
    Pole* launch = bench.addLaunch("a");
    Pole* q = bench.add("q", launch, 1, 2);
    Pole* d = bench.add("d", bench.add("r", launch, 10, 20), 100, 200);
    bench.design.connect(q, d, 1, 999);
    bench.addCheck("z/check", bench.addLatch("z"), d, 0, 0);
    const SweepPointer sweep(Sweep::create(bench.subdomain));
    sweep->clockAnalyze();
    q->mark();
    sweep->arrivalAnalyze();
    EXPECT_EQ(arrivalsOf(*sweep), (Table{{"a", {{0, {0, 0}}}},
                                         {"r", {{0, {10, 20}}}},
                                         {"d", {{0, {110, 220}}}},
                                         {"z/check", {{0, {110, 220}}}}}));
    EXPECT_EQ(marked(), Names{});
}

TEST(DataArrival, SeedsLaunchLeaves) {
    const struct {
        const char* what;
        bool fromClock;
        bool captured;
        bool reached;
        unsigned long opening;
        Table after;
    } rows[] = {
        {"a clock pin", true, true, true, 0, {{"a", {{0, {1, 2}}}}}},
        {"with opening classes", true, true, true, 5, {{"a", {{5, {1, 2}}}}}},
        {"that is no launch leaf", true, false, true, 5, {}},
        {"that the clock does not reach", true, true, false, 5, {}},
        {"without a launch root: zero, whatever the clock", false, true, true, 0, {{"a", {{0, {0, 0}}}}}},
        {"without a launch root, with opening classes", false, true, true, 5, {{"a", {{5, {0, 0}}}}}},
        {"without a launch root, no launch leaf", false, false, true, 5, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Bench bench(row.fromClock, true);
        Pole* a = bench.design.addClock("a");
        if (row.reached)
            bench.design.connect(bench.clk, a, 1, 2);
        if (row.captured)
            bench.subdomain->captureLaunch(a);
        open(a, row.opening);
        const SweepPointer sweep(Sweep::create(bench.subdomain));
        sweep->clockAnalyze();
        sweep->updateDataATMapMap(a);
        EXPECT_EQ(arrivalsOf(*sweep), row.after);
    }
}

TEST(DataArrival, MulticycleClassesComeBackToOneCycle) {
    // An output under a multicycle class arrives at (1, 90), one under none at (3, plain).
    const struct {
        const char* what;
        unsigned long multiplier;
        bool betweenClocks;
        int plain;
        std::pair<int, int> extremes;
    } rows[] = {
        {"divided", 3, false, 9, {1, 30}},
        {"still below the plain one", 3, false, 50, {1, 50}},
        {"by 1", 1, false, 9, {1, 90}},
        {"between two clocks: as it is", 3, true, 9, {1, 90}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Builder design;
        Pole* clk = design.addClockSource("clk");
        Pole* latch = row.betweenClocks ? design.addClockSource("gen") : clk;
        Pelko::Subdomain* subdomain = design.addSubdomain(clk, latch);
        Pole* in = design.addInput("in");
        Pole* plain = design.addOutput("plain");
        Pole* out = design.addOutput("out");
        design.connect(in, plain, 3, row.plain);
        Pelko::Edge* arc = design.connect(in, out, 1, 90);
        subdomain->captureLaunch(in);
        subdomain->captureLatch(plain);
        subdomain->captureLatch(out);
        MPath::create({{in}, {out}}, row.multiplier)->setPseudoMask(PseudoMask(1));
        analyzer->setMulticyclePathMask(PseudoMask(1));
        arc->sensitize(PseudoMask(1));
        const SweepPointer sweep(Sweep::create(subdomain));
        sweep->clockAnalyze();
        sweep->arrivalAnalyze();
        EXPECT_EQ(std::pair(int(subdomain->getSAT()), int(subdomain->getLAT())), row.extremes);
    }
}

TEST(DataArrival, TheLastEntryThatSetsTheLatestDecidesWhetherAMulticyclePathIsCritical) {
    // One output under the classes 0 (plain), 1 (multicycle by 1) and 2 (no multicycle), with these arrivals;
    // 0 if a class has no path. Class 1 is read before class 2.
    const struct {
        const char* what;
        int plain;
        int multicycle;
        int other;
        bool pure;
        bool before;
        bool after;
    } rows[] = {
        {"the plain one is later", 20, 10, 0, true, true, false},
        {"the multicycle one is later", 10, 20, 0, true, false, true},
        {"equal: the multicycle one comes last", 20, 20, 0, true, false, true},
        {"equal to one that comes behind it", 10, 20, 20, true, false, false},
        {"the last one is later", 10, 20, 30, true, true, false},
        {"the last one is earlier", 10, 20, 15, true, false, true},
        {"only plain", 20, 0, 0, true, true, false},
        {"only multicycle", 0, 20, 0, true, false, true},
        {"between two clocks the flag stays set", 20, 10, 0, false, true, true},
        {"between two clocks the flag stays clear", 10, 20, 0, false, false, false},
        {"no arrival: the flag stays set", 0, 0, 0, true, true, true},
        {"no arrival: the flag stays clear", 0, 0, 0, true, false, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Builder design;
        Pole* clk = design.addClockSource("clk");
        Pelko::Subdomain* subdomain = design.addSubdomain(clk, row.pure ? clk : design.addClockSource("gen"));
        Pole* out = design.addOutput("out");
        subdomain->captureLatch(out);
        const auto addStart = [&](unsigned long classes, int arrival) {
            if (arrival == 0)
                return;
            Pole* in = design.addInput("in" + std::to_string(classes));
            subdomain->captureLaunch(in);
            open(in, classes);
            design.connect(in, out, 1, arrival)->sensitize(PseudoMask(classes));
        };
        addStart(2, row.other);
        addStart(1, row.multicycle);
        addStart(0, row.plain);
        MPath::create({{}, {}}, 1)->setPseudoMask(PseudoMask(1));
        analyzer->setMulticyclePathMask(PseudoMask(1));
        if (row.before)
            subdomain->setMPathCritical();
        const SweepPointer sweep(Sweep::create(subdomain));
        sweep->clockAnalyze();
        sweep->arrivalAnalyze();
        EXPECT_EQ(subdomain->isMPathCritical(), row.after);
    }
}

TEST(DataArrival, RefusesALatchLeafThatIsNoPort) {
    Bench bench(false, false);
    Pole* in = bench.addInput("in");
    bench.addOutput("first", in, 10, 20);
    Pole* pin = bench.design.addPole("pin");
    bench.design.connect(in, pin, 1, 90);
    bench.subdomain->captureLatch(pin);
    bench.addOutput("last", in, 1, 90);
    const SweepPointer sweep(Sweep::create(bench.subdomain));
    expectThrown({"no output",
                  [&] { sweep->arrivalAnalyze(); },
                  typeid(Ruvex::InvalidRequest),
                  "Not an output pole",
                  {"Sweep", "arrivalAnalyze", 1280}});
    // Results from before it stay.
    EXPECT_EQ(arrivalsOf(*sweep), (Table{{"in", {{0, {0, 0}}}}, {"first", {{0, {10, 20}}}}}));
    EXPECT_EQ(int(bench.subdomain->getSAT()), 10);
    EXPECT_EQ(int(bench.subdomain->getLAT()), 20);
    EXPECT_EQ(marked(), Names{});
}

} // namespace
