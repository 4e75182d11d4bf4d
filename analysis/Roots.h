// Where clocks come from when nothing says so, and which clock pins none reaches when something does.
#pragma once

#include "model/TimingModel.h"

namespace Analysis {

// For a run without constraints: a clock without a period at every root behind a clock pin.
Design::Constraints clocksAtRoots(const Design::RoutedDesign& design, Base::Diagnostics& diagnostics);

// Warns of the clock pins that no clock reaches, by the roots behind them.
void warnOfUnclocked(const Design::RoutedDesign& design, const Model::Network& network,
                     const Model::TimingModel& model, Base::Diagnostics& diagnostics);

} // namespace Analysis
