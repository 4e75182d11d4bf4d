// Which poles lie on the own paths of which clocks. A clock's own paths lead from its root through a clock
// pin and through data to a check of a clock pin that it reaches too.
//
// They are found for some clocks at once, as a row of bits for each pole: forwards the clocks that reach the
// pole, then backwards those whose checks it reaches too. Data that meets on one net reaches everything from
// there, and everything reaches the net. So the way forwards is free only in the first half of the data; in
// the second it keeps to what leads to a check of these clocks, which is found backwards before. Both are
// then small, and so is what they have in common.
#pragma once

#include "analysis/PoleFlow.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Analysis {

// The own paths of some clocks, which are known by their number among those last given to find().
class OwnPaths {
public:
    // How many clocks find() takes at most.
    static constexpr std::size_t most = 512;

    // For up to so many clocks at once. Memory: a bit for each of them and each pole.
    OwnPaths(const PoleFlow& flow, std::size_t clocks);

    // Finds the own paths of the clocks with these roots, which replace those found before.
    void find(std::span<const Place> roots);
    bool contains(Place place, std::size_t clock) const {
        return (row(place)[clock / 64] >> (clock % 64) & 1) != 0;
    }
    // Calls `visit(place, clock)` for each pole on each own path, by place.
    template <class Visit>
    void forEach(Visit visit) const {
        for (const Place place : touched_)
            for (std::size_t word = 0; word < words_; ++word)
                for (std::uint64_t left = row(place)[word]; left != 0; left &= left - 1)
                    visit(place, word * 64 + static_cast<std::size_t>(std::countr_zero(left)));
    }

private:
    std::uint64_t* row(Place place) { return &rows_[place.number() * words_]; }
    const std::uint64_t* row(Place place) const { return &rows_[place.number() * words_]; }
    void reach(Place place) { reached_[place.number() / 64] |= std::uint64_t{1} << (place.number() % 64); }
    void clear();
    void findUseful();
    template <class Passes>
    void flood(Passes passes);
    void prune(Place place);

    const PoleFlow& flow_;
    const std::size_t words_;
    std::vector<std::uint64_t> rows_;
    std::vector<std::uint64_t> reached_; // a bit for each place
    std::vector<Place> touched_;         // places with a row that may not be empty, in order
    Base::IndexVector<Place, bool>
        isUseful_; // in the second half of the data: leads to a check of these clocks
    std::vector<Place> useful_;
    std::vector<std::uint64_t> kept_;
};

} // namespace Analysis
