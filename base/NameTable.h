// A number for some of the names of a Names. Looking up is one step, and so is forgetting all of them.
#pragma once

#include "base/Index.h"
#include "base/LargeTables.h"
#include "base/Names.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace Base {

class NameTable {
public:
    // none where the name has no number.
    std::uint32_t find(Name name) const {
        const auto at = static_cast<std::size_t>(name);
        return at < entries_.size() && entries_[at].round == round_ ? entries_[at].value : none;
    }
    // False where the name has a number already, which it keeps.
    bool add(Name name, std::uint32_t value) {
        const auto at = static_cast<std::size_t>(name);
        if (at >= entries_.size())
            entries_.resize(std::max(at + 1, 2 * entries_.size()));
        if (entries_[at].round == round_)
            return false;
        entries_[at] = {value, round_};
        return true;
    }
    void clear() { ++round_; }

private:
    struct Entry {
        std::uint32_t value = 0;
        std::uint32_t round = 0; // in which it was added
    };
    LargeVector<Entry> entries_; // by name
    std::uint32_t round_ = 1;
};

} // namespace Base
