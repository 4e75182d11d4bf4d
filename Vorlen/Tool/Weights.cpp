// Edge weights: the number of critical paths through a critical arc, reduced to classes that are numbered
// from 1.
//
// Counting is linear in the number of critical arcs. Choosing the threshold keeps only the slacks of the
// critical share.
#include "Pelko/Analyzer.h"
#include "Pelko/Cell.h"
#include "Vorlen/Tool.h"
#include "Vorlen/detail/Walk.h"
#include "Vorlen/detail/Work.h"

#include <algorithm>
#include <queue>
#include <vector>

namespace Vorlen {

using Pelko::Delay;
using Pelko::Edge;
using Pelko::Pole;

namespace {

bool isWithin(const Edge* edge, const Delay& threshold) {
    const Delay slack = edge->getSlack();
    return slack.isDefined() && int(slack) <= int(threshold);
}

// Forward counts from path starts, and walks backwards along incoming arcs. Backward counts from path ends,
// and walks along outgoing arcs.
struct Forward {
    static bool isOrigin(const Pole* pole) { return pole->isInitial(); }
    static bool isDestination(const Pole* pole) { return pole->isTerminal(); }
    static Pelko::Edges fanOf(const Pole* pole) { return pole->getIncomingEdges(); }
    static Pole* nextOf(const Edge* edge) { return edge->getSource(); }
    static Pole* hereOf(const Edge* edge) { return edge->getTarget(); }
};
struct Backward {
    static bool isOrigin(const Pole* pole) { return pole->isTerminal(); }
    static bool isDestination(const Pole* pole) { return pole->isInitial(); }
    static Pelko::Edges fanOf(const Pole* pole) { return pole->getOutgoingEdges(); }
    static Pole* nextOf(const Edge* edge) { return edge->getTarget(); }
    static Pole* hereOf(const Edge* edge) { return edge->getSource(); }
};

// Counts the critical paths between a pole and the origins.
template <class Direction>
class CountVisitor {
public:
    CountVisitor(Tool& tool, const Delay& threshold, PoleCountMap& counts)
        : tool_(tool), threshold_(threshold), counts_(counts) {}

    bool enter(Pole* pole) {
        if (pole->isMarked())
            return false;
        tool_.loopPush(pole);
        if (Direction::isOrigin(pole))
            counts_[pole] = 1;
        return true;
    }

    Pelko::Edges fan(const Pole* pole) const {
        return Direction::isOrigin(pole) ? Pelko::Edges() : Direction::fanOf(pole);
    }

    Pole* follow(const Edge* edge) const {
        if (!edge->isActive() || !isWithin(edge, threshold_))
            return nullptr;
        Pole* next = Direction::nextOf(edge);
        return tool_.isLooping(next) ? nullptr : next;
    }

    void back(const Edge* edge) {
        if (const auto count = counts_.find(Direction::nextOf(edge)); count != counts_.end())
            counts_[Direction::hereOf(edge)] += count->second;
    }

    void leave(Pole* pole) {
        tool_.loopPop();
        pole->mark();
    }

private:
    Tool& tool_;
    const Delay& threshold_;
    PoleCountMap& counts_;
};

template <class Direction>
void count(Tool& tool, const Delay& threshold, PoleCountMap& counts) {
    const detail::MarkGuard guard;
    tool.loopOpen();
    CountVisitor<Direction> visitor(tool, threshold, counts);
    detail::Walk walk;
    for (Pole* pole : Pelko::cell->getPoles())
        if (Direction::isDestination(pole))
            walk.run(pole, visitor);
    tool.loopClose();
    Pelko::analyzer->unmark();
}

// Writes the raw weight of every critical arc. Returns the distinct weights in ascending order.
std::vector<unsigned long> storeRawWeights(const PoleCountMap& forward, const PoleCountMap& backward,
                                           const Delay& threshold) {
    std::vector<unsigned long> weights;
    for (const auto& [pole, starts] : forward)
        for (Edge* edge : pole->getOutgoingEdges()) {
            detail::visitArcs(1);
            if (!isWithin(edge, threshold))
                continue;
            const auto ends = backward.find(edge->getTarget());
            if (ends == backward.end())
                continue;
            const unsigned long weight = starts * ends->second;
            edge->setWeight(weight);
            weights.push_back(weight);
        }
    std::sort(weights.begin(), weights.end());
    weights.erase(std::unique(weights.begin(), weights.end()), weights.end());
    return weights;
}

// The first weight of each class, and one more than the largest weight, modulo 2^64.
std::vector<unsigned long> boundariesOf(const std::vector<unsigned long>& weights) {
    const std::size_t step = weights.size() > 9 ? weights.size() / 9 : 1;
    std::vector<unsigned long> boundaries;
    for (std::size_t i = 0; i < weights.size(); i += step)
        boundaries.push_back(weights[i]);
    boundaries.push_back(weights.empty() ? 1 : weights.back() + 1);
    std::sort(boundaries.begin(), boundaries.end());
    boundaries.erase(std::unique(boundaries.begin(), boundaries.end()), boundaries.end());
    return boundaries;
}

} // namespace

void Tool::tagWeights(float ratio) {
    const Pelko::Edges edges = Pelko::cell->getEdges();
    const auto all = static_cast<float>(edges.getCount());
    const float share = std::min(all * ratio, all);
    const unsigned long wanted = share >= 1.0F ? static_cast<unsigned long>(share) : 0;
    Delay threshold = Delay::getMaximum();
    std::priority_queue<int> kept; // the `wanted` smallest slacks seen, the largest on top
    for (const Edge* edge : edges) {
        const Delay slack = edge->getSlack();
        if (!slack.isDefined() || !(slack < threshold))
            continue;
        kept.push(int(slack));
        if (kept.size() > wanted)
            kept.pop();
        if (wanted != 0 && kept.size() == wanted)
            threshold = Delay(kept.top());
    }
    if (!kept.empty())
        threshold = Delay(kept.top());
    tagWeights(threshold);
}

void Tool::tagWeights(const Delay& threshold) {
    PoleCountMap forward;
    edgeForwardStem(threshold, forward);
    PoleCountMap backward;
    edgeBackwardStem(threshold, backward);
    const std::vector<unsigned long> boundaries = boundariesOf(storeRawWeights(forward, backward, threshold));
    for (Edge* edge : Pelko::cell->getEdges()) {
        const unsigned long weight = edge->getWeight();
        if (weight == 0)
            continue;
        const auto above = std::upper_bound(boundaries.begin(), boundaries.end(), weight);
        if (above != boundaries.begin() && above != boundaries.end())
            edge->setWeight(static_cast<unsigned long>(above - boundaries.begin()));
    }
}

void Tool::edgeForwardStem(const Delay& threshold, PoleCountMap& counts) {
    count<Forward>(*this, threshold, counts);
}

void Tool::edgeForwardStem(Pole* pole, const Delay& threshold, PoleCountMap& counts) {
    CountVisitor<Forward> visitor(*this, threshold, counts);
    detail::Walk().run(pole, visitor);
}

void Tool::edgeBackwardStem(const Delay& threshold, PoleCountMap& counts) {
    count<Backward>(*this, threshold, counts);
}

void Tool::edgeBackwardStem(Pole* pole, const Delay& threshold, PoleCountMap& counts) {
    CountVisitor<Backward> visitor(*this, threshold, counts);
    detail::Walk().run(pole, visitor);
}

} // namespace Vorlen
