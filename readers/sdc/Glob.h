// Name patterns: * for any characters (the hierarchy's divider too), ? for one, [a-z] and [!a-z] for one of a
// set, \x for x itself.
//
// Brackets around a bus index ("[3]", "[*]", "[3:0]") are the name's own and never a set, so that a bus bit
// needs no escapes. Matching is linear in the text for a pattern with one star, and never recursive.
#pragma once

#include <bitset>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Readers::Sdc {

class Glob {
public:
    explicit Glob(std::string_view pattern, bool ignoreCase = false);

    // Whether it has no wildcard, so that it matches literal() only.
    bool isLiteral() const { return literal_; }
    // The pattern's text without its escapes.
    const std::string& literal() const { return text_; }
    bool matches(std::string_view text) const;
    // Every text that matches begins with this; empty if case does not matter.
    std::string prefix() const;
    // The longest piece that every matching text contains; empty if case does not matter.
    const std::string& piece() const { return piece_; }
    // Whether a text that matches still matches with any characters after it.
    bool isOpen() const { return !elements_.empty() && elements_.back().kind == Kind::star; }

private:
    enum class Kind : std::uint8_t { character, any, star, set };
    struct Element {
        Kind kind = Kind::character;
        unsigned char character = 0;
        std::uint32_t set = 0; // into sets_
    };
    using Set = std::bitset<256>;

    std::size_t readSet(std::string_view pattern, std::size_t at);
    void addRange(Set& set, unsigned char first, unsigned char last) const;
    void addCharacter(char c);
    void add(Kind kind);
    unsigned char folded(unsigned char c) const;
    std::string longestPiece() const;
    bool accepts(const Element& element, unsigned char c) const;

    std::vector<Element> elements_;
    std::vector<Set> sets_;
    std::string text_, piece_;
    bool ignoreCase_ = false;
    bool literal_ = true;
};

} // namespace Readers::Sdc
