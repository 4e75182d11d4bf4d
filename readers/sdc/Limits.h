// What a constraint script may use before it is stopped.
#pragma once

#include <chrono>
#include <cstddef>
#include <string_view>

namespace Readers::Sdc {

// Prints the line to standard error and ends the process with status 2.
[[noreturn]] void endProcess(std::string_view line) noexcept;

struct Limits {
    std::chrono::milliseconds time{10'000}; // of the processor, for one file with all that it sources
    int commands = 50'000'000;              // of it
    int depth = 1'000;                      // of commands in commands
    std::size_t memory = 4'000;             // MB, of the process, that one file with all that it sources adds

    // These limits are checked between commands. A single command that exceeds them by the grace below, or in
    // which Tcl aborts the process, cannot be left: this function is called with the error's line and must
    // end the process. It may be called on another thread while that of the script goes on.
    std::chrono::milliseconds grace{2'000};
    std::size_t memoryGrace = 500; // MB
    void (*giveUp)(std::string_view line) noexcept = endProcess;

    std::size_t text = 256; // MB, of each file, inflated
};

} // namespace Readers::Sdc
