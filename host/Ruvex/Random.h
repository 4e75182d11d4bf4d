// The framework's random generator: one sequence for the process, which the seed determines. Only random
// locators use it.
#pragma once

#include "Ruvex/Export.h"

namespace Ruvex {

// The seed with which the sequence starts.
RUVEX_API unsigned long getDefaultSeed();
// Starts the sequence anew.
RUVEX_API void setRandomSeed(unsigned long seed);
// The next value, uniform over all 64 bits.
RUVEX_API unsigned long getRandomValue();

} // namespace Ruvex
