// Modules, their headers and their declarations.
#include "Verilog.h"

#include "Flatten.h"
#include "VerilogReader.h"

#include <string>
#include <utility>

namespace Readers {

// --- Parts --------------------------------------------------------------------------------------------------------

std::optional<VerilogWord> VerilogReader::word() const {
    return lexer_.token().kind == Kind::name ? findWord(lexer_.token().text) : std::nullopt;
}

Name VerilogReader::readName(std::string_view what) {
    const Kind kind = lexer_.token().kind;
    if ((kind != Kind::name && kind != Kind::escaped) || word())
        lexer_.failExpected(what);
    const Name name = modules_.names.add(lexer_.token().text);
    lexer_.advance();
    return name;
}

bool VerilogReader::takeIf(char symbol) {
    const bool isThere = lexer_.isAt(symbol);
    if (isThere)
        lexer_.advance();
    return isThere;
}

// From a '(' to its ')'.
void VerilogReader::skipBalanced() {
    std::size_t depth = 0;
    do {
        depth += lexer_.isAt('(') ? 1 : 0;
        depth -= lexer_.isAt(')') ? 1 : 0;
        if (lexer_.token().kind == Kind::end)
            lexer_.failExpected("')'");
        lexer_.advance();
    } while (depth != 0);
}

// "#(...)", "#1.5", "#name".
void VerilogReader::skipDelay() {
    if (!takeIf('#'))
        return;
    if (lexer_.isAt('(')) {
        skipBalanced();
        return;
    }
    if (lexer_.token().kind != Kind::number && lexer_.token().kind != Kind::name)
        lexer_.failExpected("a value behind '#'");
    lexer_.advance();
    if (takeIf('.'))
        lexer_.advance();
}

// "(strong0, weak1)" in front of a delay or a name.
void VerilogReader::skipStrength() {
    if (lexer_.isAt('('))
        skipBalanced();
}

void VerilogReader::skipPast(std::string_view last) {
    while (lexer_.token().kind == Kind::string || lexer_.token().kind == Kind::escaped ||
           lexer_.token().text != last) {
        if (lexer_.token().kind == Kind::end)
            lexer_.failExpected("'" + std::string(last) + "'");
        lexer_.advance();
    }
    lexer_.advance();
}

void VerilogReader::failBehavioural() const {
    lexer_.fail("only structural Verilog can be read, found '" + std::string(lexer_.token().text) + "'");
}

// --- Modules ------------------------------------------------------------------------------------------------------

Modules VerilogReader::run() {
    while (lexer_.token().kind != Kind::end) {
        if (word() == Word::module)
            readModule();
        else if (lexer_.isAt("primitive")) // a leaf
            skipPast("endprimitive");
        else
            lexer_.failExpected("'module'");
    }
    return std::move(modules_);
}

void VerilogReader::readModule() {
    lexer_.advance();
    const Place place = lexer_.place();
    const Name name = readName("a module's name");
    if (!known_.add(name, 0))
        throw BadInput(place, "module '" + std::string(modules_.names[name]) + "' is there twice");
    module_.start(name);
    unnamed_ = 0;
    if (lexer_.isAt('#'))
        skipDelay();
    if (takeIf('('))
        readHeader();
    expect(';');
    while (word() != Word::end)
        readStatement();
    lexer_.advance();
    modules_.all.push_back(module_.finish());
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

// A declaration holds for the names behind it.
void VerilogReader::readHeaderPort(Declaration& declaration) {
    if (lexer_.isAt('.')) {
        readExplicitPort();
        return;
    }
    if (const std::optional<Word> next = word(); next && *next <= Word::inout)
        readType(declaration, *next);
    const Place place = lexer_.place();
    const Name name = readName("a port");
    module_.addPort(name, {{name, {}}}, place);
    if (declaration.direction != Direction::unknown)
        module_.declare(name, declaration, place);
}

// ".name(net)", ".name({net, net[3]})".
void VerilogReader::readExplicitPort() {
    lexer_.advance();
    const Place place = lexer_.place();
    const Name name = readName("a port");
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
    if (!first) {
        readInstances();
        return;
    }
    switch (*first) {
    case Word::input:
    case Word::output:
    case Word::inout:
    case Word::wire:
    case Word::supply:
        readDeclaration(*first);
        break;
    case Word::assign:
        readAssign();
        break;
    case Word::parameter:
        skipPast(";");
        break;
    case Word::specify:
        skipPast("endspecify");
        break;
    case Word::gate:
    case Word::buffer:
    case Word::switched:
    case Word::pull:
        readGates(*first);
        break;
    case Word::behavioural:
        failBehavioural();
    default:
        lexer_.failExpected("a statement or 'endmodule'");
    }
}

// --- Declarations -------------------------------------------------------------------------------------------------

// A direction, a kind of net, and a range, of which each but the first may be missing.
void VerilogReader::readType(Declaration& declaration, Word first) {
    declaration = {};
    if (first <= Word::inout) {
        constexpr Direction directions[] = {Direction::input, Direction::output, Direction::inout};
        declaration.direction = directions[static_cast<std::size_t>(first)];
        lexer_.advance();
    }
    for (std::optional<Word> next = word(); next; next = word()) {
        if (*next == Word::behavioural)
            failBehavioural();
        if (*next != Word::wire && *next != Word::supply && *next != Word::detail)
            break;
        declaration.isConstant = declaration.isConstant || *next == Word::supply;
        lexer_.advance();
    }
    skipStrength();
    if (word() == Word::detail)
        lexer_.advance();
    if (lexer_.isAt('['))
        declaration.range = expression_.readRange();
    skipDelay();
}

void VerilogReader::readDeclaration(Word first) {
    Declaration declaration;
    readType(declaration, first);
    do {
        const Place place = lexer_.place();
        const Name name = readName("a name");
        if (lexer_.isAt('['))
            lexer_.fail("only structural Verilog can be read, found an array of wires");
        module_.declare(name, declaration, place);
        if (!lexer_.isAt('='))
            continue;
        VerilogModule::Bits bits;
        module_.addBits({name, {}}, place, bits);
        readAssignment(bits, place);
    } while (takeIf(','));
    if (!lexer_.isAt(';'))
        lexer_.failExpected("',' or ';'");
    lexer_.advance();
}

void VerilogReader::readAssign() {
    lexer_.advance();
    skipStrength();
    skipDelay();
    do {
        const Place place = lexer_.place();
        const VerilogModule::Bits left = expression_.read();
        readAssignment(left, place);
    } while (takeIf(','));
    if (!lexer_.isAt(';'))
        lexer_.failExpected("',' or ';' (only structural Verilog can be read)");
    lexer_.advance();
}

// From the '=' on.
void VerilogReader::readAssignment(const VerilogModule::Bits& left, const Place& place) {
    for (const std::uint32_t bit : left)
        if (bit == none || bit == constantNet)
            throw BadInput(place, "expected nets before '=', found a constant");
    expect('=');
    module_.alias(left, expression_.read());
}

// --- Reading ------------------------------------------------------------------------------------------------------

Modules readVerilogModules(Input& input) { return VerilogReader(input).run(); }

Netlist readVerilog(Source& source, const std::string& top, Diagnostics& diagnostics) {
    Input input(source);
    return flatten(readVerilogModules(input), top, diagnostics);
}

} // namespace Readers
