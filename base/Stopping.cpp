// The flag of a request to stop.
#include "base/Stopping.h"

#include <atomic>

namespace Base {

namespace {

std::atomic<bool> stopRequested = false;
static_assert(std::atomic<bool>::is_always_lock_free);

} // namespace

void askToStop() noexcept { stopRequested = true; }

void throwIfStopped() {
    if (stopRequested)
        throw Interrupted();
}

} // namespace Base
