// The path search: finds the worst paths of the subdomain by a depth-first search from the launch leaves,
// which a slack bound prunes.
//
// An arc is entered only if its slack, without or under some exception, is below the bound. When enough paths
// are kept, the bound drops to the slack of the least critical of them. The worst leaves come first, to make
// the bound tight early.
//
// On reconvergent logic that is not always enough: there may be exponentially many paths, each a little worse
// than the one before. So a search that has created far more paths than it keeps determines the slack of the
// last path to be kept (Sweep/WorstPaths.h), and takes it as the bound. It keeps the same paths in the same
// order. If that slack cannot be determined, the search continues as before. It cannot with exceptions,
// because an exception records the worst slack of all paths that are created.
//
// The search keeps its own stack. A frame holds what would be the variables of a recursive step.
#include "Vorlen/Cone/DataTimes.h"
#include "Vorlen/Sweep/Sides.h"
#include "Vorlen/Sweep/WorstPaths.h"
#include "Vorlen/detail/EventPump.h"
#include "Vorlen/detail/Work.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

namespace Vorlen {

using Pelko::analyzer;
using Pelko::CPath;
using Pelko::Delay;
using Pelko::Edge;
using Pelko::Pole;
using Pelko::PseudoMask;

namespace {

// The state of a search.
struct State {
    PseudoMask& mask;
    PoleSet& path;
    EdgeList& edges;
    Delay& arrival;
};

template <class Side>
class Search {
public:
    Search(Sweep& sweep, const Delay& bound, unsigned long count)
        : sweep_(sweep), subdomain_(*sweep.getSubdomain()), bound_(bound), count_(count) {}

    // Searches from all launch leaves, the worst first.
    void run(const detail::DataTimes& data) {
        data_ = &data;
        patience_ = leastPatience + data.cone.getSlotCount() / polesPerPath;
        for (const auto& [slack, leaves] : rankLeaves())
            for (Pole* leaf : leaves) {
                Delay arrival = Delay::getUndefined();
                if (!findArrival(leaf, arrival))
                    continue;
                PseudoMask mask;
                PoleSet path;
                EdgeList edges;
                run(leaf, {mask, path, edges, arrival});
            }
    }

    void run(Pole* start, const State& state) {
        if (count_ == 0)
            return;
        frames_.clear();
        fan_.clear();
        if (!enter(start, state))
            return;
        while (!frames_.empty()) {
            Frame& frame = frames_.back();
            if (frame.next == frame.end) {
                leave(state);
                continue;
            }
            Edge* edge = fan_[frame.next++];
            if (!edge->isActive())
                continue;
            state.edges.push_back(edge);
            if (state.path.count(edge->getTarget()) == 0 && isCritical(edge, state, frame.limit)) {
                frame.mask = state.mask.getBits();
                frame.arrival = int(state.arrival);
                state.mask &= edge->getPseudoMask();
                state.arrival += Side::delayOf(edge);
                if (enter(edge->getTarget(), state))
                    continue; // the arc is removed at the end of the step
                restore(frames_.back(), state);
            }
            state.edges.pop_back();
        }
    }

private:
    struct Frame {
        Pole* pole;
        unsigned long maskAtEntry;
        unsigned long mask; // before the current arc
        int arrival;        // before the current arc
        Delay limit;
        std::size_t next; // into fan_
        std::size_t end;
    };

    // The number of paths that a search creates before it determines the slack of the last path to be kept:
    // as many as take about the same time, and some more for each path that is kept.
    static constexpr std::size_t leastPatience = 1024; // paths
    static constexpr std::size_t polesPerPath = 8;
    static constexpr unsigned long patiencePerKeptPath = 4;

    // The arrival at a launch leaf, which is that of the leaf's own opening classes.
    bool findArrival(Pole* leaf, Delay& arrival) const {
        TimingMap arrivals;
        if (!sweep_.hasArrivalTimingMap(leaf, arrivals))
            return false;
        const auto entry = arrivals.find(leaf->getOpeningPseudoMask().getBits());
        arrival = Side::arrivalOf(entry == arrivals.end() ? Timing::getUndefined() : entry->second);
        return true;
    }

    std::map<Delay, PoleSet> rankLeaves() const {
        std::map<Delay, PoleSet> ranking;
        for (Pole* leaf : subdomain_.getLaunchLeaves()) {
            Delay best = Delay::getMaximum();
            Delay arrival = Delay::getUndefined();
            if (findArrival(leaf, arrival))
                for (Edge* edge : leaf->getOutgoingEdges()) {
                    detail::visitArcs(1);
                    const Delay slack = Side::calculateSlack(sweep_, edge, PseudoMask(), arrival, nullptr);
                    if (slack.isDefined() && (!best.isDefined() || slack < best))
                        best = slack;
                }
            ranking[best].insert(leaf);
        }
        return ranking;
    }

    // The start of a step. Returns false if the step is over at once.
    bool enter(Pole* pole, const State& state) {
        if (!(state.mask & pole->getClosingPseudoMask() & analyzer->getFalsePathMask()).isEmpty())
            return false;
        state.path.insert(pole);
        const unsigned long maskAtEntry = state.mask.getBits();
        state.mask |= pole->getOpeningPseudoMask();
        const Delay limit = currentLimit();
        const std::size_t begin = fan_.size();
        if (pole->isTerminal()) {
            report(pole, state, limit);
            tightenBound();
        } else {
            for (Edge* edge : pole->getOutgoingEdges())
                fan_.push_back(edge);
            detail::visitArcs(fan_.size() - begin);
        }
        frames_.push_back(
            {pole, maskAtEntry, state.mask.getBits(), int(state.arrival), limit, begin, fan_.size()});
        return true;
    }

    // The end of a step, which also removes the arc that led to it.
    void leave(const State& state) {
        const Frame& frame = frames_.back();
        state.path.erase(frame.pole);
        state.mask = PseudoMask(frame.maskAtEntry);
        frames_.pop_back();
        pump_();
        if (frames_.empty())
            return;
        fan_.resize(frames_.back().end);
        restore(frames_.back(), state);
        state.edges.pop_back();
    }

    static void restore(const Frame& frame, const State& state) {
        state.mask = PseudoMask(frame.mask);
        state.arrival = Delay(frame.arrival);
    }

    // When enough paths are kept, only paths that are worse than the least critical of them are searched.
    Delay currentLimit() const {
        const auto kept = Side::pathsOf(subdomain_);
        if (kept.getCount() < count_)
            return bound_;
        const Delay& worst = kept.getLast()->getSlack();
        return bound_.isDefined() && (!worst.isDefined() || bound_ < worst) ? bound_ : worst;
    }

    // Whether the arc's slack, without or under some exception, is below the limit.
    bool isCritical(Edge* edge, const State& state, const Delay& limit) const {
        const Delay plain = Side::calculateSlack(sweep_, edge, state.mask, state.arrival, nullptr);
        Delay slack = plain.isDefined() ? plain : Delay::getMaximum();
        if (slack < limit)
            return true;
        for (CPath* cpath : analyzer->getCPaths(state.mask)) {
            const Delay under = Side::calculateSlack(sweep_, edge, state.mask, state.arrival, cpath);
            if (under.isDefined() && under < slack)
                slack = under;
            if (slack < limit)
                return true;
        }
        return false;
    }

    Delay latchClock(Pole* end) const {
        Pole* leaf = end->isCheck() ? end->getClockPole() : end;
        TimingMap latch;
        if (!subdomain_.getLatchLeaves().contains(leaf) || !sweep_.hasLatchTimingMap(leaf, latch))
            return Delay(0);
        return Side::latchOf(latch[0]);
    }

    Delay launchClock(const EdgeList& edges) const {
        TimingMap launch;
        if (edges.empty() || !sweep_.hasLaunchTimingMap(edges.front()->getSource(), launch))
            return Delay(0);
        return Side::launchOf(launch[0]);
    }

    // The exception that governs the path, or null.
    CPath* governingPath(const PseudoMask& classes) const {
        const PseudoMask priority = sweep_.getPriorityMask(classes, Side::isLong);
        CPath* governing = nullptr;
        for (CPath* cpath : analyzer->getCPaths(priority)) {
            detail::require(!governing, Side::multipleConstraints);
            governing = cpath;
        }
        return governing;
    }

    // A complete path: it is created, its slack is merged into its exception, and it is kept if it is among
    // the worst.
    void report(Pole* end, const State& state, const Delay& limit) {
        const Delay latch = latchClock(end);
        const Delay launch = launchClock(state.edges);
        CPath* governing = governingPath(state.mask & end->getClosingPseudoMask());
        const Delay adjust = governing ? governing->getSlackAdjustment(&subdomain_, Side::isLong) : Delay(0);
        if (!adjust.isDefined())
            return;
        Pelko::Path* path =
            Side::createPath(&subdomain_, Ruvex::ListCollection<Edge*>(state.edges), latch, launch, adjust);
        ++made_;
        path->setConstrainedPath(governing);
        const Delay slack = path->getSlack();
        if (governing)
            Side::mergeSlack(*governing, slack);
        if (int(slack) >= int(limit)) {
            path->destroy();
            return;
        }
        const auto kept = Side::pathsOf(subdomain_);
        if (kept.getCount() <= count_)
            return;
        Pelko::Path* last = kept.getLast();
        (slack < last->getSlack() ? last : path)->destroy();
    }

    // Called for each path, but has an effect only once, when enough paths were created.
    void tightenBound() {
        if (!data_ || made_ < patience_)
            return;
        const unsigned long kept = Side::pathsOf(subdomain_).getCount();
        if (kept < count_ || made_ < patience_ + patiencePerKeptPath * kept)
            return;
        const detail::DataTimes& data = *std::exchange(data_, nullptr);
        std::vector<PathStart> starts;
        for (Pole* leaf : subdomain_.getLaunchLeaves())
            if (Delay arrival = Delay::getUndefined(); findArrival(leaf, arrival) && arrival.isDefined())
                starts.push_back({leaf, arrival});
        const std::vector<RankedPath> worst = WorstPaths<Side>(data, starts).find(currentLimit(), count_);
        Delay last = Delay::getMinimum();
        for (const RankedPath& path : worst) {
            const Delay slack = askForSlack(path.edges);
            if (slack < path.slack || !slack.isOrdinary())
                return;
            last = std::max(last, slack);
        }
        if (!worst.empty())
            bound_ = std::min(bound_, last + Delay(1));
    }

    // The slack of a path as the host computes it.
    Delay askForSlack(const EdgeList& edges) {
        Pelko::Path* path =
            Side::createPath(&subdomain_, Ruvex::ListCollection<Edge*>(edges),
                             latchClock(edges.back()->getTarget()), launchClock(edges), Delay(0));
        const Delay slack = path->getSlack();
        path->destroy();
        return slack;
    }

    Sweep& sweep_;
    Pelko::Subdomain& subdomain_;
    const detail::DataTimes* data_ = nullptr; // null once the bound is computed, or if it never is
    Delay bound_;
    unsigned long count_;
    unsigned long made_ = 0;
    unsigned long patience_ = 0;
    std::vector<Frame> frames_;
    std::vector<Edge*> fan_;
    detail::WalkPump pump_;
};

// The bound is exclusive: one more than the requested maximum, so that a path with exactly that slack is
// kept.
template <class Side>
void search(Sweep& sweep, const detail::DataTimes& data, const Delay& maximumSlack, unsigned long count) {
    detail::require(maximumSlack.isDefined(), Side::undefinedSlack);
    if (count == 0)
        return;
    Search<Side>(sweep, maximumSlack == Delay::getMaximum() ? maximumSlack : maximumSlack + Delay(1), count)
        .run(data);
}

} // namespace

void Sweep::searchLongestPaths(Delay maximumSlack, unsigned long count) {
    search<LongSide>(*this, *data, maximumSlack, count);
}

void Sweep::searchShortestPaths(Delay maximumSlack, unsigned long count) {
    search<ShortSide>(*this, *data, maximumSlack, count);
}

void Sweep::searchLongestPaths(Pole* pole, PseudoMask& mask, PoleSet& path, EdgeList& edges, Delay& arrival,
                               const Delay& bound, const unsigned long& count) {
    Search<LongSide>(*this, bound, count).run(pole, {mask, path, edges, arrival});
}

void Sweep::searchShortestPaths(Pole* pole, PseudoMask& mask, PoleSet& path, EdgeList& edges, Delay& arrival,
                                const Delay& bound, const unsigned long& count) {
    Search<ShortSide>(*this, bound, count).run(pole, {mask, path, edges, arrival});
}

} // namespace Vorlen
