// Slacks of arcs: the two calculators, plain and under an exception, and what tagSlacks() writes on the arcs.
#include "tests/support/Builder.h"
#include "tests/support/Sweeps.h"
#include "tests/support/Thrown.h"

#include "Vorlen/Sweep.h"

#include <gtest/gtest.h>

namespace {

using namespace Support;
using Pelko::analyzer;
using Pelko::ClockMode;
using Pelko::CPath;
using Pelko::Delay;
using Pelko::DPath;
using Pelko::Edge;
using Pelko::FPath;
using Pelko::MPath;
using Pelko::Pole;
using Pelko::PseudoMask;
using Vorlen::Sweep;
using Vorlen::TimingMap;

// An arc of delay (1, 3) from s to d, with the requirements of a row at d.
struct Bench {
    explicit Bench(const Entries& required) {
        subdomain->setSetupRelation(Delay(0));
        subdomain->setHoldRelation(Delay(0));
        // One end point per class, behind an arc whose delay makes the requirement.
        for (const auto& [classes, bounds] : required) {
            Pole* end = design.addOutput("end" + std::to_string(classes));
            subdomain->captureLatch(end);
            CPath::create({{}, {end}})->setPseudoMask(PseudoMask(classes));
            Edge* arc = Edge::create(d, end, -Delay(bounds.second), -Delay(bounds.first));
            arc->sensitize(PseudoMask(~0UL));
            sweep->updateDataRTMapMap(end);
            sweep->updateDataRTMapMap(arc);
        }
    }
    static void open(Pole* pole, unsigned long classes) {
        CPath::create({{pole}, {}})->setPseudoMask(PseudoMask(classes));
    }

    Builder design;
    Pole* s = design.addPole("s");
    Pole* d = design.addPole("d");
    Edge* edge = design.connect(s, d, 1, 3);
    Pelko::Subdomain* subdomain = design.addSubdomain(nullptr, nullptr);
    SweepPointer sweep{Sweep::create(subdomain)};
};

TEST(CalculateSlack, WithoutAnException) {
    const Entries plain{{0, {100, 5}}};
    const Entries two{{0, {100, 5}}, {1, {50, 20}}};
    const struct {
        const char* what;
        Entries required;
        unsigned long mask;
        unsigned long sourceOpening;
        unsigned long arc;
        unsigned long targetOpening;
        unsigned long falseMask;
        int longest;  // for data that arrives at 10
        int shortest; // for data that arrives at 10
    } rows[] = {
        // 100 - (10 + 3) and (10 + 1) - 5
        {"one requirement", plain, 0, 0, 0, 0, 0, 87, 6},
        {"no requirement", {}, 0, 0, 0, 0, 0, undefined, undefined},
        {"under no class, those of all classes count", two, 0, 0, 0, 0, 0, 37, -9},
        {"under a class, those of others", two, 1, 0, 1, 0, 0, 87, 6},
        {"a class that the arc is not for is dropped", two, 1, 0, 2, 0, 0, 37, -9},
        {"a class that opens at the source", two, 0, 1, 1, 0, 0, 87, 6},
        {"one that the arc is not for", two, 0, 1, 0, 0, 0, 37, -9},
        {"a class that opens at the target, whatever the arc", two, 0, 0, 0, 1, 0, 87, 6},
        {"under another class", two, 2, 0, 3, 0, 0, 37, -9},
        {"only requirements of that class", {{1, {50, 20}}}, 1, 0, 1, 0, 0, undefined, undefined},
        {"a key of two classes, under one", {{0, {100, 5}}, {3, {50, 20}}}, 1, 0, 3, 0, 0, 87, 6},
        {"a key of two classes, under none", {{3, {50, 20}}}, 0, 0, 3, 0, 0, 37, -9},
        {"a false path is cut", two, 1, 0, 1, 0, 1, 87, 6},
        {"with all that it shares a key with",
         {{0, {100, 5}}, {2, {70, 8}}, {3, {50, 20}}},
         1,
         0,
         1,
         0,
         1,
         57,
         3},
        {"until nothing is left", {{1, {50, 20}}, {3, {50, 20}}}, 1, 0, 1, 0, 1, undefined, undefined},
        {"a false path that the arc is not for is none", two, 1, 0, 2, 0, 1, 37, -9},
        {"a false path that opens at the target", two, 0, 0, 0, 1, 1, 87, 6},
        {"another false path", two, 1, 0, 3, 0, 2, 87, 6},
        {"half a requirement", {{0, {undefined, 5}}}, 0, 0, 0, 0, 0, undefined, 6},
        {"the other half", {{0, {100, undefined}}}, 0, 0, 0, 0, 0, 87, undefined},
        {"two halves", {{0, {100, undefined}}, {1, {undefined, 5}}}, 0, 0, 0, 0, 0, 87, 6},
        {"special requirements", {{0, {maximum, maximum}}}, 0, 0, 0, 0, 0, maximum, minimum},
        {"the other special", {{0, {minimum, minimum}}}, 0, 0, 0, 0, 0, minimum, maximum},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Bench bench(row.required);
        bench.edge->sensitize(PseudoMask(row.arc));
        Bench::open(bench.s, row.sourceOpening);
        Bench::open(bench.d, row.targetOpening);
        analyzer->setFalsePathMask(PseudoMask(row.falseMask));
        const PseudoMask mask(row.mask);
        EXPECT_EQ(int(bench.sweep->calculateLSlack(bench.edge, mask, Delay(10))), row.longest);
        EXPECT_EQ(int(bench.sweep->calculateSSlack(bench.edge, mask, Delay(10))), row.shortest);
        // The same with a null exception.
        EXPECT_EQ(int(bench.sweep->calculateLSlack(bench.edge, mask, Delay(10), nullptr)), row.longest);
        EXPECT_EQ(int(bench.sweep->calculateSSlack(bench.edge, mask, Delay(10), nullptr)), row.shortest);
        // The sweep's map is not changed.
        TimingMap map;
        EXPECT_EQ(bench.sweep->hasRequireTimingMap(bench.d, map), !row.required.empty());
        EXPECT_EQ(map.size(), row.required.size());
    }
}

TEST(CalculateSlack, UnderAnException) {
    const Entries two{{0, {100, 5}}, {1, {50, 20}}};
    const struct {
        const char* what;
        Entries required;
        unsigned long classes; // of the exception
        unsigned long mask;
        unsigned long falseMask;
        int adjustLong;
        int adjustShort;
        int longest;
        int shortest;
    } rows[] = {
        // 50 - (10 + 3) and (10 + 1) - 20
        {"the requirement of its class", two, 1, 1, 0, 0, 0, 37, -9},
        {"whatever the mask", two, 1, 0, 0, 0, 0, 37, -9},
        {"no requirement of its class", two, 2, 2, 0, 0, 0, undefined, undefined},
        {"no requirement at all", {}, 1, 1, 0, 0, 0, undefined, undefined},
        {"an exception without a class", two, 0, 1, 0, 0, 0, undefined, undefined},
        {"all keys of its class together",
         {{0, {100, 5}}, {1, {50, 20}}, {3, {40, 30}}},
         1,
         1,
         0,
         0,
         0,
         27,
         -19},
        {"the first of its classes", {{2, {50, 20}}, {4, {40, 30}}, {6, {30, 40}}}, 6, 6, 0, 0, 0, 37, -9},
        {"the first as its classes are read", {{2, {40, 30}}, {9, {50, 20}}}, 3, 3, 0, 0, 0, 37, -9},
        {"what a false path cuts is gone", {{1, {50, 20}}, {3, {40, 30}}}, 1, 2, 2, 0, 0, 37, -9},
        {"then the next of its classes is the first", {{3, {40, 30}}, {4, {50, 20}}}, 5, 2, 2, 0, 0, 37, -9},
        {"until nothing is left", {{3, {40, 30}}}, 1, 2, 2, 0, 0, undefined, undefined},
        {"an adjustment a side", two, 1, 1, 0, 7, -2, 44, -11},
        {"an undefined adjustment adds nothing", two, 1, 1, 0, undefined, undefined, 37, -9},
        {"one side of it", two, 1, 1, 0, undefined, 4, 37, -5},
        {"the maximum special", two, 1, 1, 0, maximum, maximum, maximum, maximum},
        {"the minimum special", two, 1, 1, 0, minimum, minimum, minimum, minimum},
        {"an adjustment makes no slack where there is none", two, 2, 2, 0, 7, 7, undefined, undefined},
        {"half a requirement", {{1, {undefined, 20}}}, 1, 1, 0, 7, 7, undefined, -2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Bench bench(row.required);
        bench.edge->sensitize(PseudoMask(row.mask));
        analyzer->setFalsePathMask(PseudoMask(row.falseMask));
        CPath* path = CPath::create({{}, {}});
        path->setPseudoMask(PseudoMask(row.classes));
        std::vector<std::pair<const Pelko::Subdomain*, bool>> asked;
        path->setAdjuster([&](const Pelko::Subdomain& subdomain, bool longest) {
            asked.emplace_back(&subdomain, longest);
            return Delay(longest ? row.adjustLong : row.adjustShort);
        });
        const PseudoMask mask(row.mask);
        EXPECT_EQ(int(bench.sweep->calculateLSlack(bench.edge, mask, Delay(10), path)), row.longest);
        EXPECT_EQ(int(bench.sweep->calculateSSlack(bench.edge, mask, Delay(10), path)), row.shortest);
        if (!row.required.empty()) {
            ASSERT_EQ(asked.size(), 2U);
            EXPECT_EQ(asked[0], std::pair(static_cast<const Pelko::Subdomain*>(bench.subdomain), true));
            EXPECT_EQ(asked[1], std::pair(static_cast<const Pelko::Subdomain*>(bench.subdomain), false));
        }
    }
}

TEST(CalculateSlack, ArrivalsDelaysAndChecks) {
    // A requirement of (100, 5).
    const struct {
        const char* what;
        std::pair<int, int> delay;
        bool check;
        int arrival;
        int longest;
        int shortest;
    } rows[] = {
        {"data", {1, 3}, false, 10, 87, 6},
        {"a check: its hold value counts against the data", {1, 3}, true, 10, 87, 4},
        {"a negative hold value", {-1, 3}, true, 10, 87, 6},
        {"a late arrival", {1, 3}, false, 98, -1, 94},
        {"a negative arrival", {1, 3}, false, -10, 107, -14},
        {"zero slack", {0, 0}, false, 100, 0, 95},
        {"an undefined arrival", {1, 3}, false, undefined, undefined, undefined},
        {"the maximum", {1, 3}, false, maximum, minimum, maximum},
        {"the minimum", {1, 3}, false, minimum, maximum, minimum},
        {"an undefined delay", {undefined, undefined}, false, 10, undefined, undefined},
        {"an undefined hold value", {undefined, 3}, true, 10, 87, undefined},
        {"a delay without end", {maximum, maximum}, false, 10, minimum, maximum},
        {"a hold value without end", {maximum, 3}, true, 10, 87, minimum},
        {"out of range", {0, 0}, false, maximum - 1, -2'147'483'546, 2'147'483'641},
        {"saturating", {0, 200}, false, minimum + 1, 2'147'483'546, minimum},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Bench bench({{0, {100, 5}}});
        bench.edge->setMinDelay(Delay(row.delay.first));
        bench.edge->setMaxDelay(Delay(row.delay.second));
        bench.d->setHoldCheck(row.check);
        EXPECT_EQ(int(bench.sweep->calculateLSlack(bench.edge, PseudoMask(), Delay(row.arrival))),
                  row.longest);
        EXPECT_EQ(int(bench.sweep->calculateSSlack(bench.edge, PseudoMask(), Delay(row.arrival))),
                  row.shortest);
    }
}

TEST(CalculateSlack, RefusesNoEdge) {
    const Bench bench({});
    Sweep& sweep = *bench.sweep;
    CPath* path = CPath::create({{}, {}});
    const PseudoMask mask;
    const Delay arrival(0);
    const Ruvex::Place longest{"Sweep", "calculateLSlack", 811};
    const Ruvex::Place shortest{"Sweep", "calculateSSlack", 908};
    const auto& kind = typeid(Ruvex::InvalidRequest);
    expectThrown({
        {"long", [&] { sweep.calculateLSlack(nullptr, mask, arrival); }, kind, "Null edge", longest},
        {"long, under a path", [&] { sweep.calculateLSlack(nullptr, mask, arrival, path); }, kind,
         "Null edge", longest},
        {"short", [&] { sweep.calculateSSlack(nullptr, mask, arrival); }, kind, "Null edge", shortest},
        {"short, under a path", [&] { sweep.calculateSSlack(nullptr, mask, arrival, path); }, kind,
         "Null edge", shortest},
    });
}

// --- Results on the arcs ---

// Ports of one clock, timed with a setup relation of 100: the arc's slack is 100 minus its delay.
struct Tagging {
    explicit Tagging(int delay, ClockMode::Code launch = rising, ClockMode::Code latch = rising)
        : edge(design.connect(in, out, 0, delay)), subdomain(design.addSubdomain(clk, clk, launch, latch)) {
        capture(subdomain);
        Edge::_hasMaximumSlack = false;
    }
    void capture(Pelko::Subdomain* captured) const {
        captured->captureLaunch(in);
        captured->captureLatch(out);
        captured->setSetupRelation(Delay(100));
        captured->setHoldRelation(Delay(0));
    }
    static void tag(Pelko::Subdomain* tagged) {
        const SweepPointer sweep(Sweep::create(tagged));
        sweep->clockAnalyze();
        sweep->arrivalAnalyze();
        sweep->requireAnalyze();
        sweep->tagSlacks();
    }
    std::pair<int, unsigned long> written() const { return {int(edge->getSlack()), edge->getMinDutyCycle()}; }

    Builder design;
    Pole* clk = design.addClockSource("clk");
    Pole* in = design.addInput("in");
    Pole* out = design.addOutput("out");
    Edge* edge;
    Pelko::Subdomain* subdomain;
};

TEST(TagSlacks, WritesTheWorstAndItsDutyCycle) {
    // From the rising to the falling edge, with a duty ratio of 40: the transfer has 40 % of the period.
    const struct {
        const char* what;
        int slack; // before
        unsigned long dutyCycle;
        int best;
        std::pair<int, unsigned long> written;
    } rows[] = {
        {"the first write leaves the duty cycle", undefined, 100, 30, {30, 100}},
        {"whatever it is", undefined, 70, 30, {30, 70}},
        {"a lower slack brings its own", 31, 100, 30, {30, 40}},
        {"also where that is greater", 31, 10, 30, {30, 40}},
        {"an equal slack may lower it", 30, 100, 30, {30, 40}},
        {"and does not raise it", 30, 10, 30, {30, 10}},
        {"nor touches an equal one", 30, 40, 30, {30, 40}},
        {"a greater slack changes nothing", 29, 100, 30, {29, 100}},
        {"a negative slack", 0, 100, -20, {-20, 40}},
        {"below the maximum special", maximum, 100, 30, {30, 40}},
        {"never below the minimum special", minimum, 100, 30, {minimum, 100}},
    };
    for (const auto& row : rows) {
        Tagging bench(100 - row.best, rising, falling);
        analyzer->setDutyRatio(bench.clk, 40);
        bench.edge->setSlack(Delay(row.slack));
        bench.edge->setMinDutyCycle(row.dutyCycle);
        Tagging::tag(bench.subdomain);
        EXPECT_EQ(bench.written(), row.written) << row.what;
    }
}

TEST(TagSlacks, WithoutAnySlackWritesNone) {
    // Every slack is undefined, so the best one stays the maximum special.
    const struct {
        const char* what;
        int slack;
        std::pair<int, unsigned long> written;
    } rows[] = {
        {"an arc without a slack stays so", undefined, {undefined, 100}},
        {"one with a slack keeps it", 5, {5, 100}},
        {"the maximum special is an equal slack", maximum, {maximum, 40}},
    };
    for (const auto& row : rows) {
        Tagging bench(70, rising, falling);
        analyzer->setDutyRatio(bench.clk, 40);
        bench.subdomain->setSetupRelation(Delay::getUndefined());
        bench.edge->setSlack(Delay(row.slack));
        Tagging::tag(bench.subdomain);
        EXPECT_EQ(bench.written(), row.written) << row.what;
    }
}

TEST(TagSlacks, TheDutyCycleIsThatOfTheTransfer) {
    enum class Roots { OneClock, TwoClocks, FromPort, ToPort, Ports };
    const struct {
        Roots roots;
        ClockMode::Code launch;
        ClockMode::Code latch;
        unsigned long ratio;
        unsigned long dutyCycle;
    } rows[] = {
        {Roots::OneClock, rising, falling, 40, 40},   {Roots::OneClock, falling, rising, 40, 60},
        {Roots::OneClock, rising, rising, 40, 100},   {Roots::OneClock, falling, falling, 40, 100},
        {Roots::OneClock, none, rising, 40, 100},     {Roots::OneClock, rising, none, 40, 100},
        {Roots::OneClock, falling, none, 40, 100},    {Roots::OneClock, none, falling, 40, 100},
        {Roots::OneClock, none, none, 40, 100},       {Roots::OneClock, rising, falling, 1, 1},
        {Roots::OneClock, falling, rising, 1, 99},    {Roots::OneClock, rising, falling, 99, 99},
        {Roots::OneClock, falling, rising, 99, 1},    {Roots::TwoClocks, rising, falling, 40, 100},
        {Roots::TwoClocks, falling, rising, 40, 100}, {Roots::FromPort, rising, falling, 40, 100},
        {Roots::ToPort, rising, falling, 40, 100},    {Roots::Ports, rising, falling, 40, 100},
    };
    for (const auto& row : rows) {
        Tagging bench(70);
        analyzer->setDutyRatio(bench.clk, row.ratio);
        const bool fromPort = row.roots == Roots::FromPort || row.roots == Roots::Ports;
        const bool toPort = row.roots == Roots::ToPort || row.roots == Roots::Ports;
        Pole* latch = row.roots == Roots::TwoClocks ? bench.design.addClockSource("gen") : bench.clk;
        Pelko::Subdomain* subdomain = bench.design.addSubdomain(
            fromPort ? nullptr : bench.clk, toPort ? nullptr : latch, row.launch, row.latch);
        bench.capture(subdomain);
        bench.edge->setSlack(Delay(31));
        Tagging::tag(subdomain);
        EXPECT_EQ(bench.written(), (std::pair<int, unsigned long>(30, row.dutyCycle)))
            << subdomain->getName() << " at " << row.ratio;
    }
}

TEST(TagSlacks, SubdomainsOneAfterAnother) {
    // A slack of 30 in each subdomain: the first write leaves 100, ties lower it.
    Tagging bench(70, rising, falling);
    analyzer->setDutyRatio(bench.clk, 40);
    Pelko::Subdomain* back = bench.design.addSubdomain(bench.clk, bench.clk, falling, rising);
    bench.capture(back);
    Pelko::Subdomain* slower = bench.design.addSubdomain(bench.clk, bench.clk, rising, rising);
    bench.capture(slower);
    slower->setSetupRelation(Delay(99));
    const struct {
        Pelko::Subdomain* subdomain;
        std::pair<int, unsigned long> written;
    } steps[] = {
        {bench.subdomain, {30, 100}}, {back, {30, 60}},
        {bench.subdomain, {30, 40}},  {back, {30, 40}},
        {slower, {29, 100}},          {bench.subdomain, {29, 100}},
    };
    for (const auto& step : steps) {
        Tagging::tag(step.subdomain);
        EXPECT_EQ(bench.written(), step.written) << step.subdomain->getName();
    }
}

TEST(TagSlacks, TagsEveryArcBehindAReachedPole) {
    // Arcs are visited from their targets, or from their sources if an arc may have the maximum slack.
    for (const bool bySource : {false, true}) {
        SCOPED_TRACE(bySource ? "by source" : "by target");
        Builder design;
        Pole* clk = design.addClockSource("clk", 100);
        const Register a = design.addRegister("a", clk, rising, 5);
        const Register b = design.addRegister("b", clk, rising, 5, 1, 2);
        const Register c = design.addRegister("c", clk, rising, 5);
        design.connect(a.output, b.data, 10, 20);
        design.connect(c.output, b.data, 10, 30);
        // Arcs to a pole without a required time; from a pole without arrival; one that no walk follows; and
        // one into a pole that launches, so that the clock also reaches that pole through the arc, 55 late.
        Edge* floating = design.connect(a.output, design.addPole("floating"), 1, 1);
        design.connect(design.addPole("quiet"), b.data, 1, 1);
        design.connect(a.clock, b.data, 0, 90)->disactivate();
        design.connect(a.output, c.clock, 1, 50);
        Pelko::Subdomain* subdomain = design.addSubdomain(clk, clk, rising, falling);
        analyzer->setDutyRatio(clk, 40);
        subdomain->captureLaunch(a.clock);
        subdomain->captureLaunch(c.clock);
        subdomain->captureLatch(b.clock);
        subdomain->setSetupRelation(Delay(100));
        subdomain->setHoldRelation(Delay(0));
        Edge::_hasMaximumSlack = false;
        if (bySource)
            floating->setSlack(Delay::getMaximum());
        const SweepPointer sweep(Sweep::create(subdomain));
        sweep->clockAnalyze();
        sweep->arrivalAnalyze();
        sweep->requireAnalyze();
        sweep->tagSlacks();
        std::map<std::string, int> slacks;
        for (const Edge* edge : Pelko::cell->getEdges())
            if (edge->getSlack().isDefined() && edge != floating)
                slacks[edge->getAlias()] = int(edge->getSlack());
        EXPECT_EQ(slacks, (std::map<std::string, int>{{"a/C -> a/Q", 8},
                                                      {"a/Q -> b/D", 73},
                                                      {"a/Q -> c/C", 8},
                                                      {"b/D -> b/check", 8},
                                                      {"c/C -> c/Q", 8},
                                                      {"c/Q -> b/D", 8},
                                                      {"a/C -> b/D", 8}})); // written, whether active or not
        // The new slack of an arc without one is the maximum, which equals the slack that it has.
        EXPECT_EQ(floating->getMinDutyCycle(), bySource ? 40UL : 100UL);
    }
}

TEST(TagSlacks, ExceptionsAreTimedPlainlyAndOneByOne) {
    // Two inputs meet at m; the arc from m to the output takes 20. The exception is from a to the output.
    // Data from b arrives under no class, at `plain`. The relation is 100, the period 1000.
    enum class Kind { MaxDelay, MinDelay, Multicycle, False, Other };
    const struct {
        const char* what;
        Kind kind;
        int value;
        int adjust; // 0: the exception's own value
        int plain;  // undefined if b does not arrive
        int slack;
    } rows[] = {
        {"a maximum delay", Kind::MaxDelay, 30, 0, undefined, 10},
        {"a maximum delay, and a worse plain path", Kind::MaxDelay, 30, 0, 75, 5},
        {"a maximum delay, and a better plain path", Kind::MaxDelay, 30, 0, 65, 10},
        {"a multicycle", Kind::Multicycle, 2, 0, undefined, 1080},
        {"a multicycle, and a plain path", Kind::Multicycle, 2, 0, 65, 15},
        {"a minimum delay is not asked: no slack", Kind::MinDelay, 30, 0, undefined, undefined},
        {"a minimum delay beside a plain path", Kind::MinDelay, 30, 0, 65, 15},
        {"a false path has none", Kind::False, 0, 0, undefined, undefined},
        {"a false path beside a plain path", Kind::False, 0, 0, 65, 15},
        {"an exception of no kind is not asked", Kind::Other, 0, 0, undefined, undefined},
        {"an adjustment of the host's", Kind::Multicycle, 2, 7, undefined, 87},
        {"an undefined adjustment adds nothing", Kind::Multicycle, 2, undefined, undefined, 80},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Builder design;
        Pole* clk = design.addClockSource("clk", 1000);
        Pole* a = design.addInput("a");
        Pole* b = design.addInput("b");
        Pole* m = design.addPole("m");
        Pole* out = design.addOutput("out");
        design.connect(a, m, 0, 0)->sensitize(PseudoMask(1));
        design.connect(b, m, 0, row.plain);
        Edge* edge = design.connect(m, out, 0, 20);
        edge->sensitize(PseudoMask(1));
        Pelko::Subdomain* subdomain = design.addSubdomain(clk, clk);
        subdomain->captureLaunch(a);
        if (row.plain != undefined)
            subdomain->captureLaunch(b);
        subdomain->captureLatch(out);
        subdomain->setSetupRelation(Delay(100));
        const CPath::Objects objects{{a}, {out}};
        CPath* path = nullptr;
        switch (row.kind) {
        case Kind::MaxDelay:
            path = DPath::createMaximum(objects, Delay(row.value));
            analyzer->setMaxdelayPathMask(PseudoMask(1));
            break;
        case Kind::MinDelay:
            path = DPath::createMinimum(objects, Delay(row.value));
            analyzer->setMindelayPathMask(PseudoMask(1));
            break;
        case Kind::Multicycle:
            path = MPath::create(objects, static_cast<unsigned long>(row.value));
            analyzer->setMulticyclePathMask(PseudoMask(1));
            break;
        case Kind::False:
            path = FPath::create(objects);
            analyzer->setFalsePathMask(PseudoMask(1));
            break;
        case Kind::Other:
            path = CPath::create(objects);
            break;
        }
        path->setPseudoMask(PseudoMask(1));
        if (row.adjust != 0)
            path->setAdjuster(
                [&](const Pelko::Subdomain&, bool longest) { return Delay(longest ? row.adjust : -99); });
        Tagging::tag(subdomain);
        EXPECT_EQ(int(edge->getSlack()), row.slack);
    }
}

TEST(TagSlacks, TheTightestOfSeveralExceptionsWins) {
    // One input under three classes: two maximum delays and a multicycle. Slack: limit - 20.
    Tagging bench(20);
    const CPath::Objects objects{{bench.in}, {bench.out}};
    const auto add = [&](CPath* path, unsigned long classes) { path->setPseudoMask(PseudoMask(classes)); };
    add(DPath::createMaximum(objects, Delay(30)), 1);
    add(DPath::createMaximum(objects, Delay(25)), 2);
    add(MPath::create(objects, 2), 4);
    analyzer->setMaxdelayPathMask(PseudoMask(3));
    analyzer->setMulticyclePathMask(PseudoMask(4));
    bench.edge->sensitize(PseudoMask(7));
    Tagging::tag(bench.subdomain);
    EXPECT_EQ(int(bench.edge->getSlack()), 5);
}

} // namespace
