#include "exceptions/Levels.h"

#include <algorithm>
#include <deque>
#include <unordered_set>

namespace Exceptions {

Levels::Levels(const Model::Network& network) : network_(network), levels_(network.size()) {
    for (const Model::NodeId node : network.order())
        for (const auto number : network.out(node))
            if (const Model::Arc& arc = network.arcs()[number]; arc.kind == Model::ArcKind::through)
                levels_[arc.to] = std::max(levels_[arc.to], levels_[node] + 1);
}

bool Levels::reaches(const Nodes& from, const Nodes& to) const {
    std::uint32_t deepest = 0;
    for (const Model::NodeId node : to)
        deepest = std::max(deepest, levels_[node]);
    std::unordered_set<Model::NodeId> seen;
    std::deque<Model::NodeId> next(from.begin(), from.end());
    while (!next.empty()) {
        const Model::NodeId node = next.front();
        next.pop_front();
        for (const auto number : network_.out(node)) {
            const Model::Arc& arc = network_.arcs()[number];
            if (arc.kind != Model::ArcKind::through || levels_[arc.to] > deepest ||
                !seen.insert(arc.to).second)
                continue;
            if (std::ranges::binary_search(to, Model::NodeId(arc.to)))
                return true;
            next.push_back(arc.to);
        }
    }
    return false;
}

bool Levels::isAntichain(const Nodes& nodes) const {
    const auto sameLevel = [&](Model::NodeId node) { return levels_[node] == levels_[nodes.front()]; };
    return std::ranges::all_of(nodes, sameLevel) || !reaches(nodes, nodes);
}

} // namespace Exceptions
