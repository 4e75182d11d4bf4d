// The worst paths of an arrival, traced back through the sweep's arrivals.
//
// What arrives at a pole is known exactly, so the arrival at a pole plus the delay from there to the end is
// the arrival of the worst path through both. The open steps are taken worst first, so that complete paths
// come out in order. Of equal steps the first is the one whose pins, from the end point backwards, come first
// by their names: the steps before a path's start are taken one after the other, and equal paths do not widen
// the search.
#pragma once

#include "analysis/Arrival.h"
#include "analysis/KeptPaths.h"
#include "analysis/SweepView.h"

namespace Analysis {

// Traces the paths of the arrival that `kept` wants. Stops at the first that it does not want. Throws
// Base::Interrupted if the run is to stop.
void tracePaths(const AnalyzedDesign& analyzed, const SweepView& view, const Arrival& arrival,
                KeptPaths& kept);

} // namespace Analysis
