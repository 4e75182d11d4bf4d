// Times as text. All arithmetic is on integers, so that what is printed is what was computed.
//
// REQUIRES of every function: scale is from -15 (femtoseconds) to -12 (picoseconds).
#pragma once

#include "report/Report.h"

#include <string>

namespace Report {

// The exact value in ns, in its shortest form: "3.537", "10", "-0.12". A valid JSON number.
std::string exactNs(Time value, int scale);

// The value as printed with three digits: in whole ps, halves away from zero.
Time shownPs(Time value, int scale);

// The same for a slack. A negative slack stays negative.
Time shownSlackPs(Time slack, int scale);

// Whole ps in ns with three digits: "3.537", "10.000", "-0.001", never "-0.000".
std::string threeDigits(Time ps);

// The frequency in MHz of a period (positive, below 10^18 units), six significant digits without zeros at the
// end: "134.953".
std::string fmaxMhz(Time period, int scale);

} // namespace Report
