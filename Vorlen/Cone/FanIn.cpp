#include "Vorlen/Cone/FanIn.h"

#include "Pelko/Cell.h"

#include <algorithm>

namespace Vorlen::detail {

FanIn::Slot FanIn::getSlot(Pelko::Pole* pole) {
    const std::size_t index = pole->getIndex();
    if (index >= slots_.size())
        slots_.resize(index + index / 2 + 1);
    if (slots_[index] == 0) {
        poles_.push_back(pole);
        fans_.emplace_back();
        slots_[index] = static_cast<Slot>(poles_.size());
    }
    return slots_[index] - 1;
}

void FanIn::read(Slot slot) {
    Fan fan = fans_[slot];
    if (fan.epoch == 0) {
        fan.begin = static_cast<Place>(edges_.size());
        const Pelko::Edges incoming = poles_[slot]->getIncomingEdges();
        for (Pelko::Edge* edge : incoming)
            edges_.push_back(edge);
        fan.end = static_cast<Place>(edges_.size());
        sources_.resize(edges_.size(), none);
    }
    fan.epoch = epoch_;
    fans_[slot] = fan;
    reread(fan.begin, fan.end);
}

void FanIn::reread(Place begin, Place end) {
    visitArcs(end - begin);
    for (Place place = begin; place != end; ++place) {
        const Pelko::Edge* edge = edges_[place];
        if (!edge->isActive())
            sources_[place] = none;
        else if (sources_[place] == none)
            sources_[place] = getSlot(edge->getSource());
    }
}

// Places stay the same, so that open fans and tables by place remain valid.
void FanIn::renew() {
    ++epoch_;
    if (const Shape shape = getShape(); shape != shape_) {
        shape_ = shape;
        std::fill(fans_.begin(), fans_.end(), Fan());
    }
}

FanIn::Shape FanIn::getShape() { return {Pelko::cell->getEdgeBound(), Pelko::cell->getEdges().getCount()}; }

} // namespace Vorlen::detail
