// Which exception governs a path: type first, then how specific it is, then the last on identical objects,
// then the tightest; setup and hold apart.
//
// Nothing governs a side of a path that is not timed there: without a clock at both ends only a maximum or
// minimum delay times it.
#include "exceptions/Exceptions.h"

#include <algorithm>
#include <tuple>

namespace Exceptions {

using Kind = Design::Exception::Kind;

namespace {

// The bits one by one; without any, a single 0.
std::vector<std::uint32_t> bitsOf(std::uint32_t bits) {
    std::vector<std::uint32_t> each;
    for (; bits != 0; bits &= bits - 1)
        each.push_back(bits & (~bits + 1));
    if (each.empty())
        each.push_back(0);
    return each;
}

} // namespace

std::size_t Exceptions::KeyHash::operator()(const Key& key) const {
    std::uint64_t hash = key.atoms ^ (key.launchRise ? 2U : 0U) ^ (key.captureRise ? 1U : 0U);
    for (const std::uint32_t part : {key.launch, key.capture, key.start, key.end, key.endPin})
        hash = (hash ^ part) * 0x9E3779B97F4A7C15U;
    return static_cast<std::size_t>(hash ^ hash >> 32);
}

const Requirement& Exceptions::requirement(const ClockEdges& edges, std::uint32_t endPin,
                                           std::uint64_t classes) {
    const std::uint64_t digits = (std::uint64_t{1} << startClasses_) - 1;
    const auto end = endNumber_.find(endPin);
    const Key key{edges.launch,
                  edges.capture,
                  static_cast<std::uint32_t>(classes & digits),
                  end == endNumber_.end() ? 0 : end->second,
                  together_ && together_->isShared() ? endPin : Base::none,
                  edges.launchRise,
                  edges.captureRise,
                  classes & ~digits};
    const auto [place, isNew] = known_.try_emplace(key);
    if (isNew)
        place->second = decide(key);
    return place->second;
}

bool Exceptions::isInOrder(std::uint32_t before, std::uint32_t after) {
    const auto [place, isNew] = order_.try_emplace({before, after});
    if (isNew)
        place->second = reaches(atoms_[before].nodes, atoms_[after].nodes);
    return place->second;
}

// Whether a path that passes one point may pass the other one after it. A cell is passed at its input and at
// its output, so it may be named twice.
bool Exceptions::isBehind(const Point& point, const Point& before) {
    if (point.atom != before.atom)
        return isInOrder(before.atom, point.atom);
    return point.by > before.by || (point.by == byCell && before.by == byCell);
}

// The combinations of points, one of each list, that a path passes in order.
std::vector<std::vector<Exceptions::Point>>
Exceptions::waysThrough(const Variant& variant, const std::vector<std::uint32_t>& passed) {
    std::vector<std::vector<Point>> ways(1);
    for (const std::vector<Point>& list : variant.atoms) {
        std::vector<std::vector<Point>> longer;
        for (const Point& point : list) {
            if (!std::ranges::binary_search(passed, point.atom))
                continue;
            for (const std::vector<Point>& way : ways)
                if (way.empty() || isBehind(point, way.back())) {
                    longer.push_back(way);
                    longer.back().push_back(point);
                }
        }
        ways = std::move(longer);
    }
    return ways;
}

// By which objects the variant names points of a number; 0: by none.
std::uint32_t Exceptions::namedBy(const std::vector<Naming>& namings, const Variant& variant) const {
    const auto number = static_cast<std::uint32_t>(&variant - variants_.data());
    const auto found = std::ranges::lower_bound(namings, number, {}, &Naming::variant);
    return found == namings.end() || found->variant != number ? 0 : found->by;
}

// Whether the variant covers the paths of the key, by which objects, and by which through points.
std::optional<Exceptions::Match> Exceptions::match(const Variant& variant, const Key& key,
                                                   const std::vector<std::uint32_t>& passed) {
    Match match{
        &variant, namedBy(startVariants_[key.start], variant), namedBy(endVariants_[key.end], variant), {}};
    if (variant.hasFrom && match.from == 0 && !std::ranges::binary_search(variant.fromClocks, key.launch))
        return std::nullopt;
    if (variant.hasTo && match.to == 0 && !std::ranges::binary_search(variant.toClocks, key.capture))
        return std::nullopt;
    const auto isEdge = [](Design::Transition edge, bool rise) {
        return edge == Design::Transition::any || (edge == Design::Transition::rise) == rise;
    };
    if (!isEdge(variant.fromEdge, key.launchRise) || !isEdge(variant.toEdge, key.captureRise))
        return std::nullopt;
    match.passed = waysThrough(variant, passed);
    if (match.passed.empty())
        return std::nullopt;
    return match;
}

std::vector<std::uint32_t> Exceptions::survivors(const std::vector<Match>& matches, Kind kind, bool setup) {
    std::vector<const Match*> best;
    for (const Match& match : matches) {
        const Design::Exception& stated = this->stated(match.variant->exception);
        if (stated.kind != kind || !(setup ? stated.setup : stated.hold))
            continue;
        const auto standing = [&](const Match& other) {
            return std::pair(other.variant->rank(), this->stated(other.variant->exception).flagged);
        };
        // Among multicycles of one rank a command for this side alone comes first.
        const auto own = kind == Kind::multicycle ? standing(match) : std::pair(match.variant->rank(), false);
        const auto top = best.empty()               ? own
                         : kind == Kind::multicycle ? standing(*best.front())
                                                    : std::pair(best.front()->variant->rank(), false);
        if (own > top)
            best.clear();
        if (best.empty() || own == top)
            best.push_back(&match);
    }
    // On identical objects the last command counts: those of the two ends, and the points between. The path
    // itself says which pin or cell an object is, except for the output that names a register.
    std::map<std::tuple<std::uint32_t, std::uint32_t, std::uint32_t, std::vector<Point>>, std::uint32_t> last;
    for (const Match* match : best)
        for (const std::uint32_t from : bitsOf(match->from))
            for (const std::uint32_t to : bitsOf(match->to))
                for (const std::vector<Point>& passed : match->passed) {
                    std::uint32_t& exception =
                        last.try_emplace({from, match->variant->fromOutput, to, passed}).first->second;
                    exception = std::max(exception, match->variant->exception);
                }
    std::vector<std::uint32_t> exceptions;
    for (const auto& [objects, exception] : last)
        exceptions.push_back(exception);
    std::ranges::sort(exceptions);
    return exceptions;
}

// Those of the variants without any points that hold between two clocks.
const std::vector<std::uint32_t>& Exceptions::betweenClocks(std::uint32_t launch, std::uint32_t capture) {
    const auto [place, isNew] = betweenClocks_.try_emplace({launch, capture});
    if (isNew)
        for (const std::uint32_t number : unpinned_) {
            const Variant& variant = variants_[number];
            if ((!variant.hasFrom || std::ranges::binary_search(variant.fromClocks, launch)) &&
                (!variant.hasTo || std::ranges::binary_search(variant.toClocks, capture)))
                place->second.push_back(number);
        }
    return place->second;
}

// The variants that may cover the paths of a key, each once, in order.
std::vector<std::uint32_t> Exceptions::candidates(const Key& key, const std::vector<std::uint32_t>& passed) {
    std::vector<std::uint32_t> found = betweenClocks(key.launch, key.capture);
    for (const Naming& naming : startVariants_[key.start])
        found.push_back(naming.variant);
    for (const Naming& naming : endVariants_[key.end])
        if (variants_[naming.variant].from.empty())
            found.push_back(naming.variant);
    for (const std::uint32_t atom : passed)
        found.insert(found.end(), unpinnedThrough_[atom].begin(), unpinnedThrough_[atom].end());
    std::ranges::sort(found);
    const auto rest = std::ranges::unique(found);
    found.erase(rest.begin(), rest.end());
    return found;
}

Requirement Exceptions::decide(const Key& key) {
    const std::vector<std::uint32_t> passed = passedAtoms(key);
    std::vector<Match> matches;
    for (const std::uint32_t variant : candidates(key, passed))
        if (std::optional<Match> found = match(variants_[variant], key, passed))
            matches.push_back(std::move(*found));
    Requirement requirement;
    if (matches.empty())
        return requirement;

    const auto units = [&](std::uint32_t exception) {
        return Model::toUnits(stated(exception).value, scale_, placeOf(exception));
    };
    decideMulticycles(key, matches, requirement);
    if (const auto delays = survivors(matches, Kind::maxDelay, true); !delays.empty()) {
        requirement.setupException = std::ranges::min(delays, {}, units);
        requirement.maxDelay = units(requirement.setupException);
        requirement.maxIgnoresLatency = stated(requirement.setupException).ignoreClockLatency;
    }
    if (const auto delays = survivors(matches, Kind::minDelay, false); !delays.empty()) {
        requirement.holdException = std::ranges::max(delays, {}, units);
        requirement.minDelay = units(requirement.holdException);
        requirement.minIgnoresLatency = stated(requirement.holdException).ignoreClockLatency;
    }
    if (const auto paths = survivors(matches, Kind::falsePath, true); !paths.empty()) {
        requirement.falseSetup = true;
        requirement.setupException = paths.back();
    }
    if (const auto paths = survivors(matches, Kind::falsePath, false); !paths.empty()) {
        requirement.falseHold = true;
        requirement.holdException = paths.back();
    }
    if (const auto groups = survivors(matches, Kind::pathGroup, true); !groups.empty())
        requirement.group = groups.back();
    account(matches, requirement, key.launch != Base::none && key.capture != Base::none);
    return requirement;
}

// The setup count moves both relations, then the hold count moves hold back.
void Exceptions::decideMulticycles(const Key& key, const std::vector<Match>& matches,
                                   Requirement& requirement) {
    const Model::Time launch = key.launch == Base::none ? 0 : clocks_[key.launch].period;
    const Model::Time capture = key.capture == Base::none ? 0 : clocks_[key.capture].period;
    const auto setupShift = [&](std::uint32_t exception) {
        const Design::Exception& stated = this->stated(exception);
        return Model::Time{stated.multiplier - 1} * (stated.start.value_or(false) ? launch : capture);
    };
    // What a command takes off the hold relation; one for both sides takes off nothing.
    const auto holdBack = [&](std::uint32_t exception) {
        const Design::Exception& stated = this->stated(exception);
        return stated.flagged
                   ? Model::Time{stated.multiplier} * (stated.start.value_or(true) ? launch : capture)
                   : Model::Time{0};
    };
    if (const auto setups = survivors(matches, Kind::multicycle, true); !setups.empty()) {
        requirement.setupException = requirement.holdException = std::ranges::min(setups, {}, setupShift);
        requirement.setupShift = requirement.holdShift = setupShift(requirement.setupException);
    }
    if (const auto holds = survivors(matches, Kind::multicycle, false); !holds.empty()) {
        requirement.holdException = std::ranges::min(holds, {}, holdBack);
        requirement.holdShift -= holdBack(requirement.holdException);
    }
}

void Exceptions::account(const std::vector<Match>& matches, const Requirement& requirement, bool isRelated) {
    const bool setup = isRelated || requirement.maxDelay, hold = isRelated || requirement.minDelay;
    for (const Match& match : matches) {
        const std::uint32_t exception = match.variant->exception;
        const Design::Exception& stated = this->stated(exception);
        if (!(stated.setup && setup) && !(stated.hold && hold))
            continue;
        Use& use = uses_[exception];
        use.matchesPath = true;
        const auto standBehind = [&](std::uint32_t governing) {
            if (governing != Base::none && governing != exception)
                use.overruledBy.insert(governing);
        };
        if (stated.kind == Kind::pathGroup) {
            standBehind(requirement.group);
            if (requirement.falseSetup && requirement.falseHold) {
                standBehind(requirement.setupException);
                standBehind(requirement.holdException);
            }
            continue;
        }
        if (stated.setup && setup)
            standBehind(requirement.setupException);
        if (stated.hold && hold)
            standBehind(requirement.holdException);
    }
}

} // namespace Exceptions
