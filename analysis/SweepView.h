// A sweep of the engine while its results are read.
#pragma once

#include "analysis/AnalyzedDesign.h"
#include "analysis/ClockRelations.h"
#include "analysis/EngineTimes.h"
#include "exceptions/ClassSet.h"

#include "Vorlen/Sweep.h"

namespace Analysis {

struct SweepView {
    const Vorlen::Sweep& sweep;
    ClockEdges edges;
    // Null unless both clocks have periods.
    const Model::Relation* relation = nullptr;
};

// How late the launching clock is at a start point: the engine's launch arrival, or the latency of a port's
// clock. 0 if the sweep does not launch there.
Time launchLatency(const SweepView& view, const Model::TimingModel& model, const Model::Start& start,
                   Side side);

} // namespace Analysis
