// The last part of the generator: exceptions for a design that has clocks and port delays.
#pragma once

#include "GenerateNetlist.h"

namespace Brute {

// `allIdeal`: no clock is propagated under any options.
void generateExceptions(Random& random, const Shape& shape, Skeleton& skeleton, bool allIdeal);

} // namespace Brute
