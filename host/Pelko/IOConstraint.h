// An input or output delay constraint of a port: the reference clock and its edge, and the external delays.
//
// A default-constructed constraint is not defined. A defined one may have no clock (a null root). A bound
// that the user did not state is undefined, and no path is timed against it.
#pragma once

#include "Pelko/ClockMode.h"
#include "Pelko/Delay.h"

namespace Pelko {

class Pole;

class PELKO_API IOConstraint : public Ruvex::Stuff {
public:
    IOConstraint() = default;
    IOConstraint(Pole* clockRoot, const ClockMode& clockMode, const Delay& minimum, const Delay& maximum)
        : isDefined_(true), clockRoot_(clockRoot), clockMode_(clockMode), minimum_(minimum),
          maximum_(maximum) {}
    IOConstraint(const IOConstraint&) = default;
    IOConstraint& operator=(const IOConstraint&) = default;
    ~IOConstraint() override = default;

    // Whether the constraint was constructed with values.
    bool isDefined() const { return isDefined_; }
    // The reference clock's root pole, or null.
    Pole* getClockRoot() const { return clockRoot_; }
    // The edge of the reference clock.
    const ClockMode& getClockMode() const { return clockMode_; }
    // The smallest and the largest external delay.
    const Delay& getMinimum() const { return minimum_; }
    const Delay& getMaximum() const { return maximum_; }

    // "undefined", or "[minimum:maximum]", the clock mode and the root's name.
    std::string _getLabel() const override;

private:
    bool isDefined_ = false;
    Pole* clockRoot_ = nullptr;
    ClockMode clockMode_;
    Delay minimum_ = Delay::getUndefined();
    Delay maximum_ = Delay::getUndefined();
};

} // namespace Pelko
