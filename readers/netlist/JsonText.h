// The characters of a JSON text for its parser, and the place in the text that the parser has reached.
//
// A parser that reports events does not report where a token begins. A token begins after the end of the
// previous one, which is marked, and after the white space and separators that follow. Lines are counted when
// a place is asked for, and when a block is replaced.
//
// A parser keeps what it has of a token, and white space too. Of white space, and of a string that is not
// needed, it gets only what lies in the blocks in which they begin and end, so that memory is a few blocks
// whatever the text is. Any other token may have 16 MB.
#pragma once

#include "base/Diagnostics.h"
#include "readers/netlist/Input.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <vector>

namespace Readers {

class JsonText {
public:
    explicit JsonText(Input& input) : input_(input), block_(blockSize) {}
    JsonText(const JsonText&) = delete;
    JsonText& operator=(const JsonText&) = delete;

    class Iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = char;
        using difference_type = std::ptrdiff_t;
        using pointer = const char*;
        using reference = const char&;

        Iterator() = default;
        explicit Iterator(JsonText& text) : text_(&text) {}
        reference operator*() const { return *text_->next_; }
        Iterator& operator++() {
            ++text_->next_;
            return *this;
        }
        // For comparison with the end only.
        bool operator!=(const Iterator&) const { return text_->more(); }
        bool operator==(const Iterator&) const { return !text_->more(); }

    private:
        JsonText* text_ = nullptr;
    };
    Iterator begin() { return Iterator(*this); }
    static Iterator end() { return {}; }

    // Called after each token. isIgnored: the text of the next one is not needed.
    void mark(bool isIgnored) {
        mark_ = next_;
        begin_.reset();
        isIgnored_ = isIgnored;
    }
    // Where the token at hand begins, the one after the mark. At the end of the text, where that is.
    Base::Place tokenPlace();

private:
    static constexpr std::size_t blockSize = std::size_t{1} << 16;

    static constexpr std::size_t longestToken = std::size_t{1} << 24;

    bool more() { return next_ != end_ || refill(); }
    bool refill();
    bool readBlock();
    bool isInPlainText(const char* from) const;
    void skipWhiteSpace();
    void skipString();
    void findBegin();
    Base::Place placeOf(const char* at);

    Input& input_;
    std::vector<char> block_;
    const char* next_ = block_.data();
    const char* end_ = next_;
    const char* mark_ = next_;
    const char* counted_ = next_; // lines are counted up to here
    const char* lineBegin_ = next_;
    std::size_t columnsBefore_ = 0; // of the line, in the blocks before
    unsigned line_ = 1;
    std::optional<Base::Place> begin_; // of the token at hand, once it is known
    char firstByte_ = 0;               // of that token
    std::size_t tokenBytes_ = 0;       // of it in the blocks before
    bool isIgnored_ = false;
};

} // namespace Readers
