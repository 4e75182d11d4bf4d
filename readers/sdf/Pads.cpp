// Cells whose pins are joined without delays of their own: pads, and cells that only pass on what comes in.
#include "readers/sdf/Annotate.h"
#include "readers/sdf/Uses.h"

#include <algorithm>
#include <array>

namespace Readers {

namespace {

// The pins of an input and output buffer that the pad's own pin may join; other pins of such a cell are its
// clocks and enables.
constexpr std::string_view bufferPad = "PACKAGE_PIN";
constexpr std::array<std::string_view, 1> bufferOutputs = {"D_IN_0"};
constexpr std::array<std::string_view, 2> bufferInputs = {"D_OUT_0", "OUTPUT_ENABLE"};

constexpr const char* tooManyJoined =
    "pins of pads that are not joined: their cell has too many pins without a delay";

} // namespace

// --- Cells without delays of their own ---

// A cell for which the file has only PORT delays, such as a clock control block, passes its inputs on. A cell
// of a type that has checks in other cells does not: it is a register.
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

} // namespace Readers
