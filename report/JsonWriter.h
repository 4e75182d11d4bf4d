// JSON text as a stream of values. A block container puts each element on a line of its own, an inline one
// puts all of them on one line. The writer adds commas, line ends and indentation.
//
// Every string becomes valid JSON: each byte that is not part of UTF-8 is replaced by U+FFFD.
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <iosfwd>
#include <string_view>
#include <vector>

namespace Report {

class JsonWriter {
public:
    explicit JsonWriter(std::ostream& out) : out_(out) {}

    // The key of the next value.
    JsonWriter& key(std::string_view name);
    void beginObject(bool block = false) { begin('{', block); }
    void endObject() { end('}'); }
    void beginArray(bool block = false) { begin('[', block); }
    void endArray() { end(']'); }

    void string(std::string_view text);
    // The digits are written unchanged.
    void number(std::string_view digits);
    void number(std::uint64_t value);
    void boolean(bool value);
    void null();

    // Ends the document with a line end, and writes all text to the stream.
    void finish();

private:
    struct Level {
        bool block = false;
        bool empty = true;
    };

    void begin(char bracket, bool block);
    void end(char bracket);
    void element(); // writes what comes before an element: comma, line end, indentation
    void newLine();
    void put(std::string_view text);
    void quoted(std::string_view text);
    void flush();

    std::ostream& out_;
    fmt::memory_buffer buffer_;
    std::vector<Level> levels_;
    bool afterKey_ = false;
};

} // namespace Report
