#include "Vorlen/detail/StemMemo.h"

#include "Vorlen/detail/Work.h"

#include <algorithm>
#include <iterator>

namespace Vorlen::detail {

namespace {

constexpr std::size_t wideFan = 16;

bool leadsOn(const Pelko::Edge* edge, const Pelko::Edge* except) {
    return edge != except && edge->isActive() && !edge->getTarget()->isMarked();
}

} // namespace

bool StemUse::isNeeded(const Pelko::Pole* source, const Pelko::Edge* except) {
    const Pelko::Edges fan = source->getOutgoingEdges();
    const auto memory = fan.getMemory();
    const auto width = static_cast<std::size_t>(memory.end - memory.begin);
    if (!memory.isOffered || width <= wideFan) {
        for (const Pelko::Edge* edge : fan) {
            visitArcs(1);
            if (leadsOn(edge, except))
                return true;
        }
        return false;
    }
    std::size_t& start = found_[source];
    for (std::size_t step = 0; step < width; ++step) {
        const std::size_t index = start + step < width ? start + step : start + step - width;
        const Pelko::Edge* edge = memory.begin[index];
        visitArcs(1);
        if (edge && leadsOn(edge, except)) {
            start = index;
            return true;
        }
    }
    return false;
}

// A stem that is no longer needed is moved instead of copied.
void CallerStems::pass(const Pelko::Edge* edge) {
    const auto source = work_.find(edge->getSource());
    if (source == work_.end())
        return;
    PoleSet& into = work_[edge->getTarget()];
    if (use_.isNeeded(edge->getSource(), edge)) {
        into.insert(source->second.begin(), source->second.end());
        return;
    }
    if (into.size() < source->second.size())
        into.swap(source->second);
    into.merge(source->second);
    work_.erase(source);
}

void PhaseStems::addSelf(Pelko::Pole* pole) {
    Stem& stem = obtain(pole);
    const auto place = std::lower_bound(stem.begin(), stem.end(), pole, Pelko::Object::StampLess());
    if (place == stem.end() || *place != pole)
        stem.insert(place, pole);
}

void PhaseStems::pass(const Pelko::Edge* edge) {
    const Pelko::Pole* source = edge->getSource();
    if (!find(source))
        return;
    Stem& into = obtain(edge->getTarget());
    Stem& from = obtain(source);
    const bool isNeeded = use_.isNeeded(source, edge);
    if (into.empty()) {
        if (isNeeded)
            into = from;
        else
            into.swap(from);
    } else if (from.size() == 1 && into.size() == 1 && from == into) {
        // In a clock network, every pole has the same one root.
    } else {
        merged_.clear();
        std::set_union(into.begin(), into.end(), from.begin(), from.end(), std::back_inserter(merged_),
                       Pelko::Object::StampLess());
        into.swap(merged_);
    }
    if (!isNeeded)
        release(source);
}

const PhaseStems::Stem* PhaseStems::find(const Pelko::Pole* pole) const {
    const std::size_t index = pole->getIndex();
    return index < numbers_.size() && numbers_[index] != none ? &stems_[numbers_[index] - 1] : nullptr;
}

// A new stem invalidates references to others, so it has to be obtained first.
PhaseStems::Stem& PhaseStems::obtain(const Pelko::Pole* pole) {
    const std::size_t index = pole->getIndex();
    if (index >= numbers_.size())
        numbers_.resize(index + index / 2 + 1, none);
    if (numbers_[index] == none) {
        if (free_.empty()) {
            stems_.emplace_back();
            free_.push_back(static_cast<std::uint32_t>(stems_.size()));
        }
        numbers_[index] = free_.back();
        free_.pop_back();
    }
    return stems_[numbers_[index] - 1];
}

void PhaseStems::release(const Pelko::Pole* pole) {
    if (!find(pole))
        return;
    std::uint32_t& number = numbers_[pole->getIndex()];
    stems_[number - 1].clear();
    free_.push_back(std::exchange(number, none));
}

} // namespace Vorlen::detail
