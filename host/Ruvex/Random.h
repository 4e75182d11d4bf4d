// The framework's random generator: one sequence a process, repeatable by its seed. Only random locators draw
// from it.
#pragma once

#include "Ruvex/Export.h"

namespace Ruvex {

RUVEX_API unsigned long getDefaultSeed();
RUVEX_API void setRandomSeed(unsigned long seed);
// The next value, uniform over all 64 bits.
RUVEX_API unsigned long getRandomValue();

} // namespace Ruvex
