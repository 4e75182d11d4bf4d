// Combinational loops for a netlist that has none.
#pragma once

#include "GenerateNetlist.h"

namespace Brute {

// Joins outputs of gates to new inputs of gates before them (or of their own), and to an input of a register
// that sets its output. False if there was nothing to join, or if the paths became too many.
bool addLoops(Random& random, const Shape& shape, Skeleton& skeleton);

} // namespace Brute
