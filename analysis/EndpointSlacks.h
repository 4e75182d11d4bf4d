// The worst setup and hold slack of every end point, and the sums over arrivals that only end points show:
// which exceptions govern how many of them, and at which period the paths of a clock would just be met.
//
// Adding an arrival costs a logarithm of the number of end points.
#pragma once

#include "analysis/ResultOrder.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace Analysis {

// The worst arrival of an end point on one side.
struct Worst : Standing {
    Time slack = 0;
};
using EndResult = PerSide<std::optional<Worst>>;

struct EndpointResults {
    // By the pin of the end point. An end point all of whose paths are false is not listed.
    std::map<Design::PinId, EndResult> worst;
    // By exception, the number of end points at which it governs some path on that side. A path group governs
    // those of its paths that are not false.
    PerSide<Base::IndexVector<Design::ExceptionId, std::uint64_t>> governed;
    // The periods at which all setup paths from the clock to itself would just be met. A clock without such
    // paths is not listed.
    std::map<Design::ClockId, Time> achievedPeriods;
};

class EndpointSlacks {
public:
    // All of it must outlive the object.
    EndpointSlacks(const ResultOrder& order, const Model::Clocks& clocks,
                   const Design::Constraints& constraints)
        : order_(order), clocks_(clocks), constraints_(constraints) {}

    void add(const ClockEdges& edges, const Arrival& arrival);
    // Hands the results over. Call it once.
    EndpointResults take();

private:
    void noteGoverning(const Arrival& arrival);
    void achieve(const ClockEdges& edges, const Arrival& arrival);

    const ResultOrder& order_;
    const Model::Clocks& clocks_;
    const Design::Constraints& constraints_;
    EndpointResults results_; // the counts of exceptions come last
    // Exceptions, and the end pins at which they govern.
    PerSide<std::set<std::pair<Design::ExceptionId, Design::PinId>>> governed_;
};

} // namespace Analysis
