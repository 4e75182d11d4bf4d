// A line on a terminal that shows the current step: "reading x.sdf ... 42%". It is removed at the end, and
// before anything else is written to the terminal.
//
// If it is not wanted, nothing is written. A call that does not change the line costs a comparison, and the
// same step is redrawn at most ten times a second.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace Cli {

class Progress {
public:
    using Clock = std::chrono::steady_clock;

    // wanted: see wantsProgress(). now: for tests.
    Progress(int descriptor, bool wanted, Clock::time_point (*now)() = &Clock::now);
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Shows the step, and how much of it is done. Without a total there is no percentage.
    void show(std::string_view step, std::uint64_t done = 0, std::uint64_t total = 0);

    // Removes the line until the next show(). Call it before other output to the terminal.
    void clear();

    // Removes the line that was shown last, for a process that ends at once. Safe in a signal handler.
    static void abandon() noexcept;

private:
    void draw(const std::string& line);
    void write(std::string_view bytes);

    int descriptor_;
    bool wanted_;
    Clock::time_point (*now_)();
    bool visible_ = false;
    std::string step_;
    unsigned percent_ = 0;
    Clock::time_point drawn_{};
};

} // namespace Cli
