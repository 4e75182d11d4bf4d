// Slacks of ports: what iodelaySlackAnalyze() merges into the analyzer for the inputs that launch a subdomain
// and the outputs that latch it.
#include "tests/support/Builder.h"
#include "tests/support/Sweeps.h"
#include "tests/support/Thrown.h"

#include "Vorlen/Sweep.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace Support;
using Pelko::analyzer;
using Pelko::CPath;
using Pelko::Delay;
using Pelko::DPath;
using Pelko::Edge;
using Pelko::FPath;
using Pelko::MPath;
using Pelko::Pole;
using Pelko::PseudoMask;
using Vorlen::Sweep;

// The port slacks in the analyzer: {{port, {longest, shortest}}, ...}, without ports that have none.
using Slacks = std::map<std::string, std::pair<int, int>>;

Slacks portSlacks() {
    Slacks slacks;
    for (Pole* pole : Pelko::cell->getPoles()) {
        const Delay longest = analyzer->getIODelayLongestSlack(pole);
        const Delay shortest = analyzer->getIODelayShortestSlack(pole);
        if (longest.isDefined() || shortest.isDefined())
            slacks[nameOf(pole)] = {int(longest), int(shortest)};
    }
    return slacks;
}

// A subdomain of one clock (or of ports, if a root is null), with a setup relation of 100 and a hold relation
// of 5: the slacks of an arc (a, b) between ports are 100 - b and a + 5.
struct Bench : SubdomainBench {
    explicit Bench(bool fromClock = true, bool toClock = true) : SubdomainBench(fromClock, toClock) {
        design.setClock(clk, 1000, 500); // what a multicycle shifts by
        subdomain->setSetupRelation(Delay(100));
        subdomain->setHoldRelation(Delay(5));
    }
    Edge* connect(Pole* source, Pole* target, int minDelay, int maxDelay, unsigned long classes = 0) {
        Edge* edge = design.connect(source, target, minDelay, maxDelay);
        edge->sensitize(PseudoMask(classes));
        return edge;
    }
    static void analyze(Pelko::Subdomain* analysed) {
        const SweepPointer sweep(Sweep::create(analysed));
        sweep->clockAnalyze();
        sweep->arrivalAnalyze();
        sweep->requireAnalyze();
        sweep->iodelaySlackAnalyze();
    }
};

struct Row {
    const char* what;
    std::function<void(Bench&)> build;
    Slacks slacks;
};

void expect(const Row& row, bool fromClock = true, bool toClock = true) {
    SCOPED_TRACE(row.what);
    Bench bench(fromClock, toClock);
    row.build(bench);
    Bench::analyze(bench.subdomain);
    EXPECT_EQ(portSlacks(), row.slacks);
    EXPECT_EQ(marked(), Names{});
}

TEST(IoDelaySlacks, OfInputsAndOutputs) {
    const Row rows[] = {
        {"no leaves", [](Bench&) {}, {}},
        {"from port to port",
         [](Bench& b) { b.connect(b.addInput("in"), b.addOutput("out"), 10, 20); },
         {{"in", {80, 15}}, {"out", {80, 15}}}},
        {"the worst of several arcs, each side by itself",
         [](Bench& b) {
             Pole* in = b.addInput("in");
             b.connect(in, b.addOutput("one"), 10, 20);
             b.connect(in, b.addOutput("two"), 1, 5);
             b.connect(in, b.addOutput("three"), 30, 40);
         },
         {{"in", {60, 6}}, {"one", {80, 15}}, {"two", {95, 6}}, {"three", {60, 35}}}},
        {"the worst of several drivers",
         [](Bench& b) {
             Pole* out = b.addOutput("out");
             b.connect(b.addInput("one"), out, 10, 20);
             b.connect(b.addInput("two"), out, 1, 30);
         },
         {{"one", {80, 15}}, {"two", {70, 6}}, {"out", {70, 6}}}},
        {"what lies behind counts",
         [](Bench& b) {
             Pole* m = b.design.addPole("m");
             b.connect(b.addInput("in"), m, 1, 2);
             b.connect(m, b.addOutput("out"), 10, 20);
             b.connect(m, b.addOutput("far"), 100, 200);
         },
         {{"in", {-102, 16}}, {"out", {78, 16}}, {"far", {-102, 106}}}},
        {"constraints count",
         [](Bench& b) {
             Pole* in = b.addInput("in");
             Pole* out = b.addOutput("out");
             b.connect(in, out, 10, 20);
             b.design.constrainInput(in, b.clk, rising, 1, 2);
             b.design.constrainOutput(out, b.clk, rising, 3, 7);
         },
         {{"in", {71, 19}}, {"out", {71, 19}}}},
        {"a bound that was not given: no slack on its side",
         [](Bench& b) {
             Pole* in = b.addInput("in");
             Pole* out = b.addOutput("out");
             b.connect(in, out, 10, 20);
             b.design.constrainInput(in, b.clk, rising, undefined, 2);
         },
         {{"in", {78, maximum}}, {"out", {78, maximum}}}},
        {"an input without an arc: both merges all the same",
         [](Bench& b) { b.addInput("in"); },
         {{"in", {maximum, maximum}}}},
        {"an input that leads nowhere",
         [](Bench& b) { b.connect(b.addInput("in"), b.design.addPole("floating"), 10, 20); },
         {{"in", {maximum, maximum}}}},
        {"an output without an arc", [](Bench& b) { b.addOutput("out"); }, {{"out", {maximum, maximum}}}},
        {"an output whose drivers have no arrival",
         [](Bench& b) { b.connect(b.design.addPole("quiet"), b.addOutput("out"), 10, 20); },
         {{"out", {maximum, maximum}}}},
        {"an output with one driver that has",
         [](Bench& b) {
             Pole* out = b.addOutput("out");
             b.connect(b.design.addPole("quiet"), out, 500, 500);
             b.connect(b.addInput("in"), out, 10, 20);
         },
         {{"in", {80, 15}}, {"out", {80, 15}}}},
        {"a clock pin that launches, and one that latches, are no ports",
         [](Bench& b) {
             const Register a = b.design.addRegister("a", b.clk, rising, 3, 1, 2);
             const Register z = b.design.addRegister("z", b.clk, rising, 3, 1, 2);
             b.subdomain->captureLaunch(a.clock);
             b.subdomain->captureLatch(z.clock);
             b.connect(a.output, z.data, 10, 20);
             b.connect(b.addInput("in"), z.data, 30, 40);
             b.connect(a.output, b.addOutput("out"), 50, 60);
         },
         // 100 - 40 - 2 and 30 - 1 + 5; 100 - 3 - 60 and 3 + 50 + 5
         {{"in", {58, 34}}, {"out", {37, 58}}}},
        {"a port that the subdomain has not captured",
         [](Bench& b) {
             Pole* in = b.addInput("in");
             b.connect(in, b.addOutput("out"), 10, 20);
             b.connect(in, b.design.addOutput("other"), 500, 500);
             b.connect(b.design.addInput("silent"), b.addOutput("last"), 500, 500);
         },
         {{"in", {80, 15}}, {"out", {80, 15}}, {"last", {maximum, maximum}}}},
        {"an output that launches is no input",
         [](Bench& b) {
             Pole* out = b.addOutput("out");
             Pole* both = b.design.addOutput("both");
             b.subdomain->captureLaunch(both);
             b.connect(b.addInput("in"), out, 10, 20);
         },
         {{"in", {80, 15}}, {"out", {80, 15}}}},
        {"an inactive arc counts where both its ends are timed",
         [](Bench& b) {
             Pole* in = b.addInput("in");
             Pole* out = b.addOutput("out");
             Pole* m = b.design.addPole("m");
             b.connect(in, m, 1, 1);
             b.connect(m, out, 1, 1);
             b.connect(in, out, 0, 50)->disactivate();
         },
         {{"in", {50, 5}}, {"out", {50, 5}}}},
    };
    for (const Row& row : rows)
        expect(row);
}

TEST(IoDelaySlacks, ANullRootSkipsItsSide) {
    const auto build = [](Bench& b) { b.connect(b.addInput("in"), b.addOutput("out"), 10, 20); };
    const struct {
        bool fromClock;
        bool toClock;
        Slacks slacks;
    } rows[] = {
        {true, true, {{"in", {80, 15}}, {"out", {80, 15}}}},
        {false, true, {{"out", {80, 15}}}},
        {true, false, {{"in", {80, 15}}}},
        {false, false, {}},
    };
    for (const auto& row : rows)
        expect({row.fromClock ? "from a clock" : "from a port", build, row.slacks}, row.fromClock,
               row.toClock);
}

// Puts an input and an output under an exception of class 1. `mask`: the analyzer's mask of the exception's
// kind.
void constrain(Bench& bench, CPath* path, void (Pelko::Analyzer::*mask)(const PseudoMask&)) {
    path->setPseudoMask(PseudoMask(1));
    if (mask)
        (analyzer->*mask)(PseudoMask(1));
    bench.connect(path->getSources().getFirst(), path->getTargets().getFirst(), 10, 20, 1);
}

CPath::Objects addPorts(Bench& bench) {
    Pole* in = bench.addInput("in");
    return {{in}, {bench.addOutput("out")}};
}

TEST(IoDelaySlacks, UnderExceptions) {
    const Row rows[] = {
        // Only class 1 has a requirement: there is no plain slack.
        {"a maximum delay replaces the setup relation",
         [](Bench& b) {
             constrain(b, DPath::createMaximum(addPorts(b), Delay(50)),
                       &Pelko::Analyzer::setMaxdelayPathMask);
         },
         {{"in", {30, 15}}, {"out", {30, 15}}}},
        {"a minimum delay replaces the hold relation",
         [](Bench& b) {
             constrain(b, DPath::createMinimum(addPorts(b), Delay(3)), &Pelko::Analyzer::setMindelayPathMask);
         },
         {{"in", {80, 7}}, {"out", {80, 7}}}},
        {"a multicycle",
         [](Bench& b) {
             constrain(b, MPath::create(addPorts(b), 2), &Pelko::Analyzer::setMulticyclePathMask);
         },
         {{"in", {1080, -985}}, {"out", {1080, -985}}}},
        {"a false path: none is left",
         [](Bench& b) { constrain(b, FPath::create(addPorts(b)), &Pelko::Analyzer::setFalsePathMask); },
         {{"in", {maximum, maximum}}, {"out", {maximum, maximum}}}},
        {"one of no kind",
         [](Bench& b) { constrain(b, CPath::create(addPorts(b)), nullptr); },
         {{"in", {80, 15}}, {"out", {80, 15}}}},
        {"an undefined adjustment adds nothing",
         [](Bench& b) {
             CPath* path = CPath::create(addPorts(b));
             path->setAdjuster([](const Pelko::Subdomain&, bool) { return Delay::getUndefined(); });
             constrain(b, path, nullptr);
         },
         {{"in", {80, 15}}, {"out", {80, 15}}}},
        {"a plain path beside it, the worst winning",
         [](Bench& b) {
             const CPath::Objects ports = addPorts(b);
             constrain(b, DPath::createMaximum(ports, Delay(50)), &Pelko::Analyzer::setMaxdelayPathMask);
             b.connect(ports.sources.front(), b.addOutput("plain"), 1, 95);
         },
         {{"in", {5, 6}}, {"out", {30, 15}}, {"plain", {5, 6}}}},
        {"several exceptions, the worst winning a side",
         [](Bench& b) {
             const CPath::Objects ports = addPorts(b);
             const int adjustments[][2] = {{-3, 9}, {4, -8}};
             for (const auto& adjustment : adjustments) {
                 CPath* path = CPath::create(ports);
                 path->setPseudoMask(PseudoMask(&adjustment == adjustments ? 1 : 2));
                 path->setAdjuster(
                     [longest = adjustment[0], shortest = adjustment[1]](const Pelko::Subdomain&, bool side) {
                         return Delay(side ? longest : shortest);
                     });
             }
             b.connect(ports.sources.front(), ports.targets.front(), 10, 20, 3);
         },
         {{"in", {77, 7}}, {"out", {77, 7}}}},
    };
    for (const Row& row : rows)
        expect(row);
}

TEST(IoDelaySlacks, ADelayPathHasTheLimitThatItIsMadeWith) {
    const Builder design;
    const DPath* greatest = DPath::createMaximum({{}, {}}, Delay(50));
    const DPath* least = DPath::createMinimum({{}, {}}, Delay(-3));
    EXPECT_EQ(int(greatest->getMaxdelay()), 50);
    EXPECT_EQ(int(least->getMindelay()), -3);
    const auto& kind = typeid(Ruvex::InvalidRequest);
    expectThrown({
        {"minimum", [&] { least->getMaxdelay(); }, kind, "Invalid maxdelay", {"DPath", "getMaxdelay", 123}},
        {"maximum",
         [&] { greatest->getMindelay(); },
         kind,
         "Invalid mindelay",
         {"DPath", "getMindelay", 135}},
    });
}

TEST(IoDelaySlacks, TheWorstOverAllSubdomainsStays) {
    Bench bench;
    bench.connect(bench.addInput("in"), bench.addOutput("out"), 10, 20);
    bench.addInput("idle");
    Pelko::Subdomain* other = bench.design.addSubdomain(bench.clk, bench.clk, rising, falling);
    other->captureLaunch(bench.subdomain->getLaunchLeaves().getFirst());
    other->captureLatch(bench.subdomain->getLatchLeaves().getFirst());
    const struct {
        Pelko::Subdomain* subdomain;
        int setup;
        int hold;
        Slacks slacks;
    } steps[] = {
        {bench.subdomain, 100, 5, {{"in", {80, 15}}, {"idle", {maximum, maximum}}, {"out", {80, 15}}}},
        {other, 50, 7, {{"in", {30, 15}}, {"idle", {maximum, maximum}}, {"out", {30, 15}}}},
        {other, 200, -20, {{"in", {30, -10}}, {"idle", {maximum, maximum}}, {"out", {30, -10}}}},
        // Without relations the only slack to merge is the maximum.
        {other, undefined, undefined, {{"in", {30, -10}}, {"idle", {maximum, maximum}}, {"out", {30, -10}}}},
    };
    for (const auto& step : steps) {
        step.subdomain->setSetupRelation(Delay(step.setup));
        step.subdomain->setHoldRelation(Delay(step.hold));
        Bench::analyze(step.subdomain);
        EXPECT_EQ(portSlacks(), step.slacks) << step.setup;
    }
}

} // namespace
