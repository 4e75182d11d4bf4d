// Bytes to characters.
#include "base/Characters.h"

#include <algorithm>

namespace Base {

namespace {

bool isBetween(unsigned char byte, unsigned low, unsigned high) { return byte >= low && byte <= high; }

std::string escaped(std::string_view text, bool keepsNewlines) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const std::size_t plain = lengthWithoutControls(text);
        shown += text.substr(0, plain);
        text.remove_prefix(plain);
        const std::size_t control = controlLength(text);
        for (const char c : text.substr(0, control)) {
            const auto byte = static_cast<unsigned char>(c);
            if (keepsNewlines && c == '\n')
                shown += c;
            else
                shown += {'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
        }
        text.remove_prefix(control);
    }
    return shown;
}

} // namespace

// Overlong forms, surrogates and what lies beyond U+10FFFF are no sequences.
std::size_t sequenceLength(std::string_view text) noexcept {
    const auto byte = [&](std::size_t at) {
        return at < text.size() ? static_cast<unsigned char>(text[at]) : static_cast<unsigned char>(0);
    };
    const auto continues = [&](std::size_t at) { return isBetween(byte(at), 0x80, 0xBF); };
    const unsigned char first = byte(0), second = byte(1);
    if (first < 0x80)
        return 1;
    if (isBetween(first, 0xC2, 0xDF))
        return continues(1) ? 2 : 0;
    if (isBetween(first, 0xE0, 0xEF)) {
        const unsigned low = first == 0xE0 ? 0xA0 : 0x80;
        const unsigned high = first == 0xED ? 0x9F : 0xBF;
        return isBetween(second, low, high) && continues(2) ? 3 : 0;
    }
    if (isBetween(first, 0xF0, 0xF4)) {
        const unsigned low = first == 0xF0 ? 0x90 : 0x80;
        const unsigned high = first == 0xF4 ? 0x8F : 0xBF;
        return isBetween(second, low, high) && continues(2) && continues(3) ? 4 : 0;
    }
    return 0;
}

std::size_t controlLength(std::string_view text) noexcept {
    constexpr unsigned char deletion = 0x7F, leading = 0xC2; // of U+0080 to U+00BF
    const auto isBetweenAt = [&](std::size_t at, unsigned low, unsigned high) {
        return at < text.size() && isBetween(static_cast<unsigned char>(text[at]), low, high);
    };
    if (isBetweenAt(0, 0, 0x1F) || isBetweenAt(0, deletion, 0x9F))
        return 1;
    return isBetweenAt(0, leading, leading) && isBetweenAt(1, 0x80, 0x9F) ? 2 : 0;
}

// The further bytes of a sequence are no characters of their own.
std::size_t lengthWithoutControls(std::string_view text) noexcept {
    std::size_t length = 0;
    while (length < text.size() && controlLength(text.substr(length)) == 0)
        length += std::max<std::size_t>(sequenceLength(text.substr(length)), 1);
    return length;
}

std::string printable(std::string_view text) { return escaped(text, false); }

std::string printableLines(std::string_view text) { return escaped(text, true); }

} // namespace Base
