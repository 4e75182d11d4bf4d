// Random small designs with random constraints, for comparing two ways of timing them.
//
// The same seed and shape make the same design on every machine. Gates have no cycles, except in the share of
// designs that the shape asks for. A design has at most `maximumPaths` data paths, and what constraints leave
// open is avoided (see the list in Generate.cpp), so that every slack has only one correct value.
#pragma once

#include "Design.h"

#include <array>
#include <cstdint>

namespace Brute {

enum class ExceptionMode {
    without,
    single,     // at most one exception names a path (or one pair: -setup and -hold over the same objects)
    overlapping // exceptions name the same paths in every way
};

struct Shape {
    int minimumRegisters = 2, maximumRegisters = 12;
    int minimumGates = 0, maximumGates = 25;
    int maximumClocks = 4;
    int minimumExceptions = 1, maximumExceptions = 12;
    // The relative frequency of each kind: false path, multicycle, maximum delay, minimum delay.
    std::array<int, 4> kinds{3, 4, 2, 1};
    int throughPercent = 35;   // share of the exceptions
    int unclockedPercent = 15; // share of the port delays
    bool throughEnds = true;   // -through names start and end points of paths too
    int maximumPaths = 2000;
    ExceptionMode exceptions = ExceptionMode::overlapping;
    bool pads = true;         // cells between ports and the rest, without written delays
    bool bareWires = true;    // connections without written delays
    bool openOutputs = false; // more outputs without fan-out; netlists leave out some of them
    int loopPercent = 0;      // share of the designs with combinational loops, in data and clock networks
};

Design generate(std::uint64_t seed, const Shape& shape);

} // namespace Brute
