// How the annotated design is connected: directions that the netlist leaves open, pads, wires, ports.
#include "readers/sdf/Annotate.h"

#include <algorithm>
#include <array>
#include <unordered_map>

namespace Readers {

namespace {

// How an SDF file uses a pin.
enum Use : std::uint8_t { arcFrom = 1, arcTo = 2, checked = 4, checking = 8, wireFrom = 16, wireTo = 32 };

// The pins of an input and output buffer that the pad's own pin may join; other pins of such a cell are its
// clocks and enables.
constexpr std::string_view bufferPad = "PACKAGE_PIN";
constexpr std::array<std::string_view, 1> bufferOutputs = {"D_IN_0"};
constexpr std::array<std::string_view, 2> bufferInputs = {"D_OUT_0", "OUTPUT_ENABLE"};

// From all inputs of a cell to all its outputs, or from all drivers of a net to all receivers: a small file
// could ask for more than there is memory for. The arcs of pads are counted from either end.
constexpr std::size_t mostArcs = 1'000'000;
constexpr const char* tooManyJoined =
    "pins of pads that are not joined: their cell has too many pins without a delay";

} // namespace

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

// Where nothing says a direction, the delays do; a pad's pin takes its port's.
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

// --- Cells without delays of their own ---

// A cell of which the file has PORT delays alone, such as a clock control block, passes on what comes in. Not
// so one of a type that has checks in other cells: that is a register.
void Annotator::joinSilentCells() {
    if (loadedCells_.empty())
        return;
    const Uses uses = usesOfPins();
    const DrivenNets driven = drivenNets(uses);
    Base::IndexVector<Design::CellId, bool> isJoined(design_.cells.size());
    std::vector<bool> isChecked(design_.names.size());
    for (const Design::PinId pin : design_.pins.ids()) {
        const Design::CellId cell = design_.pins[pin].cell;
        if (cell == Base::none)
            continue;
        if ((uses[pin] & (arcFrom | arcTo | checked | checking)) != 0 || touched_.contains(pin))
            isJoined[cell] = true;
        if ((uses[pin] & (checked | checking)) != 0)
            isChecked[static_cast<std::size_t>(design_.cells[cell].type)] = true;
    }
    for (const auto& [cell, where] : loadedCells_)
        if (!isJoined[cell] && !isChecked[static_cast<std::size_t>(design_.cells[cell].type)]) {
            isJoined[cell] = true;
            joinSilentCell(cell, where, driven);
        }
}

// A pin without a direction is an output if nothing else drives its net.
void Annotator::joinSilentCell(Design::CellId cell, Base::Position where, const DrivenNets& driven) {
    std::vector<Design::PinId> inputs, outputs;
    for (const Design::PinId number : design_.pinsOfCell(cell)) {
        Design::Pin& pin = design_.pins[number];
        if (pin.net == Base::none)
            continue;
        if (pin.direction == Design::Direction::unknown)
            pin.direction = driven[pin.net] ? Design::Direction::input : Design::Direction::output;
        if (receives(number))
            inputs.push_back(number);
        if (drives(number))
            outputs.push_back(number);
    }
    if (inputs.empty() || outputs.empty())
        return;
    const std::string type(design_.names[design_.cells[cell].type]);
    if (inputs.size() * outputs.size() > mostArcs) {
        count(("cells of type '" + type + "' have PORT delays, no IOPATH, and too many pins: nothing passes")
                  .c_str(),
              Base::Severity::warning, where, std::string(design_.cellName(cell)));
        return;
    }
    for (const Design::PinId from : inputs)
        for (const Design::PinId to : outputs)
            if (from != to)
                addBareArc(from, to, false);
    count(("cells of type '" + type +
           "' with PORT delays and no IOPATH: what comes in passes to the outputs without delay")
              .c_str(),
          Base::Severity::warning, where, std::string(design_.cellName(cell)));
}

// --- Pads ---

void Annotator::joinPads() {
    const Uses uses = usesOfPins();
    const auto isSaid = [&](Design::PinId pin) {
        return (uses[pin] & (arcFrom | arcTo | checked | checking)) != 0 || touched_.contains(pin);
    };
    Base::HashMap<Design::CellId, Pad> pads;
    const auto padOf = [&](Design::CellId cell) -> Pad& {
        const auto [place, isNew] = pads.try_emplace(cell);
        Pad& pad = place.value();
        for (const Design::PinId pin : isNew ? design_.pinsOfCell(cell) : std::span<const Design::PinId>())
            if (const Design::Pin& of = design_.pins[pin];
                of.net != Base::none && !isSaid(pin) &&
                (of.direction == Design::Direction::input || of.direction == Design::Direction::output))
                (of.direction == Design::Direction::input ? pad.inputs : pad.outputs).push_back(pin);
        return pad;
    };
    const auto forEachPadPin = [&](auto use) {
        DrivenNets seen(design_.nets.size());
        for (const Design::PinId port : design_.ports()) {
            if (!isFirstOfNet(port, seen))
                continue;
            for (const Design::PinId pin : design_.pinsOfNet(design_.pins[port].net))
                if (!design_.isPortOfTop(pin) && (isBufferPad(pin) || !isSaid(pin)))
                    use(pin, padOf(design_.pins[pin].cell));
        }
    };
    forEachPadPin([this](Design::PinId pin, Pad& pad) {
        pad.arcs += (receives(pin) ? pad.outputs.size() : 0) + (drives(pin) ? pad.inputs.size() : 0);
    });
    forEachPadPin([this](Design::PinId pin, const Pad& pad) {
        if (pad.arcs > mostArcs)
            count(tooManyJoined, Base::Severity::warning, {}, design_.pinName(pin));
        else
            joinPad(pin, pad);
    });
}

// Whether the port's net was not seen before: many ports may have one net.
bool Annotator::isFirstOfNet(Design::PinId port, DrivenNets& seen) const {
    const Design::NetId net = design_.pins[port].net;
    if (net == Base::none || seen[net])
        return false;
    seen[net] = true;
    return true;
}

bool Annotator::isBufferPad(Design::PinId pin) const {
    return design_.names[design_.pins[pin].name] == bufferPad;
}

// Zero arcs between the pad's pin and those of the cell's other pins that have neither arc nor check. Of a
// buffer with registers in it, only the data pins count: its clocks and enables have no delays where they are
// not used.
void Annotator::joinPad(Design::PinId padPin, const Pad& pad) {
    const auto isIn = [](std::string_view name, auto names) {
        return std::ranges::find(names, name) != names.end();
    };
    const auto nameOf = [&](Design::PinId pin) { return design_.names[design_.pins[pin].name]; };
    // A cell between two ports comes here with either pin.
    const auto join = [&](Design::PinId from, Design::PinId to) {
        const Design::ArcId next = design_.arcs.next();
        if (arcs_.try_emplace(Key{from, to, Design::Transition::any}, next).second)
            addBareArc(from, to, false);
    };
    const bool buffer = isBufferPad(padPin);
    if (receives(padPin))
        for (const Design::PinId pin : pad.outputs)
            if (pin != padPin && (!buffer || isIn(nameOf(pin), bufferOutputs)))
                join(padPin, pin);
    if (drives(padPin))
        for (const Design::PinId pin : pad.inputs)
            if (pin != padPin && (!buffer || isIn(nameOf(pin), bufferInputs)))
                join(pin, padPin);
}

void Annotator::addBareArc(Design::PinId from, Design::PinId to, bool wire) {
    design_.arcs.push_back({.from = from, .to = to, .wire = wire, .bare = true});
    ++bareArcs_;
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

// The pin of a pad stands for a port: one that drives a wire and that no arc reaches, or one that a wire
// reaches and that leads nowhere.
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
