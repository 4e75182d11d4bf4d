// JSON text: structure, and strings.
#include "JsonWriter.h"

#include <cstdint>
#include <iterator>
#include <ostream>

namespace Report {

namespace {

constexpr std::size_t blockSize = std::size_t{1} << 16;
constexpr std::size_t indentation = 2;
constexpr std::string_view replacement = "\xEF\xBF\xBD"; // U+FFFD

bool isBetween(unsigned char byte, unsigned low, unsigned high) { return byte >= low && byte <= high; }

// The length of the UTF-8 sequence that the text begins with, 0 where it is not one: overlong forms,
// surrogates and what lies beyond U+10FFFF are not.
std::size_t sequenceLength(std::string_view text) {
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

bool isPlain(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return isBetween(byte, 0x20, 0x7E) && c != '"' && c != '\\';
}

// The letter of a short escape, or 0.
char escapeLetter(char c) {
    switch (c) {
    case '"':
    case '\\':
        return c;
    case '\b':
        return 'b';
    case '\f':
        return 'f';
    case '\n':
        return 'n';
    case '\r':
        return 'r';
    case '\t':
        return 't';
    default:
        return 0;
    }
}

} // namespace

JsonWriter& JsonWriter::key(std::string_view name) {
    element();
    quoted(name);
    put(": ");
    afterKey_ = true;
    return *this;
}

void JsonWriter::string(std::string_view text) {
    element();
    quoted(text);
}

void JsonWriter::number(std::string_view digits) {
    element();
    put(digits);
}

void JsonWriter::number(std::uint64_t value) { number(fmt::format_int(value).c_str()); }

void JsonWriter::boolean(bool value) {
    element();
    put(value ? "true" : "false");
}

void JsonWriter::null() {
    element();
    put("null");
}

void JsonWriter::finish() {
    put("\n");
    flush();
}

void JsonWriter::begin(char bracket, bool block) {
    element();
    put({&bracket, 1});
    levels_.push_back({block, true});
}

void JsonWriter::end(char bracket) {
    const Level level = levels_.back();
    levels_.pop_back();
    if (level.block && !level.empty)
        newLine();
    put({&bracket, 1});
}

void JsonWriter::element() {
    if (afterKey_ || levels_.empty()) {
        afterKey_ = false;
        return;
    }
    Level& level = levels_.back();
    if (!level.empty)
        put(level.block ? "," : ", ");
    level.empty = false;
    if (level.block)
        newLine();
}

void JsonWriter::newLine() {
    put("\n");
    fmt::format_to(std::back_inserter(buffer_), "{:{}}", "", indentation * levels_.size());
    if (buffer_.size() >= blockSize)
        flush();
}

void JsonWriter::put(std::string_view text) { buffer_.append(text.data(), text.data() + text.size()); }

void JsonWriter::quoted(std::string_view text) {
    put("\"");
    while (!text.empty()) {
        std::size_t plain = 0;
        while (plain < text.size() && isPlain(text[plain]))
            ++plain;
        put(text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty())
            break;

        std::size_t length = sequenceLength(text);
        if (const char letter = escapeLetter(text.front()))
            fmt::format_to(std::back_inserter(buffer_), "\\{}", letter);
        else if (static_cast<unsigned char>(text.front()) < 0x20)
            fmt::format_to(std::back_inserter(buffer_), "\\u{:04x}", static_cast<unsigned>(text.front()));
        else
            put(length == 0 ? replacement : text.substr(0, length));
        text.remove_prefix(length == 0 ? 1 : length);
    }
    put("\"");
}

void JsonWriter::flush() {
    out_.write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
    buffer_.clear();
}

} // namespace Report
