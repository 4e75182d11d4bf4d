// What the constraint files say, as plain data: the state after the last command.
//
// Commands that replace or undo one another have done so here; what depends on the design's delays (the
// master behind a generated clock, the start and end points behind a cell) has not been worked out yet. Times
// are decimals in ns.
#pragma once

#include "base/Decimal.h"
#include "base/Diagnostics.h"
#include "design/RoutedDesign.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Design {

// Where a command stands.
struct Origin {
    std::uint32_t file = 0; // into Constraints::files
    std::uint32_t line = 0;
};

// A value for each side of an analysis. Late serves setup launch, early hold launch.
struct EarlyLate {
    std::optional<Base::Decimal> early, late;
};
struct SetupHold {
    std::optional<Base::Decimal> setup, hold;
};

// What a query gives: something of the design, or a clock.
enum class ObjectKind : std::uint8_t { port, pin, cell, net, clock };
struct Object {
    ObjectKind kind = ObjectKind::pin;
    std::uint32_t index = 0; // into Design::pins (ports too), cells, nets, or Constraints::clocks

    auto operator<=>(const Object&) const = default;
};

struct GeneratedClock {
    std::uint32_t source = Base::none;   // the pin (or port) of -source
    std::optional<std::uint32_t> master; // -master_clock
    enum class Kind : std::uint8_t { divide, multiply, edges } kind = Kind::divide;
    int factor = 1;                         // of divide and multiply
    std::vector<int> edges;                 // three, counted from 1
    std::vector<Base::Decimal> edgeShifts;  // none or three
    std::optional<Base::Decimal> dutyCycle; // percent
    bool invert = false;
    Base::Decimal offset;
    Base::Decimal phase; // degrees
};

struct Clock {
    std::string name;
    Origin origin;
    bool removed = false; // replaced by a later one: nothing refers to it
    Base::Decimal period;
    int timeExponent = 0;               // its file's unit was 10^timeExponent ns
    Base::Decimal rise, fall;           // the waveform; a generated clock's is worked out from its master's
    std::vector<std::uint32_t> targets; // pins and ports; empty for a virtual clock
    std::optional<GeneratedClock> generated;
    std::optional<bool>
        propagated; // what was said last, set_propagated_clock or a network latency; nothing: neither
    EarlyLate sourceLatency, networkLatency; // the latter empty once set_propagated_clock came after it
    SetupHold uncertainty;
};

// Network latency, propagation and uncertainty that name a pin or a port instead of a clock.
struct PinUncertainty {
    std::uint32_t pin = Base::none;
    SetupHold value;
    Origin origin;
};
struct ClockPairUncertainty {
    std::uint32_t from = 0, to = 0; // clocks
    SetupHold value;
    Origin origin;
};

// One entry of a port, of set_input_delay or set_output_delay: the values against one edge of one clock.
struct PortDelay {
    std::uint32_t pin = Base::none;
    bool input = true;
    std::optional<std::uint32_t> clock; // none: without a reference
    bool clockFall = false;
    bool sourceLatencyIncluded = false;
    bool networkLatencyIncluded = false;
    std::optional<Base::Decimal> min, max;
    Origin origin;
};

struct ClockGroups {
    std::string name;
    std::vector<std::vector<std::uint32_t>> groups; // of clocks; a single one stands against all other clocks
    Origin origin;
};

// Objects of one option, and the transition that -rise_from and its like ask for. Clocks, ports, cells and
// pins for from and to; ports, pins, cells and nets for through.
struct Points {
    std::vector<Object> objects; // sorted, each once
    Transition transition = Transition::any;
};

struct Exception {
    enum class Kind : std::uint8_t {
        falsePath,
        multicycle,
        maxDelay,
        minDelay,
        pathGroup
    } kind = Kind::falsePath;
    bool setup = true; // the sides it was given for
    bool hold = true;
    bool flagged = false; // -setup or -hold was written; both: a multicycle's count is for each of them
    int multiplier = 1;
    std::optional<bool> start; // -start true, -end false
    Base::Decimal value;
    bool ignoreClockLatency = false;
    std::string group;              // of a path group
    std::optional<Points> from, to; // absent: everything
    std::vector<Points> through;
    Origin origin;
    std::string text; // the command's words, shortened, for reports
};

// One of which a list came out empty, so that it holds for nothing.
struct SkippedException {
    std::size_t position = 0; // how many of the others stand before it
    Exception exception;      // without its points
};

// Arcs to take out.
struct Disable {
    Object object;                       // cell, pin or port
    std::optional<std::string> from, to; // pin names of a cell
    Origin origin;
};

struct CaseValue {
    std::uint32_t pin = Base::none;
    bool value = false;
    Origin origin;
};

struct Constraints {
    std::vector<std::string> files;      // as opened; those that others source included
    std::vector<std::string> fileHashes; // SHA-256 of each
    std::vector<Clock> clocks;
    std::vector<PinUncertainty> pinUncertainties;
    std::vector<ClockPairUncertainty> pairUncertainties;
    std::vector<PortDelay> portDelays;
    std::vector<ClockGroups> clockGroups;
    std::vector<Exception> exceptions; // in the order of the commands
    std::vector<SkippedException> skippedExceptions;
    std::vector<Disable> disables;
    std::vector<CaseValue> caseValues;
    std::vector<Origin> pllClocks; // each derive_pll_clocks
    std::uint32_t unmatched = 0;   // queries and names that matched nothing

    Base::Place place(const Origin& origin) const { return {files[origin.file], origin.line, 0}; }
};

} // namespace Design
