// One pass over the bytes, block by block.
#include "readers/netlist/VerilogLexer.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace Readers {

namespace {

constexpr std::size_t longestShown = 40;                   // of a token, in a message
constexpr std::size_t longestToken = std::size_t{1} << 24; // a memory's contents may be one

enum Class : std::uint8_t { space = 1, nameStart = 2, nameRest = 4, digit = 8, baseDigit = 16, graphic = 32 };

constexpr std::array<std::uint8_t, 256> makeClasses() {
    std::array<std::uint8_t, 256> classes{};
    const auto add = [&](std::string_view bytes, int what) {
        for (const char c : bytes)
            classes[static_cast<unsigned char>(c)] |= static_cast<std::uint8_t>(what);
    };
    for (std::size_t c = '!'; c < classes.size(); ++c)
        classes[c] |= c == 0x7f ? 0 : graphic;
    add(" \t\r\v\f\n", space);
    add("0123456789", digit | nameRest);
    add("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_$", nameStart | nameRest);
    add("0123456789abcdefABCDEFxXzZ?_", baseDigit);
    return classes;
}
constexpr std::array classes = makeClasses();

bool is(int c, Class what) { return c >= 0 && (classes[static_cast<std::size_t>(c)] & what) != 0; }

} // namespace

VerilogLexer::VerilogLexer(Input& input, Base::Diagnostics& diagnostics, std::size_t block)
    : input_(input), diagnostics_(diagnostics), block_(block) {
    next_ = end_ = block_.data();
}

// --- The block ---

// Keeps the token at hand and what was not read yet.
bool VerilogLexer::refill() {
    const char* keep = begin_ ? begin_ : next_;
    const auto gone = keep - block_.data();
    const auto kept = static_cast<std::size_t>(end_ - keep);
    const auto ahead = next_ - keep;
    std::memmove(block_.data(), keep, kept);
    if (kept == block_.size())
        block_.resize(2 * kept);
    begin_ = begin_ ? block_.data() : nullptr;
    next_ = block_.data() + ahead;
    end_ = block_.data() + kept;
    lineBegin_ -= gone;
    expansionEnd_ -= gone;
    if (begin_ && kept > longestToken)
        failAtLimit("a text of more than " + std::to_string(longestToken) + " characters");
    const std::size_t got = input_.read(block_.data() + kept, block_.size() - kept);
    end_ = block_.data() + kept + got;
    return got != 0;
}

// The byte after the next one.
int VerilogLexer::peekSecond() {
    if (end_ - next_ < 2)
        refill();
    return end_ - next_ < 2 ? endOfText : static_cast<unsigned char>(next_[1]);
}

// Over a newline.
void VerilogLexer::newLine() {
    ++next_;
    ++line_;
    lineBegin_ = next_ - block_.data();
}

template <class Accepts>
void VerilogLexer::skipWhile(Accepts accepts) {
    do
        while (next_ != end_ && accepts(static_cast<unsigned char>(*next_)))
            ++next_;
    while (next_ == end_ && refill());
}

// --- Tokens ---

void VerilogLexer::startToken() {
    const std::int64_t at = next_ - block_.data();
    token_ = {Kind::end, {}, {line_, static_cast<std::uint32_t>(at - lineBegin_ + 1)}};
    if (at < expansionEnd_) {
        token_.position = expansion_.position;
    }
    begin_ = next_;
}

void VerilogLexer::finishToken(Kind kind, const char* from, const char* to) {
    token_.kind = kind;
    token_.text = {from, static_cast<std::size_t>(to - from)};
    begin_ = nullptr;
}

void VerilogLexer::advance() {
    begin_ = nullptr;
    while (skipSpace()) {
    }
    startToken();
    const int c = peek();
    if (is(c, nameStart)) {
        skipWhile([](unsigned char next) { return is(next, nameRest); });
        finishToken(Kind::name, begin_, next_);
    } else if (c == '\\')
        readEscaped();
    else if (is(c, digit))
        readNumber();
    else if (c == '\'')
        readBased();
    else if (c == '"')
        readString();
    else if (c == endOfText)
        finishToken(Kind::end, next_, next_);
    else if (c == '`')
        readUndefined();
    else
        readSymbol();
}

void VerilogLexer::readEscaped() {
    ++next_;
    skipWhile([](unsigned char c) { return is(c, graphic); });
    if (next_ - begin_ == 1)
        failLexing("expected a name behind '\\'");
    finishToken(Kind::escaped, begin_ + 1, next_);
}

// There may be blanks between a constant's width, its base and its digits.
void VerilogLexer::readNumber() {
    const auto isBlank = [](unsigned char c) { return c == ' ' || c == '\t'; };
    skipWhile([](unsigned char c) { return is(c, digit) || c == '_'; });
    const auto length = next_ - begin_;
    skipWhile(isBlank);
    if (peek() == '\'')
        readBased();
    else
        finishToken(Kind::number, begin_, begin_ + length);
}

// From the apostrophe on: a base and digits, or one digit that fills what it is connected to.
void VerilogLexer::readBased() {
    const auto isAt = [this](std::string_view some) {
        const int c = peek();
        return c != endOfText && some.find(static_cast<char>(c)) != std::string_view::npos;
    };
    ++next_;
    const bool isSigned = isAt("sS");
    if (isSigned)
        ++next_;
    if (isAt("bBoOdDhH")) {
        ++next_;
        skipWhile([](unsigned char c) { return c == ' ' || c == '\t'; });
        if (!is(peek(), baseDigit) || isAt("_"))
            failLexing("expected a number's digits");
        skipWhile([](unsigned char c) { return is(c, baseDigit); });
    } else if (!isSigned && isAt("01xXzZ"))
        ++next_;
    else
        failLexing("expected a base b, o, d or h behind the apostrophe");
    finishToken(Kind::number, begin_, next_);
}

void VerilogLexer::readString() {
    skipString("the string");
    finishToken(Kind::string, begin_, next_);
}

void VerilogLexer::readSymbol() {
    const int c = peek();
    ++next_;
    if (!is(c, graphic) || c > '~')
        failLexing("expected a Verilog text, found the byte " + std::to_string(c));
    finishToken(Kind::symbol, begin_, next_);
}

void VerilogLexer::readUndefined() {
    ++next_;
    skipName();
    finishToken(Kind::macro, begin_, next_);
}

// --- Between the tokens ---

// Returns false if a token begins.
bool VerilogLexer::skipSpace() {
    const int c = peek();
    if (c == '\n')
        newLine();
    else if (is(c, space))
        ++next_;
    else if (c == '/' && peekSecond() == '/')
        skipLine();
    else if (c == '/' && peekSecond() == '*')
        skipComment();
    else if (c == '(' && peekSecond() == '*')
        skipAttribute();
    else if (c == '`')
        return takeDirective();
    else
        return false;
    return true;
}

void VerilogLexer::skipName() {
    skipWhile([](unsigned char c) { return is(c, nameRest); });
}

void VerilogLexer::skipBlanks() {
    skipWhile([](unsigned char c) { return c == ' ' || c == '\t'; });
}

// REQUIRES: a name is at hand. It stays valid.
int VerilogLexer::firstBehind() {
    constexpr std::ptrdiff_t farthest = 4'096;
    const std::size_t size = token_.text.size();
    begin_ = next_ - size;
    std::ptrdiff_t ahead = 0;
    while (ahead < farthest && (end_ - next_ > ahead || refill()) &&
           is(static_cast<unsigned char>(next_[ahead]), space))
        ++ahead;
    token_.text = {begin_, size};
    begin_ = nullptr;
    return end_ - next_ > ahead ? static_cast<unsigned char>(next_[ahead]) : endOfText;
}

void VerilogLexer::skipLine() {
    skipWhile([](unsigned char c) { return c != '\n'; });
}

void VerilogLexer::skipComment() {
    startToken();
    begin_ = nullptr; // it need not stay
    next_ += 2;
    for (int c = peek(); c != endOfText; c = peek()) {
        if (c == '\n') {
            newLine();
            continue;
        }
        const bool isEnd = c == '*' && peekSecond() == '/';
        next_ += isEnd ? 2 : 1;
        if (isEnd)
            return;
    }
    failLexing("the comment has no end");
}

void VerilogLexer::skipAttribute() {
    startToken();
    begin_ = nullptr;
    const Token start = token_;
    next_ += 2;
    skipBlanks();
    if (peek() == ')') { // "@(*)", in which an attribute would have no name
        ++next_;
        return;
    }
    for (int c = peek(); c != endOfText; c = peek()) {
        if (c == '\n')
            newLine();
        else if (c == '"')
            skipString("a string of the attribute");
        else if (c == '*' && peekSecond() == ')') {
            next_ += 2;
            return;
        } else
            ++next_;
    }
    token_ = start;
    failLexing("the attribute has no end");
}

// A backslash takes the special meaning from the character after it.
void VerilogLexer::skipString(const char* what) {
    ++next_;
    for (int c = peek(); c != endOfText; c = peek()) {
        if (c == '\n') {
            newLine();
            continue;
        }
        if (c == '\\' && peekSecond() != '\n' && peekSecond() != endOfText)
            ++next_;
        ++next_;
        if (c == '"')
            return;
    }
    failLexing(std::string(what) + " has no end");
}

// The next token is looked for after what could not be read.
void VerilogLexer::failLexing(std::string text) {
    begin_ = nullptr;
    token_.kind = Kind::invalid;
    token_.text = {};
    throw Base::BadInput(place(), std::move(text));
}

void VerilogLexer::failExpected(std::string_view what) const {
    if (token_.kind == Kind::macro)
        fail("the macro '" + std::string(token_.text.substr(0, longestShown)) + "' is not defined");
    std::string found = "'" + std::string(token_.text.substr(0, longestShown)) +
                        (token_.text.size() > longestShown ? "...'" : "'");
    if (token_.kind == Kind::end)
        found = "the end of the file";
    fail("expected " + std::string(what) + ", found " + found);
}

} // namespace Readers
