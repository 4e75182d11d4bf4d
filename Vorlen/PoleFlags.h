// A set of poles that has membership but no order: one bit for each pole, by the pole's dense index.
// Inserting, erasing and looking up are O(1); clearing costs a step for each pole that was inserted.
#pragma once

#include "Pelko/Pole.h"

#include <cstdint>
#include <vector>

namespace Vorlen {

class PoleFlags {
public:
    bool contains(const Pelko::Pole* pole) const {
        const std::size_t word = pole->getIndex() / 64;
        return word < words_.size() && (words_[word] & bitOf(pole)) != 0;
    }

    void insert(const Pelko::Pole* pole) {
        const std::size_t word = pole->getIndex() / 64;
        if (word >= words_.size())
            words_.resize(word + word / 2 + 1);
        if (words_[word] == 0)
            touched_.push_back(static_cast<std::uint32_t>(word));
        words_[word] |= bitOf(pole);
    }

    void erase(const Pelko::Pole* pole) {
        const std::size_t word = pole->getIndex() / 64;
        if (word >= words_.size())
            return;
        words_[word] &= ~bitOf(pole);
        if (words_[word] == 0 && !touched_.empty() && touched_.back() == word)
            touched_.pop_back();
    }

    void clear() {
        for (const std::uint32_t word : touched_)
            words_[word] = 0;
        touched_.clear();
    }

private:
    static std::uint64_t bitOf(const Pelko::Pole* pole) {
        return std::uint64_t{1} << (pole->getIndex() % 64);
    }

    std::vector<std::uint64_t> words_;
    std::vector<std::uint32_t> touched_; // words that were not empty; some may be again
};

} // namespace Vorlen
