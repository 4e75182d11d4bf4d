// A routed design and its constraints as plain structs: the random generator makes them, the writers print
// them and the analyser reads them.
//
// Everything is known by its index, `none` is no index, every time is an integer in picoseconds. No part of
// the system under test is used here, so that its mistakes cannot hide themselves.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace Brute {

inline constexpr int none = -1;

enum class Edge { any, rise, fall };

struct Triple {
    int minimum = 0, typical = 0, maximum = 0;
};
using Values = std::vector<Triple>; // one for both edges, or the rising and the falling one

// --- The netlist and its delays ---

enum class Direction { input, output, inout };

// A pin of a cell, or a port if it has no cell. A port's direction is as seen from outside.
struct Pin {
    std::string name;
    int cell = none;
    Direction direction = Direction::input;
    int net = none;
    bool omitted = false; // an open output that netlists leave out: only the delays have it
};
struct Cell {
    std::string name, type;
    std::vector<int> pins;
};
struct Net {
    std::string name;
    int driver = none;
    std::vector<int> sinks;
};
struct Arc {
    enum class Kind { wire, gate, clockToOutput, reset };
    Kind kind = Kind::wire;
    int from = none, to = none;
    Edge edge = Edge::any; // of `from`, if it is written
    Values values;         // empty: the arc exists but is not written, and takes no time
};
struct Check {
    int data = none, clock = none;
    Edge dataEdge = Edge::any, clockEdge = Edge::rise;
    bool asynchronous = false; // recovery and removal
    std::optional<Triple> setup, hold;
};

// --- Constraints ---

struct Generated {
    enum class Kind { divide, multiply, edges };
    Kind kind = Kind::divide;
    int source = none;            // pin
    int master = none;            // a clock, if it is written
    int factor = 1;               // of divide and multiply
    std::array<int, 3> edges{};   // counted from 1
    std::optional<int> edgeShift; // the same for all three
    std::optional<int> dutyCycle; // in percent
    bool invert = false;
    int offset = 0;
    int phase = 0; // in degrees of its own period
};
struct Clock {
    std::string name;
    int period = 0, rise = 0, fall = 0; // not used for a generated clock
    bool waveform = false;              // whether -waveform is written
    std::vector<int> targets;           // empty for a virtual clock
    bool add = false;
    std::optional<Generated> generated;
};
// set_propagated_clock and set_clock_latency, in the order of the commands.
struct Latency {
    enum class Kind { propagated, network, source };
    Kind kind = Kind::source;
    int clock = none;
    std::optional<bool> late; // no value: both
    int value = 0;
};
struct Uncertainty {
    int from = none, to = none; // both, or only `to` for the simple form
    std::optional<bool> setup;  // no value: both
    int value = 0;
};
struct ClockGroups {
    std::string option;
    std::vector<std::vector<int>> groups;
};
struct PortDelay {
    bool input = true;
    int port = none;
    int clock = none;
    bool fall = false;
    std::optional<bool> maximum; // no value: both
    bool add = false;
    bool sourceIncluded = false, networkIncluded = false;
    int value = 0;
    bool early = false; // written right after the command that makes its clock
};
struct Object {
    enum class Kind { clock, port, pin, cell, net };
    Kind kind = Kind::pin;
    int index = none; // index in the list for the kind; ports are pins too

    auto operator<=>(const Object&) const = default;
};
struct Exception {
    enum class Kind { falsePath, multicycle, maximumDelay, minimumDelay };
    Kind kind = Kind::falsePath;
    std::optional<bool> setup; // -setup: true, -hold: false, neither: no value
    std::optional<bool> start; // -start: true, -end: false, neither: no value
    int value = 0;             // the count of a multicycle, the time of a delay
    bool ignoreLatency = false;
    std::vector<Object> from, to;
    std::vector<std::vector<Object>> through;
};
struct Disable {
    Object object;
    std::string from, to; // pins of a cell
};
struct CaseValue {
    int port = none;
    bool value = false;
};

struct Design {
    std::string name = "top";
    std::vector<Pin> pins;
    std::vector<Cell> cells;
    std::vector<Net> nets;
    std::vector<Arc> arcs;
    std::vector<Check> checks;

    std::vector<Clock> clocks;
    std::vector<Latency> latencies;
    std::vector<Uncertainty> uncertainties;
    std::vector<ClockGroups> clockGroups;
    std::vector<PortDelay> portDelays;
    std::vector<Exception> exceptions;
    std::vector<Disable> disables;
    std::vector<CaseValue> caseValues;

    bool isPort(int pin) const { return pins[static_cast<std::size_t>(pin)].cell == none; }
    std::string pinName(int pin) const {
        const Pin& p = pins[static_cast<std::size_t>(pin)];
        return p.cell == none ? p.name : cells[static_cast<std::size_t>(p.cell)].name + "/" + p.name;
    }
};

} // namespace Brute
