// The queues of a sweep's arrivals.
#include "analysis/PathTraces.h"

#include "analysis/PathSearch.h"

#include <algorithm>
#include <unordered_map>

namespace Analysis {

namespace {

// How many arrivals a queue may have in any case.
constexpr std::size_t leastQueue = 4096;

} // namespace

void PathTraces::offer(const Arrival& arrival) {
    OfSide& side = sides_[arrival.side];
    if (!side.kept.isWanted(arrival.end->pin, arrival.slack))
        return;
    side.queue.push_back(arrival);
    if (side.queue.size() < std::max(side.queueLimit, leastQueue))
        return;
    thinOut(side.queue);
    side.queueLimit = 2 * side.queue.size();
}

// Sorts the arrivals, and drops those that have as many better ones before them as there are paths to report,
// in all or of their end point: each of these has a path of its own.
void PathTraces::thinOut(std::vector<Arrival>& queue) const {
    std::ranges::sort(queue, [this](const Arrival& a, const Arrival& b) { return order_.isBefore(a, b); });
    struct Own {
        std::size_t better = 0, equal = 0; // arrivals before this one, and of its slack
        Time slack = 0;
    };
    std::unordered_map<Design::PinId, Own> ends;
    std::size_t left = 0;
    for (const Arrival& arrival : queue) {
        Own& own = ends.try_emplace(arrival.end->pin, Own{0, 0, arrival.slack}).first->second;
        if (ends.size() > limits_.paths)
            break;
        if (own.slack != arrival.slack)
            own = {own.better + own.equal, 0, arrival.slack};
        ++own.equal;
        if (own.better < limits_.perEndpoint)
            queue[left++] = arrival;
    }
    queue.resize(left);
}

void PathTraces::trace(const SweepView& view) {
    for (const Side side : Base::bothSides) {
        OfSide& of = sides_[side];
        thinOut(of.queue);
        for (const Arrival& arrival : of.queue)
            tracePaths(of_, view, arrival, of.kept);
        of.queue.clear();
        of.queueLimit = 0;
    }
}

std::vector<Report::Path> PathTraces::take() {
    std::vector<Report::Path> all;
    for (const Side side : Base::bothSides)
        sides_[side].kept.moveTo(all);
    return all;
}

} // namespace Analysis
