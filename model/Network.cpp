// Makes the network from the design: nodes, arcs without those that are disabled, merged and linked. Loops
// are opened in NetworkLoops.cpp.
#include "model/Network.h"

#include <algorithm>
#include <numeric>
#include <unordered_map>

namespace Model {

Network::Network(const Design::RoutedDesign& design, const Design::Constraints& constraints,
                 const std::vector<PinId>& clockSources, Base::Diagnostics& diagnostics,
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
    for (const PinId pin : clockSources)
        clockSource_[sourceOf(pin)] = true;
    DisabledArcs arcDisabled(design.arcs.size());
    checkDisabled_.assign(design.checks.size(), false);
    disable(constraints, arcDisabled);
    makeArcs(arcDisabled);
    link();
    if (!putInOrder())
        openLoops(limits, diagnostics);
}

void Network::makeNodes() {
    pinOfNode_.assign(design_.pins.ids().begin(), design_.pins.ids().end());
    driverOfPin_.assign(pinOfNode_.ids().begin(), pinOfNode_.ids().end());
    for (const PinId pin : design_.pins.ids())
        if (design_.pins[pin].direction == Design::Direction::inout) {
            driverOfPin_[pin] = pinOfNode_.next();
            pinOfNode_.push_back(pin);
        }
}

// A cell without pins: all its arcs and checks. A cell with pins: those from and to the pins. A pin or port:
// all arcs and checks of it.
void Network::disable(const Design::Constraints& constraints, DisabledArcs& arcDisabled) {
    struct Rule {
        PinId from = Base::none, to = Base::none; // none: any
        bool both = true;                         // else either end suffices
    };
    std::unordered_map<CellId, std::vector<Rule>> ofCells;
    std::unordered_map<PinId, std::vector<Rule>> ofPins;
    for (const Design::Disable& disable : constraints.disables) {
        if (disable.object.kind != Design::ObjectKind::cell) {
            ofPins[disable.object.pin()].push_back({});
            continue;
        }
        const CellId cell = disable.object.cell();
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
    const auto isOff = [&](PinId from, PinId to, bool wire) {
        if (ofPins.contains(from) || ofPins.contains(to))
            return true;
        const auto found = wire ? ofCells.end() : ofCells.find(design_.pins[from].cell);
        return found != ofCells.end() && std::ranges::any_of(found->second, [&](const Rule& rule) {
                   return (rule.from == Base::none || rule.from == from) &&
                          (rule.to == Base::none || rule.to == to);
               });
    };
    for (const Design::ArcId number : design_.arcs.ids()) {
        const Design::Arc& arc = design_.arcs[number];
        arcDisabled[number] = isOff(arc.from, arc.to, arc.wire);
    }
    for (const Design::CheckId number : design_.checks.ids()) {
        const Design::Check& check = design_.checks[number];
        checkDisabled_[number] =
            isOff(check.clock, check.data, false) || isOff(check.data, check.clock, false);
    }
}

void Network::addArc(const Design::Arc& arc) {
    const bool launch = design_.isClockToOutput(arc);
    const NodeId from = arc.wire ? sourceOf(arc.from) : sinkOf(arc.from);
    const NodeId to = arc.wire ? sinkOf(arc.to) : sourceOf(arc.to);
    if (constant_[from] || constant_[to])
        return;
    const ArcKind kind = clockSource_[to] ? ArcKind::hidden : launch ? ArcKind::launch : ArcKind::through;
    arcs_.push_back({from, to, arc.delay, kind, launch ? arc.fromEdge : Design::Transition::any, launch});
}

void Network::makeArcs(const DisabledArcs& arcDisabled) {
    for (const Design::ArcId number : design_.arcs.ids()) {
        const Design::Arc& arc = design_.arcs[number];
        if (!arcDisabled[number] && !arc.disabled && !design_.isReset(arc))
            addArc(arc);
    }
    // Of arcs between the same nodes and on the same edge, the first takes the delays of all.
    Base::HashMap<std::uint64_t, ArcId> known;
    known.reserve(arcs_.size());
    ArcId kept(0U);
    for (const Arc& arc : arcs_) {
        const std::uint64_t key = Base::pairKey(arc.from, arc.to) * 4 + static_cast<unsigned>(arc.edge);
        const auto [place, isNew] = known.try_emplace(key, kept);
        if (isNew) {
            arcs_[kept++] = arc;
            continue;
        }
        Design::Interval& delay = arcs_[place->second].delay;
        delay.early = std::min(delay.early, arc.delay.early);
        delay.late = std::max(delay.late, arc.delay.late);
    }
    arcs_.resize(kept.number());
}

void Network::link() {
    out_.assign(size(), arcs_.size(), [this](ArcId arc) { return arcs_[arc].from; });
    in_.assign(size(), arcs_.size(), [this](ArcId arc) { return arcs_[arc].to; });
}

// False if there is no order, because of a loop.
bool Network::putInOrder() {
    enum class State : std::uint8_t { unseen, open, done };
    Base::IndexVector<NodeId, State> states(size(), State::unseen);
    struct Step {
        NodeId node;
        std::uint32_t next; // into out(node)
    };
    std::vector<Step> walk;
    const auto enter = [&](NodeId node) {
        states[node] = State::open;
        walk.push_back({node, 0});
    };
    order_.clear();
    order_.reserve(size());
    for (const NodeId start : pinOfNode_.ids()) {
        if (states[start] != State::unseen)
            continue;
        enter(start);
        while (!walk.empty()) {
            Step& step = walk.back();
            const std::span<const ArcId> arcs = out(step.node);
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
