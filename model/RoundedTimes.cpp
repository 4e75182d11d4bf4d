// A walk over everything that has a time.
#include "model/RoundedTimes.h"

namespace Model {

namespace {

constexpr int nanosecond = -9;

class Look {
public:
    Look(const Design::Constraints& constraints, int scale, Base::Rounding& rounding)
        : constraints_(constraints), scale_(scale), rounding_(rounding) {}

    void at(const Base::Decimal& time, const Design::Origin& origin) {
        rounding_.look(time, nanosecond, scale_, [&] { return constraints_.place(origin); });
    }
    // One time that was written for both sides, or one for each.
    void at(const std::optional<Base::Decimal>& one, const std::optional<Base::Decimal>& other,
            const Design::Origin& origin) {
        if (one)
            at(*one, origin);
        if (other && (!one || !(*one == *other)))
            at(*other, origin);
    }
    void at(const Design::Clock& clock) {
        at(clock.sourceLatency.early, clock.sourceLatency.late, clock.origin);
        at(clock.networkLatency.early, clock.networkLatency.late, clock.origin);
        at(clock.uncertainty.setup, clock.uncertainty.hold, clock.origin);
        if (clock.generated) {
            at(clock.generated->offset, clock.origin);
            for (const Base::Decimal& shift : clock.generated->edgeShifts)
                at(shift, clock.origin);
            return;
        }
        at(clock.period, clock.origin);
        const Base::Decimal twiceFall{2 * clock.fall.mantissa, clock.fall.exponent};
        if (clock.rise.isZero() && twiceFall == clock.period)
            return;
        at(clock.rise, clock.origin);
        at(clock.fall, clock.origin);
    }

private:
    const Design::Constraints& constraints_;
    const int scale_;
    Base::Rounding& rounding_;
};

} // namespace

void lookAtTimes(const Design::Constraints& constraints, int scale, Base::Rounding& rounding) {
    Look look(constraints, scale, rounding);
    for (const Design::Clock& clock : constraints.clocks)
        if (!clock.removed)
            look.at(clock);
    for (const Design::PinUncertainty& pin : constraints.pinUncertainties)
        look.at(pin.value.setup, pin.value.hold, pin.origin);
    for (const Design::ClockPairUncertainty& pair : constraints.pairUncertainties)
        look.at(pair.value.setup, pair.value.hold, pair.origin);
    for (const Design::PortDelay& delay : constraints.portDelays)
        look.at(delay.min, delay.max, delay.origin);
    for (const Design::Exception& exception : constraints.exceptions)
        if (exception.kind == Design::Exception::Kind::maxDelay ||
            exception.kind == Design::Exception::Kind::minDelay)
            look.at(exception.value, exception.origin);
}

} // namespace Model
