// Where clocks come from when nothing says so, and which clock pins none reaches when something does.
#pragma once

#include "../readers/model/TimingModel.h"

namespace Cli {

// For a run without constraints: a clock without a period at every root behind a clock pin.
Readers::Sdc::Constraints clocksAtRoots(const Readers::Design& design, Readers::Diagnostics& diagnostics);

// Warns of the clock pins that no clock reaches, by the roots behind them.
void warnOfUnclocked(const Readers::Design& design, const Readers::Model::Network& network,
                     const Readers::Model::TimingModel& model, Readers::Diagnostics& diagnostics);

} // namespace Cli
