// How deep the nodes of a network are: a node's level is the number of through arcs on the longest way to it.
// No path leads from a node to another one of the same level.
//
// It costs one walk over the network, and a number for each node.
#pragma once

#include "model/Ids.h"
#include "model/Network.h"

#include <vector>

namespace Exceptions {

// Nodes of the data plane: a path passes any of them.
using Nodes = std::vector<Model::NodeId>;

class Levels {
public:
    explicit Levels(const Model::Network& network);

    std::uint32_t operator[](Model::NodeId node) const { return levels_[node]; }

    // Whether a path may pass one of the first nodes and then one of the second. `to` is sorted. Costs a walk
    // forwards down to the deepest node of `to`.
    bool reaches(const Nodes& from, const Nodes& to) const;
    // Whether no path passes two of the nodes, which are sorted.
    bool isAntichain(const Nodes& nodes) const;

private:
    const Model::Network& network_;
    Base::IndexVector<Model::NodeId, std::uint32_t> levels_;
};

} // namespace Exceptions
