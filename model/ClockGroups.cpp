// Memberships of clocks, and statements with clocks in several groups.
#include "model/ClockGroups.h"

#include <algorithm>
#include <map>

namespace Model {

namespace {

using Numbers = std::vector<std::uint32_t>; // of groups, in order

bool shareOne(const Numbers& a, const Numbers& b) {
    for (auto x = a.begin(), y = b.begin(); x != a.end() && y != b.end();) {
        if (*x == *y)
            return true;
        ++(*x < *y ? x : y);
    }
    return false;
}

// The groups of each clock.
std::map<ClockId, Numbers> groupsOfClocks(const ClockGroups::Groups& groups) {
    std::map<ClockId, Numbers> of;
    for (std::uint32_t number = 0; number < groups.size(); ++number)
        for (const ClockId clock : groups[number])
            if (Numbers& own = of[clock]; own.empty() || own.back() != number)
                own.push_back(number);
    return of;
}

} // namespace

ClockGroups::ClockGroups(const Base::IndexVector<ClockGroupsId, Design::ClockGroups>& statements,
                         std::size_t clocks)
    : of_(clocks) {
    for (const ClockGroupsId statement : statements.ids()) {
        const auto& groups = statements[statement].groups;
        single_.push_back(groups.size() == 1);
        for (std::uint32_t group = 0; group < groups.size(); ++group)
            for (const ClockId clock : groups[group])
                of_[clock].push_back({statement, group});
    }
}

ClockGroupsId ClockGroups::separating(ClockId a, ClockId b) const {
    const std::vector<Membership>&first = of_[a], &second = of_[b];
    auto x = first.begin(), y = second.begin();
    while (x != first.end() || y != second.end()) {
        const ClockGroupsId statement = y == second.end() || (x != first.end() && x->statement < y->statement)
                                            ? x->statement
                                            : y->statement;
        const auto isLater = [statement](const Membership& member) { return member.statement > statement; };
        const auto xEnd = std::find_if(x, first.end(), isLater),
                   yEnd = std::find_if(y, second.end(), isLater);
        const bool both = x != xEnd && y != yEnd;
        bool shared = false;
        for (; both && !shared && x != xEnd && y != yEnd; ++(*x < *y ? x : y))
            shared = *x == *y;
        if (!shared && (both || single_[statement]))
            return statement;
        x = xEnd;
        y = yEnd;
    }
    return Base::none;
}

// The clocks of one group each are one statement. Clocks that are in the same several groups form one
// group against every clock that is in none of these.
std::vector<ClockGroups::Groups> ClockGroups::disjoint(const Groups& groups) {
    if (groups.size() == 1)
        return {groups};
    Groups alone(groups.size());
    std::map<Numbers, Group> several;
    for (auto& [clock, of] : groupsOfClocks(groups))
        (of.size() == 1 ? alone[of.front()] : several[of]).push_back(clock);

    std::vector<Groups> statements;
    for (auto own = several.begin(); own != several.end(); ++own) {
        Group others;
        for (std::uint32_t number = 0; number < alone.size(); ++number)
            if (!std::ranges::binary_search(own->first, number))
                others.insert(others.end(), alone[number].begin(), alone[number].end());
        for (auto later = std::next(own); later != several.end(); ++later)
            if (!shareOne(own->first, later->first))
                others.insert(others.end(), later->second.begin(), later->second.end());
        if (!others.empty())
            statements.push_back({own->second, std::move(others)});
    }
    std::erase_if(alone, [](const Group& group) { return group.empty(); });
    if (alone.size() > 1)
        statements.push_back(std::move(alone));
    return statements;
}

} // namespace Model
