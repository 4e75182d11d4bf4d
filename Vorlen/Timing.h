// A pair of delays: the minimum (early, shortest) and the maximum (late, longest) of a set of paths.
//
// The two bounds are independent: the minimum may be larger than the maximum, and negation and subtraction
// keep the bounds in their places. Sums and comparisons are those of the delays, also for specials. Only
// `combine`, the three tests and the label treat the bounds as a pair.
#pragma once

#include "Pelko/Delay.h"
#include "Vorlen/Export.h"

#include <string>

namespace Vorlen {

class VORLEN_API Timing : public Ruvex::Stuff {
public:
    // Both bounds undefined.
    Timing() = default;
    Timing(const Pelko::Delay& minimum, const Pelko::Delay& maximum)
        : minimumDelay_(minimum), maximumDelay_(maximum) {}
    Timing(const Timing&) = default;
    Timing& operator=(const Timing&) = default;
    ~Timing() override = default;

    // Timings with two equal bounds: 0, or a special. There is one object of each.
    static const Timing& getNone();
    static const Timing& getMinimum();
    static const Timing& getMaximum();
    static const Timing& getUndefined();

    const Pelko::Delay& getMinimumDelay() const { return minimumDelay_; }
    const Pelko::Delay& getMaximumDelay() const { return maximumDelay_; }
    void setMinimumDelay(const Pelko::Delay& delay) { minimumDelay_ = delay; }
    void setMaximumDelay(const Pelko::Delay& delay) { maximumDelay_ = delay; }

    // Whether both bounds are that special.
    bool isMinimum() const;
    bool isMaximum() const;
    // Whether at least one bound is undefined.
    bool isUndefined() const;

    // Bound by bound; subtraction and negation do not exchange the bounds.
    Timing operator+(const Timing& other) const;
    Timing operator-(const Timing& other) const;
    Timing operator-() const;
    Timing& operator+=(const Timing& other);
    Timing& operator-=(const Timing& other);

    bool operator==(const Timing& other) const;
    bool operator!=(const Timing& other) const;
    // Orders by minimum, then by maximum.
    bool operator<(const Timing& other) const;

    // Widens this timing so that it also covers the other: the smaller minimum, the larger maximum. Each
    // bound that is undefined counts as absent.
    Timing& combine(const Timing& other) {
        const Pelko::Delay& otherMinimum = other.minimumDelay_;
        if (otherMinimum.isDefined() && (!minimumDelay_.isDefined() || otherMinimum < minimumDelay_))
            minimumDelay_ = otherMinimum;
        const Pelko::Delay& otherMaximum = other.maximumDelay_;
        if (otherMaximum.isDefined() && (!maximumDelay_.isDefined() || !(otherMaximum < maximumDelay_)))
            maximumDelay_ = otherMaximum;
        return *this;
    }

    // Such as "[2:6]". "[undefined]", "[minimum]" and "[maximum]" if the test of that name is true.
    std::string _getLabel() const override;
    // A new slot that holds a copy. The caller owns it.
    Ruvex::Slot* _getSlot() const override;
    // Null outside debug mode. The caller owns it.
    Ruvex::Record* _getRecord() const override;
    bool _hasRecord() const override;

private:
    Pelko::Delay minimumDelay_ = Pelko::Delay::getUndefined();
    Pelko::Delay maximumDelay_ = Pelko::Delay::getUndefined();
};

} // namespace Vorlen
