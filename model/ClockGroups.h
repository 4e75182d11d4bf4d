// Which clocks set_clock_groups separates.
//
// A statement separates two clocks if both are in groups of it and share no group. A statement with a single
// group separates its clocks from all others, including those that are defined after it. A clock may be in
// several groups of a statement.
#pragma once

#include "design/Constraints.h"
#include "model/Ids.h"

#include <cstdint>
#include <vector>

namespace Model {

class ClockGroups {
public:
    using Group = std::vector<ClockId>;
    using Groups = std::vector<Group>; // disjoint; of one statement

    // Linear in the clocks that the statements name.
    ClockGroups(const Base::IndexVector<ClockGroupsId, Design::ClockGroups>& statements, std::size_t clocks);

    // The first statement that separates two clocks; none if there is none. Linear in the groups that name
    // one of them.
    ClockGroupsId separating(ClockId a, ClockId b) const;

    // Returns statements in which no clock is in several groups, for a host that knows only those. Together
    // they separate the same pairs. Each clock in several groups costs one more statement, unless it shares a
    // group with all others.
    static std::vector<Groups> disjoint(const Groups& groups);

private:
    // A clock in a group of a statement; sorted.
    struct Membership {
        ClockGroupsId statement;
        std::uint32_t group = 0; // of the statement

        auto operator<=>(const Membership&) const = default;
    };

    Base::IndexVector<ClockId, std::vector<Membership>> of_;
    Base::IndexVector<ClockGroupsId, bool> single_;
};

} // namespace Model
