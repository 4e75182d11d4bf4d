// Reads the fans of a list of poles, in order of the list, ahead of whoever works on them: poles, fans, arcs
// and the poles at their far ends are on the way into the cache when they are asked for. The list may grow
// while it is read.
//
// On a large design a step costs a cache miss for each of these. The order in which they will be asked for is
// known, so the misses overlap instead of following one another.
#pragma once

#include "Pelko/Edge.h"
#include "Vorlen/detail/LargeVector.h"
#include "Vorlen/detail/Prefetch.h"

#include <array>
#include <vector>

namespace Vorlen::detail {

enum class Direction { Incoming, Outgoing };

// `readsEnds`: whether the poles at the far ends are fetched too.
template <Direction direction, bool readsEnds = true>
class FanReader {
public:
    static Pelko::Pole* farEnd(const Pelko::Edge* edge) {
        return direction == Direction::Incoming ? edge->getSource() : edge->getTarget();
    }
    static Pelko::Edges fanOf(const Pelko::Pole* pole) {
        return direction == Direction::Incoming ? pole->getIncomingEdges() : pole->getOutgoingEdges();
    }

    // Asked for one place after another, before anything at it is read.
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

    // Calls `visit` with the poles at the far ends of the arcs at a place that lies some steps ahead, where
    // they are on the way already: for what is fetched by them.
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

    // The same with the arcs, which come earlier.
    template <class Visit>
    void forEachEdgeAt(std::size_t place, Visit visit) {
        if (place >= edges_)
            return;
        for (Pelko::Edge* const* edge = fanAt(place).begin; edge != fanAt(place).end; ++edge)
            if (*edge)
                visit(*edge);
    }

    // After the design may have changed: nothing that was read of it is used again.
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
    // How far each stage has come; each stays behind the one before it.
    std::size_t poles_ = 0;
    std::size_t fans_ = 0;
    std::size_t edges_ = 0;
    std::size_t ends_ = 0;
};

} // namespace Vorlen::detail
