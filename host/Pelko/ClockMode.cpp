#include "Pelko/ClockMode.h"

#include "Ruvex/StandardSlot.h"

namespace Pelko {

std::string ClockMode::_getLabel() const {
    switch (code_) {
    case Falling:
        return "falling";
    case Rising:
        return "rising";
    case None:
        break;
    }
    return "none";
}

Ruvex::Slot* ClockMode::_getSlot() const { return new Ruvex::StandardSlot<ClockMode>(*this); }

} // namespace Pelko
