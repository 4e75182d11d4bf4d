// Arrivals and requirements at end points.
#include "analysis/EndpointReader.h"

#include "base/Stopping.h"

namespace Analysis {

using Base::none;

namespace {

// How many leaves are read between two looks at whether the run is to stop.
constexpr unsigned stopStride = 1024;

} // namespace

void EndpointReader::read(const SweepView& view, const Use& use) const {
    unsigned leaves = 0;
    for (Pelko::Pole* leaf : view.sweep.getSubdomain()->getLatchLeaves()) {
        if (leaves++ % stopStride == 0)
            Base::throwIfStopped();
        if (leaf->isOutput()) {
            readEnd(view, leaf, Vorlen::Timing(Pelko::Delay(0), Pelko::Delay(0)), use);
            continue;
        }
        Vorlen::TimingMap latch;
        if (!view.sweep.hasLatchTimingMap(leaf, latch))
            continue; // GCOVR_EXCL_LINE: poles follow the flow, so that every latching pin has an arrival
        for (Pelko::Pole* check : of_.model.host().getCell()->getAuxiliaryPoles(leaf->getPin()))
            readEnd(view, check, latch[0], use);
    }
}

void EndpointReader::readEnd(const SweepView& view, Pelko::Pole* pole, const Vorlen::Timing& latch,
                             const Use& use) const {
    const Model::End* end = of_.model.endAt(pole);
    Vorlen::TimingMap arrivals;
    if (!end || !view.sweep.hasArrivalTimingMap(pole, arrivals))
        return;
    for (const auto& [classes, data] : arrivals) {
        const Exceptions::Requirement& requirement =
            of_.exceptions.requirement(view.edges, end->pin, ClassSet(classes));
        for (const Side side : Base::bothSides) {
            Arrival arrival{end, ClassSet(classes), &requirement, side};
            if (readSide(view, data, latch, arrival))
                use(arrival);
        }
    }
}

// Whether the arrival is timed, or would be without a false path.
bool EndpointReader::readSide(const SweepView& view, const Vorlen::Timing& data, const Vorlen::Timing& latch,
                              Arrival& arrival) const {
    if (!findTerms(view, data, latch, arrival))
        return false;
    const Side side = arrival.side;
    const Exceptions::Requirement& requirement = *arrival.requirement;
    const std::optional<Time>& delay = requirement.delay[side];
    if (!delay && !view.relation)
        return false; // an unconstrained path, which no exception governs
    arrival.isFalse = requirement.isFalse[side];
    if (arrival.isFalse)
        return true;
    if (delay) {
        arrival.terms.relation = *delay;
        if (requirement.ignoresLatency[side])
            ignoreLatencies(view, arrival);
    } else {
        const Model::Relation& relation = *view.relation;
        arrival.terms.relation =
            (side == Side::setup ? relation.setup : relation.hold) + requirement.shift[side];
    }
    arrival.slack = slackOf(side, arrival.terms);
    return true;
}

// All terms except the relation. False if one of them is no time.
bool EndpointReader::findTerms(const SweepView& view, const Vorlen::Timing& data, const Vorlen::Timing& latch,
                               Arrival& arrival) const {
    const Model::End& end = *arrival.end;
    const Side side = arrival.side;
    std::optional<Time> bound = 0;
    if (end.isPort())
        bound = ordinary(boundOf(of_.model.host().getAnalyzer()->getOutputConstraint(end.pole), side));
    const std::optional<Time> arrives = ordinary(dataTime(data, side));
    const std::optional<Time> latency = ordinary(captureTime(latch, side));
    if (!bound || !arrives || !latency)
        return false;
    arrival.terms.arrival = *arrives;
    // The host's bound of a port is less the latency of the port's clock, so that no other latency counts
    // there.
    arrival.terms.outputDelay = *bound;
    arrival.terms.captureLatency = *latency;
    if (view.edges.capture != none)
        arrival.terms.uncertainty = of_.clocks.uncertainty(view.edges.launch, view.edges.capture,
                                                           end.isPort() ? end.pin : end.clockPin, side);
    return true;
}

// --- Latencies that an exception drops ---

// The latency of all start points that the classes leave possible; nothing if they differ.
std::optional<Time> EndpointReader::commonLaunchLatency(const SweepView& view, ClassSet classes,
                                                        Side side) const {
    std::optional<Time> common;
    for (Pelko::Pole* leaf : view.sweep.getSubdomain()->getLaunchLeaves()) {
        const Model::Start* start = of_.model.startAt(leaf);
        if (!start || !of_.exceptions.mayStart(*start, classes))
            continue;
        const Time latency = launchLatency(view, of_.model, *start, side);
        if (common && *common != latency)
            return std::nullopt;
        common = latency;
    }
    return common.value_or(0);
}

void EndpointReader::ignoreLatencies(const SweepView& view, Arrival& arrival) const {
    const std::optional<Time> latency = commonLaunchLatency(view, arrival.classes, arrival.side);
    if (!latency) {
        const Design::ExceptionId exception = arrival.requirement->exception[arrival.side];
        throw Base::BadInput(of_.constraints.place(of_.constraints.exceptions[exception].origin),
                             "-ignore_clock_latency: the clock reaches the start points at different times; "
                             "expected -from with registers or ports, or an ideal clock");
    }
    arrival.terms.arrival -= *latency;
    arrival.terms.captureLatency = 0;
    arrival.terms.uncertainty = 0;
    if (arrival.end->isPort())
        arrival.terms.outputDelay += captureSide(of_.model.latencyAt(arrival.end->delay), arrival.side);
}

} // namespace Analysis
