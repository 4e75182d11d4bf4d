// The design as a network of arcs that timing follows: without disabled arcs, constants, and arcs that lead
// backwards. Arcs into the source of a clock are marked as hidden.
//
// A node is a pin. A bidirectional pin is two nodes, one that receives and one that drives; only arcs of its
// cell lead from one to the other. Two arcs between the same nodes are merged into one with the wider delay.
//
// Every loop is opened before anything else sees the network: its nodes are copied, so that no arc leads
// backwards and every path that passes no node twice is kept (Loops.h). The node that a pin has without
// loops is the one at which paths enter the loop or start in it; the others are its copies. If a loop is too
// large to be copied, the arcs that close it are cut.
#pragma once

#include "design/Constraints.h"
#include "design/RoutedDesign.h"
#include "model/Loops.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Model {

enum class ArcKind : std::uint8_t {
    through, // along a net or through a cell
    launch,  // from a clock pin to the output that it clocks
    hidden,  // into the source of a clock, which starts anew there
    cut,     // closes a loop that is too large to be copied, or that no path enters
};

struct Arc {
    NodeId from = Base::none, to = Base::none;
    Design::Interval delay;
    ArcKind kind = ArcKind::through;
    Design::Transition edge = Design::Transition::any; // of a launch
    bool launch = false;                               // also if it is hidden
};

class Network {
public:
    // Clock sources are the pins at which clocks are defined. Loops are reported as diagnostics.
    Network(const Design::RoutedDesign& design, const Design::Constraints& constraints,
            const std::vector<PinId>& clockSources, Base::Diagnostics& diagnostics,
            const LoopLimits& limits = {});

    std::uint32_t size() const { return static_cast<std::uint32_t>(pinOfNode_.size()); }
    PinId pinOf(NodeId node) const { return pinOfNode_[node]; }
    // The node of a pin that its net drives. For a pin in a loop: the node at which paths enter the loop or
    // start.
    NodeId sinkOf(PinId pin) const { return NodeId(pin.number()); }
    // Likewise the node that drives the net. Differs from sinkOf() only for bidirectional pins.
    NodeId sourceOf(PinId pin) const { return driverOfPin_[pin]; }
    std::string nameOf(NodeId node) const { return design_.pinName(pinOf(node)); }
    // Returns the node that a copy stands for; the node itself if it is not a copy.
    NodeId originalOf(NodeId node) const {
        return node.number() < originals_ ? node : originalOfCopy_[node.number() - originals_];
    }
    // Returns the copies of a node that is not a copy itself.
    std::span<const NodeId> copiesOf(NodeId node) const {
        return copies_.empty() ? std::span<const NodeId>() : copies_[node];
    }
    // Calls use() for the node and then for its copies.
    template <class Use>
    void eachCopy(NodeId node, Use use) const {
        use(node);
        std::ranges::for_each(copiesOf(node), use);
    }
    // Whether a path may pass several copies of a node.
    bool isRepeated(NodeId node) const { return !repeated_.empty() && repeated_[originalOf(node)]; }
    // Returns the loop of a node; none if it is in no loop.
    LoopId loopOf(NodeId node) const { return loopOf_.empty() ? LoopId() : loopOf_[originalOf(node)]; }

    const Base::IndexVector<ArcId, Arc>& arcs() const { return arcs_; }
    // Arcs out of and into a node, in reading order.
    std::span<const ArcId> out(NodeId node) const { return out_[node]; }
    std::span<const ArcId> in(NodeId node) const { return in_[node]; }
    // All nodes, so that every through arc leads forwards.
    const std::vector<NodeId>& order() const { return order_; }

    bool isConstant(NodeId node) const { return constant_[node]; }
    bool isClockSource(NodeId node) const { return clockSource_[node]; }
    bool isDisabled(const Design::Check& check) const { return checkDisabled_[indexOf(check)]; }

private:
    Design::CheckId indexOf(const Design::Check& check) const {
        return Design::CheckId(static_cast<std::uint32_t>(&check - design_.checks.data()));
    }

    void makeNodes();
    using DisabledArcs = Base::IndexVector<Design::ArcId, bool>;
    void disable(const Design::Constraints& constraints, DisabledArcs& arcDisabled);
    void makeArcs(const DisabledArcs& arcDisabled);
    void addArc(const Design::Arc& arc);
    void link();
    bool putInOrder();
    void openLoops(const LoopLimits& limits, Base::Diagnostics& diagnostics);
    void takeCopies(const Loops& loops);
    void copyArcs(const Loops& loops);
    void tellOfCopies(const Loops& loops, Base::Diagnostics& diagnostics) const;
    void warnOfCuts(const Loops& loops, Base::Diagnostics& diagnostics) const;
    std::string pinsOf(const Loops::Loop& loop) const;
    std::vector<PinId> endsBehind(const std::vector<ArcId>& arcs) const;

    const Design::RoutedDesign& design_;
    Base::IndexVector<NodeId, PinId> pinOfNode_;
    Base::IndexVector<PinId, NodeId> driverOfPin_;
    Base::IndexVector<NodeId, bool> constant_, clockSource_;
    Base::IndexVector<Design::CheckId, bool> checkDisabled_;
    Base::IndexVector<ArcId, Arc> arcs_;
    Base::Groups<NodeId, ArcId> out_, in_;
    std::vector<NodeId> order_;
    // Of loops; empty without any.
    std::uint32_t originals_ = 0; // how many nodes are not copies
    std::vector<NodeId> originalOfCopy_;
    Base::Groups<NodeId, NodeId> copies_;
    Base::IndexVector<NodeId, LoopId> loopOf_;
    Base::IndexVector<NodeId, bool> repeated_;
};

} // namespace Model
