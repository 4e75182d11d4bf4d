// The period that a clock achieves: the largest of the latest arrivals of the subdomains that it both
// launches and latches. If data has only one phase of the clock, the arrival is scaled to a whole period.
#include "Pelko/Analyzer.h"
#include "Pelko/Subdomain.h"
#include "Vorlen/Tool.h"
#include "Vorlen/detail/Faults.h"

namespace Vorlen {

using Pelko::ClockMode;
using Pelko::Delay;

namespace {

// The number of phases in a period, as a whole number by unsigned division (a duty ratio of 40 counts as 2).
// 1 if the duty ratio leaves no phase.
double phaseFactor(const Pelko::Subdomain& subdomain, unsigned long dutyRatio) {
    const ClockMode::Code launch = subdomain.getLaunchClockMode().getCode();
    const ClockMode::Code latch = subdomain.getLatchClockMode().getCode();
    unsigned long phase = 100;
    if (launch == ClockMode::Rising && latch == ClockMode::Falling)
        phase = dutyRatio;
    else if (launch == ClockMode::Falling && latch == ClockMode::Rising)
        phase = 100 - dutyRatio;
    return phase == 0 ? 1.0 : static_cast<double>(100 / phase);
}

Delay scale(const Delay& arrival, double factor) {
    if (!arrival.isOrdinary())
        return arrival;
    return Delay::saturate(static_cast<std::int64_t>(int(arrival) * factor));
}

} // namespace

Delay Tool::calculatePeriod(Pelko::Pole* clockSource) {
    detail::require(clockSource, detail::Fault::NullClockSource);
    const unsigned long dutyRatio = Pelko::analyzer->getDutyRatio(clockSource);
    Delay best = Delay::getMinimum();
    Pelko::Subdomain* decisive = nullptr;
    // At most one domain has this pair of roots.
    if (const Pelko::Domain* domain = Pelko::analyzer->getDomain(clockSource, clockSource))
        for (Pelko::Subdomain* subdomain : domain->getSubdomains()) {
            const Delay period = scale(subdomain->getLAT(), phaseFactor(*subdomain, dutyRatio));
            if (best < period) {
                best = period;
                decisive = subdomain;
            }
        }
    if (decisive)
        decisive->setDecisive(true);
    return best == Delay::getMinimum() ? Delay::getUndefined() : best;
}

} // namespace Vorlen
