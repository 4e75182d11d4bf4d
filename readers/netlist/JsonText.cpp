// Blocks of a JSON text.
#include "readers/netlist/JsonText.h"

#include <algorithm>
#include <cstring>

namespace Readers {

namespace {

bool isBetweenTokens(char c) {
    return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == ':' || c == ',';
}

bool isWhiteSpace(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }

} // namespace

bool JsonText::refill() {
    const bool wasBegun = begin_.has_value();
    findBegin();
    bool isSkipped = false;
    if (begin_) {
        const char* from = wasBegun ? block_.data() : mark_;
        tokenBytes_ = (wasBegun ? tokenBytes_ : 0) + static_cast<std::size_t>(end_ - from);
        if (tokenBytes_ > longestToken)
            throw Base::BadInputs({{Base::Severity::error, *begin_,
                                    "a text of more than " + std::to_string(longestToken) + " bytes"}});
        isSkipped = isIgnored_ && firstByte_ == '"' && isInPlainText(from);
    }
    if (!readBlock())
        return false;
    if (isSkipped)
        skipString();
    else if (!begin_)
        skipWhiteSpace();
    mark_ = begin_ ? mark_ : next_;
    return next_ != end_;
}

// The next block, counting what goes.
bool JsonText::readBlock() {
    placeOf(end_);
    columnsBefore_ += static_cast<std::size_t>(end_ - lineBegin_);
    next_ = counted_ = lineBegin_ = block_.data();
    end_ = next_ + input_.read(block_.data(), block_.size());
    return next_ != end_;
}

// Whether the parser is in a string, and neither in an escape nor in a character of several bytes: an escape
// with its twin is shorter than what is looked at.
bool JsonText::isInPlainText(const char* from) const {
    constexpr std::ptrdiff_t enough = 16;
    return end_ - from > enough && std::all_of(end_ - enough, end_, [](char c) {
               return c != '\\' && c != '"' && static_cast<unsigned char>(c) < 0x80;
           });
}

void JsonText::skipWhiteSpace() {
    do
        next_ = std::find_if_not(next_, end_, isWhiteSpace);
    while (next_ == end_ && readBlock());
}

// To the quote that ends the string, or to a byte that must not be in it.
void JsonText::skipString() {
    bool isEscaped = false;
    do {
        for (; next_ != end_; ++next_) {
            if (static_cast<unsigned char>(*next_) < ' ' || (*next_ == '"' && !isEscaped))
                return;
            isEscaped = *next_ == '\\' && !isEscaped;
        }
    } while (readBlock());
}

Base::Place JsonText::tokenPlace() {
    findBegin();
    return begin_ ? *begin_ : placeOf(next_);
}

void JsonText::findBegin() {
    if (begin_)
        return;
    mark_ = std::find_if_not(mark_, next_, isBetweenTokens);
    if (mark_ != next_) {
        begin_ = placeOf(mark_);
        firstByte_ = *mark_;
    }
}

// Places are asked for in the order of the text.
Base::Place JsonText::placeOf(const char* at) {
    while (const void* newline = std::memchr(counted_, '\n', static_cast<std::size_t>(at - counted_))) {
        counted_ = lineBegin_ = static_cast<const char*>(newline) + 1;
        columnsBefore_ = 0;
        ++line_;
    }
    counted_ = at;
    const std::size_t column = columnsBefore_ + static_cast<std::size_t>(at - lineBegin_) + 1;
    return {input_.path(), line_, static_cast<unsigned>(column)};
}

} // namespace Readers
