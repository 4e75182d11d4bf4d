// Random small designs with random constraints, for comparing two ways of timing them.
//
// The same seed and shape give the same design on every machine. Gates have no cycles, but for a share of
// designs that is asked for; a design has at most `maximumPaths` data paths, and what constraints leave open
// is avoided (see the list in Generate.cpp), so that every slack is beyond dispute.
#pragma once

#include "Design.h"

#include <array>
#include <cstdint>

namespace Brute {

enum class ExceptionMode {
    without,
    single,     // at most one exception names a path (or one pair: -setup and -hold over the same objects)
    overlapping // they name the same paths in every way
};

struct Shape {
    int minimumRegisters = 2, maximumRegisters = 12;
    int minimumGates = 0, maximumGates = 25;
    int maximumClocks = 4;
    int minimumExceptions = 1, maximumExceptions = 12;
    // How often each kind is drawn: false path, multicycle, maximum and minimum delay.
    std::array<int, 4> kinds{3, 4, 2, 1};
    int throughPercent = 35;   // of the exceptions
    int unclockedPercent = 15; // of the port delays
    bool throughEnds = true;   // -through names what paths begin and end with too
    int maximumPaths = 2000;
    ExceptionMode exceptions = ExceptionMode::overlapping;
    bool pads = true;         // cells between ports and the rest, of which no delay is written
    bool bareWires = true;    // connections of which no delay is written
    bool openOutputs = false; // more outputs that lead nowhere; some of them are not in the netlist either
    int loopPercent = 0;      // of the designs: with combinational loops, in data and clock networks
};

Design generate(std::uint64_t seed, const Shape& shape);

} // namespace Brute
