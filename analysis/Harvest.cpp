// What is read of a sweep: the slacks of its end points. Paths are traced in HarvestPaths.cpp.
#include "analysis/Harvest.h"

#include "base/Stopping.h"

#include <algorithm>

namespace Analysis {

using Base::none;
using Exceptions::Requirement;
using Model::End;
using Model::Start;
using Pelko::Delay;

namespace {

// How many end points are read between two looks at whether the run is to stop.
constexpr unsigned stopStride = 1024;

bool isRising(const Pelko::ClockMode& mode) { return mode.getCode() == Pelko::ClockMode::Rising; }

// The least whole number not below a / b; b > 0.
Time ceiling(Time a, Time b) { return a >= 0 ? (a + b - 1) / b : -(-a / b); }

} // namespace

std::optional<Time> ordinary(const Delay& delay) {
    const Time value = int(delay);
    if (!delay.isDefined() || value == int(Delay::getMinimum()) || value == int(Delay::getMaximum()))
        return std::nullopt;
    return value;
}

Harvest::Harvest(const Design::RoutedDesign& design, const Model::Network& network,
                 const Model::Clocks& clocks, const Design::Constraints& constraints,
                 Model::TimingModel& model, Exceptions::Exceptions& exceptions, const HarvestOptions& options)
    : design_(design), network_(network), clocks_(clocks), constraints_(constraints), model_(model),
      exceptions_(exceptions), options_(options) {}

const std::map<std::uint32_t, EndResult>& Harvest::endpoints() const {
    if (failure_)
        std::rethrow_exception(failure_);
    return endpoints_;
}

std::optional<Time> Harvest::achievedPeriod(std::uint32_t clock) const {
    const auto found = achieved_.find(clock);
    return found == achieved_.end() ? std::nullopt : std::optional(found->second);
}

std::set<std::pair<std::uint32_t, std::uint32_t>> Harvest::cutOffPairs() const {
    std::set<std::pair<std::uint32_t, std::uint32_t>> pairs;
    for (const auto& [edges, relation] : relations_)
        if (relation.cutOff)
            pairs.insert(std::minmax(std::get<0>(edges), std::get<2>(edges)));
    return pairs;
}

// --- Events ---

// A subdomain of two clocks with periods: its relations are those of the edges, uncertainty included. Hold
// counts backwards in the engine.
void Harvest::onCreated(Pelko::Object* object) {
    auto* subdomain = dynamic_cast<Pelko::Subdomain*>(object);
    if (!subdomain)
        return;
    const auto launch = model_.clockOf(subdomain->getLaunchRoot());
    const auto capture = model_.clockOf(subdomain->getLatchRoot());
    if (!launch || !capture || clocks_[*launch].period == 0 || clocks_[*capture].period == 0)
        return;
    const bool launchRise = isRising(subdomain->getLaunchClockMode());
    const bool captureRise = isRising(subdomain->getLatchClockMode());
    const auto [place, isNew] = relations_.try_emplace({*launch, launchRise, *capture, captureRise});
    if (isNew)
        place->second = relate(clocks_[*launch], launchRise, clocks_[*capture], captureRise);
    const auto fixed = [&](bool setup) {
        const Time uncertainty = clocks_.uncertainty(*launch, *capture, none, setup);
        const Time relation = setup ? place->second.setup - uncertainty : -place->second.hold - uncertainty;
        return Delay(static_cast<int>(relation));
    };
    subdomain->fixSetupRelation(fixed(true));
    subdomain->fixHoldRelation(fixed(false));
}

// Nothing may be thrown into the engine: what goes wrong is told when the results are asked for.
void Harvest::onDestroyed(Pelko::Object* object) {
    const auto* sweep = dynamic_cast<const Vorlen::Sweep*>(object);
    if (!sweep || failure_)
        return;
    try {
        read(sweep);
    } catch (...) {
        failure_ = std::current_exception();
    }
}

// --- Sweeps ---

Harvest::Context Harvest::contextOf(const Vorlen::Sweep* sweep) {
    const Pelko::Subdomain* subdomain = sweep->getSubdomain();
    Context context;
    context.sweep = sweep;
    context.launch = model_.clockOf(subdomain->getLaunchRoot()).value_or(none);
    context.capture = model_.clockOf(subdomain->getLatchRoot()).value_or(none);
    context.launchRise = isRising(subdomain->getLaunchClockMode());
    context.captureRise = isRising(subdomain->getLatchClockMode());
    const auto found =
        relations_.find({context.launch, context.launchRise, context.capture, context.captureRise});
    if (found != relations_.end())
        context.relation = found->second;
    return context;
}

void Harvest::read(const Vorlen::Sweep* sweep) {
    const Context context = contextOf(sweep);
    unsigned leaves = 0;
    for (Pelko::Pole* leaf : sweep->getSubdomain()->getLatchLeaves()) {
        if (leaves++ % stopStride == 0)
            Base::throwIfStopped();
        if (leaf->isOutput()) {
            readEnd(context, leaf, Vorlen::Timing(Delay(0), Delay(0)));
            continue;
        }
        Vorlen::TimingMap latch;
        if (!sweep->hasLatchTimingMap(leaf, latch))
            continue; // GCOVR_EXCL_LINE: poles follow the flow, so that every latching pin has an arrival
        for (Pelko::Pole* check : model_.host().getCell()->getAuxiliaryPoles(leaf->getPin()))
            readEnd(context, check, latch[0]);
    }
    traceQueue(context);
}

// Setup: the latest arrival against the earliest capture. Hold: the earliest arrival against the latest
// capture.
void Harvest::readEnd(const Context& context, Pelko::Pole* pole, const Vorlen::Timing& latch) {
    const End* end = model_.endAt(pole);
    Vorlen::TimingMap arrivals;
    if (!end || !context.sweep->hasArrivalTimingMap(pole, arrivals))
        return;
    const Exceptions::ClockEdges edges{context.launch, context.capture, context.launchRise,
                                       context.captureRise};
    for (const auto& [classes, timing] : arrivals) {
        Arrival arrival;
        arrival.end = end;
        arrival.classes = classes;
        arrival.requirement = &exceptions_.requirement(edges, end->pin, Exceptions::ClassSet(classes));
        arrival.setup = true;
        readSide(context, arrival, timing.getMaximumDelay(), latch.getMinimumDelay());
        arrival.setup = false;
        readSide(context, arrival, timing.getMinimumDelay(), latch.getMaximumDelay());
    }
}

void Harvest::readSide(const Context& context, Arrival arrival, Delay data, Delay latch) {
    const End& end = *arrival.end;
    const bool setup = arrival.setup;
    std::optional<Time> bound = 0;
    if (end.isPort()) {
        const Pelko::IOConstraint constraint = model_.host().getAnalyzer()->getOutputConstraint(end.pole);
        bound = ordinary(setup ? constraint.getMaximum() : constraint.getMinimum());
    }
    const std::optional<Time> arrives = ordinary(data), latency = ordinary(latch);
    if (!bound || !arrives || !latency)
        return;
    arrival.arrival = *arrives + *bound;
    arrival.captureLatency = *latency;
    if (context.capture != none)
        arrival.uncertainty = clocks_.uncertainty(context.launch, context.capture,
                                                  end.isPort() ? end.pin : end.clockPin, setup);

    const Requirement& requirement = *arrival.requirement;
    const Base::Side side = sideOf(setup);
    const std::optional<Time>& delay = requirement.delay[side];
    if (!delay && !context.relation)
        return; // an unconstrained path, which nothing governs
    noteGoverning(arrival);
    if (requirement.isFalse[side])
        return;
    if (delay) {
        arrival.relation = *delay;
        if (requirement.ignoresLatency[side])
            ignoreLatencies(context, arrival);
    } else {
        arrival.relation =
            (setup ? context.relation->setup : context.relation->hold) + requirement.shift[side];
    }
    const Time limit = arrival.relation + arrival.captureLatency;
    arrival.slack = setup ? limit - arrival.uncertainty - arrival.arrival
                          : arrival.arrival - (limit + arrival.uncertainty);
    record(context, arrival);
}

// --- Latencies that an exception drops ---

Time Harvest::launchLatency(const Context& context, const Start& start, bool late) const {
    if (start.kind == Start::Kind::port) {
        const auto latency = model_.latencyAt(start.delay);
        return late ? latency.late : latency.early;
    }
    Vorlen::TimingMap launch;
    if (!context.sweep->hasLaunchTimingMap(start.pole, launch))
        return 0;
    return ordinary(late ? launch[0].getMaximumDelay() : launch[0].getMinimumDelay()).value_or(0);
}

// The latency of all start points that the classes leave possible, where it is the same.
std::optional<Time> Harvest::commonLaunchLatency(const Context& context, std::uint64_t classes,
                                                 bool late) const {
    std::optional<Time> common;
    for (Pelko::Pole* leaf : context.sweep->getSubdomain()->getLaunchLeaves()) {
        const Start* start = model_.startAt(leaf);
        if (!start || !exceptions_.mayStart(*start, Exceptions::ClassSet(classes)))
            continue;
        const Time latency = launchLatency(context, *start, late);
        if (common && *common != latency)
            return std::nullopt;
        common = latency;
    }
    return common.value_or(0);
}

void Harvest::ignoreLatencies(const Context& context, Arrival& arrival) {
    const std::optional<Time> latency = commonLaunchLatency(context, arrival.classes, arrival.setup);
    if (!latency) {
        const std::uint32_t exception = arrival.requirement->exception[sideOf(arrival.setup)];
        throw Base::BadInput(constraints_.place(constraints_.exceptions[exception].origin),
                             "-ignore_clock_latency: the clock reaches the start points at different times; "
                             "expected -from with registers or ports, or an ideal clock");
    }
    arrival.arrival -= *latency;
    arrival.captureLatency = 0;
    arrival.uncertainty = 0;
    if (arrival.end->isPort()) {
        const auto capture = model_.latencyAt(arrival.end->delay);
        arrival.arrival += arrival.setup ? capture.early : capture.late;
    }
}

// --- Results ---

// A path group governs no path that is false.
void Harvest::noteGoverning(const Arrival& arrival) {
    const Requirement& requirement = *arrival.requirement;
    const auto note = [&](std::uint32_t exception) {
        if (exception != none)
            governed_[arrival.setup].emplace(exception, arrival.end->pin);
    };
    note(requirement.exception[sideOf(arrival.setup)]);
    if (!requirement.isFalse[sideOf(arrival.setup)])
        note(requirement.group);
}

std::vector<std::uint64_t> Harvest::governed(bool setup) const {
    std::vector<std::uint64_t> counts(constraints_.exceptions.size());
    for (const auto& [exception, pin] : governed_[setup])
        ++counts[exception];
    return counts;
}

void Harvest::record(const Context& context, const Arrival& arrival) {
    EndResult& result = endpoints_[arrival.end->pin];
    std::optional<Worst>& worst = arrival.setup ? result.setup : result.hold;
    if (!worst || arrival.slack <= worst->slack) {
        const Standing standing = standingOf(context, arrival);
        if (!worst || arrival.slack < worst->slack || isBefore(standing, *worst))
            worst = Worst{standing, arrival.slack};
    }
    if (arrival.setup)
        achieve(context, arrival);
    if (arrival.setup ? options_.setup : options_.hold)
        enqueue(arrival);
}

// The relation is a fixed part of the period: with another period it grows with it.
void Harvest::achieve(const Context& context, const Arrival& arrival) {
    if (context.launch != context.capture || context.launch == none || arrival.requirement->delay.setup ||
        arrival.relation <= 0)
        return;
    const Time needed =
        ceiling(clocks_[context.launch].period * (arrival.relation - arrival.slack), arrival.relation);
    const auto [place, isNew] = achieved_.try_emplace(context.launch, needed);
    if (!isNew)
        place->second = std::max(place->second, needed);
}

} // namespace Analysis
