// Tables and sets by name. A look-up is one step, and so is clearing.
#pragma once

#include "base/Index.h"
#include "base/LargeTables.h"
#include "base/Names.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace Base {

// An index for some of the names of a Names.
template <class Id>
class NameTable {
public:
    // Returns none if the name has no index.
    Id find(Name name) const {
        const auto at = static_cast<std::size_t>(name);
        return at < entries_.size() && entries_[at].round == round_ ? entries_[at].id : Id();
    }
    // Returns false if the name has an index already, which it keeps.
    bool add(Name name, Id id) {
        const auto at = static_cast<std::size_t>(name);
        if (at >= entries_.size())
            entries_.resize(std::max(at + 1, 2 * entries_.size()));
        if (entries_[at].round == round_)
            return false;
        entries_[at] = {id, round_};
        return true;
    }
    void clear() { ++round_; }

private:
    struct Entry {
        Id id;
        std::uint32_t round = 0; // in which it was added
    };
    LargeVector<Entry> entries_; // by name
    std::uint32_t round_ = 1;
};

// Some of the names of a Names.
class NameSet {
public:
    bool contains(Name name) const {
        const auto at = static_cast<std::size_t>(name);
        return at < rounds_.size() && rounds_[at] == round_;
    }
    // Returns false if the name is in the set already.
    bool add(Name name) {
        const auto at = static_cast<std::size_t>(name);
        if (at >= rounds_.size())
            rounds_.resize(std::max(at + 1, 2 * rounds_.size()));
        return std::exchange(rounds_[at], round_) != round_;
    }
    void clear() { ++round_; }

private:
    LargeVector<std::uint32_t> rounds_; // by name: in which round it was added last
    std::uint32_t round_ = 1;
};

} // namespace Base
