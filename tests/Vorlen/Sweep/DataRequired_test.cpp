// Data required times: the seeds at the end points, the fold of one arc backwards, and the walk.
#include "tests/support/Builder.h"
#include "tests/support/Sweeps.h"
#include "tests/support/Thrown.h"

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
using Vorlen::Sweep;

// {{classes, {setup requirement, hold requirement}}, ...} by pole.
Table requirementsOf(const Sweep& sweep) { return tableOf(sweep, &Sweep::hasRequireTimingMap); }

// With a setup relation of 1000 and a hold relation of 50.
struct Bench : SubdomainBench {
    explicit Bench(bool fromClock = true, bool toClock = true) : SubdomainBench(fromClock, toClock) {
        subdomain->setSetupRelation(Delay(1000));
        subdomain->setHoldRelation(Delay(50));
    }

    // A check at a new clock pin that latches.
    Pole* addCheck(const std::string& name, Pole* data, int hold, int setup, int minLatch = 0,
                   int maxLatch = 0) {
        Pole* check = design.addCheck(addLatch(name + "/C", minLatch, maxLatch), name);
        design.connect(data, check, hold, setup);
        return check;
    }
    SweepPointer sweepTo(void (Sweep::*phase)()) const {
        SweepPointer sweep(Sweep::create(subdomain));
        sweep->clockAnalyze();
        sweep->arrivalAnalyze();
        (*sweep.*phase)();
        return sweep;
    }
};

struct Row {
    const char* what;
    std::function<void(Bench&)> build;
    Table required;
};

void expect(const Row& row, bool fromClock, bool toClock) {
    SCOPED_TRACE(row.what);
    Bench bench(fromClock, toClock);
    row.build(bench);
    const SweepPointer sweep = bench.sweepTo(&Sweep::requireAnalyze);
    EXPECT_EQ(requirementsOf(*sweep), row.required);
    EXPECT_EQ(marked(), Names{});
}

TEST(DataRequired, FromRegisterToRegister) {
    const Row rows[] = {
        {"nothing to time", [](Bench&) {}, {}},
        {"the latch edge and the relations; check, logic and clock-to-output come off",
         [](Bench& b) {
             Pole* d = b.add("d", b.add("q", b.addLaunch("a"), 10, 20), 100, 200);
             b.addCheck("z", d, 4, 7, 3, 5);
         },
         // Setup: 1000 + 3; hold: -50 + 5. The check's setup value is subtracted from the first, its hold
         // value is added to the second.
         {{"z", {{0, {1003, -45}}}},
          {"d", {{0, {996, -41}}}},
          {"q", {{0, {796, -141}}}},
          {"a", {{0, {776, -151}}}}}},
        {"reconvergent: the tightest of each",
         [](Bench& b) {
             Pole* a = b.addLaunch("a");
             Pole* d = b.add("d", b.add("fast", a, 0, 0), 1, 2);
             b.design.connect(b.add("slow", a, 0, 0), d, 5, 9);
             b.addCheck("z", d, 0, 0);
         },
         {{"z", {{0, {1000, -50}}}},
          {"d", {{0, {1000, -50}}}},
          {"fast", {{0, {998, -51}}}},
          {"slow", {{0, {991, -55}}}},
          {"a", {{0, {991, -51}}}}}},
        {"poles without arrival get no required time",
         [](Bench& b) {
             Pole* d = b.add("d", b.addLaunch("a"), 10, 20);
             b.design.connect(b.add("side", b.addPin("other"), 1, 1), d, 1, 1);
             b.addCheck("z", d, 0, 0);
         },
         {{"z", {{0, {1000, -50}}}}, {"d", {{0, {1000, -50}}}}, {"a", {{0, {980, -60}}}}}},
        {"a branch that ends nowhere asks for nothing",
         [](Bench& b) {
             Pole* a = b.addLaunch("a");
             Pole* d = b.add("d", a, 10, 20);
             b.add("floating", d, 500, 500);
             b.addCheck("z", d, 0, 0);
         },
         {{"z", {{0, {1000, -50}}}}, {"d", {{0, {1000, -50}}}}, {"a", {{0, {980, -60}}}}}},
        {"a check of a clock pin that latches elsewhere asks for nothing",
         [](Bench& b) {
             Pole* d = b.add("d", b.addLaunch("a"), 10, 20);
             b.addCheck("z", d, 0, 0);
             b.design.connect(d, b.design.addCheck(b.addPin("y/C"), "y"), 300, 300);
         },
         {{"z", {{0, {1000, -50}}}}, {"d", {{0, {1000, -50}}}}, {"a", {{0, {980, -60}}}}}},
        {"two end points",
         [](Bench& b) {
             Pole* d = b.add("d", b.addLaunch("a"), 10, 20);
             b.addCheck("z", d, 1, 2);
             b.addCheck("y", d, 3, 4, 30, 40);
         },
         {{"z", {{0, {1000, -50}}}},
          {"y", {{0, {1030, -10}}}},
          {"d", {{0, {998, -7}}}},
          {"a", {{0, {978, -17}}}}}},
        {"inactive arcs are not followed",
         [](Bench& b) {
             Pole* d = b.add("d", b.addLaunch("a"), 10, 20);
             b.addCheck("z", d, 0, 0);
             Pole* y = b.addCheck("y", d, 300, 300);
             // Data reaches the second check on another way, which leads only to it.
             b.design.connect(b.add("e", d, 1, 1), y, 0, 0);
             y->getIncomingEdge(d)->disactivate();
         },
         {{"z", {{0, {1000, -50}}}},
          {"y", {{0, {1000, -50}}}},
          {"e", {{0, {1000, -50}}}},
          {"d", {{0, {999, -50}}}},
          {"a", {{0, {979, -60}}}}}},
        {"a loop is cut where its closing arc leads into the current walk",
         [](Bench& b) {
             Pole* first = b.add("first", b.addLaunch("a"), 1, 2);
             Pole* second = b.add("second", first, 10, 20);
             b.design.connect(second, first, 500, 500);
             b.addCheck("z", second, 0, 0);
         },
         {{"z", {{0, {1000, -50}}}},
          {"second", {{0, {1000, -50}}}},
          {"first", {{0, {980, -60}}}},
          {"a", {{0, {978, -61}}}}}},
        {"also where its target has some required time already",
         [](Bench& b) {
             Pole* pin = b.addPin("z/C");
             b.subdomain->captureLatch(pin);
             Pole* first = b.add("first", b.addLaunch("a"), 1, 2);
             b.addCheck("y", first, 0, 0);
             Pole* second = b.add("second", first, 10, 20);
             b.design.connect(second, first, 500, 500);
             b.design.connect(second, b.design.addCheck(pin, "z"), 0, 0);
         },
         {{"z", {{0, {1000, -50}}}},
          {"y", {{0, {1000, -50}}}},
          {"second", {{0, {1000, -50}}}},
          {"first", {{0, {980, -50}}}},
          {"a", {{0, {978, -51}}}}}},
        {"the walk ends at a terminal pole",
         [](Bench& b) {
             Pole* d = b.add("d", b.addLaunch("a"), 10, 20);
             Pole* z = b.addCheck("z", d, 0, 0);
             b.addCheck("behind", b.add("on", z, 1, 1), 0, 0);
         },
         {{"z", {{0, {1000, -50}}}}, {"d", {{0, {1000, -50}}}}, {"a", {{0, {980, -60}}}}}},
        {"a terminal pole without a clock pole asks for nothing",
         [](Bench& b) {
             Pole* d = b.add("d", b.addLaunch("a"), 10, 20);
             b.addCheck("z", d, 0, 0);
             b.add("end", d, 1, 1)->setTerminal(true);
         },
         {{"z", {{0, {1000, -50}}}}, {"d", {{0, {1000, -50}}}}, {"a", {{0, {980, -60}}}}}},
        {"a latch leaf that the clock does not reach asks for nothing",
         [](Bench& b) {
             Pole* d = b.add("d", b.addLaunch("a"), 10, 20);
             b.addCheck("z", d, 0, 0);
             Pole* pin = b.design.addClock("y/C");
             b.subdomain->captureLatch(pin);
             b.design.connect(d, b.design.addCheck(pin, "y"), 300, 300);
         },
         {{"z", {{0, {1000, -50}}}}, {"d", {{0, {1000, -50}}}}, {"a", {{0, {980, -60}}}}}},
    };
    for (const Row& row : rows)
        expect(row, true, true);
}

TEST(DataRequired, AtPorts) {
    const Row toClock[] = {
        {"an output without a constraint",
         [](Bench& b) { b.addOutput("out", b.addInput("in"), 10, 20); },
         {{"out", {{0, {1000, -50}}}}, {"in", {{0, {980, -60}}}}}},
        {"an output constraint comes off, crossed",
         [](Bench& b) {
             b.design.constrainOutput(b.addOutput("out", b.addInput("in"), 10, 20), b.clk, rising, 3, 7);
         },
         {{"out", {{0, {993, -53}}}}, {"in", {{0, {973, -63}}}}}},
        {"a bound that was not given is undefined",
         [](Bench& b) {
             b.design.constrainOutput(b.addOutput("out", b.addInput("in"), 10, 20), b.clk, rising, undefined,
                                      7);
         },
         {{"out", {{0, {993, undefined}}}}, {"in", {{0, {973, undefined}}}}}},
        {"an output that does not latch here asks for nothing",
         [](Bench& b) {
             Pole* in = b.addInput("in");
             b.addOutput("out", in, 10, 20);
             b.design.connect(in, b.design.addOutput("other"), 500, 500);
         },
         {{"out", {{0, {1000, -50}}}}, {"in", {{0, {980, -60}}}}}},
        {"the closing classes of the end",
         [](Bench& b) { close(b.addOutput("out", b.addInput("in"), 10, 20), 6); },
         {{"out", {{6, {1000, -50}}}}, {"in", {{0, {980, -60}}}}}},
    };
    for (const Row& row : toClock)
        expect(row, true, true);
    const Row toPorts[] = {
        {"without a latch root, the relations alone",
         [](Bench& b) { b.addOutput("out", b.addInput("in"), 10, 20); },
         {{"out", {{0, {1000, -50}}}}, {"in", {{0, {980, -60}}}}}},
        {"constraints of ports do not count",
         [](Bench& b) {
             b.design.constrainOutput(b.addOutput("out", b.addInput("in"), 10, 20), b.clk, rising, 3, 7);
         },
         {{"out", {{0, {1000, -50}}}}, {"in", {{0, {980, -60}}}}}},
        {"the closing classes of the end",
         [](Bench& b) { close(b.addOutput("out", b.addInput("in"), 10, 20), 6); },
         {{"out", {{6, {1000, -50}}}}, {"in", {{0, {980, -60}}}}}},
        {"a terminal pole on the way that does not latch here asks for nothing",
         [](Bench& b) {
             Pole* in = b.addInput("in");
             Pole* middle = b.add("middle", in, 1, 1);
             middle->setTerminal(true);
             Pole* out = b.addOutput("out", in, 10, 20);
             b.design.connect(middle, out, 500, 500);
         },
         {{"out", {{0, {1000, -50}}}}, {"in", {{0, {980, -60}}}}}},
        {"a terminal pole that does not latch here asks for nothing",
         [](Bench& b) {
             Pole* in = b.addInput("in");
             b.addOutput("out", in, 10, 20);
             b.design.connect(in, b.design.addOutput("other"), 500, 500);
         },
         {{"out", {{0, {1000, -50}}}}, {"in", {{0, {980, -60}}}}}},
    };
    for (const Row& row : toPorts)
        expect(row, false, false);
}

TEST(DataRequired, TakesTheRelationsAsTheyAre) {
    const struct {
        const char* what;
        int setup;
        int hold;
        bool toClock;
        std::pair<int, int> required; // of an output, with the latch edge at (0, 0)
    } rows[] = {
        {"hold is negated", 10, 3, true, {10, -3}},
        {"without a latch root too", 10, 3, false, {10, -3}},
        {"negative relations", -10, -3, true, {-10, 3}},
        {"no setup relation", undefined, 3, true, {undefined, -3}},
        {"no hold relation", 10, undefined, true, {10, undefined}},
        {"no hold relation, without a latch root", 10, undefined, false, {10, undefined}},
        {"specials", maximum, maximum, true, {maximum, minimum}},
        {"specials, without a latch root", minimum, minimum, false, {minimum, maximum}},
    };
    for (const auto& row : rows) {
        Bench bench(true, row.toClock);
        bench.subdomain->setSetupRelation(Delay(row.setup));
        bench.subdomain->setHoldRelation(Delay(row.hold));
        bench.addOutput("out", bench.addInput("in"), 10, 20);
        const SweepPointer sweep = bench.sweepTo(&Sweep::requireAnalyze);
        EXPECT_EQ(requirementsOf(*sweep)["out"], (Entries{{0, row.required}})) << row.what;
    }
}

TEST(DataRequired, FoldsAnArc) {
    // An arc of delay (1, 3) from s to d, where d requires {classes: (1000, -50)}.
    const struct {
        const char* what;
        unsigned long target;
        unsigned long arc;
        unsigned long opening;
        unsigned long closing;
        unsigned long falseMask;
        Entries after;
    } rows[] = {
        {"plain", 0, 0, 0, 0, 0, {{0, {997, -51}}}},
        {"a class that the arc is for", 3, 1, 0, 0, 0, {{1, {997, -51}}}},
        {"a class that it is not for", 3, 4, 0, 0, 0, {{0, {997, -51}}}},
        {"a class that opens at the source ends here", 1, 1, 1, 0, 1, {}},
        {"any class does, false path or not", 1, 1, 1, 0, 0, {}},
        {"and takes other classes along", 3, 3, 1, 0, 0, {}},
        {"filtered before the arc drops it", 1, 0, 1, 0, 0, {}},
        {"another class goes on", 2, 3, 1, 0, 0, {{2, {997, -51}}}},
        {"a class closes at the source", 0, 0, 0, 4, 0, {{4, {997, -51}}}},
        {"beside another", 1, 1, 0, 4, 0, {{5, {997, -51}}}},
        {"a class that opens and closes at once", 0, 0, 2, 2, 0, {{2, {997, -51}}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Bench bench;
        Pole* s = bench.add("s", bench.addLaunch("a"), 0, 0);
        Pole* d = bench.addOutput("d", s, 1, 3);
        Pelko::Edge* edge = d->getIncomingEdges().getFirst();
        edge->sensitize(PseudoMask(row.arc));
        close(d, row.target);
        open(s, row.opening);
        close(s, row.closing);
        analyzer->setFalsePathMask(PseudoMask(row.falseMask));
        const SweepPointer sweep(Sweep::create(bench.subdomain));
        sweep->clockAnalyze();
        sweep->updateDataRTMapMap(edge);
        EXPECT_EQ(requirementsOf(*sweep), Table{}) << "a target without a required time";
        sweep->updateDataRTMapMap(d);
        sweep->updateDataRTMapMap(edge);
        EXPECT_EQ(requirementsOf(*sweep), (Table{{"d", {{row.target, {1000, -50}}}}, {"s", row.after}}));
    }
}

TEST(DataRequired, FoldsIntoWhatIsThere) {
    Bench bench;
    Pole* s = bench.add("s", bench.addLaunch("a"), 0, 0);
    const struct {
        const char* name;
        unsigned long classes;
        int minDelay;
        int maxDelay;
        Entries after; // at s, after its arc has been folded too
    } rows[] = {
        {"one", 0, 1, 3, {{0, {997, -51}}}},
        {"two", 0, 0, 9, {{0, {991, -50}}}},
        {"three", 1, 2, 2, {{0, {991, -50}}, {1, {998, -52}}}},
        {"four", 3, 7, 5, {{0, {991, -50}}, {1, {998, -52}}, {3, {995, -57}}}},
    };
    const SweepPointer sweep(Sweep::create(bench.subdomain));
    std::vector<Pole*> ends;
    for (const auto& row : rows) {
        ends.push_back(bench.addOutput(row.name, s, row.minDelay, row.maxDelay));
        close(ends.back(), row.classes);
    }
    sweep->clockAnalyze();
    for (std::size_t i = 0; i < ends.size(); ++i) {
        Pelko::Edge* edge = ends[i]->getIncomingEdges().getFirst();
        edge->sensitize(PseudoMask(3));
        sweep->updateDataRTMapMap(ends[i]);
        sweep->updateDataRTMapMap(edge);
        EXPECT_EQ(requirementsOf(*sweep)["s"], rows[i].after) << rows[i].name;
    }
}

TEST(DataRequired, EitherCheckBitFreesSetupAndHold) {
    const struct {
        bool setup;
        bool hold;
        Entries after; // before an arc (1, 3)
    } rows[] = {{false, false, {{0, {997, -51}}}},
                {true, false, {{0, {997, -49}}}},
                {false, true, {{0, {997, -49}}}},
                {true, true, {{0, {997, -49}}}}};
    for (const auto& row : rows) {
        Bench bench;
        Pole* d = bench.addOutput("d", bench.addLaunch("a"), 1, 3);
        d->setSetupCheck(row.setup);
        d->setHoldCheck(row.hold);
        const SweepPointer sweep = bench.sweepTo(&Sweep::requireAnalyze);
        EXPECT_EQ(requirementsOf(*sweep)["a"], row.after) << row.setup << row.hold;
    }
}

TEST(DataRequired, OneStepFillsTheFanOut) {
    Bench bench;
    Pole* q = bench.add("q", bench.addLaunch("a"), 1, 1);
    bench.addCheck("z", q, 0, 0);
    const SweepPointer sweep(Sweep::create(bench.subdomain));
    sweep->clockAnalyze();
    PoleSet path;
    sweep->requireAnalyze(q, path);
    EXPECT_EQ(requirementsOf(*sweep), Table{}) << "no arrival yet";
    EXPECT_EQ(marked(), Names{});
    sweep->arrivalAnalyze();
    // A marked pole is not entered.
    q->mark();
    sweep->requireAnalyze(q, path);
    EXPECT_EQ(requirementsOf(*sweep), Table{});
    analyzer->unmark();
    sweep->requireAnalyze(q, path);
    EXPECT_EQ(requirementsOf(*sweep), (Table{{"z", {{0, {1000, -50}}}}, {"q", {{0, {1000, -50}}}}}));
    EXPECT_EQ(marked(), (Names{"q", "z"}));
    EXPECT_EQ(namesOf(path), Names{});
    analyzer->unmark();
}

// Nor is a pole behind it.
TEST(DataRequired, AMarkedPoleIsNotEnteredByTheWholePhase) {
    Bench bench;
    Pole* launch = bench.addLaunch("a");
    Pole* q = bench.add("q", launch, 1, 1);
    bench.addCheck("y", q, 0, 0);
    bench.addCheck("z", bench.add("r", launch, 2, 3), 0, 0);
    const SweepPointer sweep(Sweep::create(bench.subdomain));
    sweep->clockAnalyze();
    sweep->arrivalAnalyze();
    q->mark();
    sweep->requireAnalyze();
    EXPECT_EQ(requirementsOf(*sweep),
              (Table{{"z", {{0, {1000, -50}}}}, {"r", {{0, {1000, -50}}}}, {"a", {{0, {997, -52}}}}}));
    EXPECT_EQ(marked(), Names{});
}

// The requirement of an end point replaces the one from its successors, even if that had more classes.
TEST(DataRequired, OneStepAtAnEndPointReplaces) {
    Bench bench;
    Pole* s = bench.addOutput("s", bench.addLaunch("a"), 1, 1);
    Pole* y = bench.addCheck("y", s, 0, 0);
    Pole* z = bench.addCheck("z", s, 0, 0);
    close(y, 1);
    close(z, 2);
    y->getIncomingEdge(s)->sensitize(PseudoMask(1));
    z->getIncomingEdge(s)->sensitize(PseudoMask(2));
    const SweepPointer sweep(Sweep::create(bench.subdomain));
    sweep->clockAnalyze();
    sweep->arrivalAnalyze();
    for (Pole* check : {y, z}) {
        sweep->updateDataRTMapMap(check);
        sweep->updateDataRTMapMap(check->getIncomingEdge(s));
    }
    EXPECT_EQ(requirementsOf(*sweep)["s"], (Entries{{1, {1000, -50}}, {2, {1000, -50}}}));
    for (int again = 0; again < 2; ++again) {
        sweep->updateDataRTMapMap(s);
        EXPECT_EQ(requirementsOf(*sweep)["s"], (Entries{{0, {1000, -50}}}));
    }
}

TEST(DataRequired, RefusesALaunchLeafThatIsNoPort) {
    for (const bool hasArrival : {false, true}) {
        SCOPED_TRACE(hasArrival);
        Bench bench(false, true);
        bench.addOutput("out", bench.addInput("in"), 10, 20);
        Pole* pin = bench.addLaunch("pin");
        if (hasArrival)
            bench.addOutput("more", pin, 1, 1);
        bench.addOutput("last", bench.addInput("late"), 10, 20);
        const SweepPointer sweep(Sweep::create(bench.subdomain));
        sweep->clockAnalyze();
        sweep->arrivalAnalyze();
        EXPECT_EQ(sweep->hasArrivalTimingMap(pin), hasArrival);
        expectThrown({"no input",
                      [&] { sweep->requireAnalyze(); },
                      typeid(Ruvex::InvalidRequest),
                      "Not an input pole",
                      {"Sweep", "requireAnalyze", 1598}});
        // Results from before it stay.
        EXPECT_EQ(requirementsOf(*sweep), (Table{{"in", {{0, {980, -60}}}}, {"out", {{0, {1000, -50}}}}}));
        EXPECT_EQ(marked(), Names{});
    }
}

} // namespace
