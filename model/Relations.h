// Which edges of two clocks belong together: the smallest capture after launch for setup, the largest capture
// not after launch for hold, over the common period.
#pragma once

#include "model/Clocks.h"

namespace Model {

// A common period of more edges of the faster clock is cut off there.
inline constexpr Time edgeLimit = 1000;

struct Relation {
    Time setup = 0;       // capture - launch, above 0
    Time hold = 0;        // capture - launch, not above 0
    Time setupLaunch = 0; // a launch edge at which each is found
    Time holdLaunch = 0;
    bool cutOff = false; // the common period is too long: only its first edges were looked at
};

// Both clocks have a period.
Relation relate(const Clock& launch, bool launchRise, const Clock& capture, bool captureRise);

} // namespace Model
