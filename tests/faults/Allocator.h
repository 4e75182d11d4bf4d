// This program's operator new: it counts the live blocks, remembers the peak, and fails on request.
#pragma once

#include <cstddef>

namespace Faults {

// Makes the n-th allocation from now on (counted from 1) fail, once: it calls the new handler if there is
// one, and throws std::bad_alloc. With 0, no allocation fails.
void failAllocation(unsigned long number);
// Returns whether that allocation has failed.
bool hasFailed();

std::size_t liveBlocks();
std::size_t liveBytes();
// Returns the largest number of bytes that were live at once since the last call of startPeak().
void startPeak();
std::size_t peakBytes();

} // namespace Faults
