#include "Vorlen/detail/Cone.h"

#include "Pelko/Cell.h"
#include "Vorlen/detail/FanReader.h"

#include <algorithm>

namespace Vorlen::detail {

Slot Cone::obtain(Pelko::Pole* pole) {
    const std::size_t index = pole->getIndex();
    if (index >= slots_.size())
        slots_.resize(std::max<std::size_t>(Pelko::cell->getPoleBound(), index + 1), 0);
    Slot& slot = slots_[index];
    if (slot == 0) {
        poles_.push_back(pole);
        slot = static_cast<Slot>(poles_.size());
    }
    return slot - 1;
}

// Indices ascend in order of creation, and so do stamps.
LargeVector<Pelko::Pole*> Cone::getSortedPoles() const {
    LargeVector<Pelko::Pole*> sorted;
    sorted.reserve(poles_.size());
    for (const Slot slot : slots_)
        if (slot != 0)
            sorted.push_back(poles_[slot - 1]);
    return sorted;
}

bool Cone::read(const std::vector<Pelko::Pole*>& ends, IsStart isStart) {
    shape_ = getShape();
    for (Pelko::Pole* end : ends)
        obtain(end);
    FanReader<Direction::Incoming> reader;
    WalkPump pump;
    for (std::size_t place = 0; place < poles_.size(); ++place) {
        if (place == smallCone)
            reserveAll();
        reader.advance(poles_, place);
        reader.forEachEndAt(place + reader.farAhead, [this](const Pelko::Pole* pole) { prefetchSlot(pole); });
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

// Room that is not used stays with the system. A small cone does without: it would take a huge page a table.
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
        const Slot source = edge->isActive() ? obtain(edge->getSource()) : noSlot;
        edges_.push_back(edge);
        sources_.push_back(source);
        delays_.push_back({int(edge->getMinDelay()), int(edge->getMaxDelay())});
        if (source == noSlot)
            continue;
        uses_.resize(poles_.size(), 0);
        ++uses_[source];
    }
}

// A pole follows once all that it drives have gone before. What is left over at the end lies on a loop, or
// behind one.
bool Cone::sort() {
    uses_.resize(poles_.size(), 0);
    order_.reserve(poles_.size());
    for (Slot slot = 0; slot < uses_.size(); ++slot)
        if (uses_[slot] == 0)
            order_.push_back(slot);
    for (std::size_t place = 0; place < order_.size(); ++place) {
        if (place + ahead < order_.size())
            __builtin_prefetch(&sources_[0] + begins_[order_[place + ahead]]);
        const Arcs arcs = getArcs(order_[place]);
        for (std::uint32_t arc = arcs.begin; arc != arcs.end; ++arc)
            if (const Slot source = sources_[arc]; source != noSlot && --uses_[source] == 0)
                order_.push_back(source);
    }
    uses_ = {};
    return order_.size() == poles_.size();
}

Cone::Shape Cone::getShape() {
    return {Pelko::cell->getPoleBound(), Pelko::cell->getEdgeBound(), Pelko::cell->getPoles().getCount(),
            Pelko::cell->getEdges().getCount()};
}

void Cone::prefetchArc(std::uint32_t arc) const { prefetchEdge(edges_[arc]); }

} // namespace Vorlen::detail
