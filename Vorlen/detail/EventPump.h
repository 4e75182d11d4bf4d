// The event pump: where a run yields to the host. Unless the application is in batch mode, host events are
// processed whenever the application's event timer shows more than 250 ms. A user's stop request leaves it as
// Ruvex::Interruption.
#pragma once

#include <ctime>

namespace Vorlen::detail {

// Whether the next pump processes events.
bool isPumpDue();

// Between phases: asks the timer at once. Says whether events were processed.
bool pump();

// Inside a walk, once a pole. Reading the event timer costs more than a step of a walk: the first call asks
// it, and after that every 64th call looks at a clock that is cheap to read, and asks the timer where 10 ms
// have gone by.
class WalkPump {
public:
    // Says whether events were processed, so that the design may have changed.
    bool operator()() { return calls_++ % stride == 0 && look(); }

    // Stands for several calls after the first.
    bool pass(unsigned calls) {
        const unsigned before = calls_;
        calls_ += calls;
        return calls_ / stride != before / stride && look();
    }

private:
    static constexpr unsigned stride = 64;
    static constexpr long interval = 10; // ms

    bool look() {
        const long now = readClock();
        if (now < next_)
            return false;
        next_ = now + interval;
        return pump();
    }

    static long readClock() {
        timespec time{};
        clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
        return time.tv_sec * 1000 + time.tv_nsec / 1'000'000;
    }

    unsigned calls_ = 0;
    long next_ = 0;
};

} // namespace Vorlen::detail
