// The worst paths of an arrival, traced back through the sweep's arrivals.
//
// What arrives at a pole is known exactly, so the arrival at a pole plus the delay from there to the end is
// the arrival of the worst path through both: the open steps are taken worst first, and complete paths come
// out in order. The newest of equal steps goes first, which keeps the search from widening over equal paths.
#include "HarvestStep.h"

#include <algorithm>

namespace Cli {

using Pelko::Delay;
using Readers::none;
using Readers::Model::Start;

namespace {

// An arc's part of an arrival: the delay, or the setup or hold value of a check.
std::optional<Time> partOf(const Pelko::Edge& edge, bool late) {
    if (late)
        return ordinary(edge.getMaxDelay());
    const std::optional<Time> value = ordinary(edge.getMinDelay());
    return value && edge.getTarget()->isCheck() ? std::optional(-*value) : value;
}

std::string describe(const Start& start, const std::string& clock) {
    const std::string edge = start.rise ? "rising" : "falling";
    switch (start.kind) {
    case Start::Kind::reg:
        return edge + " edge-triggered register clocked by " + clock;
    case Start::Kind::clockSource:
        return edge + " edge of clock source " + clock;
    case Start::Kind::port:
        break;
    }
    return clock.empty() ? "input port" : "input port clocked by " + clock;
}

const char* kindName(Readers::Sdc::Exception::Kind kind) {
    using enum Readers::Sdc::Exception::Kind;
    return kind == falsePath    ? "false_path"
           : kind == multicycle ? "multicycle_path"
           : kind == maxDelay   ? "max_delay"
           : kind == minDelay   ? "min_delay"
                                : "path_group";
}

} // namespace

Report::Exception describe(const Readers::Sdc::Constraints& constraints, std::uint32_t exception) {
    return describe(constraints, constraints.exceptions[exception]);
}

Report::Exception describe(const Readers::Sdc::Constraints& constraints,
                           const Readers::Sdc::Exception& exception) {
    using enum Readers::Sdc::Exception::Kind;
    Report::Exception described{
        constraints.files[exception.origin.file], exception.origin.line, kindName(exception.kind), {}};
    if (exception.kind == multicycle)
        described.value = std::to_string(exception.multiplier);
    else if (exception.kind == maxDelay || exception.kind == minDelay)
        described.value = exception.value.toString();
    else if (exception.kind == pathGroup)
        described.value = exception.group;
    return described;
}

// --- What is kept ---

bool Harvest::isWanted(bool setup, std::uint32_t pin, Time slack) const {
    if (options_.paths == 0)
        return false;
    const auto& kept = kept_[setup];
    if (const auto own = keptOfPin_[setup].find(pin);
        own != keptOfPin_[setup].end() && own->second.size() >= options_.perEndpoint)
        return slack < own->second.back().first;
    return kept.size() < options_.paths || slack < kept.rbegin()->second.slack;
}

void Harvest::keep(bool setup, std::uint32_t pin, Report::Path path) {
    auto& kept = kept_[setup];
    auto& own = keptOfPin_[setup][pin];
    const std::pair<Time, std::uint64_t> place(path.slack, number_++);
    kept.try_emplace(place, Kept{path.slack, place.second, pin, std::move(path)});
    own.insert(std::ranges::upper_bound(own, place), place);
    std::optional<std::pair<Time, std::uint64_t>> dropped;
    if (own.size() > options_.perEndpoint)
        dropped = own.back();
    else if (kept.size() > options_.paths)
        dropped = kept.rbegin()->first;
    if (!dropped)
        return;
    std::erase(keptOfPin_[setup][kept.at(*dropped).pin], *dropped);
    kept.erase(*dropped);
}

std::vector<Report::Path> Harvest::paths() const {
    std::vector<Report::Path> all;
    for (const bool setup : {true, false}) {
        const std::size_t first = all.size();
        for (const auto& [place, kept] : kept_[setup])
            all.push_back(kept.path);
        std::stable_sort(all.begin() + static_cast<std::ptrdiff_t>(first), all.end(),
                         [](const Report::Path& a, const Report::Path& b) {
                             return a.slack != b.slack ? a.slack < b.slack : a.endpoint < b.endpoint;
                         });
    }
    return all;
}

// --- Tracing ---

void Harvest::trace(const Context& context, const Arrival& arrival) {
    if (!isWanted(arrival.setup, arrival.end->pin, arrival.slack))
        return;
    // By the arrival at the end, the worst first: negated for setup. Newer steps stand before older equal
    // ones.
    std::multimap<Time, Step> open;
    Vorlen::TimingMap arrivals;
    context.sweep->hasArrivalTimingMap(arrival.end->pole, arrivals);
    const auto& timing = arrivals.at(arrival.classes);
    const Time whole = int(arrival.setup ? timing.getMaximumDelay() : timing.getMinimumDelay());
    const Time sign = arrival.setup ? -1 : 1;
    open.emplace(sign * whole, Step{arrival.end->pole, arrival.classes, 0, nullptr, nullptr});
    while (!open.empty()) {
        const auto first = open.begin();
        const Time slack = arrival.slack + (first->first - sign * whole);
        if (!isWanted(arrival.setup, arrival.end->pin, slack))
            return;
        const Step step = first->second;
        open.erase(first);
        if (step.pole != arrival.end->pole && model_.startAt(step.pole)) {
            Arrival traced = arrival;
            traced.slack = slack;
            traced.arrival =
                arrival.arrival + (arrival.setup ? arrival.slack - slack : slack - arrival.slack);
            keep(arrival.setup, arrival.end->pin, pathOf(context, traced, step));
            continue;
        }
        const auto behind = std::make_shared<const Step>(step);
        for (Pelko::Edge* edge : step.pole->getIncomingEdges()) {
            const std::optional<Time> part = partOf(*edge, arrival.setup);
            Vorlen::TimingMap sources;
            if (!part || !edge->isActive() || !context.sweep->hasArrivalTimingMap(edge->getSource(), sources))
                continue;
            for (const auto& [classes, at] : sources) {
                const std::optional<Time> time =
                    ordinary(arrival.setup ? at.getMaximumDelay() : at.getMinimumDelay());
                const std::uint64_t arriving =
                    (classes & edge->getPseudoMask().getBits()) | step.pole->getOpeningPseudoMask().getBits();
                if (!time || arriving != step.classes)
                    continue;
                const Time key = sign * (*time + *part + step.behind);
                open.emplace_hint(open.lower_bound(key), key,
                                  Step{edge->getSource(), classes, *part + step.behind, edge, behind});
            }
        }
    }
}

Report::Path Harvest::pathOf(const Context& context, const Arrival& arrival, const Step& step) const {
    const bool setup = arrival.setup;
    const Start& start = *model_.startAt(step.pole);
    const Readers::Model::End& end = *arrival.end;
    const Readers::Model::Requirement& requirement = *arrival.requirement;
    const auto nameOf = [&](std::uint32_t clock) {
        return clock == none ? std::string() : clocks_[clock].name;
    };

    Report::Path path;
    path.setup = setup;
    path.sourceClock = nameOf(context.launch);
    path.targetClock = nameOf(context.capture);
    path.group = requirement.group != none  ? constraints_.exceptions[requirement.group].group
                 : path.targetClock.empty() ? "default"
                                            : path.targetClock;
    if (requirement.group != none)
        path.groupedBy = describe(constraints_, requirement.group);
    path.startpoint = design_.pinName(start.pin);
    path.endpoint = design_.pinName(end.pin);
    path.startDescription = describe(start, path.sourceClock);
    path.endDescription =
        end.isPort()
            ? (path.targetClock.empty() ? "output port" : "output port clocked by " + path.targetClock)
            : std::string(end.rise ? "rising" : "falling") + " edge-triggered register clocked by " +
                  path.targetClock;
    path.sourceRise = context.launchRise;
    path.targetRise = context.captureRise;
    if (context.launch != none) {
        path.sourcePropagated = clocks_[context.launch].propagated;
        path.launchEdge = clocks_[context.launch].edge(context.launchRise);
    }
    if (context.capture != none)
        path.targetPropagated = clocks_[context.capture].propagated;
    if (context.relation)
        path.launchEdge = setup ? context.relation->setupLaunch : context.relation->holdLaunch;
    path.relation = arrival.relation;
    path.captureEdge = path.launchEdge + arrival.relation;
    path.uncertainty = arrival.uncertainty;

    const bool ignores = setup ? requirement.maxIgnoresLatency : requirement.minIgnoresLatency;
    path.launchClockDelay = ignores ? 0 : launchLatency(context, start, setup);
    path.captureClockDelay = arrival.captureLatency;
    path.startsAtPort = start.kind == Start::Kind::port;
    path.endsAtPort = end.isPort();
    if (end.isPort() && end.delay) {
        const auto latency = clocks_[*end.delay->clock].atPorts(!end.delay->sourceLatencyIncluded,
                                                                !end.delay->networkLatencyIncluded);
        const Pelko::IOConstraint constraint = model_.host().getAnalyzer()->getOutputConstraint(end.pole);
        const Time capture = setup ? latency.early : latency.late;
        path.outputDelay = int(setup ? constraint.getMaximum() : constraint.getMinimum()) + capture;
        path.captureClockDelay = ignores ? 0 : capture;
    }
    if (!end.isPort() && (setup ? end.setup : end.hold))
        path.check = setup ? *end.setup : *end.hold;

    Vorlen::TimingMap arrivals;
    context.sweep->hasArrivalTimingMap(step.pole, arrivals);
    const auto& timing = arrivals.at(step.classes);
    const Time starts = int(setup ? timing.getMaximumDelay() : timing.getMinimumDelay());
    if (path.startsAtPort)
        path.inputDelay = starts - launchLatency(context, start, setup);
    std::vector<Pelko::Edge*> edges;
    for (const Step* at = &step; at->edge; at = at->next.get())
        edges.push_back(at->edge);
    const Time first = path.launchClockDelay + path.inputDelay;
    path.points.push_back({path.startpoint,
                           0,
                           first,
                           path.startsAtPort ? Report::PointKind::port : Report::PointKind::clock,
                           start.kind == Start::Kind::port ? '\0'
                           : start.rise                    ? '^'
                                                           : 'v',
                           {}});
    addPoints(edges, setup, path);

    path.arrival = path.points.back().arrival;
    const Time limit = path.relation + path.captureClockDelay - path.outputDelay;
    const Time harder = path.uncertainty + path.check.value_or(0);
    path.required = setup ? limit - harder : limit + harder;
    path.slack = arrival.slack;
    const std::uint32_t exception = setup ? requirement.setupException : requirement.holdException;
    if (exception != none)
        path.exception = describe(constraints_, exception);
    return path;
}

// Poles that stand for the pin before them give no point, nor do checks.
void Harvest::addPoints(const std::vector<Pelko::Edge*>& edges, bool late, Report::Path& path) const {
    std::uint32_t before = model_.nodeOf(edges.front()->getSource());
    for (const Pelko::Edge* edge : edges) {
        const std::uint32_t node = model_.nodeOf(edge->getTarget());
        if (edge->getTarget()->isCheck() || node == before)
            continue;
        const Time delay = partOf(*edge, late).value_or(0);
        const std::uint32_t pin = network_.pinOf(node), from = network_.pinOf(before);
        const std::uint32_t cell = design_.pins[pin].cell;
        const bool inside = cell != none && cell == design_.pins[from].cell && !(pin == from);
        Report::Point point{design_.pinName(pin),
                            delay,
                            path.points.back().arrival + delay,
                            inside ? Report::PointKind::cell : Report::PointKind::net,
                            '\0',
                            {}};
        if (cell != none)
            point.cell = design_.names[design_.cells[cell].type];
        path.points.push_back(std::move(point));
        before = node;
    }
}

} // namespace Cli
