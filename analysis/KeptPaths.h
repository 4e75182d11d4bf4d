// The worst paths that were traced so far, of one side: at most as many as are reported, in all and of each
// end point.
//
// Equal slacks are ordered by names (ResultOrder.h), then by the pins of the path from the end point
// backwards. Keeping a path costs a logarithm of the number of paths.
#pragma once

#include "analysis/ResultOrder.h"
#include "report/Report.h"

#include <cstddef>
#include <set>
#include <unordered_map>
#include <vector>

namespace Analysis {

struct PathLimits {
    std::size_t paths = 10;      // of each side
    std::size_t perEndpoint = 1; // of them
};

struct KeptPath {
    Design::PinId end; // the pin of the end point
    Standing by;
    Report::Path path;
};

class KeptPaths {
public:
    KeptPaths(const ResultOrder& order, const PathLimits& limits)
        : order_(order), limits_(limits), all_(Order{&order_}) {}
    KeptPaths(const KeptPaths&) = delete;
    KeptPaths& operator=(const KeptPaths&) = delete;

    // Whether a path of the end point with this slack may still be among those reported.
    bool isWanted(Design::PinId end, Time slack) const;
    // Keeps the path if it is among the worst, and drops the one that it replaces. Returns false if it is
    // not; then no path that comes after it in the order is.
    bool keep(KeptPath path);
    // Adds the paths to `to`, worst first, and keeps none of them.
    void moveTo(std::vector<Report::Path>& to);

private:
    // Paths that are equal in it are reported alike.
    struct Order {
        const ResultOrder* order;
        bool operator()(const KeptPath& a, const KeptPath& b) const;
    };
    using Paths = std::multiset<KeptPath, Order>;

    const ResultOrder& order_;
    const PathLimits limits_;
    Paths all_;
    std::unordered_map<Design::PinId, std::vector<Paths::iterator>> byEnd_; // each in order
};

} // namespace Analysis
