// Modules, their headers and their declarations.
#include "readers/netlist/Verilog.h"

#include "readers/netlist/Flatten.h"
#include "readers/netlist/VerilogReader.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace Readers {

// --- Modules ---

Modules VerilogReader::run() {
    for (bool isFirst = true; isFirst || lexer_.token().kind != Kind::end; isFirst = false) {
        lexer_.setInModule(false);
        try {
            if (isFirst)
                lexer_.advance();
            else
                readItem();
        } catch (const Base::BadInputs&) { // there are too many
            throw;
        } catch (const Base::BadInput& error) {
            recover(error);
            while (lexer_.token().kind != Kind::end && word() != Word::module && !lexer_.isAt("primitive"))
                advanceQuietly();
        }
    }
    errors_.finish();
    VerilogModules(modules_, facts_).finish();
    reportPassedOver();
    return std::move(modules_);
}

// Between modules.
void VerilogReader::readItem() {
    constexpr std::array<std::string_view, 5> statements{"library", "include", "timeunit", "timeprecision",
                                                         "import"};
    const auto isStatement = [this](std::string_view text) { return lexer_.isAt(text); };
    if (word() == Word::module || lexer_.isAt("primitive")) {
        readModule(lexer_.isAt("primitive"));
    } else if (lexer_.isAt("config") || lexer_.isAt("package")) {
        const std::string end = "end" + std::string(lexer_.token().text);
        passOver(lexer_.token().text);
        skipPast(end);
        skipLabel();
    } else if (word() == Word::parameter || std::ranges::any_of(statements, isStatement)) {
        passOver(lexer_.token().text);
        skipPast(";");
    } else if (!takeIf(';'))
        lexer_.failExpected("'module'");
}

void VerilogReader::readModule(bool isPrimitive) {
    const bool isCell = lexer_.isCellDefine();
    lexer_.advance();
    const Base::Place place = lexer_.place();
    const Base::Name name = readName("a module's name");
    if (!known_.add(name))
        throw Base::BadInput(place, "module '" + std::string(modules_.names[name]) + "' is there twice");
    if (isPrimitive)
        primitives_.add(name);
    lexer_.setInModule(true);
    module_.start(name);
    unnamed_ = 0;
    isSpecified_ = false;
    try {
        if (lexer_.isAt('#'))
            skipDelay();
        if (takeIf('('))
            readHeader();
        expect(';');
    } catch (const Base::BadInputs&) {
        throw;
    } catch (const Base::BadInput& error) {
        module_.setLenient();
        recover(error);
    }
    if (!readBody(isPrimitive ? "endprimitive" : "endmodule"))
        return;
    VerilogModules::Facts facts{isPrimitive, isCell, isSpecified_};
    modules_.all.push_back(module_.finish(facts.rest, errors_));
    facts_.push_back(std::move(facts));
    lexer_.setInModule(false);
    lexer_.advance();
    skipLabel();
}

// Up to the word that ends the module. False if it is missing, which is an error.
bool VerilogReader::readBody(std::string_view end) {
    while (!lexer_.isAt(end)) {
        const std::optional<Word> first = word();
        try {
            readStatement();
        } catch (const Base::BadInputs&) {
            throw;
        } catch (const Base::BadInput& error) {
            if (first && *first <= Word::variable)
                module_.setLenient();
            recover(error);
            if (isAtBoundary() && !lexer_.isAt(end))
                return false;
        }
    }
    return true;
}

// The list of ports, with their declarations or without.
void VerilogReader::readHeader() {
    if (takeIf(')'))
        return;
    Declaration declaration;
    do
        readHeaderPort(declaration);
    while (takeIf(','));
    if (!lexer_.isAt(')'))
        lexer_.failExpected("',' or ')'");
    lexer_.advance();
}

// A declaration holds for the names after it.
void VerilogReader::readHeaderPort(Declaration& declaration) {
    if (lexer_.isAt('.')) {
        readExplicitPort();
        return;
    }
    if (const std::optional<Word> next = word(); next && *next <= Word::inout)
        readType(declaration, *next);
    const Base::Place place = lexer_.place();
    const Base::Name name = readName("a port");
    module_.addPort(name, {{name, {}}}, place);
    if (declaration.direction != Design::Direction::unknown)
        module_.declare(name, declaration, place);
    if (lexer_.isAt('='))
        skipToSeparator();
}

// ".name(net)", ".name({net, net[3]})".
void VerilogReader::readExplicitPort() {
    lexer_.advance();
    const Base::Place place = lexer_.place();
    const Base::Name name = readName("a port");
    std::vector<VerilogModule::Reference> parts;
    expect('(');
    const bool isList = takeIf('{');
    if (isList || !lexer_.isAt(')'))
        do
            parts.push_back(expression_.readReference());
        while (isList && takeIf(','));
    if (isList)
        expect('}');
    expect(')');
    module_.addPort(name, std::move(parts), place);
}

void VerilogReader::readStatement() {
    const std::optional<Word> first = word();
    if (takeIf(';'))
        return;
    if (first && readOther(*first))
        return;
    if (!first) {
        if (lexer_.isAt("table")) {
            skipPast("endtable");
        } else if (lexer_.token().kind == Kind::name && lexer_.token().text.front() == '$') {
            passOver(lexer_.token().text);
            skipPast(";");
        } else if (isTypeWord())
            readDeclaration(Word::variable);
        else
            readInstances();
        return;
    }
    switch (*first) {
    case Word::input:
    case Word::output:
    case Word::inout:
    case Word::wire:
    case Word::supply:
    case Word::variable:
        readDeclaration(*first);
        break;
    case Word::assign:
        readAssign();
        break;
    case Word::gate:
    case Word::buffer:
    case Word::switched:
    case Word::pull:
        readGates(*first);
        break;
    case Word::tran:
        readTran();
        break;
    default:
        lexer_.failExpected("a statement or 'endmodule'");
    }
}

// What has no structure. False for the other statements.
bool VerilogReader::readOther(Word first) {
    const std::string text(lexer_.token().text);
    switch (first) {
    case Word::generate:
        lexer_.advance();
        return true;
    case Word::parameter:
    case Word::number:
        passOver(text);
        skipPast(";");
        return true;
    case Word::specify:
    case Word::routine:
        isSpecified_ = isSpecified_ || first == Word::specify;
        passOver(text);
        skipPast("end" + text);
        skipLabel();
        return true;
    case Word::process:
        if (text.starts_with("always"))
            module_.setBehaviour(lexer_.place(), text, false);
        else // there may be cells in it
            module_.setBehaviour(lexer_.place(), "only structural Verilog can be read, found '" + text + "'",
                                 true);
        [[fallthrough]];
    case Word::initial:
        passOver(text);
        skipStatement();
        return true;
    default:
        return false;
    }
}

// --- Reading ---

Modules readVerilogModules(Input& input, Base::Diagnostics& diagnostics) {
    return VerilogReader(input, diagnostics).run();
}

Design::Netlist readVerilog(Base::Source& source, const std::string& top, Base::Diagnostics& diagnostics) {
    Input input(source);
    return flatten(readVerilogModules(input, diagnostics), top, diagnostics);
}

} // namespace Readers
