// A path that was traced back to its start, as reports show it.
#pragma once

#include "analysis/Arrival.h"
#include "analysis/PathTrail.h"
#include "analysis/SweepView.h"
#include "report/Report.h"

namespace Analysis {

// The path from the step, which is at a start point, to the end point of the arrival. The slack and the terms
// of the arrival are those of the path.
Report::Path reportedPath(const AnalyzedDesign& analyzed, const SweepView& view, const Arrival& arrival,
                          const Step& start, const Trail& trail);

} // namespace Analysis
