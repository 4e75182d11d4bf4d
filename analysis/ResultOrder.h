// The order of results with equal slacks: by names, never by the order in which a file lists its cells.
//
// End points come first, then the launching and the capturing clock and their edges, then the exception, and
// then the pins of the path from the end point backwards. Results that are equal in this order are reported
// alike.
#pragma once

#include "analysis/Arrival.h"
#include "design/RoutedDesign.h"

namespace Analysis {

class ResultOrder {
public:
    ResultOrder(const Design::RoutedDesign& design, const Model::Clocks& clocks)
        : design_(design), clocks_(clocks) {}

    // By the name of the pin.
    bool isBefore(Design::PinId a, Design::PinId b) const;
    // Of one end point: by clocks, edges and exception, then by the check's clock pin or the port's delay.
    bool isBefore(const Standing& a, const Standing& b) const;
    // Worst slack first, then by the end point's name.
    bool isBefore(const Arrival& a, const Arrival& b) const;

private:
    const Design::RoutedDesign& design_;
    const Model::Clocks& clocks_;
};

} // namespace Analysis
