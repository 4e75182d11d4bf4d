// What became of each exception: whether paths that it covers arrived anywhere, and what governs them in its
// place; or, if no such path arrived, whether clock groups separate the clocks of all that there are.
//
// Only sides that are timed count. Without a clock at both ends of a path only a maximum or minimum delay
// times it, so nothing is noted of the other sides.
#pragma once

#include "exceptions/Match.h"
#include "exceptions/PointNumbers.h"
#include "exceptions/Requirement.h"

#include <unordered_set>
#include <vector>

namespace Exceptions {

struct Use {
    bool matchesPath = false;                            // it covers some path that arrives
    std::unordered_set<Design::ExceptionId> overruledBy; // these govern such a path in its place
    // If it covers no path: the statements of clock groups that cut those which it would cover. Sorted.
    std::vector<Design::ClockGroupsId> cutByGroups;
};

class Accounts {
public:
    explicit Accounts(const Design::Constraints& constraints);

    // The matches of paths that arrived, and what is required of them. isRelated: there is a clock at both
    // ends.
    void note(const std::vector<Match>& matches, const Requirement& requirement, bool isRelated);

    // Finds out, for the exceptions that cover no path, which clock groups separate the clocks of paths that
    // they would cover. To be called when all paths are noted. Costs a walk for each such exception and
    // launch clock, up to a limit for all of them together; after that the answer for the others stays empty.
    void findCut(const Model::TimingModel& model, const Model::Network& network, const Model::Clocks& clocks,
                 const Variants& variants, const PointNumbers& numbers);

    const Base::IndexVector<Design::ExceptionId, Use>& uses() const { return uses_; }

private:
    const Design::Constraints& constraints_;
    Base::IndexVector<Design::ExceptionId, Use> uses_;
};

} // namespace Exceptions
