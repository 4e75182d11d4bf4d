// The shape of a JSON netlist, as tables.
#include "readers/netlist/JsonSlots.h"

#include <array>

namespace Readers {

using Slot = JsonSlot;
using Kind = JsonKind;

const char* toString(JsonKind kind) {
    constexpr std::array names{"null",     "a boolean", "a number", "a fraction",
                               "a string", "an array",  "an object"};
    return names[static_cast<std::size_t>(kind)];
}

const char* expected(JsonSlot slot) {
    switch (slot) {
    case Slot::bits:
        return "an array of bits";
    case Slot::bit:
        return "the number of a net, or \"0\", \"1\", \"x\" or \"z\"";
    case Slot::topFlag:
    case Slot::boxFlag:
        return "a number, or a string of binary digits";
    case Slot::portDirection:
    case Slot::pinDirection:
        return "\"input\", \"output\" or \"inout\"";
    case Slot::offset:
    case Slot::upto:
        return "an integer";
    case Slot::cellType:
        return "a string";
    default:
        return "an object";
    }
}

bool takes(JsonSlot slot, JsonKind kind) {
    switch (slot) {
    case Slot::document:
    case Slot::modules:
    case Slot::module:
    case Slot::attributes:
    case Slot::ports:
    case Slot::port:
    case Slot::cells:
    case Slot::cell:
    case Slot::pinDirections:
    case Slot::connections:
    case Slot::nets:
    case Slot::net:
        return kind == Kind::object;
    default:
        return slot == Slot::bits && kind == Kind::array;
    }
}

JsonSlot member(JsonSlot slot, std::string_view key) {
    struct Row {
        JsonSlot slot;
        std::string_view key;
        JsonSlot member;
    };
    static constexpr std::array rows{
        Row{Slot::document, "modules", Slot::modules},
        Row{Slot::module, "attributes", Slot::attributes},
        Row{Slot::module, "ports", Slot::ports},
        Row{Slot::module, "cells", Slot::cells},
        Row{Slot::module, "netnames", Slot::nets},
        Row{Slot::attributes, "top", Slot::topFlag},
        Row{Slot::attributes, "blackbox", Slot::boxFlag},
        Row{Slot::attributes, "whitebox", Slot::boxFlag},
        Row{Slot::port, "direction", Slot::portDirection},
        Row{Slot::port, "bits", Slot::bits},
        Row{Slot::port, "offset", Slot::offset},
        Row{Slot::port, "upto", Slot::upto},
        Row{Slot::cell, "type", Slot::cellType},
        Row{Slot::cell, "port_directions", Slot::pinDirections},
        Row{Slot::cell, "connections", Slot::connections},
        Row{Slot::net, "bits", Slot::bits},
        Row{Slot::net, "offset", Slot::offset},
        Row{Slot::net, "upto", Slot::upto},
    };
    for (const Row& row : rows)
        if (row.slot == slot && row.key == key)
            return row.member;
    return Slot::ignored;
}

} // namespace Readers
