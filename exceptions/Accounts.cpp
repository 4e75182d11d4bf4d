#include "exceptions/Accounts.h"

#include "exceptions/CutSearch.h"
#include "exceptions/Govern.h"

#include <algorithm>

namespace Exceptions {

using Base::Side;

Accounts::Accounts(const Design::Constraints& constraints)
    : constraints_(constraints), uses_(constraints.exceptions.size()) {}

void Accounts::note(const std::vector<Match>& matches, const Requirement& requirement, bool isRelated) {
    for (const Match& match : matches) {
        const Design::ExceptionId exception = match.variant->exception;
        const Design::Exception& stated = constraints_.exceptions[exception];
        const auto counts = [&](Side side) {
            return isFor(stated, side) && (isRelated || requirement.delay[side]);
        };
        if (!counts(Side::setup) && !counts(Side::hold))
            continue;
        Use& use = uses_[exception];
        use.matchesPath = true;
        const auto standBehind = [&](Design::ExceptionId governing) {
            if (governing != Base::none && governing != exception)
                use.overruledBy.insert(governing);
        };
        const bool isGroup = stated.kind == Design::Exception::Kind::pathGroup;
        if (isGroup)
            standBehind(requirement.group);
        // A path group governs no path that is false on both sides.
        const bool isFalse = requirement.isFalse.setup && requirement.isFalse.hold;
        for (const Side side : Base::bothSides)
            if (isGroup ? isFalse : counts(side))
                standBehind(requirement.exception[side]);
    }
}

void Accounts::findCut(const Model::TimingModel& model, const Model::Network& network,
                       const Model::Clocks& clocks, const Variants& variants, const PointNumbers& numbers) {
    if (constraints_.clockGroups.empty())
        return;
    const Model::ClockGroups groups(constraints_.clockGroups, clocks.size());
    CutSearch search(model, network, clocks, groups, numbers);
    for (const VariantId number : variants.ids()) {
        Use& use = uses_[variants[number].exception];
        if (use.matchesPath)
            continue;
        std::ranges::copy(search.groupsThatCut(variants[number], number),
                          std::back_inserter(use.cutByGroups));
        sortOnce(use.cutByGroups);
    }
}

} // namespace Exceptions
