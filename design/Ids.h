// The indices of a design and of its constraints.
#pragma once

#include "base/Index.h"

namespace Design {

// Into RoutedDesign::pins, ports included.
using PinId = Base::Index<struct PinTag>;
// Into RoutedDesign::cells.
using CellId = Base::Index<struct CellTag>;
// Into RoutedDesign::nets.
using NetId = Base::Index<struct NetTag>;
// Into RoutedDesign::arcs.
using ArcId = Base::Index<struct ArcTag>;
// Into RoutedDesign::checks and pulseChecks.
using CheckId = Base::Index<struct CheckTag>;
using PulseCheckId = Base::Index<struct PulseCheckTag>;

// Into Constraints::files.
using FileId = Base::Index<struct FileTag>;
// Into Constraints::clocks.
using ClockId = Base::Index<struct ClockTag>;
// Into Constraints::exceptions.
using ExceptionId = Base::Index<struct ExceptionTag>;
// Into Constraints::clockGroups.
using ClockGroupsId = Base::Index<struct ClockGroupsTag>;

} // namespace Design
