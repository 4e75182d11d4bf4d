// The last resort against a script that Tcl itself cannot end: one command that goes on without end, a value
// that outgrows Tcl, for which it aborts the process, or the memory that a script may take, and text nested
// deeper than the stack is.
//
// While a Watch lives, these become a last line, with the place of the top-level command that ran, and a call
// of Limits::giveUp. It costs a thread that sleeps, and a lock for each top-level command. What ends in time
// is none of its business: the limits of the interpreter come first.
#pragma once

#include "readers/sdc/Limits.h"

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include <ctime>

namespace Readers::Sdc {

// What the processor has spent on a thread.
using ProcessorTime = std::chrono::nanoseconds;
ProcessorTime processorTime(clockid_t thread);

// What the process holds of the machine's memory, in MB.
std::size_t heldMemory() noexcept;

class Watch {
public:
    // On the thread that evaluates the script; watches of one thread end in the reverse order.
    Watch(const Limits& limits, std::string file);
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    // The command that is evaluated from now on.
    void moveTo(const std::string& file, unsigned line);

    // For a handler of SIGSEGV that has a stack of its own: gives up where a script runs on this thread and
    // the address is beyond the end of its stack, and otherwise comes back.
    static void onFault(const void* address) noexcept;

private:
    static void onPanic(const char* format, ...) noexcept;
    void wait(const std::stop_token& stop);
    [[noreturn]] void end(std::string_view opening, std::string_view reason) noexcept;

    void (*const giveUp_)(std::string_view line) noexcept;
    const std::string overTime_, overMemory_;
    const clockid_t clock_;    // of the thread that is watched
    const ProcessorTime last_; // by that clock
    const std::size_t mostMemory_;
    const char* const stackEnd_;
    Watch* const outer_;
    std::mutex mutex_; // end() holds it, so that there is one last line
    std::condition_variable_any wake_;
    std::string file_, shownFile_;
    unsigned line_ = 0;
    std::jthread thread_; // the last one: it uses all the others
};

// "the script ran for more than 10 s"
std::string overTime(const Limits& limits);
// "the script took more than 4000 MB of memory"
std::string overMemory(const Limits& limits);

} // namespace Readers::Sdc
