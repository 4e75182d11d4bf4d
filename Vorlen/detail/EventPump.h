// The event pump: where a run yields to the host. Unless the application is in batch mode, host events are
// processed whenever the application's event timer shows more than 250 ms. A user's stop request leaves it as
// Ruvex::Interruption.
#pragma once

#include <ctime>

namespace Vorlen::detail {

// Between phases: asks the timer at once.
void pump();

// Inside a walk, once a pole. Reading the event timer costs more than a step of a walk, so the first call
// asks it, and then one call every 10 ms of a clock that is cheap to read.
class WalkPump {
public:
    void operator()() {
        const long now = readClock();
        if (now < next_)
            return;
        next_ = now + interval;
        pump();
    }

private:
    static constexpr long interval = 10; // ms

    static long readClock() {
        timespec time{};
        clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
        return time.tv_sec * 1000 + time.tv_nsec / 1'000'000;
    }

    long next_ = 0;
};

} // namespace Vorlen::detail
