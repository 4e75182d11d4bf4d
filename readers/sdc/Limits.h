// What a constraint script may use up before it is ended.
#pragma once

#include <chrono>

namespace Readers::Sdc {

struct Limits {
    std::chrono::milliseconds time{10'000}; // for one file with all that it sources
    int commands = 50'000'000;              // likewise
    int depth = 1'000;                      // of commands in commands
};

} // namespace Readers::Sdc
