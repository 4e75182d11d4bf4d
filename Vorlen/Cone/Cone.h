// The cone of a sweep: the poles behind its end points, in slots, and the arcs between them in compact runs,
// with an order in which every pole comes before the poles that drive it.
//
// In a depth-first walk each step waits for what it reads. A cone is read in the order of a queue, so that
// what comes next is known and can be prefetched; it is sorted afterwards, on the copy. If it has a loop,
// there is no such order, and the caller walks depth-first, which handles the loop.
//
// In addition, a cone gives slots to single poles, for walks that need no order.
//
// Cost: that of SlotTable; 17 bytes for each pole of the cone and 12 for each arc, with 8 more for each arc
// while its delays are kept.
#pragma once

#include "Pelko/Edge.h"
#include "Vorlen/Cone/SlotTable.h"
#include "Vorlen/Cone/TimingTable.h"
#include "Vorlen/detail/EventPump.h"
#include "Vorlen/detail/LargeVector.h"
#include "Vorlen/detail/Work.h"

#include <cstdint>
#include <vector>

namespace Vorlen::detail {

class Cone {
public:
    // How far ahead of a walk in order it pays to prefetch.
    static constexpr std::size_t ahead = 16;
    static constexpr std::size_t nearAhead = 6;

    // The state of a pole when it was read.
    enum Flag : std::uint8_t {
        Start = 1,   // data starts here: the cone does not continue behind it
        Closed = 2,  // it was marked: no walk enters it
        Special = 4, // it is a check, or an exception opens or closes here
    };

    // --- Slots ---

    // The slot of the pole, or `noSlot`.
    Slot find(const Pelko::Pole* pole) const { return slots_.find(pole->getIndex()); }
    // The slot of the pole, a new one if it has none.
    Slot obtain(Pelko::Pole* pole);
    void prefetchSlot(const Pelko::Pole* pole) const { slots_.prefetch(pole->getIndex()); }
    const LargeVector<Pelko::Pole*>& getPoles() const { return poles_; } // by slot
    std::size_t getSlotCount() const { return poles_.size(); }
    // The poles of all slots, in stamp order.
    LargeVector<Pelko::Pole*> getSortedPoles() const;

    // --- The cone ---

    using IsStart = bool (*)(const Pelko::Pole*);

    // Reads the cone behind the ends, which get the first slots, in order. The cone must have no slots yet.
    // Returns false if it has a loop, or if host events have changed the design. Then there is no order, and
    // `forget()` is due.
    bool read(const std::vector<Pelko::Pole*>& ends, IsStart isStart);
    void forget() { *this = Cone(); }

    // Whether the cone was read and the design still has the same poles and arcs. Delays and classes of arcs,
    // and which arcs are active, may have changed.
    bool isCurrent() const { return isRead_ && shape_ == getShape(); }
    // Whether, in addition, all its slots are those of poles that it has read.
    bool isWhole() const { return isCurrent() && order_.size() == poles_.size(); }

    // All slots; every pole comes before the poles that drive it.
    const LargeVector<Slot>& getOrder() const { return order_; }
    std::uint8_t getFlags(Slot slot) const { return flags_[slot]; }

    // The places of the arcs into a slot. Starts have none: the cone does not read the arcs into them.
    struct Arcs {
        std::uint32_t begin;
        std::uint32_t end;
    };
    Arcs getArcs(Slot slot) const {
        visitArcs(begins_[slot + 1] - begins_[slot]);
        return {begins_[slot], begins_[slot + 1]};
    }
    std::uint32_t getArcCount() const { return static_cast<std::uint32_t>(edges_.size()); }
    Pelko::Edge* getEdge(std::uint32_t arc) const { return edges_[arc]; }
    // The slot of the arc's source, or `noSlot` if the arc was not active.
    Slot getSource(std::uint32_t arc) const { return sources_[arc]; }

    // The delays as they were when the cone was read, until they are dropped. Host events may have changed
    // them since.
    struct Delays {
        int minimum;
        int maximum;
    };
    Delays getDelays(std::uint32_t arc) const { return delays_[arc]; }
    // Whether host events were processed while the cone was read.
    bool hasHeardEvents() const { return hasHeardEvents_; }
    void dropDelays() { delays_ = {}; }

    // Prefetches what the cone holds about the arcs into a slot.
    void prefetchArcs(Slot slot) const {
        __builtin_prefetch(sources_.data() + begins_[slot]);
        __builtin_prefetch(delays_.data() + begins_[slot]);
    }
    // Prefetches what a table by slot holds about the sources of the arcs.
    template <class Table>
    void prefetchSources(Slot slot, const Table& table) const {
        for (std::uint32_t arc = begins_[slot]; arc != begins_[slot + 1]; ++arc)
            if (sources_[arc] != noSlot)
                table.prefetch(sources_[arc]);
    }
    // Prefetches the arcs themselves.
    void prefetchDesign(Slot slot) const {
        for (std::uint32_t arc = begins_[slot]; arc != begins_[slot + 1]; ++arc)
            prefetchArc(arc);
    }

private:
    struct Shape {
        std::uint32_t poleBound = 0;
        std::uint32_t edgeBound = 0;
        unsigned long poleCount = 0;
        unsigned long edgeCount = 0;
        bool operator==(const Shape&) const = default;
    };
    static Shape getShape();

    static constexpr std::size_t smallCone = 16384; // poles

    Slot obtain(Pelko::Pole* pole, std::size_t index);
    void reserveAll();
    void prefetchArc(std::uint32_t arc) const;
    void addArcs(Pelko::Pole* pole, IsStart isStart);
    bool sort();
    void sortByLevel(const LargeVector<std::uint32_t>& levels);

    SlotTable slots_; // by pole index
    LargeVector<Pelko::Pole*> poles_;
    LargeVector<std::uint8_t> flags_;
    LargeVector<std::uint32_t> begins_; // by slot, and one more
    LargeVector<Pelko::Edge*> edges_;
    LargeVector<Slot> sources_;
    LargeVector<Delays> delays_;
    LargeVector<std::uint32_t> uses_; // arcs out of a slot that are still to be passed; empty once sorted
    LargeVector<Slot> order_;
    Shape shape_;
    bool isRead_ = false;
    bool hasHeardEvents_ = false;
};

} // namespace Vorlen::detail
