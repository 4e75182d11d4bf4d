#include "exceptions/Govern.h"

#include <algorithm>
#include <compare>
#include <map>
#include <utility>

namespace Exceptions {

using Base::Side;
using Design::ExceptionId;
using Kind = Design::Exception::Kind;
using Model::Time;

namespace {

// The objects of a match, one for each place. The path itself shows which pin or cell an object is, except
// for the output that names a register.
struct Objects {
    BySet from;
    Design::PinId fromOutput;
    BySet to;
    Combination passed;

    auto operator<=>(const Objects&) const = default;
};

class Governing {
public:
    Governing(const std::vector<Match>& matches, const Periods& periods,
              const Design::Constraints& constraints, int scale)
        : matches_(matches), periods_(periods), constraints_(constraints), scale_(scale) {}

    Requirement run() const;

private:
    const Design::Exception& stated(ExceptionId exception) const {
        return constraints_.exceptions[exception];
    }
    std::pair<unsigned, bool> standingOf(const Match& match) const;
    std::vector<const Match*> best(Kind kind, Side side) const;
    std::vector<ExceptionId> survivors(Kind kind, Side side) const;
    void multicycles(Requirement& requirement) const;
    void delays(Requirement& requirement) const;
    void falsePaths(Requirement& requirement) const;
    Time setupShift(ExceptionId multicycle) const;
    Time holdBack(ExceptionId multicycle) const;

    const std::vector<Match>& matches_;
    const Periods& periods_;
    const Design::Constraints& constraints_;
    const int scale_;
};

Requirement Governing::run() const {
    Requirement requirement;
    multicycles(requirement);
    delays(requirement);
    falsePaths(requirement);
    if (const auto groups = survivors(Kind::pathGroup, Side::setup); !groups.empty())
        requirement.group = groups.back();
    return requirement;
}

// --- Which of a kind ---

// Among multicycles of one rank a command for this side only comes first.
std::pair<unsigned, bool> Governing::standingOf(const Match& match) const {
    const Design::Exception& exception = stated(match.variant->exception);
    return {match.variant->rank(), exception.kind == Kind::multicycle && exception.flagged};
}

// The matches of a kind that are for a side, and of these the ones that come first.
std::vector<const Match*> Governing::best(Kind kind, Side side) const {
    std::vector<const Match*> best;
    std::pair<unsigned, bool> highest;
    for (const Match& match : matches_) {
        const Design::Exception& exception = stated(match.variant->exception);
        if (exception.kind != kind || !isFor(exception, side))
            continue;
        const auto standing = standingOf(match);
        if (best.empty() || standing > highest) {
            best.clear();
            highest = standing;
        }
        if (standing == highest)
            best.push_back(&match);
    }
    return best;
}

// Of the best matches of a kind those that no later one on identical objects replaces, in the order of the
// commands. One may be there several times.
std::vector<ExceptionId> Governing::survivors(Kind kind, Side side) const {
    std::map<Objects, ExceptionId> last;
    for (const Match* match : best(kind, side))
        for (const BySet from : match->from.singles())
            for (const BySet to : match->to.singles())
                for (const Combination& passed : match->passed) {
                    const ExceptionId own = match->variant->exception;
                    const auto [place, isNew] =
                        last.try_emplace({from, match->variant->fromOutput, to, passed}, own);
                    place->second = std::max(place->second, own);
                }
    std::vector<ExceptionId> exceptions;
    for (const auto& [objects, exception] : last)
        exceptions.push_back(exception);
    std::ranges::sort(exceptions);
    return exceptions;
}

// --- What it requires ---

Time Governing::setupShift(ExceptionId multicycle) const {
    const Design::Exception& exception = stated(multicycle);
    return Time{exception.multiplier - 1} *
           (exception.start.value_or(false) ? periods_.launch : periods_.capture);
}

// What a command subtracts from the hold relation. A command for both sides subtracts nothing.
Time Governing::holdBack(ExceptionId multicycle) const {
    const Design::Exception& exception = stated(multicycle);
    if (!exception.flagged)
        return 0;
    return Time{exception.multiplier} * (exception.start.value_or(true) ? periods_.launch : periods_.capture);
}

// The setup count moves both relations, then the hold count moves the hold relation back.
void Governing::multicycles(Requirement& requirement) const {
    const auto shiftOf = [this](ExceptionId exception) { return setupShift(exception); };
    const auto holdBackOf = [this](ExceptionId exception) { return holdBack(exception); };
    if (const auto setups = survivors(Kind::multicycle, Side::setup); !setups.empty()) {
        const ExceptionId fewest = std::ranges::min(setups, {}, shiftOf);
        requirement.exception = {fewest, fewest};
        requirement.shift = {setupShift(fewest), setupShift(fewest)};
    }
    if (const auto holds = survivors(Kind::multicycle, Side::hold); !holds.empty()) {
        requirement.exception.hold = std::ranges::min(holds, {}, holdBackOf);
        requirement.shift.hold -= holdBack(requirement.exception.hold);
    }
}

void Governing::delays(Requirement& requirement) const {
    const auto units = [&](ExceptionId exception) {
        return Model::toUnits(stated(exception).value, scale_, constraints_.place(stated(exception).origin));
    };
    const auto take = [&](Side side, ExceptionId tightest) {
        requirement.exception[side] = tightest;
        requirement.delay[side] = units(tightest);
        requirement.ignoresLatency[side] = stated(tightest).ignoreClockLatency;
    };
    if (const auto delays = survivors(Kind::maxDelay, Side::setup); !delays.empty())
        take(Side::setup, std::ranges::min(delays, {}, units));
    if (const auto delays = survivors(Kind::minDelay, Side::hold); !delays.empty())
        take(Side::hold, std::ranges::max(delays, {}, units));
}

void Governing::falsePaths(Requirement& requirement) const {
    for (const Side side : Base::bothSides)
        if (const auto paths = survivors(Kind::falsePath, side); !paths.empty()) {
            requirement.isFalse[side] = true;
            requirement.exception[side] = paths.back();
        }
}

} // namespace

Requirement govern(const std::vector<Match>& matches, const Periods& periods,
                   const Design::Constraints& constraints, int scale) {
    return Governing(matches, periods, constraints, scale).run();
}

} // namespace Exceptions
