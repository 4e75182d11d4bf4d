// Modules from the events of a JSON parser.
//
// What the reader does not use (parameters, attributes, routing) passes by without being kept, so memory is that of the
// modules and of the longest text. The way to where the parser stands is a stack of slots, each of which says what may
// stand there; it is as deep as the format, whatever the nesting of the file.
#include "Json.h"

#include "Flatten.h"
#include "JsonText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <unordered_map>

namespace Readers {

namespace {

// What a value of the file is to the netlist.
enum class Slot : std::uint8_t {
    ignored,
    document,
    modules,
    module,
    attributes,
    topFlag,
    boxFlag,
    ports,
    port,
    portDirection,
    offset,
    upto,
    cells,
    cell,
    cellType,
    pinDirections,
    pinDirection,
    connections,
    nets,
    net,
    bits,
    bit,
};

enum class Kind : std::uint8_t { null, boolean, number, fraction, string, array, object };

// A value that is neither an array nor an object.
struct Scalar {
    Kind kind = Kind::null;
    std::int64_t number = 0; // also of a boolean
    std::string_view text = {};
};

const char* toString(Kind kind) {
    constexpr std::array names{"null", "a boolean", "a number", "a fraction", "a string", "an array", "an object"};
    return names[static_cast<std::size_t>(kind)];
}

const char* expected(Slot slot) {
    switch (slot) {
    case Slot::bits:
        return "an array of bits";
    case Slot::bit:
        return "the number of a net, or \"0\", \"1\", \"x\" or \"z\"";
    case Slot::topFlag:
    case Slot::boxFlag:
        return "a number, or a string of binary digits";
    case Slot::portDirection:
    case Slot::pinDirection:
        return "\"input\", \"output\" or \"inout\"";
    case Slot::offset:
    case Slot::upto:
        return "an integer";
    case Slot::cellType:
        return "a string";
    default:
        return "an object";
    }
}

bool isContainer(Slot slot, Kind kind) {
    switch (slot) {
    case Slot::document:
    case Slot::modules:
    case Slot::module:
    case Slot::attributes:
    case Slot::ports:
    case Slot::port:
    case Slot::cells:
    case Slot::cell:
    case Slot::pinDirections:
    case Slot::connections:
    case Slot::nets:
    case Slot::net:
        return kind == Kind::object;
    default:
        return slot == Slot::bits && kind == Kind::array;
    }
}

// The slot of an object's member, where its key alone says it.
Slot member(Slot slot, std::string_view key) {
    struct Row {
        Slot slot;
        std::string_view key;
        Slot member;
    };
    static constexpr std::array rows{
        Row{Slot::document, "modules", Slot::modules},
        Row{Slot::module, "attributes", Slot::attributes},
        Row{Slot::module, "ports", Slot::ports},
        Row{Slot::module, "cells", Slot::cells},
        Row{Slot::module, "netnames", Slot::nets},
        Row{Slot::attributes, "top", Slot::topFlag},
        Row{Slot::attributes, "blackbox", Slot::boxFlag},
        Row{Slot::attributes, "whitebox", Slot::boxFlag},
        Row{Slot::port, "direction", Slot::portDirection},
        Row{Slot::port, "bits", Slot::bits},
        Row{Slot::port, "offset", Slot::offset},
        Row{Slot::port, "upto", Slot::upto},
        Row{Slot::cell, "type", Slot::cellType},
        Row{Slot::cell, "port_directions", Slot::pinDirections},
        Row{Slot::cell, "connections", Slot::connections},
        Row{Slot::net, "bits", Slot::bits},
        Row{Slot::net, "offset", Slot::offset},
        Row{Slot::net, "upto", Slot::upto},
    };
    for (const Row& row : rows)
        if (row.slot == slot && row.key == key)
            return row.member;
    return Slot::ignored;
}

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

private:
    bool scalar(const Scalar& value);
    bool open(Kind kind);
    bool close();
    bool done() {
        text_.mark();
        return true;
    }
    Slot slot() const { return !open_.empty() && open_.back() == Slot::bits ? Slot::bit : next_; }

    void take(const Scalar& value);
    void finish(Slot slot);
    void startItem(const std::string& name);
    void requireBits() const;
    Direction direction(const Scalar& value);
    std::int64_t integer(const Scalar& value);
    bool flag(const Scalar& value);
    std::uint32_t bit(const Scalar& value);

    std::string describe(Slot slot) const;
    void check(JsonModules::Problem problem, Slot slot);
    [[noreturn]] void failAtValue(Kind found, std::string_view text = {});

    JsonText& text_;
    JsonModules modules_;
    bool hasModules_ = false;
    std::vector<Slot> open_;
    Slot next_ = Slot::document; // what the next value is, in an object
    std::size_t skipped_ = 0;    // arrays and objects that are open and ignored
    JsonModules::Item item_;
    Name pin_ = noName;
    std::vector<std::uint32_t> bits_;
};

// --- Events -------------------------------------------------------------------------------------------------------

bool JsonReader::scalar(const Scalar& value) {
    if (skipped_ == 0 && slot() != Slot::ignored)
        take(value);
    return done();
}

bool JsonReader::open(Kind kind) {
    if (skipped_ != 0 || slot() == Slot::ignored) {
        ++skipped_;
        return done();
    }
    const Slot opened = slot();
    if (!isContainer(opened, kind))
        failAtValue(kind);
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
    finish(closed);
    return done();
}

bool JsonReader::key(const std::string& key) {
    if (skipped_ != 0)
        return done();
    switch (const Slot in = open_.back()) {
    case Slot::modules:
        next_ = Slot::module;
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
        break;
    default:
        next_ = member(in, key);
    }
    return done();
}

// The parser's own words, without their code and place: "... - unexpected '}'; expected string literal".
bool JsonReader::parse_error(std::size_t, const std::string&, const std::exception& error) {
    constexpr std::size_t longest = 200;
    std::string text = error.what();
    if (const std::size_t dash = text.find(" - "); dash != std::string::npos)
        text.erase(0, dash + 3);
    else if (const std::size_t bracket = text.find("] "); bracket != std::string::npos)
        text.erase(0, bracket + 2);
    if (text.size() > longest)
        text.replace(longest, std::string::npos, "...");
    throw BadInput(text_.tokenPlace(), "not JSON: " + text);
}

// --- Values -------------------------------------------------------------------------------------------------------

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
        bits_.push_back(bit(value));
        break;
    default:
        failAtValue(value.kind, value.text);
    }
}

void JsonReader::finish(Slot slot) {
    switch (slot) {
    case Slot::module:
        modules_.finishModule();
        break;
    case Slot::port:
        requireBits();
        if (item_.direction == Direction::unknown)
            throw BadInput(item_.place, describe(slot) + ": expected a direction");
        check(modules_.addPort(item_, bits_), slot);
        break;
    case Slot::net:
        requireBits();
        check(modules_.addNet(item_, bits_), slot);
        break;
    case Slot::cell:
        if (item_.type == noName)
            throw BadInput(item_.place, describe(slot) + ": expected a type");
        modules_.finishCell(item_);
        break;
    case Slot::bits:
        if (open_.back() == Slot::connections)
            check(modules_.addConnection(pin_, bits_), Slot::bits);
        break;
    default:
        break;
    }
}

void JsonReader::startItem(const std::string& name) {
    item_ = {};
    item_.name = modules_.name(name);
    item_.place = text_.tokenPlace();
    if (next_ == Slot::cell)
        check(modules_.startCell(item_.name), Slot::cell);
}

void JsonReader::requireBits() const {
    if (!item_.hasBits)
        throw BadInput(item_.place, describe(open_.back() == Slot::ports ? Slot::port : Slot::net) +
                                        ": expected bits");
}

Direction JsonReader::direction(const Scalar& value) {
    if (value.kind == Kind::string && value.text == "input")
        return Direction::input;
    if (value.kind == Kind::string && value.text == "output")
        return Direction::output;
    if (value.kind == Kind::string && value.text == "inout")
        return Direction::inout;
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

std::uint32_t JsonReader::bit(const Scalar& value) {
    if (value.kind == Kind::number && value.number >= 0)
        return modules_.netOf(static_cast<std::uint64_t>(value.number));
    if (value.kind == Kind::string && (value.text == "0" || value.text == "1"))
        return constantNet;
    if (value.kind == Kind::string && (value.text == "x" || value.text == "z"))
        return none;
    failAtValue(value.kind, value.text);
}

// --- Errors -------------------------------------------------------------------------------------------------------

std::string JsonReader::describe(Slot slot) const {
    const auto quoted = [&](Name name) { return "'" + std::string(modules_.text(name)) + "'"; };
    const bool isConnection = !open_.empty() && (open_.back() == Slot::connections ||
                                                 (open_.size() > 1 && open_.end()[-2] == Slot::connections));
    const char* items = slot == Slot::net || (!open_.empty() && open_.back() == Slot::net) ? "net " : "port ";
    switch (slot) {
    case Slot::document:
        return "the file";
    case Slot::modules:
        return "modules";
    case Slot::module:
        return "module " + quoted(modules_.moduleName());
    case Slot::attributes:
    case Slot::topFlag:
    case Slot::boxFlag:
        return "attributes of module " + quoted(modules_.moduleName());
    default:
        return isConnection ? items : "";
    }
}
