// Modules from the events of a JSON parser.
//
// What the reader does not use (parameters, attributes, routing) passes by without being kept, so memory is
// that of the modules and of the longest text. The way to the parser's place is a stack of slots; each slot
// states which values are allowed there. It is as deep as the format, whatever the nesting of the file.
#include "readers/netlist/Json.h"

#include "readers/netlist/Flatten.h"
#include "readers/netlist/JsonModules.h"
#include "readers/netlist/JsonSlots.h"
#include "readers/netlist/JsonText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <limits>

namespace Readers {

namespace {

using Slot = JsonSlot;
using Kind = JsonKind;
using Scalar = JsonScalar;

constexpr std::size_t widest = std::size_t{1} << 20; // of ports, connections and nets

// What nlohmann's parser calls.
class JsonReader {
public:
    JsonReader(JsonText& text, Modules& modules) : text_(text), modules_(modules) {}

    bool null() { return scalar({Kind::null}); }
    bool boolean(bool value) { return scalar({Kind::boolean, value ? 1 : 0}); }
    bool number_integer(std::int64_t value) { return scalar({Kind::number, value}); }
    bool number_unsigned(std::uint64_t value) {
        constexpr std::uint64_t limit = std::numeric_limits<std::int64_t>::max();
        return scalar({Kind::number, static_cast<std::int64_t>(std::min(value, limit))});
    }
    bool number_float(double, const std::string&) { return scalar({Kind::fraction}); }
    bool string(const std::string& value) { return scalar({Kind::string, 0, value}); }
    bool binary(const std::vector<std::uint8_t>&) { return true; } // not in a text
    bool start_object(std::size_t) { return open(Kind::object); }
    bool start_array(std::size_t) { return open(Kind::array); }
    bool end_object() { return close(); }
    bool end_array() { return close(); }
    bool key(const std::string& key);
    bool parse_error(std::size_t, const std::string&, const std::exception& error);

    bool hasModules() const { return hasModules_; }
    const Base::ErrorList& errors() const { return errors_; }

private:
    Slot memberOf(Slot in, const std::string& key);
    bool scalar(const Scalar& value);
    bool open(Kind kind);
    bool close();
    bool done(bool isNextIgnored = false) {
        text_.mark(isNextIgnored || skipped_ != 0);
        return true;
    }
    template <class Action>
    bool tryTo(Action action);
    Slot slot() const { return !open_.empty() && open_.back() == Slot::bits ? Slot::bit : next_; }

    void take(const Scalar& value);
    void finish(Slot slot);
    void startItem(const std::string& name);
    void requireBits() const;
    Design::Direction direction(const Scalar& value);
    std::int64_t integer(const Scalar& value);
    bool flag(const Scalar& value);
    ModuleNetId bit(const Scalar& value);

    std::string describe(Slot slot) const;
    void check(JsonModules::Problem problem, Slot slot);
    void check(JsonModules::Problem problem, Slot slot, const Base::Place& place) const;
    [[noreturn]] void failAtValue(Kind found, std::string_view text = {});
    [[noreturn]] void failAtLimit(const std::string& text) {
        throw Base::BadInputs({{Base::Severity::error, text_.tokenPlace(), text}});
    }

    JsonText& text_;
    JsonModules modules_;
    bool hasModules_ = false;
    std::vector<Slot> open_;
    Slot next_ = Slot::document; // what the next value is, in an object
    std::size_t skipped_ = 0;    // arrays and objects that are open and ignored
    JsonModules::Item item_;     // the port, net or cell at hand
    Slot kind_ = Slot::ignored;  // what it is
    Base::Name pin_ = noName;
    std::vector<ModuleNetId> bits_;
    Base::ErrorList errors_;
    bool isItemBad_ = false; // the item has had its error
};

// Whether there was no error.
template <class Action>
bool JsonReader::tryTo(Action action) {
    try {
        action();
        return true;
    } catch (const Base::BadInputs&) { // there are too many, or too much
        throw;
    } catch (const Base::BadInput& error) {
        errors_.add(error);
        isItemBad_ = true;
        return false;
    }
}

// --- Events ---

bool JsonReader::scalar(const Scalar& value) {
    if (skipped_ == 0 && slot() != Slot::ignored)
        tryTo([&] { take(value); });
    return done();
}

bool JsonReader::open(Kind kind) {
    constexpr std::size_t deepest = 1'000'000;
    const Slot opened = slot();
    if (skipped_ == deepest)
        failAtLimit("more than " + std::to_string(deepest) + " arrays and objects within each other");
    if (skipped_ != 0 || opened == Slot::ignored ||
        (!takes(opened, kind) && !tryTo([&] { failAtValue(kind); }))) {
        ++skipped_;
        return done();
    }
    if (opened == Slot::bits) {
        bits_.clear();
        item_.hasBits = true;
    }
    hasModules_ = hasModules_ || opened == Slot::modules;
    open_.push_back(opened);
    return done();
}

bool JsonReader::close() {
    if (skipped_ != 0) {
        --skipped_;
        return done();
    }
    const Slot closed = open_.back();
    open_.pop_back();
    tryTo([&] { finish(closed); });
    return done();
}

bool JsonReader::key(const std::string& key) {
    if (skipped_ != 0)
        return done();
    if (!tryTo([&] { next_ = memberOf(open_.back(), key); }))
        next_ = Slot::ignored;
    return done(next_ == Slot::ignored);
}

// Returns the slot of the value after the key.
Slot JsonReader::memberOf(Slot in, const std::string& key) {
    switch (in) {
    case Slot::modules:
        next_ = Slot::module; // for the message
        check(modules_.startModule(key), Slot::module);
        break;
    case Slot::ports:
    case Slot::nets:
    case Slot::cells:
        next_ = in == Slot::ports ? Slot::port : in == Slot::nets ? Slot::net : Slot::cell;
        startItem(key);
        break;
    case Slot::pinDirections:
    case Slot::connections:
        next_ = in == Slot::connections ? Slot::bits : Slot::pinDirection;
        pin_ = modules_.name(key);
        if (in == Slot::connections)
            check(modules_.startConnection(pin_), Slot::bits);
        break;
    default:
        next_ = member(in, key);
    }
    return next_;
}

// The parser's own words, without their code, their place and what it read before: "unexpected '}'; expected
// string literal".
bool JsonReader::parse_error(std::size_t, const std::string&, const std::exception& error) {
    constexpr std::string_view said = " - ", lastRead = "; last read: '", bracket = "] ",
                               wanted = "'; expected ";
    std::string text = error.what();
    if (const std::size_t at = text.find(said); at != std::string::npos)
        text.erase(0, at + said.size());
    else if (const std::size_t other = text.find(bracket); other != std::string::npos)
        text.erase(0, other + bracket.size());
    if (const std::size_t at = text.find(lastRead); at != std::string::npos) {
        const std::size_t next = text.rfind(wanted);
        text.erase(at, next == std::string::npos || next < at ? next : next + 1 - at);
    }
    errors_.add(text_.tokenPlace(), "not JSON: " + text);
    errors_.finish();
    return false;
}

// --- Values ---

void JsonReader::take(const Scalar& value) {
    switch (slot()) {
    case Slot::topFlag:
        modules_.module().isMarkedTop = flag(value);
        break;
    case Slot::boxFlag:
        modules_.module().isBox = modules_.module().isBox || flag(value);
        break;
    case Slot::portDirection:
        item_.direction = direction(value);
        break;
    case Slot::pinDirection:
        check(modules_.addDirection(pin_, direction(value)), Slot::pinDirection);
        break;
    case Slot::offset:
        item_.offset = integer(value);
        break;
    case Slot::upto:
        item_.upto = integer(value) != 0;
        break;
    case Slot::cellType:
        if (value.kind != Kind::string)
            failAtValue(value.kind, value.text);
        item_.type = modules_.name(value.text);
        break;
    case Slot::bit:
        if (bits_.size() == widest)
            failAtLimit(describe(Slot::bits) + ": expected at most " + std::to_string(widest) + " bits");
        bits_.push_back(bit(value));
        if (modules_.isFull())
            failAtLimit("with module '" + std::string(modules_.text(modules_.moduleName())) +
                        "' the file has more than " + std::to_string(mostNets) + " nets, or more than " +
                        std::to_string(mostBits) + " connected bits");
        break;
    default:
        failAtValue(value.kind, value.text);
    }
}

void JsonReader::finish(Slot slot) {
    if (isItemBad_ && (slot == Slot::port || slot == Slot::net || slot == Slot::cell))
        return;
    switch (slot) {
    case Slot::module:
        modules_.finishModule();
        break;
    case Slot::port:
        requireBits();
        if (item_.direction == Design::Direction::unknown)
            throw Base::BadInput(item_.place, describe(slot) + ": expected a direction");
        check(modules_.addPort(item_, bits_), slot, item_.place);
        break;
    case Slot::net:
        requireBits();
        check(modules_.addNet(item_, bits_), slot, item_.place);
        break;
    case Slot::cell:
        if (item_.type == noName)
            throw Base::BadInput(item_.place, describe(slot) + ": expected a type");
        modules_.finishCell(item_);
        break;
    case Slot::bits:
        if (open_.back() == Slot::connections)
            modules_.addConnection(pin_, bits_);
        break;
    default:
        break;
    }
}

void JsonReader::startItem(const std::string& name) {
    item_ = {};
    isItemBad_ = false;
    kind_ = next_;
    item_.name = modules_.name(name);
    item_.place = text_.tokenPlace();
    if (next_ == Slot::cell)
        check(modules_.startCell(item_.name), Slot::cell);
}

void JsonReader::requireBits() const {
    if (!item_.hasBits)
        throw Base::BadInput(item_.place, describe(kind_) + ": expected bits");
}

Design::Direction JsonReader::direction(const Scalar& value) {
    if (value.kind == Kind::string && value.text == "input")
        return Design::Direction::input;
    if (value.kind == Kind::string && value.text == "output")
        return Design::Direction::output;
    if (value.kind == Kind::string && value.text == "inout")
        return Design::Direction::inout;
    failAtValue(value.kind, value.text);
}

std::int64_t JsonReader::integer(const Scalar& value) {
    if (value.kind != Kind::number)
        failAtValue(value.kind, value.text);
    return value.number;
}

// Numbers are written as strings of binary digits too.
bool JsonReader::flag(const Scalar& value) {
    if (value.kind == Kind::string && value.text.find_first_not_of("01xz ") == std::string_view::npos)
        return value.text.find('1') != std::string_view::npos;
    if (value.kind != Kind::number && value.kind != Kind::boolean)
        failAtValue(value.kind, value.text);
    return value.number != 0;
}

ModuleNetId JsonReader::bit(const Scalar& value) {
    if (value.kind == Kind::number && value.number >= 0)
        return modules_.netOf(static_cast<std::uint64_t>(value.number));
    if (value.kind == Kind::string && (value.text == "0" || value.text == "1"))
        return constantNet;
    if (value.kind == Kind::string && (value.text == "x" || value.text == "z"))
        return Base::none;
    failAtValue(value.kind, value.text);
}

// --- Errors ---

// "bits of port 'a'".
std::string JsonReader::describe(Slot slot) const {
    const auto quoted = [&](Base::Name name) { return " '" + std::string(modules_.text(name)) + "'"; };
    const auto item = [&] {
        const char* kind = kind_ == Slot::cell ? "cell" : kind_ == Slot::port ? "port" : "net";
        return kind + quoted(item_.name);
    };
    switch (slot) {
    case Slot::document:
        return "the file";
    case Slot::modules:
        return "modules";
    case Slot::module:
        return "module" + quoted(modules_.moduleName());
    case Slot::attributes:
    case Slot::topFlag:
    case Slot::boxFlag:
        return "attributes of module" + quoted(modules_.moduleName());
    case Slot::ports:
        return "ports of module" + quoted(modules_.moduleName());
    case Slot::cells:
        return "cells of module" + quoted(modules_.moduleName());
    case Slot::nets:
        return "netnames of module" + quoted(modules_.moduleName());
    case Slot::cellType:
        return "type of " + item();
    case Slot::portDirection:
        return "direction of " + item();
    case Slot::pinDirections:
        return "port_directions of " + item();
    case Slot::pinDirection:
        return "direction of pin" + quoted(pin_) + " of " + item();
    case Slot::connections:
        return "connections of " + item();
    case Slot::offset:
        return "offset of " + item();
    case Slot::upto:
        return "upto of " + item();
    case Slot::bits:
    case Slot::bit:
        return (kind_ == Slot::cell ? "connection" + quoted(pin_) : "bits") + " of " + item();
    default:
        return item();
    }
}

void JsonReader::check(JsonModules::Problem problem, Slot slot) {
    if (!problem.empty())
        check(problem, slot, text_.tokenPlace());
}

void JsonReader::check(JsonModules::Problem problem, Slot slot, const Base::Place& place) const {
    if (!problem.empty())
        throw Base::BadInput(place, describe(slot) + " " + std::string(problem));
}

void JsonReader::failAtValue(Kind found, std::string_view text) {
    constexpr std::size_t longest = 40;
    std::string name = toString(found);
    if (found == Kind::string)
        name = "\"" + std::string(text.substr(0, longest)) + (text.size() > longest ? "..." : "") + "\"";
    throw Base::BadInput(text_.tokenPlace(),
                         describe(slot()) + ": expected " + expected(slot()) + ", found " + name);
}

} // namespace

Modules readJsonModules(Input& input) {
    Modules modules(input.path());
    JsonText text(input);
    JsonReader reader(text, modules);
    nlohmann::json::sax_parse(text.begin(), JsonText::end(), &reader);
    reader.errors().finish();
    if (!reader.hasModules())
        throw Base::BadInput({input.path(), 0, 0}, "expected an object 'modules'");
    return modules;
}

Design::Netlist readJson(Base::Source& source, const std::string& top, Base::Diagnostics& diagnostics) {
    Input input(source);
    return flatten(readJsonModules(input), top, diagnostics);
}

} // namespace Readers
