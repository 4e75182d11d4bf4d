// Compiling and matching of name patterns.
#include "readers/sdc/Glob.h"

#include <algorithm>

namespace Readers::Sdc {

namespace {

constexpr std::size_t npos = std::string_view::npos;

// The characters that may be between the brackets of a bus index, including wildcards.
bool isIndex(std::string_view content) {
    return !content.empty() && content.find_first_not_of("0123456789*?:") == npos;
}

} // namespace

Glob::Glob(std::string_view pattern, bool ignoreCase) : ignoreCase_(ignoreCase) {
    for (std::size_t at = 0; at < pattern.size(); ++at) {
        const char c = pattern[at];
        if (c == '\\' && at + 1 < pattern.size())
            addCharacter(pattern[++at]);
        else if (c == '*')
            add(Kind::star);
        else if (c == '?')
            add(Kind::any);
        else if (c == '[')
            at = readSet(pattern, at);
        else
            addCharacter(c);
    }
    if (ignoreCase_)
        literal_ = false;
    piece_ = longestPiece();
}

// Reads the brackets that open at `at`, and tells where to go on. Brackets that are no set stand for
// themselves.
std::size_t Glob::readSet(std::string_view pattern, std::size_t at) {
    const std::size_t close = pattern.find(']', at + 1);
    const std::string_view content = close == npos ? "" : pattern.substr(at + 1, close - at - 1);
    if (content.empty() || isIndex(content) || content.find_first_of("[\\") != npos) {
        addCharacter('[');
        return at;
    }
    const bool inverted = content.size() > 1 && (content[0] == '!' || content[0] == '^');
    Set set;
    for (std::size_t i = inverted ? 1 : 0; i < content.size(); ++i) {
        const auto first = static_cast<unsigned char>(content[i]);
        if (i + 2 < content.size() && content[i + 1] == '-') {
            addRange(set, first, static_cast<unsigned char>(content[i + 2]));
            i += 2;
        } else {
            addRange(set, first, first);
        }
    }
    add(Kind::set);
    elements_.back().set = static_cast<std::uint32_t>(sets_.size());
    sets_.push_back(inverted ? ~set : set);
    return close;
}

void Glob::addRange(Set& set, unsigned char first, unsigned char last) const {
    for (unsigned c = std::min(first, last); c <= std::max(first, last); ++c)
        set.set(folded(static_cast<unsigned char>(c)));
}

void Glob::addCharacter(char c) {
    text_ += c;
    elements_.push_back({Kind::character, folded(static_cast<unsigned char>(c)), 0});
}

void Glob::add(Kind kind) {
    literal_ = false;
    if (kind == Kind::star && !elements_.empty() && elements_.back().kind == Kind::star)
        return;
    elements_.push_back({kind, 0, 0});
}

unsigned char Glob::folded(unsigned char c) const {
    return ignoreCase_ && c >= 'A' && c <= 'Z' ? static_cast<unsigned char>(c - 'A' + 'a') : c;
}

bool Glob::accepts(const Element& element, unsigned char c) const {
    if (element.kind == Kind::character)
        return element.character == c;
    return element.kind == Kind::any || (element.kind == Kind::set && sets_[element.set].test(c));
}

std::string Glob::longestPiece() const {
    std::string longest, piece;
    for (const Element& element : elements_) {
        if (ignoreCase_ || element.kind != Kind::character)
            piece.clear();
        else
            piece += static_cast<char>(element.character);
        if (piece.size() > longest.size())
            longest = piece;
    }
    return longest;
}

std::string Glob::prefix() const {
    std::string text;
    for (const Element& element : elements_) {
        if (ignoreCase_ || element.kind != Kind::character)
            break;
        text += static_cast<char>(element.character);
    }
    return text;
}

// A mismatch goes back to the last star, which then takes one character more; earlier stars need no second
// try. Most texts are ruled out by the piece that they lack.
bool Glob::matches(std::string_view text) const {
    if (text.find(piece_) == npos)
        return false;
    std::size_t element = 0, at = 0, star = npos, restart = 0;
    while (at < text.size()) {
        if (element < elements_.size() && elements_[element].kind == Kind::star) {
            star = element++;
            restart = at;
        } else if (element < elements_.size() &&
                   accepts(elements_[element], folded(static_cast<unsigned char>(text[at])))) {
            ++element;
            ++at;
        } else if (star != npos) {
            element = star + 1;
            at = ++restart;
        } else {
            return false;
        }
    }
    while (element < elements_.size() && elements_[element].kind == Kind::star)
        ++element;
    return element == elements_.size();
}

} // namespace Readers::Sdc
