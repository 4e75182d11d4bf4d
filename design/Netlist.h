// A routed netlist as the netlist readers give it: one flat module, bit by bit.
//
// Names are without escapes. A vector's bits are pins, ports and nets of their own ("led[3]"). Hierarchy is
// gone: a cell in an instance is named by its path ("u1/u2/ff"). Only leaf cells stay.
#pragma once

#include "base/Index.h"
#include "base/Names.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Design {

enum class Direction : std::uint8_t { unknown, input, output, inout };

struct Netlist {
    struct Port {
        Base::Name name;
        Direction direction = Direction::unknown;
        std::uint32_t net = Base::none;
    };
    struct Cell {
        Base::Name name;
        Base::Name type;
        std::uint32_t firstPin = 0; // into pins
        std::uint32_t pinCount = 0;
    };
    struct Pin {
        Base::Name name; // of the pin alone: "D", "RDATA[3]"
        Direction direction = Direction::unknown;
        std::uint32_t net = Base::none; // none: not connected, or to a constant
    };

    Base::Names names;
    std::string top; // the module that was taken
    std::vector<Port> ports;
    std::vector<Cell> cells;
    std::vector<Pin> pins; // a cell's pins stand together
    // Pins that see the inverse of their net, ascending: their rising edges are the net's falling ones.
    std::vector<std::uint32_t> invertedPins;
    // Cells that stand for expressions of the netlist's text, ascending: without delays of their own, every
    // input reaches every output at once.
    std::vector<std::uint32_t> expressionCells;
    // One name each: of those that the outermost module has for it the shortest, and of these the first in
    // byte order. A net without a name is "$" and its number.
    std::vector<Base::Name> nets;
};

} // namespace Design
