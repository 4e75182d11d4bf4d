// Clock groups: which pairs they separate, also when clocks are in several groups, as told by the groups'
// definition and as the host gets them.
#include "model/ClockGroups.h"
#include "tests/support/Rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

namespace {

using Model::ClockGroups;

constexpr std::uint32_t clocks = 6;

auto allClocks() { return Base::firstIds<Design::ClockId>(clocks); }

using Numbers = std::vector<std::vector<std::uint32_t>>;

ClockGroups::Groups groupsOf(const Numbers& numbers) {
    ClockGroups::Groups groups;
    for (const std::vector<std::uint32_t>& group : numbers) {
        groups.emplace_back();
        for (const std::uint32_t clock : group)
            groups.back().push_back(Design::ClockId(clock));
    }
    return groups;
}

bool contains(const ClockGroups::Group& group, Design::ClockId clock) {
    return std::ranges::find(group, clock) != group.end();
}

// Word for word: in groups of the statement, and none in common; a single group is against all others.
bool separates(const ClockGroups::Groups& groups, Design::ClockId a, Design::ClockId b) {
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
    for (const Design::ClockId a : allClocks())
        for (const Design::ClockId b : allClocks())
            if (a < b && isSeparated(a, b))
                text += (text.empty() ? "" : " ") + std::string{static_cast<char>('a' + a.number())} +
                        static_cast<char>('a' + b.number());
    return text;
}

std::string pairsOf(const std::vector<ClockGroups::Groups>& statements) {
    return pairs([&](Design::ClockId a, Design::ClockId b) {
        return std::ranges::any_of(
            statements, [&](const ClockGroups::Groups& groups) { return separates(groups, a, b); });
    });
}

using Statements = Base::IndexVector<Design::ClockGroupsId, Design::ClockGroups>;

Statements stated(const std::vector<ClockGroups::Groups>& all) {
    Statements statements;
    for (const ClockGroups::Groups& groups : all)
        statements.push_back({"", groups, {}});
    return statements;
}

bool isDisjoint(const ClockGroups::Groups& groups) {
    Base::IndexVector<Design::ClockId, bool> seen(clocks);
    for (const ClockGroups::Group& group : groups)
        for (const Design::ClockId clock : group) {
            if (seen[clock])
                return false;
            seen[clock] = true;
        }
    return true;
}

TEST(ClockGroups, SeparateClocksThatShareNone) {
    const struct {
        Numbers groups;
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
        const ClockGroups::Groups of = groupsOf(row.groups);
        const ClockGroups groups(stated({of}), clocks);
        EXPECT_EQ(pairs([&](auto a, auto b) { return groups.separating(a, b) != Base::none; }), row.expected);
        EXPECT_EQ(pairsOf(ClockGroups::disjoint(of)), row.expected);
    }
}

TEST(ClockGroups, NameTheFirstStatement) {
    const ClockGroups groups(
        stated({groupsOf({{0}, {1}}), groupsOf({{2}}), groupsOf({{0, 1}, {1, 2}}), groupsOf({{0}, {1, 2}})}),
        clocks);
    const auto separating = [&](std::uint32_t a, std::uint32_t b) {
        return groups.separating(Design::ClockId(a), Design::ClockId(b));
    };
    const Design::ClockGroupsId first(0U), second(1U), none;
    EXPECT_EQ(separating(0, 1), first);
    EXPECT_EQ(separating(1, 0), first);
    EXPECT_EQ(separating(0, 2), second);
    EXPECT_EQ(separating(5, 2), second);
    EXPECT_EQ(separating(3, 4), none);
    EXPECT_EQ(separating(2, 2), none);
}

TEST(ClockGroups, AgreeWithTheirDefinition) {
    std::mt19937 random(14);
    const auto below = [&](unsigned bound) { return static_cast<unsigned>(random() % bound); };
    for (int run = 0; run < 20'000; ++run) {
        std::vector<ClockGroups::Groups> all(1 + below(3));
        for (ClockGroups::Groups& groups : all) {
            groups.resize(1 + below(5));
            for (ClockGroups::Group& group : groups) {
                for (const Design::ClockId clock : allClocks())
                    if (below(3) == 0)
                        group.push_back(clock);
                if (group.empty())
                    group.push_back(Design::ClockId(below(clocks)));
            }
            const std::vector<ClockGroups::Groups> parts = ClockGroups::disjoint(groups);
            EXPECT_TRUE(std::ranges::all_of(parts, isDisjoint)) << run;
            EXPECT_EQ(pairsOf(parts), pairsOf({groups})) << run;
        }
        const ClockGroups groups(stated(all), clocks);
        ASSERT_EQ(pairs([&](auto a, auto b) { return groups.separating(a, b) != Base::none; }), pairsOf(all))
            << run;
    }
}

} // namespace
