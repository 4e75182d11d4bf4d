// The scanning loops over the block.
//
// Invariant: *end_ is a zero byte, which belongs to no class, so that a loop over a class needs no look at
// the end; what stops at end_ asks for more and goes on. At most one unread byte is ever carried over to the
// next block.
#include "readers/sdf/Lexer.h"

#include "base/Diagnostics.h"

#include <cstring>

namespace Readers::Sdf {

namespace {

constexpr std::size_t carried = 1;                        // a slash, until the byte after it is known
constexpr std::size_t longestText = std::size_t{1} << 20; // of a name or string: memory stays bounded
constexpr std::size_t longestFound = 40;                  // of what a message quotes
constexpr unsigned char firstPrintable = 0x20;
constexpr unsigned char deleteCharacter = 0x7f;
constexpr unsigned char firstNonAscii = 0x80;

bool isControl(unsigned char character) { return character < firstPrintable || character == deleteCharacter; }
bool isControl(char character) { return isControl(static_cast<unsigned char>(character)); }

std::string quote(std::string_view text) { return "'" + std::string(text) + "'"; }

} // namespace

constexpr std::array<std::uint8_t, 256> Lexer::classify() {
    std::array<std::uint8_t, 256> classes{};
    const auto mark = [&classes](std::string_view characters, int bits) {
        for (const char character : characters) {
            std::uint8_t& entry = classes[static_cast<unsigned char>(character)];
            entry = static_cast<std::uint8_t>(entry | bits);
        }
    };
    for (std::size_t c = firstPrintable + 1; c < classes.size(); ++c)
        if (c != '/' && c != deleteCharacter)
            classes[c] = elementCharacter;
    for (std::size_t c = firstNonAscii; c < classes.size(); ++c)
        classes[c] |= nameCharacter;
    mark(" \t\n\r\v\f", spaceCharacter);
    mark("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_", wordCharacter | nameCharacter);
    mark("$", nameCharacter);
    mark("0123456789.+-eE", numberCharacter);
    return classes;
}

const std::array<std::uint8_t, 256> Lexer::classes_ = classify();

Lexer::Lexer(Base::Source& source, std::size_t blockSize)
    : source_(source), blockSize_(blockSize), buffer_(carried + blockSize + 1), at_(buffer_.data()),
      end_(buffer_.data()) {}

bool Lexer::isLetter(int character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool Lexer::isNameStart(int character) {
    if (character == endOfFile)
        return false;
    return is(static_cast<unsigned char>(character), nameCharacter) || character == '\\' ||
           character == '.' || character == '/';
}

// Reads the next block and puts it after the unread bytes. Returns false at the end of the file.
bool Lexer::more() {
    const auto kept = static_cast<std::size_t>(end_ - at_);
    base_ = offset();
    std::memmove(buffer_.data(), at_, kept);
    at_ = buffer_.data();
    end_ = at_ + kept; // holds even if reading throws
    const std::size_t got = source_.read(buffer_.data() + kept, blockSize_);
    end_ += got;
    buffer_[kept + got] = '\0';
    return got != 0;
}

// --- White space and comments ---

// Behind a line's end.
void Lexer::newLine() {
    ++line_;
    lineStart_ = offset();
}

int Lexer::peekBehindSpace() {
    for (;;) {
        const auto next = static_cast<unsigned char>(*at_);
        if (isElement(next))
            return next;
        if (is(next, spaceCharacter)) {
            ++at_;
            if (next == '\n')
                newLine();
        } else if (at_ == end_) {
            if (!more())
                return endOfFile;
        } else if (atComment()) {
            skipComment();
        } else {
            return static_cast<unsigned char>(*at_);
        }
    }
}

// Whether a comment begins here. The next byte is there.
bool Lexer::atComment() {
    if (*at_ != '/')
        return false;
    if (end_ - at_ == 1)
        more();
    return at_[1] == '/' || at_[1] == '*';
}

void Lexer::skipComment() {
    const bool toLineEnd = at_[1] == '/';
    at_ += 2;
    for (bool star = false; !atEnd();) {
        const char next = *at_;
        if (next == '\0')
            fail(toLineEnd ? "the end of the line" : "'*/'");
        ++at_;
        if (next == '\n') {
            newLine();
            if (toLineEnd)
                return;
        }
        if (star && next == '/' && !toLineEnd)
            return;
        star = next == '*';
    }
    if (!toLineEnd)
        fail("'*/'");
}

// --- Elements ---

void Lexer::expect(char wanted) {
    if (!take(wanted))
        fail(quote({&wanted, 1}));
}

Base::Position Lexer::where() const { return {line_, static_cast<unsigned>(offset() - lineStart_ + 1)}; }

void Lexer::append(std::string& into, const char* from) {
    into.append(from, at_);
    if (into.size() > longestText)
        failAt(where(), "a text of more than " + std::to_string(longestText) + " characters");
}

std::string_view Lexer::run(std::uint8_t wanted) {
    peek();
    const char* from = at_;
    while (is(static_cast<unsigned char>(*at_), wanted))
        ++at_;
    if (at_ != end_)
        return {from, at_};
    run_.clear();
    append(run_, from);
    while (at_ == end_ && more()) {
        from = at_;
        while (is(static_cast<unsigned char>(*at_), wanted))
            ++at_;
        append(run_, from);
    }
    return run_;
}

Base::Decimal Lexer::number() {
    peek();
    const Base::Position place = where();
    const std::string_view text = run(numberCharacter);
    if (text.empty())
        fail("a number");
    // A letter that follows directly is not the next element: "12x" is not a number.
    if (const int next = at_ == end_ ? endOfFile : *at_; !isLetter(next))
        if (const std::optional<Base::Decimal> value = Base::Decimal::parse(text))
            return *value;
    std::string all(text);
    all += run(wordCharacter);
    fail(place, "a number", all);
}

// An escape: the character after a backslash, whatever it is.
void Lexer::escaped(std::string& into) {
    ++at_;
    if (atEnd() || isControl(*at_))
        fail("a character behind '\\'");
    into += *at_++;
}

// A bit or a range, "[3]" or "[7 : 0]", without its blanks.
void Lexer::select(std::string& into) {
    for (;;) {
        const char character = *at_;
        const char* const from = at_++;
        append(into, from);
        if (character == ']')
            return;
        const int next = peek();
        constexpr std::string_view others = ":]+-*.";
        if (next == endOfFile || (!is(static_cast<unsigned char>(next), nameCharacter) &&
                                  others.find(static_cast<char>(next)) == std::string_view::npos))
            fail("']'");
    }
}

// The part of a name up to white space.
void Lexer::namePiece(NameText& into) {
    for (;;) {
        const char* const from = at_;
        while (is(static_cast<unsigned char>(*at_), nameCharacter))
            ++at_;
        append(into.text, from);
        if (at_ == end_) {
            if (!more())
                return;
        } else if (*at_ == '\\') {
            into.endsAtBlank |= into.text.size() == (into.split == std::string::npos ? 0 : into.split + 1);
            escaped(into.text);
            if (into.text.back() == '.' || into.text.back() == '/')
                into.escaped.push_back(static_cast<std::uint32_t>(into.text.size() - 1));
        } else if (*at_ == '[') {
            select(into.text);
        } else if (*at_ == '.' || (*at_ == '/' && !atComment())) {
            if (*at_ == '/' || divider_ == '.')
                into.split = into.text.size();
            into.text += *at_++;
        } else {
            return;
        }
    }
}

void Lexer::name(NameText& into, std::string_view expected) {
    into.clear();
    if (!isNameStart(peek()))
        fail(expected);
    do
        namePiece(into);
    while (peek() == '[' || (into.endsAtBlank && peek() == divider_));
}

// At its first quote.
void Lexer::quoted(std::string& into) {
    into.clear();
    skip();
    for (;;) {
        if (atEnd() || (isControl(*at_) && *at_ != '\t'))
            fail("'\"'");
        if (*at_ == '"')
            break;
        const char* const from = at_++;
        append(into, from);
        // A quote or a backslash may be escaped; before anything else a backslash is one.
        if (into.back() == '\\' && !atEnd() && (*at_ == '"' || *at_ == '\\'))
            into.back() = *at_++;
    }
    ++at_;
}

void Lexer::bare(std::string& into) {
    into.clear();
    for (std::uint64_t behind = offset();; behind = offset()) {
        const int next = peek();
        if (next == ')')
            return;
        if (next == endOfFile || next == '(' || next == '"' || isControl(static_cast<unsigned char>(next)))
            fail("')'");
        if (!into.empty() && offset() != behind)
            into += ' ';
        const char* const from = at_++;
        append(into, from);
    }
}

int Lexer::skipOperator() {
    const int next = peek();
    if (next == endOfFile || isControl(static_cast<unsigned char>(next)))
        fail("')'");
    ++at_;
    return next;
}

void Lexer::skipName() {
    for (;;) {
        const auto next = static_cast<unsigned char>(*at_);
        if (at_ == end_) {
            if (!more())
                return;
        } else if (next == '\\') {
            scratch_.clear();
            escaped(scratch_);
        } else if (is(next, nameCharacter) || next == '.' || (next == '/' && !atComment())) {
            ++at_;
        } else {
            return;
        }
    }
}

void Lexer::wordHere(std::string& into) {
    into.clear();
    for (; !atEnd() && is(static_cast<unsigned char>(*at_), wordCharacter); ++at_)
        if (into.size() < longestText)
            into += *at_;
}

void Lexer::skipGroup() {
    for (std::size_t depth = 1; depth != 0;) {
        const int next = peek();
        if (next == '"') {
            quoted(scratch_);
        } else if (next == '\\') {
            scratch_.clear();
            escaped(scratch_);
        } else {
            skipOperator();
            depth += next == '(';
            depth -= next == ')';
        }
    }
}

// --- Errors ---

// The text that comes next, for a message.
std::string Lexer::found() {
    if (atEnd())
        return "the end of the file";
    if (*at_ == '\n' || *at_ == '\r')
        return "the end of the line";
    if (isControl(*at_)) {
        constexpr std::string_view hexadecimal = "0123456789abcdef";
        const auto byte = static_cast<unsigned char>(*at_);
        return std::string("byte 0x") + hexadecimal[byte >> 4] + hexadecimal[byte & 0xf];
    }
    std::string text(1, *at_++);
    constexpr std::string_view alone = "()\" ";
    if (alone.find(text[0]) != std::string_view::npos)
        return quote(text);
    while (!atEnd() && !isControl(*at_) && alone.find(*at_) == std::string_view::npos) {
        if (text.size() == longestFound)
            return quote(text + "...");
        text += *at_++;
    }
    return quote(text);
}

void Lexer::fail(std::string_view expected) {
    const Base::Position place = where();
    failAt(place, "expected " + std::string(expected) + ", found " + found());
}

void Lexer::fail(Base::Position place, std::string_view expected, std::string_view found) const {
    failAt(place, "expected " + std::string(expected) + ", found " + quote(found));
}

void Lexer::failAt(Base::Position place, std::string text) const {
    throw Base::BadInput({source_.path(), place.line, place.column}, std::move(text));
}

} // namespace Readers::Sdf
