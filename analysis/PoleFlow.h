// The active arcs of a cell, with its poles in the order in which data flows.
//
// A pole has its place after all poles that drive it, and a check after its clock pole. It costs a few words
// for each pole and each arc.
#pragma once

#include "base/Index.h"

#include "Pelko/Edge.h"
#include "Pelko/Pole.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Pelko {
class Cell;
} // namespace Pelko

namespace Analysis {

using Place = Base::Index<struct PlaceTag>;

// The clock pole of a check; null for any other pole.
const Pelko::Pole* clockPoleOf(const Pelko::Pole* pole);

class PoleFlow {
public:
    struct Arc {
        Place target;
        const Pelko::Edge* edge; // null: no arc, but the tie of a clock pole to a check
    };
    struct HeldArc {
        Place source, target;
        const Pelko::Edge* edge;
    };

    // Throws std::logic_error if the active arcs have a loop.
    explicit PoleFlow(const Pelko::Cell& cell);

    std::size_t size() const { return poles_.size(); }
    auto places() const { return poles_.ids(); }
    Pelko::Pole* pole(Place place) const { return poles_[place]; }
    Place placeOf(const Pelko::Pole* pole) const { return places_[pole->getIndex()]; }

    std::span<const Arc> outOf(Place place) const { return slice(arcs_, first_, place); }
    // The sources of the arcs into a place. Ties are not arcs.
    std::span<const Place> into(Place place) const { return slice(sources_, firstInto_, place); }
    // Every arc is held by the one of its poles that has the smaller fan. So even a pole that a hundred
    // thousand arcs lead to holds few, and finding the arcs among some poles costs little.
    std::span<const HeldArc> heldBy(Place place) const { return slice(held_, firstHeld_, place); }

    // Whether the pole is a clock pole, or leads to one. All others are data.
    bool isClockSide(Place place) const { return isClockSide_[place]; }
    // The last place of the first half of the data.
    Place middle() const { return middle_; }

private:
    // Where the members of each place begin in a table of all; one entry more than places.
    using Firsts = std::vector<std::uint32_t>;

    template <class Member>
    static std::span<const Member> slice(const std::vector<Member>& members, const Firsts& first,
                                         Place place) {
        const std::uint32_t begin = first[place.number()];
        return std::span(members).subspan(begin, first[place.number() + 1] - begin);
    }

    void sort(const Pelko::Cell& cell);
    void fillArcs();
    void fillSources();
    void fillHeld();
    void findSides();
    Place holderOf(Place source, const Arc& arc) const {
        return outOf(source).size() <= into(arc.target).size() ? source : arc.target;
    }

    Base::IndexVector<Place, Pelko::Pole*> poles_;
    std::vector<Place> places_; // by the pole's index
    std::vector<Arc> arcs_;
    std::vector<Place> sources_;
    std::vector<HeldArc> held_;
    Firsts first_, firstInto_, firstHeld_;
    Base::IndexVector<Place, bool> isClockSide_;
    Place middle_{std::uint32_t{0}};
};

} // namespace Analysis
