// Takes the events of an SDF file into the design. The connections are made in Connect.cpp.
#include "readers/sdf/Annotate.h"
#include "readers/sdf/Values.h"

#include <algorithm>

namespace Readers {

namespace {

std::string shown(const Sdf::Path& path) {
    return path.instance.empty() ? std::string(path.pin)
                                 : std::string(path.instance).append("/").append(path.pin);
}

} // namespace

std::size_t Annotator::KeyHash::operator()(const Key& key) const {
    return Base::mixed(Base::pairKey(key.from, key.to) ^ (static_cast<std::uint64_t>(key.edge) << 61));
}

Annotator::Annotator(Design::RoutedDesign& design, const Design::Netlist* netlist,
                     const AnnotateOptions& options, std::string file, Base::Diagnostics& diagnostics)
    : design_(design), hasNetlist_(netlist != nullptr), options_(options), file_(std::move(file)),
      diagnostics_(diagnostics) {
    if (netlist)
        takeNetlist(*netlist);
}

void Annotator::takeNetlist(const Design::Netlist& netlist) {
    design_.name = netlist.top;
    design_.reserve(netlist.pins.size() + netlist.ports.size());
    arcs_.reserve(netlist.pins.size());
    wires_.reserve(netlist.pins.size());
    std::vector<Base::Name> renamed(netlist.names.size());
    for (std::size_t name = 0; name < renamed.size(); ++name)
        renamed[name] = design_.names.add(netlist.names[Base::Name{static_cast<std::uint32_t>(name)}]);
    const auto in = [&](Base::Name name) { return renamed[static_cast<std::size_t>(name)]; };

    Base::IndexVector<Design::Netlist::NetId, Design::NetId> nets;
    for (const Base::Name net : netlist.nets)
        nets.push_back(design_.addNet(in(net)));
    const auto addPin = [&](Design::CellId cell, Base::Name name, Design::Direction direction,
                            Design::Netlist::NetId net) {
        const Design::PinId added = design_.addPin(cell, in(name));
        Design::Pin& pin = design_.pins[added];
        pin.direction = direction;
        pin.net = net == Base::none ? Design::NetId() : nets[net];
        return added;
    };
    for (const Design::Netlist::Port& port : netlist.ports)
        addPin(Base::none, port.name, port.direction, port.net);
    auto inverted = netlist.invertedPins.begin();
    for (const Design::Netlist::Cell& cell : netlist.cells) {
        const Design::CellId number = design_.addCell(in(cell.name), in(cell.type));
        Design::Netlist::PinId pin = cell.firstPin;
        for (unsigned count = 0; count < cell.pinCount; ++count, ++pin) {
            const Design::Netlist::Pin& of = netlist.pins[pin];
            const Design::PinId added = addPin(number, of.name, of.direction, of.net);
            if (inverted != netlist.invertedPins.end() && *inverted == pin) {
                invertedPins_.push_back(added);
                ++inverted;
            }
        }
        if (std::ranges::binary_search(
                netlist.expressionCells,
                Design::Netlist::CellId(static_cast<std::uint32_t>(&cell - netlist.cells.data()))))
            expressionCells_.push_back(number);
    }
    settled_.resize(design_.cells.size());
}

// --- Names ---

void Annotator::header(const Sdf::Header& header) {
    fileScale_ = header.scale;
    divider_ = header.divider;
    design_.divider = header.divider;
    if (design_.name.empty())
        design_.name = header.design;
}

// --- Delays ---

Design::Interval Annotator::sum(const Design::Interval& a, const Design::Interval& b,
                                Base::Position where) const {
    const auto add = [&](std::int64_t x, std::int64_t y) {
        if (x + y > largestValue || x + y < -largestValue)
            throw Base::BadInput(where.in(file_), "the increments do not fit: expected at most " +
                                                      std::to_string(largestValue) + " units of 1e" +
                                                      std::to_string(options_.scale) + " s in all");
        return static_cast<std::int32_t>(x + y);
    };
    return {add(a.early, b.early), add(a.late, b.late)};
}

void Annotator::update(Design::Interval& known, const Design::Interval& delay, bool increment,
                       Base::Position where) const {
    known = increment ? sum(known, delay, where) : delay;
}

// The file has an entry for a pin, and the netlist does not have the other end.
void Annotator::touchHalf(Design::CellId cell, std::string_view pin) {
    if (pin.empty())
        return;
    if (const Design::PinId number = design_.findPin(cell, pin); number != Base::none)
        touched_.insert(number);
}

void Annotator::setArc(Design::PinId from, Design::PinId to, Design::Transition edge, bool wire,
                       const Given& given, bool conditional, bool increment, Base::Position where) {
    const Design::ArcId number = design_.arcs.next();
    const auto [place, isNew] = arcs_.try_emplace(Key{from, to, edge}, number);
    if (isNew) {
        design_.arcs.push_back({.from = from,
                                .to = to,
                                .fromEdge = edge,
                                .wire = wire,
                                .rises = given.rises,
                                .falls = given.falls,
                                .delay = given.delay});
        if (conditional)
            conditioned_.try_emplace(number, Conditioned{given.delay, std::nullopt});
        return;
    }
    Design::Arc& arc = design_.arcs[place->second];
    // An entry without a value for an edge leaves what was said of that edge.
    const bool leavesOne = (arc.rises && !given.rises) || (arc.falls && !given.falls);
    arc.rises = arc.rises || given.rises;
    arc.falls = arc.falls || given.falls;
    if (conditional || conditioned_.contains(place->second))
        mergeConditions(place->second, given, conditional, increment, where);
    else if (leavesOne)
        widen(arc.delay, increment ? sum(arc.delay, given.delay, where) : given.delay);
    else
        update(arc.delay, given.delay, increment, where);
}

// The earliest and the latest over all conditions and over what holds without one, in any order of writing.
// The conditions are not distinguished, so an increment to one of them may be one to any.
void Annotator::mergeConditions(Design::ArcId arc, const Given& given, bool conditional, bool increment,
                                Base::Position where) {
    Design::Interval& delay = design_.arcs[arc].delay;
    const auto [place, isNew] = conditioned_.try_emplace(arc, Conditioned{std::nullopt, delay});
    Conditioned& known = place.value();
    const auto join = [](std::optional<Design::Interval>& into, const Design::Interval& other) {
        if (into)
            widen(*into, other);
        else
            into = other;
    };
    if (conditional)
        join(known.with, increment ? sum(delay, given.delay, where) : given.delay);
    else if (increment)
        for (std::optional<Design::Interval>* part : {&known.with, &known.without})
            *part = *part ? std::optional(sum(**part, given.delay, where)) : std::nullopt;
    else if (given.rises && given.falls)
        known.without = given.delay;
    else
        join(known.without, given.delay);
    delay = known.with ? *known.with : *known.without;
    if (known.without)
        widen(delay, *known.without);
}

void Annotator::ioPath(const Sdf::Event& from, const Sdf::Path& to, std::span<const Sdf::Value> values,
                       bool conditional, bool increment, Base::Position where) {
    if (atTop_) {
        count("cell delays of the top itself", Base::Severity::warning, where, shown(from.path));
        return;
    }
    countLost(where);
    const std::optional<Given> given = givenBy(values, where);
    for (const Design::CellId cell : cells_) {
        const Design::PinId source = resolveInCell(cell, from.path, where);
        const Design::PinId target = source == Base::none ? Design::PinId() : resolveInCell(cell, to, where);
        touchHalf(cell, source == Base::none   ? to.pin
                        : target == Base::none ? from.path.pin
                                               : std::string_view());
        if (target == Base::none || source == target)
            continue;
        if (given)
            setArc(source, target, from.edge, false, *given, conditional || from.conditional, increment,
                   where);
    }
}

void Annotator::setWire(Design::PinId from, Design::PinId to, const Design::Interval& delay, bool increment,
                        Base::Position where) {
    if (!hasNetlist_) {
        setArc(from, to, Design::Transition::any, true, {delay}, false, increment, where);
        return;
    }
    const auto [place, isNew] = wires_.try_emplace(Key{from, to, Design::Transition::any}, delay);
    if (!isNew)
        update(place.value(), delay, increment, where);
}

void Annotator::interconnect(const Sdf::Path& from, const Sdf::Path& to, std::span<const Sdf::Value> values,
                             bool increment, Base::Position where) {
    // A port does not show that all names have a prefix: an instance does.
    if (hasNetlist_ && atTop_ && prefix_.empty() && straight_.empty() && !to.instance.empty())
        findInstance({to.instance, to.escaped, {}, where, from.instance});
    const Design::PinId source = resolve(from, where);
    const Design::PinId target = source == Base::none ? Design::PinId() : resolve(to, where);
    if (target == Base::none)
        return;
    const std::optional<Design::Interval> delay = intervalOf(values, where);
    if (hasNetlist_ &&
        (design_.pins[source].net == Base::none || design_.pins[source].net != design_.pins[target].net)) {
        count("delays between pins that the netlist does not connect", Base::Severity::warning, where,
              shown(from) + " to " + shown(to));
        return;
    }
    setWire(source, target, delay.value_or(Design::Interval{}), increment, where);
}

void Annotator::port(const Sdf::Path& to, std::span<const Sdf::Value> values, bool increment,
                     Base::Position where) {
    if (!hasNetlist_)
        throw Base::BadInput(where.in(file_), "PORT delays do not say what drives '" + shown(to) +
                                                  "': expected a netlist (--netlist)");
    const std::optional<Design::Interval> delay = intervalOf(values, where);
    const Design::PinId pin = cells_.size() == 1 && to.instance.empty()
                                  ? pinOf(cells_.front(), to.pin, where, false)
                                  : resolve(to, where);
    if (pin == Base::none || !delay)
        return;
    update(loads_[pin], *delay, increment, where);
    if (const Design::CellId cell = design_.pins[pin].cell;
        cell != Base::none && (loadedCells_.empty() || loadedCells_.back().first != cell))
        loadedCells_.emplace_back(cell, where);
}

// NETDELAY names the net, or the pin that drives it.
void Annotator::netDelay(const Sdf::Path& net, std::span<const Sdf::Value> values, bool increment,
                         Base::Position where) {
    if (!hasNetlist_)
        throw Base::BadInput(where.in(file_), "NETDELAY does not say what '" + shown(net) +
                                                  "' connects: expected a netlist (--netlist)");
    const std::optional<Design::Interval> delay = intervalOf(values, where);
    Design::NetId number = design_.findNet(shown(net));
    if (number == Base::none)
        if (const Design::PinId pin = resolve(net, where); pin != Base::none)
            number = design_.pins[pin].net;
    if (number == Base::none || !delay)
        return;
    update(netDelays_[number], *delay, increment, where);
}

// The delay of a whole cell: of all arcs to the output. Applied at the end, when all arcs of the cell are
// known.
void Annotator::device(const std::optional<Sdf::Path>& output, std::span<const Sdf::Value> values,
                       bool increment, Base::Position where) {
    countLost(where);
    const std::optional<Design::Interval> delay = intervalOf(values, where);
    if (!delay)
        return;
    for (const Design::CellId cell : cells_) {
        const Design::PinId target = output ? resolveInCell(cell, *output, where) : Design::PinId();
        if (!output || target != Base::none)
            devices_.push_back({cell, target, *delay, increment, where});
    }
}

// --- Checks ---

void Annotator::addCheck(Design::PinId data, const Sdf::Event& clock, Design::PinId clockPin,
                         bool asynchronous, std::optional<std::int32_t> setup,
                         std::optional<std::int32_t> hold) {
    if (!setup && !hold)
        return;
    const auto [place, isNew] = checks_.try_emplace(Key{data, clockPin, clock.edge}, design_.checks.next());
    if (isNew)
        design_.checks.push_back({.data = data, .clock = clockPin, .clockEdge = clock.edge});
    Design::Check& check = design_.checks[place->second];
    check.asynchronous |= asynchronous;
    if (setup)
        check.setup = std::max(check.setup.value_or(INT32_MIN), *setup);
    if (hold)
        check.hold = std::max(check.hold.value_or(INT32_MIN), *hold);
}

void Annotator::addPulseCheck(Design::PinId pin, const Sdf::Event& event, bool period,
                              std::int32_t required) {
    const Design::Transition edge = period ? Design::Transition::any : event.edge;
    // A period check has no edge, and no target in its key. That of a width check is the pin itself.
    const auto [place, isNew] =
        pulseChecks_.try_emplace(Key{pin, period ? Design::PinId() : pin, edge}, design_.pulseChecks.next());
    if (isNew)
        design_.pulseChecks.push_back({.pin = pin, .period = period, .edge = edge, .required = required});
    Design::PulseCheck& check = design_.pulseChecks[place->second];
    check.required = std::max(check.required, required);
}

void Annotator::check(Sdf::CheckKind kind, const Sdf::Event& data, const Sdf::Event& clock,
                      std::span<const Sdf::Value> values, Base::Position where) {
    using enum Sdf::CheckKind;
    if (kind == skew || kind == noChange) {
        count(kind == skew ? "SKEW checks (not used)" : "NOCHANGE checks (not used)", Base::Severity::note,
              where);
        return;
    }
    countLost(where);
    const std::optional<std::int32_t> first = checkValue(values[0], where);
    const std::optional<std::int32_t> second =
        values.size() > 1 ? checkValue(values[1], where) : std::optional<std::int32_t>();
    for (const Design::CellId cell : cells_) {
        const Design::PinId clockPin = resolveInCell(cell, clock.path, where);
        if (clockPin == Base::none) {
            touchHalf(cell, data.path.pin);
            continue;
        }
        if (kind == width || kind == period) {
            if (first)
                addPulseCheck(clockPin, clock, kind == period, *first);
            continue;
        }
        const Design::PinId dataPin = resolveInCell(cell, data.path, where);
        if (dataPin == Base::none || dataPin == clockPin)
            continue;
        const bool asynchronous = kind == recovery || kind == removal || kind == recoveryRemoval;
        if (kind == setup || kind == recovery)
            addCheck(dataPin, clock, clockPin, asynchronous, first, std::nullopt);
        else if (kind == hold || kind == removal)
            addCheck(dataPin, clock, clockPin, asynchronous, std::nullopt, first);
        else
            addCheck(dataPin, clock, clockPin, asynchronous, first, second);
    }
}

void Annotator::ignored(std::string_view keyword, Base::Position where) {
    count((std::string(keyword) + " entries (not used)").c_str(), Base::Severity::note, where);
}

// --- Counts ---

void Annotator::count(const char* what, Base::Severity severity, Base::Position where, std::string example) {
    Counted& counted = counted_[what];
    if (counted.count++ == 0) {
        counted.first = where;
        counted.example = std::move(example);
        counted.severity = severity;
    }
}

// Checks that are no end points, since what they refer to is no clock.
void Annotator::countIdleChecks() {
    for (const Design::Check& check : design_.checks)
        if (!design_.isClockPin(check.clock))
            count("checks of a set or a reset against another (not used)", Base::Severity::note, {},
                  design_.pinName(check.data) + " against " + design_.pinName(check.clock));
}

void Annotator::reportCounts() {
    for (const auto& [what, counted] : counted_) {
        std::string text = std::to_string(counted.count) + " " + what;
        if (!counted.example.empty())
            text += ", first '" + counted.example + "'";
        diagnostics_.add({counted.severity, counted.first.in(file_), std::move(text)});
    }
}

} // namespace Readers
