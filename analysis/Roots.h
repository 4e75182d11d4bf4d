// The clocks of a design without constraints, and the clock pins that no clock reaches in a design with some.
#pragma once

#include "model/Ids.h"
#include "model/TimingModel.h"

namespace Analysis {

// Returns constraints with a clock without a period at every root behind a clock pin. Notes how many there
// are.
Design::Constraints clocksAtRoots(const Design::RoutedDesign& design, Base::Diagnostics& diagnostics);

// Warns of the clock pins that no clock reaches, by the roots behind them: one warning for each of the first
// roots, and one for the number of the others.
void warnOfUnclocked(const Design::RoutedDesign& design, const Model::Network& network,
                     const Model::TimingModel& model, Base::Diagnostics& diagnostics);

} // namespace Analysis
