// Results computed from the maps: arc slacks, the worst paths, port slacks.
#include "ReferenceSweep.h"

namespace oracle {

using Pelko::CPath;
using Pelko::Delay;
using Pelko::Edge;
using Pelko::Path;
using Pelko::Pole;
using Pelko::PseudoMask;
using Vorlen::Timing;

namespace {

[[noreturn]] void refuse(const char* function, unsigned line, const char* message) {
    throw Ruvex::InvalidRequest(Ruvex::InternalError(message, Ruvex::Error::locate("Sweep", function, line)));
}

Delay boundOf(bool longest, const Timing& timing) {
    return longest ? timing.getMaximumDelay() : timing.getMinimumDelay();
}

// The requirement of a timing in the required maps: the setup side is kept as the minimum, the hold side as
// the maximum.
Delay requirementOf(bool longest, const Timing& timing) {
    return longest ? timing.getMinimumDelay() : timing.getMaximumDelay();
}

Delay delayOf(bool longest, const Edge* edge) { return longest ? edge->getMaxDelay() : edge->getMinDelay(); }

void keepWorst(Delay& worst, const Delay& slack) {
    if (slack.isDefined() && slack < worst)
        worst = slack;
}

} // namespace

// --- Slack of an arc ---

Delay ReferenceSweep::calculateLSlack(Edge* edge, const PseudoMask& mask, const Delay& arrival,
                                      CPath* cpath) {
    if (!edge)
        refuse("calculateLSlack", 811, "Null edge");
    return calculateSlack(true, edge, mask, arrival, cpath);
}

Delay ReferenceSweep::calculateSSlack(Edge* edge, const PseudoMask& mask, const Delay& arrival,
                                      CPath* cpath) {
    if (!edge)
        refuse("calculateSSlack", 908, "Null edge");
    return calculateSlack(false, edge, mask, arrival, cpath);
}

Delay ReferenceSweep::calculateSlack(bool longest, Edge* edge, const PseudoMask& mask, const Delay& arrival,
                                     CPath* cpath) {
    Pole* source = edge->getSource();
    Pole* target = edge->getTarget();
    const auto found = dataRT_.find(target);
    if (found == dataRT_.end())
        return Delay::getUndefined();
    Map required = found->second;

    PseudoMask classes = mask;
    classes |= source->getOpeningPseudoMask();
    classes &= edge->getPseudoMask();
    classes |= target->getOpeningPseudoMask();
    filter(classes & Pelko::analyzer->getFalsePathMask(), required);

    Delay requirement = Delay::getUndefined();
    if (!cpath) {
        sensibilize(classes, required);
        requirement = requirementOf(longest, required[0]);
    } else {
        sensibilize(cpath->getPseudoMask(), required);
        for (const auto& [key, timing] : required)
            if (!(PseudoMask(key) & cpath->getPseudoMask()).isEmpty()) {
                requirement = requirementOf(longest, timing);
                break;
            }
    }

    Delay slack = Delay::getUndefined();
    if (longest)
        slack = requirement - (arrival + edge->getMaxDelay());
    else if (target->isCheck())
        slack = (arrival - edge->getMinDelay()) - requirement;
    else
        slack = (arrival + edge->getMinDelay()) - requirement;

    if (cpath) {
        const Delay adjustment = cpath->getSlackAdjustment(subdomain_, longest);
        if (adjustment.isDefined())
            slack += adjustment;
    }
    return slack;
}

void ReferenceSweep::tagSlacks() {
    const PseudoMask adjusting =
        Pelko::analyzer->getMaxdelayPathMask() | Pelko::analyzer->getMulticyclePathMask();
    for (const auto& [pole, arrivals] : dataAT_) {
        for (Edge* edge : pole->getOutgoingEdges()) {
            Delay best = Delay::getMaximum();
            for (const auto& [key, timing] : arrivals) {
                const PseudoMask classes(key);
                keepWorst(best, calculateLSlack(edge, classes, timing.getMaximumDelay()));
                for (CPath* cpath : Pelko::analyzer->getCPaths(classes & adjusting))
                    keepWorst(best, calculateLSlack(edge, classes, timing.getMaximumDelay(), cpath));
            }
            const Delay current = edge->getSlack();
            if (!current.isDefined() && best != Delay::getMaximum()) {
                edge->setSlack(best);
                continue;
            }
            const unsigned long ratio = getTaggedDutyRatio();
            if (best == current && ratio < edge->getMinDutyCycle())
                edge->setMinDutyCycle(ratio);
            if (best < current) {
                edge->setSlack(best);
                edge->setMinDutyCycle(ratio);
            }
        }
    }
}

unsigned long ReferenceSweep::getTaggedDutyRatio() const {
    Pole* root = subdomain_->getLaunchRoot();
    if (!root || root != subdomain_->getLatchRoot())
        return 100;
    const unsigned long duty = Pelko::analyzer->getDutyRatio(root);
    const int launch = subdomain_->getLaunchClockMode().getCode();
    const int latch = subdomain_->getLatchClockMode().getCode();
    if (launch == 2)
        return latch == 1 ? duty : 100;
    if (launch == 1 && latch == 2)
        return 100 - duty;
    return 100;
}

// --- Port slacks ---

void ReferenceSweep::iodelaySlackAnalyze() {
    if (subdomain_->getLaunchRoot())
        for (Pole* leaf : subdomain_->getLaunchLeaves()) {
            if (!leaf->isInput())
                continue;
            Delay longest = Delay::getMaximum();
            Delay shortest = Delay::getMaximum();
            for (Edge* edge : leaf->getOutgoingEdges())
                if (const auto found = dataAT_.find(leaf); found != dataAT_.end())
                    updateWorst(edge, found->second, longest, shortest);
            Pelko::analyzer->mergeIODelayLongestSlack(leaf, longest);
            Pelko::analyzer->mergeIODelayShortestSlack(leaf, shortest);
        }
    if (subdomain_->getLatchRoot())
        for (Pole* leaf : subdomain_->getLatchLeaves()) {
            if (!leaf->isOutput())
                continue;
            Delay longest = Delay::getMaximum();
            Delay shortest = Delay::getMaximum();
            for (Edge* edge : leaf->getIncomingEdges())
                if (const auto found = dataAT_.find(edge->getSource()); found != dataAT_.end())
                    updateWorst(edge, found->second, longest, shortest);
            Pelko::analyzer->mergeIODelayLongestSlack(leaf, longest);
            Pelko::analyzer->mergeIODelayShortestSlack(leaf, shortest);
        }
}

void ReferenceSweep::updateWorst(Edge* edge, const Map& arrivals, Delay& longest, Delay& shortest) {
    for (const auto& [key, timing] : arrivals) {
        const PseudoMask mask(key);
        keepWorst(longest, calculateLSlack(edge, mask, timing.getMaximumDelay()));
        keepWorst(shortest, calculateSSlack(edge, mask, timing.getMinimumDelay()));
        for (CPath* cpath : Pelko::analyzer->getCPaths(mask)) {
            keepWorst(longest, calculateLSlack(edge, mask, timing.getMaximumDelay(), cpath));
            keepWorst(shortest, calculateSSlack(edge, mask, timing.getMinimumDelay(), cpath));
        }
    }
}

// --- Path search ---

void ReferenceSweep::searchLongestPaths(Delay maximumSlack, unsigned long count) {
    if (!maximumSlack.isDefined())
        refuse("searchLongestPaths", 3060, "Undefined maximumSlack");
    searchPaths(true, maximumSlack, count);
}

void ReferenceSweep::searchShortestPaths(Delay maximumSlack, unsigned long count) {
    if (!maximumSlack.isDefined())
        refuse("searchShortestPaths", 3145, "Undefined maximumSlack");
    searchPaths(false, maximumSlack, count);
}

// With a count of 0, nothing is searched and nothing is kept.
void ReferenceSweep::searchPaths(bool longest, Delay maximumSlack, unsigned long count) {
    if (count == 0)
        return;
    if (maximumSlack != Delay::getMaximum())
        maximumSlack = maximumSlack + Delay(1);
    std::map<Delay, PoleSet> ranking;
    for (Pole* leaf : subdomain_->getLaunchLeaves()) {
        Delay best = Delay::getMaximum();
        if (dataAT_.count(leaf) != 0) {
            const Delay arrival = getLeafArrival(longest, leaf);
            for (Edge* edge : leaf->getOutgoingEdges()) {
                const Delay slack = longest ? calculateLSlack(edge, PseudoMask(0), arrival)
                                            : calculateSSlack(edge, PseudoMask(0), arrival);
                if (slack.isDefined() && (!best.isDefined() || slack < best))
                    best = slack;
            }
        }
        ranking[best].insert(leaf);
    }
    for (const auto& rank : ranking)
        for (Pole* leaf : rank.second) {
            if (dataAT_.count(leaf) == 0)
                continue;
            Search state{longest, PseudoMask(0), {}, {}, getLeafArrival(longest, leaf), maximumSlack, count};
            search(leaf, state);
        }
}

Delay ReferenceSweep::getLeafArrival(bool longest, Pole* leaf) const {
    const Map& arrivals = dataAT_.at(leaf);
    const auto found = arrivals.find(leaf->getOpeningPseudoMask().getBits());
    return boundOf(longest, found == arrivals.end() ? Timing() : found->second);
}

Ruvex::Collection<Path*> ReferenceSweep::getKeptPaths(bool longest) const {
    return longest ? subdomain_->getLongestPaths() : subdomain_->getShortestPaths();
}

void ReferenceSweep::search(Pole* pole, Search& state) {
    const PseudoMask closing =
        state.mask & pole->getClosingPseudoMask() & Pelko::analyzer->getFalsePathMask();
    if (!closing.isEmpty())
        return;
    state.path.insert(pole);
    const PseudoMask saved = state.mask;
    state.mask |= pole->getOpeningPseudoMask();

    // When the kept set is full, only a path that is better than its last one matters.
    Delay limit = state.bound;
    if (getKeptPaths(state.longest).getCount() >= state.count) {
        const Delay last = getKeptPaths(state.longest).getLast()->getSlack();
        if (!(limit.isDefined() && (!last.isDefined() || limit < last)))
            limit = last;
    }
    if (!pole->isTerminal())
        searchEdges(pole, state, limit);
    else
        makePath(pole, state, limit);
    state.path.erase(pole);
    state.mask = saved;
}

void ReferenceSweep::searchEdges(Pole* pole, Search& state, const Delay& limit) {
    const auto slackOf = [&](Edge* edge, CPath* cpath) {
        return state.longest ? calculateLSlack(edge, state.mask, state.arrival, cpath)
                             : calculateSSlack(edge, state.mask, state.arrival, cpath);
    };
    for (Edge* edge : pole->getOutgoingEdges()) {
        if (!edge->isActive())
            continue;
        state.edges.push_back(edge);
        if (state.path.count(edge->getTarget()) == 0) {
            Delay slack = slackOf(edge, nullptr);
            if (!slack.isDefined())
                slack = Delay::getMaximum();
            if (!(slack < limit))
                for (CPath* cpath : Pelko::analyzer->getCPaths(state.mask)) {
                    const Delay other = slackOf(edge, cpath);
                    if (other.isDefined() && other < slack)
                        slack = other;
                    if (slack < limit)
                        break;
                }
            if (slack < limit) {
                const PseudoMask mask = state.mask;
                const Delay arrival = state.arrival;
                state.mask &= edge->getPseudoMask();
                state.arrival += delayOf(state.longest, edge);
                search(edge->getTarget(), state);
                state.arrival = arrival;
                state.mask = mask;
            }
        }
        state.edges.pop_back();
    }
}

void ReferenceSweep::makePath(Pole* pole, const Search& state, const Delay& limit) {
    const bool longest = state.longest;
    Pole* governor = pole->isCheck() ? pole->getClockPole() : pole;
    Delay latch(0);
    if (subdomain_->getLatchLeaves().contains(governor))
        if (const auto found = latchAT_.find(governor); found != latchAT_.end()) {
            Map timings = found->second;
            latch = requirementOf(longest, timings[0]);
        }
    Delay launch(0);
    if (!state.edges.empty())
        if (const auto found = launchAT_.find(state.edges.front()->getSource()); found != launchAT_.end()) {
            Map timings = found->second;
            launch = boundOf(longest, timings[0]);
        }

    CPath* constraint = nullptr;
    Delay adjust(0);
    const PseudoMask priority = getPriorityMask(state.mask & pole->getClosingPseudoMask(), longest);
    if (!priority.isEmpty()) {
        const Ruvex::Collection<CPath*> constraints = Pelko::analyzer->getCPaths(priority);
        if (constraints.getCount() > 1)
            refuse(longest ? "searchLongestPaths" : "searchShortestPaths", longest ? 3307 : 3567,
                   "Multiple constraints");
        if (constraints.getCount() == 1) {
            constraint = constraints.getFirst();
            adjust = constraint->getSlackAdjustment(subdomain_, longest);
        }
    }
    if (!adjust.isDefined())
        return;

    const Ruvex::ListCollection<Edge*> edges(state.edges);
    Path* path = longest ? Path::createLongest(subdomain_, edges, latch, launch, adjust)
                         : Path::createShortest(subdomain_, edges, latch, launch, adjust);
    path->setConstrainedPath(constraint);
    const Delay slack = path->getSlack();
    if (constraint) {
        if (longest)
            constraint->mergeLongestSlack(slack);
        else
            constraint->mergeShortestSlack(slack);
    }
    if (!(int(slack) < int(limit))) {
        path->destroy();
        return;
    }
    const Ruvex::Collection<Path*> kept = getKeptPaths(longest);
    if (kept.getCount() > state.count) {
        Path* last = kept.getLast();
        if (slack < last->getSlack())
            last->destroy();
        else
            path->destroy();
    }
}

} // namespace oracle
