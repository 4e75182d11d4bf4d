// The periods that clocks achieve if no clock is related to another: only paths from a clock to itself count.
//
// The engine pairs every clock that launches data with every clock that captures it, so a hundred thousand
// clocks that all reach each other would be ten thousand million pairs. Here each clock gets a design of its
// own instead, which holds its own paths (OwnPaths.h). The engine runs on the own designs of many clocks side
// by side. No two of them meet, so it finds for each clock what it would find among all pairs.
//
// Time: the sum of the own designs, and, for each 512 clocks, a pass over what they reach in the first half
// of the data and over what leads to their checks in the second half. Memory: as much as the model takes, or
// the largest own design if that is more. The sum is linear in the design unless clocks share long ways to
// themselves: logic on the own paths of a hundred clocks counts a hundred times.
#pragma once

#include <functional>
#include <vector>

namespace Pelko {
class Pole;
} // namespace Pelko

namespace Analysis {

// Sets the achieved period of each root that has own paths, at the analyzer `Pelko::analyzer`. The roots are
// clock sources of `Pelko::cell`, whose graph has no loops. Constraints are not considered. `launch` launches
// the engine; meanwhile the two globals mean a cell and an analyzer, with the same settings, that hold the
// own designs. An exception of `launch` is passed on, and the globals are put back.
void achieveApart(const std::vector<Pelko::Pole*>& roots, const std::function<void()>& launch);

} // namespace Analysis
