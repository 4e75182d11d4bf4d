// A parser for the statements of structural Verilog. Nothing in them nests but braces and parentheses, which
// are counted or kept on a stack.
//
// What only simulation needs (parameters, delays, strengths, specify blocks) is passed over.
#pragma once

#include "Input.h"
#include "Modules.h"
#include "VerilogExpression.h"
#include "VerilogLexer.h"
#include "VerilogModule.h"
#include "VerilogWords.h"

#include <optional>
#include <string>
#include <string_view>

namespace Readers {

class VerilogReader {
public:
    explicit VerilogReader(Input& input)
        : modules_(input.path()), lexer_(input), module_(modules_.names, input.path()),
          expression_(lexer_, module_, modules_.names) {}

    Modules run();

private:
    using Kind = VerilogLexer::Kind;
    using Word = VerilogWord;
    using Declaration = VerilogModule::Declaration;

    // --- Modules --------------------------------------------------------------------------------------------------

    void readModule();
    void readHeader();
    void readHeaderPort(Declaration& declaration);
    void readExplicitPort();
    void readStatement();

    // --- Statements -----------------------------------------------------------------------------------------------

    void readType(Declaration& declaration, Word word);
    void readDeclaration(Word word);
    void readAssign();
    void readAssignment(const VerilogModule::Bits& left, const Place& place);
    void readInstances();
    void readConnections();
    void readConnection();
    void readGates(Word word);
    void readGate(Name type, Word word, bool isOpen);
    bool isStrength() const;
    static std::size_t outputsOf(Word word, std::size_t terminals, const Place& place);
    static std::string gatePin(std::size_t at, std::size_t outputs);

    // --- Parts ----------------------------------------------------------------------------------------------------

    std::optional<Word> word() const;
    Name readName(std::string_view what);
    void skipBalanced();
    void skipDelay();
    void skipStrength();
    void skipPast(std::string_view last);
    bool takeIf(char symbol);
    void expect(char symbol) { expression_.expect(symbol); }
    [[noreturn]] void failBehavioural() const;

    Modules modules_;
    VerilogLexer lexer_;
    VerilogModule module_;
    VerilogExpression expression_;
    NameTable known_;
    unsigned unnamed_ = 0; // gates of the module
};

} // namespace Readers
