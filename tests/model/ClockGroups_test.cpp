// Clock groups: which pairs they separate, also when clocks are in several groups, as told by the groups'
// definition and as the host is told.
#include "model/ClockGroups.h"
#include "tests/support/Rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

namespace {

using Model::ClockGroups;

constexpr std::uint32_t clocks = 6;

bool contains(const ClockGroups::Group& group, std::uint32_t clock) {
    return std::ranges::find(group, clock) != group.end();
}

// Word for word: in groups of the statement, and none in common; a single group is against all others.
bool separates(const ClockGroups::Groups& groups, std::uint32_t a, std::uint32_t b) {
    bool aIn = false, bIn = false;
    for (const ClockGroups::Group& group : groups) {
        if (contains(group, a) && contains(group, b))
            return false;
        aIn = aIn || contains(group, a);
        bIn = bIn || contains(group, b);
    }
    return groups.size() == 1 ? aIn != bIn : aIn && bIn;
}

// "ac bd": the pairs, by letters.
template <class Separated>
std::string pairs(Separated isSeparated) {
    std::string text;
    for (std::uint32_t a = 0; a < clocks; ++a)
        for (std::uint32_t b = a + 1; b < clocks; ++b)
            if (isSeparated(a, b))
                text += (text.empty() ? "" : " ") + std::string{static_cast<char>('a' + a)} +
                        static_cast<char>('a' + b);
    return text;
}

std::string pairsOf(const std::vector<ClockGroups::Groups>& statements) {
    return pairs([&](std::uint32_t a, std::uint32_t b) {
        return std::ranges::any_of(
            statements, [&](const ClockGroups::Groups& groups) { return separates(groups, a, b); });
    });
}

std::vector<Design::ClockGroups> stated(const std::vector<ClockGroups::Groups>& all) {
    std::vector<Design::ClockGroups> statements;
    for (const ClockGroups::Groups& groups : all)
        statements.push_back({"", groups, {}});
    return statements;
}

bool isDisjoint(const ClockGroups::Groups& groups) {
    std::vector<bool> seen(clocks);
    for (const ClockGroups::Group& group : groups)
        for (const std::uint32_t clock : group) {
            if (seen[clock])
                return false;
            seen[clock] = true;
        }
    return true;
}

TEST(ClockGroups, SeparateClocksThatShareNone) {
    const struct {
        ClockGroups::Groups groups;
        std::string expected;
    } rows[] = {
        {{{0}, {1}}, "ab"},
        {{{0, 1}, {1, 2}}, "ac"},
        {{{0, 1}, {2, 3}}, "ac ad bc bd"},
        {{{0}, {0}}, ""},
        {{{0, 1}, {0, 1}}, ""},
        {{{0, 2}, {1, 2}, {2, 3}}, "ab ad bd"},
        {{{0, 1}, {1, 2}, {2, 3}, {3, 4}}, "ac ad ae bd be ce"},
        {{{0, 1}, {1, 2}, {2, 0}}, ""},
        {{{0, 1}, {1, 2}, {3}}, "ac ad bd cd"},
        {{{0}}, "ab ac ad ae af"},
        {{{0, 1, 2, 3, 4}}, "af bf cf df ef"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        const ClockGroups groups(stated({row.groups}), clocks);
        EXPECT_EQ(pairs([&](auto a, auto b) { return groups.separating(a, b).has_value(); }), row.expected);
        EXPECT_EQ(pairsOf(ClockGroups::disjoint(row.groups)), row.expected);
    }
}

TEST(ClockGroups, NameTheFirstStatement) {
    const ClockGroups groups(stated({{{0}, {1}}, {{2}}, {{0, 1}, {1, 2}}, {{0}, {1, 2}}}), clocks);
    EXPECT_EQ(groups.separating(0, 1), 0U);
    EXPECT_EQ(groups.separating(1, 0), 0U);
    EXPECT_EQ(groups.separating(0, 2), 1U);
    EXPECT_EQ(groups.separating(5, 2), 1U);
    EXPECT_EQ(groups.separating(3, 4), std::nullopt);
    EXPECT_EQ(groups.separating(2, 2), std::nullopt);
}

TEST(ClockGroups, AgreeWithTheirDefinition) {
    std::mt19937 random(14);
    const auto below = [&](unsigned bound) { return static_cast<unsigned>(random() % bound); };
    for (int run = 0; run < 20'000; ++run) {
        std::vector<ClockGroups::Groups> all(1 + below(3));
        for (ClockGroups::Groups& groups : all) {
            groups.resize(1 + below(5));
            for (ClockGroups::Group& group : groups) {
                for (std::uint32_t clock = 0; clock < clocks; ++clock)
                    if (below(3) == 0)
                        group.push_back(clock);
                if (group.empty())
                    group.push_back(below(clocks));
            }
            const std::vector<ClockGroups::Groups> parts = ClockGroups::disjoint(groups);
            EXPECT_TRUE(std::ranges::all_of(parts, isDisjoint)) << run;
            EXPECT_EQ(pairsOf(parts), pairsOf({groups})) << run;
        }
        const ClockGroups groups(stated(all), clocks);
        ASSERT_EQ(pairs([&](auto a, auto b) { return groups.separating(a, b).has_value(); }), pairsOf(all))
            << run;
    }
}

} // namespace
