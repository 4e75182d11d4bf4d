// The modules of a netlist file, as its readers give them before the hierarchy is flattened.
//
// A module's nets are numbers of its own; net 0 is the constant, whose value no one asks for. Bits stand
// least significant first, wherever there are some.
#pragma once

#include "base/Diagnostics.h"
#include "base/NameTable.h"
#include "design/Netlist.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Readers {

inline constexpr std::uint32_t constantNet = 0;
// A short text can ask for vectors of any width. These limits are for all modules of a file together.
inline constexpr std::size_t mostNets = std::size_t{1} << 24;
inline constexpr std::size_t mostBits = std::size_t{1} << 26; // of ports and connections
// Of a connection that is given by its position.
inline constexpr Base::Name noName{std::numeric_limits<std::uint32_t>::max()};

// A part of Module::bits.
struct BitRange {
    std::uint32_t first = 0;
    std::uint32_t count = 0;
};

// How the bits of a vector are numbered; a scalar's have no numbers.
struct Numbering {
    bool vector = false;
    std::int32_t right = 0; // the number of the least significant bit
    std::int32_t step = 1;  // to the next one: 1 or -1

    static Numbering positions(std::size_t count) { return {count > 1, 0, 1}; }
    std::int64_t at(std::size_t bit) const { return right + static_cast<std::int64_t>(bit) * step; }
};

// "led", or "led[3]".
void writeBitName(std::string& text, std::string_view name, const Numbering& numbering, std::size_t bit);

// The better one of two names of a net: the shorter, or the first in byte order.
inline bool isBetterName(std::string_view name, std::string_view than) {
    return name.size() != than.size() ? name.size() < than.size() : name < than;
}

struct Module {
    struct Port {
        Base::Name name;
        Design::Direction direction = Design::Direction::unknown;
        Numbering numbering = {};
        BitRange bits = {};
    };
    struct Connection {
        Base::Name name = noName; // of the port; a cell names none twice
        Design::Direction direction = Design::Direction::unknown;
        BitRange bits = {}; // nets, or none where there is none
    };
    struct Cell {
        Base::Name name;
        Base::Name type;
        std::uint32_t firstConnection = 0;
        std::uint32_t connectionCount = 0;
        std::uint32_t line = 0, column = 0;
    };
    struct Net {
        Base::Name name = noName; // the best of its names
        bool generated = false;   // made up, because it has none
    };
    // What has no structure that could be read: a process, an expression.
    struct Behaviour {
        Base::Place place;
        std::string text;     // the error if the module is needed; or the keyword of a process
        bool isError = false; // a process beside cells is none
    };

    Base::Name name;
    bool isMarkedTop = false;
    bool isBox = false;      // a leaf, whatever is in it
    bool isComputed = false; // a leaf of expressions alone
    std::vector<Port> ports;
    std::vector<Cell> cells;
    std::vector<Connection> connections; // a cell's stand together
    std::vector<std::uint32_t> bits;
    std::vector<std::uint32_t> inverted;    // places in bits at which the net's value is inverted, ascending
    std::vector<std::uint32_t> expressions; // cells that stand for expressions, ascending
    std::optional<Behaviour> behaviour;     // the first
    std::vector<Net> nets = std::vector<Net>(1); // the constant is there from the beginning

    // Nothing in it: neither cells nor ports that are connected to one another or to a constant.
    bool isLeaf() const;
    BitRange addBits(const std::vector<std::uint32_t>& nets);
    bool isInverted(std::uint32_t place) const {
        return !inverted.empty() && std::binary_search(inverted.begin(), inverted.end(), place);
    }
};

struct Modules {
    explicit Modules(std::string path) : file(std::move(path)) {}

    std::string file;
    Base::Names names;
    std::vector<Module> all;

    // The module that was asked for, or the one that is marked, or the only one that no other instantiates.
    // Throws BadInput where there is none, or more than one.
    std::uint32_t findTop(const std::string& wanted) const;

    std::string_view nameOf(const Module& module) const { return names[module.name]; }
    Base::NameTable byName() const;
    [[noreturn]] void fail(std::string text) const { throw Base::BadInput({file, 0, 0}, std::move(text)); }

private:
    std::vector<std::uint32_t> roots() const;
    std::string list(const std::vector<std::uint32_t>& which) const;
};

} // namespace Readers
