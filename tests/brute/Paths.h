// Every data path of a design, pin by pin, with its launches and captures.
//
// A path starts at a register's clock pin, at an input port or at a clock's own source pin, and ends at a
// checked pin or an output port. It never enters the target of a clock, and passes no pin twice. The list is
// complete: its length is the cost.
#pragma once

#include "Clocks.h"

namespace Brute {

struct DataPath {
    enum class Start { clockPin, port, clockSource };
    Start start = Start::port;
    Edge startEdge = Edge::rise; // of a register
    std::vector<int> pins;       // start to end
    std::vector<int> nets; // one less than pins: the net from this pin to the next, or none through a cell
    Interval delay;
};

std::vector<DataPath> listPaths(const Design& design, const Clocks& clocks, const Options& options);

// What launches a path. Sides that a port delay does not set have no value. A port has no clock if it has no
// delay, or a delay without a clock.
struct Launch {
    int clock = none; // into Clocks::live
    bool fall = false;
    std::optional<int> early, late; // after the clock edge
    Interval latency;               // the clock's part of it
    bool unclocked = false;         // a register that no clock reaches: its paths are not timed
};
std::vector<Launch> launches(const Design& design, const Clocks& clocks, const DataPath& path);

// What a path must meet: after (setup) or before (hold) the capture edge. A side without a value is not
// checked.
struct Capture {
    int clock = none;
    bool fall = false;
    Interval latency;
    std::optional<int> setup, hold; // for an output port: its maximum delay, and minus its minimum
    bool unclocked = false;
};
std::vector<Capture> captures(const Design& design, const Clocks& clocks, const DataPath& path,
                              const Options& options);

} // namespace Brute
