// The characters of an SDF file, one lexical element at a time.
//
// The meaning of a character depends on its context: "1:2:3" is a triple, "a[3:0]" a name, "a==1'b1" an
// expression. So there are no tokens to be classified: the parser looks at the next character and asks for
// the element that it expects.
//
// The file passes through one block. Elements may span blocks of any size: names are gathered in the caller's
// string, whose room is reused; words and numbers are views that are valid until the next call. Line and
// column are kept as the line's number and the offset of its start, at the price of nothing per character.
#pragma once

#include "base/Source.h"
#include "readers/sdf/Handler.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Readers::Sdf {

// A hierarchical name without its escapes, and where its pin begins.
struct NameText {
    std::string text;
    std::size_t split = std::string::npos; // the last divider that is not escaped
    std::vector<std::uint32_t> escaped;    // the offsets of each '.' or '/' that was escaped
    // A part begins with a backslash. A blank may end it, as in Verilog: "u.\a+b .Q".
    bool endsAtBlank = false;

    Path path() const {
        const std::string_view view = text;
        if (split == std::string::npos)
            return {{}, view};
        return {view.substr(0, split), view.substr(split + 1), escaped};
    }
    void clear() {
        text.clear();
        split = std::string::npos;
        escaped.clear();
        endsAtBlank = false;
    }
};

class Lexer {
public:
    static constexpr std::size_t defaultBlock = std::size_t{1} << 18;
    static constexpr int endOfFile = -1;

    explicit Lexer(Base::Source& source, std::size_t blockSize = defaultBlock);

    void setDivider(char divider) { divider_ = divider; }
    char divider() const { return divider_; }

    // --- The next character ---

    // Skips white space and comments. The character that follows is not taken; endOfFile if there is none.
    int peek() {
        const auto next = static_cast<unsigned char>(*at_);
        return isElement(next) ? next : peekBehindSpace();
    }
    // Takes the next character if it is this one.
    bool take(char wanted) {
        if (peek() != wanted)
            return false;
        ++at_;
        return true;
    }
    // Takes the character that peek() found.
    void skip() { ++at_; }
    void expect(char wanted);
    // The place of the character that peek() found.
    Base::Position where() const;

    static bool isNameStart(int character);
    static bool isLetter(int character);

    // --- Elements ---

    // Letters, digits and underscores; empty if there are none. Valid until the next call.
    std::string_view word() { return run(wordCharacter); }
    // A number. Valid until the next call.
    Base::Decimal number();
    // A name with its bits, which must be there: `expected` names it in the error.
    void name(NameText& into, std::string_view expected);
    // The text between quotes, which must be there.
    void quoted(std::string& into);
    // Everything up to a closing parenthesis, which is not taken, with single blanks between.
    void bare(std::string& into);
    // Everything up to the closing parenthesis that belongs to one already taken. That is taken too.
    void skipGroup();
    // The letters and digits that follow directly, without white space before them.
    void wordHere(std::string& into);
    // One character of an expression that is no name and no parenthesis.
    int skipOperator();
    // The name that follows directly, up to a bit or a range.
    void skipName();

    // --- Errors ---

    // "expected ..., found ...", with the text that comes next.
    [[noreturn]] void fail(std::string_view expected);
    // The same for something taken already.
    [[noreturn]] void fail(Base::Position place, std::string_view expected, std::string_view found) const;
    // Anything else.
    [[noreturn]] void failAt(Base::Position place, std::string text) const;

private:
    enum Class : std::uint8_t {
        elementCharacter = 1, // begins an element for certain: neither space, nor end, nor perhaps a comment
        spaceCharacter = 2,
        wordCharacter = 4,
        nameCharacter = 8, // of a name, without a meaning of its own there
        numberCharacter = 16,
    };
    static constexpr std::array<std::uint8_t, 256> classify();
    static const std::array<std::uint8_t, 256> classes_;

    static bool is(unsigned char character, std::uint8_t wanted) {
        return (classes_[character] & wanted) != 0;
    }
    static bool isElement(unsigned char character) { return is(character, elementCharacter); }

    bool more();
    bool atEnd() { return at_ == end_ && !more(); }
    std::uint64_t offset() const { return base_ + static_cast<std::uint64_t>(at_ - buffer_.data()); }
    int peekBehindSpace();
    bool atComment();
    void skipComment();
    void newLine();
    std::string_view run(std::uint8_t wanted);
    void namePiece(NameText& into);
    void select(std::string& into);
    void escaped(std::string& into);
    void append(std::string& into, const char* from);
    std::string found();

    Base::Source& source_;
    std::size_t blockSize_;
    std::vector<char> buffer_; // a byte kept from before, a block, and a zero that ends every run
    const char* at_;
    const char* end_;
    std::uint64_t base_ = 0;      // the buffer's offset in the file
    std::uint64_t lineStart_ = 0; // the line's offset in the file
    unsigned line_ = 1;
    char divider_ = '.';
    std::string run_; // a word or a number that spans blocks
    std::string scratch_;
};

} // namespace Readers::Sdf
