#include "Vorlen/Tool/ArrivalPeriod.h"

#include "Pelko/Analyzer.h"
#include "Pelko/Subdomain.h"

#include <cstdint>

namespace Vorlen {

using Pelko::analyzer;
using Pelko::ClockMode;
using Pelko::Delay;

namespace {

// delay * factor / divisor, in 64 bits, truncated toward zero and saturated. A special is never scaled.
Delay scale(const Delay& delay, std::int64_t factor, std::int64_t divisor) {
    return delay.isOrdinary() ? Delay::saturate(int(delay) * factor / divisor) : delay;
}

enum class Edges { Same, FallingToRising, RisingToFalling, Other };

Edges edgesOf(const Pelko::Subdomain& subdomain) {
    const ClockMode::Code launch = subdomain.getLaunchClockMode().getCode();
    const ClockMode::Code latch = subdomain.getLatchClockMode().getCode();
    if (launch == ClockMode::None || latch == ClockMode::None)
        return Edges::Other;
    if (launch == latch)
        return Edges::Same;
    return launch == ClockMode::Falling ? Edges::FallingToRising : Edges::RisingToFalling;
}

} // namespace

Delay candidatePeriod(const Pelko::Subdomain& subdomain) {
    const auto dutyRatio = static_cast<std::int64_t>(analyzer->getDutyRatio(subdomain.getLaunchRoot()));
    const Delay arrival = subdomain.getLAT();
    const Edges edges = edgesOf(subdomain);
    if (edges == Edges::Same)
        return arrival;
    const std::int64_t phase = edges == Edges::FallingToRising ? 100 - dutyRatio : dutyRatio;
    if (edges == Edges::Other || phase == 0 || !arrival.isOrdinary())
        return Delay::getUndefined();
    return scale(arrival, 100, phase);
}

void relateToArrival(Pelko::Subdomain& subdomain, const Delay& best) {
    if (subdomain.getSetupRelation().isDefined())
        return;
    subdomain.setSetupRelation(subdomain.getLAT());
    if (!best.isDefined() || best == Delay::getMinimum())
        return;
    const auto dutyRatio = static_cast<std::int64_t>(analyzer->getDutyRatio(subdomain.getLatchRoot()));
    const Delay high = scale(best, dutyRatio, 100);
    const Delay low = scale(best, 100 - dutyRatio, 100);
    switch (edgesOf(subdomain)) {
    case Edges::Same:
        subdomain.setSetupRelation(best);
        break;
    case Edges::FallingToRising:
        subdomain.setSetupRelation(low);
        subdomain.setHoldRelation(-high);
        break;
    case Edges::RisingToFalling:
        subdomain.setSetupRelation(high);
        subdomain.setHoldRelation(-low);
        break;
    case Edges::Other:
        break;
    }
}

} // namespace Vorlen
