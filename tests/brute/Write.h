// A design as the files that a timing command reads.
#pragma once

#include "Design.h"

#include <string>

namespace Brute {

std::string writeSdf(const Design& design);     // picoseconds, divider "/"
std::string writeSdc(const Design& design);     // nanoseconds
std::string writeJson(const Design& design);    // a flat netlist with port directions and connections
std::string writeVerilog(const Design& design); // structural

// A time in picoseconds as nanoseconds: 1250 is "1.250".
std::string nanoseconds(long picoseconds);

} // namespace Brute
