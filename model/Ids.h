// The indices of the timing graph.
#pragma once

#include "design/Ids.h"

namespace Model {

// A node of the network: a pin of the design, or a copy of one in a loop (Network.h).
using NodeId = Base::Index<struct NodeTag>;

} // namespace Model
