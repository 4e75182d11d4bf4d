// The event pump, with which a run yields to the host. Unless the application is in batch mode, it processes
// host events when the application's event timer shows more than 250 ms. If the user has requested a stop, it
// throws Ruvex::Interruption.
#pragma once

#include <ctime>

namespace Vorlen::detail {

// Whether the next pump processes events.
bool isPumpDue();

// For use between phases: reads the timer at once. Returns whether events were processed.
bool pump();

// For use in a walk, once for each pole. Reading the event timer costs more than a step of a walk. So only
// the first call reads it; after that, every 64th call reads a cheap clock, and the timer if 10 ms have
// passed.
class WalkPump {
public:
    // Returns whether events were processed. If so, the design may have changed.
    bool operator()() { return calls_++ % stride == 0 && look(); }

    // Has the effect of several calls.
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
