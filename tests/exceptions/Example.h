// The worked example of exceptions/Matcher.h on the small design: its lines, and the keys of its three paths.
#pragma once

#include "tests/exceptions/Small.h"

namespace Support {

inline constexpr const char* exampleScript = "set_multicycle_path 2 -from r0\n"
                                             "set_false_path -through g/Z -to r2/D\n"
                                             "set_max_delay 5 -from {r0 r1}\n"
                                             "set_multicycle_path 3 -from [get_clocks a]";

struct ExamplePath {
    const char* name;
    Exceptions::Key key;
    const char* matches;     // the variants
    const char* requirement; // as Small::text
};

inline std::vector<ExamplePath> examplePaths() {
    using namespace Exceptions;
    const auto key = [](unsigned start, unsigned end, std::uint64_t throughs) {
        return Key{{Small::a, Small::a}, StartNumber(start), EndNumber(end), {}, ClassSet(throughs)};
    };
    return {
        {"r0 through g to r2", key(1, 1, 0b100), "0 1 2 3", "setup false by 3, hold false by 3"},
        {"r1 to r2, not through g", key(2, 1, 0), "2 3", "setup delay 5000 by 4, hold shift 20000 by 5"},
        {"r2 to r1", key(0, 0, 0), "3", "setup shift 20000 by 5, hold shift 20000 by 5"},
    };
}

} // namespace Support
