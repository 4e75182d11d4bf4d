// The slack of every end point, from every path under every pair of launch and capture edges.
//
// Nothing is merged, pruned or shared: a path's slack is its own sum. The cost is paths x launches x captures
// x exceptions, so it is for small designs only. Slacks are exact, in picoseconds.
#pragma once

#include "Exceptions.h"

#include <cstdint>
#include <utility>

namespace Brute {

// One pair of clocks and its exception that reach the worst slack.
struct Worst {
    std::string launch, capture; // clock names; empty if there is none
    int exception = none;        // the one that governs, index into Design::exceptions

    auto operator<=>(const Worst&) const = default;
};
struct SideResult {
    std::int64_t slack = 0;
    std::set<Worst> pairs; // all that reach the worst slack
};
struct EndResult {
    std::optional<SideResult> setup, hold;
};
using Result = std::map<std::string, EndResult>; // key: "cell/pin" or port; only end points with a slack

Result analyse(const Design& design, const Options& options);

// The exceptions that name a path under a pair of clocks, whether or not they govern it.
struct Naming {
    const DataPath* path = nullptr;
    Launch launch;
    Capture capture;
    std::set<int> exceptions;
};
std::vector<Naming> namings(const Design& design, const Clocks& clocks, const std::vector<DataPath>& paths,
                            const Options& options);

} // namespace Brute
