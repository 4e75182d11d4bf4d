// Objects by handle or bare name, and the messages that all commands share.
#include "readers/sdc/Session.h"

#include "readers/sdc/Objects.h"

#include <algorithm>
#include <array>
#include <unordered_set>

namespace Readers::Sdc {

namespace {

constexpr std::size_t describedObjects = 3, describedLength = 160;
constexpr unsigned printedLimit = 100;

std::string prefix(const Arguments& arguments, std::string_view option) {
    return arguments.command() + ": " + (option.empty() ? "" : std::string(option) + ": ");
}

bool contains(Kinds kinds, Design::ObjectKind kind) { return std::ranges::find(kinds, kind) != kinds.end(); }

// What drives the net: cells' outputs and input ports.
void addDrivers(const Design::RoutedDesign& design, Design::NetId net, std::vector<Design::PinId>& pins) {
    for (const Design::PinId pin : design.pinsOfNet(net)) {
        const Design::Direction direction = design.pins[pin].direction;
        const Design::Direction driving =
            design.isPort(pin) ? Design::Direction::input : Design::Direction::output;
        if (direction == driving || direction == Design::Direction::inout)
            pins.push_back(pin);
    }
}

} // namespace

std::string kindNames(Kinds kinds) {
    std::string text;
    std::size_t left = kinds.size();
    for (const Design::ObjectKind kind : kinds) {
        text += kindName(kind);
        --left;
        text += left > 1 ? ", " : left == 1 ? " or " : "";
    }
    return text;
}

void removeDuplicates(std::vector<Design::Object>& objects) {
    // What a pattern finds is in order.
    if (std::ranges::adjacent_find(objects, std::greater_equal{}) == objects.end())
        return;
    std::unordered_set<std::uint64_t> seen;
    seen.reserve(objects.size());
    std::erase_if(objects, [&seen](const Design::Object& object) {
        return !seen.insert((std::uint64_t{object.index} << 8) | static_cast<std::uint64_t>(object.kind))
                    .second;
    });
}

// Lists in lists, as [list [get_pins ...] [get_cells ...]] makes them, count as one. A name may have spaces.
std::vector<Tcl_Obj*> Session::flatElementsOf(Tcl_Obj* value) const {
    const auto isName = [&](Tcl_Obj* element) {
        using enum Design::ObjectKind;
        std::vector<Design::Object> found;
        return std::ranges::any_of(std::array{clock, port, cell, pin, net}, [&](Design::ObjectKind kind) {
            return finder.findExact(kind, Tcl_GetString(element), found);
        });
    };
    std::vector<Tcl_Obj*> flat, open = elementsOf(value);
    std::ranges::reverse(open);
    while (!open.empty()) {
        Tcl_Obj* const element = open.back();
        open.pop_back();
        std::vector<Tcl_Obj*> inner;
        if (!finder.toKnown(element))
            inner = elementsOf(element);
        if (inner.size() > 1 && !isName(element))
            open.insert(open.end(), inner.rbegin(), inner.rend());
        else
            flat.push_back(element);
    }
    return flat;
}

std::string describe(const Session& session, Words words) {
    std::string text;
    for (Tcl_Obj* const word : words) {
        const std::vector<Tcl_Obj*> elements = session.flatElementsOf(word);
        text += text.empty() ? "" : " ";
        text += elements.size() == 1 ? "" : "{";
        for (std::size_t i = 0; i < std::min(elements.size(), describedObjects); ++i) {
            const std::optional<Design::Object> object = session.finder.toKnown(elements[i]);
            text += i == 0 ? "" : " ";
            text += object ? session.finder.name(*object) : Tcl_GetString(elements[i]);
        }
        if (elements.size() > describedObjects)
            text += " and " + std::to_string(elements.size() - describedObjects) + " more";
        text += elements.size() == 1 ? "" : "}";
        if (text.size() > describedLength)
            return text.substr(0, describedLength) + " ...";
    }
    return text;
}

Session::Session(const Design::RoutedDesign& theDesign, Base::Diagnostics& theDiagnostics,
                 const Limits& limits)
    : design(theDesign), diagnostics(theDiagnostics), tcl(result, limits),
      finder(theDesign, result.clocks, tcl.raw()) {
    tcl.onNote = [this](Base::Place place, std::string text) {
        diagnostics.note(std::move(place), std::move(text));
    };
    addClockCommands(*this);
    addLatencyCommands(*this);
    addPortCommands(*this);
    addExceptionCommands(*this);
    addQueryCommands(*this);
    addCollectionCommands(*this);
    addOtherCommands(*this);
}

void Session::add(const char* name, Command command) {
    tcl.define(name, [this, command](Words words) {
        try {
            command(*this, words);
        } catch (const NoObjects& nothing) {
            if (!tcl.lacksClocks()) // after an error: it may well be what misses here
                warning(nothing.text + ": the command has no effect");
        }
    });
}

void Session::unmatched(std::string text) {
    ++result.unmatched;
    warning(std::move(text));
}

void Session::unmatched(std::string text, Kinds kinds) {
    if (!tcl.lacksClocks() || !contains(kinds, Design::ObjectKind::clock))
        unmatched(std::move(text));
}

std::vector<Design::ClockId> Session::clocksOn(Design::PinId pin) const {
    std::vector<Design::ClockId> clocks;
    const auto known = clocksOfPin.find(pin);
    if (known == clocksOfPin.end())
        return clocks;
    for (const Design::ClockId index : known->second) {
        const Design::Clock& clock = result.clocks[index];
        if (!clock.removed && std::ranges::find(clock.targets, pin) != clock.targets.end())
            clocks.push_back(index);
    }
    std::ranges::sort(clocks);
    return clocks;
}

void Session::withoutEffect(const std::string& command) {
    auto known = std::ranges::find(ignored_, command, &Ignored::command);
    if (known == ignored_.end())
        known = ignored_.insert(ignored_.end(), {command, tcl.origin(), 0});
    ++known->count;
}

void Session::noteWithoutEffect() {
    for (const Ignored& command : ignored_) {
        const std::string times = command.count == 1 ? "" : " (" + std::to_string(command.count) + " times)";
        diagnostics.note(result.place(command.first),
                         command.command + " is accepted, and not applied" + times);
    }
    ignored_.clear();
}

void Session::print(const std::string& text) {
    if (printed_ == printedLimit)
        note("puts: the script's further output is left out");
    if (printed_++ < printedLimit)
        note("puts: " + text);
}

Base::Decimal Session::time(Base::Decimal value) const {
    value.exponent += value.isZero() ? 0 : timeExponent;
    return value;
}

// --- Objects ---

void Session::resolveHandle(const Arguments& arguments, std::string_view option, const Design::Object& object,
                            Kinds kinds, std::vector<Design::Object>& found) {
    if (!contains(kinds, object.kind))
        arguments.fail((option.empty() ? "" : std::string(option) + ": ") + "expected a " + kindNames(kinds) +
                       ", found the " + std::string(kindName(object.kind)) + " '" + finder.name(object) +
                       "'");
    if (finder.exists(object))
        found.push_back(object);
    else
        unmatched(prefix(arguments, option) + "the " + std::string(kindName(object.kind)) + " '" +
                  finder.name(object) + "' was replaced");
}

void Session::resolveName(const Arguments& arguments, std::string_view option, Tcl_Obj* value, Kinds kinds,
                          std::vector<Design::Object>& found) {
    const std::string_view name = Tcl_GetString(value);
    for (const Design::ObjectKind kind : kinds)
        if (finder.findExact(kind, name, found))
            return;
    const std::size_t before = found.size();
    for (const Design::ObjectKind kind : kinds) {
        finder.find(kind, name, {}, found);
        if (found.size() != before)
            return;
    }
    unmatched(prefix(arguments, option) + "no " + kindNames(kinds) + " matches '" + std::string(name) + "'",
              kinds);
}

std::vector<Design::Object> Session::resolve(const Arguments& arguments, std::string_view option,
                                             Tcl_Obj* value, Kinds kinds) {
    std::vector<Design::Object> found;
    for (Tcl_Obj* const element : flatElementsOf(value)) {
        if (const std::optional<Design::Object> object = finder.toKnown(element))
            resolveHandle(arguments, option, *object, kinds, found);
        else
            resolveName(arguments, option, element, kinds, found);
    }
    removeDuplicates(found);
    return found;
}

std::vector<Design::Object> Session::objects(const Arguments& arguments, std::string_view option,
                                             Tcl_Obj* value, Kinds kinds) {
    std::vector<Design::Object> found = resolve(arguments, option, value, kinds);
    if (found.empty())
        throw NoObjects{prefix(arguments, option) + "no objects"};
    return found;
}

Design::Object Session::one(const Arguments& arguments, std::string_view option, Kinds kinds) {
    const std::vector<Design::Object> found = objects(arguments, option, arguments.find(option), kinds);
    if (found.size() > 1)
        arguments.fail(std::string(option) + ": expected one " + kindNames(kinds) + ", found " +
                       std::to_string(found.size()));
    return found.front();
}

std::vector<Design::PinId> Session::sources(const Arguments& arguments, std::string_view option,
                                            Tcl_Obj* value) {
    std::vector<Design::PinId> pins;
    for (const Design::Object& object :
         objects(arguments, option, value,
                 {Design::ObjectKind::port, Design::ObjectKind::pin, Design::ObjectKind::net})) {
        const std::size_t before = pins.size();
        if (object.kind == Design::ObjectKind::net)
            addDrivers(design, object.net(), pins);
        else
            pins.push_back(object.pin());
        if (pins.size() == before)
            unmatched(prefix(arguments, option) + "nothing drives the net '" + finder.name(object) + "'");
    }
    std::unordered_set<Design::PinId> seen;
    std::erase_if(pins, [&seen](Design::PinId pin) { return !seen.insert(pin).second; });
    if (pins.empty())
        throw NoObjects{prefix(arguments, option) + "no objects"};
    return pins;
}

} // namespace Readers::Sdc
