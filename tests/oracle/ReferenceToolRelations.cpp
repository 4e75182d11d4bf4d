// The relations of subdomains, and the period that a clock achieves.
#include "ReferenceTool.h"

#include "Pelko/Analyzer.h"
#include "Pelko/Subdomain.h"
#include "Ruvex/Exception.h"

#include <algorithm>
#include <cstdint>

namespace oracle {

using Pelko::analyzer;
using Pelko::Delay;
using Pelko::Pole;
using Pelko::Subdomain;

namespace {

void relateSameClock(Subdomain* subdomain) {
    const int launch = subdomain->getLaunchClockMode().getCode();
    const int latch = subdomain->getLatchClockMode().getCode();
    const Pole* root = subdomain->getLaunchRoot();
    subdomain->setCriticity(1);
    const Delay period = analyzer->getRequiredPeriod(root);
    if (period.isDefined()) {
        subdomain->setCriticity(2);
        const Delay high = analyzer->getHighWidth(root);
        const Delay low = analyzer->getLowWidth(root);
        if ((launch == 1 && latch == 1) || (launch == 2 && latch == 2)) {
            subdomain->setSetupRelation(period);
        } else if (launch == 1 && latch == 2) {
            subdomain->setSetupRelation(low);
            subdomain->setHoldRelation(-high);
        } else if (launch == 2 && latch == 1) {
            subdomain->setSetupRelation(high);
            subdomain->setHoldRelation(-low);
        }
    }
    if (launch != latch)
        subdomain->setCriticity(subdomain->getCriticity() + 1);
}

Delay edgeOf(const Pole* root, int code) {
    return code == 1 ? analyzer->getShift(root) + analyzer->getHighWidth(root) : analyzer->getShift(root);
}

} // namespace

void ReferenceTool::updateRelationship() {
    for (Pelko::Domain* domain : analyzer->getDomains()) {
        if (domain->isAsynchronous())
            continue;
        Pole* launch = domain->getLaunchRoot();
        Pole* latch = domain->getLatchRoot();
        for (Subdomain* subdomain : domain->getSubdomains()) {
            if (launch == latch) {
                relateSameClock(subdomain);
                continue;
            }
            const Delay launchPeriod = analyzer->getRequiredPeriod(launch);
            const Delay latchPeriod = analyzer->getRequiredPeriod(latch);
            if (!launchPeriod.isDefined() || !latchPeriod.isDefined())
                continue;
            Delay setup = Delay::getUndefined();
            Delay hold = Delay::getUndefined();
            calculateRelationship(setup, hold, launchPeriod, latchPeriod,
                                  edgeOf(launch, subdomain->getLaunchClockMode().getCode()),
                                  edgeOf(latch, subdomain->getLatchClockMode().getCode()));
            subdomain->setSetupRelation(setup);
            subdomain->setHoldRelation(hold);
        }
    }
}

namespace {

// The difference at which the subtraction stops early.
Delay stopGap(const Delay& launchPeriod, const Delay& latchPeriod) {
    if (!launchPeriod.isDefined() && !latchPeriod.isDefined())
        return Delay(0);
    const Delay& one = launchPeriod.isDefined() ? launchPeriod : latchPeriod;
    const Delay& other = latchPeriod.isDefined() ? latchPeriod : launchPeriod;
    const auto high = static_cast<unsigned>(std::max(int(one), int(other)));
    const auto low = static_cast<unsigned>(std::min(int(one), int(other)));
    return Delay(low == high / (high / low) ? static_cast<int>(high % low) : 0);
}

} // namespace

void ReferenceTool::calculateRelationship(Delay& setup, Delay& hold, const Delay& launchPeriod,
                                          const Delay& latchPeriod, const Delay& launchEdge,
                                          const Delay& latchEdge) {
    const bool later = latchEdge < launchEdge;
    const Delay offset(later ? int(launchEdge - latchEdge) % int(latchPeriod)
                             : int(latchEdge - launchEdge) % int(launchPeriod));
    Delay a = launchPeriod;
    Delay b = latchPeriod;
    Delay best = later ? Delay::getMaximum() : Delay(0);
    bool exact = offset == Delay(0);
    if (launchPeriod == latchPeriod)
        best = launchPeriod;
    const Delay gap = stopGap(launchPeriod, latchPeriod);
    while (a != b) {
        Delay step = a;
        if (int(a) > int(b)) {
            a = a - b == gap ? b : a - b;
            step = a;
        } else {
            b = b - a == gap ? a : b - a;
            step = b;
        }
        if (int(offset) == 0)
            continue;
        if (later) {
            if (offset < step && step < best)
                best = step;
        } else if (step < offset && best < step) {
            best = step;
        }
        if (offset == step)
            exact = true;
    }
    if (exact)
        setup = a;
    else if (later)
        setup = best - offset;
    else
        setup = offset - best;
    hold = setup - a;
}

Delay ReferenceTool::calculatePeriod(Pole* clockSource) {
    if (!clockSource)
        throw Ruvex::InvalidRequest(
            Ruvex::InternalError("Null clock source", Ruvex::Error::locate("Tool", "calculatePeriod", 1255)));
    const unsigned long duty = analyzer->getDutyRatio(clockSource);
    Delay best = Delay::getMinimum();
    Subdomain* decisive = nullptr;
    for (Pelko::Domain* domain : analyzer->getDomains()) {
        if (domain->getLaunchRoot() != clockSource || domain->getLatchRoot() != clockSource)
            continue;
        for (Subdomain* subdomain : domain->getSubdomains()) {
            const int launch = subdomain->getLaunchClockMode().getCode();
            const int latch = subdomain->getLatchClockMode().getCode();
            unsigned long factor = 1;
            if (launch == 2 && latch == 1)
                factor = 100 / duty;
            else if (launch == 1 && latch == 2)
                factor = 100 / (100 - duty);
            Delay value = subdomain->getLAT();
            if (value.isOrdinary())
                value = Delay::saturate(std::int64_t{int(value)} * static_cast<std::int64_t>(factor));
            if (best < value) {
                best = value;
                decisive = subdomain;
            }
        }
    }
    if (decisive)
        decisive->setDecisive(true);
    return best == Delay::getMinimum() ? Delay::getUndefined() : best;
}

} // namespace oracle
