// Text of inputs as it may stand on a terminal.
#pragma once

#include <string>
#include <string_view>

namespace Readers {

// The text with control characters as "\x1B". Bytes above 0x7F stay as they are.
std::string printable(std::string_view text);
// Likewise, and newlines stay too.
std::string printableLines(std::string_view text);

} // namespace Readers
