// A module of a Verilog text while it is read: its names, and the nets that they stand for. It serves one
// module after the other.
//
// Bits are given and taken with the most significant one first, as the text has them. A bit is a net's
// index, or none. The index of a net whose value is inverted is marked.
#pragma once

#include "readers/netlist/Modules.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Readers {

// "[left:right]".
struct VerilogRange {
    std::int32_t left = 0;
    std::int32_t right = 0;

    bool operator==(const VerilogRange&) const = default;
    std::uint32_t width() const {
        return static_cast<std::uint32_t>(left < right ? std::int64_t{right} - left
                                                       : std::int64_t{left} - right) +
               1;
    }
};

class VerilogModule {
public:
    VerilogModule(Base::Names& names, std::string file) : names_(names), file_(std::move(file)) {}

    using Bits = std::vector<ModuleNetId>;
    using Range = std::optional<VerilogRange>;

    // What a declaration says.
    struct Declaration {
        Design::Direction direction = Design::Direction::unknown;
        bool isConstant = false; // a supply
        bool isVariable = false;
        Range range = {};
    };
    // A name, and a bit or a part of it.
    struct Reference {
        Base::Name name = noName;
        Range part = {};
    };

    // Of many cells in one instance, "name[left:right]".
    struct Array {
        ModuleCellId cell;
        VerilogRange range;
    };
    // ".*": the connections of the cell from there on are by the names of nets, and hold if they are ports.
    struct Wildcard {
        ModuleCellId cell;
        ConnectionId firstConnection; // of those
    };
    // What is to be done when all modules are known.
    struct Rest {
        std::vector<Array> arrays;
        std::vector<Wildcard> wildcards;
    };

    static bool isInverted(ModuleNetId bit) {
        return bit != Base::none && (bit.number() & invertedMark) != 0;
    }
    // The bit's inverse, and the bit without a mark. Neither may be none.
    static ModuleNetId inverse(ModuleNetId bit) { return ModuleNetId(bit.number() ^ invertedMark); }
    static ModuleNetId plain(ModuleNetId bit) { return ModuleNetId(bit.number() & ~invertedMark); }

    void start(Base::Name name);
    // The errors get what is wrong with the module as a whole.
    Module finish(Rest& rest, Base::ErrorList& errors);
    // After an error in a declaration: names are taken as they are used.
    void setLenient() { isLenient_ = true; }

    void declare(Base::Name name, const Declaration& declaration, const Base::Place& place);
    // Adds the bits that are referred to. A name that is not known becomes a wire.
    void addBits(const Reference& reference, const Base::Place& place, Bits& bits);
    // One name for both; the shorter one is widened by zeros, or cut. Whether some of the right were
    // inverted, which is lost.
    bool alias(const Bits& left, const Bits& right);

    // Of the header, with what it is made of.
    void addPort(Base::Name name, std::vector<Reference> parts, const Base::Place& place);
    void startCell(Base::Name name, Base::Name type, const Base::Place& place);
    void startExpression(Base::Name name, Base::Name type, const Base::Place& place);
    // Of the cell that was started.
    void setArray(const VerilogRange& range);
    void connectByNames(const Base::Place& place);
    // The first counts, but an error counts more.
    void setBehaviour(const Base::Place& place, const std::string& text, bool isError);
    // Of the cell; noName: by its position.
    void connect(Base::Name pin, Design::Direction direction, const Bits& bits, const Base::Place& place);

private:
    static constexpr std::uint32_t invertedMark = std::uint32_t{1} << 31;

    using SymbolId = Base::Index<struct SymbolTag>;
    struct Symbol {
        Base::Name name;
        Declaration declaration;
        ModuleNetId firstNet; // of the least significant bit
        bool isImplicit = false;
        bool isPort = false; // the header knows it
        Base::Position position;

        Numbering numbering() const;
        // By the offset from the least significant bit.
        ModuleNetId net(std::uint32_t offset) const { return ModuleNetId(firstNet.number() + offset); }
        std::uint32_t width() const { return declaration.range ? declaration.range->width() : 1; }
    };
    struct HeaderPort {
        Base::Name name;
        std::vector<Reference> parts;
        Base::Place place;
    };

    [[noreturn]] void failAtLimit(const Base::Place& place, std::size_t limit, const char* what) const;
    Symbol& add(Base::Name name, const Declaration& declaration, const Base::Place& place);
    ModuleCellId lastCell() const { return ModuleCellId(module_.cells.next().number() - 1); }
    ModuleNetId root(ModuleNetId net);
    void join(ModuleNetId a, ModuleNetId b);
    void finishPort(const HeaderPort& port, Base::ErrorList& errors);
    void nameNets(const Base::IndexVector<ModuleNetId, ModuleNetId>& numbers);
    std::string quoted(Base::Name name) const { return "'" + std::string(names_[name]) + "'"; }

    Base::Names& names_;
    std::string file_;
    Module module_;
    Base::IndexVector<SymbolId, Symbol> symbols_;
    Base::NameTable<SymbolId> symbolByName_;
    Base::NameSet cells_, pins_, ports_;
    std::vector<HeaderPort> header_;
    Base::IndexVector<ModuleNetId, ModuleNetId> parents_{
        constantNet}; // a forest of nets; a root is the first of its tree
    Rest rest_;
    bool isLenient_ = false;
    std::size_t wildcardNames_ = 0;               // of all ".*"
    std::size_t netsBefore_ = 0, bitsBefore_ = 0; // of the modules before
    std::string scratch_;
};

} // namespace Readers
