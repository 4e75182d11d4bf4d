// JSON text: structure, and strings.
#include "report/JsonWriter.h"

#include "base/Characters.h"

#include <cstdint>
#include <iterator>
#include <ostream>

namespace Report {

namespace {

constexpr std::size_t blockSize = std::size_t{1} << 16;
constexpr std::size_t indentation = 2;
constexpr std::string_view replacement = "\xEF\xBF\xBD"; // U+FFFD

bool isBetween(unsigned char byte, unsigned low, unsigned high) { return byte >= low && byte <= high; }

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

        const std::size_t length = Base::sequenceLength(text);
        if (const char letter = escapeLetter(text.front()))
            fmt::format_to(std::back_inserter(buffer_), "\\{}", letter);
        else if (length != 0 && Base::controlLength(text) != 0) // its last byte is its number
            fmt::format_to(std::back_inserter(buffer_), "\\u{:04x}",
                           static_cast<unsigned char>(text[length - 1]));
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
