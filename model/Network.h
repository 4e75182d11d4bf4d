// The design as a network of arcs that timing goes through: what is left of it when disabled arcs, constants,
// arcs that a clock's source hides and arcs that lead backwards are taken out.
//
// A node is a pin; a bidirectional pin is two, one that receives and one that drives, and nothing leads from
// one to the other but what the cell does. Two arcs between the same nodes are one, with the wider delay.
//
// Every loop is opened before anything else sees the network: its nodes are copied, so that no arc leads
// backwards and every path that passes no node twice is there (Loops.h). The node that a pin has without
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
    std::uint32_t from = Base::none, to = Base::none; // nodes
    Design::Interval delay;
    ArcKind kind = ArcKind::through;
    Design::Transition edge = Design::Transition::any; // of a launch
    bool launch = false;                               // also where it is hidden
};

class Network {
public:
    // Clock sources are the pins at which clocks are defined. Tells of loops.
    Network(const Design::RoutedDesign& design, const Design::Constraints& constraints,
            const std::vector<std::uint32_t>& clockSources, Base::Diagnostics& diagnostics,
            const LoopLimits& limits = {});

    std::uint32_t size() const { return static_cast<std::uint32_t>(pinOfNode_.size()); }
    std::uint32_t pinOf(std::uint32_t node) const { return pinOfNode_[node]; }
    // The side of a pin that is driven from the net | that drives the net; the same node, but for
    // bidirectional pins. Of a pin in a loop the node where paths enter the loop or start.
    std::uint32_t sinkOf(std::uint32_t pin) const { return pin; }
    std::uint32_t sourceOf(std::uint32_t pin) const { return driverOfPin_[pin]; }
    std::string nameOf(std::uint32_t node) const { return design_.pinName(pinOf(node)); }
    // The node that a copy stands for; the node itself if it is no copy.
    std::uint32_t originalOf(std::uint32_t node) const {
        return node < originals_ ? node : originalOfCopy_[node - originals_];
    }
    // The other nodes of one that is no copy.
    std::span<const std::uint32_t> copiesOf(std::uint32_t node) const {
        return copyFirst_.empty() ? std::span<const std::uint32_t>() : slice(copies_, copyFirst_, node);
    }
    template <class Use>
    void eachCopy(std::uint32_t node, Use use) const { // the node first
        use(node);
        std::ranges::for_each(copiesOf(node), use);
    }
    // Whether a path may pass several copies of a node.
    bool isRepeated(std::uint32_t node) const { return !repeated_.empty() && repeated_[originalOf(node)]; }
    // The loop of a node; none if it has no loop.
    std::uint32_t loopOf(std::uint32_t node) const {
        return loopOf_.empty() ? Base::none : loopOf_[originalOf(node)];
    }

    std::span<const Arc> arcs() const { return arcs_; }
    // Arcs out of and into a node, in reading order.
    std::span<const std::uint32_t> out(std::uint32_t node) const { return slice(out_, outFirst_, node); }
    std::span<const std::uint32_t> in(std::uint32_t node) const { return slice(in_, inFirst_, node); }
    // All nodes, so that every through arc leads forwards.
    const std::vector<std::uint32_t>& order() const { return order_; }

    bool isConstant(std::uint32_t node) const { return constant_[node]; }
    bool isClockSource(std::uint32_t node) const { return clockSource_[node]; }
    bool isDisabled(const Design::Check& check) const { return checkDisabled_[indexOf(check)]; }

private:
    static std::span<const std::uint32_t> slice(const std::vector<std::uint32_t>& members,
                                                const std::vector<std::uint32_t>& first, std::uint32_t node) {
        return std::span(members).subspan(first[node], first[node + 1] - first[node]);
    }
    std::size_t indexOf(const Design::Check& check) const {
        return static_cast<std::size_t>(&check - design_.checks.data());
    }

    void makeNodes();
    void disable(const Design::Constraints& constraints, std::vector<bool>& arcDisabled);
    void makeArcs(const std::vector<bool>& arcDisabled);
    void addArc(const Design::Arc& arc);
    void link();
    bool putInOrder();
    void openLoops(const LoopLimits& limits, Base::Diagnostics& diagnostics);
    void takeCopies(const Loops& loops);
    void copyArcs(const Loops& loops);
    void tellOfCopies(const Loops& loops, Base::Diagnostics& diagnostics) const;
    void warnOfCuts(const Loops& loops, Base::Diagnostics& diagnostics) const;
    std::string pinsOf(const Loops::Loop& loop) const;
    std::vector<std::uint32_t> endsBehind(const std::vector<std::uint32_t>& arcs) const;

    const Design::RoutedDesign& design_;
    std::vector<std::uint32_t> pinOfNode_, driverOfPin_;
    std::vector<bool> constant_, clockSource_, checkDisabled_;
    std::vector<Arc> arcs_;
    std::vector<std::uint32_t> out_, outFirst_, in_, inFirst_, order_;
    // Of loops; empty without any.
    std::uint32_t originals_ = 0; // nodes that are no copies
    std::vector<std::uint32_t> originalOfCopy_, copies_, copyFirst_, loopOf_;
    std::vector<bool> repeated_;
};

} // namespace Model
