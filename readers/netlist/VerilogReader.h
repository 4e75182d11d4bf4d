// A parser for the statements of structural Verilog. Nothing in them nests but braces and parentheses, which
// are counted or kept on a stack.
//
// What only simulation needs (parameters, delays, strengths, initial and specify blocks) is passed over, and
// counted in a note. What computes without being structure, such as a process, is kept with its module as its
// behaviour: it matters only if the module is needed. Behind an error the next statement is read, so that
// several errors are reported at once.
#pragma once

#include "readers/netlist/Input.h"
#include "readers/netlist/Modules.h"
#include "readers/netlist/VerilogExpression.h"
#include "readers/netlist/VerilogLexer.h"
#include "readers/netlist/VerilogModule.h"
#include "readers/netlist/VerilogModules.h"
#include "readers/netlist/VerilogWords.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace Readers {

class VerilogReader {
public:
    VerilogReader(Input& input, Base::Diagnostics& diagnostics)
        : modules_(input.path()), diagnostics_(diagnostics), lexer_(input, diagnostics),
          module_(modules_.names, input.path()), expression_(lexer_, module_, modules_.names) {}

    // Throws BadInputs.
    Modules run();

private:
    using Kind = VerilogLexer::Kind;
    using Word = VerilogWord;
    using Declaration = VerilogModule::Declaration;

    // --- Modules ---

    void readItem();
    void readModule(bool isPrimitive);
    bool readBody(std::string_view end);
    void recover(const Base::BadInput& error);
    bool isAtBoundary() const;
    void advanceQuietly();
    void readHeader();
    void readHeaderPort(Declaration& declaration);
    void readExplicitPort();
    void readStatement();
    bool readOther(Word word);

    // --- Statements ---

    void readType(Declaration& declaration, Word word);
    void readDeclaration(Word word);
    void readAssign();
    void readAssignment(const VerilogModule::Bits& left, const Base::Place& place);
    static VerilogModule::Bits operandsOf(const VerilogExpression::Computed& computed,
                                          std::optional<std::size_t> bit);
    void addExpression(const VerilogModule::Bits& outputs, const VerilogModule::Bits& inputs,
                       const Base::Place& place);
    void readInstances();
    void readInstance(Base::Name type, bool isOpen);
    Base::Name unnamed(Base::Name type);
    void readConnections();
    void readConnection();
    const VerilogModule::Bits& readConnected();
    void readGates(Word word);
    void readGate(Base::Name type, Word word, bool isOpen);
    void readTran();
    void connectGate(Base::Name name, Base::Name type, Word word,
                     const std::vector<VerilogModule::Bits>& terminals, const Base::Place& place);
    bool isStrength() const;
    static std::size_t outputsOf(Word word, std::size_t terminals, const Base::Place& place);
    static std::string gatePin(std::size_t at, std::size_t outputs);

    // --- Parts ---

    std::optional<Word> word() const;
    Base::Name readName(std::string_view what);
    void skipBalanced();
    void skipDelay();
    void skipStrength();
    void skipPast(std::string_view last);
    bool takeIf(char symbol);
    void expect(char symbol) { expression_.expect(symbol); }
    void skipStatement();
    void skipToSeparator();
    void skipLabel();
    void skipDimensions();
    void passOver(std::string_view what);
    void reportPassedOver();
    bool isTypeWord();

    // What is passed over, or loses a part of its meaning.
    struct Counted {
        std::uint64_t count = 0;
        Base::Place first;
    };

    Modules modules_;
    Base::Diagnostics& diagnostics_;
    Base::ErrorList errors_;
    VerilogLexer lexer_;
    VerilogModule module_;
    VerilogExpression expression_;
    Base::NameSet known_;
    unsigned unnamed_ = 0; // gates of the module
    Base::NameSet primitives_;
    Base::IndexVector<ModuleId, VerilogModules::Facts> facts_;
    std::map<std::string, Counted, std::less<>> passedOver_;
    Counted inversions_;  // that are lost
    Counted expressions_; // that are cells
    std::size_t arcsOfExpressions_ = 0;
    bool isSpecified_ = false; // the module at hand has a specify block
};

} // namespace Readers
