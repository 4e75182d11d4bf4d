// Relations by the edges of their clocks.
#include "analysis/ClockRelations.h"

#include "Pelko/Subdomain.h"

#include <algorithm>
#include <string>

namespace Analysis {

using Base::none;
using Base::Side;
using Model::Time;
using Pelko::Delay;

namespace {

// How many pairs are named one by one.
constexpr std::size_t namedPairs = 20;

bool isRising(const Pelko::ClockMode& mode) { return mode.getCode() == Pelko::ClockMode::Rising; }

} // namespace

ClockEdges ClockRelations::edgesOf(const Pelko::Subdomain& subdomain) const {
    return {model_.clockOf(subdomain.getLaunchRoot()), model_.clockOf(subdomain.getLatchRoot()),
            isRising(subdomain.getLaunchClockMode()), isRising(subdomain.getLatchClockMode())};
}

void ClockRelations::fix(Pelko::Subdomain& subdomain) {
    const ClockEdges edges = edgesOf(subdomain);
    const auto hasPeriod = [this](Design::ClockId clock) {
        return clock != none && clocks_[clock].period != 0;
    };
    if (!hasPeriod(edges.launch) || !hasPeriod(edges.capture))
        return;
    const auto [place, isNew] = relations_.try_emplace(edges);
    if (isNew)
        place->second =
            relate(clocks_[edges.launch], edges.launchRise, clocks_[edges.capture], edges.captureRise);
    // Uncertainty makes both relations harder to meet. The engine counts the hold relation backwards, so that
    // a smaller one is harder there as well.
    const auto fixed = [&](Time relation, Side side) {
        return Delay(
            static_cast<int>(relation - clocks_.uncertainty(edges.launch, edges.capture, none, side)));
    };
    subdomain.fixSetupRelation(fixed(place->second.setup, Side::setup));
    subdomain.fixHoldRelation(fixed(-place->second.hold, Side::hold));
}

const Model::Relation* ClockRelations::find(const ClockEdges& edges) const {
    const auto found = relations_.find(edges);
    return found == relations_.end() ? nullptr : &found->second;
}

ClockPairs ClockRelations::cutOffPairs() const {
    ClockPairs pairs;
    for (const auto& [edges, relation] : relations_)
        if (relation.cutOff)
            pairs.insert(std::minmax(edges.launch, edges.capture));
    return pairs;
}

void noteCutOffs(const ClockPairs& pairs, const Model::Clocks& clocks, Base::Diagnostics& diagnostics) {
    std::size_t named = 0;
    for (const auto& [first, second] : pairs) {
        if (named++ == namedPairs) {
            diagnostics.note({}, std::to_string(pairs.size() - namedPairs) +
                                     " more pairs of clocks have no short common period");
            return;
        }
        const Model::Clock &a = clocks[first], &b = clocks[second];
        diagnostics.note(b.place, "the common period of '" + a.name + "' and '" + b.name +
                                      "' has more than " + std::to_string(Model::edgeLimit) +
                                      " edges of the faster clock: only these are compared");
    }
}

} // namespace Analysis
