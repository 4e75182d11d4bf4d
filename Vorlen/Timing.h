// A pair of delays: the minimum (early, shortest) and the maximum (late, longest) of a set of paths.
//
// The two bounds are independent: nothing keeps the minimum below the maximum, and negation and subtraction
// leave it above on purpose. Every sum and comparison is the delays' own, specials included; only `combine`,
// the three tests and the label are rules of the pair.
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

    // Both bounds the same special; one object each, made on first use.
    static const Timing& getNone();
    static const Timing& getMinimum();
    static const Timing& getMaximum();
    static const Timing& getUndefined();

    const Pelko::Delay& getMinimumDelay() const { return minimumDelay_; }
    const Pelko::Delay& getMaximumDelay() const { return maximumDelay_; }
    void setMinimumDelay(const Pelko::Delay& delay) { minimumDelay_ = delay; }
    void setMaximumDelay(const Pelko::Delay& delay) { maximumDelay_ = delay; }

    // Both bounds are that special.
    bool isMinimum() const;
    bool isMaximum() const;
    // Either bound is undefined: half a timing counts as none.
    bool isUndefined() const;

    // Bound by bound; subtraction and negation do not cross or swap the bounds.
    Timing operator+(const Timing& other) const;
    Timing operator-(const Timing& other) const;
    Timing operator-() const;
    Timing& operator+=(const Timing& other);
    Timing& operator-=(const Timing& other);

    bool operator==(const Timing& other) const;
    bool operator!=(const Timing& other) const;
    // By minimum, then by maximum.
    bool operator<(const Timing& other) const;

    // Widens this timing so that it covers the other too. An undefined bound is absent, each bound by itself.
    Timing& combine(const Timing& other) {
        const Pelko::Delay& otherMinimum = other.minimumDelay_;
        if (otherMinimum.isDefined() && (!minimumDelay_.isDefined() || otherMinimum < minimumDelay_))
            minimumDelay_ = otherMinimum;
        const Pelko::Delay& otherMaximum = other.maximumDelay_;
        if (otherMaximum.isDefined() && (!maximumDelay_.isDefined() || !(otherMaximum < maximumDelay_)))
            maximumDelay_ = otherMaximum;
        return *this;
    }

    // "[undefined]", "[minimum]", "[maximum]", or "[", the bounds' labels joined by ":", "]".
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
