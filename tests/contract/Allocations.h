// Counts the allocations of this program: its global operator new, which the host's library calls as well.
#pragma once

namespace Contract {

// Returns the number of allocations since the program began.
unsigned long getAllocationCount();

} // namespace Contract
