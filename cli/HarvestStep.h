// One step of a path that is traced back from its end point.
#pragma once

#include "Harvest.h"

#include <memory>

namespace Cli {

// The pole that the path is traced back to so far, the classes it has there, and the delay from there to the
// end. Steps share what is behind them.
struct Harvest::Step {
    Pelko::Pole* pole = nullptr;
    std::uint64_t classes = 0;
    Time behind = 0;
    Pelko::Edge* edge = nullptr; // to the step behind
    std::shared_ptr<const Step> next;
};

} // namespace Cli
