#include "exceptions/Matcher.h"

#include <algorithm>

namespace Exceptions {

Matcher::Matcher(const Variants& variants, const Encoding& encoding)
    : variants_(variants), encoding_(encoding), unpinnedThrough_(encoding.atoms().size()) {
    for (const VariantId number : variants.ids()) {
        const Variant& variant = variants[number];
        if (variant.namesPoints())
            continue;
        if (variant.throughs.empty()) {
            unpinned_.push_back(number);
            continue;
        }
        for (const ThroughPoint& point : encoding.atoms().lists(number).front())
            if (auto& own = unpinnedThrough_[point.atom]; own.empty() || own.back() != number)
                own.push_back(number);
    }
}

std::vector<Match> Matcher::matches(const Key& key) {
    const std::vector<AtomId> passed = encoding_.passedAtoms(key);
    std::vector<Match> matches;
    for (const VariantId variant : candidates(key, passed))
        if (std::optional<Match> found = match(variant, key, passed))
            matches.push_back(std::move(*found));
    return matches;
}

std::vector<VariantId> Matcher::candidates(const Key& key, const std::vector<AtomId>& passed) {
    const PointNumbers& numbers = encoding_.numbers();
    std::vector<VariantId> found = betweenClocks(key.edges.launch, key.edges.capture);
    for (const Naming& naming : numbers.namings(key.start))
        found.push_back(naming.variant);
    for (const Naming& naming : numbers.namings(key.end))
        if (variants_[naming.variant].from.points.empty())
            found.push_back(naming.variant);
    for (const AtomId atom : passed)
        found.insert(found.end(), unpinnedThrough_[atom].begin(), unpinnedThrough_[atom].end());
    sortOnce(found);
    return found;
}

// Those of the variants without any points that hold between two clocks.
const std::vector<VariantId>& Matcher::betweenClocks(Design::ClockId launch, Design::ClockId capture) {
    const auto [place, isNew] = betweenClocks_.try_emplace({launch, capture});
    if (isNew)
        for (const VariantId number : unpinned_)
            if (variants_[number].from.admits(launch) && variants_[number].to.admits(capture))
                place->second.push_back(number);
    return place->second;
}

// Whether the variant covers the paths of the key, by which objects, and by which through points.
std::optional<Match> Matcher::match(VariantId number, const Key& key, const std::vector<AtomId>& passed) {
    const Variant& variant = variants_[number];
    Match match{&variant,
                encoding_.numbers().namedBy(key.start, number),
                encoding_.numbers().namedBy(key.end, number),
                {}};
    if (!variant.from.covers(match.from, key.edges.launch, key.edges.launchRise) ||
        !variant.to.covers(match.to, key.edges.capture, key.edges.captureRise))
        return std::nullopt;
    match.passed = combinations(number, passed);
    if (match.passed.empty())
        return std::nullopt;
    return match;
}

// The combinations that a path passes in order.
std::vector<Combination> Matcher::combinations(VariantId variant, const std::vector<AtomId>& passed) {
    std::vector<Combination> found(1);
    for (const ThroughList& list : encoding_.atoms().lists(variant)) {
        std::vector<Combination> longer;
        for (const ThroughPoint& point : list) {
            if (!isIn(passed, point.atom))
                continue;
            for (const Combination& combination : found)
                if (combination.empty() || isBehind(point, combination.back())) {
                    longer.push_back(combination);
                    longer.back().push_back(point);
                }
        }
        found = std::move(longer);
    }
    return found;
}

// Whether a path that passes one point may pass the other one after it. A cell is passed at its input and at
// its output, so it may be named twice.
bool Matcher::isBehind(const ThroughPoint& point, const ThroughPoint& before) {
    if (point.atom != before.atom)
        return isInOrder(before.atom, point.atom);
    return point.by > before.by || (point.by == By::cell && before.by == By::cell);
}

bool Matcher::isInOrder(AtomId before, AtomId after) {
    const auto [place, isNew] = order_.try_emplace({before, after});
    if (isNew)
        place->second = encoding_.atoms().reaches(before, after);
    return place->second;
}

} // namespace Exceptions
