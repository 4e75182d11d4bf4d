// The constraints as the files state them, as plain data: the state after the last command.
//
// Commands that replace or undo earlier ones have taken effect. What depends on the design's delays (the
// master of a generated clock, the start and end points that a cell stands for) is not worked out here. Times
// are decimals in ns.
#pragma once

#include "base/Decimal.h"
#include "base/Diagnostics.h"
#include "base/Side.h"
#include "design/RoutedDesign.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Design {

// The place of a command.
struct Origin {
    FileId file = FileId(0U);
    std::uint32_t line = 0;
};

// Early and late value of a latency. The launch of a setup check uses the late one, that of a hold check the
// early one.
struct EarlyLate {
    std::optional<Base::Decimal> early, late;
};
using SetupHold = Base::PerSide<std::optional<Base::Decimal>>;

// What a query returns: a part of the design, or a clock.
enum class ObjectKind : std::uint8_t { port, pin, cell, net, clock };
struct Object {
    ObjectKind kind = ObjectKind::pin;
    std::uint32_t index = 0; // into the table of the kind; the functions below return it with its type

    Object() = default;
    Object(ObjectKind theKind, std::uint32_t theIndex) : kind(theKind), index(theIndex) {}
    Object(ObjectKind portOrPin, PinId pin) : kind(portOrPin), index(pin.number()) {}
    explicit Object(CellId cell) : kind(ObjectKind::cell), index(cell.number()) {}
    explicit Object(NetId net) : kind(ObjectKind::net), index(net.number()) {}
    explicit Object(ClockId clock) : kind(ObjectKind::clock), index(clock.number()) {}

    PinId pin() const { return PinId(index); } // also for a port
    CellId cell() const { return CellId(index); }
    NetId net() const { return NetId(index); }
    ClockId clock() const { return ClockId(index); }

    auto operator<=>(const Object&) const = default;
};

struct GeneratedClock {
    PinId source = Base::none;   // the pin (or port) of -source
    ClockId master = Base::none; // -master_clock
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
    bool removed = false; // replaced by a later clock; nothing refers to it
    Base::Decimal period;
    int timeExponent = 0;       // its file's unit was 10^timeExponent ns
    Base::Decimal rise, fall;   // the waveform; unused for a generated clock
    std::vector<PinId> targets; // pins and ports; empty for a virtual clock
    std::optional<GeneratedClock> generated;
    // True after set_propagated_clock, false after a network latency; the last one counts. Empty without
    // either.
    std::optional<bool> propagated;
    EarlyLate sourceLatency;
    EarlyLate networkLatency; // empty after set_propagated_clock
    SetupHold uncertainty;
};

using ClockTable = Base::IndexVector<ClockId, Clock>;

// An uncertainty that was given for a pin or a port instead of a clock.
struct PinUncertainty {
    PinId pin = Base::none;
    SetupHold value;
    Origin origin;
};
struct ClockPairUncertainty {
    ClockId from = Base::none, to = Base::none;
    SetupHold value;
    Origin origin;
};

// One entry of set_input_delay or set_output_delay: the values of a port against one edge of one clock.
struct PortDelay {
    PinId pin = Base::none;
    bool input = true;
    ClockId clock = Base::none; // none: without a reference
    bool clockFall = false;
    bool sourceLatencyIncluded = false;
    bool networkLatencyIncluded = false;
    std::optional<Base::Decimal> min, max;
    Origin origin;
};

struct ClockGroups {
    std::string name;
    std::vector<std::vector<ClockId>> groups; // a single group is separate from all other clocks
    Origin origin;
};

// The objects of one option such as -from, and the transition that -rise_from or -fall_from asks for. Objects
// are clocks, ports, cells and pins for from and to; ports, pins, cells and nets for through.
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
    bool setup = true; // whether it applies to setup
    bool hold = true;  // and to hold
    // Whether -setup or -hold was written. With both, the count of a multicycle applies to each of them.
    bool flagged = false;
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

// An exception that applies to nothing, since one of its lists was empty.
struct SkippedException {
    std::size_t position = 0; // how many of Constraints::exceptions come before it
    Exception exception;      // without its points
};

// Arcs that are disabled.
struct Disable {
    Object object;                       // cell, pin or port
    std::optional<std::string> from, to; // pin names of a cell
    Origin origin;
};

struct CaseValue {
    PinId pin = Base::none;
    bool value = false;
    Origin origin;
};

struct Constraints {
    Base::IndexVector<FileId, std::string> files;      // as opened, including those that other files source
    Base::IndexVector<FileId, std::string> fileHashes; // SHA-256 of each
    ClockTable clocks;
    std::vector<PinUncertainty> pinUncertainties;
    std::vector<ClockPairUncertainty> pairUncertainties;
    std::vector<PortDelay> portDelays;
    Base::IndexVector<ClockGroupsId, ClockGroups> clockGroups;
    Base::IndexVector<ExceptionId, Exception> exceptions; // in the order of the commands
    std::vector<SkippedException> skippedExceptions;
    std::vector<Disable> disables;
    std::vector<CaseValue> caseValues;
    std::vector<Origin> pllClocks; // one for each derive_pll_clocks
    std::uint32_t unmatched = 0;   // queries and names that matched nothing

    Base::Place place(const Origin& origin) const { return {files[origin.file], origin.line, 0}; }
};

} // namespace Design
