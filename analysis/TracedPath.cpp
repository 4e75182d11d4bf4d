// The parts of a reported path: its clocks, its end, and its points from the start on.
#include "analysis/TracedPath.h"

#include "analysis/Describe.h"

namespace Analysis {

using Base::none;

namespace {

class Tracing {
public:
    Tracing(const AnalyzedDesign& analyzed, const SweepView& view, const Arrival& arrival)
        : of_(analyzed), view_(view), arrival_(arrival), side_(arrival.side) {}

    Report::Path path(const Step& step, const std::vector<Pelko::Edge*>& edges);

private:
    std::string nameOf(Design::ClockId clock) const {
        return clock == none ? std::string() : of_.clocks[clock].name;
    }
    void fillGovernors();
    void fillClocks();
    void fillEnd();
    void fillStart(const Step& step, const Pelko::Edge& first);
    void addPoints(const std::vector<Pelko::Edge*>& edges);
    void fillRequired();

    const AnalyzedDesign& of_;
    const SweepView& view_;
    const Arrival& arrival_;
    const Side side_;
    Report::Path path_;
};

void Tracing::fillGovernors() {
    const Design::ExceptionId group = arrival_.requirement->group;
    path_.group = group != none               ? of_.constraints.exceptions[group].group
                  : path_.targetClock.empty() ? "default"
                                              : path_.targetClock;
    if (group != none)
        path_.groupedBy = describe(of_.constraints, group);
    const Design::ExceptionId exception = arrival_.requirement->exception[side_];
    if (exception != none)
        path_.exception = describe(of_.constraints, exception);
}

void Tracing::fillClocks() {
    const ClockEdges& edges = view_.edges;
    path_.sourceClock = nameOf(edges.launch);
    path_.targetClock = nameOf(edges.capture);
    path_.sourceRise = edges.launchRise;
    path_.targetRise = edges.captureRise;
    if (edges.launch != none) {
        path_.sourcePropagated = of_.clocks[edges.launch].propagated;
        path_.launchEdge = of_.clocks[edges.launch].edge(edges.launchRise);
    }
    if (edges.capture != none)
        path_.targetPropagated = of_.clocks[edges.capture].propagated;
    if (view_.relation)
        path_.launchEdge = side_ == Side::setup ? view_.relation->setupLaunch : view_.relation->holdLaunch;
    path_.relation = arrival_.terms.relation;
    path_.captureEdge = path_.launchEdge + path_.relation;
    path_.uncertainty = arrival_.terms.uncertainty;
    path_.captureClockDelay = arrival_.terms.captureLatency;
}

// The host's bound of a port holds the output delay less the latency of its clock; reports show the two
// apart.
void Tracing::fillEnd() {
    const Model::End& end = *arrival_.end;
    path_.endpoint = of_.design.pinName(end.pin);
    path_.endDescription = describe(end, path_.targetClock);
    path_.endsAtPort = end.isPort();
    if (end.isPort() && end.delay) {
        const Time capture = captureSide(of_.model.latencyAt(end.delay), side_);
        const Pelko::IOConstraint constraint = of_.model.host().getAnalyzer()->getOutputConstraint(end.pole);
        path_.outputDelay = int(boundOf(constraint, side_)) + capture;
        path_.captureClockDelay = arrival_.requirement->ignoresLatency[side_] ? 0 : capture;
    }
    const std::optional<std::int32_t>& check = side_ == Side::setup ? end.setup : end.hold;
    if (!end.isPort() && check)
        path_.check = *check;
}

void Tracing::fillStart(const Step& step, const Pelko::Edge& first) {
    const Model::Start& start = *of_.model.startAt(step.pole);
    const Time latency = launchLatency(view_, of_.model, start, side_);
    path_.startpoint = of_.design.pinName(start.pin);
    path_.startDescription = describe(start, path_.sourceClock);
    path_.launchClockDelay = arrival_.requirement->ignoresLatency[side_] ? 0 : latency;
    path_.startsAtPort = start.kind == Model::Start::Kind::port;
    if (path_.startsAtPort) { // a delay without a clock is on the first arc
        Vorlen::TimingMap arrivals;
        view_.sweep.hasArrivalTimingMap(step.pole, arrivals);
        const Time starts = int(dataTime(arrivals.at(step.classes.bits()), side_));
        path_.inputDelay = starts - latency + partOf(first, side_).value_or(0);
    }
    path_.points.push_back({path_.startpoint,
                            0,
                            path_.launchClockDelay + path_.inputDelay,
                            path_.startsAtPort ? Report::PointKind::port : Report::PointKind::clock,
                            path_.startsAtPort ? '\0'
                            : start.rise       ? '^'
                                               : 'v',
                            {}});
}

// Checks, and poles that stand for the pin before them, are no points of a path.
void Tracing::addPoints(const std::vector<Pelko::Edge*>& edges) {
    Model::NodeId before = of_.model.nodeOf(edges.front()->getSource());
    for (const Pelko::Edge* edge : edges) {
        const Model::NodeId node = of_.model.nodeOf(edge->getTarget());
        if (edge->getTarget()->isCheck() || of_.network.originalOf(node) == of_.network.originalOf(before))
            continue;
        const Time delay = partOf(*edge, side_).value_or(0);
        const Design::PinId pin = of_.network.pinOf(node), from = of_.network.pinOf(before);
        const Design::CellId cell = of_.design.pins[pin].cell;
        const bool inside = cell != none && cell == of_.design.pins[from].cell && !(pin == from);
        Report::Point point{of_.design.pinName(pin),
                            delay,
                            path_.points.back().arrival + delay,
                            inside ? Report::PointKind::cell : Report::PointKind::net,
                            '\0',
                            {}};
        if (cell != none)
            point.cell = of_.design.names[of_.design.cells[cell].type];
        path_.points.push_back(std::move(point));
        before = node;
    }
}

// By the path's own parts. Where they do not add up to the slack, reports show the difference.
void Tracing::fillRequired() {
    path_.arrival = path_.points.back().arrival;
    path_.required = requiredTime(side_, {path_.arrival, path_.relation, path_.captureClockDelay,
                                          path_.uncertainty, path_.check.value_or(0), path_.outputDelay});
    path_.slack = arrival_.slack;
}

Report::Path Tracing::path(const Step& step, const std::vector<Pelko::Edge*>& edges) {
    path_.setup = side_ == Side::setup;
    fillClocks();
    fillGovernors();
    fillEnd();
    fillStart(step, *edges.front());
    addPoints(edges);
    fillRequired();
    return std::move(path_);
}

} // namespace

Report::Path reportedPath(const AnalyzedDesign& analyzed, const SweepView& view, const Arrival& arrival,
                          const Step& start, const Trail& trail) {
    return Tracing(analyzed, view, arrival).path(start, trail.edgesFrom(start));
}

} // namespace Analysis
