#include "Vorlen/Cone/Cone.h"

#include "Pelko/Cell.h"
#include "Vorlen/Cone/FanReader.h"
#include "Vorlen/detail/Work.h"

#include <algorithm>
#include <numeric>

namespace Vorlen::detail {

Slot Cone::obtain(Pelko::Pole* pole) { return obtain(pole, pole->getIndex()); }

Slot Cone::obtain(Pelko::Pole* pole, std::size_t index) {
    if (const Slot slot = slots_.find(index); slot != noSlot)
        return slot;
    if (!slots_.reaches(index))
        slots_.reach(std::max<std::size_t>(Pelko::cell->getPoleBound(), index + 1));
    poles_.push_back(pole);
    slots_.add(index, static_cast<Slot>(poles_.size() - 1));
    return static_cast<Slot>(poles_.size() - 1);
}

// Indices ascend in order of creation, and so do stamps.
LargeVector<Pelko::Pole*> Cone::getSortedPoles() const {
    LargeVector<Pelko::Pole*> sorted;
    sorted.reserve(poles_.size());
    for (const Slot slot : slots_.getSorted())
        sorted.push_back(poles_[slot]);
    return sorted;
}

bool Cone::read(const std::vector<Pelko::Pole*>& ends, IsStart isStart) {
    shape_ = getShape();
    for (Pelko::Pole* end : ends)
        obtain(end);
    FanReader<Direction::Incoming, false> reader;
    WalkPump pump;
    for (std::size_t place = 0; place < poles_.size(); ++place) {
        if (place == smallCone)
            reserveAll();
        reader.advance(poles_, place);
        reader.forEachEdgeAt(place + reader.farAhead,
                             [this](const Pelko::Edge* edge) { slots_.prefetch(edge->getSourceIndex()); });
        addArcs(poles_[place], isStart);
        if (!pump())
            continue;
        if (shape_ != getShape())
            return false;
        reader.forget(place + 1);
        hasHeardEvents_ = true;
    }
    begins_.push_back(static_cast<std::uint32_t>(edges_.size()));
    return isRead_ = sort();
}

// Reserved memory that is never used costs nothing. A small cone reserves none, because each table would take
// a huge page.
void Cone::reserveAll() {
    poles_.reserve(shape_.poleCount);
    flags_.reserve(shape_.poleCount);
    begins_.reserve(shape_.poleCount + 1);
    uses_.reserve(shape_.poleCount);
    edges_.reserve(shape_.edgeCount);
    sources_.reserve(shape_.edgeCount);
    delays_.reserve(shape_.edgeCount);
}

void Cone::addArcs(Pelko::Pole* pole, IsStart isStart) {
    unsigned flags = 0;
    if (isStart(pole))
        flags |= Start;
    if (pole->isMarked())
        flags |= Closed;
    if (pole->isCheck() || !pole->getOpeningPseudoMask().isEmpty() || !pole->getClosingPseudoMask().isEmpty())
        flags |= Special;
    flags_.push_back(static_cast<std::uint8_t>(flags));
    begins_.push_back(static_cast<std::uint32_t>(edges_.size()));
    if ((flags & (Start | Closed)) != 0)
        return;
    for (Pelko::Edge* edge : pole->getIncomingEdges()) {
        const Slot source = edge->isActive() ? obtain(edge->getSource(), edge->getSourceIndex()) : noSlot;
        edges_.push_back(edge);
        sources_.push_back(source);
        delays_.push_back({int(edge->getMinDelay()), int(edge->getMaxDelay())});
        if (source == noSlot)
            continue;
        uses_.resize(poles_.size(), 0);
        ++uses_[source];
    }
    visitArcs(edges_.size() - begins_.back());
}

// Sorts by level, which is the length of the longest way to an end, and within a level by slot. So a walk in
// order reads tables by slot from front to back as far as the arcs allow. A pole is placed when all poles
// that it drives are placed; poles that are never placed lie on a loop, or behind one.
bool Cone::sort() {
    uses_.resize(poles_.size(), 0);
    order_.reserve(poles_.size());
    LargeVector<std::uint32_t> levels;
    levels.resize(poles_.size(), 0);
    for (Slot slot = 0; slot < uses_.size(); ++slot)
        if (uses_[slot] == 0)
            order_.push_back(slot);
    for (std::size_t place = 0; place < order_.size(); ++place) {
        if (place + ahead < order_.size())
            __builtin_prefetch(sources_.data() + begins_[order_[place + ahead]]);
        const Slot slot = order_[place];
        const Arcs arcs = getArcs(slot);
        for (std::uint32_t arc = arcs.begin; arc != arcs.end; ++arc) {
            const Slot source = sources_[arc];
            if (source == noSlot)
                continue;
            levels[source] = std::max(levels[source], levels[slot] + 1);
            if (--uses_[source] == 0)
                order_.push_back(source);
        }
    }
    uses_ = {};
    if (order_.size() != poles_.size())
        return false;
    sortByLevel(levels);
    return true;
}

void Cone::sortByLevel(const LargeVector<std::uint32_t>& levels) {
    if (order_.empty())
        return;
    std::vector<std::uint32_t> places(levels[order_.back()] + std::size_t{2}, 0); // where each level begins
    for (const std::uint32_t level : levels)
        ++places[level + 1];
    std::partial_sum(places.begin(), places.end(), places.begin());
    for (Slot slot = 0; slot < levels.size(); ++slot)
        order_[places[levels[slot]]++] = slot;
}

Cone::Shape Cone::getShape() {
    return {Pelko::cell->getPoleBound(), Pelko::cell->getEdgeBound(), Pelko::cell->getPoles().getCount(),
            Pelko::cell->getEdges().getCount()};
}

void Cone::prefetchArc(std::uint32_t arc) const { prefetchEdge(edges_[arc]); }

} // namespace Vorlen::detail
