// The poles and arcs of the timing graph, sources first.
#include "model/ClockGroups.h"
#include "model/TimingModel.h"

#include <algorithm>

namespace Model {

using Pelko::ClockMode;
using Pelko::Delay;
using Pelko::Edge;
using Pelko::Pole;

namespace {

ClockMode modeOf(bool rising) { return rising ? ClockMode::Rising : ClockMode::Falling; }

Delay delayOf(Time time) { return Delay(static_cast<int>(time)); }

} // namespace

Pole* TimingModel::note(Pole* pole, NodeId node) {
    nodeOfPole_.resize(std::max<std::size_t>(nodeOfPole_.size(), pole->getIndex() + 1));
    startOfPole_.resize(nodeOfPole_.size());
    endOfPole_.resize(nodeOfPole_.size());
    nodeOfPole_[pole->getIndex()] = node;
    return pole;
}

void TimingModel::connect(Pole* from, Pole* to, const Design::Interval& delay) {
    Edge::create(from, to, delayOf(delay.early), delayOf(delay.late));
}

Pelko::Instance* TimingModel::instanceOf(CellId cell) {
    Pelko::Instance*& instance = instances_[cell];
    if (!instance)
        instance = Pelko::Instance::create(
            host_.getModule(), cell == Base::none ? "(ports)" : std::string(design_.cellName(cell)));
    return instance;
}

// --- Clocks ---

void TimingModel::makeRoots() {
    clock_.assign(network_.size(), nullptr);
    data_.assign(network_.size(), nullptr);
    roots_.assign(clocks_.size(), nullptr);
    Pelko::Analyzer* analyzer = host_.getAnalyzer();
    for (const ClockId number : clocks_.ids()) {
        const Clock& clock = clocks_[number];
        if (clock.removed)
            continue;
        Pole* root = note(Pole::createClockSource(host_.getCell(), clock.name), Base::none);
        roots_[number] = root;
        clockOfRoot_[root] = number;
        if (clock.period > 0)
            analyzer->setClock(root, delayOf(clock.period), delayOf(clock.rise), delayOf(clock.high()),
                               delayOf(clock.period - clock.high()));
        if (clock.source != Latency{})
            analyzer->setSourceLatency(root, delayOf(clock.source.early), delayOf(clock.source.late));
    }
}

void TimingModel::makeClockPlane() {
    for (const NodeId node : network_.order()) {
        if (!needsClock_[node])
            continue;
        clock_[node] = note(Pole::create(host_.getCell()), node);
        for (const ArcId number : network_.in(node))
            if (const Arc& arc = network_.arcs()[number]; arc.kind == ArcKind::through && clock_[arc.from])
                connect(clock_[arc.from], clock_[node], arc.delay);
    }
    for (const ClockId number : clocks_.ids()) {
        const Clock& clock = clocks_[number];
        if (clock.removed || !clock.propagated)
            continue;
        for (std::size_t target = 0; target < clock.targets.size(); ++target)
            if (Pole* pole = clock_[clock.targets[target]])
                connect(roots_[number], pole,
                        {static_cast<std::int32_t>(clock.insertion[target].early),
                         static_cast<std::int32_t>(clock.insertion[target].late)});
    }
    for (const PinId pin : clockPinOrder_)
        makeClockPin(pin, clockPins_.at(pin));
}

// The pin's neutral pole, which all clocks reach, and one pole after it for each working edge.
void TimingModel::makeClockPin(PinId pin, ClockPin& clockPin) {
    const NodeId node = network_.sinkOf(pin);
    const bool isCopied = !network_.copiesOf(node).empty();
    Pole* neutral = isCopied ? nullptr : clock_[node];
    if (!neutral)
        neutral = note(Pole::create(host_.getCell()), node);
    if (isCopied) // of a loop
        network_.eachCopy(node, [&](NodeId copy) {
            if (clock_[copy])
                connect(clock_[copy], neutral, {});
        });
    for (const ClockId number : clocksAt_.at(pin)) {
        const Clock& clock = clocks_[number];
        if (!clock.propagated)
            connect(roots_[number], neutral,
                    {static_cast<std::int32_t>(clock.network.early),
                     static_cast<std::int32_t>(clock.network.late)});
    }
    const Edges launch = clockPin.launchEdges(), check = clockPin.checkEdges();
    if (launch.rise || check.rise || clockPin.outputs.rise || clockPin.checks.rise)
        clockPin.rise = makeEdge(pin, true, neutral);
    if (launch.fall || check.fall || clockPin.outputs.fall || clockPin.checks.fall)
        clockPin.fall = makeEdge(pin, false, neutral);
}

Pole* TimingModel::makeEdge(PinId pin, bool rising, Pole* behind) {
    const std::string name = std::string(design_.names[design_.pins[pin].name]) + (rising ? "" : "(fall)");
    Pelko::Pin* hostPin = Pelko::Pin::create(instanceOf(design_.pins[pin].cell), name);
    Pole* pole = note(Pole::createClock(host_.getCell(), hostPin, modeOf(rising)), network_.sinkOf(pin));
    connect(behind, pole, {});
    startOfPole_[pole->getIndex()] = starts_.next();
    starts_.push_back({Start::Kind::reg, pin, rising, nullptr, pole});
    return pole;
}

void TimingModel::separateGroups() {
    for (const Design::ClockGroups& stated : constraints_.clockGroups) {
        const std::vector<ClockGroups::Groups> statements = ClockGroups::disjoint(stated.groups);
        if (statements.empty())
            diagnostics_.warning(
                constraints_.place(stated.origin),
                "set_clock_groups: each clock shares a group with every other: the command has no effect");
        for (const ClockGroups::Groups& groups : statements) {
            std::vector<std::vector<Pole*>> roots;
            for (const ClockGroups::Group& group : groups) {
                std::vector<Pole*>& of = roots.emplace_back();
                for (const ClockId number : group)
                    if (roots_[number])
                        of.push_back(roots_[number]);
            }
            host_.getAnalyzer()->addClockGroups(Pelko::Analyzer::GroupKind::Exclusive, roots);
        }
    }
}

// --- Where data starts ---

// A port's bound with the latency of its reference clock; one that was not given stays undefined and absorbs.
Delay TimingModel::bound(const std::optional<Base::Decimal>& value, const Design::PortDelay& delay,
                         Time latency) const {
    return value ? delayOf(toUnits(*value, scale_, constraints_.place(delay.origin)) + latency)
                 : Delay::getUndefined();
}

void TimingModel::makeInput(const Design::PortDelay* delay, PinId pin) {
    const NodeId node = network_.sourceOf(pin);
    Pole* pole = note(Pole::createInput(host_.getCell()), node);
    startOfPole_[pole->getIndex()] = starts_.next();
    starts_.push_back({Start::Kind::port, pin, !delay || !delay->clockFall, delay, pole});
    Pelko::IOConstraint constraint(nullptr, ClockMode::None, Delay(0), Delay(0));
    if (delay && delay->clock != Base::none) {
        const Latency latency = latencyAt(delay);
        constraint = Pelko::IOConstraint(roots_[delay->clock], modeOf(!delay->clockFall),
                                         bound(delay->min, *delay, latency.early),
                                         bound(delay->max, *delay, latency.late));
    }
    host_.getAnalyzer()->setInputConstraint(pole, constraint);
}

void TimingModel::makeInputs() {
    std::unordered_set<PinId> delayed;
    for (const Design::PortDelay& delay : constraints_.portDelays) {
        if (!delay.input)
            continue;
        delayed.insert(delay.pin);
        if (isTimed(delay) && needsData_[network_.sourceOf(delay.pin)])
            makeInput(&delay, delay.pin);
    }
    for (const PinId pin : design_.ports()) {
        const NodeId node = network_.sourceOf(pin);
        if (timedPorts_.inputs.contains(pin) && !delayed.contains(pin) && needsData_[node] &&
            !network_.isConstant(node) && !network_.isClockSource(node))
            makeInput(nullptr, pin);
    }
}

// A clock used as data starts at its source on both edges, an ideal one without its network latency.
void TimingModel::makeSourceEdges() {
    for (const ClockId number : clocks_.ids()) {
        const Clock& clock = clocks_[number];
        for (std::size_t target = 0; !clock.removed && target < clock.targets.size(); ++target) {
            const NodeId node = clock.targets[target];
            if (!needsData_[node] || network_.isConstant(node))
                continue;
            Pelko::Instance* instance = Pelko::Instance::create(
                host_.getModule(), "(source " + std::to_string(target) + " of " + clock.name + ")");
            for (const bool rising : {true, false}) {
                Pelko::Pin* hostPin = Pelko::Pin::create(instance, rising ? "rise" : "fall");
                Pole* pole = note(Pole::createClock(host_.getCell(), hostPin, modeOf(rising)), node);
                connect(roots_[number], pole,
                        {static_cast<std::int32_t>(clock.insertion[target].early),
                         static_cast<std::int32_t>(clock.insertion[target].late)});
                startOfPole_[pole->getIndex()] = starts_.next();
                starts_.push_back({Start::Kind::clockSource, network_.pinOf(node), rising, nullptr, pole});
            }
        }
    }
}

// --- Between ---

void TimingModel::makeDataPlane() {
    for (const NodeId node : network_.order())
        if (needsData_[node])
            data_[node] = note(Pole::create(host_.getCell()), node);
    for (const NodeId node : network_.order()) {
        if (!data_[node])
            continue;
        for (const ArcId number : network_.in(node))
            if (const Arc& arc = network_.arcs()[number]; arc.kind == ArcKind::through && data_[arc.from])
                connect(data_[arc.from], data_[node], arc.delay);
    }
    for (const PinId pin : clockPinOrder_)
        makeLaunches(pin, clockPins_.at(pin));
    for (const Start& start : starts_)
        if (start.kind != Start::Kind::reg)
            if (Pole* pole = data_[network_.sourceOf(start.pin)])
                makeEntry(start, pole);
}

// The engine takes a port's delay into account only if a clock launches there. A delay without a clock is on
// the arc into the port.
void TimingModel::makeEntry(const Start& start, Pole* port) {
    if (start.delay && start.delay->clock == Base::none)
        Edge::create(start.pole, port, bound(start.delay->min, *start.delay, 0),
                     bound(start.delay->max, *start.delay, 0));
    else
        connect(start.pole, port, {});
}

// Clock-to-output arcs; two of one edge into one output are one.
void TimingModel::makeLaunches(PinId pin, const ClockPin& clockPin) {
    const Edges unnamed = clockPin.launchEdges();
    for (const ArcId number : network_.out(network_.sinkOf(pin))) {
        const Arc& arc = network_.arcs()[number];
        if (arc.kind != ArcKind::launch || !data_[arc.to])
            continue;
        for (const bool rising : {true, false}) {
            const bool named = arc.edge == (rising ? Design::Transition::rise : Design::Transition::fall);
            if (!named && (arc.edge != Design::Transition::any || !(rising ? unnamed.rise : unnamed.fall)))
                continue;
            Pole* from = clockPin.pole(rising);
            if (Edge* known = data_[arc.to]->getIncomingEdge(from)) {
                known->setMinDelay(std::min(known->getMinDelay(), delayOf(arc.delay.early)));
                known->setMaxDelay(std::max(known->getMaxDelay(), delayOf(arc.delay.late)));
            } else {
                connect(from, data_[arc.to], arc.delay);
            }
        }
    }
}

// --- Where data ends ---

void TimingModel::makeChecks() {
    for (const Design::Check* check : checks_) {
        const ClockPin& clockPin = clockPins_.at(check->clock);
        const Edges unnamed = clockPin.checkEdges();
        for (const bool rising : {true, false}) {
            const bool named =
                check->clockEdge == (rising ? Design::Transition::rise : Design::Transition::fall);
            if (!named &&
                (check->clockEdge != Design::Transition::any || !(rising ? unnamed.rise : unnamed.fall)))
                continue;
            Pole* pole = note(Pole::createCheck(clockPin.pole(rising)), network_.sinkOf(check->data));
            network_.eachCopy(network_.sinkOf(check->data), [&](NodeId node) {
                Edge::create(data_[node], pole, check->hold ? delayOf(*check->hold) : Delay::getUndefined(),
                             check->setup ? delayOf(*check->setup) : Delay::getUndefined());
            });
            endOfPole_[pole->getIndex()] = ends_.next();
            ends_.push_back({check->data, check->clock, rising, check->setup, check->hold, nullptr, pole});
        }
    }
}

void TimingModel::makeOutput(const Design::PortDelay* delay, PinId pin) {
    Pole* pole = note(Pole::createOutput(host_.getCell()), network_.sinkOf(pin));
    endOfPole_[pole->getIndex()] = ends_.next();
    ends_.push_back({pin, Base::none, !delay || !delay->clockFall, std::nullopt, std::nullopt, delay, pole});
    network_.eachCopy(network_.sinkOf(pin), [&](NodeId node) { connect(data_[node], pole, {}); });
    Pelko::IOConstraint constraint(nullptr, ClockMode::None, Delay(0), Delay(0));
    if (delay) {
        // A later capture leaves more time for setup and less for hold.
        const Latency latency = latencyAt(delay);
        const bool hasClock = delay->clock != Base::none;
        constraint = Pelko::IOConstraint(
            hasClock ? roots_[delay->clock] : nullptr, hasClock ? modeOf(!delay->clockFall) : ClockMode::None,
            bound(delay->min, *delay, -latency.late), bound(delay->max, *delay, -latency.early));
    }
    host_.getAnalyzer()->setOutputConstraint(pole, constraint);
}

void TimingModel::makeOutputs() {
    std::unordered_set<PinId> delayed;
    for (const Design::PortDelay& delay : constraints_.portDelays) {
        if (delay.input)
            continue;
        delayed.insert(delay.pin);
        if (isTimed(delay))
            makeOutput(&delay, delay.pin);
    }
    for (const PinId pin : design_.ports())
        if (timedPorts_.outputs.contains(pin) && !delayed.contains(pin) && data_[network_.sinkOf(pin)])
            makeOutput(nullptr, pin);
}

} // namespace Model
