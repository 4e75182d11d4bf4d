// JSON text as a stream of values. A block container puts each element on a line of its own, an inline one
// all on one line; the writer sets commas, lines and indentation.
//
// Strings become valid JSON whatever their bytes: what is not UTF-8 is replaced by U+FFFD, byte by byte.
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

    JsonWriter& key(std::string_view name); // of the value that comes next
    void beginObject(bool block = false) { begin('{', block); }
    void endObject() { end('}'); }
    void beginArray(bool block = false) { begin('[', block); }
    void endArray() { end(']'); }

    void string(std::string_view text);
    void number(std::string_view digits); // as they are
    void number(std::uint64_t value);
    void boolean(bool value);
    void null();

    // Ends the document: a line end, and all text goes to the stream.
    void finish();

private:
    struct Level {
        bool block = false;
        bool empty = true;
    };

    void begin(char bracket, bool block);
    void end(char bracket);
    void element(); // what stands before an element: comma, line, indentation
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
