// What the objects of the exceptions mean in a design: named objects become start points, end points and
// nodes to pass.
//
// A cell on -from is its clock pins, on -to its data pins, on -through its outputs and the data pins at which
// paths end in it. A net is its drivers. A register's output on -from is that register through that output.
// What is no start or end point is taken as -through.
//
// It costs the objects named, and once all pins.
#pragma once

#include "design/Constraints.h"
#include "exceptions/Variant.h"
#include "model/TimingModel.h"

namespace Exceptions {

struct Resolved {
    Variants variants; // in the order of their exceptions
    // Ports without a delay, or with one without a clock, that a maximum or minimum delay may time
    // nevertheless.
    Model::TimedPorts timedPorts;
};

// Warns of what is no start or end point, and notes edges of data, which are not told apart. BadInput: a
// maximum or minimum delay from or to a point within paths.
Resolved resolve(const Design::RoutedDesign& design, const Model::Network& network,
                 const Design::Constraints& constraints, Base::Diagnostics& diagnostics);

} // namespace Exceptions
