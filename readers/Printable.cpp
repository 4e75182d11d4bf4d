// Control characters, escaped.
#include "Printable.h"

namespace Readers {

namespace {

std::string escaped(std::string_view text, bool keepsNewlines) {
    constexpr unsigned char firstPrintable = 0x20, deletion = 0x7F;
    constexpr std::string_view hexadecimal = "0123456789ABCDEF";
    std::string shown;
    shown.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte >= firstPrintable && byte != deletion) || (keepsNewlines && c == '\n')) {
            shown += c;
            continue;
        }
        shown += "\\x";
        shown += hexadecimal[byte >> 4];
        shown += hexadecimal[byte & 0xF];
    }
    return shown;
}

} // namespace

std::string printable(std::string_view text) { return escaped(text, false); }

std::string printableLines(std::string_view text) { return escaped(text, true); }

} // namespace Readers
