#include "Pelko/Delay.h"

#include "Ruvex/StandardSlot.h"

namespace Pelko {

std::string Delay::_getLabel() const {
    switch (value_) {
    case undefinedValue:
        return "undefined";
    case minimumValue:
        return "minimum";
    case maximumValue:
        return "maximum";
    default:
        return std::to_string(value_);
    }
}

Ruvex::Slot* Delay::_getSlot() const { return new Ruvex::StandardSlot<Delay>(*this); }

} // namespace Pelko
