// The expressions of structural Verilog: wires, bits and parts of them, constants, concatenations,
// replications, inversions and parentheses.
#pragma once

#include "readers/netlist/VerilogLexer.h"
#include "readers/netlist/VerilogModule.h"

#include <optional>
#include <string_view>
#include <vector>

namespace Readers {

class VerilogExpression {
public:
    VerilogExpression(VerilogLexer& lexer, VerilogModule& module, Base::Names& names)
        : lexer_(lexer), module_(module), names_(names) {}

    // Reads an expression; its bits, the most significant first, are valid until the next one is read.
    const VerilogModule::Bits& read();
    // What is computed of several operands. Bits that are not known to be apart depend on each other.
    struct Computed {
        std::vector<VerilogModule::Bits> operands;
        bool isBitwise = true;      // a bit depends on those at its place
        bool isConditional = false; // and on all operands of one bit
    };
    // Reads an expression with operators, from its beginning on, to the ',' or ';' after it. Without
    // operators it is as read(), and there is one operand.
    Computed readComputed();
    // Whether the last of these had operators.
    bool isComputed() const { return isComputed_; }

    // Whether what was read was one digit for all bits of what it is connected to, "'1".
    bool isFill() const { return isFill_; }

    // "name", "name[3]", "name[7:0]".
    VerilogModule::Reference readReference();
    // "[7:0]", from the bracket on.
    VerilogRange readRange();
    // "3", "-3", "8-1": of macros that are replaced by numbers.
    std::int32_t readInteger();
    // A symbol that must come.
    void expect(char symbol);

private:
    // A pair of braces or parentheses that is open.
    struct Brace {
        std::size_t firstBit;
        std::uint64_t count = 1;
        bool isReplication = false;
        bool isParenthesis = false;
        bool isInverted = false;
        bool isLogical = false; // inverted by '!', which is for one bit
    };

    const VerilogModule::Bits& readUpTo(bool mayStop);
    void readRest(Computed& computed, std::size_t depth);
    bool isOperator() const;
    void readOperand();
    bool openBrace(const Brace& brace);
    void closeBrace();
    void readInversions(Brace& brace);
    void invert(const Brace& brace);
    void readConstant();
    bool addDigits(std::string_view digits, std::uint64_t width);
    void checkWidth(std::uint64_t width) const;
    VerilogRange readBrackets(bool mayBeOneBit);

    VerilogLexer& lexer_;
    VerilogModule& module_;
    Base::Names& names_;
    VerilogModule::Bits bits_;
    std::vector<Brace> braces_;
    bool isFill_ = false;
    bool isComputed_ = false;
};

} // namespace Readers
