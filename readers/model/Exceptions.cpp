// From the objects that exceptions name to start points, end points and through points.
#include "Exceptions.h"

#include <algorithm>

namespace Readers::Model {

using Kind = Sdc::Exception::Kind;
using Sdc::ObjectKind;

namespace {

// In a signature, before the pin of a point that shares its number with no other.
constexpr std::uint32_t aloneMark = none - 1;

// Up to so many registers are told apart for their latency alone.
constexpr std::size_t fewRegisters = 500;

void sortOnce(std::vector<std::uint32_t>& values) {
    std::ranges::sort(values);
    const auto rest = std::ranges::unique(values);
    values.erase(rest.begin(), rest.end());
}

const char* nameOf(Kind kind) {
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

unsigned Exceptions::Variant::rank() const {
    return (fromPins.empty() ? 0U : 16U) + (toPins.empty() ? 0U : 8U) + (throughs.empty() ? 0U : 4U) +
           (fromClocks.empty() ? 0U : 2U) + (toClocks.empty() ? 0U : 1U);
}

Exceptions::Exceptions(const Design& design, const Network& network, const Clocks& clocks,
                       const Sdc::Constraints& constraints, int scale, Diagnostics& diagnostics)
    : design_(design), network_(network), clocks_(clocks), constraints_(constraints), scale_(scale),
      diagnostics_(diagnostics), uses_(constraints.exceptions.size()) {
    for (std::uint32_t exception = 0; exception < constraints.exceptions.size(); ++exception)
        resolve(exception);
    for (std::uint32_t variant = 0; variant < variants_.size(); ++variant)
        if (variants_[variant].fromPins.empty() && variants_[variant].toPins.empty() &&
            variants_[variant].throughs.empty())
            unpinned_.push_back(variant);
    collectTimedPorts();
    numberPoints(true);
    numberPoints(false);
    makeAtoms();
}

Place Exceptions::placeOf(std::uint32_t exception) const {
    return constraints_.place(stated(exception).origin);
}

// --- Objects ---

unsigned Exceptions::placeAbout(const Sdc::Object& object) {
    return object.kind == ObjectKind::cell ? cellPlace : object.kind == ObjectKind::net ? netPlace : pinPlace;
}

// Of clocks the edge is known, of anything else delays are of both edges.
void Exceptions::noteEdges(const Sdc::Exception& exception) {
    const auto asks = [](const Sdc::Points& points) {
        return points.transition != Transition::any &&
               std::ranges::any_of(points.objects,
                                   [](const auto& object) { return object.kind != ObjectKind::clock; });
    };
    if ((exception.from && asks(*exception.from)) || (exception.to && asks(*exception.to)) ||
        std::ranges::any_of(exception.through, asks))
        diagnostics_.note(constraints_.place(exception.origin),
                          std::string(Model::nameOf(exception.kind)) +
                              ": edges of data are not told apart: taken for rising and falling ones");
}

void Exceptions::resolve(std::uint32_t exception) {
    const Sdc::Exception& stated = this->stated(exception);
    noteEdges(stated);
    Variant base;
    base.exception = exception;
    for (const Sdc::Points& points : stated.through) {
        Group& group = base.throughs.emplace_back();
        Places& places = base.places.emplace_back();
        for (const Sdc::Object& object : points.objects) {
            const std::size_t before = group.size();
            addNodes(object, group);
            if (stated.through.size() > 1)
                for (std::size_t at = before; at < group.size(); ++at)
                    places[group[at]] |= placeAbout(object);
        }
        sortOnce(group);
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
std::string Exceptions::nameOf(const Sdc::Object& object) const {
    return object.kind == ObjectKind::cell ? std::string(design_.cellName(object.index))
                                           : design_.pinName(object.index);
}

// The variants of a side: its clocks, its start or end points, its registers through an output, and what is
// no point of the kind, which the paths go through.
std::vector<Exceptions::Variant> Exceptions::resolveSide(const Sdc::Points& points, const Variant& base,
                                                         bool from) {
    std::vector<Variant> outputs;
    Variant clocks = base, pins = base, within = base;
    (from ? clocks.fromEdge : clocks.toEdge) = points.transition;
    Group other;
    const char* const side = from ? "-from" : "-to";
    for (const Sdc::Object& object : points.objects) {
        if (object.kind == ObjectKind::clock) {
            (from ? clocks.fromClocks : clocks.toClocks).push_back(object.index);
            continue;
        }
        if (addPoint(object, from, pins, outputs))
            continue;
        const Kind kind = stated(base.exception).kind;
        const std::string text = std::string(Model::nameOf(kind)) + ": " + side + " '" + nameOf(object) +
                                 "' is no " + (from ? "start" : "end") + " point";
        if (kind == Kind::maxDelay || kind == Kind::minDelay)
            throw BadInput(placeOf(base.exception),
                           text + ", which would cut the paths there; expected " +
                               (from ? "a clock, a register or its clock pin, or an input port"
                                     : "a clock, a register or its data pin, or an output port"));
        diagnostics_.warning(placeOf(base.exception), text + ": taken as -through");
        addNodes(object, other);
    }
    std::vector<Variant> variants;
    sortOnce(clocks.fromClocks);
    sortOnce(clocks.toClocks);
    sortOnce(pins.fromPins);
    sortOnce(pins.toPins);
    if (from ? !clocks.fromClocks.empty() : !clocks.toClocks.empty())
        variants.push_back(std::move(clocks));
    if (from ? !pins.fromPins.empty() : !pins.toPins.empty())
        variants.push_back(std::move(pins));
    std::ranges::move(outputs, std::back_inserter(variants));
    if (!other.empty()) {
        sortOnce(other);
        (from ? within.hasFrom : within.hasTo) = false;
        within.throughs.insert(from ? within.throughs.begin() : within.throughs.end(), std::move(other));
        within.places.insert(from ? within.places.begin() : within.places.end(), Places());
        variants.push_back(std::move(within));
    }
    return variants;
}

bool Exceptions::addPoint(const Sdc::Object& object, bool from, Variant& pins,
                          std::vector<Variant>& outputs) const {
    if (object.kind == ObjectKind::net)
        return false;
    if (object.kind != ObjectKind::cell)
        return addPin(object.index, from, pins, outputs);
    bool found = false;
    for (const std::uint32_t pin : design_.pinsOfCell(object.index))
        if (from ? design_.isClockPin(pin) : design_.isDataPin(pin)) {
            (from ? pins.fromPins : pins.toPins).push_back(pin);
            found = true;
        }
    return found;
}

bool Exceptions::addPin(std::uint32_t pin, bool from, Variant& pins, std::vector<Variant>& outputs) const {
    const Direction direction = design_.pins[pin].direction;
    if (!from) {
        if (design_.isPort(pin) ? direction == Direction::input : !design_.isDataPin(pin))
            return false;
        pins.toPins.push_back(pin);
        return true;
    }
    const bool source = network_.isClockSource(network_.sourceOf(pin));
    if (source || (design_.isPort(pin) ? direction != Direction::output : design_.isClockPin(pin))) {
        pins.fromPins.push_back(pin);
        return true;
    }
    if (!design_.isRegisterOutput(pin))
        return false;
    // That register through that pin.
    Variant through = pins;
    through.fromPins = clockPinsBehind(pin);
    through.throughs.insert(through.throughs.begin(), Group{network_.sourceOf(pin)});
    through.places.insert(through.places.begin(), Places());
    outputs.push_back(std::move(through));
    return true;
}

std::vector<std::uint32_t> Exceptions::clockPinsBehind(std::uint32_t output) const {
    std::vector<std::uint32_t> clockPins;
    for (const std::uint32_t number : network_.in(network_.sourceOf(output)))
        if (const Arc& arc = network_.arcs()[number]; arc.launch)
            clockPins.push_back(network_.pinOf(arc.from));
    sortOnce(clockPins);
    return clockPins;
}

void Exceptions::addPinNodes(std::uint32_t pin, Group& group) const {
    if (!design_.isClockPin(pin)) {
        group.push_back(network_.sinkOf(pin));
        if (network_.sourceOf(pin) != network_.sinkOf(pin))
            group.push_back(network_.sourceOf(pin));
        return;
    }
    // A path that starts at a clock pin goes on through what it launches.
    for (const std::uint32_t number : network_.out(network_.sinkOf(pin)))
        if (const Arc& arc = network_.arcs()[number]; arc.kind == ArcKind::launch)
            group.push_back(arc.to);
}

// A cell is passed where its outputs are, or where a path ends in it; a net where its drivers are.
void Exceptions::addNodes(const Sdc::Object& object, Group& group) const {
    switch (object.kind) {
    case ObjectKind::cell:
        for (const std::uint32_t pin : design_.pinsOfCell(object.index))
            if (design_.isDataPin(pin) || design_.pins[pin].direction != Direction::input)
                addPinNodes(pin, group);
        break;
    case ObjectKind::net:
        for (const std::uint32_t pin : design_.pinsOfNet(object.index)) {
            const Direction direction = design_.pins[pin].direction;
            if (direction == Direction::inout ||
                direction == (design_.isPort(pin) ? Direction::input : Direction::output))
                group.push_back(network_.sourceOf(pin));
        }
        break;
    case ObjectKind::clock:
        break;
    default:
        addPinNodes(object.index, group);
    }
}

// --- Numbers of start and end points ---

// A delay times what it names by itself: the ports of a list, or, without one on that side, all of them.
void Exceptions::collectTimedPorts() {
    const auto isDelay = [&](const Variant& variant) {
        const Kind kind = stated(variant.exception).kind;
        return kind == Kind::maxDelay || kind == Kind::minDelay;
    };
    bool allInputs = false, allOutputs = false;
    for (const Variant& variant : variants_) {
        if (!isDelay(variant))
            continue;
        for (const std::vector<std::uint32_t>* pins : {&variant.fromPins, &variant.toPins})
            for (const std::uint32_t pin : *pins)
                if (design_.isPort(pin))
                    timedPorts_.insert(pin);
        allInputs |= !variant.hasFrom;
        allOutputs |= !variant.hasTo;
    }
    for (const std::uint32_t pin : design_.ports())
        if (design_.pins[pin].direction == Direction::input ? allInputs : allOutputs)
            timedPorts_.insert(pin);
}

// The start points that a delay without clock latency needs to know one by one: those that it names, and
// where it names none, those at which a clock may have another latency than at registers. Registers too,
// while they are few.
std::vector<std::uint32_t> Exceptions::startsAlone() const {
    std::vector<std::uint32_t> alone;
    bool all = false;
    for (const Variant& variant : variants_)
        if (stated(variant.exception).ignoreClockLatency) {
            all |= variant.fromPins.empty();
            alone.insert(alone.end(), variant.fromPins.begin(), variant.fromPins.end());
        }
    if (!all)
        return alone;
    std::vector<std::uint32_t> registers;
    for (std::uint32_t pin = 0; pin < design_.pins.size(); ++pin) {
        if (design_.isPort(pin) || network_.isClockSource(network_.sourceOf(pin)))
            alone.push_back(pin);
        else if (design_.isClockPin(pin))
            registers.push_back(pin);
    }
    if (registers.size() <= fewRegisters)
        alone.insert(alone.end(), registers.begin(), registers.end());
    return alone;
}

// Points that the same variants name share a number.
void Exceptions::numberPoints(bool from) {
    std::map<std::uint32_t, std::vector<std::uint32_t>> variantsOf;
    for (std::uint32_t variant = 0; variant < variants_.size(); ++variant)
        for (const std::uint32_t pin : from ? variants_[variant].fromPins : variants_[variant].toPins)
            variantsOf[pin].push_back(variant);
    std::unordered_set<std::uint32_t> alone;
    if (from)
        for (const std::uint32_t pin : startsAlone()) {
            alone.insert(pin);
            variantsOf.try_emplace(pin);
        }
    auto& numbers = from ? startNumber_ : endNumber_;
    auto& variants = from ? startVariants_ : endVariants_;
    variants.resize(1);
    std::map<std::vector<std::uint32_t>, std::uint32_t> known;
    for (const auto& [pin, named] : variantsOf) {
        std::vector<std::uint32_t> signature = named;
        if (alone.contains(pin))
            signature.insert(signature.end(), {aloneMark, pin});
        const auto [place, isNew] =
            known.try_emplace(std::move(signature), static_cast<std::uint32_t>(variants.size()));
        if (isNew)
            variants.push_back(named);
        numbers[pin] = place->second;
    }
}

} // namespace Readers::Model
