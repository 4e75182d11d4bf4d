// The tokens of a Verilog text.
//
// White space, comments, attributes and the compiler directives that do not change the text are passed over.
// A token's text is valid until the next one is read. Memory is a block, or the longest token.
#pragma once

#include "../Diagnostics.h"
#include "Input.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Readers {

class VerilogLexer {
public:
    enum class Kind : std::uint8_t {
        end,
        name,    // a keyword too
        escaped, // a name without its backslash
        number,  // "12", "4'b10 1": with the white space inside
        string,  // with its quotes
        symbol,  // one character
    };
    struct Token {
        Kind kind = Kind::end;
        std::string_view text = {};
        std::uint32_t line = 0, column = 0;
    };

    static constexpr std::size_t defaultBlock = std::size_t{1} << 16;

    // Reads the first token.
    explicit VerilogLexer(Input& input, std::size_t block = defaultBlock);
    VerilogLexer(const VerilogLexer&) = delete;
    VerilogLexer& operator=(const VerilogLexer&) = delete;

    const Token& token() const { return token_; }
    void advance();

    // A symbol, or a name that is not escaped.
    bool isAt(char symbol) const { return token_.kind == Kind::symbol && token_.text.front() == symbol; }
    bool isAt(std::string_view word) const { return token_.kind == Kind::name && token_.text == word; }

    Place place() const { return {input_.path(), token_.line, token_.column}; }
    // "expected a name, found ';'", at the token at hand.
    [[noreturn]] void failExpected(std::string_view what) const;
    [[noreturn]] void fail(std::string text) const { throw BadInput(place(), std::move(text)); }

private:
    static constexpr int endOfText = -1;

    int peek() { return next_ != end_ || refill() ? static_cast<unsigned char>(*next_) : endOfText; }
    int peekSecond();
    bool refill();
    void newLine();
    void startToken();
    void finishToken(Kind kind, const char* from, const char* to);

    bool skipSpace();
    void skipLine();
    void skipComment();
    void skipAttribute();
    void skipString(const char* what);
    void skipDirective();
    template <class Accepts>
    void skipWhile(Accepts accepts);

    void readEscaped();
    void readNumber();
    void readBased();
    void readString();
    void readSymbol();

    Input& input_;
    std::vector<char> block_;
    std::vector<char>::size_type filled_ = 0;
    char* next_ = nullptr;
    char* end_ = nullptr;
    char* begin_ = nullptr; // of the token at hand, which stays in the block; null between tokens
    std::uint32_t line_ = 1;
    std::int64_t lineBegin_ = 0; // an offset into the block, below 0 where the line began before it
    Token token_;
};

} // namespace Readers
