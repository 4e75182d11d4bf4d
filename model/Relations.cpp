// The differences between the edges of two clocks are all the values that are equal modulo the greatest
// common divisor of the periods: the two that are wanted need no search.
#include "model/Relations.h"

#include "model/Phase.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace Model {

namespace {

// The first launch edge, from the first period on, that a capture edge follows (or precedes) by the
// difference.
Time launchWith(Time difference, Time launchEdge, Time launchPeriod, Time captureEdge, Time capturePeriod) {
    for (Time launch = launchEdge;; launch += launchPeriod)
        if (phaseOf(launch + difference - captureEdge, capturePeriod) == 0)
            return launch;
}

Relation search(Time launchEdge, Time launchPeriod, Time captureEdge, Time capturePeriod) {
    Relation found{std::numeric_limits<Time>::max(), std::numeric_limits<Time>::min(), 0, 0, true};
    const Time end = edgeLimit * std::min(launchPeriod, capturePeriod);
    for (Time launch = launchEdge; launch < launchEdge + end; launch += launchPeriod) {
        const Time before =
            captureEdge + floorOf(launch - captureEdge, capturePeriod) * capturePeriod - launch;
        const Time after = before + capturePeriod;
        if (after < found.setup) {
            found.setup = after;
            found.setupLaunch = launch;
        }
        if (before > found.hold) {
            found.hold = before;
            found.holdLaunch = launch;
        }
    }
    return found;
}

} // namespace

Relation relate(const Clock& launch, bool launchRise, const Clock& capture, bool captureRise) {
    const Time from = launch.edge(launchRise), to = capture.edge(captureRise);
    const Time step = std::gcd(launch.period, capture.period);
    if (std::max(launch.period, capture.period) / step > edgeLimit)
        return search(from, launch.period, to, capture.period);
    Relation relation;
    relation.hold = phaseOf(to - from, step) - step;
    if (relation.hold == -step)
        relation.hold = 0;
    relation.setup = relation.hold + step;
    relation.setupLaunch = launchWith(relation.setup, from, launch.period, to, capture.period);
    relation.holdLaunch = launchWith(relation.hold, from, launch.period, to, capture.period);
    return relation;
}

} // namespace Model
