// A compact copy of the arcs behind poles, for a phase that walks the same fan-in again and again: steps on
// it read a few bytes side by side where the database's objects cost a cache miss each.
//
// Poles get slots as they are first seen, arcs get places as the fan of their target is first opened: a later
// walk of the same fan-in finds both nearly in the order in which it asks. The copy is of the database as it
// was when a fan was opened; after host events `renew()` makes it follow.
//
// Cost: what is opened, once: 12 bytes an arc and 24 a pole. A phase that walks a fan-in once does better on
// the database itself.
#pragma once

#include "Pelko/Edge.h"
#include "Vorlen/detail/Work.h"

#include <cstdint>
#include <limits>
#include <vector>

namespace Vorlen::detail {

class FanIn {
public:
    using Slot = std::uint32_t;  // of a pole, from 0
    using Place = std::uint32_t; // of an arc, from 0
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

    // The places of the arcs into a pole, in order.
    struct Fan {
        Place begin = 0;
        Place end = 0;
        std::uint32_t epoch = 0; // when it was last read; 0: never
    };

    // The slot of a pole, a new one where it has none yet.
    Slot getSlot(Pelko::Pole* pole);
    Pelko::Pole* getPole(Slot slot) const { return poles_[slot]; }
    std::size_t getSlotCount() const { return poles_.size(); }

    // May give slots to the sources.
    Fan open(Slot slot) {
        if (fans_[slot].epoch != epoch_)
            read(slot);
        visitArcs(fans_[slot].end - fans_[slot].begin);
        return fans_[slot];
    }
    Pelko::Edge* getEdge(Place place) const { return edges_[place]; }
    // None for an arc that is not active.
    Slot getSource(Place place) const { return sources_[place]; }
    std::size_t getPlaceCount() const { return edges_.size(); }

    // After host events, which may have changed the design: every fan is read again when it is next opened.
    void renew();
    // The same at once, for arcs of a fan that is open.
    void reread(Place begin, Place end);

private:
    // Tells designs apart whose arcs are not the same.
    struct Shape {
        std::uint32_t bound = 0;
        unsigned long count = 0;
        bool operator==(const Shape&) const = default;
    };
    static Shape getShape();

    void read(Slot slot);

    std::vector<Slot> slots_; // by pole index: the slot from 1, or 0
    std::vector<Pelko::Pole*> poles_;
    std::vector<Fan> fans_;
    std::vector<Pelko::Edge*> edges_;
    std::vector<Slot> sources_; // by place
    std::uint32_t epoch_ = 1;
    Shape shape_ = getShape();
};

} // namespace Vorlen::detail
