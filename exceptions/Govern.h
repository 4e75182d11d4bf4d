// Which of the exceptions that cover a path governs it, for setup and hold apart:
//
//   1. by kind: a false path, then a maximum delay (setup) or a minimum delay (hold), then a multicycle
//   2. by how specific it is (Variant::rank); of multicycles of one rank, one for this side only comes first
//   3. the last one on identical objects: those of both ends and the through points that the path passed
//   4. the tightest: the least maximum delay, the greatest minimum delay, the fewest cycles; of false paths
//      the last one
//
// Path groups are judged in the same way, apart from the others.
#pragma once

#include "design/Constraints.h"
#include "exceptions/Match.h"
#include "exceptions/Requirement.h"

namespace Exceptions {

// The periods of the clocks that launch and capture a path, in units; 0 without a clock.
struct Periods {
    Model::Time launch = 0, capture = 0;
};

// Whether the exception was stated for the side.
inline bool isFor(const Design::Exception& stated, Base::Side side) {
    return side == Base::Side::setup ? stated.setup : stated.hold;
}

// What the matches of one path require of it. `scale`: a unit is 10^scale s. BadInput: a delay that does not
// fit the engine's integers. Costs a few sorts of the matches.
Requirement govern(const std::vector<Match>& matches, const Periods& periods,
                   const Design::Constraints& constraints, int scale);

} // namespace Exceptions
