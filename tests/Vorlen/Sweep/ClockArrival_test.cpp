// Clock arrival: the walk from the leaves to the root, its seed, the fold of one arc, and the reduction at
// the leaves.
#include "tests/support/Builder.h"
#include "tests/support/Sweeps.h"

#include "Vorlen/Sweep.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace Support;
using Pelko::analyzer;
using Pelko::Delay;
using Pelko::Pole;
using Pelko::PseudoMask;
using Vorlen::PoleSet;
using Vorlen::PoleTimingMap;
using Vorlen::Sweep;

// A clock that launches and latches one subdomain. A row builds its clock network and captures the leaves.
using Bench = SubdomainBench;

struct Row {
    const char* what;
    std::function<void(Bench&)> build;
    Table launch;
    Table latch;
};

void expect(const Row& row) {
    SCOPED_TRACE(row.what);
    Bench bench;
    row.build(bench);
    const SweepPointer sweep(Sweep::create(bench.subdomain));
    // Marks of others do not stop the walk, and it leaves none behind.
    for (Pole* pole : Pelko::cell->getPoles())
        pole->mark();
    sweep->clockAnalyze();
    EXPECT_EQ(marked(), Names{});
    EXPECT_EQ(tableOf(*sweep, &Sweep::hasLaunchTimingMap), row.launch);
    EXPECT_EQ(tableOf(*sweep, &Sweep::hasLatchTimingMap), row.latch);
    EXPECT_EQ(tableOf(*sweep, &Sweep::hasArrivalTimingMap), Table{});
}

TEST(ClockArrival, ReachesTheLeaves) {
    const Row rows[] = {
        {"no leaves", [](Bench&) {}, {}, {}},
        {"delays add up, bound by bound",
         [](Bench& b) {
             Pole* buffer = b.add("buf", b.clk, 1, 3);
             b.launch(b.addPin("a", buffer, 10, 30));
             b.latch(b.addPin("z", buffer, 20, 50));
         },
         {{"a", {{0, {11, 33}}}}},
         {{"z", {{0, {21, 53}}}}}},
        {"reconvergent: the earliest and the latest",
         [](Bench& b) {
             Pole* pin = b.addPin("a", b.add("fast", b.clk, 1, 2), 10, 10);
             b.design.connect(b.add("slow", b.clk, 5, 9), pin, 10, 10);
             b.launch(pin);
         },
         {{"a", {{0, {11, 19}}}}},
         {}},
        {"the root itself",
         [](Bench& b) {
             b.launch(b.clk);
             b.latch(b.clk);
         },
         {{"clk", {{0, {0, 0}}}}},
         {{"clk", {{0, {0, 0}}}}}},
        {"the root's own fan-in is not walked",
         [](Bench& b) {
             b.design.connect(b.addPin("up", b.design.addClockSource("other"), 7, 7), b.clk, 7, 7);
             b.launch(b.addPin("a", b.clk, 1, 2));
         },
         {{"a", {{0, {1, 2}}}}},
         {}},
        {"an input in front of the root is not passed on the way",
         [](Bench& b) {
             Pole* pin = b.addPin("a", b.clk, 1, 2);
             Pole* in = b.design.addInput("in");
             b.design.connect(in, b.clk, 7, 7);
             b.launch(pin);
             b.launch(in);
         },
         {{"a", {{0, {1, 2}}}}, {"in", {{0, {0, 0}}}}},
         {}},
        {"a leaf that the root does not reach gets no entry",
         [](Bench& b) {
             b.launch(b.addPin("a", b.design.addClockSource("other"), 1, 2));
             b.launch(b.design.addClock("alone"));
             b.launch(b.addPin("c", b.clk, 1, 2));
         },
         {{"c", {{0, {1, 2}}}}},
         {}},
        {"inactive arcs are not followed",
         [](Bench& b) {
             Pole* pin = b.addPin("a", b.clk, 1, 2);
             b.design.connect(b.add("cut", b.clk, 50, 60), pin, 1, 1)->disactivate();
             b.launch(pin);
             b.launch(b.addPin("c", pin, 1, 2));
             pin->getOutgoingEdges().getFirst()->disactivate();
         },
         {{"a", {{0, {1, 2}}}}},
         {}},
        {"negative delays",
         [](Bench& b) { b.launch(b.addPin("a", b.add("buf", b.clk, -5, -3), 1, 1)); },
         {{"a", {{0, {-4, -2}}}}},
         {}},
        {"undefined delays never replace what is known",
         [](Bench& b) {
             Pole* pin = b.addPin("a", b.clk, undefined, undefined);
             b.design.connect(b.add("buf", b.clk, 1, 3), pin, 1, 1);
             b.launch(pin);
             b.launch(b.addPin("c", b.clk, undefined, 4));
             b.launch(b.addPin("d", b.clk, undefined, undefined));
         },
         {{"a", {{0, {2, 4}}}}, {"c", {{0, {maximum, 4}}}}, {"d", {{0, {maximum, minimum}}}}},
         {}},
    };
    for (const Row& row : rows)
        expect(row);
}

TEST(ClockArrival, TimesPortsAtZero) {
    const Row rows[] = {
        {"an input launches at zero, without a walk",
         [](Bench& b) {
             Pole* in = b.design.addInput("in");
             b.design.connect(b.clk, in, 5, 9);
             b.launch(in);
         },
         {{"in", {{0, {0, 0}}}}},
         {}},
        {"an output latches at zero",
         [](Bench& b) {
             Pole* out = b.design.addOutput("out");
             b.design.connect(b.clk, out, 5, 9);
             b.latch(out);
         },
         {},
         {{"out", {{0, {0, 0}}}}}},
        {"an input that is not reached at all",
         [](Bench& b) { b.launch(b.design.addInput("in")); },
         {{"in", {{0, {0, 0}}}}},
         {}},
        {"an output that launches and an input that latches are walked",
         [](Bench& b) {
             Pole* out = b.design.addOutput("out");
             Pole* in = b.design.addInput("in");
             b.design.connect(b.clk, out, 5, 9);
             b.design.connect(b.clk, in, 6, 8);
             b.launch(out);
             b.latch(in);
         },
         {{"out", {{0, {5, 9}}}}},
         {{"in", {{0, {6, 8}}}}}},
        {"an input passed on the way from an earlier leaf gets no entry",
         [](Bench& b) {
             Pole* pin = b.design.addClock("a");
             Pole* in = b.design.addInput("in");
             b.design.connect(b.clk, in, 5, 9);
             b.design.connect(in, pin, 1, 1);
             b.launch(pin);
             b.launch(in);
         },
         {{"a", {{0, {6, 10}}}}},
         {}},
    };
    for (const Row& row : rows)
        expect(row);
}

TEST(ClockArrival, MarksDecideWhoGetsAnEntry) {
    const Row rows[] = {
        {"the upstream leaf comes first: both",
         [](Bench& b) {
             Pole* upstream = b.addPin("up", b.clk, 1, 2);
             b.launch(upstream);
             b.launch(b.addPin("down", upstream, 10, 20));
         },
         {{"up", {{0, {1, 2}}}}, {"down", {{0, {11, 22}}}}},
         {}},
        {"the downstream leaf comes first: the other was passed already",
         [](Bench& b) {
             Pole* downstream = b.design.addClock("down");
             Pole* upstream = b.addPin("up", b.clk, 1, 2);
             b.design.connect(upstream, downstream, 10, 20);
             b.launch(upstream);
             b.launch(downstream);
         },
         {{"down", {{0, {11, 22}}}}},
         {}},
        {"each side walks anew",
         [](Bench& b) {
             Pole* downstream = b.design.addClock("down");
             Pole* upstream = b.addPin("up", b.clk, 1, 2);
             b.design.connect(upstream, downstream, 10, 20);
             b.launch(downstream);
             b.latch(upstream);
         },
         {{"down", {{0, {11, 22}}}}},
         {{"up", {{0, {1, 2}}}}}},
        {"two leaves behind one buffer: it is expanded once",
         [](Bench& b) {
             Pole* buffer = b.add("buf", b.clk, 1, 2);
             b.launch(b.addPin("a", buffer, 1, 1));
             b.launch(b.addPin("c", buffer, 2, 2));
         },
         {{"a", {{0, {2, 3}}}}, {"c", {{0, {3, 4}}}}},
         {}},
    };
    for (const Row& row : rows)
        expect(row);
}

TEST(ClockArrival, RefusesLoops) {
    const Row rows[] = {
        {"a loop on the way: its closing arc is not folded",
         [](Bench& b) {
             Pole* first = b.add("first", b.clk, 1, 2);
             Pole* second = b.add("second", first, 10, 20);
             b.design.connect(second, first, 100, 200);
             b.launch(b.addPin("a", second, 0, 0));
         },
         {{"a", {{0, {11, 22}}}}},
         {}},
        {"nor what its pole has so far",
         [](Bench& b) {
             Pole* first = b.add("first", b.clk, 1, 2);
             Pole* second = b.add("second", b.clk, 3, 4);
             b.design.connect(first, second, 10, 20);
             b.design.connect(second, first, 100, 200);
             b.launch(b.addPin("a", second, 0, 0));
         },
         {{"a", {{0, {3, 22}}}}},
         {}},
        {"a loop through the leaf",
         [](Bench& b) {
             Pole* pin = b.addPin("a", b.clk, 1, 2);
             b.design.connect(b.add("back", pin, 10, 20), pin, 10, 20);
             b.launch(pin);
         },
         {{"a", {{0, {1, 2}}}}},
         {}},
        {"a loop that the root does not reach",
         [](Bench& b) {
             Pole* pin = b.design.addClock("a");
             b.design.connect(b.add("back", pin, 10, 20), pin, 10, 20);
             b.launch(pin);
         },
         {},
         {}},
        {"two loops in one tangle",
         [](Bench& b) {
             Pole* first = b.add("first", b.clk, 1, 1);
             Pole* second = b.add("second", first, 1, 1);
             Pole* third = b.add("third", second, 1, 1);
             b.design.connect(third, second, 50, 50);
             b.design.connect(third, first, 50, 50);
             b.launch(b.addPin("a", third, 0, 0));
         },
         {{"a", {{0, {3, 3}}}}},
         {}},
    };
    for (const Row& row : rows)
        expect(row);
}

TEST(ClockArrival, StartsFromTheFeedbackDelay) {
    const auto setFeedback = [](Pole* clk, int min, int max) {
        analyzer->setPLLFeedbackDelay(clk, Delay(min), Delay(max));
    };
    const Row rows[] = {
        {"each bound negated in its place",
         [&](Bench& b) {
             setFeedback(b.clk, 1, 3);
             b.launch(b.clk);
         },
         {{"clk", {{0, {-1, -3}}}}},
         {}},
        {"what is added works on the pair as it stands",
         [&](Bench& b) {
             setFeedback(b.clk, 1, 3);
             b.launch(b.addPin("a", b.clk, 10, 11));
             b.latch(b.addPin("z", b.clk, 20, 20));
         },
         {{"a", {{0, {9, 8}}}}},
         {{"z", {{0, {19, 17}}}}}},
        {"reconvergent, minimum above maximum",
         [&](Bench& b) {
             setFeedback(b.clk, 1, 100);
             Pole* pin = b.addPin("a", b.add("fast", b.clk, 1, 2), 0, 0);
             b.design.connect(b.add("slow", b.clk, 5, 9), pin, 0, 0);
             b.launch(pin);
         },
         {{"a", {{0, {0, -91}}}}},
         {}},
        {"a source latency delays",
         [](Bench& b) {
             analyzer->setSourceLatency(b.clk, Delay(2), Delay(4));
             b.launch(b.addPin("a", b.clk, 10, 10));
         },
         {{"a", {{0, {12, 14}}}}},
         {}},
        {"both",
         [&](Bench& b) {
             analyzer->setSourceLatency(b.clk, Delay(2), Delay(4));
             setFeedback(b.clk, 10, 10);
             b.launch(b.addPin("a", b.clk, 10, 10));
         },
         {{"a", {{0, {2, 4}}}}},
         {}},
        {"ports are timed without it",
         [&](Bench& b) {
             setFeedback(b.clk, 1, 3);
             b.launch(b.design.addInput("in"));
             b.latch(b.design.addOutput("out"));
         },
         {{"in", {{0, {0, 0}}}}},
         {{"out", {{0, {0, 0}}}}}},
        {"that of another clock does not count",
         [&](Bench& b) {
             setFeedback(b.design.addClockSource("other"), 1, 3);
             b.launch(b.addPin("a", b.clk, 10, 10));
         },
         {{"a", {{0, {10, 10}}}}},
         {}},
    };
    for (const Row& row : rows)
        expect(row);
}

TEST(ClockArrival, LeavesForgetTheClasses) {
    const Row rows[] = {
        {"the earliest and latest of all classes",
         [](Bench& b) {
             // Class 1 opens at one of two buffers, and may use the arc behind it.
             analyzer->setFalsePathMask(PseudoMask(1));
             Pole* plain = b.add("plain", b.clk, 5, 6);
             Pole* tagged = b.add("tagged", b.clk, 1, 9);
             Pole* pin = b.addPin("a", plain, 0, 0);
             b.design.connect(tagged, pin, 0, 0)->sensitize(PseudoMask(1));
             open(tagged, 1);
             b.launch(pin);
         },
         {{"a", {{0, {1, 9}}}}},
         {}},
        {"also where the last class has neither",
         [](Bench& b) {
             Pole* plain = b.add("plain", b.clk, 1, 9);
             Pole* tagged = b.add("tagged", b.clk, 5, 6);
             Pole* pin = b.addPin("a", plain, 0, 0);
             b.design.connect(tagged, pin, 0, 0)->sensitize(PseudoMask(1));
             open(tagged, 1);
             b.launch(pin);
         },
         {{"a", {{0, {1, 9}}}}},
         {}},
        {"undefined entries are passed over",
         [](Bench& b) {
             Pole* plain = b.add("plain", b.clk, 5, 6);
             Pole* tagged = b.add("tagged", b.clk, undefined, undefined);
             Pole* pin = b.addPin("a", plain, 0, 0);
             b.design.connect(tagged, pin, 0, 0)->sensitize(PseudoMask(1));
             open(tagged, 1);
             b.launch(pin);
         },
         {{"a", {{0, {5, 6}}}}},
         {}},
        {"a map left empty gives the bounds that lose",
         [](Bench& b) {
             // The class opens at the root and closes at the only successor.
             analyzer->setFalsePathMask(PseudoMask(1));
             Pole* buffer = b.add("buf", b.clk, 1, 2);
             open(b.clk, 1);
             close(buffer, 1);
             b.launch(b.addPin("a", buffer, 0, 0));
         },
         {{"a", {{0, {maximum, minimum}}}}},
         {}},
        {"a class that is no false path does not close",
         [](Bench& b) {
             Pole* buffer = b.add("buf", b.clk, 1, 2);
             open(b.clk, 1);
             close(buffer, 1);
             b.launch(b.addPin("a", buffer, 0, 0));
         },
         {{"a", {{0, {1, 2}}}}},
         {}},
    };
    for (const Row& row : rows)
        expect(row);
}

TEST(ClockArrival, ANullRootSkipsItsSide) {
    Builder design;
    Pole* clk = design.addClockSource("clk");
    Pole* pin = design.addClock("a");
    design.connect(clk, pin, 1, 2);
    Pole* in = design.addInput("in");
    Pole* out = design.addOutput("out");
    const struct {
        Pole* launchRoot;
        Pole* latchRoot;
        Table launch;
        Table latch;
    } rows[] = {
        {nullptr, clk, {}, {{"a", {{0, {1, 2}}}}, {"out", {{0, {0, 0}}}}}},
        {clk, nullptr, {{"a", {{0, {1, 2}}}}, {"in", {{0, {0, 0}}}}}, {}},
        {nullptr, nullptr, {}, {}},
    };
    for (const auto& row : rows) {
        Pelko::Subdomain* subdomain = design.addSubdomain(row.launchRoot, row.latchRoot);
        SCOPED_TRACE(subdomain->getName());
        for (Pole* leaf : {pin, in})
            subdomain->captureLaunch(leaf);
        for (Pole* leaf : {pin, out})
            subdomain->captureLatch(leaf);
        const SweepPointer sweep(Sweep::create(subdomain));
        sweep->clockAnalyze();
        EXPECT_EQ(tableOf(*sweep, &Sweep::hasLaunchTimingMap), row.launch);
        EXPECT_EQ(tableOf(*sweep, &Sweep::hasLatchTimingMap), row.latch);
    }
}

TEST(ClockArrival, SeedsTheRoot) {
    const struct {
        const char* what;
        unsigned long opening;
        unsigned long falseMask;
        bool feedback;
        Entries before;
        Entries after;
    } rows[] = {
        {"plain", 0, 0, false, {}, {{0, {0, 0}}}},
        {"an opening false path", 1, 1, false, {}, {{1, {0, 0}}}},
        {"only false paths open here", 3, 2, false, {}, {{2, {0, 0}}}},
        {"other classes do not", 3, 4, false, {}, {{0, {0, 0}}}},
        {"feedback", 0, 0, true, {}, {{0, {-1, -3}}}},
        {"feedback under a false path", 1, 1, true, {}, {{1, {-1, -3}}}},
        {"what stood there is replaced", 1, 1, false, {{0, {7, 7}}, {4, {8, 8}}}, {{1, {0, 0}}}},
    };
    for (const auto& row : rows) {
        Bench bench;
        open(bench.clk, row.opening);
        analyzer->setFalsePathMask(PseudoMask(row.falseMask));
        if (row.feedback)
            analyzer->setPLLFeedbackDelay(bench.clk, Delay(1), Delay(3));
        const SweepPointer sweep(Sweep::create(bench.subdomain));
        PoleTimingMap clockAT;
        if (!row.before.empty())
            clockAT[bench.clk] = mapOf(row.before);
        sweep->updateClockATMapMap(bench.clk, clockAT);
        EXPECT_EQ(tableOf(clockAT), (Table{{"clk", row.after}})) << row.what;
    }
}

TEST(ClockArrival, FoldsAnArc) {
    // An arc of delay (1, 3) from clk to d.
    const struct {
        const char* what;
        unsigned long falseMask;
        unsigned long closing;
        unsigned long arc;
        unsigned long opening;
        Table before;
        Table after;
    } rows[] = {
        {"a source without an entry", 1, 1, 1, 1, {}, {}},
        {"a source without an entry leaves the target",
         1,
         1,
         1,
         1,
         {{"d", {{0, {7, 7}}}}},
         {{"d", {{0, {7, 7}}}}}},
        {"plain", 0, 0, 0, 0, {{"clk", {{0, {10, 20}}}}}, {{"clk", {{0, {10, 20}}}}, {"d", {{0, {11, 23}}}}}},
        {"into what is there",
         0,
         0,
         0,
         0,
         {{"clk", {{0, {10, 20}}}}, {"d", {{0, {12, 22}}}}},
         {{"clk", {{0, {10, 20}}}}, {"d", {{0, {11, 23}}}}}},
        {"classes that the arc is for stay",
         0,
         0,
         1,
         0,
         {{"clk", {{1, {10, 20}}, {2, {5, 6}}}}},
         {{"clk", {{1, {10, 20}}, {2, {5, 6}}}}, {"d", {{0, {6, 9}}, {1, {11, 23}}}}}},
        {"a false path closes",
         1,
         1,
         3,
         0,
         {{"clk", {{1, {10, 20}}, {2, {5, 6}}}}},
         {{"clk", {{1, {10, 20}}, {2, {5, 6}}}}, {"d", {{2, {6, 9}}}}}},
        {"another class does not close",
         2,
         1,
         3,
         0,
         {{"clk", {{1, {10, 20}}}}},
         {{"clk", {{1, {10, 20}}}}, {"d", {{1, {11, 23}}}}}},
        {"all closed: an empty entry",
         1,
         1,
         1,
         0,
         {{"clk", {{1, {10, 20}}}}},
         {{"clk", {{1, {10, 20}}}}, {"d", {}}}},
        {"every class opens, false path or not",
         1,
         0,
         0,
         6,
         {{"clk", {{0, {10, 20}}}}},
         {{"clk", {{0, {10, 20}}}}, {"d", {{6, {11, 23}}}}}},
        {"what was there before opens too",
         0,
         0,
         0,
         4,
         {{"clk", {{0, {10, 20}}}}, {"d", {{0, {0, 0}}, {1, {7, 8}}}}},
         {{"clk", {{0, {10, 20}}}}, {"d", {{4, {0, 23}}, {5, {7, 8}}}}}},
        {"filtered by what it carries, before the arc's classes",
         1,
         1,
         0,
         0,
         {{"clk", {{1, {10, 20}}, {0, {5, 6}}}}},
         {{"clk", {{1, {10, 20}}, {0, {5, 6}}}}, {"d", {{0, {6, 9}}}}}},
        {"a class that closes and opens at once",
         1,
         1,
         1,
         1,
         {{"clk", {{0, {5, 6}}, {1, {10, 20}}}}},
         {{"clk", {{0, {5, 6}}, {1, {10, 20}}}}, {"d", {{1, {6, 9}}}}}},
    };
    for (const auto& row : rows) {
        Bench bench;
        Pole* target = bench.add("d", bench.clk, 1, 3);
        Pelko::Edge* edge = target->getIncomingEdges().getFirst();
        close(target, row.closing);
        open(target, row.opening);
        edge->sensitize(PseudoMask(row.arc));
        analyzer->setFalsePathMask(PseudoMask(row.falseMask));
        const SweepPointer sweep(Sweep::create(bench.subdomain));
        PoleTimingMap clockAT;
        for (const auto& [name, entries] : row.before)
            clockAT[name == "clk" ? bench.clk : target] = mapOf(entries);
        sweep->updateClockATMapMap(edge, clockAT);
        EXPECT_EQ(tableOf(clockAT), row.after) << row.what;
    }
}

TEST(ClockArrival, OneStepFillsTheFanIn) {
    Bench bench;
    Pole* shared = bench.add("shared", bench.clk, 1, 2);
    Pole* left = bench.add("left", shared, 10, 10);
    Pole* right = bench.add("right", shared, 20, 20);
    Pole* other = bench.design.addClockSource("other");
    bench.design.connect(other, right, 99, 99);
    const SweepPointer sweep(Sweep::create(bench.subdomain));
    PoleSet path;
    PoleTimingMap clockAT;
    sweep->clockAnalyze(bench.clk, left, path, clockAT);
    const Table once{{"clk", {{0, {0, 0}}}}, {"shared", {{0, {1, 2}}}}, {"left", {{0, {11, 12}}}}};
    EXPECT_EQ(tableOf(clockAT), once);
    EXPECT_EQ(namesOf(path), Names{});
    EXPECT_EQ(marked(), (Names{"clk", "shared", "left"}));
    // A marked pole is not entered again.
    clockAT[left] = mapOf({{0, {-7, 7}}});
    sweep->clockAnalyze(bench.clk, left, path, clockAT);
    EXPECT_EQ(entriesOf(clockAT[left]), (Entries{{0, {-7, 7}}}));
    // Arrivals that are computed already are used.
    sweep->clockAnalyze(bench.clk, right, path, clockAT);
    EXPECT_EQ(tableOf(clockAT), (Table{{"clk", {{0, {0, 0}}}},
                                       {"shared", {{0, {1, 2}}}},
                                       {"left", {{0, {-7, 7}}}},
                                       {"right", {{0, {21, 22}}}}}));
    // A source on the given path is skipped.
    analyzer->unmark();
    clockAT.clear();
    path.insert(shared);
    sweep->clockAnalyze(bench.clk, left, path, clockAT);
    EXPECT_EQ(tableOf(clockAT), Table{});
    EXPECT_EQ(namesOf(path), Names{"shared"});
    analyzer->unmark();
}

} // namespace
