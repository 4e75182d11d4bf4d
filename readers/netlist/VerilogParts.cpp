// Small parts of statements: names, what is passed over, and going on after an error.
#include "readers/netlist/VerilogReader.h"

#include <algorithm>
#include <string>
#include <utility>

namespace Readers {

// --- Parts ---

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

// ": name", after the end of a block or module.
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

// --- Errors ---

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
    } catch (const Base::BadInput&) { // the next call goes on after it
    }
}

} // namespace Readers
