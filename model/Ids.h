// The indices of the timing graph.
#pragma once

#include "design/Ids.h"

namespace Model {

using Design::CellId, Design::ClockGroupsId, Design::ClockId, Design::PinId;

// A node of the network: a pin of the design, or a copy of one in a loop (Network.h).
using NodeId = Base::Index<struct NodeTag>;
// Into Network::arcs().
using ArcId = Base::Index<struct NetworkArcTag>;
// Into Loops::all().
using LoopId = Base::Index<struct LoopTag>;
// Into TimingModel::starts() and ends().
using StartId = Base::Index<struct StartTag>;
using EndId = Base::Index<struct EndTag>;

} // namespace Model
