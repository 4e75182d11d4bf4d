// The last part of the generator: exceptions over a design whose clocks and port delays are there.
#pragma once

#include "GenerateNetlist.h"

namespace Brute {

// `allIdeal`: no clock is propagated under any options.
void generateExceptions(Random& random, const Shape& shape, Skeleton& skeleton, bool allIdeal);

} // namespace Brute
