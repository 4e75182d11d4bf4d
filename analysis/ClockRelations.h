// The relations between clock edges that a run uses: each is found when the engine makes the first subdomain
// of its edges, and is fixed there in place of the engine's own.
#pragma once

#include "base/Side.h"
#include "model/ClockEdges.h"
#include "model/Ids.h"
#include "model/Relations.h"
#include "model/TimingModel.h"

#include <map>
#include <set>
#include <utility>

namespace Pelko {
class Subdomain;
} // namespace Pelko

namespace Analysis {

using Model::ClockEdges;

// Pairs of clocks, the one of the smaller index first.
using ClockPairs = std::set<std::pair<Design::ClockId, Design::ClockId>>;

class ClockRelations {
public:
    ClockRelations(const Model::Clocks& clocks, const Model::TimingModel& model)
        : clocks_(clocks), model_(model) {}

    ClockEdges edgesOf(const Pelko::Subdomain& subdomain) const;
    // Fixes the setup and hold relation of the subdomain, less the uncertainty, if both of its clocks have
    // periods; otherwise it does nothing.
    void fix(Pelko::Subdomain& subdomain);
    // Null if no subdomain of these edges was fixed. Valid as long as the object lives.
    const Model::Relation* find(const ClockEdges& edges) const;
    // The clocks whose edges were compared up to a limit only.
    ClockPairs cutOffPairs() const;

private:
    const Model::Clocks& clocks_;
    const Model::TimingModel& model_;
    std::map<ClockEdges, Model::Relation> relations_;
};

// A note for each of the first pairs, and one for the number of the others.
void noteCutOffs(const ClockPairs& pairs, const Model::Clocks& clocks, Base::Diagnostics& diagnostics);

} // namespace Analysis
