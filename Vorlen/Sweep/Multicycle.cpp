// Exceptions that govern a timing map: multicycle factors, and the choice of the one exception that governs a
// path.
#include "Pelko/Analyzer.h"
#include "Pelko/Subdomain.h"
#include "Ruvex/Console.h"
#include "Ruvex/Utility.h"
#include "Vorlen/Sweep.h"
#include "Vorlen/detail/Faults.h"
#include "Vorlen/detail/Messages.h"

#include <cmath>
#include <limits>

namespace Vorlen {

using Pelko::analyzer;
using Pelko::ClockMode;
using Pelko::CPath;
using Pelko::Delay;
using Pelko::DPath;
using Pelko::MPath;
using Pelko::PseudoMask;

namespace {

// A product modulo 2^32. A special is never scaled.
Delay multiply(const Delay& delay, unsigned long factor) {
    if (!delay.isOrdinary())
        return delay;
    return Delay(static_cast<int>(static_cast<unsigned>(int(delay)) * static_cast<unsigned>(factor)));
}

constexpr double noMultiplier = 1e8;

// The smallest multiplier of the multicycle paths, as a 32-bit value; `noMultiplier` if there is none.
double leastMultiplier(const Ruvex::Collection<MPath*>& paths) {
    double least = noMultiplier;
    for (const MPath* path : paths) {
        const Delay multiplier(static_cast<int>(static_cast<unsigned>(path->getMultiplier())));
        if (multiplier.isDefined() && multiplier < Delay(static_cast<int>(least)))
            least = int(multiplier);
    }
    return least;
}

// The factor of a multiplier. Between opposite edges of a clock, cycles after the first count as phases.
double cycleFactor(const Pelko::Subdomain& subdomain, double multiplier) {
    const ClockMode launch = subdomain.getLaunchClockMode();
    if (launch == subdomain.getLatchClockMode())
        return multiplier;
    const auto dutyRatio = static_cast<double>(analyzer->getDutyRatio(subdomain.getLaunchRoot()));
    const double phase = launch.getCode() == ClockMode::Rising ? dutyRatio : 100 - dutyRatio;
    return (multiplier - 1) * 100 / phase + 1;
}

Delay divide(const Delay& delay, double factor) {
    if (!delay.isOrdinary())
        return delay;
    return Delay::saturate(static_cast<std::int64_t>(std::ceil(int(delay) / factor)));
}

void warnNotAvailable(const MPath& path, const Pelko::Subdomain& subdomain) {
    if (Ruvex::isDebug() && !Pelko::Analyzer::_muted)
        Ruvex::console.warning(
            path.getAlias() + detail::messages::multicycleNotAvailable + subdomain.getAlias(), "");
}

} // namespace

void Sweep::multiplyCycleCount(const PseudoMask& mask, TimingMap& map) {
    const Delay latest = arrivalTiming.getMaximumDelay();
    const Delay earliest = arrivalTiming.getMinimumDelay();
    for (const CPath* path : analyzer->getCPaths(mask))
        if (const auto* multicycle = dynamic_cast<const MPath*>(path))
            map[path->getPseudoMask().getBits()] =
                Timing(multiply(latest, multicycle->getMultiplier()), earliest);
    map[0] = Timing(latest, earliest);
}

void Sweep::divideCycleCount(TimingMap& map) {
    filter(analyzer->getMaxdelayPathMask(), analyzer->getMindelayPathMask(), map);
    const Pelko::Pole* launchRoot = subdomain->getLaunchRoot();
    const bool isSameClock = launchRoot && launchRoot == subdomain->getLatchRoot();
    for (auto& [key, timing] : map) {
        if (key == 0)
            continue;
        const Ruvex::Collection<MPath*> paths =
            Ruvex::TypeCollection<MPath*, CPath*>(analyzer->getCPaths(PseudoMask(key)));
        if (paths.isEmpty())
            continue;
        if (isSameClock) {
            const double factor = cycleFactor(*subdomain, leastMultiplier(paths));
            if (factor > 1.0 && factor != noMultiplier)
                timing.setMaximumDelay(divide(timing.getMaximumDelay(), factor));
            continue;
        }
        detail::require(!subdomain->isPureClock(), detail::Fault::AbnormalMulticycle);
        for (const MPath* path : paths)
            warnNotAvailable(*path, *subdomain);
    }
}

namespace {

// The choice among the exceptions of one kind. Each function chooses the first of equal ones, and returns the
// empty mask if there is no exception of the kind.

template <class Kind, class IsBetter>
PseudoMask choose(const PseudoMask& mask, IsBetter isBetter) {
    PseudoMask chosen;
    for (const CPath* path : analyzer->getCPaths(mask))
        if (const auto* candidate = dynamic_cast<const Kind*>(path); candidate && isBetter(*candidate))
            chosen = path->getPseudoMask();
    return chosen;
}

PseudoMask tightestMaxdelay(const PseudoMask& mask) {
    return choose<DPath>(mask, [least = Delay::getMaximum()](const DPath& path) mutable {
        const bool better = path.getMaxdelay() < least;
        if (better)
            least = path.getMaxdelay();
        return better;
    });
}

PseudoMask tightestMindelay(const PseudoMask& mask) {
    return choose<DPath>(mask, [greatest = Delay::minimumValue](const DPath& path) mutable {
        const bool better = int(path.getMindelay()) > greatest;
        if (better)
            greatest = int(path.getMindelay());
        return better;
    });
}

PseudoMask leastMulticycle(const PseudoMask& mask) {
    return choose<MPath>(mask,
                         [least = std::numeric_limits<unsigned long>::max()](const MPath& path) mutable {
                             const bool better = path.getMultiplier() < least;
                             if (better)
                                 least = path.getMultiplier();
                             return better;
                         });
}

PseudoMask firstDelayPath(const PseudoMask& mask) {
    return choose<DPath>(mask,
                         [isFirst = true](const DPath&) mutable { return std::exchange(isFirst, false); });
}

} // namespace

PseudoMask Sweep::getPriorityMask(const PseudoMask& mask, bool longest) const {
    const PseudoMask maxdelay = mask & analyzer->getMaxdelayPathMask();
    const PseudoMask mindelay = mask & analyzer->getMindelayPathMask();
    const PseudoMask multicycle = mask & analyzer->getMulticyclePathMask();
    if (longest) {
        if (!maxdelay.isEmpty())
            return tightestMaxdelay(maxdelay);
        if (!multicycle.isEmpty())
            return leastMulticycle(multicycle);
        return mindelay.isEmpty() ? PseudoMask() : firstDelayPath(mindelay);
    }
    if (!mindelay.isEmpty())
        return tightestMindelay(mindelay);
    if (!maxdelay.isEmpty())
        return firstDelayPath(maxdelay);
    return multicycle.isEmpty() ? PseudoMask() : leastMulticycle(multicycle);
}

} // namespace Vorlen
