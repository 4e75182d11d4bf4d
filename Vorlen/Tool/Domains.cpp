// Domain creation: every pair of launch and latch pole becomes part of the subdomains of its clocks, and
// domains that the constraints declare exclusive go again.
//
// A pair costs a look-up of its two stems, and O(1) for each of its domains.
#include "Pelko/Analyzer.h"
#include "Pelko/Pole.h"
#include "Pelko/Subdomain.h"
#include "Ruvex/Console.h"
#include "Ruvex/Utility.h"
#include "Vorlen/Tool.h"
#include "Vorlen/detail/Faults.h"
#include "Vorlen/detail/Messages.h"

#include <vector>

namespace Vorlen {

using Pelko::ClockMode;
using Pelko::Pole;

namespace {

// One side of a pair: its clock edge, and the roots behind it. A root may be null: a port side without a
// clock.
struct Side {
    ClockMode mode;
    Pole* root = nullptr;          // the one root, where there is no stem
    const PoleSet* stem = nullptr; // the roots of a clock pole
    bool hasRoot = true;

    template <class Visit>
    void forEachRoot(Visit visit) const {
        if (stem)
            for (Pole* each : *stem)
                visit(each);
        else if (hasRoot)
            visit(root);
    }
};

Side clockSide(const StemPoleSetMap& clockStems, Pole* pole, detail::Fault withoutMode) {
    Side side;
    side.mode = pole->getClockMode();
    if (side.mode.getCode() == ClockMode::None)
        detail::raise(withoutMode, pole->getName());
    const auto stem = clockStems.find(pole);
    side.hasRoot = false;
    side.stem = stem == clockStems.end() ? nullptr : &stem->second;
    return side;
}

Side latchSide(const StemPoleSetMap& clockStems, Pole* latch) {
    if (latch->isClock()) {
        Side side = clockSide(clockStems, latch, detail::Fault::LatchWithoutClockMode);
        if (latch->isCaptureInverted())
            side.mode = side.mode.getCode() == ClockMode::Rising ? ClockMode::Falling : ClockMode::Rising;
        return side;
    }
    Side side;
    Pelko::IOConstraint constraint;
    if (Pelko::analyzer->hasOutputConstraint(latch, constraint)) {
        side.mode = constraint.getClockMode();
        side.root = constraint.getClockRoot();
    }
    return side;
}

Side launchSide(const StemPoleSetMap& clockStems, Pole* launch) {
    if (launch->isClock())
        return clockSide(clockStems, launch, detail::Fault::LaunchWithoutClockMode);
    Side side;
    Pelko::IOConstraint constraint;
    if (Pelko::analyzer->hasInputConstraint(launch, constraint)) {
        side.mode = constraint.getClockMode();
        side.root = constraint.getClockRoot();
    }
    if (!side.root && launch->isClockSource())
        side.root = launch;
    return side;
}

void capture(Pelko::Domain* domain, const ClockMode& launchMode, const ClockMode& latchMode, Pole* launch,
             Pole* latch) {
    Pelko::Subdomain* subdomain = domain->getSubdomain(launchMode, latchMode);
    if (!subdomain)
        subdomain = Pelko::Subdomain::create(domain, launchMode, latchMode);
    subdomain->captureLatch(latch);
    subdomain->captureLaunch(launch);
}

// Over a copy, since domains end on the way.
void separateDomains() {
    std::vector<Pelko::Domain*> domains;
    for (Pelko::Domain* domain : Pelko::analyzer->getDomains())
        domains.push_back(domain);
    for (Pelko::Domain* domain : domains) {
        if (Pelko::analyzer->isExclusive(domain))
            domain->destroy();
        else if (Pelko::analyzer->isAsynchronous(domain))
            domain->setAsynchronous(true);
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
    const Side latchSide = Vorlen::latchSide(clockStems, latch);
    const Side launchSide = Vorlen::launchSide(clockStems, launch);
    launchSide.forEachRoot([&](Pole* launchRoot) {
        latchSide.forEachRoot([&](Pole* latchRoot) {
            Pelko::Domain* domain = Pelko::analyzer->getDomain(launchRoot, latchRoot);
            if (!domain)
                domain = Pelko::Domain::create(launchRoot, latchRoot);
            if (!launchRoot || launchSide.mode.getCode() != ClockMode::None) {
                capture(domain, launchSide.mode, latchSide.mode, launch, latch);
                return;
            }
            // A plain clock source launches on both edges.
            for (const ClockMode::Code code : {ClockMode::Falling, ClockMode::Rising})
                capture(domain, code, latchSide.mode, launch, latch);
        });
    });
}

} // namespace Vorlen
