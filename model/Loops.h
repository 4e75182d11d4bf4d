// Combinational loops, opened so that no arc leads backwards and no path is lost.
//
// A path passes a pin at most once, and every such path counts. A loop is a strongly connected component of
// the through arcs. It is replaced by copies of its nodes, in the first of three forms that fits the limits:
//
//   exact    A copy is a node together with the nodes of the loop that a path can still reach from there
//            without passing a node twice. The copies' paths are exactly the paths that pass no node twice.
//            Two gates that drive each other take two copies of each of their pins.
//   layered  The arcs that close a cycle in a depth-first walk lead into the next layer of copies, and there
//            are as many layers as such arcs can follow one another when no node is passed twice. All those
//            paths are there, and some that pass a node twice: slacks are safe, and may be too small.
//   cut      The arcs that close a cycle are cut. Paths that use them are lost.
//
// The nodes where paths enter a loop, from outside or because they start there, keep their number as the copy
// from which nothing has been passed yet. So arcs into a loop stay as they are.
//
// Finding the loops is linear. The exact form costs a walk through the loop for each copy, the others are
// linear in the copies that they make.
#pragma once

#include "model/Ids.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace Model {

struct Arc;

struct LoopLimits {
    std::uint32_t exactNodes = 10'000;     // in the exact form of one loop
    std::uint64_t exactWork = 200'000'000; // arcs and words passed in search of exact forms, in all loops
    // Copies may add these numbers of nodes and arcs and, in addition, timesDesign times those of the design.
    // Exact forms use at most half of that.
    std::uint64_t addedNodes = 1'000'000;
    std::uint64_t addedArcs = 4'000'000;
    std::uint64_t timesDesign = 4;
};

class Loops {
public:
    enum class Form : std::uint8_t { exact, layered, cut };
    struct Loop {
        std::vector<NodeId> nodes; // in order
        Form form = Form::cut;
        std::uint32_t layers = 0; // of the layered form
        bool isEntered = false;   // if not, no path passes it, and its arcs are cut
    };
    // A copy of an arc within a loop.
    struct Step {
        ArcId arc;
        NodeId from, to; // copies counted on from the last node
    };
    // The arcs out of a node.
    using Out = std::function<std::span<const ArcId>(NodeId)>;

    // mayStart(node) returns whether paths may start at the node itself, not only come in by an arc.
    Loops(std::size_t nodes, const Base::IndexVector<ArcId, Arc>& arcs, const Out& out,
          const std::function<bool(NodeId)>& mayStart, const LoopLimits& limits);

    // In the order of their first nodes.
    const Base::IndexVector<LoopId, Loop>& all() const { return loops_; }
    // The loop of a node; none if it has no loop.
    LoopId loopOf(NodeId node) const { return loopOf_[node]; }
    // Those within loops that are copied, in the order of their arcs.
    const std::vector<Step>& steps() const { return steps_; }
    // The node that each copy stands for, in the order of the copies.
    const std::vector<NodeId>& copied() const { return copied_; }
    // Arcs that are cut, in order.
    const std::vector<ArcId>& cuts() const { return cuts_; }

private:
    struct Part;                                  // of the graph: one loop, its nodes counted from 0
    using PlaceId = Base::Index<struct PlaceTag>; // a node of a Part
    using CopyId = Base::Index<struct CopyTag>;   // a copy of one of them
    class Exact;
    class Layered;
    class Walk;

    void find();
    void findEntries(const std::function<bool(NodeId)>& mayStart);
    Part partOf(const Loop& loop) const;
    void open(Loop& loop, const LoopLimits& limits);
    template <class Copies>
    void take(const Loop& loop, const Copies& copies);

    const Base::IndexVector<ArcId, Arc>& arcs_;
    const Out& out_;
    Base::IndexVector<NodeId, LoopId> loopOf_;
    Base::IndexVector<NodeId, PlaceId> placeInLoop_;
    Base::IndexVector<NodeId, bool> entry_, taken_;
    Base::IndexVector<LoopId, Loop> loops_;
    std::vector<Step> steps_;
    std::vector<NodeId> copied_;
    std::vector<ArcId> cuts_;
    std::uint64_t work_ = 0, nodeLimit_ = 0, arcLimit_ = 0;
};

} // namespace Model
