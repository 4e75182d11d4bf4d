// The expressions of structural Verilog: wires, bits and parts of them, constants, concatenations and
// replications.
#pragma once

#include "VerilogLexer.h"
#include "VerilogModule.h"

#include <optional>
#include <string_view>
#include <vector>

namespace Readers {

class VerilogExpression {
public:
    VerilogExpression(VerilogLexer& lexer, VerilogModule& module, Names& names)
        : lexer_(lexer), module_(module), names_(names) {}

    // Reads an expression; its bits, the most significant first, are valid until the next one is read.
    const VerilogModule::Bits& read();

    // "name", "name[3]", "name[7:0]".
    VerilogModule::Reference readReference();
    // "[7:0]", from the bracket on.
    VerilogRange readRange();
    std::int32_t readInteger();
    // A symbol that must come.
    void expect(char symbol);

private:
    // A pair of braces that is open.
    struct Brace {
        std::size_t firstBit;
        std::uint64_t count = 1;
        bool isReplication = false;
    };

    void readOperand();
    bool openBrace();
    void closeBrace();
    void readConstant();
    bool addDigits(std::string_view digits, std::uint64_t width);
    void checkWidth(std::uint64_t width) const;
    VerilogRange readBrackets(bool mayBeOneBit);

    VerilogLexer& lexer_;
    VerilogModule& module_;
    Names& names_;
    VerilogModule::Bits bits_;
    std::vector<Brace> braces_;
};

} // namespace Readers
