// The design as a network of arcs that timing goes through: what is left of it when disabled arcs, constants,
// arcs that a clock's source hides and the arcs that close loops are taken out.
//
// A node is a pin; a bidirectional pin is two, one that receives and one that drives, and nothing leads from
// one to the other but what the cell does. Two arcs between the same nodes are one, with the wider delay.
// Every loop is broken before anything else sees the network: the arc that closes it, in a depth-first walk
// in reading order, is cut and named in a warning.
#pragma once

#include "../design/Design.h"
#include "../sdc/Constraints.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Readers::Model {

enum class ArcKind : std::uint8_t {
    through, // along a net or through a cell
    launch,  // from a clock pin to the output that it clocks
    hidden,  // into the source of a clock, which starts anew there
    cut,     // closes a loop
};

struct Arc {
    std::uint32_t from = none, to = none; // nodes
    Interval delay;
    ArcKind kind = ArcKind::through;
    Transition edge = Transition::any; // of a launch
    bool launch = false;               // also where it is hidden
};

class Network {
public:
    // Clock sources are the pins at which clocks are defined. Warns of loops.
    Network(const Design& design, const Sdc::Constraints& constraints,
            const std::vector<std::uint32_t>& clockSources, Diagnostics& diagnostics);

    std::uint32_t size() const { return static_cast<std::uint32_t>(pinOfNode_.size()); }
    std::uint32_t pinOf(std::uint32_t node) const { return pinOfNode_[node]; }
    // The side of a pin that is driven from the net | that drives the net; the same node, but for
    // bidirectional pins.
    std::uint32_t sinkOf(std::uint32_t pin) const { return pin; }
    std::uint32_t sourceOf(std::uint32_t pin) const { return driverOfPin_[pin]; }
    std::string nameOf(std::uint32_t node) const { return design_.pinName(pinOf(node)); }

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
    void disable(const Sdc::Constraints& constraints, std::vector<bool>& arcDisabled);
    void makeArcs(const std::vector<bool>& arcDisabled);
    void addArc(const Design::Arc& arc);
    void link();
    void breakLoops(Diagnostics& diagnostics);

    const Design& design_;
    std::vector<std::uint32_t> pinOfNode_, driverOfPin_;
    std::vector<bool> constant_, clockSource_, checkDisabled_;
    std::vector<Arc> arcs_;
    std::vector<std::uint32_t> out_, outFirst_, in_, inFirst_, order_;
};

} // namespace Readers::Model
