// A netlist's bytes, whose beginning can be looked at before a reader for them is chosen.
#pragma once

#include "base/Source.h"

#include <optional>
#include <string>

namespace Readers {

class Input {
public:
    explicit Input(Base::Source& source) : source_(source) {}

    const std::string& path() const { return source_.path(); }

    // Returns the first byte that is not white space, which is still to be read; nothing if a whole block is
    // white space.
    std::optional<char> firstByte();
    // As Source::read().
    std::size_t read(char* buffer, std::size_t size);

private:
    Base::Source& source_;
    std::string pending_; // looked at, not yet read
    std::size_t taken_ = 0;
};

} // namespace Readers
