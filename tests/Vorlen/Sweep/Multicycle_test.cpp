// The influence of exceptions on a timing map: multicycle factors, and the choice of the governing exception.
//
// A multicycle path in a pure clock of two different roots ends divideCycleCount by "Abnormal multicycle
// Path". The model's isPureClock() says just that launch and latch root are one and the same, so no database
// of the model gets there; PureClocksAreOfOneRoot holds the model to it.
#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"
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
using Pelko::FPath;
using Pelko::MPath;
using Pelko::Pole;
using Pelko::PseudoMask;
using Vorlen::Sweep;
using Vorlen::TimingMap;

// An exception of a kind, with its value and its classes.
enum class Kind { Other, False, MaxDelay, MinDelay, Multicycle };

struct Exception {
    Kind kind;
    unsigned long value;
    unsigned long classes;
};

CPath* make(const Exception& exception) {
    const CPath::Objects none{{}, {}};
    const Delay delay(static_cast<int>(exception.value));
    CPath* path = nullptr;
    switch (exception.kind) {
    case Kind::Other:
        path = CPath::create(none);
        break;
    case Kind::False:
        path = FPath::create(none);
        break;
    case Kind::MaxDelay:
        path = DPath::createMaximum(none, delay);
        break;
    case Kind::MinDelay:
        path = DPath::createMinimum(none, delay);
        break;
    case Kind::Multicycle:
        path = MPath::create(none, exception.value);
        break;
    }
    path->setPseudoMask(PseudoMask(exception.classes));
    return path;
}

TEST(MultiplyCycleCount, ScalesTheArrivalTiming) {
    constexpr unsigned long wide = 1UL << 32;
    const struct {
        const char* what;
        std::pair<int, int> arrival; // as the sweep finds it
        std::vector<Exception> exceptions;
        unsigned long mask;
        Entries before;
        Entries after;
    } rows[] = {
        {"one multicycle path", {5, 100}, {{Kind::Multicycle, 3, 4}}, 4, {}, {{0, {100, 5}}, {4, {300, 5}}}},
        {"multiplier 1", {5, 100}, {{Kind::Multicycle, 1, 4}}, 4, {}, {{0, {100, 5}}, {4, {100, 5}}}},
        {"two of them",
         {5, 100},
         {{Kind::Multicycle, 3, 4}, {Kind::Multicycle, 2, 1}},
         5,
         {},
         {{0, {100, 5}}, {1, {200, 5}}, {4, {300, 5}}}},
        {"one outside the mask",
         {5, 100},
         {{Kind::Multicycle, 3, 4}, {Kind::Multicycle, 2, 1}},
         1,
         {},
         {{0, {100, 5}}, {1, {200, 5}}}},
        {"the path's own classes are the key",
         {5, 100},
         {{Kind::Multicycle, 3, 6}},
         4,
         {},
         {{0, {100, 5}}, {6, {300, 5}}}},
        {"two of the same classes: the later one stays",
         {5, 100},
         {{Kind::Multicycle, 3, 4}, {Kind::Multicycle, 2, 4}},
         4,
         {},
         {{0, {100, 5}}, {4, {200, 5}}}},
        {"other kinds are passed over",
         {5, 100},
         {{Kind::Other, 0, 1}, {Kind::False, 0, 2}, {Kind::MaxDelay, 9, 4}, {Kind::MinDelay, 9, 8}},
         15,
         {},
         {{0, {100, 5}}}},
        {"no class", {5, 100}, {{Kind::Multicycle, 3, 4}}, 0, {}, {{0, {100, 5}}}},
        {"no exception", {5, 100}, {}, ~0UL, {}, {{0, {100, 5}}}},
        {"what stood there is replaced",
         {5, 100},
         {{Kind::Multicycle, 3, 4}},
         4,
         {{0, {-9, 999}}, {4, {-9, 999}}},
         {{0, {100, 5}}, {4, {300, 5}}}},
        {"other keys stay",
         {5, 100},
         {{Kind::Multicycle, 3, 4}},
         4,
         {{1, {7, 8}}, {12, {7, 8}}},
         {{0, {100, 5}}, {1, {7, 8}}, {4, {300, 5}}, {12, {7, 8}}}},
        {"a negative arrival",
         {-100, -5},
         {{Kind::Multicycle, 3, 4}},
         4,
         {},
         {{0, {-5, -100}}, {4, {-15, -100}}}},
        {"the product wraps in 32 bits",
         {5, 2'000'000'000},
         {{Kind::Multicycle, 3, 4}},
         4,
         {},
         {{0, {2'000'000'000, 5}}, {4, {1'705'032'704, 5}}}},
        {"so does the multiplier",
         {5, 100},
         {{Kind::Multicycle, wide + 3, 4}},
         4,
         {},
         {{0, {100, 5}}, {4, {300, 5}}}},
        {"the maximum special is not scaled",
         {5, maximum},
         {{Kind::Multicycle, 3, 4}},
         4,
         {},
         {{0, {maximum, 5}}, {4, {maximum, 5}}}},
        {"nor the minimum special",
         {5, minimum},
         {{Kind::Multicycle, 3, 4}},
         4,
         {},
         {{0, {minimum, 5}}, {4, {minimum, 5}}}},
        {"nor undefined",
         {5, undefined},
         {{Kind::Multicycle, 3, 4}},
         4,
         {},
         {{0, {undefined, 5}}, {4, {undefined, 5}}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        // From port to port, the arrival time is the delay of the only arc.
        Builder design;
        Pole* in = design.addInput("in");
        Pole* out = design.addOutput("out");
        design.connect(in, out, row.arrival.first, row.arrival.second);
        Pelko::Subdomain* subdomain = design.addSubdomain(nullptr, nullptr, none, none);
        subdomain->captureLaunch(in);
        subdomain->captureLatch(out);
        const SweepPointer sweep(Sweep::create(subdomain));
        sweep->arrivalAnalyze();
        for (const Exception& exception : row.exceptions)
            make(exception);
        TimingMap map = mapOf(row.before);
        sweep->multiplyCycleCount(PseudoMask(row.mask), map);
        EXPECT_EQ(entriesOf(map), row.after);
    }
}

TEST(MultiplyCycleCount, BeforeAnyArrivalAllIsUndefined) {
    Builder design;
    make({Kind::Multicycle, 3, 4});
    const SweepPointer sweep(Sweep::create(design.addSubdomain(nullptr, nullptr, none, none)));
    TimingMap map = mapOf({{0, {1, 2}}});
    sweep->multiplyCycleCount(PseudoMask(4), map);
    EXPECT_EQ(entriesOf(map), (Entries{{0, {undefined, undefined}}, {4, {undefined, undefined}}}));
}

TEST(DivideCycleCount, DividesTheMaximumWithinOneClock) {
    const struct {
        const char* what;
        ClockMode::Code launch;
        ClockMode::Code latch;
        unsigned long duty;
        unsigned long multiplier;
        int before;
        int after;
    } rows[] = {
        // Equal edges: divided by the multiplier, rounded up.
        {"by 2", rising, rising, 50, 2, 101, 51},
        {"by 2, evenly", rising, rising, 50, 2, 100, 50},
        {"by 2, falling", falling, falling, 50, 2, 101, 51},
        {"by 1", rising, rising, 50, 1, 101, 101},
        {"by 3", rising, rising, 50, 3, 100, 34},
        {"the duty ratio does not count", rising, rising, 10, 2, 101, 51},
        {"negative: the ceiling is nearer to 0", rising, rising, 50, 2, -101, -50},
        {"zero", rising, rising, 50, 2, 0, 0},
        {"one", rising, rising, 50, 1000, 1, 1},
        {"the greatest ordinary value", rising, rising, 50, 2, maximum - 1, 1'073'741'823},
        {"the least ordinary value", rising, rising, 50, 2, minimum + 1, -1'073'741'823},
        // Opposite edges: cycles after the first count in phases. The phase is the high one if the rising
        // edge launches.
        {"half cycle, duty 50: 3", rising, falling, 50, 2, 300, 100},
        {"half cycle, duty 50, rounded up", rising, falling, 50, 2, 101, 34},
        {"from falling, duty 50: 3", falling, rising, 50, 2, 101, 34},
        {"duty 40: 3.5", rising, falling, 40, 2, 100, 29},
        {"from falling, duty 40: 1 + 100/60", falling, rising, 40, 2, 100, 38},
        {"duty 40, multiplier 3: 6", rising, falling, 40, 3, 100, 17},
        {"duty 1: 101", rising, falling, 1, 2, 1000, 10},
        {"duty 99, from falling: 101", falling, rising, 99, 2, 1000, 10},
        {"half cycle by 1", rising, falling, 40, 1, 100, 100},
        // A launch without an edge does not count as a rising one.
        {"no launch edge", none, rising, 40, 2, 100, 38},
        {"no latch edge", rising, none, 40, 2, 100, 29},
        {"no edges", none, none, 40, 2, 101, 51},
        // The sentinel for no multiplier, and multipliers that a delay cannot hold.
        {"just below the sentinel", rising, rising, 50, 99'999'999, 101, 1},
        {"the sentinel itself", rising, rising, 50, 100'000'000, 101, 101},
        {"beyond it", rising, rising, 50, 200'000'000, 101, 101},
        {"undefined as a delay", rising, rising, 50, 1UL << 31, 101, 101},
        {"negative as a delay", rising, rising, 50, (1UL << 32) - 5, 101, 101},
        {"beyond 32 bits", rising, rising, 50, (1UL << 32) + 2, 101, 51},
        {"zero as a delay", rising, rising, 50, 1UL << 32, 101, 101},
        // Between opposite edges the sentinel is a factor like any other.
        {"the sentinel of a half cycle", rising, falling, 50, 1UL << 31, 101, 1},
        // A special is never scaled.
        {"maximum", rising, rising, 50, 2, maximum, maximum},
        {"minimum", rising, rising, 50, 2, minimum, minimum},
        {"undefined", rising, rising, 50, 2, undefined, undefined},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Builder design;
        Pole* clk = design.addClockSource("clk");
        analyzer->setDutyRatio(clk, row.duty);
        make({Kind::Multicycle, row.multiplier, 4});
        const SweepPointer sweep(Sweep::create(design.addSubdomain(clk, clk, row.launch, row.latch)));
        // The minimum does not change, and nor do arrivals under no class or another one.
        TimingMap map = mapOf({{0, {7, row.before}}, {2, {7, row.before}}, {4, {7, row.before}}});
        sweep->divideCycleCount(map);
        EXPECT_EQ(entriesOf(map), (Entries{{0, {7, row.before}}, {2, {7, row.before}}, {4, {7, row.after}}}));
    }
}

TEST(DivideCycleCount, TakesTheLeastMultiplierAndTheOverridesFirst) {
    const struct {
        const char* what;
        std::vector<Exception> exceptions;
        unsigned long maxMask;
        unsigned long minMask;
        Entries before;
        Entries after;
    } rows[] = {
        {"the least of a class",
         {{Kind::Multicycle, 4, 1}, {Kind::Multicycle, 2, 2}, {Kind::Multicycle, 5, 4}},
         0,
         0,
         {{1, {7, 100}}, {3, {7, 100}}, {5, {7, 100}}, {7, {7, 100}}},
         {{1, {7, 25}}, {3, {7, 50}}, {5, {7, 25}}, {7, {7, 50}}}},
        {"one that a delay cannot hold is ignored",
         {{Kind::Multicycle, 1UL << 31, 1}, {Kind::Multicycle, 4, 2}},
         0,
         0,
         {{3, {7, 100}}},
         {{3, {7, 25}}}},
        {"other kinds do not divide",
         {{Kind::Other, 0, 1}, {Kind::False, 0, 2}},
         0,
         0,
         {{1, {7, 100}}, {2, {7, 100}}},
         {{1, {7, 100}}, {2, {7, 100}}}},
        {"key 0 is under no path", {{Kind::Multicycle, 4, 1}}, 0, 0, {{0, {7, 100}}}, {{0, {7, 100}}}},
        {"an empty map", {{Kind::Multicycle, 4, 1}}, 0, 0, {}, {}},
        {"a maximum delay overrides the maximum",
         {{Kind::MaxDelay, 9, 1}},
         1,
         0,
         {{0, {7, 100}}, {1, {7, 100}}},
         {{0, {7, 100}}, {1, {7, minimum}}}},
        {"a minimum delay the minimum",
         {{Kind::MinDelay, 9, 2}},
         0,
         2,
         {{0, {7, 100}}, {2, {7, 100}}},
         {{0, {7, 100}}, {2, {maximum, 100}}}},
        {"both",
         {{Kind::MaxDelay, 9, 1}, {Kind::MinDelay, 9, 2}},
         1,
         2,
         {{3, {7, 100}}},
         {{3, {maximum, minimum}}}},
        {"an overridden maximum is not divided",
         {{Kind::MaxDelay, 9, 1}, {Kind::Multicycle, 4, 2}},
         1,
         0,
         {{2, {7, 100}}, {3, {7, 100}}},
         {{2, {7, 25}}, {3, {7, minimum}}}},
        {"beside an overridden minimum it is",
         {{Kind::MinDelay, 9, 1}, {Kind::Multicycle, 4, 2}},
         0,
         1,
         {{3, {7, 100}}},
         {{3, {maximum, 25}}}},
        {"equal masks remove",
         {{Kind::Multicycle, 4, 2}},
         1,
         1,
         {{1, {7, 100}}, {2, {7, 100}}},
         {{2, {7, 25}}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Builder design;
        Pole* clk = design.addClockSource("clk");
        for (const Exception& exception : row.exceptions)
            make(exception);
        analyzer->setMaxdelayPathMask(PseudoMask(row.maxMask));
        analyzer->setMindelayPathMask(PseudoMask(row.minMask));
        const SweepPointer sweep(Sweep::create(design.addSubdomain(clk, clk)));
        TimingMap map = mapOf(row.before);
        sweep->divideCycleCount(map);
        EXPECT_EQ(entriesOf(map), row.after);
    }
}

TEST(DivideCycleCount, IsNotAvailableBetweenTwoClocks) {
    enum class Roots { TwoClocks, FromPort, ToPort, Ports };
    const struct {
        const char* what;
        Roots roots;
        bool debug;
        bool muted;
        Lines lines;
    } rows[] = {
        {"silent outside debug mode", Roots::TwoClocks, false, false, {}},
        {"muted", Roots::TwoClocks, true, true, {}},
        {"two clocks",
         Roots::TwoClocks,
         true,
         false,
         {"warning: first is not available for clk:rising -> gen:falling",
          "warning: second is not available for clk:rising -> gen:falling",
          "warning: first is not available for clk:rising -> gen:falling"}},
        {"from a port",
         Roots::FromPort,
         true,
         false,
         {"warning: first is not available for none:rising -> gen:falling",
          "warning: second is not available for none:rising -> gen:falling",
          "warning: first is not available for none:rising -> gen:falling"}},
        {"to a port",
         Roots::ToPort,
         true,
         false,
         {"warning: first is not available for clk:rising -> none:falling",
          "warning: second is not available for clk:rising -> none:falling",
          "warning: first is not available for clk:rising -> none:falling"}},
        {"from port to port",
         Roots::Ports,
         true,
         false,
         {"warning: first is not available for none:rising -> none:falling",
          "warning: second is not available for none:rising -> none:falling",
          "warning: first is not available for none:rising -> none:falling"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Builder design;
        Pole* clk = design.addClockSource("clk");
        Pole* gen = design.addClockSource("gen");
        make({Kind::Multicycle, 2, 1})->setAlias("first");
        make({Kind::Multicycle, 3, 2})->setAlias("second");
        make({Kind::False, 0, 4})->setAlias("false");
        Pole* launch = row.roots == Roots::FromPort || row.roots == Roots::Ports ? nullptr : clk;
        Pole* latch = row.roots == Roots::ToPort || row.roots == Roots::Ports ? nullptr : gen;
        const SweepPointer sweep(Sweep::create(design.addSubdomain(launch, latch, rising, falling)));
        // Two multicycle paths under key 3, none under 0 and 4, one under 5.
        const Entries entries{{0, {7, 100}}, {3, {7, 100}}, {4, {7, 100}}, {5, {7, 100}}};
        TimingMap map = mapOf(entries);
        const DebugMode debug(row.debug);
        Pelko::Analyzer::_muted = row.muted;
        const Recorder recorder;
        sweep->divideCycleCount(map);
        Pelko::Analyzer::_muted = false;
        EXPECT_EQ(entriesOf(map), entries);
        EXPECT_EQ(recorder.getLines(), row.lines);
    }
}

TEST(DivideCycleCount, WithinOneClockItIsSilent) {
    Builder design;
    Pole* clk = design.addClockSource("clk");
    make({Kind::Multicycle, 2, 1});
    const SweepPointer sweep(Sweep::create(design.addSubdomain(clk, clk)));
    TimingMap map = mapOf({{1, {7, 100}}});
    const DebugMode debug(true);
    const Recorder recorder;
    sweep->divideCycleCount(map);
    EXPECT_EQ(recorder.getLines(), Lines{});
    EXPECT_EQ(entriesOf(map), (Entries{{1, {7, 50}}}));
}

TEST(DivideCycleCount, PureClocksAreOfOneRoot) {
    Builder design;
    Pole* clk = design.addClockSource("clk");
    Pole* gen = design.addClockSource("gen");
    const struct {
        Pole* launch;
        Pole* latch;
        bool pure;
    } rows[] = {{clk, clk, true},
                {clk, gen, false},
                {nullptr, clk, false},
                {clk, nullptr, false},
                {nullptr, nullptr, false}};
    make({Kind::Multicycle, 2, 1});
    for (const auto& row : rows) {
        Pelko::Subdomain* subdomain = design.addSubdomain(row.launch, row.latch);
        EXPECT_EQ(subdomain->isPureClock(), row.pure) << subdomain->getName();
        const SweepPointer sweep(Sweep::create(subdomain));
        TimingMap map = mapOf({{1, {7, 100}}});
        EXPECT_NO_THROW(sweep->divideCycleCount(map)) << subdomain->getName();
        EXPECT_EQ(entriesOf(map), (Entries{{1, {7, row.pure ? 50 : 100}}})) << subdomain->getName();
    }
}

class PriorityMask : public testing::Test {
protected:
    PseudoMask choose(unsigned long mask, bool longest) const {
        return sweep_->getPriorityMask(PseudoMask(mask), longest);
    }

    Builder design_;
    SweepPointer sweep_{Sweep::create(design_.addSubdomain(nullptr, nullptr, none, none))};
};

TEST_F(PriorityMask, ChoosesTheGoverningException) {
    // Classes in the order of the collection, which is the order of creation.
    for (const Exception& exception : std::initializer_list<Exception>{{Kind::MaxDelay, 10, 1},
                                                                       {Kind::MaxDelay, 5, 2},
                                                                       {Kind::MaxDelay, 5, 4},
                                                                       {Kind::MinDelay, 3, 8},
                                                                       {Kind::MinDelay, 7, 16},
                                                                       {Kind::MinDelay, 7, 32},
                                                                       {Kind::Multicycle, 3, 64},
                                                                       {Kind::Multicycle, 2, 128},
                                                                       {Kind::Multicycle, 2, 256},
                                                                       {Kind::False, 0, 512},
                                                                       {Kind::Other, 0, 1024}})
        make(exception);
    analyzer->setMaxdelayPathMask(PseudoMask(1 | 2 | 4));
    analyzer->setMindelayPathMask(PseudoMask(8 | 16 | 32));
    analyzer->setMulticyclePathMask(PseudoMask(64 | 128 | 256));
    analyzer->setFalsePathMask(PseudoMask(512));
    constexpr unsigned long maxima = 1 | 2 | 4;
    constexpr unsigned long minima = 8 | 16 | 32;
    constexpr unsigned long multicycles = 64 | 128 | 256;
    const struct {
        const char* what;
        unsigned long mask;
        unsigned long longest;
        unsigned long shortest;
    } rows[] = {
        {"none", 0, 0, 0},
        {"a false path governs nothing", 512, 0, 0},
        {"nor does one of no kind", 1024, 0, 0},
        {"a class without a path", 1UL << 40, 0, 0},
        // Only one class.
        {"one maximum delay", 1, 1, 1},
        {"longest: the smallest maximum delay, shortest: the first", 1 | 2, 2, 1},
        {"the first of equal ones", 2 | 4, 2, 2},
        {"longest: the first of equals behind a greater one, shortest: the first", maxima, 2, 1},
        {"one minimum delay", 8, 8, 8},
        {"longest: the first, shortest: the greatest minimum delay", 8 | 16, 8, 16},
        {"the first of equal ones", 16 | 32, 16, 16},
        {"longest: the first, shortest: the first of equals behind a smaller one", minima, 8, 16},
        {"one multicycle", 64, 64, 64},
        {"the smallest multiplier", 64 | 128, 128, 128},
        {"the first of equals", 128 | 256, 128, 128},
        {"the first of equals behind a greater one", multicycles, 128, 128},
        // Two classes. Longest: a maximum delay governs before a multicycle, and that before a minimum delay.
        // Shortest: a minimum delay before a maximum delay, and that before a multicycle.
        {"maximum and multicycle", 1 | 128, 1, 1},
        {"multicycle and minimum", 128 | 8, 128, 8},
        {"maximum and minimum", 1 | 8, 1, 8},
        // All three, and classes that never govern.
        {"all", maxima | minima | multicycles, 2, 16},
        {"the greater of each", 1 | 8 | 64, 1, 8},
        {"everything", ~0UL, 2, 16},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(choose(row.mask, true).getBits(), row.longest) << row.what;
        EXPECT_EQ(choose(row.mask, false).getBits(), row.shortest) << row.what;
    }
}

TEST_F(PriorityMask, OrderIsThatOfTheCollectionNotOfTheBits) {
    for (const Exception& exception : std::initializer_list<Exception>{{Kind::Multicycle, 2, 256},
                                                                       {Kind::Multicycle, 2, 64},
                                                                       {Kind::MinDelay, 7, 32},
                                                                       {Kind::MinDelay, 7, 8},
                                                                       {Kind::MaxDelay, 5, 4},
                                                                       {Kind::MaxDelay, 5, 1}})
        make(exception);
    analyzer->setMaxdelayPathMask(PseudoMask(5));
    analyzer->setMindelayPathMask(PseudoMask(40));
    analyzer->setMulticyclePathMask(PseudoMask(320));
    const struct {
        unsigned long mask;
        unsigned long longest;
        unsigned long shortest;
    } rows[] = {{5, 4, 4}, {40, 32, 32}, {320, 256, 256}};
    for (const auto& row : rows) {
        EXPECT_EQ(choose(row.mask, true).getBits(), row.longest) << row.mask;
        EXPECT_EQ(choose(row.mask, false).getBits(), row.shortest) << row.mask;
    }
}

TEST_F(PriorityMask, TakesExtremeValues) {
    const struct {
        const char* what;
        Exception exception;
        bool longest;
    } rows[] = {
        {"the greatest maximum delay", {Kind::MaxDelay, static_cast<unsigned>(maximum) - 1, 1}, true},
        {"the least minimum delay", {Kind::MinDelay, static_cast<unsigned>(minimum) + 1, 1}, false},
        {"a negative maximum delay", {Kind::MaxDelay, static_cast<unsigned>(-5), 1}, true},
        {"a negative minimum delay", {Kind::MinDelay, static_cast<unsigned>(-5), 1}, false},
        {"a multiplier beyond 32 bits", {Kind::Multicycle, 1UL << 40, 1}, true},
    };
    for (const auto& row : rows) {
        CPath* path = make(row.exception);
        const PseudoMask mask(1);
        analyzer->setMaxdelayPathMask(row.exception.kind == Kind::MaxDelay ? mask : PseudoMask());
        analyzer->setMindelayPathMask(row.exception.kind == Kind::MinDelay ? mask : PseudoMask());
        analyzer->setMulticyclePathMask(row.exception.kind == Kind::Multicycle ? mask : PseudoMask());
        EXPECT_EQ(choose(1, row.longest).getBits(), 1U) << row.what;
        path->destroy();
    }
}

TEST_F(PriorityMask, ComparesMultipliersUnsigned) {
    // Read as a delay, the first one would be the smaller: its lower half is 1.
    make({Kind::Multicycle, (1UL << 32) + 1, 1});
    make({Kind::Multicycle, 3, 2});
    make({Kind::Multicycle, ~0UL - 1, 4});
    analyzer->setMulticyclePathMask(PseudoMask(7));
    EXPECT_EQ(choose(7, true).getBits(), 2U);
    EXPECT_EQ(choose(5, true).getBits(), 1U);
    EXPECT_EQ(choose(4, true).getBits(), 4U);
}

TEST_F(PriorityMask, GivesTheChosenPathsWholeMask) {
    make({Kind::Multicycle, 3, 6});
    analyzer->setMulticyclePathMask(PseudoMask(6));
    EXPECT_EQ(choose(2, true).getBits(), 6U);
    EXPECT_EQ(choose(4, false).getBits(), 6U);
    EXPECT_EQ(choose(1, true).getBits(), 0U);
}

// Masks that do not match the paths.
TEST_F(PriorityMask, InconsistentAnalyzer) {
    make({Kind::MinDelay, 3, 1});
    make({Kind::MaxDelay, 9, 2});
    make({Kind::Multicycle, 2, 4});
    make({Kind::False, 0, 8});
    // No path of the kind: nothing is chosen.
    const struct {
        const char* what;
        void (Pelko::Analyzer::*set)(const PseudoMask&);
        unsigned long mask;
        bool longest;
        unsigned long chosen;
    } rows[] = {
        {"no delay path in the maximum class, longest", &Pelko::Analyzer::setMaxdelayPathMask, 12, true, 0},
        {"no delay path in the maximum class, shortest", &Pelko::Analyzer::setMaxdelayPathMask, 12, false, 0},
        {"no delay path in the minimum class, longest", &Pelko::Analyzer::setMindelayPathMask, 12, true, 0},
        {"no delay path in the minimum class, shortest", &Pelko::Analyzer::setMindelayPathMask, 12, false, 0},
        {"no multicycle path in the class, longest", &Pelko::Analyzer::setMulticyclePathMask, 11, true, 0},
        {"no multicycle path in the class, shortest", &Pelko::Analyzer::setMulticyclePathMask, 11, false, 0},
        // The first delay path is chosen, whatever its limit.
        {"a minimum delay in the maximum class, shortest", &Pelko::Analyzer::setMaxdelayPathMask, 3, false,
         1},
        {"a maximum delay in the minimum class, longest", &Pelko::Analyzer::setMindelayPathMask, 2, true, 2},
        // Paths of other kinds in the class are skipped.
        {"a multicycle path in the maximum class", &Pelko::Analyzer::setMaxdelayPathMask, 14, true, 2},
    };
    const auto clearMasks = [] {
        analyzer->setMaxdelayPathMask(PseudoMask());
        analyzer->setMindelayPathMask(PseudoMask());
        analyzer->setMulticyclePathMask(PseudoMask());
    };
    for (const auto& row : rows) {
        clearMasks();
        (analyzer->*row.set)(PseudoMask(row.mask));
        EXPECT_EQ(choose(row.mask, row.longest).getBits(), row.chosen) << row.what;
    }
    clearMasks();
    analyzer->setMaxdelayPathMask(PseudoMask(1));
    expectThrown({"a minimum delay in the maximum class",
                  [&] { choose(1, true); },
                  typeid(Ruvex::InvalidRequest),
                  "Invalid maxdelay",
                  {"DPath", "getMaxdelay", 123}});
    clearMasks();
    analyzer->setMindelayPathMask(PseudoMask(2));
    expectThrown({"a maximum delay in the minimum class",
                  [&] { choose(2, false); },
                  typeid(Ruvex::InvalidRequest),
                  "Invalid mindelay",
                  {"DPath", "getMindelay", 135}});
}

} // namespace
