// The network out of the design: nodes, what is taken out, arcs merged and linked. Loops are opened in
// NetworkLoops.cpp.
#include "model/Network.h"

#include <algorithm>
#include <numeric>
#include <unordered_map>

namespace Model {

namespace {

// Groups the arcs by one of their ends, in order.
template <class EndOf>
void group(const std::vector<Arc>& arcs, std::size_t nodes, EndOf endOf, std::vector<std::uint32_t>& first,
           std::vector<std::uint32_t>& members) {
    first.assign(nodes + 1, 0);
    for (const Arc& arc : arcs)
        ++first[endOf(arc) + 1];
    std::partial_sum(first.begin(), first.end(), first.begin());
    members.resize(arcs.size());
    std::vector<std::uint32_t> next(first.begin(), first.end() - 1);
    for (std::uint32_t number = 0; number < arcs.size(); ++number)
        members[next[endOf(arcs[number])]++] = number;
}

} // namespace

Network::Network(const Design::RoutedDesign& design, const Design::Constraints& constraints,
                 const std::vector<std::uint32_t>& clockSources, Base::Diagnostics& diagnostics,
                 const LoopLimits& limits)
    : design_(design) {
    makeNodes();
    originals_ = size();
    constant_.assign(size(), false);
    if (!constraints.caseValues.empty())
        diagnostics.note(constraints.place(constraints.caseValues.front().origin),
                         "set_case_analysis: constants stop at the pins that they are given for, since what "
                         "cells make of them is not known");
    for (const Design::CaseValue& value : constraints.caseValues)
        constant_[sinkOf(value.pin)] = constant_[sourceOf(value.pin)] = true;
    clockSource_.assign(size(), false);
    for (const std::uint32_t pin : clockSources)
        clockSource_[sourceOf(pin)] = true;
    std::vector<bool> arcDisabled(design.arcs.size());
    checkDisabled_.assign(design.checks.size(), false);
    disable(constraints, arcDisabled);
    makeArcs(arcDisabled);
    link();
    if (!putInOrder())
        openLoops(limits, diagnostics);
}

void Network::makeNodes() {
    pinOfNode_.resize(design_.pins.size());
    std::iota(pinOfNode_.begin(), pinOfNode_.end(), 0U);
    driverOfPin_ = pinOfNode_;
    for (std::uint32_t pin = 0; pin < design_.pins.size(); ++pin)
        if (design_.pins[pin].direction == Design::Direction::inout) {
            driverOfPin_[pin] = size();
            pinOfNode_.push_back(pin);
        }
}

// A cell alone: all of it. With pins: arcs and checks from and to them. A pin or port: all that touches it.
void Network::disable(const Design::Constraints& constraints, std::vector<bool>& arcDisabled) {
    struct Rule {
        std::uint32_t from = Base::none, to = Base::none; // pins; none: any
        bool both = true;                                 // else either end suffices
    };
    std::unordered_map<std::uint32_t, std::vector<Rule>> ofCells, ofPins;
    for (const Design::Disable& disable : constraints.disables) {
        if (disable.object.kind != Design::ObjectKind::cell) {
            ofPins[disable.object.index].push_back({});
            continue;
        }
        const std::uint32_t cell = disable.object.index;
        Rule rule;
        if (disable.from)
            rule.from = design_.findPin(cell, *disable.from);
        if (disable.to)
            rule.to = design_.findPin(cell, *disable.to);
        if ((!disable.from || rule.from != Base::none) && (!disable.to || rule.to != Base::none))
            ofCells[cell].push_back(rule);
    }
    if (ofCells.empty() && ofPins.empty())
        return;
    const auto isOff = [&](std::uint32_t from, std::uint32_t to, bool wire) {
        if (ofPins.contains(from) || ofPins.contains(to))
            return true;
        const auto found = wire ? ofCells.end() : ofCells.find(design_.pins[from].cell);
        return found != ofCells.end() && std::ranges::any_of(found->second, [&](const Rule& rule) {
                   return (rule.from == Base::none || rule.from == from) &&
                          (rule.to == Base::none || rule.to == to);
               });
    };
    for (std::size_t number = 0; number < design_.arcs.size(); ++number) {
        const Design::Arc& arc = design_.arcs[number];
        arcDisabled[number] = isOff(arc.from, arc.to, arc.wire);
    }
    for (std::size_t number = 0; number < design_.checks.size(); ++number) {
        const Design::Check& check = design_.checks[number];
        checkDisabled_[number] =
            isOff(check.clock, check.data, false) || isOff(check.data, check.clock, false);
    }
}

void Network::addArc(const Design::Arc& arc) {
    const bool launch = design_.isClockToOutput(arc);
    const std::uint32_t from = arc.wire ? sourceOf(arc.from) : sinkOf(arc.from);
    const std::uint32_t to = arc.wire ? sinkOf(arc.to) : sourceOf(arc.to);
    if (constant_[from] || constant_[to])
        return;
    const ArcKind kind = clockSource_[to] ? ArcKind::hidden : launch ? ArcKind::launch : ArcKind::through;
    arcs_.push_back({from, to, arc.delay, kind, launch ? arc.fromEdge : Design::Transition::any, launch});
}

void Network::makeArcs(const std::vector<bool>& arcDisabled) {
    for (std::size_t number = 0; number < design_.arcs.size(); ++number) {
        const Design::Arc& arc = design_.arcs[number];
        if (!arcDisabled[number] && !arc.disabled && !design_.isReset(arc))
            addArc(arc);
    }
    // Of arcs between the same nodes and on the same edge, the first takes the delays of all.
    Base::HashMap<std::uint64_t, std::uint32_t> known;
    known.reserve(arcs_.size());
    std::uint32_t kept = 0;
    for (const Arc& arc : arcs_) {
        const std::uint64_t key =
            (std::uint64_t{arc.from} << 32 | arc.to) * 4 + static_cast<unsigned>(arc.edge);
        const auto [place, isNew] = known.try_emplace(key, kept);
        if (isNew) {
            arcs_[kept++] = arc;
            continue;
        }
        Design::Interval& delay = arcs_[place->second].delay;
        delay.early = std::min(delay.early, arc.delay.early);
        delay.late = std::max(delay.late, arc.delay.late);
    }
    arcs_.resize(kept);
}

void Network::link() {
    group(
        arcs_, size(), [](const Arc& arc) { return arc.from; }, outFirst_, out_);
    group(
        arcs_, size(), [](const Arc& arc) { return arc.to; }, inFirst_, in_);
}

// False if there is no order, because of a loop.
bool Network::putInOrder() {
    enum class State : std::uint8_t { unseen, open, done };
    std::vector<State> states(size(), State::unseen);
    struct Step {
        std::uint32_t node;
        std::uint32_t next; // into out(node)
    };
    std::vector<Step> walk;
    const auto enter = [&](std::uint32_t node) {
        states[node] = State::open;
        walk.push_back({node, 0});
    };
    order_.clear();
    order_.reserve(size());
    for (std::uint32_t start = 0; start < size(); ++start) {
        if (states[start] != State::unseen)
            continue;
        enter(start);
        while (!walk.empty()) {
            Step& step = walk.back();
            const std::span<const std::uint32_t> arcs = out(step.node);
            if (step.next == arcs.size()) {
                states[step.node] = State::done;
                order_.push_back(step.node);
                walk.pop_back();
                continue;
            }
            const Arc& arc = arcs_[arcs[step.next++]];
            if (arc.kind != ArcKind::through)
                continue;
            if (states[arc.to] == State::unseen)
                enter(arc.to);
            else if (states[arc.to] == State::open)
                return false;
        }
    }
    std::ranges::reverse(order_);
    return true;
}

} // namespace Model
