// Characters in names: what is UTF-8, what would steer a terminal, and how that is shown.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Base {

// How many bytes the UTF-8 sequence takes that the text begins with; 0 if it begins with none.
std::size_t sequenceLength(std::string_view text) noexcept;

// How many bytes the control character takes that the text begins with; 0 if it begins with none. The second
// set of control characters (U+0080 to U+009F, in UTF-8 or as single bytes) counts as well.
std::size_t controlLength(std::string_view text) noexcept;

// How many bytes come before the first control character.
std::size_t lengthWithoutControls(std::string_view text) noexcept;

// The text with each byte of a control character as \xNN.
std::string printable(std::string_view text);
// Likewise, and newlines stay as they are.
std::string printableLines(std::string_view text);

} // namespace Base
