// The bytes that were looked at are given first, then those of the source.
#include "readers/netlist/Input.h"

#include <algorithm>

namespace Readers {

namespace {

constexpr std::size_t blockSize = std::size_t{1} << 16;
constexpr std::string_view whiteSpace = " \t\r\n\v\f";

} // namespace

std::optional<char> Input::firstByte() {
    while (pending_.size() < blockSize) {
        if (const std::size_t found = pending_.find_first_not_of(whiteSpace, taken_);
            found != std::string::npos)
            return pending_[found];
        const std::size_t known = pending_.size();
        pending_.resize(blockSize);
        const std::size_t got = source_.read(pending_.data() + known, blockSize - known);
        pending_.resize(known + got);
        if (got == 0)
            return std::nullopt;
    }
    const std::size_t found = pending_.find_first_not_of(whiteSpace, taken_);
    return found == std::string::npos ? std::nullopt : std::optional(pending_[found]);
}

std::size_t Input::read(char* buffer, std::size_t size) {
    if (taken_ == pending_.size())
        return source_.read(buffer, size);
    const std::size_t count = std::min(size, pending_.size() - taken_);
    std::copy_n(pending_.data() + taken_, count, buffer);
    taken_ += count;
    return count;
}

} // namespace Readers
