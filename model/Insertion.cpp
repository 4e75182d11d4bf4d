// Finds the layers of nodes between registers backwards, then the arrivals by a walk with a stack of its own.
#include "model/Insertion.h"

#include <algorithm>

namespace Model {

Insertion::Insertion(const Network& network, const Arrivals& from, NodeId to) : network_(network), to_(to) {
    for (const auto& [node, arrival] : from)
        arrivals_.try_emplace(node, arrival);
}

std::optional<Latency> Insertion::find() {
    if (const auto known = arrivals_.find(to_); known != arrivals_.end())
        return known->second;
    if (!layer())
        return std::nullopt;
    walk_.push_back({to_, 0, std::nullopt});
    while (!walk_.empty())
        step();
    return arrivals_.at(to_);
}

bool Insertion::isOpen(const Arc& arc) const {
    return arc.kind != ArcKind::cut && (arc.kind != ArcKind::hidden || arc.to == to_);
}

// Backwards, how many registers lie between a node and the end, until a known node is found.
bool Insertion::layer() {
    bool found = false;
    std::vector<NodeId> layer = {to_}, next;
    for (std::uint32_t number = 0; !layer.empty() && !found; ++number, layer.swap(next), next.clear())
        for (std::size_t at = 0; at < layer.size(); ++at) {
            const NodeId node = layer[at];
            if (!layers_.try_emplace(node, number).second)
                continue;
            if (arrivals_.contains(node)) {
                found = true;
                continue;
            }
            for (const ArcId into : network_.in(node))
                if (const Arc& arc = network_.arcs()[into]; isOpen(arc) && !layers_.contains(arc.from))
                    (arc.launch ? next : layer).push_back(arc.from);
        }
    return found;
}

// On a way with the fewest registers. Nothing goes on from the end, which may drive what drives it.
bool Insertion::isPassed(const Arc& arc) const {
    const auto from = layers_.find(arc.from);
    return isOpen(arc) && arc.from != to_ && from != layers_.end() &&
           from->second == layers_.at(arc.to) + (arc.launch ? 1 : 0);
}

void Insertion::step() {
    Step& top = walk_.back();
    const std::span<const ArcId> arcs = network_.in(top.node);
    if (top.next == arcs.size()) {
        arrivals_.try_emplace(top.node, top.arrival);
        walk_.pop_back();
        return;
    }
    const Arc& arc = network_.arcs()[arcs[top.next]];
    if (!isPassed(arc)) {
        ++top.next;
        return;
    }
    const auto known = arrivals_.find(arc.from);
    if (known == arrivals_.end()) {
        walk_.push_back({arc.from, 0, std::nullopt});
        return;
    }
    ++top.next;
    if (!known->second)
        return;
    const Latency through{known->second->early + arc.delay.early, known->second->late + arc.delay.late};
    if (!top.arrival)
        top.arrival = through;
    top.arrival->early = std::min(top.arrival->early, through.early);
    top.arrival->late = std::max(top.arrival->late, through.late);
}

} // namespace Model
