// This program's operator new: it counts what is live, remembers the peak, and fails when it is told to.
#pragma once

#include <cstddef>

namespace Faults {

// The n-th allocation from now on (counted from 1) fails, once: by the new handler if there is one, and
// std::bad_alloc. 0: none does.
void failAllocation(unsigned long number);
// Whether that allocation has come.
bool hasFailed();

std::size_t liveBlocks();
std::size_t liveBytes();
// The most bytes that were live at once since the last call of startPeak().
void startPeak();
std::size_t peakBytes();

} // namespace Faults
