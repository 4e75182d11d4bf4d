// The first half of the generator: a netlist with delays, and what is known of its clock networks.
#pragma once

#include "Generate.h"
#include "Random.h"

namespace Brute {

struct Divider {
    int clockPin = none; // of the register
    int output = none;   // its output, or that of the buffer behind it: the source of the clock
};

struct Skeleton {
    Design design;
    std::vector<int> clockPorts;
    std::vector<int>
        clockBuffers; // output pins of buffers between a clock port and everything else on its network
    std::vector<Divider> dividers;     // in the order of the flow
    std::vector<int> registers, gates; // cells; gates of the data only
    std::vector<int> inputs, outputs;  // data ports
};

Skeleton generateNetlist(Random& random, const Shape& shape);

} // namespace Brute
