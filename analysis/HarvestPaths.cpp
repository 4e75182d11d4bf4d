// The worst paths of an arrival, traced back through the sweep's arrivals.
//
// What arrives at a pole is known exactly, so the arrival at a pole plus the delay from there to the end is
// the arrival of the worst path through both: the open steps are taken worst first, and complete paths come
// out in order. Of equal steps that one goes first whose pins, from the end point backwards, come first by
// their names. So the steps before a path's start are taken one after the other, and equal paths do not widen
// the search.
#include "analysis/HarvestStep.h"
#include "base/Stopping.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <ranges>
#include <string_view>
#include <tuple>

namespace Analysis {

using Base::none;
using Model::Start;
using Pelko::Delay;

namespace {

// How many steps are taken between two looks at whether the run is to stop.
constexpr unsigned stopStride = 4096;

// How many arrivals a queue may have in any case.
constexpr std::size_t leastQueue = 4096;

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

const char* kindName(Design::Exception::Kind kind) {
    using enum Design::Exception::Kind;
    return kind == falsePath    ? "false_path"
           : kind == multicycle ? "multicycle_path"
           : kind == maxDelay   ? "max_delay"
           : kind == minDelay   ? "min_delay"
                                : "path_group";
}

} // namespace

Report::Exception describe(const Design::Constraints& constraints, std::uint32_t exception) {
    return describe(constraints, constraints.exceptions[exception]);
}

Report::Exception describe(const Design::Constraints& constraints, const Design::Exception& exception) {
    using enum Design::Exception::Kind;
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

// --- Order ---

Standing Harvest::standingOf(const Context& context, const Arrival& arrival) const {
    const Exceptions::Requirement& requirement = *arrival.requirement;
    return {context.launch,
            context.capture,
            context.launchRise,
            context.captureRise,
            requirement.exception[sideOf(arrival.setup)],
            arrival.end};
}

// Rising edges first. Delays of a port are in the order of their commands.
bool Harvest::isBefore(const Standing& a, const Standing& b) const {
    const auto clockOf = [this](std::uint32_t clock) {
        return clock == none ? std::string_view() : std::string_view(clocks_[clock].name);
    };
    const auto standing = [&](const Standing& of) {
        return std::tuple(clockOf(of.launch), !of.launchRise, clockOf(of.capture), !of.captureRise,
                          of.exception);
    };
    if (a.end == b.end || standing(a) != standing(b))
        return standing(a) < standing(b);
    if (a.end->clockPin != b.end->clockPin && a.end->clockPin != none && b.end->clockPin != none)
        return isNamedBefore(design_, a.end->clockPin, b.end->clockPin);
    return a.end->rise != b.end->rise ? a.end->rise : std::less()(a.end->delay, b.end->delay);
}

bool Harvest::isBefore(const Arrival& a, const Arrival& b) const {
    if (a.slack != b.slack)
        return a.slack < b.slack;
    return a.end->pin != b.end->pin && isNamedBefore(design_, a.end->pin, b.end->pin);
}

bool Harvest::Order::operator()(const Kept& a, const Kept& b) const {
    if (a.path.slack != b.path.slack)
        return a.path.slack < b.path.slack;
    if (a.pin != b.pin)
        return isNamedBefore(harvest->design_, a.pin, b.pin);
    if (harvest->isBefore(a.by, b.by) || harvest->isBefore(b.by, a.by))
        return harvest->isBefore(a.by, b.by);
    const auto backwards = [](const Report::Path& path) { return path.points | std::views::reverse; };
    const auto first = backwards(a.path), second = backwards(b.path);
    const auto [one, other] =
        std::ranges::mismatch(first, second, {}, &Report::Point::pin, &Report::Point::pin);
    if (one != first.end() && other != second.end())
        return one->pin < other->pin;
    if (one != first.end() || other != second.end())
        return one == first.end();
    return a.path.inputDelay < b.path.inputDelay;
}

// --- What is kept ---

// Whether a path of that slack may be among those reported.
bool Harvest::isWanted(bool setup, std::uint32_t pin, Time slack) const {
    if (options_.paths == 0)
        return false;
    const KeptPaths& kept = kept_[setup];
    if (const auto own = keptOfPin_[setup].find(pin);
        own != keptOfPin_[setup].end() && own->second.size() >= options_.perEndpoint)
        return slack <= own->second.back()->path.slack;
    if (kept.size() < options_.paths)
        return true;
    const Kept& last = *kept.rbegin();
    return slack < last.path.slack ||
           (slack == last.path.slack && (pin == last.pin || isNamedBefore(design_, pin, last.pin)));
}

// False if the path is not among those reported; then none is that comes after it.
bool Harvest::keep(bool setup, Kept path) {
    KeptPaths& kept = kept_[setup];
    auto& own = keptOfPin_[setup][path.pin];
    const bool full = own.size() >= options_.perEndpoint;
    if (!full && kept.size() >= options_.paths && !kept.key_comp()(path, *kept.rbegin()))
        return false;
    if (full && !kept.key_comp()(path, *own.back()))
        return false;
    const auto place = kept.insert(std::move(path));
    own.insert(std::ranges::upper_bound(own, *place, kept.key_comp(),
                                        [](KeptPaths::iterator of) -> const Kept& { return *of; }),
               place);
    if (!full && kept.size() <= options_.paths)
        return true;
    const auto dropped = full ? own.back() : std::prev(kept.end());
    keptOfPin_[setup][dropped->pin].pop_back();
    kept.erase(dropped);
    return true;
}

std::vector<Report::Path> Harvest::takePaths() {
    std::vector<Report::Path> all;
    for (const bool setup : {true, false}) {
        keptOfPin_[setup].clear();
        while (!kept_[setup].empty())
            all.push_back(std::move(kept_[setup].extract(kept_[setup].begin()).value().path));
    }
    return all;
}

// --- The queue of a sweep's arrivals ---
//
// The worst arrivals are traced first, so that of a sweep hardly more paths are traced than are reported.

void Harvest::enqueue(const Arrival& arrival) {
    if (!isWanted(arrival.setup, arrival.end->pin, arrival.slack))
        return;
    std::vector<Arrival>& queue = queue_[arrival.setup];
    std::size_t& limit = queueLimit_[arrival.setup];
    queue.push_back(arrival);
    if (queue.size() < std::max(limit, leastQueue))
        return;
    thinOut(queue);
    limit = 2 * queue.size();
}

// Sorts the arrivals, and drops those that have as many better ones before them as there are paths to report,
// in all or of their end point: each has a path of its own.
void Harvest::thinOut(std::vector<Arrival>& queue) const {
    std::ranges::sort(queue, [this](const Arrival& a, const Arrival& b) { return isBefore(a, b); });
    struct Own {
        std::size_t better = 0, equal = 0; // arrivals before this one, and of its slack
        Time slack = 0;
    };
    std::unordered_map<std::uint32_t, Own> ends;
    std::size_t left = 0;
    for (const Arrival& arrival : queue) {
        Own& own = ends.try_emplace(arrival.end->pin, Own{0, 0, arrival.slack}).first->second;
        if (ends.size() > options_.paths)
            break;
        if (own.slack != arrival.slack)
            own = {own.better + own.equal, 0, arrival.slack};
        ++own.equal;
        if (own.better < options_.perEndpoint)
            queue[left++] = arrival;
    }
    queue.resize(left);
}

void Harvest::traceQueue(const Context& context) {
    for (const bool setup : {true, false}) {
        thinOut(queue_[setup]);
        for (const Arrival& arrival : queue_[setup])
            trace(context, arrival);
        queue_[setup].clear();
        queueLimit_[setup] = 0;
    }
}

// --- Tracing ---

void Harvest::trace(const Context& context, const Arrival& arrival) {
    const bool setup = arrival.setup;
    const std::uint32_t pin = arrival.end->pin;
    if (!isWanted(setup, pin, arrival.slack))
        return;
    Trail trail(design_);
    // By the arrival at the end, the worst first: negated for setup.
    struct Open {
        Time key;
        std::uint32_t step;
    };
    const auto comesFirst = [&trail](const Open& a, const Open& b) {
        return a.key != b.key ? a.key < b.key : trail.isBefore(a.step, b.step);
    };
    std::multiset<Open, decltype(comesFirst)> open(comesFirst);
    Vorlen::TimingMap arrivals;
    context.sweep->hasArrivalTimingMap(arrival.end->pole, arrivals);
    const auto& timing = arrivals.at(arrival.classes);
    const Time whole = int(setup ? timing.getMaximumDelay() : timing.getMinimumDelay());
    const Time sign = setup ? -1 : 1;
    const auto slackOf = [&](Time key) { return arrival.slack + (key - sign * whole); };
    open.insert({sign * whole, trail.add({arrival.end->pole, arrival.classes}, pin)});
    for (unsigned steps = 0; !open.empty(); ++steps) {
        if (steps % stopStride == 0)
            Base::throwIfStopped();
        const std::uint32_t number = open.begin()->step;
        const Time slack = slackOf(open.begin()->key);
        const Step step = trail[number];
        open.erase(open.begin());
        if (!isWanted(setup, pin, slack))
            return;
        if (step.pole != arrival.end->pole && model_.startAt(step.pole)) {
            Arrival traced = arrival;
            traced.slack = slack;
            traced.arrival = arrival.arrival + (setup ? arrival.slack - slack : slack - arrival.slack);
            if (!keep(setup, {pin, standingOf(context, arrival), pathOf(context, traced, step, trail)}))
                return;
            continue;
        }
        for (Pelko::Edge* edge : step.pole->getIncomingEdges()) {
            const std::optional<Time> part = partOf(*edge, setup);
            Vorlen::TimingMap sources;
            if (!part || !edge->isActive() || !context.sweep->hasArrivalTimingMap(edge->getSource(), sources))
                continue;
            const std::uint32_t node = model_.nodeOf(edge->getSource());
            const std::uint32_t source = node == none ? pin : network_.pinOf(node);
            for (const auto& [classes, at] : sources) {
                const std::optional<Time> time =
                    ordinary(setup ? at.getMaximumDelay() : at.getMinimumDelay());
                const std::uint64_t arriving =
                    (classes & edge->getPseudoMask().getBits()) | step.pole->getOpeningPseudoMask().getBits();
                if (!time || arriving != step.classes)
                    continue;
                const Time key = sign * (*time + *part + step.behind);
                if (isWanted(setup, pin, slackOf(key)))
                    open.insert(
                        open.begin(),
                        {key,
                         trail.add({edge->getSource(), classes, *part + step.behind, edge, number}, source)});
            }
        }
    }
}

Report::Path Harvest::pathOf(const Context& context, const Arrival& arrival, const Step& step,
                             const Trail& trail) const {
    const bool setup = arrival.setup;
    const Start& start = *model_.startAt(step.pole);
    const Model::End& end = *arrival.end;
    const Exceptions::Requirement& requirement = *arrival.requirement;
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

    const bool ignores = requirement.ignoresLatency[sideOf(setup)];
    path.launchClockDelay = ignores ? 0 : launchLatency(context, start, setup);
    path.captureClockDelay = arrival.captureLatency;
    path.startsAtPort = start.kind == Start::Kind::port;
    path.endsAtPort = end.isPort();
    if (end.isPort() && end.delay) {
        const auto latency = model_.latencyAt(end.delay);
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
    const std::vector<Pelko::Edge*> edges = trail.edgesFrom(step);
    if (path.startsAtPort) // a delay without a clock is on the first arc
        path.inputDelay =
            starts - launchLatency(context, start, setup) + partOf(*edges.front(), setup).value_or(0);
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
    const std::uint32_t exception = requirement.exception[sideOf(setup)];
    if (exception != none)
        path.exception = describe(constraints_, exception);
    return path;
}

// Poles that stand for the pin before them give no point, nor do checks.
void Harvest::addPoints(const std::vector<Pelko::Edge*>& edges, bool late, Report::Path& path) const {
    std::uint32_t before = model_.nodeOf(edges.front()->getSource());
    for (const Pelko::Edge* edge : edges) {
        const std::uint32_t node = model_.nodeOf(edge->getTarget());
        if (edge->getTarget()->isCheck() || network_.originalOf(node) == network_.originalOf(before))
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

} // namespace Analysis
