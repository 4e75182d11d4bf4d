// Which poles there are: what clocks reach and what leads to end points. The poles are made in Poles.cpp.
#include "model/TimingModel.h"

#include <algorithm>
#include <cstdlib>

namespace Model {

using Pelko::Delay;

TimingModel::Edges TimingModel::ClockPin::launchEdges() const {
    return checks.any() ? checks : outputs.any() ? outputs : Edges{true, false};
}

TimingModel::Edges TimingModel::ClockPin::checkEdges() const {
    return outputs.any() ? outputs : checks.any() ? checks : Edges{true, false};
}

TimingModel::TimingModel(const Design::RoutedDesign& design, const Network& network, const Clocks& clocks,
                         const Design::Constraints& constraints, const TimedPorts& timedPorts, int scale,
                         Base::Diagnostics& diagnostics)
    : design_(design), network_(network), clocks_(clocks), constraints_(constraints), timedPorts_(timedPorts),
      scale_(scale), diagnostics_(diagnostics), host_(design.name.empty() ? "design" : design.name) {
    checkRange();
    findClockPins();
    findEnds();
    pruneData();
    pruneClocks();
    makeRoots();
    makeClockPlane();
    makeInputs();
    makeSourceEdges();
    makeDataPlane();
    makeChecks();
    makeOutputs();
    separateGroups();
}

const Start* TimingModel::startAt(const Pelko::Pole* pole) const {
    const StartId start = startOfPole_[pole->getIndex()];
    return start == Base::none ? nullptr : &starts_[start];
}

const End* TimingModel::endAt(const Pelko::Pole* pole) const {
    const EndId end = endOfPole_[pole->getIndex()];
    return end == Base::none ? nullptr : &ends_[end];
}

ClockId TimingModel::clockOf(const Pelko::Pole* root) const {
    const auto found = clockOfRoot_.find(root);
    return found == clockOfRoot_.end() ? ClockId() : found->second;
}

Latency TimingModel::latencyAt(const Design::PortDelay* delay) const {
    if (!delay || delay->clock == Base::none)
        return {};
    return clocks_[delay->clock].atPorts(!delay->sourceLatencyIncluded, !delay->networkLatencyIncluded);
}

const std::vector<ClockId>& TimingModel::clocksAt(PinId pin) const {
    static const std::vector<ClockId> empty;
    const auto found = clocksAt_.find(pin);
    return found == clocksAt_.end() ? empty : found->second;
}

// --- What fits ---

// The engine's integers stop at their ends, and what stops there is no time any more. So the longest path
// that there could be must fit: along a clock to a register, through it, on to an end point, and its delay or
// check.
void TimingModel::checkRange() const {
    const auto size = [](const auto& delay) {
        return std::max(std::abs(Time{delay.early}), std::abs(Time{delay.late}));
    };
    const auto raise = [](Time& most, Time value) { most = std::max(most, value); };
    Base::IndexVector<NodeId, Time> longest(network_.size());
    Time along = 0, launch = 0, end = 0, clock = 0;
    for (const NodeId node : network_.order()) {
        raise(along, longest[node]);
        for (const ArcId number : network_.out(node)) {
            const Arc& arc = network_.arcs()[number];
            if (arc.kind == ArcKind::through)
                raise(longest[arc.to], longest[node] + size(arc.delay));
            else if (arc.kind == ArcKind::launch)
                raise(launch, size(arc.delay));
        }
    }
    for (const Design::Check& check : design_.checks)
        raise(end, std::max(std::abs(Time{check.setup.value_or(0)}), std::abs(Time{check.hold.value_or(0)})));
    for (const Design::PortDelay& delay : constraints_.portDelays)
        for (const std::optional<Base::Decimal>& value : {delay.min, delay.max})
            if (value)
                raise(end, std::abs(toUnits(*value, scale_, constraints_.place(delay.origin))));
    for (const Clock& of : clocks_.all()) {
        Time insertion = 0;
        for (const Latency& target : of.insertion)
            raise(insertion, size(target));
        raise(clock, size(of.source) + insertion + size(of.network));
    }
    const Time most = Delay::maximumValue - 1, needed = clock + 2 * along + launch + 2 * end;
    if (needed > most)
        throw Base::BadInput({}, "the delays of a path may add up to " + std::to_string(needed) +
                                     " units of 1e" + std::to_string(scale_) + " s: expected at most " +
                                     std::to_string(most) + "; a coarser --resolution may help");
}

// --- What is needed ---

void TimingModel::findClockPins() {
    std::unordered_set<PinId> pulsed;
    for (const Design::PulseCheck& check : design_.pulseChecks)
        pulsed.insert(check.pin);
    for (const ClockId number : clocks_.ids())
        if (!clocks_[number].removed)
            for (const NodeId node : clocks_[number].reached)
                if (const PinId pin = network_.pinOf(node); design_.isClockPin(pin) || pulsed.contains(pin)) {
                    std::vector<ClockId>& at = clocksAt_[pin];
                    if (at.empty() || at.back() != number) // by several copies of the pin
                        at.push_back(number);
                }
    for (const NodeId node : network_.order()) {
        const PinId pin = network_.pinOf(node);
        if (node != network_.sinkOf(pin) || !design_.isClockPin(pin))
            continue;
        if (clocksAt_.contains(pin)) {
            clockPins_.try_emplace(pin);
            clockPinOrder_.push_back(pin);
        } else {
            unclocked_.push_back(pin);
        }
    }
    for (const Arc& arc : network_.arcs())
        if (arc.launch && arc.edge != Design::Transition::any)
            if (const auto found = clockPins_.find(network_.pinOf(arc.from)); found != clockPins_.end())
                found->second.outputs.add(arc.edge);
    for (const Design::Check& check : design_.checks)
        if (check.clockEdge != Design::Transition::any)
            if (const auto found = clockPins_.find(check.clock); found != clockPins_.end())
                found->second.checks.add(check.clockEdge);
}

void TimingModel::findEnds() {
    for (const Design::Check& check : design_.checks)
        if (!network_.isDisabled(check) && clockPins_.contains(check.clock) &&
            !network_.isConstant(network_.sinkOf(check.data)))
            checks_.push_back(&check);
}

bool TimingModel::isTimed(const Design::PortDelay& delay) const {
    if (!delay.min && !delay.max)
        return false;
    if (delay.clock != Base::none
            ? clocks_[delay.clock].removed
            : !(delay.input ? timedPorts_.inputs : timedPorts_.outputs).contains(delay.pin))
        return false;
    const NodeId node = delay.input ? network_.sourceOf(delay.pin) : network_.sinkOf(delay.pin);
    return !network_.isConstant(node) && !(delay.input && network_.isClockSource(node));
}

// Backwards from the end points, along through arcs.
void TimingModel::pruneData() {
    needsData_.assign(network_.size(), false);
    const auto isNeeded = [&](PinId pin) {
        network_.eachCopy(network_.sinkOf(pin), [&](NodeId node) { needsData_[node] = true; });
    };
    for (const Design::Check* check : checks_)
        isNeeded(check->data);
    for (const Design::PortDelay& delay : constraints_.portDelays)
        if (!delay.input && isTimed(delay))
            isNeeded(delay.pin);
    for (const PinId pin : timedPorts_.outputs)
        isNeeded(pin);
    for (auto node = network_.order().rbegin(); node != network_.order().rend(); ++node) {
        if (needsData_[*node])
            continue;
        for (const ArcId number : network_.out(*node))
            if (const Arc& arc = network_.arcs()[number]; arc.kind == ArcKind::through && needsData_[arc.to])
                needsData_[*node] = true;
    }
}

// What propagated clocks reach and what leads to a clock pin.
void TimingModel::pruneClocks() {
    Base::IndexVector<NodeId, bool> reached(network_.size());
    for (const Clock& clock : clocks_.all())
        if (!clock.removed && clock.propagated)
            for (const NodeId node : clock.reached)
                reached[node] = true;
    needsClock_.assign(network_.size(), false);
    for (auto node = network_.order().rbegin(); node != network_.order().rend(); ++node) {
        if (!reached[*node])
            continue;
        bool needed = clockPins_.contains(network_.pinOf(*node));
        for (const ArcId number : network_.out(*node))
            if (const Arc& arc = network_.arcs()[number]; arc.kind == ArcKind::through && needsClock_[arc.to])
                needed = true;
        needsClock_[*node] = needed;
    }
}

} // namespace Model
