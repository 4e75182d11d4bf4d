// Members of a table by the owner that each of them has: the pins of each cell, the arcs out of each node.
//
// The members of an owner are in the order of their table. Building is linear; a look-up is one step. An
// owner and a member take one index each.
#pragma once

#include "base/Index.h"

#include <numeric>
#include <span>
#include <vector>

namespace Base {

template <class Owner, class Member>
class Groups {
public:
    // ownerOf(member) returns none for a member without an owner.
    template <class OwnerOf>
    void assign(std::size_t owners, std::size_t members, OwnerOf ownerOf) {
        first_.assign(owners + 1, 0);
        for (const Member member : firstIds<Member>(members))
            if (const Owner owner = ownerOf(member); owner != none)
                ++first_[owner.number() + 1];
        std::partial_sum(first_.begin(), first_.end(), first_.begin());
        members_.resize(first_.back());
        std::vector<std::uint32_t> next(first_.begin(), first_.end() - 1);
        for (const Member member : firstIds<Member>(members))
            if (const Owner owner = ownerOf(member); owner != none)
                members_[next[owner.number()]++] = member;
    }

    bool empty() const { return first_.empty(); }
    std::span<const Member> operator[](Owner owner) const {
        const std::uint32_t first = first_[owner.number()];
        return std::span(members_).subspan(first, first_[owner.number() + 1] - first);
    }

private:
    std::vector<std::uint32_t> first_; // into members_, by owner, and the end
    std::vector<Member> members_;
};

} // namespace Base
