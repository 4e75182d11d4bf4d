// Clocks and memory readings of the benchmarks.
#pragma once

#include <chrono>
#include <cstdio>
#include <ctime>
#include <unistd.h>

namespace bench {

class Stopwatch {
public:
    double seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    }

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// The current memory of the process, in bytes.
inline double residentBytes() {
    long pages = 0;
    long resident = 0;
    if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%ld %ld", &pages, &resident) != 2)
            resident = 0;
        std::fclose(file);
    }
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

// Measures how far the memory of the process rises above its current size. The kernel records the peak, and
// resets it on request.
class PeakMemory {
public:
    PeakMemory() : before_(residentBytes()) {
        if (std::FILE* file = std::fopen("/proc/self/clear_refs", "w")) {
            std::fputs("5", file);
            std::fclose(file);
        }
    }

    double getRise() const {
        std::FILE* file = std::fopen("/proc/self/status", "r");
        if (!file)
            return 0;
        double peak = 0;
        char line[256];
        while (std::fgets(line, sizeof line, file))
            if (long kilobytes = 0; std::sscanf(line, "VmHWM: %ld", &kilobytes) == 1)
                peak = static_cast<double>(kilobytes) * 1024;
        std::fclose(file);
        return peak - before_;
    }

private:
    double before_;
};

// The processor time of the work, in seconds.
template <class Work>
double processorTimeOf(Work work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    const double before = now();
    work();
    return now() - before;
}

template <class Work>
double timeOf(Work work) {
    const Stopwatch watch;
    work();
    return watch.seconds();
}

} // namespace bench
