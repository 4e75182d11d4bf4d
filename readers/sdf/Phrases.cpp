// Reading of ports, conditions and values.
#include "readers/sdf/Phrases.h"

#include <algorithm>

namespace Readers::Sdf {

// --- Statements ---

bool Phrases::open(Base::Position& place) {
    if (lexer_.peek() != '(')
        return false;
    place = lexer_.where();
    lexer_.skip();
    return true;
}

Keyword Phrases::keyword() {
    if (!Lexer::isLetter(lexer_.peek()))
        lexer_.fail("a keyword");
    wordPlace_ = lexer_.where();
    word_ = lexer_.word();
    return keywordOf(word_);
}

void Phrases::refuse(std::string_view expected) const { lexer_.fail(wordPlace_, expected, word_); }

// --- Ports ---

void Phrases::port(NameText& into) {
    lexer_.name(into, "a port");
    if (into.path().pin.empty())
        lexer_.fail("a pin behind the divider");
}

void Phrases::edgeWord() {
    lexer_.peek();
    wordPlace_ = lexer_.where();
    word_ = lexer_.word();
    if (word_.empty())
        lexer_.fail("an edge");
}

// The port that follows on the edge just taken, and the ")".
void Phrases::edge(EventText& into) {
    constexpr std::string_view others[] = {"01", "10", "0z", "z1", "1z", "z0"};
    const Keyword keyword = keywordOf(word_);
    if (keyword == Keyword::posedge) {
        into.edge = Design::Transition::rise;
    } else if (keyword == Keyword::negedge) {
        into.edge = Design::Transition::fall;
    } else {
        const auto same = [this](std::string_view text) {
            return std::ranges::equal(text, word_, {}, {}, [](char c) { return c == 'Z' ? 'z' : c; });
        };
        if (std::ranges::none_of(others, same))
            refuse("an edge");
    }
    port(into.name);
    lexer_.expect(')');
}

void Phrases::edgedPort(EventText& into) {
    into.edge = Design::Transition::any;
    into.conditional = false;
    if (lexer_.take('(')) {
        edgeWord();
        edge(into);
    } else {
        port(into.name);
    }
}

void Phrases::checkedPort(EventText& into) {
    into.edge = Design::Transition::any;
    into.conditional = false;
    if (!lexer_.take('(')) {
        port(into.name);
        return;
    }
    edgeWord();
    if (keywordOf(word_) == Keyword::cond)
        guardedPort(into);
    else
        edge(into);
}

void Phrases::guardedPort(EventText& into) {
    condition();
    into.conditional = true;
    if (lexer_.take('(')) {
        edgeWord();
        edge(into);
    } else {
        port(into.name);
    }
    lexer_.expect(')');
}

// What a condition guards follows on an operand without an operator between: two names, or a name and a
// parenthesis. Between parentheses, brackets and braces two operands in a row are a fault: one that closes is
// missing.
void Phrases::condition() {
    if (lexer_.peek() == '"')
        lexer_.quoted(label_);
    closing_.clear();
    bool operand = false; // whether one ends here
    for (;;) {
        const int next = lexer_.peek();
        const bool named = Lexer::isNameStart(next) && (next != '/' || !operand); // else it divides
        if (closing_.empty() && operand && (named || next == '(' || next == ')'))
            return;
        if (operand && (named || next == '"'))
            lexer_.fail(closing_.empty() ? "a condition"
                                         : std::string("an operator or '") + closing_.back() + "'");
        if (named)
            lexer_.skipName();
        else if (next == '"')
            lexer_.quoted(label_);
        operand = named || next == '"' || sign(next, operand);
    }
}

// An operator, a parenthesis or what belongs to a number. Whether an operand ends with it.
bool Phrases::sign(int next, bool operand) {
    const bool closes = next == ')' || next == ']' || next == '}';
    if (closes && (!operand || closing_.empty()))
        lexer_.fail("a condition");
    if (closes && closing_.back() != next)
        lexer_.fail(std::string("'") + closing_.back() + "'");
    lexer_.skipOperator();
    if (closes)
        closing_.pop_back();
    else if (next == '(' || next == '[' || next == '{')
        closing_ += next == '(' ? ')' : next == '[' ? ']' : '}';
    if (next == '\'')
        digits();
    return closes || next == '\'';
}

// The base and the digits of "1'b0", or those of "'0'". There may be blanks between them.
void Phrases::digits() {
    constexpr std::string_view bases = "bBoOdDhH";
    lexer_.wordHere(label_);
    std::string_view base = label_;
    if (base.starts_with('s') || base.starts_with('S'))
        base.remove_prefix(1);
    if (base.size() == 1 && bases.find(base[0]) != std::string_view::npos)
        lexer_.word();
}

// --- Values ---

// A member of a triple, which may be missing before the character that ends it.
void Phrases::member(std::optional<Base::Decimal>& into, char behind) {
    if (lexer_.peek() != behind)
        into = lexer_.number();
}

// A value after its "(", and its ")".
void Phrases::valueBody(Value& into) {
    into = {};
    if (lexer_.take(')'))
        return;
    member(into.minimum, ':');
    if (lexer_.take(')')) {
        into.typical = into.maximum = into.minimum;
        return;
    }
    if (!lexer_.take(':'))
        lexer_.fail("':' or ')'");
    member(into.typical, ':');
    lexer_.expect(':');
    member(into.maximum, ')');
    lexer_.expect(')');
}

void Phrases::value(Value& into) {
    if (!lexer_.take('('))
        lexer_.fail("a value");
    valueBody(into);
}

std::span<const Value> Phrases::exactly(std::size_t count) {
    for (Value& into : std::span(values_).first(count))
        value(into);
    return std::span(values_).first(count);
}

// A value of a delay after its "(": alone, or with the limits of pulses after it, "((10) (3) (5))". Whether
// there were limits.
bool Phrases::delay(Value& into) {
    if (!lexer_.take('(')) {
        valueBody(into);
        return false;
    }
    valueBody(into);
    constexpr int mostLimits = 2;
    Value limit;
    int limits = 0;
    for (; limits < mostLimits && lexer_.take('('); ++limits)
        valueBody(limit);
    lexer_.expect(')');
    return limits != 0;
}

bool Phrases::retention(Base::Position& place) {
    opened_ = open(openedPlace_);
    place = openedPlace_;
    if (!opened_ || !Lexer::isLetter(lexer_.peek()))
        return false;
    if (keyword() != Keyword::retain)
        refuse("RETAIN or a number");
    lexer_.skipGroup();
    opened_ = false;
    return true;
}

Phrases::Delays Phrases::delays() {
    static const std::string wrong = "expected 1, 2, 3, 6 or 12 values, found ";
    Delays delays;
    std::size_t count = 0;
    for (; opened_ || open(openedPlace_); opened_ = false) {
        if (count == mostValues)
            lexer_.failAt(openedPlace_, wrong + "more");
        if (delay(values_[count++]) && !delays.limits) {
            delays.limits = true;
            delays.limitsPlace = openedPlace_;
        }
    }
    if (count == 0)
        lexer_.fail("a value");
    if (lexer_.peek() != ')')
        lexer_.fail("')'");
    if (count != 1 && count != 2 && count != 3 && count != 6 && count != mostValues)
        lexer_.failAt(lexer_.where(), wrong + std::to_string(count));
    lexer_.skip();
    delays.values = std::span(values_).first(count);
    return delays;
}

} // namespace Readers::Sdf
