// A walk over everything that has a time.
#include "RoundedTimes.h"

namespace Readers::Model {

namespace {

constexpr int nanosecond = -9;

class Look {
public:
    Look(const Sdc::Constraints& constraints, int scale, Rounding& rounding)
        : constraints_(constraints), scale_(scale), rounding_(rounding) {}

    void at(const Decimal& time, const Sdc::Origin& origin) {
        rounding_.look(time, nanosecond, scale_, [&] { return constraints_.place(origin); });
    }
    // One time that was written for both sides, or one for each.
    void at(const std::optional<Decimal>& one, const std::optional<Decimal>& other,
            const Sdc::Origin& origin) {
        if (one)
            at(*one, origin);
        if (other && (!one || !(*one == *other)))
            at(*other, origin);
    }
    void at(const Sdc::Clock& clock) {
        at(clock.sourceLatency.early, clock.sourceLatency.late, clock.origin);
        at(clock.networkLatency.early, clock.networkLatency.late, clock.origin);
        at(clock.uncertainty.setup, clock.uncertainty.hold, clock.origin);
        if (clock.generated) {
            at(clock.generated->offset, clock.origin);
            for (const Decimal& shift : clock.generated->edgeShifts)
                at(shift, clock.origin);
            return;
        }
        at(clock.period, clock.origin);
        const Decimal twiceFall{2 * clock.fall.mantissa, clock.fall.exponent};
        if (clock.rise.isZero() && twiceFall == clock.period)
            return;
        at(clock.rise, clock.origin);
        at(clock.fall, clock.origin);
    }

private:
    const Sdc::Constraints& constraints_;
    const int scale_;
    Rounding& rounding_;
};

} // namespace

void lookAtTimes(const Sdc::Constraints& constraints, int scale, Rounding& rounding) {
    Look look(constraints, scale, rounding);
    for (const Sdc::Clock& clock : constraints.clocks)
        if (!clock.removed)
            look.at(clock);
    for (const Sdc::PinUncertainty& pin : constraints.pinUncertainties)
        look.at(pin.value.setup, pin.value.hold, pin.origin);
    for (const Sdc::ClockPairUncertainty& pair : constraints.pairUncertainties)
        look.at(pair.value.setup, pair.value.hold, pair.origin);
    for (const Sdc::PortDelay& delay : constraints.portDelays)
        look.at(delay.min, delay.max, delay.origin);
    for (const Sdc::Exception& exception : constraints.exceptions)
        if (exception.kind == Sdc::Exception::Kind::maxDelay ||
            exception.kind == Sdc::Exception::Kind::minDelay)
            look.at(exception.value, exception.origin);
}

} // namespace Readers::Model
