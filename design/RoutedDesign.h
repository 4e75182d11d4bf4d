// The routed design, between the readers and the timing graph: pins, cells, nets, and every delay and check
// of them, in the engine's integer units.
//
// A port is a pin without a cell. The order of cells, pins and nets is that of the netlist, or of the SDF if
// there is no netlist, so that results depend on nothing else.
#pragma once

#include "base/Diagnostics.h"
#include "base/Groups.h"
#include "base/LargeTables.h"
#include "base/NameTable.h"
#include "base/Names.h"
#include "design/Ids.h"
#include "design/Netlist.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Design {

// An edge of a signal, or either edge.
enum class Transition : std::uint8_t { any, rise, fall };

// Early and late value of a delay, in units.
struct Interval {
    std::int32_t early = 0;
    std::int32_t late = 0;

    bool operator==(const Interval&) const = default;
};

struct Pin {
    Base::Name name;          // without its cell; or of the port
    CellId cell = Base::none; // none for a port
    NetId net = Base::none;
    Direction direction = Direction::unknown; // of a port as seen from outside: an input port drives its net
    bool standsForPort = false;               // the pin of a pad, in a design without a netlist
};
struct Cell {
    Base::Name name;
    Base::Name type;
};
struct Net {
    Base::Name name;
};

// A delay from one pin to another, through a cell or along a net.
struct Arc {
    PinId from = Base::none;
    PinId to = Base::none;
    Transition fromEdge = Transition::any; // the edge of `from` that sets it off
    bool wire : 1 = false;                 // along a net
    bool disabled : 1 = false;             // by a constraint
    bool bare : 1 = false;                 // no input states its delay, which is zero
    bool rises : 1 = true;                 // the file has a delay for the rising edge of `to`
    bool falls : 1 = true;                 // likewise for the falling edge
    bool reset : 1 = false;                // of a set or a reset (after classify())
    Interval delay = {};
};
// Setup and hold (recovery and removal alike) of a data pin against a clock pin.
struct Check {
    PinId data = Base::none;
    PinId clock = Base::none;
    Transition clockEdge = Transition::any;
    bool disabled = false;
    bool asynchronous = false;              // recovery and removal: the data pin is a set or a reset
    std::optional<std::int32_t> setup = {}; // the worst of both edges of the data
    std::optional<std::int32_t> hold = {};
};
// A pulse check: the least period of a clock pin, or the least width of a pulse on it.
struct PulseCheck {
    PinId pin = Base::none;
    bool period = false;               // else width
    Transition edge = Transition::any; // with which the pulse begins
    std::int32_t required = 0;
};

class RoutedDesign {
public:
    Base::Names names;
    std::string name;
    char divider = '/';

    Base::IndexVector<CellId, Cell> cells;
    Base::IndexVector<PinId, Pin> pins;
    Base::IndexVector<NetId, Net> nets;
    Base::IndexVector<ArcId, Arc> arcs;
    Base::IndexVector<CheckId, Check> checks;
    Base::IndexVector<PulseCheckId, PulseCheck> pulseChecks;

    // --- Building ---

    void reserve(std::size_t pins);
    CellId addCell(Base::Name name, Base::Name type);
    // Each returns the known item of that name, or a new one. A pin without a cell is a port.
    PinId addPin(CellId cell, Base::Name name);
    NetId addNet(Base::Name name);
    // The cell is printed with the new name, and found by both names.
    void rename(CellId cell, Base::Name newName);
    void renamePin(PinId pin, Base::Name newName);
    // Builds the tables below. After that, only delays and checks may be added.
    void index();

    // --- Looking up (by canonical name, without escapes) ---

    // Each returns none if there is no such item.
    CellId findCell(std::string_view cell) const;
    PinId findPin(CellId cell, std::string_view pin) const;
    PinId findPort(std::string_view port) const;
    NetId findNet(std::string_view net) const;

    std::span<const PinId> pinsOfCell(CellId cell) const; // these three: after index()
    std::span<const PinId> pinsOfNet(NetId net) const;
    std::span<const PinId> ports() const { return ports_; }

    // Whether it is a port of the top module or, without a netlist, the pin of a pad that stands for a port.
    bool isPort(PinId pin) const { return isPortOfTop(pin) || pins[pin].standsForPort; }
    bool isPortOfTop(PinId pin) const { return pins[pin].cell == Base::none; }
    // Returns "instance/pin", or the port's name.
    std::string pinName(PinId pin) const;
    std::string_view cellName(CellId cell) const { return names[cells[cell].name]; }
    std::string_view netName(NetId net) const { return names[nets[net].name]; }

    // --- What the delays show about a pin (after classify()) ---

    void classify();
    // Whether it has a check, or a clock-to-output arc.
    bool isRegister(CellId cell) const { return registers_[cell]; }
    bool isClockPin(PinId pin) const { return (roles_[pin] & clockPin) != 0; } // a check refers to it
    bool isDataPin(PinId pin) const { return (roles_[pin] & dataPin) != 0; }   // a check ends here
    bool isRegisterOutput(PinId pin) const { return (roles_[pin] & registerOutput) != 0; }
    // From a clock pin to an output, so that the clock ends there and data begins.
    bool isClockToOutput(const Arc& arc) const { return !arc.wire && isClockPin(arc.from); }
    // From a set or reset pin to an output of the register. Paths do not pass such an arc.
    bool isReset(const Arc& arc) const { return arc.reset; }

private:
    enum Role : std::uint8_t { clockPin = 1, dataPin = 2, registerOutput = 4 };

    Base::NameTable<CellId> cellByName_;
    Base::NameTable<NetId> netByName_;
    Base::HashMap<std::uint64_t, PinId> pinByName_; // cell and name
    Base::Groups<CellId, PinId> pinsOfCells_;
    Base::Groups<NetId, PinId> pinsOfNets_;
    std::vector<PinId> ports_;
    Base::IndexVector<CellId, bool> registers_;
    Base::IndexVector<PinId, std::uint8_t> roles_;
};

} // namespace Design
