// The roots behind clock pins.
#include "analysis/Roots.h"

#include "analysis/PinOrder.h"

#include <algorithm>

namespace Analysis {

using Base::none;
using Model::Arc;
using Model::ArcKind;

namespace {

// How many roots without a clock are named one by one.
constexpr std::size_t namedRoots = 20;

// The roots behind clock pins: what nothing drives through nets and combinational cells, and the pin
// at which a loop is cut that nothing drives. Register outputs count only for clock pins that have no other
// root. Every walk passes an arc once, whatever the number of roots and clock pins.
class Roots {
public:
    Roots(const Design::RoutedDesign& design, const Model::Network& network,
          const std::vector<std::uint32_t>& clockPins);

    // Pins, by their names.
    const std::vector<std::uint32_t>& all() const { return all_; }
    // The clock pins behind a root. Costs a walk.
    std::size_t countPins(std::uint32_t root) const;

private:
    using Nodes = std::vector<std::uint32_t>;

    bool isRegisterRoot(std::uint32_t node) const { return design_.isRegisterOutput(network_.pinOf(node)); }
    bool isRoot(std::uint32_t node) const;
    Nodes walk(Nodes from, bool forwards) const;

    const Design::RoutedDesign& design_;
    const Model::Network& network_;
    std::vector<bool> isClockPin_, hasOwnRoot_; // by node
    std::vector<std::uint32_t> all_;
};

Roots::Roots(const Design::RoutedDesign& design, const Model::Network& network,
             const std::vector<std::uint32_t>& clockPins)
    : design_(design), network_(network), isClockPin_(network.size()), hasOwnRoot_(network.size()) {
    Nodes sinks, orphans, own;
    for (const std::uint32_t pin : clockPins)
        network.eachCopy(network.sinkOf(pin), [&](std::uint32_t node) {
            sinks.push_back(node);
            isClockPin_[node] = true;
        });
    const Nodes behind = walk(sinks, false);
    for (const std::uint32_t node : behind)
        if (isRoot(node) && !isRegisterRoot(node))
            own.push_back(node);
    for (const std::uint32_t node : walk(own, true))
        hasOwnRoot_[node] = true;
    for (const std::uint32_t pin : clockPins) {
        bool hasOwn = false;
        network.eachCopy(network.sinkOf(pin),
                         [&](std::uint32_t node) { hasOwn = hasOwn || hasOwnRoot_[node]; });
        network.eachCopy(network.sinkOf(pin), [&](std::uint32_t node) {
            hasOwnRoot_[node] = hasOwn;
            if (!hasOwn)
                orphans.push_back(node);
        });
    }
    for (const std::uint32_t node : walk(orphans, false))
        if (isRoot(node) && isRegisterRoot(node))
            own.push_back(node);
    for (const std::uint32_t node : own)
        all_.push_back(network.pinOf(node));
    std::ranges::sort(all_);
    all_.erase(std::ranges::unique(all_).begin(), all_.end());
    std::ranges::sort(all_, [&](std::uint32_t a, std::uint32_t b) { return isNamedBefore(design, a, b); });
}

bool Roots::isRoot(std::uint32_t node) const {
    return std::ranges::all_of(network_.in(node), [&](std::uint32_t number) {
        const ArcKind kind = network_.arcs()[number].kind;
        return kind == ArcKind::launch || kind == ArcKind::cut;
    });
}

// All that through arcs lead to, each node once.
Roots::Nodes Roots::walk(Nodes from, bool forwards) const {
    std::vector<bool> seen(network_.size());
    Nodes found;
    const auto reach = [&](std::uint32_t node) {
        if (!seen[node])
            found.push_back(node);
        seen[node] = true;
    };
    for (const std::uint32_t node : from)
        reach(node);
    for (std::size_t next = 0; next < found.size(); ++next)
        for (const std::uint32_t number : forwards ? network_.out(found[next]) : network_.in(found[next]))
            if (const Arc& arc = network_.arcs()[number]; arc.kind == ArcKind::through)
                reach(forwards ? arc.to : arc.from);
    return found;
}

std::size_t Roots::countPins(std::uint32_t root) const {
    const std::uint32_t nodes[] = {network_.sinkOf(root), network_.sourceOf(root)};
    Nodes from;
    for (const std::uint32_t node : nodes)
        if (isRoot(node) && (from.empty() || from.front() != node))
            from.push_back(node);
    std::vector<std::uint32_t> pins; // several nodes may stand for one
    for (const std::uint32_t node : walk(from, true))
        if (isClockPin_[node] && (!isRegisterRoot(from.front()) || !hasOwnRoot_[node]))
            pins.push_back(network_.pinOf(node));
    std::ranges::sort(pins);
    return static_cast<std::size_t>(std::ranges::unique(pins).begin() - pins.begin());
}

} // namespace

Design::Constraints clocksAtRoots(const Design::RoutedDesign& design, Base::Diagnostics& diagnostics) {
    Design::Constraints constraints;
    constraints.files = {""};
    Base::Diagnostics unheard; // of loops, which are told when the clocks are known
    const Model::Network network(design, constraints, {}, unheard);
    std::vector<std::uint32_t> clockPins;
    for (std::uint32_t pin = 0; pin < design.pins.size(); ++pin)
        if (design.isClockPin(pin))
            clockPins.push_back(pin);
    const Roots roots(design, network, clockPins);
    for (const std::uint32_t root : roots.all()) {
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
    const Roots roots(design, network, model.unclocked());
    for (const std::uint32_t root : roots.all()) {
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
