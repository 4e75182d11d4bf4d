// The insertion delay of a generated clock: the earliest and latest arrival at a node from others at which
// the arrival is known.
//
// Arcs of every kind count, except those that close loops and those that enter the sources of other clocks.
// Of all ways, those with the fewest registers count. The time is linear in the part of the network that
// leads to the node through at most as many registers.
#pragma once

#include "model/Clocks.h"

#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Model {

class Insertion {
public:
    using Arrivals = std::vector<std::pair<NodeId, Latency>>;

    Insertion(const Network& network, const Arrivals& from, NodeId to);

    // Returns nothing if no way leads to the node. Call it once.
    std::optional<Latency> find();

private:
    struct Step {
        NodeId node;
        std::size_t next; // of the arcs into the node
        std::optional<Latency> arrival;
    };

    bool isOpen(const Arc& arc) const;
    bool layer();
    bool isPassed(const Arc& arc) const;
    void step();

    const Network& network_;
    const NodeId to_;
    std::unordered_map<NodeId, std::optional<Latency>> arrivals_;
    std::unordered_map<NodeId, std::uint32_t> layers_; // how many registers are between a node and the end
    std::vector<Step> walk_;
};

} // namespace Model
