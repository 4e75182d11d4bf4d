// The clock edges that launch and capture a path.
#pragma once

#include "design/Ids.h"

#include <compare>

namespace Model {

struct ClockEdges {
    Design::ClockId launch, capture; // none: that end of the path has no clock
    bool launchRise = true, captureRise = true;

    auto operator<=>(const ClockEdges&) const = default;
};

} // namespace Model
