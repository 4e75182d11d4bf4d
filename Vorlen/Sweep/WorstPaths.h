// The paths with the smallest slacks, in ascending order, found best first. Required times give, for each
// start of a path, the smallest slack that the path can still reach.
//
// There is a result only if required times are a lower bound on every arc: no class of exceptions opens in
// the cone, no path continues from a check, and every time is far from the limits of its range. All of that
// is verified, arc by arc, on the present state of the design.
//
// Cost: one pass over the arcs of the cone; then, for each path found, its length times the fan-out on the
// way, in time and memory. The search stops without a result after `maximumSteps`, or if a walk goes round a
// loop without end. The order of paths with equal slacks is not that of the engine's search. So the result
// shows the slack of the n-th worst path, but not which path is to be kept.
#pragma once

#include "Vorlen/Cone/DataTimes.h"
#include "Vorlen/Sweep/Sides.h"
#include "Vorlen/detail/Work.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <queue>
#include <unordered_set>
#include <utility>
#include <vector>

namespace Vorlen {

// A launch leaf and the arrival that paths from it start with.
struct PathStart {
    Pelko::Pole* leaf;
    Pelko::Delay arrival;
};

struct RankedPath {
    EdgeList edges;
    Pelko::Delay slack; // by the sweep's times
};

template <class Side>
class WorstPaths {
public:
    WorstPaths(const detail::DataTimes& data, const std::vector<PathStart>& starts)
        : data_(data), starts_(starts) {}

    // The `count` worst paths, with slacks below the bound. Empty if there are fewer, or if there is no
    // result.
    std::vector<RankedPath> find(const Pelko::Delay& bound, unsigned long count) {
        std::vector<RankedPath> found;
        if (!isBoundedBelow())
            return found;
        bound_ = bound;
        for (const PathStart& start : starts_)
            extend(start.leaf, start.arrival, none);
        while (!open_.empty() && steps_.size() < maximumSteps) {
            const std::uint32_t best = open_.top().step;
            open_.pop();
            const Step step = steps_[best];
            if (step.length > data_.cone.getPoles().size())
                return {};
            Pelko::Pole* pole = step.edge->getTarget();
            if (!pole->isTerminal()) {
                extend(pole, Pelko::Delay(step.arrival), best);
                continue;
            }
            if (!isSimple(best))
                continue;
            found.push_back({edgesTo(best), Pelko::Delay(step.slack)});
            if (found.size() == count)
                return found;
        }
        return {};
    }

private:
    using Delay = Pelko::Delay;
    using Edge = Pelko::Edge;
    using Pole = Pelko::Pole;

    static constexpr std::uint32_t none = ~std::uint32_t{0};
    static constexpr std::size_t maximumSteps = std::size_t{1} << 23;
    static constexpr int farthest = 1 << 30; // the difference of two such times is an ordinary one

    struct Step {
        Edge* edge;
        std::uint32_t previous; // `none` if the edge leaves a launch leaf
        std::uint32_t length;   // arcs so far
        int arrival;            // at the target of the edge
        int slack;
    };
    struct Open {
        int slack;
        std::uint32_t step;
        // The queue returns the greatest first: the smallest slack, and among equal ones the newest, so that
        // one path is finished before another is begun.
        bool operator<(const Open& other) const {
            return slack == other.slack ? step < other.step : slack > other.slack;
        }
    };

    static bool isNear(const Delay& time) { return time.isOrdinary() && std::abs(int(time)) < farthest; }

    // The required time of all classes together, which applies to paths under no exception.
    Delay requiredAt(const Pole* pole) const {
        detail::ClassTiming all{0, Delay::undefinedValue, Delay::undefinedValue};
        for (const detail::ClassTiming& each : data_.getRequired(pole))
            all.widen(each.minimum, each.maximum);
        return Side::requiredOf(all.getTiming());
    }

    bool isBoundedBelow() const {
        for (const PathStart& start : starts_)
            if (!isNear(start.arrival) || start.leaf->isTerminal() || !isPlain(start.leaf))
                return false;
        for (const Pole* pole : data_.cone.getPoles())
            if (data_.hasRequired(pole) && !isBoundedBelow(pole))
                return false;
        return true;
    }

    static bool isPlain(const Pole* pole) { return pole->getOpeningPseudoMask().isEmpty(); }

    bool isBoundedBelow(const Pole* pole) const {
        const Delay required = requiredAt(pole);
        if (!isNear(required) || !isPlain(pole) || !data_.hasArrivals(pole))
            return false;
        for (const detail::ClassTiming& arrival : data_.getArrivals(pole))
            if (!isNear(Delay(arrival.minimum)) || !isNear(Delay(arrival.maximum)))
                return false;
        if (pole->isTerminal())
            return true;
        for (const Edge* edge : pole->getOutgoingEdges()) {
            detail::visitArcs(1);
            if (edge->isActive() && data_.hasRequired(edge->getTarget()) &&
                (pole->isCheck() || !isBoundedBelow(edge, required)))
                return false;
        }
        return true;
    }

    // Whether the slack at the arc's target is not smaller than the bound at its source.
    bool isBoundedBelow(const Edge* edge, const Delay& requiredAtSource) const {
        const Delay dataTime = Side::dataTime(Delay(0), edge);
        return isNear(dataTime) && !(Side::slack(requiredAt(edge->getTarget()), dataTime) <
                                     Side::slack(requiredAtSource, Delay(0)));
    }

    void extend(Pole* pole, const Delay& arrival, std::uint32_t previous) {
        const std::uint32_t length = 1 + (previous == none ? 0 : steps_[previous].length);
        for (Edge* edge : pole->getOutgoingEdges()) {
            detail::visitArcs(1);
            if (!edge->isActive() || !data_.hasRequired(edge->getTarget()))
                continue;
            const Delay slack = Side::slack(requiredAt(edge->getTarget()), Side::dataTime(arrival, edge));
            if (!(slack < bound_))
                continue;
            open_.push({int(slack), static_cast<std::uint32_t>(steps_.size())});
            steps_.push_back({edge, previous, length, int(arrival + Side::delayOf(edge)), int(slack)});
        }
    }

    EdgeList edgesTo(std::uint32_t last) const {
        EdgeList edges;
        for (std::uint32_t step = last; step != none; step = steps_[step].previous)
            edges.push_front(steps_[step].edge);
        return edges;
    }

    // Whether no pole occurs twice, which can happen on a loop without delay.
    bool isSimple(std::uint32_t last) const {
        std::unordered_set<const Pole*> poles;
        for (std::uint32_t step = last; step != none; step = steps_[step].previous)
            if (!poles.insert(steps_[step].edge->getTarget()).second ||
                (steps_[step].previous == none && !poles.insert(steps_[step].edge->getSource()).second))
                return false;
        return true;
    }

    const detail::DataTimes& data_;
    const std::vector<PathStart>& starts_;
    Delay bound_ = Delay::getMaximum();
    std::vector<Step> steps_;
    std::priority_queue<Open> open_;
};

} // namespace Vorlen
