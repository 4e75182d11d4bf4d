// Prefetches the fans of a list of poles, in order of the list: poles, fans, arcs and the poles at their far
// ends are on the way into the cache before they are read. The list may grow meanwhile.
//
// On a large design each of these costs a cache miss. The order in which they will be read is known, so the
// misses can overlap instead of following one another.
#pragma once

#include "Pelko/Edge.h"
#include "Vorlen/detail/LargeVector.h"
#include "Vorlen/detail/Prefetch.h"

#include <array>
#include <vector>

namespace Vorlen::detail {

enum class Direction { Incoming, Outgoing };

// If `readsEnds` is false, the poles at the far ends are not prefetched.
template <Direction direction, bool readsEnds = true>
class FanReader {
public:
    static Pelko::Pole* farEnd(const Pelko::Edge* edge) {
        return direction == Direction::Incoming ? edge->getSource() : edge->getTarget();
    }
    static Pelko::Edges fanOf(const Pelko::Pole* pole) {
        return direction == Direction::Incoming ? pole->getIncomingEdges() : pole->getOutgoingEdges();
    }

    // To be called for one place after another, before anything at the place is read.
    void advance(const LargeVector<Pelko::Pole*>& poles, std::size_t place) {
        for (; poles_ < std::min(poles.size(), place + aheadOfPoles); ++poles_)
            direction == Direction::Incoming ? prefetchEnd(poles[poles_]) : prefetchPole(poles[poles_]);
        for (; fans_ < std::min(poles.size(), place + aheadOfFans); ++fans_) {
            const auto memory = fanOf(poles[fans_]).getMemory();
            // A wide fan is read in order anyway.
            const bool isNarrow = memory.isOffered && memory.end - memory.begin <= wideFan;
            fanAt(fans_) = isNarrow ? Fan{memory.begin, memory.end} : Fan{};
            if (isNarrow)
                __builtin_prefetch(memory.begin);
        }
        for (; edges_ < std::min(poles.size(), place + aheadOfEdges); ++edges_)
            for (Pelko::Edge* const* edge = fanAt(edges_).begin; edge != fanAt(edges_).end; ++edge)
                if (*edge)
                    prefetchEdge(*edge);
        if constexpr (!readsEnds)
            return;
        for (; ends_ < std::min(poles.size(), place + aheadOfEnds); ++ends_)
            for (Pelko::Edge* const* edge = fanAt(ends_).begin; edge != fanAt(ends_).end; ++edge)
                if (*edge)
                    prefetchEnd(farEnd(*edge));
    }

    // Calls `visit` with the poles at the far ends of the arcs at a place some steps ahead, which are on the
    // way into the cache already, so that tables by pole can be prefetched.
    static constexpr std::size_t farAhead = 8;
    static constexpr std::size_t nearAhead = 4;
    template <class Visit>
    void forEachEndAt(std::size_t place, Visit visit) {
        if (place >= ends_)
            return;
        for (Pelko::Edge* const* edge = fanAt(place).begin; edge != fanAt(place).end; ++edge)
            if (*edge)
                visit(farEnd(*edge));
    }

    // The same with the arcs, which are prefetched earlier.
    template <class Visit>
    void forEachEdgeAt(std::size_t place, Visit visit) {
        if (place >= edges_)
            return;
        for (Pelko::Edge* const* edge = fanAt(place).begin; edge != fanAt(place).end; ++edge)
            if (*edge)
                visit(*edge);
    }

    // To be called when the design may have changed: nothing that was read before is used again.
    void forget(std::size_t place) { poles_ = fans_ = edges_ = ends_ = place; }

private:
    struct Fan {
        Pelko::Edge* const* begin = nullptr;
        Pelko::Edge* const* end = nullptr;
    };

    static constexpr std::size_t aheadOfPoles = 48;
    static constexpr std::size_t aheadOfFans = 36;
    static constexpr std::size_t aheadOfEdges = 24;
    static constexpr std::size_t aheadOfEnds = 12;
    static constexpr std::size_t ring = 64;
    static constexpr std::ptrdiff_t wideFan = 16;

    Fan& fanAt(std::size_t place) { return fansAhead_[place % ring]; }

    std::array<Fan, ring> fansAhead_{};
    // The places that each stage has reached; each stage stays behind the one before it.
    std::size_t poles_ = 0;
    std::size_t fans_ = 0;
    std::size_t edges_ = 0;
    std::size_t ends_ = 0;
};

} // namespace Vorlen::detail
