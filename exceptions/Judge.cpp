#include "exceptions/Judge.h"

namespace Exceptions {

Judge::Judge(const Design::Constraints& constraints, const Model::Clocks& clocks, int scale,
             const Variants& variants, const Encoding& encoding, Accounts& accounts)
    : constraints_(constraints), clocks_(clocks), scale_(scale), matcher_(variants, encoding),
      accounts_(accounts) {}

const Requirement& Judge::requirement(const Key& key) {
    const auto [place, isNew] = known_.try_emplace(key);
    if (isNew)
        place->second = judge(key);
    return place->second;
}

Requirement Judge::judge(const Key& key) {
    const std::vector<Match> matches = matcher_.matches(key);
    if (matches.empty())
        return {};
    const auto periodOf = [&](Design::ClockId clock) {
        return clock == Base::none ? Model::Time{0} : clocks_[clock].period;
    };
    const auto [launch, capture] = std::pair(key.edges.launch, key.edges.capture);
    const Requirement requirement =
        govern(matches, {periodOf(launch), periodOf(capture)}, constraints_, scale_);
    accounts_.note(matches, requirement, launch != Base::none && capture != Base::none);
    return requirement;
}

} // namespace Exceptions
