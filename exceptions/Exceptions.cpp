// From the objects that exceptions name to start points, end points and through points.
#include "exceptions/Exceptions.h"

#include <algorithm>

namespace Exceptions {

using Kind = Design::Exception::Kind;
using Design::ObjectKind;

namespace {

// In a signature, before the pin of a point that shares its number with no other.
constexpr std::uint64_t aloneMark = Base::none - 1;

// Up to so many registers are told apart for their latency alone.
constexpr std::size_t fewRegisters = 500;

template <class Value>
void sortOnce(std::vector<Value>& values) {
    std::ranges::sort(values);
    const auto rest = std::ranges::unique(values);
    values.erase(rest.begin(), rest.end());
}

const char* commandOf(Kind kind) {
    switch (kind) {
    case Kind::falsePath:
        return "set_false_path";
    case Kind::multicycle:
        return "set_multicycle_path";
    case Kind::maxDelay:
        return "set_max_delay";
    case Kind::minDelay:
        return "set_min_delay";
    case Kind::pathGroup:
        break;
    }
    return "group_path";
}

} // namespace

void Exceptions::Pins::add(std::uint32_t pin, By object) {
    pins.push_back(pin);
    by.push_back(object);
}

// Each pin once, with all objects that name it.
void Exceptions::Pins::sort() {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> all;
    for (std::size_t i = 0; i < pins.size(); ++i)
        all.emplace_back(pins[i], by[i]);
    std::ranges::sort(all);
    pins.clear();
    by.clear();
    for (const auto& [pin, object] : all)
        if (!pins.empty() && pins.back() == pin) {
            by.back() |= object;
        } else {
            pins.push_back(pin);
            by.push_back(object);
        }
}

unsigned Exceptions::Variant::rank() const {
    return (from.empty() ? 0U : 16U) + (to.empty() ? 0U : 8U) + (throughs.empty() ? 0U : 4U) +
           (fromClocks.empty() ? 0U : 2U) + (toClocks.empty() ? 0U : 1U);
}

Exceptions::Exceptions(const Design::RoutedDesign& design, const Model::Network& network,
                       const Model::Clocks& clocks, const Design::Constraints& constraints, int scale,
                       Base::Diagnostics& diagnostics)
    : design_(design), network_(network), clocks_(clocks), constraints_(constraints), scale_(scale),
      diagnostics_(diagnostics), uses_(constraints.exceptions.size()) {
    for (std::uint32_t exception = 0; exception < constraints.exceptions.size(); ++exception)
        resolve(exception);
    for (std::uint32_t variant = 0; variant < variants_.size(); ++variant)
        if (variants_[variant].from.empty() && variants_[variant].to.empty() &&
            variants_[variant].throughs.empty())
            unpinned_.push_back(variant);
    collectTimedPorts();
    numberPoints(true);
    numberPoints(false);
    makeAtoms();
}

Base::Place Exceptions::placeOf(std::uint32_t exception) const {
    return constraints_.place(stated(exception).origin);
}

// --- Objects ---

// Of clocks the edge is known, of anything else delays are of both edges.
void Exceptions::noteEdges(const Design::Exception& exception) {
    const auto asks = [](const Design::Points& points) {
        return points.transition != Design::Transition::any &&
               std::ranges::any_of(points.objects,
                                   [](const auto& object) { return object.kind != ObjectKind::clock; });
    };
    if ((exception.from && asks(*exception.from)) || (exception.to && asks(*exception.to)) ||
        std::ranges::any_of(exception.through, asks))
        diagnostics_.note(constraints_.place(exception.origin),
                          std::string(commandOf(exception.kind)) +
                              ": edges of data are not told apart: taken for rising and falling ones");
}

void Exceptions::resolve(std::uint32_t exception) {
    const Design::Exception& stated = this->stated(exception);
    noteEdges(stated);
    Variant base;
    base.exception = exception;
    for (const Design::Points& points : stated.through) {
        Mentions& list = base.throughs.emplace_back();
        for (const Design::Object& object : points.objects)
            addNodes(object, list);
        sortOnce(list);
    }
    base.hasFrom = stated.from.has_value();
    base.hasTo = stated.to.has_value();
    std::vector<Variant> variants = {base};
    if (stated.from)
        variants = resolveSide(*stated.from, base, true);
    if (stated.to) {
        std::vector<Variant> both;
        for (const Variant& variant : variants)
            std::ranges::move(resolveSide(*stated.to, variant, false), std::back_inserter(both));
        variants = std::move(both);
    }
    std::ranges::move(variants, std::back_inserter(variants_));
}

// Of what stands at the end of a path, but for clocks.
std::string Exceptions::nameOf(const Design::Object& object) const {
    return object.kind == ObjectKind::cell ? std::string(design_.cellName(object.index))
                                           : design_.pinName(object.index);
}

// The variants of a side: its clocks, its start or end points, its registers through an output, and what is
// no point of the kind, which the paths go through.
std::vector<Exceptions::Variant> Exceptions::resolveSide(const Design::Points& points, const Variant& base,
                                                         bool from) {
    std::vector<Variant> outputs;
    Variant clocks = base, pins = base, within = base;
    (from ? clocks.fromEdge : clocks.toEdge) = points.transition;
    Mentions other;
    const char* const side = from ? "-from" : "-to";
    for (const Design::Object& object : points.objects) {
        if (object.kind == ObjectKind::clock) {
            (from ? clocks.fromClocks : clocks.toClocks).push_back(object.index);
            continue;
        }
        if (addPoint(object, from, pins, outputs))
            continue;
        const Kind kind = stated(base.exception).kind;
        const std::string text = std::string(commandOf(kind)) + ": " + side + " '" + nameOf(object) +
                                 "' is no " + (from ? "start" : "end") + " point";
        if (kind == Kind::maxDelay || kind == Kind::minDelay)
            throw Base::BadInput(placeOf(base.exception),
                                 text + ", which would cut the paths there; expected " +
                                     (from ? "a clock, a register or its clock pin, or an input port"
                                           : "a clock, a register or its data pin, or an output port"));
        diagnostics_.warning(placeOf(base.exception), text + ": taken as -through");
        addNodes(object, other);
    }
    std::vector<Variant> variants;
    sortOnce(clocks.fromClocks);
    sortOnce(clocks.toClocks);
    (from ? pins.from : pins.to).sort();
    if (from ? !clocks.fromClocks.empty() : !clocks.toClocks.empty())
        variants.push_back(std::move(clocks));
    if (!(from ? pins.from : pins.to).empty())
        variants.push_back(std::move(pins));
    std::ranges::move(outputs, std::back_inserter(variants));
    if (!other.empty()) {
        sortOnce(other);
        (from ? within.hasFrom : within.hasTo) = false;
        within.throughs.insert(from ? within.throughs.begin() : within.throughs.end(), std::move(other));
        variants.push_back(std::move(within));
    }
    return variants;
}

bool Exceptions::addPoint(const Design::Object& object, bool from, Variant& pins,
                          std::vector<Variant>& outputs) const {
    if (object.kind == ObjectKind::net)
        return false;
    if (object.kind != ObjectKind::cell)
        return addPin(object.index, from, pins, outputs);
    bool found = false;
    for (const std::uint32_t pin : design_.pinsOfCell(object.index))
        if (from ? design_.isClockPin(pin) ||
                       (design_.isRegister(object.index) && network_.isClockSource(network_.sourceOf(pin)))
                 : design_.isDataPin(pin)) {
            (from ? pins.from : pins.to).add(pin, byCell);
            found = true;
        }
    return found;
}

bool Exceptions::addPin(std::uint32_t pin, bool from, Variant& pins, std::vector<Variant>& outputs) const {
    const Design::Direction direction = design_.pins[pin].direction;
    if (!from) {
        if (design_.isPort(pin) ? direction == Design::Direction::input : !design_.isDataPin(pin))
            return false;
        pins.to.add(pin, byPin);
        return true;
    }
    const bool source = network_.isClockSource(network_.sourceOf(pin));
    if (source || (design_.isPort(pin) ? direction != Design::Direction::output : design_.isClockPin(pin))) {
        pins.from.add(pin, byPin);
        return true;
    }
    if (!design_.isRegisterOutput(pin))
        return false;
    // That register through that pin.
    Variant through = pins;
    through.from = clockPinsBehind(pin);
    through.fromOutput = pin;
    Mentions output;
    network_.eachCopy(network_.sourceOf(pin), [&](std::uint32_t node) { output.push_back({node}); });
    through.throughs.insert(through.throughs.begin(), std::move(output));
    outputs.push_back(std::move(through));
    return true;
}

Exceptions::Pins Exceptions::clockPinsBehind(std::uint32_t output) const {
    Pins clockPins;
    for (const std::uint32_t number : network_.in(network_.sourceOf(output)))
        if (const Model::Arc& arc = network_.arcs()[number]; arc.launch)
            clockPins.add(network_.pinOf(arc.from), byOutput);
    clockPins.sort();
    return clockPins;
}

void Exceptions::addPinNodes(std::uint32_t pin, By by, Mentions& list) const {
    const auto add = [&](std::uint32_t node) { list.push_back({node, by}); };
    if (!design_.isClockPin(pin)) {
        network_.eachCopy(network_.sinkOf(pin), add);
        if (network_.sourceOf(pin) != network_.sinkOf(pin))
            network_.eachCopy(network_.sourceOf(pin), add);
        return;
    }
    // A path that starts at a clock pin goes on through what it launches.
    for (const std::uint32_t number : network_.out(network_.sinkOf(pin)))
        if (const Model::Arc& arc = network_.arcs()[number]; arc.kind == Model::ArcKind::launch) {
            if (by == byCell)
                list.push_back({arc.to, by});
            else
                list.push_back({arc.to, byClockPin, design_.pins[pin].name});
        }
}

// A cell is passed where its outputs are, or where a path ends in it; a net where its drivers are.
void Exceptions::addNodes(const Design::Object& object, Mentions& list) const {
    switch (object.kind) {
    case ObjectKind::cell:
        for (const std::uint32_t pin : design_.pinsOfCell(object.index))
            if (design_.isDataPin(pin) || design_.pins[pin].direction != Design::Direction::input)
                addPinNodes(pin, byCell, list);
        break;
    case ObjectKind::net:
        for (const std::uint32_t pin : design_.pinsOfNet(object.index)) {
            const Design::Direction direction = design_.pins[pin].direction;
            if (direction == Design::Direction::inout ||
                direction == (design_.isPort(pin) ? Design::Direction::input : Design::Direction::output))
                network_.eachCopy(network_.sourceOf(pin), [&](std::uint32_t node) {
                    list.push_back({node, byNet});
                });
        }
        break;
    case ObjectKind::clock:
        break;
    default:
        addPinNodes(object.index, byPin, list);
    }
}

// --- Numbers of start and end points ---

// A delay times what it covers by itself: the ports of a list, or, without one on that side, all of them.
// No clock is at ports of their own, so a list of clocks names none of these.
void Exceptions::collectTimedPorts() {
    const auto isDelay = [&](const Variant& variant) {
        const Kind kind = stated(variant.exception).kind;
        return kind == Kind::maxDelay || kind == Kind::minDelay;
    };
    bool allInputs = false, allOutputs = false;
    for (const Variant& variant : variants_) {
        if (!isDelay(variant))
            continue;
        for (const std::uint32_t pin : variant.from.pins)
            if (design_.isPort(pin))
                timedPorts_.inputs.insert(pin);
        for (const std::uint32_t pin : variant.to.pins)
            if (design_.isPort(pin))
                timedPorts_.outputs.insert(pin);
        allInputs |= !variant.hasFrom;
        allOutputs |= !variant.hasTo;
    }
    for (const std::uint32_t pin : design_.ports()) {
        const Design::Direction direction = design_.pins[pin].direction;
        if (allInputs && direction != Design::Direction::output)
            timedPorts_.inputs.insert(pin);
        if (allOutputs && direction != Design::Direction::input)
            timedPorts_.outputs.insert(pin);
    }
}

std::uint64_t Exceptions::startKey(std::uint32_t pin, bool clockSource) {
    return std::uint64_t{pin} * 2 + (clockSource ? 1 : 0);
}

// What starts at a pin: data of the register or from outside, or that of the clock whose source it is.
std::vector<std::uint64_t> Exceptions::startKeys(std::uint32_t pin) const {
    const bool source = network_.isClockSource(network_.sourceOf(pin));
    std::vector<std::uint64_t> keys;
    if (!source || design_.isClockPin(pin))
        keys.push_back(startKey(pin, false));
    if (source)
        keys.push_back(startKey(pin, true));
    return keys;
}

std::uint32_t Exceptions::numberOf(const Model::Start& start) const {
    const auto found = startNumber_.find(startKey(start.pin, start.kind == Model::Start::Kind::clockSource));
    return found == startNumber_.end() ? 0 : found->second;
}

// The start points that a delay without clock latency needs to know one by one: those that it names, and
// where it names none, those at which a clock may have another latency than at registers. Registers too,
// while they are few.
std::vector<std::uint64_t> Exceptions::startsAlone() const {
    std::vector<std::uint64_t> alone;
    const auto add = [&](const std::vector<std::uint32_t>& pins) {
        for (const std::uint32_t pin : pins)
            std::ranges::copy(startKeys(pin), std::back_inserter(alone));
    };
    bool all = false;
    for (const Variant& variant : variants_)
        if (stated(variant.exception).ignoreClockLatency) {
            all |= variant.from.empty();
            add(variant.from.pins);
        }
    if (!all)
        return alone;
    std::vector<std::uint32_t> others, registers;
    for (std::uint32_t pin = 0; pin < design_.pins.size(); ++pin) {
        if (design_.isPort(pin) || network_.isClockSource(network_.sourceOf(pin)))
            others.push_back(pin);
        else if (design_.isClockPin(pin))
            registers.push_back(pin);
    }
    add(others);
    if (registers.size() <= fewRegisters)
        add(registers);
    return alone;
}

// Points that the same variants name by the same kinds of objects share a number. A register's cell names the
// data that starts at a clock's source on one of its pins too; its clock pin does not.
void Exceptions::numberPoints(bool from) {
    std::map<std::uint64_t, std::vector<Naming>> namingsOf;
    for (std::uint32_t variant = 0; variant < variants_.size(); ++variant) {
        const Pins& named = from ? variants_[variant].from : variants_[variant].to;
        for (std::size_t i = 0; i < named.pins.size(); ++i) {
            const std::uint32_t point = named.pins[i], by = named.by[i];
            if (!from) {
                namingsOf[point].push_back({variant, by});
                continue;
            }
            for (const std::uint64_t key : startKeys(point)) {
                const std::uint32_t bits = key == startKey(point, true) ? by & (byPin | byCell) : by;
                if (bits != 0)
                    namingsOf[key].push_back({variant, bits});
            }
        }
    }
    std::unordered_set<std::uint64_t> alone;
    if (from)
        for (const std::uint64_t key : startsAlone()) {
            alone.insert(key);
            namingsOf.try_emplace(key);
        }
    auto& numbers = from ? startNumber_ : endNumber_;
    auto& namings = from ? startVariants_ : endVariants_;
    namings.resize(1);
    std::map<std::vector<std::uint64_t>, std::uint32_t> known;
    for (const auto& [key, named] : namingsOf) {
        std::vector<std::uint64_t> signature;
        for (const Naming& naming : named)
            signature.insert(signature.end(), {naming.variant, naming.by});
        if (alone.contains(key))
            signature.insert(signature.end(), {aloneMark, key});
        const auto [place, isNew] =
            known.try_emplace(std::move(signature), static_cast<std::uint32_t>(namings.size()));
        if (isNew)
            namings.push_back(named);
        numbers[key] = place->second;
    }
}

} // namespace Exceptions
