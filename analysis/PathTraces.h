// The paths that are reported: for each sweep, the worst arrivals are traced first, so that hardly more paths
// are traced than are reported.
//
// Arrivals that cannot lead to a reported path are not kept. Offering one costs a look-up; memory is a few
// arrivals for each reported path.
#pragma once

#include "analysis/Arrival.h"
#include "analysis/KeptPaths.h"
#include "analysis/SweepView.h"

#include <vector>

namespace Analysis {

class PathTraces {
public:
    // All of it must outlive the object.
    PathTraces(const AnalyzedDesign& analyzed, const ResultOrder& order, const PathLimits& limits)
        : of_(analyzed), order_(order), limits_(limits), sides_{{order, limits}, {order, limits}} {}

    // An arrival of the sweep that is read, with a slack.
    void offer(const Arrival& arrival);
    // Traces the paths of the arrivals offered since the last call.
    void trace(const SweepView& view);
    // Hands over the reported paths, setup first, each side worst first.
    std::vector<Report::Path> take();

private:
    struct OfSide {
        OfSide(const ResultOrder& order, const PathLimits& limits) : kept(order, limits) {}

        std::vector<Arrival> queue;
        std::size_t queueLimit = 0; // the number of arrivals at which the queue is thinned out
        KeptPaths kept;
    };

    void thinOut(std::vector<Arrival>& queue) const;

    const AnalyzedDesign& of_;
    const ResultOrder& order_;
    const PathLimits limits_;
    PerSide<OfSide> sides_;
};

} // namespace Analysis
