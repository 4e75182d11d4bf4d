// The map operations on one pole's timings, which are kept per exception class.
#include "ReferenceSweep.h"

#include "Ruvex/Console.h"
#include "Ruvex/Utility.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace oracle {

using Pelko::CPath;
using Pelko::Delay;
using Pelko::DPath;
using Pelko::MPath;
using Pelko::PseudoMask;
using Vorlen::Timing;

ReferenceSweep::ReferenceSweep(Pelko::Subdomain* subdomain) : subdomain_(subdomain) {
    if (!subdomain)
        throw Ruvex::FactoryFailed(
            Ruvex::InternalError("Null subdomain", Ruvex::Error::locate("Sweep", "preCreate", 73)));
}

// --- Masking ---

void ReferenceSweep::filter(const PseudoMask& mask, Map& map) {
    if (mask.isEmpty())
        return;
    std::erase_if(map, [&mask](const auto& entry) { return !(PseudoMask(entry.first) & mask).isEmpty(); });
}

void ReferenceSweep::filter(const PseudoMask& maxMask, const PseudoMask& minMask, Map& map) {
    if (maxMask == minMask) {
        filter(maxMask, map);
        return;
    }
    for (auto& [key, timing] : map) {
        if (!(PseudoMask(key) & maxMask).isEmpty())
            timing.setMaximumDelay(Delay::getMinimum());
        if (!(PseudoMask(key) & minMask).isEmpty())
            timing.setMinimumDelay(Delay::getMaximum());
    }
}

void ReferenceSweep::sensibilize(const PseudoMask& mask, Map& map) {
    Map result;
    for (const auto& [key, timing] : map)
        result[(PseudoMask(key) & mask).getBits()].combine(timing);
    map.swap(result);
}

void ReferenceSweep::mingle(const PseudoMask& mask, Map& map) {
    if (mask.isEmpty())
        return;
    Map result;
    for (const auto& [key, timing] : map)
        result[(PseudoMask(key) | mask).getBits()].combine(timing);
    map.swap(result);
}

void ReferenceSweep::combine(const Map& from, Map& into) {
    for (const auto& [key, timing] : from)
        into[key].combine(timing);
}

// --- Shifting ---

void ReferenceSweep::addDelay(const Delay& delay, Map& map) {
    for (auto& entry : map)
        entry.second += Timing(delay, delay);
}

void ReferenceSweep::addDelay(const Delay& minimum, const Delay& maximum, Map& map) {
    for (auto& entry : map) {
        Timing& timing = entry.second;
        timing.setMinimumDelay(timing.getMinimumDelay() + minimum);
        timing.setMaximumDelay(timing.getMaximumDelay() + maximum);
    }
}

void ReferenceSweep::minusDelay(const Delay& delay, Map& map) {
    for (auto& entry : map)
        entry.second -= Timing(delay, delay);
}

void ReferenceSweep::minusDelay(const Delay& minimum, const Delay& maximum, Map& map) {
    for (auto& entry : map) {
        Timing& timing = entry.second;
        timing.setMinimumDelay(timing.getMinimumDelay() - maximum);
        timing.setMaximumDelay(timing.getMaximumDelay() - minimum);
    }
}

void ReferenceSweep::addLatchTiming(const Timing& timing, Map& map) {
    addDelay(timing.getMinimumDelay(), timing.getMaximumDelay(), map);
}

void ReferenceSweep::minusLatchTiming(const Timing& timing, Map& map) {
    minusDelay(timing.getMinimumDelay(), timing.getMaximumDelay(), map);
}

void ReferenceSweep::takeSetupHold(const Delay& setup, const Delay& hold, Map& map) {
    for (auto& entry : map) {
        Timing& timing = entry.second;
        timing.setMinimumDelay(timing.getMinimumDelay() - setup);
        timing.setMaximumDelay(timing.getMaximumDelay() + hold);
    }
}

void ReferenceSweep::freeSetupHold(const Delay& setup, const Delay& hold, Map& map) {
    for (auto& entry : map) {
        Timing& timing = entry.second;
        timing.setMinimumDelay(timing.getMinimumDelay() - hold);
        timing.setMaximumDelay(timing.getMaximumDelay() + setup);
    }
}

// --- Multicycle ---

// The product keeps its low 32 bits. A special or undefined arrival is not scaled.
void ReferenceSweep::multiplyCycleCount(const PseudoMask& mask, Map& map) {
    const Delay minimum = arrivalTiming_.getMinimumDelay();
    const Delay maximum = arrivalTiming_.getMaximumDelay();
    for (CPath* path : Pelko::analyzer->getCPaths(mask)) {
        const auto* multicycle = dynamic_cast<MPath*>(path);
        if (!multicycle)
            continue;
        Delay scaled = maximum;
        if (maximum.isOrdinary()) {
            const std::uint32_t factor = static_cast<std::uint32_t>(multicycle->getMultiplier());
            scaled = Delay(static_cast<int>(static_cast<std::uint32_t>(int(maximum)) * factor));
        }
        map[multicycle->getPseudoMask().getBits()] = Timing(scaled, minimum);
    }
    map[0] = Timing(maximum, minimum);
}

namespace {

constexpr double noMultiplier = 1e8;

std::list<MPath*> multicyclesOf(const PseudoMask& mask) {
    std::list<MPath*> found;
    for (CPath* path : Pelko::analyzer->getCPaths(mask))
        if (auto* multicycle = dynamic_cast<MPath*>(path))
            found.push_back(multicycle);
    return found;
}

double leastMultiplier(const std::list<MPath*>& multicycles) {
    double factor = noMultiplier;
    for (const MPath* multicycle : multicycles) {
        const Delay multiplier(static_cast<int>(static_cast<std::uint32_t>(multicycle->getMultiplier())));
        const Delay least(static_cast<int>(factor));
        if (multiplier.isDefined() && (!least.isDefined() || multiplier < least))
            factor = int(multiplier);
        else
            factor = int(least);
    }
    return factor;
}

} // namespace

void ReferenceSweep::divideCycleCount(Map& map) {
    filter(Pelko::analyzer->getMaxdelayPathMask(), Pelko::analyzer->getMindelayPathMask(), map);
    for (auto& [key, timing] : map) {
        if (key == 0)
            continue;
        const std::list<MPath*> multicycles = multicyclesOf(PseudoMask(key));
        if (multicycles.empty())
            continue;
        if (subdomain_->getLaunchRoot() && subdomain_->getLaunchRoot() == subdomain_->getLatchRoot()) {
            double factor = leastMultiplier(multicycles);
            const double duty =
                static_cast<double>(Pelko::analyzer->getDutyRatio(subdomain_->getLaunchRoot()));
            const Pelko::ClockMode launchMode = subdomain_->getLaunchClockMode();
            if (launchMode.getCode() != subdomain_->getLatchClockMode().getCode()) {
                if (launchMode.getCode() == 2)
                    factor = (factor - 1) * 100 / duty + 1;
                else
                    factor = (factor - 1) * 100 / (100 - duty) + 1;
            }
            const Delay maximum = timing.getMaximumDelay();
            if (factor > 1.0 && factor != noMultiplier && maximum.isOrdinary())
                timing.setMaximumDelay(Delay(static_cast<int>(std::ceil(int(maximum) / factor))));
        } else if (subdomain_->isPureClock()) {
            throw Ruvex::InvalidRequest(Ruvex::InternalError(
                "Abnormal multicycle Path", Ruvex::Error::locate("Sweep", "divideCycleCount", 549)));
        } else if (Ruvex::isDebug() && !Pelko::Analyzer::_muted) {
            for (const MPath* multicycle : multicycles)
                Ruvex::console.warning(
                    multicycle->getAlias() + " is not available for " + subdomain_->getAlias(), "");
        }
    }
}

// --- Priority ---

namespace {

PseudoMask maskOf(const CPath* path) { return path ? path->getPseudoMask() : PseudoMask(); }

const CPath* smallestMaxdelay(const PseudoMask& mask) {
    const DPath* chosen = nullptr;
    Delay smallest = Delay::getMaximum();
    for (CPath* path : Pelko::analyzer->getCPaths(mask))
        if (const auto* delayPath = dynamic_cast<DPath*>(path);
            delayPath && delayPath->getMaxdelay() < smallest) {
            smallest = delayPath->getMaxdelay();
            chosen = delayPath;
        }
    return chosen;
}

const CPath* greatestMindelay(const PseudoMask& mask) {
    const DPath* chosen = nullptr;
    Delay greatest = Delay::getMinimum();
    for (CPath* path : Pelko::analyzer->getCPaths(mask))
        if (const auto* delayPath = dynamic_cast<DPath*>(path);
            delayPath && int(delayPath->getMindelay()) > int(greatest)) {
            greatest = delayPath->getMindelay();
            chosen = delayPath;
        }
    return chosen;
}

const CPath* firstDelayPath(const PseudoMask& mask) {
    for (CPath* path : Pelko::analyzer->getCPaths(mask))
        if (const auto* delayPath = dynamic_cast<DPath*>(path))
            return delayPath;
    return nullptr;
}

const CPath* smallestMulticycle(const PseudoMask& mask) {
    const MPath* chosen = nullptr;
    unsigned long smallest = std::numeric_limits<unsigned long>::max();
    for (CPath* path : Pelko::analyzer->getCPaths(mask))
        if (const auto* multicycle = dynamic_cast<MPath*>(path);
            multicycle && multicycle->getMultiplier() < smallest) {
            smallest = multicycle->getMultiplier();
            chosen = multicycle;
        }
    return chosen;
}

} // namespace

PseudoMask ReferenceSweep::getPriorityMask(const PseudoMask& mask, bool longest) const {
    const PseudoMask maxdelay = mask & Pelko::analyzer->getMaxdelayPathMask();
    const PseudoMask mindelay = mask & Pelko::analyzer->getMindelayPathMask();
    const PseudoMask multicycle = mask & Pelko::analyzer->getMulticyclePathMask();
    if (longest) {
        if (!maxdelay.isEmpty())
            return maskOf(smallestMaxdelay(maxdelay));
        if (!multicycle.isEmpty())
            return maskOf(smallestMulticycle(multicycle));
        if (!mindelay.isEmpty())
            return maskOf(firstDelayPath(mindelay));
    } else {
        if (!mindelay.isEmpty())
            return maskOf(greatestMindelay(mindelay));
        if (!maxdelay.isEmpty())
            return maskOf(firstDelayPath(maxdelay));
        if (!multicycle.isEmpty())
            return maskOf(smallestMulticycle(multicycle));
    }
    return PseudoMask(0);
}

} // namespace oracle
