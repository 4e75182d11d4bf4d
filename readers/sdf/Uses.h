// How an SDF file uses a pin, and how many arcs may be made without an entry for each.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Readers {

enum Use : std::uint8_t { arcFrom = 1, arcTo = 2, checked = 4, checking = 8, wireFrom = 16, wireTo = 32 };

// From all inputs of a cell to all its outputs, or from all drivers of a net to all receivers. A small file
// could ask for more than there is memory for. The arcs of pads are counted from either end.
inline constexpr std::size_t mostArcs = 1'000'000;

} // namespace Readers
