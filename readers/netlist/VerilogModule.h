// A module of a Verilog text while it is read: its names, and the nets that they stand for. It serves one
// module after the other.
//
// Bits are given and taken with the most significant one first, as the text has them.
#pragma once

#include "Modules.h"

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
    VerilogModule(Names& names, std::string file) : names_(names), file_(std::move(file)) {}

    using Bits = std::vector<std::uint32_t>;
    using Range = std::optional<VerilogRange>;

    // What a declaration says.
    struct Declaration {
        Direction direction = Direction::unknown;
        bool isConstant = false; // a supply
        Range range = {};
    };
    // A name, and a bit or a part of it.
    struct Reference {
        Name name = noName;
        Range part = {};
    };

    void start(Name name);
    Module finish();

    void declare(Name name, const Declaration& declaration, const Place& place);
    // Adds the bits that are referred to. A name that is not known becomes a wire.
    void addBits(const Reference& reference, const Place& place, Bits& bits);
    // One name for both; the shorter one is widened by zeros, or cut.
    void alias(const Bits& left, const Bits& right);

    // Of the header, with what it is made of.
    void addPort(Name name, std::vector<Reference> parts, const Place& place);
    void startCell(Name name, Name type, const Place& place);
    // Of the cell; noName: by its position.
    void connect(Name pin, Direction direction, const Bits& bits, const Place& place);

private:
    struct Symbol {
        Name name;
        Declaration declaration;
        std::uint32_t firstNet = 0; // of the least significant bit
        bool isImplicit = false;
        bool isPort = false; // the header knows it
        std::uint32_t line = 0, column = 0;

        Numbering numbering() const;
        std::uint32_t width() const { return declaration.range ? declaration.range->width() : 1; }
    };
    struct HeaderPort {
        Name name;
        std::vector<Reference> parts;
        Place place;
    };

    Symbol& add(Name name, const Declaration& declaration, const Place& place);
    std::uint32_t root(std::uint32_t net);
    void join(std::uint32_t a, std::uint32_t b);
    void finishPort(const HeaderPort& port);
    void nameNets(const std::vector<std::uint32_t>& numbers);
    std::string quoted(Name name) const { return "'" + std::string(names_[name]) + "'"; }

    Names& names_;
    std::string file_;
    Module module_;
    std::vector<Symbol> symbols_;
    NameTable symbolByName_, cells_, pins_, ports_;
    std::vector<HeaderPort> header_;
    std::vector<std::uint32_t> parents_{constantNet}; // a forest of nets; a root is the first of its tree
    std::string scratch_;
};

} // namespace Readers
