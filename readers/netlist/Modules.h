// The modules of a netlist file, before the hierarchy is flattened.
//
// Each module has nets of its own. Net 0 is the constant; its value does not matter. Bits are in order, the
// least significant first.
#pragma once

#include "base/Diagnostics.h"
#include "base/Index.h"
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

// Into Modules::all.
using ModuleId = Base::Index<struct ModuleTag>;
// Into Module::nets, ports, cells, connections and bits.
using ModuleNetId = Base::Index<struct ModuleNetTag>;
using ModulePortId = Base::Index<struct ModulePortTag>;
using ModuleCellId = Base::Index<struct ModuleCellTag>;
using ConnectionId = Base::Index<struct ConnectionTag>;
using BitId = Base::Index<struct BitTag>;

inline constexpr ModuleNetId constantNet(0U);
// A short text can ask for vectors of any width. These limits are for all modules of a file together.
inline constexpr std::size_t mostNets = std::size_t{1} << 24;
inline constexpr std::size_t mostBits = std::size_t{1} << 26; // of ports and connections
// Of a connection that is given by its position.
inline constexpr Base::Name noName{std::numeric_limits<std::uint32_t>::max()};

// A part of Module::bits.
struct BitRange {
    BitId first = BitId(0U);
    std::uint32_t count = 0;

    BitId operator[](std::uint32_t at) const { return BitId(first.number() + at); }
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
        BitRange bits = {}; // nets; none for a bit that is not connected
    };
    struct Cell {
        Base::Name name;
        Base::Name type;
        ConnectionId firstConnection = ConnectionId(0U);
        std::uint32_t connectionCount = 0;
        Base::Position position = {};

        ConnectionId connection(std::uint32_t at) const {
            return ConnectionId(firstConnection.number() + at);
        }
    };
    struct Net {
        Base::Name name = noName; // the best of its names
        bool generated = false;   // made up, because it has none
    };
    // What has no structure that could be read: a process, an expression.
    struct Behaviour {
        Base::Place place;
        std::string text;     // the error if the module is needed; or the keyword of a process
        bool isError = false; // a process in a module with cells is no error
    };

    Base::Name name;
    bool isMarkedTop = false;
    bool isBox = false;      // a leaf, whatever is in it
    bool isComputed = false; // a leaf that consists of expressions only
    Base::IndexVector<ModulePortId, Port> ports;
    Base::IndexVector<ModuleCellId, Cell> cells;
    Base::IndexVector<ConnectionId, Connection> connections; // those of a cell are adjacent
    Base::IndexVector<BitId, ModuleNetId> bits;
    std::vector<BitId> inverted;           // the bits at which the net's value is inverted, ascending
    std::vector<ModuleCellId> expressions; // cells that stand for expressions, ascending
    std::optional<Behaviour> behaviour;    // the first
    Base::IndexVector<ModuleNetId, Net> nets = Base::IndexVector<ModuleNetId, Net>(1); // the constant

    // Nothing in it: neither cells nor ports that are connected to one another or to a constant.
    bool isLeaf() const;
    BitRange addBits(const std::vector<ModuleNetId>& added);
    bool isInverted(BitId place) const {
        return !inverted.empty() && std::binary_search(inverted.begin(), inverted.end(), place);
    }
};

struct Modules {
    explicit Modules(std::string path) : file(std::move(path)) {}

    std::string file;
    Base::Names names;
    Base::IndexVector<ModuleId, Module> all;

    // Returns the module of the wanted name or, without one, the module that is marked as the top, or the
    // only one that no other instantiates. Throws BadInput if there is none, or more than one.
    ModuleId findTop(const std::string& wanted) const;

    std::string_view nameOf(const Module& module) const { return names[module.name]; }
    Base::NameTable<ModuleId> byName() const;
    [[noreturn]] void fail(std::string text) const { throw Base::BadInput({file, 0, 0}, std::move(text)); }

private:
    std::vector<ModuleId> roots() const;
    std::string list(const std::vector<ModuleId>& which) const;
};

} // namespace Readers
