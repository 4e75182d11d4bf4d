// Modules, their headers and their declarations.
#include "readers/netlist/Verilog.h"

#include "readers/netlist/Flatten.h"
#include "readers/netlist/VerilogReader.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace Readers {

// --- Parts --------------------------------------------------------------------------------------------------------

std::optional<VerilogWord> VerilogReader::word() const {
    return lexer_.token().kind == Kind::name ? findWord(lexer_.token().text) : std::nullopt;
}

Base::Name VerilogReader::readName(std::string_view what) {
    const Kind kind = lexer_.token().kind;
    if ((kind != Kind::name && kind != Kind::escaped) || word())
        lexer_.failExpected(what);
    const Base::Name name = modules_.names.add(lexer_.token().text);
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

// ": name", behind the end of a block or module.
void VerilogReader::skipLabel() {
    if (takeIf(':'))
        readName("the name of what ends");
}

// "[0:7]", several of them.
void VerilogReader::skipDimensions() {
    while (lexer_.isAt('['))
        skipPast("]");
}

// To a ',' or ';' that is not in parentheses or braces.
void VerilogReader::skipToSeparator() {
    std::size_t depth = 0;
    while (lexer_.token().kind != Kind::end) {
        if (lexer_.isAt('(') || lexer_.isAt('{') || lexer_.isAt('['))
            ++depth;
        else if (depth != 0 && (lexer_.isAt(')') || lexer_.isAt('}') || lexer_.isAt(']')))
            --depth;
        else if (lexer_.isAt(';') || (depth == 0 && (lexer_.isAt(',') || lexer_.isAt(')'))))
            return;
        lexer_.advance();
    }
}

// A statement of a process, with all that is nested in it.
void VerilogReader::skipStatement() {
    constexpr std::array<std::string_view, 5> opening{"begin", "fork", "case", "casex", "casez"};
    constexpr std::array<std::string_view, 3> closing{"end", "join", "endcase"};
    const auto isOneOf = [this](const auto& words) {
        return lexer_.token().kind == Kind::name &&
               std::find(words.begin(), words.end(), lexer_.token().text) != words.end();
    };
    std::size_t blocks = 0, parentheses = 0;
    for (;;) {
        if (lexer_.token().kind == Kind::end || word() == Word::end || word() == Word::module)
            lexer_.failExpected("the end of the statement");
        const bool isClosing = isOneOf(closing);
        const bool isSemicolon = lexer_.isAt(';');
        blocks += isOneOf(opening) ? 1 : 0;
        blocks -= isClosing && blocks != 0 ? 1 : 0;
        parentheses += lexer_.isAt('(') ? 1 : 0;
        parentheses -= lexer_.isAt(')') && parentheses != 0 ? 1 : 0;
        lexer_.advance();
        if (blocks != 0 || parentheses != 0 || (!isClosing && !isSemicolon))
            continue;
        if (isClosing)
            skipLabel();
        if (!lexer_.isAt("else"))
            return;
    }
}

// At the token at hand.
void VerilogReader::passOver(std::string_view what) {
    Counted& counted = passedOver_.try_emplace(std::string(what)).first->second;
    if (counted.count++ == 0)
        counted.first = lexer_.place();
}

void VerilogReader::reportPassedOver() {
    std::string text;
    Base::Place first;
    for (const auto& [what, counted] : passedOver_) {
        text += (text.empty() ? "" : ", ") + std::to_string(counted.count) + " " + what;
        if (first.line == 0 ||
            std::pair(counted.first.line, counted.first.column) < std::pair(first.line, first.column))
            first = counted.first;
    }
    if (!text.empty())
        diagnostics_.note(first, "statements without structure are passed over: " + text);
    const auto report = [this](Base::Severity severity, const Counted& counted, const char* what) {
        if (counted.count != 0)
            diagnostics_.add({severity, counted.first, std::to_string(counted.count) + what});
    };
    report(Base::Severity::warning, inversions_,
           " assignments of inverted nets: the nets are joined, and their edges are not exchanged");
    report(Base::Severity::note, expressions_, " cells 'assign' stand for expressions: they have no delays");
}

// "logic", "bit" and "var" are types only in newer texts, and names in older ones.
bool VerilogReader::isTypeWord() {
    if (!lexer_.isAt("logic") && !lexer_.isAt("bit") && !lexer_.isAt("var"))
        return false;
    const int next = lexer_.firstBehind();
    return next == '[' || next == '\\' || next == '_' || (next >= 'a' && next <= 'z') ||
           (next >= 'A' && next <= 'Z');
}

// --- Errors -------------------------------------------------------------------------------------------------------

// Behind an error: up to the end of the statement, or to what ends the module. A text that ends too early
// after another error is no news.
void VerilogReader::recover(const Base::BadInput& error) {
    if (lexer_.token().kind != Kind::end || errors_.empty())
        errors_.add(error);
    while (!isAtBoundary()) {
        const bool isLast = lexer_.isAt(';');
        advanceQuietly();
        if (isLast)
            return;
    }
}

bool VerilogReader::isAtBoundary() const {
    return lexer_.token().kind == Kind::end || word() == Word::end || word() == Word::module ||
           lexer_.isAt("primitive") || lexer_.isAt("endprimitive");
}

void VerilogReader::advanceQuietly() {
    try {
        lexer_.advance();
    } catch (const Base::BadInputs&) { // a limit
        throw;
    } catch (const Base::BadInput&) { // the next call goes on behind it
    }
}

// --- Modules ------------------------------------------------------------------------------------------------------

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

// A declaration holds for the names behind it.
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

// --- Declarations -------------------------------------------------------------------------------------------------

// A direction, a kind of net, and a range, of which each but the first may be missing.
void VerilogReader::readType(Declaration& declaration, Word first) {
    declaration = {};
    if (first <= Word::inout) {
        constexpr Design::Direction directions[] = {Design::Direction::input, Design::Direction::output,
                                                    Design::Direction::inout};
        declaration.direction = directions[static_cast<std::size_t>(first)];
        lexer_.advance();
    }
    for (;;) {
        const std::optional<Word> next = isTypeWord() ? Word::variable : word();
        if (next != Word::wire && next != Word::supply && next != Word::variable && next != Word::detail)
            break;
        declaration.isConstant = declaration.isConstant || next == Word::supply;
        declaration.isVariable = declaration.isVariable || next == Word::variable;
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
        const Base::Place place = lexer_.place();
        const Base::Name name = readName("a name");
        if (lexer_.isAt('[') && !declaration.isVariable)
            lexer_.fail("only structural Verilog can be read, found an array of wires");
        if (lexer_.isAt('['))
            skipDimensions(); // a memory is no net
        else
            module_.declare(name, declaration, place);
        if (!lexer_.isAt('='))
            continue;
        if (declaration.isVariable) {
            skipToSeparator(); // the value at the start
            continue;
        }
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
        const Base::Place place = lexer_.place();
        const VerilogModule::Bits left = expression_.read();
        readAssignment(left, place);
    } while (takeIf(','));
    lexer_.advance();
}

// From the '=' on, to the ',' or ';' behind it.
void VerilogReader::readAssignment(const VerilogModule::Bits& left, const Base::Place& place) {
    for (const ModuleNetId bit : left)
        if (bit == Base::none || bit == constantNet || VerilogModule::isInverted(bit))
            throw Base::BadInput(place, "expected nets before '=', found a constant");
    expect('=');
    VerilogExpression::Computed right;
    try {
        right = expression_.readComputed();
        if (!lexer_.isAt(',') && !lexer_.isAt(';'))
            lexer_.failExpected("',' or ';' (only structural Verilog can be read)");
    } catch (const Base::BadInputs&) {
        throw;
    } catch (const Base::BadInput& error) { // as long as the module is not needed
        if (lexer_.token().kind == Kind::end || lexer_.token().kind == Kind::invalid)
            throw;
        module_.setBehaviour(error.diagnostic().place, error.diagnostic().text, true);
        skipToSeparator();
        if (!lexer_.isAt(',') && !lexer_.isAt(';'))
            lexer_.failExpected("',' or ';'");
        return;
    }
    if (!expression_.isComputed()) {
        if (module_.alias(left, right.operands.front()) && inversions_.count++ == 0)
            inversions_.first = place;
    } else if (right.isBitwise)
        for (std::size_t bit = 0; bit < left.size(); ++bit)
            addExpression({left[left.size() - 1 - bit]}, operandsOf(right, bit), place);
    else
        addExpression(left, operandsOf(right, std::nullopt), place);
}

// The bits on which the bit at that place depends, or all of them.
VerilogModule::Bits VerilogReader::operandsOf(const VerilogExpression::Computed& computed,
                                              std::optional<std::size_t> bit) {
    VerilogModule::Bits bits;
    for (const VerilogModule::Bits& operand : computed.operands) {
        if (!bit)
            bits.insert(bits.end(), operand.begin(), operand.end());
        else if (computed.isConditional && operand.size() == 1)
            bits.push_back(operand.front());
        else if (*bit < operand.size())
            bits.push_back(operand[operand.size() - 1 - *bit]);
    }
    for (ModuleNetId& each : bits)
        if (each != Base::none)
            each = VerilogModule::plain(each);
    std::sort(bits.begin(), bits.end());
    bits.erase(std::unique(bits.begin(), bits.end()), bits.end());
    std::erase_if(bits, [](ModuleNetId each) { return each == Base::none || each == constantNet; });
    return bits;
}

// A cell "assign$1" with inputs I0, I1 ... and outputs Y0, Y1 ...
void VerilogReader::addExpression(const VerilogModule::Bits& outputs, const VerilogModule::Bits& inputs,
                                  const Base::Place& place) {
    constexpr std::size_t mostArcs = std::size_t{1} << 12, mostInAll = std::size_t{1} << 22;
    const std::size_t arcs = inputs.size() * outputs.size();
    arcsOfExpressions_ += arcs;
    if (arcs > mostArcs || arcsOfExpressions_ > mostInAll) {
        module_.setBehaviour(place,
                             "only structural Verilog can be read, found an expression of " +
                                 std::to_string(inputs.size()) + " bits for " +
                                 std::to_string(outputs.size()) + " nets",
                             true);
        return;
    }
    if (expressions_.count++ == 0)
        expressions_.first = place;
    module_.startExpression(unnamed(modules_.names.add("assign")), modules_.names.add("assign"), place);
    for (std::size_t i = 0; i < inputs.size(); ++i)
        module_.connect(modules_.names.add("I" + std::to_string(i)), Design::Direction::input, {inputs[i]},
                        place);
    for (std::size_t i = 0; i < outputs.size(); ++i)
        module_.connect(modules_.names.add("Y" + std::to_string(i)), Design::Direction::output, {outputs[i]},
                        place);
}

// --- Reading ------------------------------------------------------------------------------------------------------

Modules readVerilogModules(Input& input, Base::Diagnostics& diagnostics) {
    return VerilogReader(input, diagnostics).run();
}

Design::Netlist readVerilog(Base::Source& source, const std::string& top, Base::Diagnostics& diagnostics) {
    Input input(source);
    return flatten(readVerilogModules(input, diagnostics), top, diagnostics);
}

} // namespace Readers
