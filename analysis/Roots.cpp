// The roots behind clock pins.
#include "analysis/Roots.h"

#include "analysis/PinOrder.h"

#include <algorithm>

namespace Analysis {

using Base::none;
using Design::PinId;
using Model::Arc;
using Model::ArcKind;
using Model::NodeId;

namespace {

// How many roots without a clock are named one by one.
constexpr std::size_t namedRoots = 20;

// The roots behind clock pins: pins that are not driven through nets and combinational cells, and the pin at
// which a loop is cut that no path enters. Register outputs count only for clock pins that have no other
// root. Every walk passes an arc once, whatever the number of roots and clock pins.
class Roots {
public:
    Roots(const Design::RoutedDesign& design, const Model::Network& network,
          const std::vector<PinId>& clockPins);

    // In the order of their names.
    const std::vector<PinId>& all() const { return all_; }
    // The number of clock pins behind a root. Costs a walk.
    std::size_t countPins(PinId root) const;

private:
    using Nodes = std::vector<NodeId>;

    bool isRegisterRoot(NodeId node) const { return design_.isRegisterOutput(network_.pinOf(node)); }
    bool isRoot(NodeId node) const;
    Nodes walk(Nodes from, bool forwards) const;

    const Design::RoutedDesign& design_;
    const Model::Network& network_;
    Base::IndexVector<NodeId, bool> isClockPin_, hasOwnRoot_;
    std::vector<PinId> all_;
};

Roots::Roots(const Design::RoutedDesign& design, const Model::Network& network,
             const std::vector<PinId>& clockPins)
    : design_(design), network_(network), isClockPin_(network.size()), hasOwnRoot_(network.size()) {
    Nodes sinks, orphans, own;
    for (const PinId pin : clockPins)
        network.eachCopy(network.sinkOf(pin), [&](NodeId node) {
            sinks.push_back(node);
            isClockPin_[node] = true;
        });
    const Nodes behind = walk(sinks, false);
    for (const NodeId node : behind)
        if (isRoot(node) && !isRegisterRoot(node))
            own.push_back(node);
    for (const NodeId node : walk(own, true))
        hasOwnRoot_[node] = true;
    for (const PinId pin : clockPins) {
        bool hasOwn = false;
        network.eachCopy(network.sinkOf(pin), [&](NodeId node) { hasOwn = hasOwn || hasOwnRoot_[node]; });
        network.eachCopy(network.sinkOf(pin), [&](NodeId node) {
            hasOwnRoot_[node] = hasOwn;
            if (!hasOwn)
                orphans.push_back(node);
        });
    }
    for (const NodeId node : walk(orphans, false))
        if (isRoot(node) && isRegisterRoot(node))
            own.push_back(node);
    for (const NodeId node : own)
        all_.push_back(network.pinOf(node));
    std::ranges::sort(all_);
    all_.erase(std::ranges::unique(all_).begin(), all_.end());
    std::ranges::sort(all_, [&](PinId a, PinId b) { return isNamedBefore(design, a, b); });
}

bool Roots::isRoot(NodeId node) const {
    return std::ranges::all_of(network_.in(node), [&](auto number) {
        const ArcKind kind = network_.arcs()[number].kind;
        return kind == ArcKind::launch || kind == ArcKind::cut;
    });
}

// The nodes that through arcs lead to, the first ones included, each once.
Roots::Nodes Roots::walk(Nodes from, bool forwards) const {
    Base::IndexVector<NodeId, bool> seen(network_.size());
    Nodes found;
    const auto reach = [&](NodeId node) {
        if (!seen[node])
            found.push_back(node);
        seen[node] = true;
    };
    for (const NodeId node : from)
        reach(node);
    for (std::size_t next = 0; next < found.size(); ++next)
        for (const auto number : forwards ? network_.out(found[next]) : network_.in(found[next]))
            if (const Arc& arc = network_.arcs()[number]; arc.kind == ArcKind::through)
                reach(forwards ? arc.to : arc.from);
    return found;
}

std::size_t Roots::countPins(PinId root) const {
    const NodeId nodes[] = {network_.sinkOf(root), network_.sourceOf(root)};
    Nodes from;
    for (const NodeId node : nodes)
        if (isRoot(node) && (from.empty() || from.front() != node))
            from.push_back(node);
    std::vector<PinId> pins; // several nodes may stand for one
    for (const NodeId node : walk(from, true))
        if (isClockPin_[node] && (!isRegisterRoot(from.front()) || !hasOwnRoot_[node]))
            pins.push_back(network_.pinOf(node));
    std::ranges::sort(pins);
    return static_cast<std::size_t>(std::ranges::unique(pins).begin() - pins.begin());
}

} // namespace

Design::Constraints clocksAtRoots(const Design::RoutedDesign& design, Base::Diagnostics& diagnostics) {
    Design::Constraints constraints;
    constraints.files = {""};
    Base::Diagnostics unheard; // of loops, which are reported when the clocks are known
    const Model::Network network(design, constraints, {}, unheard);
    std::vector<PinId> clockPins;
    for (const PinId pin : Base::firstIds<PinId>(design.pins.size()))
        if (design.isClockPin(pin))
            clockPins.push_back(pin);
    const Roots roots(design, network, clockPins);
    for (const PinId root : roots.all()) {
        Design::Clock clock;
        clock.name = design.pinName(root);
        clock.targets = {root};
        constraints.clocks.push_back(std::move(clock));
    }
    std::ranges::sort(constraints.clocks, {}, &Design::Clock::name);
    const std::size_t count = constraints.clocks.size();
    diagnostics.note({}, "no constraints are given: " + std::to_string(count) +
                             (count == 1 ? " clock root" : " clock roots") + " found, without a period");
    return constraints;
}

void warnOfUnclocked(const Design::RoutedDesign& design, const Model::Network& network,
                     const Model::TimingModel& model, Base::Diagnostics& diagnostics) {
    std::size_t named = 0;
    const Roots roots(design, network, {model.unclocked().begin(), model.unclocked().end()});
    for (const PinId root : roots.all()) {
        if (named++ == namedRoots) {
            diagnostics.warning({}, std::to_string(roots.all().size() - namedRoots) +
                                        " more roots of clock pins have no clock");
            return;
        }
        const std::size_t count = roots.countPins(root);
        const std::string behind = std::to_string(count) + (count == 1 ? " clock pin" : " clock pins") +
                                   " behind '" + design.pinName(root) + "'";
        diagnostics.warning({},
                            "no clock reaches " + behind +
                                (design.isRegisterOutput(root)
                                     ? ": a clock does not pass a register; expected a generated clock there"
                                     : ""));
    }
}

} // namespace Analysis
