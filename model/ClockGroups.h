// Which clocks set_clock_groups separates.
//
// Two clocks are separated by a statement if both are in groups of it and share none of them. A statement
// with a single group separates its clocks from all others, those included that are defined after it. A clock
// may be in several groups of a statement.
#pragma once

#include "design/Constraints.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace Model {

class ClockGroups {
public:
    using Group = std::vector<std::uint32_t>; // clocks
    using Groups = std::vector<Group>;        // disjoint

    // Linear in the clocks that the statements name.
    ClockGroups(const std::vector<Design::ClockGroups>& statements, std::size_t clocks);

    // The first statement that separates two clocks. Linear in the groups that name one of them.
    std::optional<std::uint32_t> separating(std::uint32_t a, std::uint32_t b) const;

    // A statement as statements without clocks in several groups, for a host that knows only those: together
    // they separate the same pairs. Each clock in several groups, unless it shares a group with all others,
    // makes one more.
    static std::vector<Groups> disjoint(const Groups& groups);

private:
    // A clock in a group of a statement; sorted.
    struct Membership {
        std::uint32_t statement = 0, group = 0;

        auto operator<=>(const Membership&) const = default;
    };

    std::vector<std::vector<Membership>> of_; // by clock
    std::vector<bool> single_;                // by statement
};

} // namespace Model
