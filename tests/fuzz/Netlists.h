// What the fuzzers expect of a netlist that was read: its references are consistent, and a design can be made
// from it.
#pragma once

#include "readers/sdf/Annotate.h"

#include <stdexcept>

namespace Fuzz {

// A property does not hold. The exception is never caught: the input is a finding.
class Broken : public std::logic_error {
public:
    using std::logic_error::logic_error;
};

inline void require(bool holds, const char* what) {
    if (!holds)
        throw Broken(what);
}

inline void checkNetlist(const Design::Netlist& netlist) {
    const auto isNet = [&](Design::Netlist::NetId net) {
        return net == Base::none || net.number() < netlist.nets.size();
    };
    for (const auto& port : netlist.ports)
        require(isNet(port.net), "a port's net is one");
    std::uint64_t pins = 0;
    for (const auto& cell : netlist.cells) {
        require(cell.firstPin.number() == pins, "cells' pins stand behind each other");
        pins += cell.pinCount;
    }
    require(pins == netlist.pins.size(), "every pin is of a cell");
    for (const auto& pin : netlist.pins)
        require(isNet(pin.net), "a pin's net is one");
}

// Makes a design of the netlist's connections, without any delay.
inline void makeDesign(const Design::Netlist& netlist) {
    Design::RoutedDesign design;
    Base::Diagnostics diagnostics;
    Readers::Annotator annotator(design, &netlist, {}, "fuzz.sdf", diagnostics);
    annotator.finish();
    require(design.pins.size() <= netlist.pins.size() + netlist.ports.size(), "no pins come from nowhere");
}

} // namespace Fuzz
