// See PathEnumerator.h. Times are 64-bit integers, so nothing saturates.
#include "PathEnumerator.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <tuple>

namespace oracle {

using Pelko::ClockMode;
using Pelko::CPath;
using Pelko::Delay;
using Pelko::Edge;
using Pelko::IOConstraint;
using Pelko::Pole;

namespace {

Time timeOf(const Delay& delay) { return delay.isDefined() ? Time(int(delay)) : Time(); }

Time plus(const Time& a, const Time& b) { return a && b ? Time(*a + *b) : Time(); }

Time minus(const Time& a, const Time& b) { return a && b ? Time(*a - *b) : Time(); }

bool isStart(const Pole* pole) { return pole->isInitial() || pole->isClockSource(); }

unsigned long stampOf(const Pole* pole) { return pole ? pole->getStamp() : 0; }

} // namespace

bool EdgePair::operator<(const EdgePair& other) const {
    const auto key = [](const EdgePair& pair) {
        return std::tuple(stampOf(pair.launchRoot), pair.launchMode, stampOf(pair.latchRoot), pair.latchMode);
    };
    return key(*this) < key(other);
}

Demand demandOfWaveforms(const EdgePair& edges) {
    const auto periodOf = [](Pole* root) {
        return std::int64_t{int(Pelko::analyzer->getRequiredPeriod(root))};
    };
    const auto firstOf = [](Pole* root, ClockMode::Code mode) {
        const std::int64_t shift = int(Pelko::analyzer->getShift(root));
        return mode == ClockMode::Falling ? shift + int(Pelko::analyzer->getHighWidth(root)) : shift;
    };
    const std::int64_t launchPeriod = periodOf(edges.launchRoot);
    const std::int64_t latchPeriod = periodOf(edges.latchRoot);
    const std::int64_t repeat = std::lcm(launchPeriod, latchPeriod);
    const std::int64_t begin = firstOf(edges.launchRoot, edges.launchMode);
    std::int64_t capture = firstOf(edges.latchRoot, edges.latchMode);
    while (capture > begin)
        capture -= latchPeriod;
    Demand demand;
    for (std::int64_t launch = begin; launch < begin + repeat; launch += launchPeriod) {
        while (capture <= launch)
            capture += latchPeriod;
        const std::int64_t next = capture - launch;
        demand.setup = std::min(demand.setup.value_or(next), next);
        demand.hold = std::max(demand.hold.value_or(next - latchPeriod), next - latchPeriod);
    }
    return demand;
}

PathEnumerator::PathEnumerator(DemandOf demandOf) : demandOf_(std::move(demandOf)) {
    for (Pole* pole : Pelko::cell->getPoles())
        if (pole->isClockSource()) {
            // A source latency is held as a negated feedback delay.
            Interval arrival{0, 0};
            if (Pelko::analyzer->hasPLLFeedbackDelay(pole))
                arrival = {-int(Pelko::analyzer->getMinPLLFeedbackDelay(pole)),
                           -int(Pelko::analyzer->getMaxPLLFeedbackDelay(pole))};
            clocks_[pole].emplace(pole, arrival);
            walkClock(pole, pole, arrival);
        }
    for (Pole* pole : Pelko::cell->getPoles())
        if (isStart(pole))
            walkData(pole, pole);
    relateToSlowest();
}

// One call per chain of arcs: every way from the root to a clock pole widens the known range of its arrival.
void PathEnumerator::walkClock(Pole* root, Pole* pole, const Interval& arrival) {
    for (Edge* edge : pole->getOutgoingEdges()) {
        if (!edge->isActive())
            continue;
        Pole* target = edge->getTarget();
        const Interval there{arrival.early + int(edge->getMinDelay()),
                             arrival.late + int(edge->getMaxDelay())};
        if (target->isClock()) {
            Interval& known = clocks_[target].emplace(root, there).first->second;
            known = {std::min(known.early, there.early), std::max(known.late, there.late)};
        } else if (!isStart(target) && !target->isTerminal()) {
            walkClock(root, target, there);
        }
    }
}

std::vector<PathEnumerator::Event> PathEnumerator::launchesOf(Pole* pole) const {
    std::vector<Event> events;
    if (pole->isInput()) {
        Event event;
        IOConstraint io;
        if (Pelko::analyzer->hasInputConstraint(pole, io)) {
            event.root = io.getClockRoot();
            event.mode = io.getClockMode().getCode();
            if (event.root) {
                event.outsideMinimum = timeOf(io.getMinimum());
                event.outsideMaximum = timeOf(io.getMaximum());
            }
        }
        events.push_back(event);
    } else if (const auto found = clocks_.find(pole); found != clocks_.end()) {
        for (const auto& [root, arrival] : found->second)
            events.push_back({root, pole->getClockMode().getCode(), arrival.early, arrival.late});
    }
    // A clock without an edge of its own launches on both.
    for (std::size_t i = 0; i < events.size(); ++i)
        if (events[i].root && events[i].mode == ClockMode::None) {
            events[i].mode = ClockMode::Falling;
            Event other = events[i];
            other.mode = ClockMode::Rising;
            events.push_back(other);
        }
    return events;
}

std::vector<PathEnumerator::Event> PathEnumerator::capturesOf(Pole* pole) const {
    std::vector<Event> events;
    if (pole->isOutput()) {
        Event event;
        IOConstraint io;
        if (Pelko::analyzer->hasOutputConstraint(pole, io)) {
            event.root = io.getClockRoot();
            event.mode = io.getClockMode().getCode();
            if (event.root) {
                event.outsideMinimum = timeOf(io.getMinimum());
                event.outsideMaximum = timeOf(io.getMaximum());
            }
        }
        events.push_back(event);
        return events;
    }
    Pole* clock = pole->getClockPole();
    ClockMode::Code mode = clock->getClockMode().getCode();
    if (clock->isCaptureInverted())
        mode = mode == ClockMode::Rising ? ClockMode::Falling : ClockMode::Rising;
    if (const auto found = clocks_.find(clock); found != clocks_.end())
        for (const auto& [root, arrival] : found->second)
            events.push_back({root, mode, arrival.early, arrival.late});
    return events;
}

void PathEnumerator::walkData(Pole* start, Pole* pole) {
    for (Edge* edge : pole->getOutgoingEdges()) {
        if (!edge->isActive() || isStart(edge->getTarget()))
            continue;
        chain_.push_back(edge);
        if (!edge->getTarget()->isTerminal())
            walkData(start, edge->getTarget());
        else
            for (const Event& launch : launchesOf(start))
                for (const Event& capture : capturesOf(edge->getTarget()))
                    add(launch, capture);
        chain_.pop_back();
    }
}

namespace {

bool holdsFor(const CPath* exception, const std::vector<Edge*>& edges) {
    if (!exception->getSources().contains(edges.front()->getSource()) ||
        !exception->getTargets().contains(edges.back()->getTarget()))
        return false;
    const Pelko::Poles bridges = exception->getBridges();
    return bridges.isEmpty() || std::any_of(edges.begin(), edges.end(), [&bridges](const Edge* edge) {
               return bridges.contains(edge->getTarget());
           });
}

CPath* exceptionOf(const std::vector<Edge*>& edges) {
    CPath* found = nullptr;
    for (CPath* exception : Pelko::analyzer->getCPaths())
        if (holdsFor(exception, edges)) {
            if (found)
                throw std::logic_error("two exceptions hold for one path");
            found = exception;
        }
    return found;
}

Demand changedBy(const CPath* exception, Demand demand, Pole* latchRoot) {
    if (const auto* delay = dynamic_cast<const Pelko::DPath*>(exception)) {
        if (delay->isMaximum())
            demand.setup = int(delay->getMaxdelay());
        else
            demand.hold = int(delay->getMindelay());
    }
    if (const auto* multicycle = dynamic_cast<const Pelko::MPath*>(exception)) {
        const Time period = timeOf(Pelko::analyzer->getRequiredPeriod(latchRoot));
        const std::int64_t later =
            static_cast<std::int64_t>(multicycle->getMultiplier() - 1) * period.value_or(0);
        demand = {plus(demand.setup, later), plus(demand.hold, later)};
    }
    return demand;
}

} // namespace

void PathEnumerator::add(const Event& launch, const Event& capture) {
    EnumeratedPath path;
    path.clocks = {launch.root, launch.mode, capture.root, capture.mode};
    path.edges = chain_;
    path.exception = exceptionOf(chain_);
    Time late = plus(launch.late, launch.outsideMaximum);
    Time early = plus(launch.early, launch.outsideMinimum);
    for (const Edge* edge : chain_) {
        late = plus(late, timeOf(edge->getMaxDelay()));
        const Time delay = timeOf(edge->getMinDelay());
        early = edge->getTarget()->isCheck() ? minus(early, delay) : plus(early, delay);
    }
    path.late = minus(plus(late, capture.outsideMaximum), capture.early);
    path.early = minus(plus(early, capture.outsideMinimum), capture.late);
    if (!path.isFalse()) {
        const Demand demand = changedBy(path.exception, demandOf_(path.clocks), capture.root);
        path.setupSlack = minus(demand.setup, path.late);
        path.holdSlack = minus(path.early, demand.hold);
    }
    paths_.push_back(path);
}

void PathEnumerator::relateToSlowest() {
    std::map<EdgePair, Time> slowest;
    for (const EnumeratedPath& path : paths_)
        if (path.late && !demandOf_(path.clocks).setup) {
            Time& late = slowest[path.clocks];
            late = std::max(late.value_or(*path.late), *path.late);
        }
    for (EnumeratedPath& path : paths_)
        if (const auto found = slowest.find(path.clocks); found != slowest.end() && !path.isFalse())
            path.setupSlack = minus(found->second, path.late);
}

} // namespace oracle
