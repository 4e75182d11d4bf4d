// Division of times by periods. The language's / and % round towards zero, so that a phase before time 0
// would come out negative; here all roundings are the same on both sides of 0.
//
// REQUIRES of every function: the divisor is positive, and twice the dividend plus the divisor fits 63 bits.
#pragma once

#include <cstdint>

namespace Model {

using Time = std::int64_t;

// What is left of a time within its period: from 0 to period - 1. phaseOf(-1, 10) is 9.
constexpr Time phaseOf(Time time, Time period) {
    const Time rest = time % period;
    return rest < 0 ? rest + period : rest;
}

// The largest integer that is not above a / b. floorOf(-1, 10) is -1.
constexpr Time floorOf(Time a, Time b) { return (a - phaseOf(a, b)) / b; }

// The smallest integer that is not below a / b. ceilingOf(1, 10) is 1, ceilingOf(-1, 10) is 0.
constexpr Time ceilingOf(Time a, Time b) { return -floorOf(-a, b); }

// The integer nearest to a / b, halves upwards. nearestOf(5, 10) is 1, nearestOf(-5, 10) is 0.
constexpr Time nearestOf(Time a, Time b) { return floorOf(2 * a + b, 2 * b); }

} // namespace Model
