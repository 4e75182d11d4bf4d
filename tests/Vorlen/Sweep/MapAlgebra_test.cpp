// The algebra of timing maps: every operation as a table of maps before and after.
#include "tests/support/Builder.h"
#include "tests/support/Sweeps.h"

#include "Vorlen/Sweep.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace Support;
using Pelko::Delay;
using Pelko::PseudoMask;
using Vorlen::Sweep;
using Vorlen::Timing;
using Vorlen::TimingMap;

class MapAlgebra : public testing::Test {
protected:
    using Operation = std::function<void(Sweep&, TimingMap&)>;

    void expect(const char* what, const Entries& before, const Operation& operation, const Entries& after) {
        TimingMap map = mapOf(before);
        operation(*sweep_, map);
        EXPECT_EQ(entriesOf(map), after) << what;
    }

    Builder design_;
    std::unique_ptr<Sweep, DestroySweep> sweep_{
        Sweep::create(design_.addSubdomain(nullptr, nullptr, none, none))};
};

constexpr unsigned long highestClass = 1UL << 63;
constexpr unsigned long allClasses = ~0UL;

TEST_F(MapAlgebra, FilterRemovesClasses) {
    const Entries map = {{0, {1, 2}}, {1, {3, 4}}, {2, {5, 6}}, {3, {7, 8}}, {highestClass, {9, 10}}};
    const struct {
        const char* what;
        Entries before;
        unsigned long mask;
        Entries after;
    } rows[] = {
        {"no class", map, 0, map},
        {"one class", map, 1, {{0, {1, 2}}, {2, {5, 6}}, {highestClass, {9, 10}}}},
        {"one of two classes of a key", map, 2, {{0, {1, 2}}, {1, {3, 4}}, {highestClass, {9, 10}}}},
        {"two classes", map, 3, {{0, {1, 2}}, {highestClass, {9, 10}}}},
        {"a class that no key has", map, 4, map},
        {"the highest class", map, highestClass, {{0, {1, 2}}, {1, {3, 4}}, {2, {5, 6}}, {3, {7, 8}}}},
        {"all classes: key 0 always stays", map, allClasses, {{0, {1, 2}}}},
        {"every key goes", {{1, {3, 4}}, {2, {5, 6}}}, 3, {}},
        {"an undefined timing goes too", {{1, {undefined, undefined}}}, 1, {}},
        {"empty map", {}, 1, {}},
        {"empty map, no class", {}, 0, {}},
    };
    for (const auto& row : rows)
        expect(
            row.what, row.before, [&](Sweep& s, TimingMap& m) { s.filter(PseudoMask(row.mask), m); },
            row.after);
}

TEST_F(MapAlgebra, FilterNeutralisesBounds) {
    const Entries map = {{0, {1, 2}}, {1, {3, 4}}, {2, {5, 6}}, {3, {7, 8}}, {4, {9, 10}}};
    const struct {
        const char* what;
        Entries before;
        unsigned long maxMask;
        unsigned long minMask;
        Entries after;
    } rows[] = {
        {"equal masks remove", map, 1, 1, {{0, {1, 2}}, {2, {5, 6}}, {4, {9, 10}}}},
        {"equal masks of two classes remove", map, 3, 3, {{0, {1, 2}}, {4, {9, 10}}}},
        {"equal empty masks", map, 0, 0, map},
        {"the maximum",
         map,
         1,
         0,
         {{0, {1, 2}}, {1, {3, minimum}}, {2, {5, 6}}, {3, {7, minimum}}, {4, {9, 10}}}},
        {"the minimum",
         map,
         0,
         1,
         {{0, {1, 2}}, {1, {maximum, 4}}, {2, {5, 6}}, {3, {maximum, 8}}, {4, {9, 10}}}},
        {"each of its class, both of a key under both",
         map,
         1,
         2,
         {{0, {1, 2}}, {1, {3, minimum}}, {2, {maximum, 6}}, {3, {maximum, minimum}}, {4, {9, 10}}}},
        {"overlapping masks that differ",
         map,
         3,
         2,
         {{0, {1, 2}}, {1, {3, minimum}}, {2, {maximum, minimum}}, {3, {maximum, minimum}}, {4, {9, 10}}}},
        {"classes that no key has", map, 8, 16, map},
        {"undefined bounds are replaced",
         {{1, {undefined, undefined}}, {2, {undefined, undefined}}},
         1,
         2,
         {{1, {undefined, minimum}}, {2, {maximum, undefined}}}},
        {"key 0 always stays", {{0, {1, 2}}}, allClasses, highestClass, {{0, {1, 2}}}},
        {"empty map", {}, 1, 2, {}},
    };
    for (const auto& row : rows)
        expect(
            row.what, row.before,
            [&](Sweep& s, TimingMap& m) { s.filter(PseudoMask(row.maxMask), PseudoMask(row.minMask), m); },
            row.after);
}

TEST_F(MapAlgebra, SensibilizeKeepsClassesOfTheMask) {
    const Entries map = {{1, {2, 5}}, {2, {1, 4}}};
    const struct {
        const char* what;
        Entries before;
        unsigned long mask;
        Entries after;
    } rows[] = {
        {"an empty mask collapses onto key 0", map, 0, {{0, {1, 5}}}},
        {"one class stays", map, 1, {{0, {1, 4}}, {1, {2, 5}}}},
        {"all classes stay", map, 3, map},
        {"a wider mask adds none", map, allClasses, map},
        {"two keys become one", {{1, {2, 5}}, {3, {1, 4}}, {5, {3, 9}}}, 1, {{1, {1, 9}}}},
        {"a key joins another", {{1, {2, 5}}, {3, {1, 4}}}, 2, {{0, {2, 5}}, {2, {1, 4}}}},
        {"a key joins key 0", {{0, {4, 6}}, {4, {3, 5}}}, 3, {{0, {3, 6}}}},
        {"key 0 stays", {{0, {4, 6}}}, 0, {{0, {4, 6}}}},
        {"the highest class", {{highestClass | 1, {4, 6}}}, highestClass, {{highestClass, {4, 6}}}},
        {"undefined is absent in a merge", {{0, {undefined, undefined}}, {1, {3, 5}}}, 0, {{0, {3, 5}}}},
        {"half undefined, each bound by itself",
         {{0, {undefined, 4}}, {1, {3, undefined}}},
         0,
         {{0, {3, 4}}}},
        {"undefined stays where nothing joins it", {{1, {undefined, 7}}}, 0, {{0, {undefined, 7}}}},
        {"specials widen", {{0, {minimum, 4}}, {1, {3, maximum}}}, 0, {{0, {minimum, maximum}}}},
        {"empty map", {}, 1, {}},
        {"empty map, empty mask", {}, 0, {}},
    };
    for (const auto& row : rows)
        expect(
            row.what, row.before, [&](Sweep& s, TimingMap& m) { s.sensibilize(PseudoMask(row.mask), m); },
            row.after);
}

TEST_F(MapAlgebra, MingleOpensClasses) {
    const Entries map = {{0, {2, 5}}, {4, {1, 3}}};
    const struct {
        const char* what;
        Entries before;
        unsigned long mask;
        Entries after;
    } rows[] = {
        {"keys that become equal merge", map, 4, {{4, {1, 5}}}},
        {"an empty mask changes nothing", map, 0, map},
        {"a new class for every key", map, 2, {{2, {2, 5}}, {6, {1, 3}}}},
        {"two classes", map, 6, {{6, {1, 5}}}},
        {"a class that the key has", {{4, {1, 3}}}, 4, {{4, {1, 3}}}},
        {"the highest class", map, highestClass, {{highestClass, {2, 5}}, {highestClass | 4, {1, 3}}}},
        {"a key moves past another",
         {{0, {2, 5}}, {1, {1, 3}}, {2, {0, 9}}},
         4,
         {{4, {2, 5}}, {5, {1, 3}}, {6, {0, 9}}}},
        {"undefined is absent in a merge", {{0, {undefined, undefined}}, {4, {1, 3}}}, 4, {{4, {1, 3}}}},
        {"half undefined, each bound by itself",
         {{0, {undefined, 4}}, {4, {3, undefined}}},
         4,
         {{4, {3, 4}}}},
        {"empty map", {}, 4, {}},
        {"empty map, empty mask", {}, 0, {}},
    };
    for (const auto& row : rows)
        expect(
            row.what, row.before, [&](Sweep& s, TimingMap& m) { s.mingle(PseudoMask(row.mask), m); },
            row.after);
}

TEST_F(MapAlgebra, CombineMergesKeyByKey) {
    const struct {
        const char* what;
        Entries from;
        Entries into;
        Entries after;
    } rows[] = {
        {"a common key widens", {{0, {1, 4}}}, {{0, {2, 5}}}, {{0, {1, 5}}}},
        {"a new key is inserted", {{1, {1, 4}}}, {{0, {2, 5}}}, {{0, {2, 5}}, {1, {1, 4}}}},
        {"a key of the second only is kept",
         {{0, {3, 3}}},
         {{0, {2, 5}}, {1, {7, 8}}},
         {{0, {2, 5}}, {1, {7, 8}}}},
        {"into an empty map", {{0, {1, 4}}, {2, {0, 9}}}, {}, {{0, {1, 4}}, {2, {0, 9}}}},
        {"an empty map", {}, {{0, {2, 5}}}, {{0, {2, 5}}}},
        {"two empty maps", {}, {}, {}},
        {"undefined is absent", {{0, {undefined, undefined}}}, {{0, {2, 5}}}, {{0, {2, 5}}}},
        {"undefined takes what comes", {{0, {2, 5}}}, {{0, {undefined, undefined}}}, {{0, {2, 5}}}},
        {"undefined inserts its key", {{1, {undefined, undefined}}}, {}, {{1, {undefined, undefined}}}},
        {"one bound only widens", {{0, {undefined, 9}}}, {{0, {1, 4}}}, {{0, {1, 9}}}},
        {"the other bound only", {{0, {0, undefined}}}, {{0, {1, 4}}}, {{0, {0, 4}}}},
        {"specials widen", {{0, {minimum, maximum}}}, {{0, {1, 4}}}, {{0, {minimum, maximum}}}},
        {"the losing specials lose", {{0, {maximum, minimum}}}, {{0, {1, 4}}}, {{0, {1, 4}}}},
    };
    for (const auto& row : rows) {
        const TimingMap from = mapOf(row.from);
        TimingMap into = mapOf(row.into);
        sweep_->combine(from, into);
        EXPECT_EQ(entriesOf(into), row.after) << row.what;
        EXPECT_EQ(entriesOf(from), row.from) << row.what;
    }
}

// The shifts. Those with two arguments have (a, b), the others only a.
struct Shift {
    const char* name;
    void (*apply)(Sweep&, int a, int b, TimingMap&);
};

const Shift addOne = {"addDelay(a)", [](Sweep& s, int a, int, TimingMap& m) { s.addDelay(Delay(a), m); }};
const Shift addTwo = {"addDelay(a, b)",
                      [](Sweep& s, int a, int b, TimingMap& m) { s.addDelay(Delay(a), Delay(b), m); }};
const Shift minusOne = {"minusDelay(a)",
                        [](Sweep& s, int a, int, TimingMap& m) { s.minusDelay(Delay(a), m); }};
const Shift minusTwo = {"minusDelay(a, b)",
                        [](Sweep& s, int a, int b, TimingMap& m) { s.minusDelay(Delay(a), Delay(b), m); }};
const Shift addLatch = {"addLatchTiming(a, b)", [](Sweep& s, int a, int b, TimingMap& m) {
                            s.addLatchTiming(Timing(Delay(a), Delay(b)), m);
                        }};
const Shift minusLatch = {"minusLatchTiming(a, b)", [](Sweep& s, int a, int b, TimingMap& m) {
                              s.minusLatchTiming(Timing(Delay(a), Delay(b)), m);
                          }};
const Shift take = {"takeSetupHold(a, b)",
                    [](Sweep& s, int a, int b, TimingMap& m) { s.takeSetupHold(Delay(a), Delay(b), m); }};
const Shift release = {"freeSetupHold(a, b)",
                       [](Sweep& s, int a, int b, TimingMap& m) { s.freeSetupHold(Delay(a), Delay(b), m); }};

TEST_F(MapAlgebra, ShiftsMoveTheBounds) {
    const struct {
        const Shift& shift;
        int a;
        int b;
        std::pair<int, int> before;
        std::pair<int, int> after;
    } rows[] = {
        {addOne, 3, 0, {10, 20}, {13, 23}},
        {addOne, -3, 0, {10, 20}, {7, 17}},
        {addOne, 0, 0, {10, 20}, {10, 20}},
        {addTwo, 1, 3, {10, 20}, {11, 23}},
        {addTwo, -1, -3, {10, 20}, {9, 17}},
        {minusOne, 3, 0, {10, 20}, {7, 17}},
        {minusOne, -3, 0, {10, 20}, {13, 23}},
        {minusTwo, 1, 3, {10, 20}, {7, 19}}, // crossed: the result bounds every difference
        {minusTwo, -3, -1, {10, 20}, {11, 23}},
        {addLatch, 1, 3, {10, 20}, {11, 23}},
        {minusLatch, 1, 3, {10, 20}, {7, 19}},
        {take, 2, 3, {10, 20}, {8, 23}},
        {take, -2, -3, {10, 20}, {12, 17}},
        {release, 2, 3, {10, 20}, {7, 22}},
        {release, -2, -3, {10, 20}, {13, 18}},
        // The minimum may become greater than the maximum.
        {addTwo, 15, -5, {10, 20}, {25, 15}},
        {minusTwo, 9, -9, {10, 20}, {19, 11}},
        {addLatch, 15, -5, {10, 20}, {25, 15}},
        {minusLatch, 9, -9, {10, 20}, {19, 11}},
        // An undefined operand makes the result undefined, separately for each bound.
        {addOne, undefined, 0, {10, 20}, {undefined, undefined}},
        {addTwo, undefined, 3, {10, 20}, {undefined, 23}},
        {addTwo, 1, undefined, {10, 20}, {11, undefined}},
        {addTwo, 1, 3, {undefined, 20}, {undefined, 23}},
        {addTwo, 1, 3, {10, undefined}, {11, undefined}},
        {minusOne, undefined, 0, {10, 20}, {undefined, undefined}},
        {minusTwo, undefined, 3, {10, 20}, {7, undefined}},
        {minusTwo, 1, undefined, {10, 20}, {undefined, 19}},
        {addLatch, undefined, 3, {10, 20}, {undefined, 23}},
        {addLatch, 1, undefined, {10, 20}, {11, undefined}},
        {minusLatch, undefined, 3, {10, 20}, {7, undefined}},
        {minusLatch, 1, undefined, {10, 20}, {undefined, 19}},
        {take, undefined, 3, {10, 20}, {undefined, 23}},
        {take, 2, undefined, {10, 20}, {8, undefined}},
        {release, undefined, 3, {10, 20}, {7, undefined}},
        {release, 2, undefined, {10, 20}, {undefined, 22}},
        // The other specials absorb ordinary operands.
        {addOne, maximum, 0, {10, 20}, {maximum, maximum}},
        {addTwo, 1, 3, {minimum, maximum}, {minimum, maximum}},
        {addTwo, minimum, maximum, {10, 20}, {minimum, maximum}},
        {minusOne, maximum, 0, {10, 20}, {minimum, minimum}},
        {minusTwo, minimum, maximum, {10, 20}, {minimum, maximum}},
        {minusTwo, 1, 3, {maximum, minimum}, {maximum, minimum}},
        {minusLatch, minimum, maximum, {10, 20}, {minimum, maximum}},
        {take, maximum, maximum, {10, 20}, {minimum, maximum}},
        {release, minimum, minimum, {10, 20}, {maximum, minimum}},
        // Opposite specials have an undefined result.
        {addTwo, maximum, minimum, {minimum, maximum}, {undefined, undefined}},
        {minusOne, maximum, 0, {maximum, minimum}, {undefined, minimum}},
        {take, maximum, minimum, {maximum, maximum}, {undefined, undefined}},
        // Results outside of the ordinary range saturate.
        {addOne, 1, 0, {10, maximum - 1}, {11, maximum}},
        {minusOne, 10, 0, {minimum + 5, 20}, {minimum, 10}},
        {release, 2'000'000'000, 2'000'000'000, {-1'000'000'000, 1'000'000'000}, {minimum, maximum}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.shift.name) + " with " + std::to_string(row.a) + ", " +
                     std::to_string(row.b));
        expect("one key", {{0, row.before}},
               [&](Sweep& s, TimingMap& m) { row.shift.apply(s, row.a, row.b, m); }, {{0, row.after}});
        // All keys are treated alike; none is added or removed.
        expect("three keys", {{0, row.before}, {1, {undefined, undefined}}, {highestClass, row.before}},
               [&](Sweep& s, TimingMap& m) { row.shift.apply(s, row.a, row.b, m); },
               {{0, row.after}, {1, {undefined, undefined}}, {highestClass, row.after}});
        expect("no key", {}, [&](Sweep& s, TimingMap& m) { row.shift.apply(s, row.a, row.b, m); }, {});
    }
}

TEST_F(MapAlgebra, SetupAndHoldExchangeTheirAllowances) {
    for (const int setup : {0, 2, -7, 1000})
        for (const int hold : {0, 3, -11, 4000}) {
            TimingMap taken = mapOf({{0, {10, 20}}, {1, {-5, 5}}});
            TimingMap freed = taken;
            sweep_->takeSetupHold(Delay(setup), Delay(hold), taken);
            sweep_->freeSetupHold(Delay(hold), Delay(setup), freed);
            EXPECT_EQ(entriesOf(taken), entriesOf(freed)) << setup << ", " << hold;
        }
}

} // namespace
