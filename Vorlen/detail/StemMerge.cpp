#include "Vorlen/detail/StemMerge.h"

#include "Pelko/Edge.h"

namespace Vorlen::detail {

namespace {

constexpr std::size_t wideFan = 16;

bool leadsOn(const Pelko::Edge* edge, const Pelko::Edge* except) {
    return edge != except && edge->isActive() && !edge->getTarget()->isMarked();
}

} // namespace

bool StemMerge::isNeeded(Pelko::Pole* source, const Pelko::Edge* except) {
    const Pelko::Edges fan = source->getOutgoingEdges();
    const auto memory = fan.getMemory();
    const auto width = static_cast<std::size_t>(memory.end - memory.begin);
    if (!memory.isOffered || width <= wideFan) {
        for (const Pelko::Edge* edge : fan)
            if (leadsOn(edge, except))
                return true;
        return false;
    }
    std::size_t& start = found_[source];
    for (std::size_t step = 0; step < width; ++step) {
        const std::size_t index = start + step < width ? start + step : start + step - width;
        const Pelko::Edge* edge = memory.begin[index];
        if (edge && leadsOn(edge, except)) {
            start = index;
            return true;
        }
    }
    return false;
}

// A stem that is freed moves instead of being copied.
void StemMerge::operator()(Pelko::Edge* edge, StemPoleSetMap& work) {
    const auto source = work.find(edge->getSource());
    if (source == work.end())
        return;
    PoleSet& into = work[edge->getTarget()];
    if (isNeeded(edge->getSource(), edge)) {
        into.insert(source->second.begin(), source->second.end());
        return;
    }
    if (into.size() < source->second.size())
        into.swap(source->second);
    into.merge(source->second);
    work.erase(source);
}

} // namespace Vorlen::detail
