// Sums and unions of delays.
#pragma once

#include "design/RoutedDesign.h"

#include <algorithm>
#include <cstdint>

namespace Readers {

// Values beyond this leave no room for sums in the engine's 32 bits.
inline constexpr std::int64_t largestValue = (std::int64_t{1} << 30) - 1;

inline void widen(Design::Interval& interval, const Design::Interval& other) {
    interval.early = std::min(interval.early, other.early);
    interval.late = std::max(interval.late, other.late);
}

} // namespace Readers
