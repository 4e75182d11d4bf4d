// The routed design, between the readers and the timing graph: pins, cells, nets, and every delay and check
// of them, in the engine's integer units.
//
// A port is a pin without a cell. Cells, pins and nets are known by their index here; their order is that of
// the netlist, or of the SDF where there is none, so that results do not depend on anything else.
#pragma once

#include "base/Diagnostics.h"
#include "base/LargeTables.h"
#include "base/NameTable.h"
#include "base/Names.h"
#include "design/Netlist.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Design {

// An edge of a signal, where it matters.
enum class Transition : std::uint8_t { any, rise, fall };

// Early and late value of a delay, in units.
struct Interval {
    std::int32_t early = 0;
    std::int32_t late = 0;

    bool operator==(const Interval&) const = default;
};

struct Pin {
    Base::Name name;                 // of the pin alone, or of the port
    std::uint32_t cell = Base::none; // none: a port
    std::uint32_t net = Base::none;
    Direction direction = Direction::unknown; // of a port as seen from outside: an input port drives its net
    bool standsForPort = false;               // a pad's pin, in a design without a netlist
};
struct Cell {
    Base::Name name;
    Base::Name type;
};
struct Net {
    Base::Name name;
};

// A delay from a pin to another one: through a cell, or along a net.
struct Arc {
    std::uint32_t from = Base::none;
    std::uint32_t to = Base::none;
    Transition fromEdge = Transition::any; // the edge of `from` that sets it off
    bool wire : 1 = false;                 // along a net
    bool disabled : 1 = false;             // taken out by a constraint
    bool bare : 1 = false;                 // nothing gave it a delay: zero
    bool rises : 1 = true;                 // the file has a delay for the rising edge of `to`
    bool falls : 1 = true;                 // and for the falling one
    bool reset : 1 = false;                // of a set or a reset (after classify())
    Interval delay = {};
};
// Setup and hold (recovery and removal alike) of a data pin against a clock pin.
struct Check {
    std::uint32_t data = Base::none;
    std::uint32_t clock = Base::none;
    Transition clockEdge = Transition::any;
    bool disabled = false;
    bool asynchronous = false;              // recovery and removal: the data pin is a set or a reset
    std::optional<std::int32_t> setup = {}; // the worst over the data's edges
    std::optional<std::int32_t> hold = {};
};
// A pulse check: the least period of a clock pin, or the least width of a pulse on it.
struct PulseCheck {
    std::uint32_t pin = Base::none;
    bool period = false;               // else width
    Transition edge = Transition::any; // with which the pulse begins
    std::int32_t required = 0;
};

class RoutedDesign {
public:
    Base::Names names;
    std::string name;
    char divider = '/';

    std::vector<Cell> cells;
    std::vector<Pin> pins;
    std::vector<Net> nets;
    std::vector<Arc> arcs;
    std::vector<Check> checks;
    std::vector<PulseCheck> pulseChecks;

    // --- Building -------------------------------------------------------------------------------------------------

    void reserve(std::size_t pins);
    std::uint32_t addCell(Base::Name name, Base::Name type);
    std::uint32_t addPin(std::uint32_t cell,
                         Base::Name name); // cell none: a port. The known one, or a new one
    std::uint32_t addNet(Base::Name name);
    // The cell is shown by this name, and found by it and by the old one.
    void rename(std::uint32_t cell, Base::Name newName);
    void renamePin(std::uint32_t pin, Base::Name newName);
    // Builds the tables below; after that nothing may be added but delays and checks.
    void index();

    // --- Looking up (by canonical name, without escapes) ----------------------------------------------------------

    std::uint32_t findCell(std::string_view cell) const; // none where there is none
    std::uint32_t findPin(std::uint32_t cell, std::string_view pin) const;
    std::uint32_t findPort(std::string_view port) const;
    std::uint32_t findNet(std::string_view net) const;

    std::span<const std::uint32_t> pinsOfCell(std::uint32_t cell) const; // after index()
    std::span<const std::uint32_t> pinsOfNet(std::uint32_t net) const;
    std::span<const std::uint32_t> ports() const { return ports_; }

    // A port of the top module, or, without a netlist, the pin of a pad that stands for one.
    bool isPort(std::uint32_t pin) const { return isPortOfTop(pin) || pins[pin].standsForPort; }
    bool isPortOfTop(std::uint32_t pin) const { return pins[pin].cell == Base::none; }
    // "instance/pin", or the port's name.
    std::string pinName(std::uint32_t pin) const;
    std::string_view cellName(std::uint32_t cell) const { return names[cells[cell].name]; }
    std::string_view netName(std::uint32_t net) const { return names[nets[net].name]; }

    // --- What the delays say of a pin (after classify()) ----------------------------------------------------------

    void classify();
    bool isRegister(std::uint32_t cell) const {
        return registers_[cell];
    } // has a check, or a clock-to-output arc
    bool isClockPin(std::uint32_t pin) const { return (roles_[pin] & clockPin) != 0; } // checks refer to it
    bool isDataPin(std::uint32_t pin) const { return (roles_[pin] & dataPin) != 0; }   // a check ends here
    bool isRegisterOutput(std::uint32_t pin) const { return (roles_[pin] & registerOutput) != 0; }
    // From a clock pin to an output: where a clock ends and data begins.
    bool isClockToOutput(const Arc& arc) const { return !arc.wire && isClockPin(arc.from); }
    // From a set or reset pin to an output of the register: not timed through.
    bool isReset(const Arc& arc) const { return arc.reset; }

private:
    enum Role : std::uint8_t { clockPin = 1, dataPin = 2, registerOutput = 4 };

    Base::NameTable cellByName_, netByName_;
    Base::HashMap<std::uint64_t, std::uint32_t> pinByName_; // cell and name
    std::vector<std::uint32_t> cellPins_, cellFirst_, netPins_, netFirst_, ports_;
    std::vector<bool> registers_;
    std::vector<std::uint8_t> roles_;
};

} // namespace Design
