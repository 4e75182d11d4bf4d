// A routed netlist as the netlist readers return it: one flat module, bit by bit.
//
// Names have no escapes. Each bit of a vector is a pin, port or net of its own ("led[3]"). There is no
// hierarchy: only leaf cells are left, and a cell in an instance is named by its path ("u1/u2/ff").
#pragma once

#include "base/Index.h"
#include "base/Names.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Design {

enum class Direction : std::uint8_t { unknown, input, output, inout };

struct Netlist {
    using CellId = Base::Index<struct NetlistCellTag>; // into cells
    using PinId = Base::Index<struct NetlistPinTag>;   // into pins
    using NetId = Base::Index<struct NetlistNetTag>;   // into nets

    struct Port {
        Base::Name name;
        Direction direction = Direction::unknown;
        NetId net = Base::none;
    };
    struct Cell {
        Base::Name name;
        Base::Name type;
        PinId firstPin = PinId(0U);
        std::uint32_t pinCount = 0; // from firstPin on
    };
    struct Pin {
        Base::Name name; // without its cell: "D", "RDATA[3]"
        Direction direction = Direction::unknown;
        NetId net = Base::none; // none if it is not connected, or connected to a constant
    };

    Base::Names names;
    std::string top; // the module that was taken
    std::vector<Port> ports;
    Base::IndexVector<CellId, Cell> cells;
    Base::IndexVector<PinId, Pin> pins; // those of a cell are adjacent
    // Pins that have the inverse value of their net, ascending. A falling edge of the net is a rising edge
    // there.
    std::vector<PinId> invertedPins;
    // Cells that represent expressions of the netlist's text, ascending. Every input reaches every output;
    // the delay is zero unless the SDF has one.
    std::vector<CellId> expressionCells;
    // The name of each net: the shortest of those that the outermost module has for it, and of several such
    // names the first in byte order. A net without a name is called "$" and its number.
    Base::IndexVector<NetId, Base::Name> nets;
};

} // namespace Design
