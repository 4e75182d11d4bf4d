// Connects the annotated design: directions that the netlist does not state, wires, nets and ports.
#include "readers/sdf/Annotate.h"
#include "readers/sdf/Uses.h"

#include <algorithm>
#include <unordered_map>

namespace Readers {

void Annotator::finish() {
    design_.index();
    inferDirections();
    applyDevices();
    if (hasNetlist_) {
        countExtraPins();
        joinPads();
        joinSilentCells();
        makeWires();
        applyExpressions();
    } else {
        makeNetsOfWires();
        findPortsOfPads();
    }
    design_.index();
    design_.classify();
    countIdleChecks();
    reportCounts();
}

Annotator::Uses Annotator::usesOfPins() const {
    Uses uses(design_.pins.size());
    for (const Design::Arc& arc : design_.arcs) {
        uses[arc.from] |= arc.wire ? wireFrom : arcFrom;
        uses[arc.to] |= arc.wire ? wireTo : arcTo;
    }
    for (const auto& [wire, delay] : wires_) {
        uses[wire.from] |= wireFrom;
        uses[wire.to] |= wireTo;
    }
    for (const Design::Check& check : design_.checks) {
        uses[check.data] |= checked;
        uses[check.clock] |= checking;
    }
    return uses;
}

// --- Devices ---

void Annotator::applyDevices() {
    if (devices_.empty())
        return;
    std::unordered_map<Design::CellId, std::vector<Key>> arcsOfCells;
    for (const DeviceDelay& device : devices_)
        arcsOfCells.try_emplace(device.cell);
    for (const Design::Arc& arc : design_.arcs)
        if (const auto found = arcsOfCells.find(design_.pins[arc.from].cell);
            !arc.wire && found != arcsOfCells.end())
            found->second.push_back({arc.from, arc.to, arc.fromEdge});
    const DrivenNets driven = drivenNets(usesOfPins());
    for (const DeviceDelay& device : devices_) {
        const std::vector<Key>& arcs = arcsOfCells.at(device.cell);
        if (arcs.empty())
            directPinsOf(device, driven);
        applyDevice(device, arcs);
    }
}

// Pins without a direction: the one that the delay names is an output, those on driven nets are inputs, and
// the only one left is the output of a cell that has no other. Of the rest the direction stays unknown.
void Annotator::directPinsOf(const DeviceDelay& device, const DrivenNets& driven) {
    bool hasOutput = false;
    std::vector<Design::PinId> left;
    for (const Design::PinId number : design_.pinsOfCell(device.cell)) {
        Design::Pin& pin = design_.pins[number];
        if (pin.direction == Design::Direction::unknown && number == device.output)
            pin.direction = Design::Direction::output;
        else if (pin.direction == Design::Direction::unknown && pin.net != Base::none && driven[pin.net])
            pin.direction = Design::Direction::input;
        hasOutput = hasOutput || drives(number);
        if (pin.direction == Design::Direction::unknown && pin.net != Base::none)
            left.push_back(number);
    }
    if (left.size() == 1 && !hasOutput) {
        design_.pins[left.front()].direction = Design::Direction::output;
        return;
    }
    for (const Design::PinId number : left)
        count("pins of cells with DEVICE delays that have no delay, since nothing tells their direction",
              Base::Severity::warning, device.where, design_.pinName(number));
}

// A cell without arcs gets one from every input to every output.
void Annotator::applyDevice(const DeviceDelay& device, const std::vector<Key>& arcs) {
    const auto set = [&](const Key& arc) {
        if (device.output == Base::none || arc.to == device.output)
            setArc(arc.from, arc.to, arc.edge, false, {device.delay}, false, device.increment, device.where);
    };
    std::ranges::for_each(arcs, set);
    if (!arcs.empty())
        return;
    std::vector<Design::PinId> inputs, outputs;
    for (const Design::PinId pin : design_.pinsOfCell(device.cell)) {
        if (receives(pin))
            inputs.push_back(pin);
        if (drives(pin) && (device.output == Base::none || pin == device.output))
            outputs.push_back(pin);
    }
    if (inputs.size() * outputs.size() > mostArcs)
        throw Base::BadInput(device.where.in(file_),
                             "DEVICE: '" + std::string(design_.cellName(device.cell)) + "' has " +
                                 std::to_string(inputs.size()) + " inputs and " +
                                 std::to_string(outputs.size()) + " outputs: expected delays of its pins");
    for (const Design::PinId from : inputs)
        for (const Design::PinId to : outputs)
            if (from != to)
                set({from, to, Design::Transition::any});
}

// --- Directions ---

bool Annotator::drives(Design::PinId pin) const {
    const Design::Direction direction = design_.pins[pin].direction;
    return direction == Design::Direction::inout ||
           direction == (design_.isPortOfTop(pin) ? Design::Direction::input : Design::Direction::output);
}

bool Annotator::receives(Design::PinId pin) const {
    const Design::Direction direction = design_.pins[pin].direction;
    return direction == Design::Direction::inout ||
           direction == (design_.isPortOfTop(pin) ? Design::Direction::output : Design::Direction::input);
}

// If no input states a direction, the delays decide it. The pin of a pad takes the direction of its port.
void Annotator::inferDirections() {
    const Uses uses = usesOfPins();
    for (const Design::PinId number : design_.pins.ids()) {
        Design::Pin& pin = design_.pins[number];
        if (pin.direction != Design::Direction::unknown)
            continue;
        const bool source = (uses[number] & (arcTo | wireFrom)) != 0;
        const bool sink = (uses[number] & (arcFrom | checked | checking | wireTo)) != 0 ||
                          (!source && loads_.contains(number));
        if (design_.isPortOfTop(number))
            pin.direction = source && sink ? Design::Direction::inout
                            : source       ? Design::Direction::input
                                           : Design::Direction::output;
        else if (source || sink)
            pin.direction = source && sink ? Design::Direction::inout
                            : source       ? Design::Direction::output
                                           : Design::Direction::input;
    }
    DrivenNets seen(design_.nets.size()); // the first port of a net decides
    for (const Design::PinId port : design_.ports()) {
        if (!design_.isPortOfTop(port) || !isFirstOfNet(port, seen))
            continue;
        for (const Design::PinId pin : design_.pinsOfNet(design_.pins[port].net))
            if (design_.pins[pin].direction == Design::Direction::unknown)
                design_.pins[pin].direction = design_.pins[port].direction;
    }
}

// --- Pins that the netlist leaves out ---

// The nets that something drives.
Annotator::DrivenNets Annotator::drivenNets(const Uses& uses) const {
    DrivenNets driven(design_.nets.size());
    for (const Design::PinId pin : design_.pins.ids())
        if (design_.pins[pin].net != Base::none && (drives(pin) || (uses[pin] & (arcTo | wireFrom)) != 0))
            driven[design_.pins[pin].net] = true;
    return driven;
}

Annotator::SilentPins Annotator::silentPinsOf(Design::CellId cell, const Uses& uses,
                                              const DrivenNets& driven) const {
    SilentPins silent;
    for (const Design::PinId number : design_.pinsOfCell(cell)) {
        const Design::Pin& pin = design_.pins[number];
        if (pin.net == Base::none || uses[number] != 0 || loads_.contains(number) ||
            touched_.contains(number))
            continue;
        const bool isOutput = pin.direction == Design::Direction::unknown
                                  ? !driven[pin.net]
                                  : pin.direction == Design::Direction::output;
        (isOutput ? silent.output : silent.input) = true;
    }
    return silent;
}

// Pins that the netlist does not have, as far as they may be others of the same cell that the file says
// nothing of. The rest is left open in the netlist: nothing is lost with its delays.
void Annotator::countExtraPins() {
    if (extraPins_.empty())
        return;
    const Uses uses = usesOfPins();
    const DrivenNets driven = drivenNets(uses);
    Base::HashMap<Design::CellId, SilentPins> silentOf;
    for (const ExtraPin& extra : extraPins_) {
        const auto [place, isNew] = silentOf.try_emplace(design_.pins[extra.pin].cell);
        if (isNew)
            place.value() = silentPinsOf(design_.pins[extra.pin].cell, uses, driven);
        const bool isOutput = (uses[extra.pin] & arcTo) != 0;
        if (isOutput ? place->second.output : place->second.input)
            for (std::uint64_t entry = 0; entry < extra.count; ++entry)
                count("delays and checks of pins that the netlist does not have", Base::Severity::warning,
                      extra.where, design_.pinName(extra.pin));
    }
}

// --- Wires ---

// From every driver of a net to every receiver, net by net.
void Annotator::makeWires() {
    std::vector<Design::PinId> drivers, receivers;
    for (const Design::NetId net : design_.nets.ids()) {
        drivers.clear();
        receivers.clear();
        for (const Design::PinId pin : design_.pinsOfNet(net)) {
            if (drives(pin))
                drivers.push_back(pin);
            if (receives(pin))
                receivers.push_back(pin);
        }
        if (drivers.size() > 1 && drivers.size() * receivers.size() > mostArcs)
            throw Base::BadInput({file_, 0, 0}, "the net '" + std::string(design_.netName(net)) +
                                                    "' leads from " + std::to_string(drivers.size()) +
                                                    " pins to " + std::to_string(receivers.size()) +
                                                    ": expected fewer drivers, or fewer receivers");
        for (const Design::PinId from : drivers)
            for (const Design::PinId to : receivers)
                if (to != from)
                    makeWire(from, to, net);
    }
}

void Annotator::makeWire(Design::PinId from, Design::PinId to, Design::NetId net) {
    const auto add = [&](const Design::Interval& delay) {
        design_.arcs.push_back({.from = from, .to = to, .wire = true, .delay = delay});
    };
    if (const auto wire = wires_.find({from, to, Design::Transition::any}); wire != wires_.end())
        add(wire->second);
    else if (const auto load = loads_.find(to); load != loads_.end())
        add(load->second);
    else if (const auto whole = netDelays_.find(net); whole != netDelays_.end())
        add(whole->second);
    else
        addBareArc(from, to, true);
}

// Without a netlist a net is what one pin drives, and has its name.
void Annotator::makeNetsOfWires() {
    for (const Design::Arc& arc : design_.arcs) {
        if (!arc.wire)
            continue;
        Design::NetId& net = design_.pins[arc.from].net;
        if (net == Base::none)
            net = design_.addNet(design_.names.add(design_.pinName(arc.from)));
        design_.pins[arc.to].net = net;
    }
}

// The pins of pads stand for ports: source pins without a driver, and sink pins without fan-out.
void Annotator::findPortsOfPads() {
    const Uses uses = usesOfPins();
    for (const Design::PinId pin : design_.pins.ids()) {
        if (design_.isPortOfTop(pin))
            continue;
        if (uses[pin] == wireFrom || uses[pin] == wireTo) {
            design_.pins[pin].standsForPort = true;
            design_.pins[pin].direction =
                uses[pin] == wireFrom ? Design::Direction::input : Design::Direction::output;
        }
    }
}

} // namespace Readers
