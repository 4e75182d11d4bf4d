#include "exceptions/Resolved.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Exceptions {

using Design::ObjectKind;
using Kind = Design::Exception::Kind;

namespace {

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

bool isDelay(Kind kind) { return kind == Kind::maxDelay || kind == Kind::minDelay; }

class Resolver {
public:
    Resolver(const Design::RoutedDesign& design, const Model::Network& network,
             const Design::Constraints& constraints, Base::Diagnostics& diagnostics)
        : design_(design), network_(network), constraints_(constraints), diagnostics_(diagnostics) {}

    // The variants of an exception.
    std::vector<Variant> variantsOf(Design::ExceptionId exception);
    Model::TimedPorts timedPorts(const Variants& variants) const;

private:
    void noteEdges(const Design::Exception& exception);
    std::vector<Variant> resolveEnd(const Design::Points& points, const Variant& base, PathEnd end);
    bool addPoint(const Design::Object& object, PathEnd end, Variant& pins,
                  std::vector<Variant>& outputs) const;
    bool addPin(Design::PinId pin, PathEnd end, Variant& pins, std::vector<Variant>& outputs) const;
    bool isClockSource(Design::PinId pin) const { return network_.isClockSource(network_.sourceOf(pin)); }
    NamedPins clockPinsBehind(Design::PinId output) const;
    void tellOfNoPoint(const Design::Object& object, Design::ExceptionId exception, PathEnd end);
    void addNodes(const Design::Object& object, Mentions& list) const;
    void addPinNodes(Design::PinId pin, By by, Mentions& list) const;
    void addDrivers(Design::NetId net, Mentions& list) const;
    std::string nameOf(const Design::Object& object) const;
    const Design::Exception& stated(Design::ExceptionId exception) const {
        return constraints_.exceptions[exception];
    }

    const Design::RoutedDesign& design_;
    const Model::Network& network_;
    const Design::Constraints& constraints_;
    Base::Diagnostics& diagnostics_;
};

// Delays of clocks are known for each edge, all others for both edges together.
void Resolver::noteEdges(const Design::Exception& exception) {
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

std::vector<Variant> Resolver::variantsOf(Design::ExceptionId exception) {
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
    base.from.isGiven = stated.from.has_value();
    base.to.isGiven = stated.to.has_value();
    std::vector<Variant> variants = {base};
    if (stated.from)
        variants = resolveEnd(*stated.from, base, PathEnd::from);
    if (!stated.to)
        return variants;
    std::vector<Variant> both;
    for (const Variant& variant : variants)
        std::ranges::move(resolveEnd(*stated.to, variant, PathEnd::to), std::back_inserter(both));
    return both;
}

// The variants of one end: its clocks, its start or end points, its registers through an output, and what is
// no such point, through which the paths go.
std::vector<Variant> Resolver::resolveEnd(const Design::Points& points, const Variant& base, PathEnd end) {
    std::vector<Variant> outputs;
    Variant clocks = base, pins = base, within = base;
    Mentions others;
    clocks.at(end).edge = points.transition;
    for (const Design::Object& object : points.objects)
        if (object.kind == ObjectKind::clock) {
            clocks.at(end).clocks.emplace_back(object.index);
        } else if (!addPoint(object, end, pins, outputs)) {
            tellOfNoPoint(object, base.exception, end);
            addNodes(object, others);
        }
    sortOnce(clocks.at(end).clocks);
    sortOnce(others);
    pins.at(end).points.sort();
    std::vector<Variant> variants;
    if (!clocks.at(end).clocks.empty())
        variants.push_back(std::move(clocks));
    if (!pins.at(end).points.empty())
        variants.push_back(std::move(pins));
    std::ranges::move(outputs, std::back_inserter(variants));
    if (!others.empty()) {
        within.at(end).isGiven = false;
        auto& throughs = within.throughs;
        throughs.insert(end == PathEnd::from ? throughs.begin() : throughs.end(), std::move(others));
        variants.push_back(std::move(within));
    }
    return variants;
}

void Resolver::tellOfNoPoint(const Design::Object& object, Design::ExceptionId exception, PathEnd end) {
    const Design::Exception& stated = this->stated(exception);
    const bool from = end == PathEnd::from;
    const std::string text = std::string(commandOf(stated.kind)) + ": " + (from ? "-from" : "-to") + " '" +
                             nameOf(object) + "' is no " + (from ? "start" : "end") + " point";
    if (isDelay(stated.kind))
        throw Base::BadInput(constraints_.place(stated.origin),
                             text + ", which would cut the paths there; expected " +
                                 (from ? "a clock, a register or its clock pin, or an input port"
                                       : "a clock, a register or its data pin, or an output port"));
    diagnostics_.warning(constraints_.place(stated.origin), text + ": taken as -through");
}

// Of an object at the end of a path that is no clock.
std::string Resolver::nameOf(const Design::Object& object) const {
    return object.kind == ObjectKind::cell ? std::string(design_.cellName(Design::CellId(object.index)))
                                           : design_.pinName(Design::PinId(object.index));
}

// Whether the object is a start or end point.
bool Resolver::addPoint(const Design::Object& object, PathEnd end, Variant& pins,
                        std::vector<Variant>& outputs) const {
    if (object.kind == ObjectKind::net)
        return false;
    if (object.kind != ObjectKind::cell)
        return addPin(Design::PinId(object.index), end, pins, outputs);
    const Design::CellId cell(object.index);
    bool found = false;
    for (const Design::PinId pin : design_.pinsOfCell(cell))
        if (end == PathEnd::to
                ? design_.isDataPin(pin)
                : design_.isClockPin(pin) || (design_.isRegister(cell) && isClockSource(pin))) {
            pins.at(end).points.add(pin, By::cell);
            found = true;
        }
    return found;
}

bool Resolver::addPin(Design::PinId pin, PathEnd end, Variant& pins, std::vector<Variant>& outputs) const {
    const Design::Direction direction = design_.pins[pin].direction;
    if (end == PathEnd::to) {
        if (design_.isPort(pin) ? direction == Design::Direction::input : !design_.isDataPin(pin))
            return false;
        pins.to.points.add(pin, By::pin);
        return true;
    }
    if (isClockSource(pin) ||
        (design_.isPort(pin) ? direction != Design::Direction::output : design_.isClockPin(pin))) {
        pins.from.points.add(pin, By::pin);
        return true;
    }
    if (!design_.isRegisterOutput(pin))
        return false;
    // The register, through that output.
    Variant through = pins;
    through.from.points = clockPinsBehind(pin);
    through.fromOutput = pin;
    Mentions output;
    network_.eachCopy(network_.sourceOf(pin), [&](Model::NodeId node) { output.push_back({node}); });
    through.throughs.insert(through.throughs.begin(), std::move(output));
    outputs.push_back(std::move(through));
    return true;
}

NamedPins Resolver::clockPinsBehind(Design::PinId output) const {
    NamedPins clockPins;
    for (const auto number : network_.in(network_.sourceOf(output)))
        if (const Model::Arc& arc = network_.arcs()[number]; arc.launch)
            clockPins.add(network_.pinOf(arc.from), By::output);
    clockPins.sort();
    return clockPins;
}

// --- Through points ---

// Paths pass a cell at its outputs, or end at its data pins.
void Resolver::addNodes(const Design::Object& object, Mentions& list) const {
    switch (object.kind) {
    case ObjectKind::cell:
        for (const Design::PinId pin : design_.pinsOfCell(Design::CellId(object.index)))
            if (design_.isDataPin(pin) || design_.pins[pin].direction != Design::Direction::input)
                addPinNodes(pin, By::cell, list);
        break;
    case ObjectKind::net:
        addDrivers(Design::NetId(object.index), list);
        break;
    case ObjectKind::clock:
        break;
    default:
        addPinNodes(Design::PinId(object.index), By::pin, list);
    }
}

void Resolver::addDrivers(Design::NetId net, Mentions& list) const {
    for (const Design::PinId pin : design_.pinsOfNet(net)) {
        const Design::Direction direction = design_.pins[pin].direction;
        if (direction == Design::Direction::inout ||
            direction == (design_.isPort(pin) ? Design::Direction::input : Design::Direction::output))
            network_.eachCopy(network_.sourceOf(pin), [&](Model::NodeId node) {
                list.push_back({node, By::net});
            });
    }
}

void Resolver::addPinNodes(Design::PinId pin, By by, Mentions& list) const {
    const auto add = [&](Model::NodeId node) { list.push_back({node, by}); };
    if (!design_.isClockPin(pin)) {
        network_.eachCopy(network_.sinkOf(pin), add);
        if (network_.sourceOf(pin) != network_.sinkOf(pin))
            network_.eachCopy(network_.sourceOf(pin), add);
        return;
    }
    // A path that starts at a clock pin goes on through what it launches.
    for (const auto number : network_.out(network_.sinkOf(pin)))
        if (const Model::Arc& arc = network_.arcs()[number]; arc.kind == Model::ArcKind::launch) {
            if (by == By::cell)
                list.push_back({arc.to, by});
            else
                list.push_back({arc.to, By::clockPin, design_.pins[pin].name});
        }
}

// --- Ports that a delay times ---

// A maximum or minimum delay times what it covers, without any other delay: the ports of a list, or all of
// them if there is no list at that end. A list of clocks names no port that only the delay times, because no
// clock is there.
Model::TimedPorts Resolver::timedPorts(const Variants& variants) const {
    Model::TimedPorts timed;
    bool allInputs = false, allOutputs = false;
    for (const Variant& variant : variants) {
        if (!isDelay(stated(variant.exception).kind))
            continue;
        for (const Design::PinId pin : variant.from.points.pins)
            if (design_.isPort(pin))
                timed.inputs.insert(pin);
        for (const Design::PinId pin : variant.to.points.pins)
            if (design_.isPort(pin))
                timed.outputs.insert(pin);
        allInputs |= !variant.from.isGiven;
        allOutputs |= !variant.to.isGiven;
    }
    for (const Design::PinId pin : design_.ports()) {
        const Design::Direction direction = design_.pins[pin].direction;
        if (allInputs && direction != Design::Direction::output)
            timed.inputs.insert(pin);
        if (allOutputs && direction != Design::Direction::input)
            timed.outputs.insert(pin);
    }
    return timed;
}

} // namespace

Resolved resolve(const Design::RoutedDesign& design, const Model::Network& network,
                 const Design::Constraints& constraints, Base::Diagnostics& diagnostics) {
    Resolver resolver(design, network, constraints, diagnostics);
    Resolved resolved;
    for (const auto exception : Base::firstIds<Design::ExceptionId>(constraints.exceptions.size()))
        std::ranges::move(resolver.variantsOf(exception), std::back_inserter(resolved.variants));
    resolved.timedPorts = resolver.timedPorts(resolved.variants);
    return resolved;
}

} // namespace Exceptions
