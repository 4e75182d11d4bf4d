// The tokens of a Verilog text.
//
// White space, comments, attributes and the compiler directives that do not change the text are passed over;
// `ifdef and its like choose what is read. The text of a macro is put in front of what follows its name, so
// that a token may begin in a macro and end after it; its tokens are at the place of the macro's name, of
// the outermost one. A token's text is valid until the next one is read. Memory is a block, or the longest
// token.
#pragma once

#include "base/Diagnostics.h"
#include "readers/netlist/Input.h"
#include "readers/netlist/VerilogMacros.h"

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
        macro,   // "`name" of a macro that is not defined
        invalid, // after an error: what could not be read
    };
    struct Token {
        Kind kind = Kind::end;
        std::string_view text = {};
        Base::Position position = {};
    };

    static constexpr std::size_t defaultBlock = std::size_t{1} << 16;

    // advance() reads the first token. The diagnostics get what is passed over.
    VerilogLexer(Input& input, Base::Diagnostics& diagnostics, std::size_t block = defaultBlock);
    VerilogLexer(const VerilogLexer&) = delete;
    VerilogLexer& operator=(const VerilogLexer&) = delete;

    const Token& token() const { return token_; }
    // Throws BadInput for what is no token. The next call goes on after it.
    void advance();
    // The first byte after the token and the white space that follows it; negative at the end of the text.
    int firstBehind();

    // Whether `celldefine holds.
    bool isCellDefine() const { return isCellDefine_; }
    // Whether what an `include leaves out could matter: between modules it only defines cells.
    void setInModule(bool inModule) { inModule_ = inModule; }

    // A symbol, or a name that is not escaped.
    bool isAt(char symbol) const { return token_.kind == Kind::symbol && token_.text.front() == symbol; }
    bool isAt(std::string_view word) const { return token_.kind == Kind::name && token_.text == word; }

    Base::Place place() const { return token_.position.in(input_.path()); }
    // "expected a name, found ';'", at the token at hand.
    [[noreturn]] void failExpected(std::string_view what) const;
    [[noreturn]] void fail(std::string text) const { throw Base::BadInput(place(), std::move(text)); }

private:
    static constexpr int endOfText = -1;

    // An `ifdef that is open.
    struct Condition {
        Token start;
        bool isTaken; // one of its branches was read
        bool hasElse = false;
    };

    int peek() { return next_ != end_ || refill() ? static_cast<unsigned char>(*next_) : endOfText; }
    int peekSecond();
    bool refill();
    void newLine();
    void startToken();
    void finishToken(Kind kind, const char* from, const char* to);

    bool skipSpace();
    void skipName();
    void skipBlanks();
    void skipLine();
    void skipComment();
    void skipAttribute();
    void skipString(const char* what);
    [[noreturn]] void failLexing(std::string text);
    [[noreturn]] void failAtLimit(std::string text) const;

    // --- Directives ---

    bool takeDirective();
    std::string readDirectiveName();
    std::string readNameBehind(std::string_view directive);
    bool takeCondition(std::string_view name);
    void startCondition(bool isTrue, const Token& start);
    void skipInactive();
    bool skipInactiveDirective(std::size_t& depth);
    void define();
    void readBody(std::string& body);
    void includeNothing();
    void expand(std::string name);
    std::vector<std::string> readArguments(const std::string& name);
    void insert(std::string_view text);
    void append(std::string& text, char c);
    template <class Accepts>
    void skipWhile(Accepts accepts);

    void readEscaped();
    void readNumber();
    void readBased();
    void readString();
    void readSymbol();
    void readUndefined();

    Input& input_;
    Base::Diagnostics& diagnostics_;
    std::vector<char> block_;
    std::vector<char>::size_type filled_ = 0;
    char* next_ = nullptr;
    char* end_ = nullptr;
    char* begin_ = nullptr; // of the token at hand, which stays in the block; null between tokens
    std::uint32_t line_ = 1;
    std::int64_t lineBegin_ = 0; // an offset into the block, below 0 where the line began before it
    Token token_;
    bool isCellDefine_ = false;
    bool inModule_ = false;

    VerilogMacros macros_;
    std::vector<Condition> conditions_;
    std::int64_t expansionEnd_ = 0; // an offset into the block: up to there it is the text of macros
    Token expansion_;               // where the outermost macro stands
    std::size_t expansions_ = 0;    // within it
    std::uint64_t expanded_ = 0;    // bytes, of all macros
};

} // namespace Readers
