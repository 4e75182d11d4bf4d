// Blocks of a JSON text.
#include "JsonText.h"

#include <algorithm>
#include <cstring>

namespace Readers {

namespace {

bool isBetweenTokens(char c) {
    return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == ':' || c == ',';
}

} // namespace

bool JsonText::refill() {
    findBegin();
    if (!begin_)
        mark_ = block_.data();
    placeOf(end_);
    columnsBefore_ += static_cast<std::size_t>(end_ - lineBegin_);
    next_ = counted_ = lineBegin_ = block_.data();
    end_ = next_ + input_.read(block_.data(), block_.size());
    return next_ != end_;
}

Place JsonText::tokenPlace() {
    findBegin();
    return begin_ ? *begin_ : placeOf(next_);
}

void JsonText::findBegin() {
    if (begin_)
        return;
    mark_ = std::find_if_not(mark_, next_, isBetweenTokens);
    if (mark_ != next_)
        begin_ = placeOf(mark_);
}

// Places are asked for in the order of the text.
Place JsonText::placeOf(const char* at) {
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
