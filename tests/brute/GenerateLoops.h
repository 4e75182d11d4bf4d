// Combinational loops for a netlist that has none.
#pragma once

#include "GenerateNetlist.h"

namespace Brute {

// Connects outputs of gates to new inputs of gates before them (or of their own), and to an input of a
// register that sets its output. Returns false if there was nothing to connect, or if the paths became too
// many.
bool addLoops(Random& random, const Shape& shape, Skeleton& skeleton);

} // namespace Brute
