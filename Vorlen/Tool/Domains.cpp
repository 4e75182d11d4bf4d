// Domain creation: every pair of launch and latch pole is added to the subdomains of its clocks. Domains that
// the constraints declare exclusive are destroyed again.
//
// A pair costs a look-up of its two stems, and O(1) for each of its domains.
#include "Pelko/Analyzer.h"
#include "Pelko/Pole.h"
#include "Pelko/Subdomain.h"
#include "Ruvex/Console.h"
#include "Ruvex/Utility.h"
#include "Vorlen/Tool.h"
#include "Vorlen/Tool/ClockSides.h"
#include "Vorlen/detail/Faults.h"
#include "Vorlen/detail/Messages.h"

#include <vector>

namespace Vorlen {

using Pelko::ClockMode;
using Pelko::Pole;

namespace {

const PoleSet* stemOf(const StemPoleSetMap& clockStems, Pole* pole) {
    const auto stem = clockStems.find(pole);
    return stem == clockStems.end() ? nullptr : &stem->second;
}

ClockSide clockSide(const PoleSet* stem, Pole* pole, detail::Fault withoutMode) {
    ClockSide side;
    side.mode = pole->getClockMode();
    if (side.mode.getCode() == ClockMode::None)
        detail::raise(withoutMode, pole->getName());
    side.hasRoot = false;
    side.stem = stem;
    return side;
}

} // namespace

ClockSide latchSideOf(const PoleSet* stem, Pole* latch) {
    if (latch->isClock()) {
        ClockSide side = clockSide(stem, latch, detail::Fault::LatchWithoutClockMode);
        if (latch->isCaptureInverted())
            side.mode = side.mode.getCode() == ClockMode::Rising ? ClockMode::Falling : ClockMode::Rising;
        return side;
    }
    ClockSide side;
    Pelko::IOConstraint constraint;
    if (Pelko::analyzer->hasOutputConstraint(latch, constraint)) {
        side.mode = constraint.getClockMode();
        side.root = constraint.getClockRoot();
    }
    return side;
}

ClockSide launchSideOf(const PoleSet* stem, Pole* launch) {
    if (launch->isClock())
        return clockSide(stem, launch, detail::Fault::LaunchWithoutClockMode);
    ClockSide side;
    Pelko::IOConstraint constraint;
    if (Pelko::analyzer->hasInputConstraint(launch, constraint)) {
        side.mode = constraint.getClockMode();
        side.root = constraint.getClockRoot();
    }
    if (!side.root && launch->isClockSource())
        side.root = launch;
    return side;
}

namespace {

// Iterates over a copy, because domains are destroyed.
void separateDomains() {
    std::vector<Pelko::Domain*> domains;
    for (Pelko::Domain* domain : Pelko::analyzer->getDomains())
        domains.push_back(domain);
    for (Pelko::Domain* domain : domains) {
        if (Pelko::analyzer->isExclusive(domain)) {
            const Pelko::Tool::Run::Release release(domain);
            domain->destroy();
        } else if (Pelko::analyzer->isAsynchronous(domain)) {
            domain->setAsynchronous(true);
        }
    }
}

} // namespace

void Tool::createDomains() {
    const bool debug = Ruvex::isDebug();
    if (debug) {
        Ruvex::console.print(detail::messages::creatingDomains, "");
        Ruvex::console.indent();
    }
    updateDomains();
    if (debug) {
        Ruvex::console.print(detail::messages::creatingDomainsDone, "");
        Ruvex::console.unindent();
    }
}

void Tool::updateDomains() {
    StemPoleSetMap stems;
    clockStem(stems);
    dataStem(stems);
    separateDomains();
}

void Tool::createDomains(const StemPoleSetMap& clockStems, Pole* launch, Pole* latch) {
    const ClockSide latchSide = latchSideOf(stemOf(clockStems, latch), latch);
    const ClockSide launchSide = launchSideOf(stemOf(clockStems, launch), launch);
    forEachSubdomain(
        launchSide, latchSide,
        [&](Pole* launchRoot, Pole* latchRoot, const ClockMode& launchMode, const ClockMode& latchMode) {
            Pelko::Domain* domain = Pelko::analyzer->getDomain(launchRoot, latchRoot);
            if (!domain)
                domain = Pelko::Domain::create(launchRoot, latchRoot);
            Pelko::Subdomain* subdomain = domain->getSubdomain(launchMode, latchMode);
            if (!subdomain)
                subdomain = Pelko::Subdomain::create(domain, launchMode, latchMode);
            subdomain->captureLatch(latch);
            subdomain->captureLaunch(launch);
        });
}

} // namespace Vorlen
