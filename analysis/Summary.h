// From the results of a run to its report: sums, counts and names.
#pragma once

#include "analysis/Harvest.h"

namespace Analysis {

// Fills everything of the report that follows from the results. listUnconstrained: adds the names of the end
// points that no constraint times, in addition to their number.
void fillReport(const AnalyzedDesign& analyzed, Harvested results, bool listUnconstrained,
                Report::Report& report);

} // namespace Analysis
