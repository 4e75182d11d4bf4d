// Delays: arithmetic and order over all pairs of special values and bounds of the ordinary range, against a
// plain reference that computes in 64 bits.
#include "Pelko/Delay.h"
#include "tests/support/Rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <type_traits>
#include <vector>

namespace Contract {

namespace {

using Pelko::Delay;

constexpr int U = -2147483647 - 1; // undefined
constexpr int m = -2147483647;     // minimum
constexpr int M = 2147483647;      // maximum

// Specials, both bounds of the ordinary range, halves whose sums reach them, and everyday values; ascending.
const std::vector<int> edges{
    U, m, m + 1, m + 2,      -1073741825, -1073741824, -1073741823, -1000, -2,    -1, 0,
    1, 2, 1000,  1073741822, 1073741823,  1073741824,  1073741825,  M - 2, M - 1, M};

// --- The reference ---

// A value is undefined, below all numbers, a number, or above all numbers.
struct Wide {
    enum Kind { No, Below, Number, Above } kind;
    std::int64_t number;
};

Wide widen(int raw) {
    if (raw == U)
        return {Wide::No, 0};
    if (raw == m)
        return {Wide::Below, 0};
    if (raw == M)
        return {Wide::Above, 0};
    return {Wide::Number, raw};
}

int narrow(const Wide& wide) {
    if (wide.kind == Wide::No)
        return U;
    if (wide.kind == Wide::Below || (wide.kind == Wide::Number && wide.number <= m))
        return m;
    if (wide.kind == Wide::Above || (wide.kind == Wide::Number && wide.number >= M))
        return M;
    return static_cast<int>(wide.number);
}

Wide opposite(const Wide& a) {
    const Wide::Kind kinds[] = {Wide::No, Wide::Above, Wide::Number, Wide::Below};
    return {kinds[a.kind], -a.number};
}

Wide sum(const Wide& a, const Wide& b) {
    if (a.kind == Wide::No || b.kind == Wide::No)
        return {Wide::No, 0};
    if (a.kind == Wide::Number && b.kind == Wide::Number)
        return {Wide::Number, a.number + b.number};
    if (a.kind == Wide::Number)
        return b;
    if (b.kind == Wide::Number || a.kind == b.kind)
        return a;
    return {Wide::No, 0};
}

void comparePair(int a, int b) {
    const int plus = narrow(sum(widen(a), widen(b)));
    const int minus = narrow(sum(widen(a), opposite(widen(b))));
    ASSERT_EQ(int(Delay(a) + Delay(b)), plus) << a << " + " << b;
    ASSERT_EQ(int(Delay(a) - Delay(b)), minus) << a << " - " << b;
    Delay increased(a), decreased(a);
    const Delay& fromIncrease = increased += Delay(b);
    const Delay& fromDecrease = decreased -= Delay(b);
    ASSERT_EQ(int(increased), plus);
    ASSERT_EQ(int(decreased), minus);
    ASSERT_EQ(&fromIncrease, &increased);
    ASSERT_EQ(&fromDecrease, &decreased);
    ASSERT_EQ(Delay(a) == Delay(b), a == b);
    ASSERT_EQ(Delay(a) != Delay(b), a != b);
    ASSERT_EQ(Delay(a) < Delay(b), std::int64_t{a} < std::int64_t{b});
}

// --- Tables ---

TEST(Delay, Specials) {
    struct {
        Delay delay;
        int raw;
        bool defined;
        bool ordinary;
        const char* label;
    } const rows[] = {
        {Delay::getUndefined(), static_cast<int>(0x80000000), false, false, "undefined"},
        {Delay::getMinimum(), static_cast<int>(0x80000001), true, false, "minimum"},
        {Delay::getMaximum(), 0x7FFFFFFF, true, false, "maximum"},
        {Delay::getNone(), 0, true, true, "0"},
        {Delay(m + 1), -2147483646, true, true, "-2147483646"},
        {Delay(M - 1), 2147483646, true, true, "2147483646"},
        {Delay(-1), -1, true, true, "-1"},
        {Delay(1500), 1500, true, true, "1500"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(int(row.delay), row.raw);
        EXPECT_EQ(row.delay.isDefined(), row.defined) << row.label;
        EXPECT_EQ(row.delay.isOrdinary(), row.ordinary) << row.label;
        EXPECT_EQ(row.delay._getLabel(), row.label);
    }
}

// Worked out by hand, to check the reference as well.
TEST(Delay, Sums) {
    struct {
        int a, b, sum, difference;
    } const rows[] = {
        {2, 3, 5, -1},
        {-2, 3, 1, -5},
        {0, 0, 0, 0},
        {U, U, U, U},
        {U, 5, U, U},
        {5, U, U, U},
        {U, m, U, U},
        {U, M, U, U},
        {m, U, U, U},
        {M, U, U, U},
        {M, 5, M, M},
        {M, -5, M, M},
        {m, 5, m, m},
        {m, -5, m, m},
        {5, M, M, m},
        {5, m, m, M},
        {-5, M, M, m},
        {-5, m, m, M},
        {M, M, M, U},
        {m, m, m, U},
        {M, m, U, M},
        {m, M, U, m},
        {M - 1, 1, M, M - 2},
        {M - 1, 2, M, M - 3},
        {M - 1, M - 1, M, 0},
        {M - 2, 1, M - 1, M - 3},
        {m + 1, -1, m, m + 2},
        {m + 1, 1, m + 2, m},
        {m + 1, m + 1, m, 0},
        {1073741824, 1073741823, M, 1},
        {1073741824, 1073741822, M - 1, 2},
        {-1073741824, -1073741823, m, -1},
        {-1073741824, 1073741823, -1, m},
        {m + 1, M - 1, 0, m},
        {M - 1, m + 1, 0, M},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(int(Delay(row.a) + Delay(row.b)), row.sum) << row.a << " + " << row.b;
        EXPECT_EQ(int(Delay(row.a) - Delay(row.b)), row.difference) << row.a << " - " << row.b;
    }
}

TEST(Delay, Negation) {
    struct {
        int raw, negated;
    } const rows[] = {{0, 0}, {5, -5}, {-5, 5}, {U, U}, {m, M}, {M, m}, {m + 1, M - 1}, {M - 1, m + 1}};
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(int(-Delay(row.raw)), row.negated);
    }
}

TEST(Delay, AllPairs) {
    for (int a : edges) {
        ASSERT_EQ(int(-Delay(a)), narrow(opposite(widen(a)))) << a;
        for (int b : edges)
            comparePair(a, b);
    }
}

TEST(Delay, RandomPairs) {
    const unsigned seed = 4711;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 generator(seed);
    std::uniform_int_distribution<int> any(U, M);
    std::uniform_int_distribution<std::size_t> edge(0, edges.size() - 1);
    for (int i = 0; i < 100000; ++i) {
        const int a = i % 4 == 0 ? edges[edge(generator)] : any(generator);
        const int b = i % 4 == 1 ? edges[edge(generator)] : any(generator);
        comparePair(a, b);
    }
}

// One total order: undefined, minimum, ordinary values, maximum.
TEST(Delay, Order) {
    std::vector<Delay> delays;
    for (int raw : edges)
        delays.emplace_back(raw);
    ASSERT_TRUE(std::is_sorted(edges.begin(), edges.end()));
    for (unsigned seed = 0; seed < 5; ++seed) {
        std::shuffle(delays.begin(), delays.end(), std::mt19937(seed));
        std::sort(delays.begin(), delays.end());
        for (std::size_t i = 0; i < edges.size(); ++i)
            EXPECT_EQ(int(delays[i]), edges[i]);
    }
}

TEST(Delay, CopiesAndAssigns) {
    for (int raw : edges) {
        const Delay original(raw);
        Delay copy(original), assigned(1);
        EXPECT_EQ(&(assigned = original), &assigned);
        copy += Delay(0);
        EXPECT_EQ(int(copy), raw);
        EXPECT_EQ(int(assigned), raw);
        assigned = *&assigned;
        EXPECT_EQ(int(assigned), raw);
    }
}

TEST(Delay, IsAValueOfTheFramework) {
    static_assert(std::is_base_of_v<Ruvex::Stuff, Delay>);
    static_assert(std::has_virtual_destructor_v<Delay>);
    static_assert(std::is_constructible_v<Delay, int> && std::is_constructible_v<int, Delay>);
    // No implicit conversion between an integer and a time.
    static_assert(!std::is_convertible_v<int, Delay> && !std::is_convertible_v<Delay, int>);
    const std::unique_ptr<Ruvex::Stuff> stuff = std::make_unique<Delay>(7);
    EXPECT_EQ(stuff->_getLabel(), "7");
}

} // namespace

} // namespace Contract
