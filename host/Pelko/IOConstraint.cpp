#include "Pelko/IOConstraint.h"

#include "Pelko/Pole.h"

namespace Pelko {

std::string IOConstraint::_getLabel() const {
    if (!isDefined_)
        return "undefined";
    return "[" + minimum_._getLabel() + ":" + maximum_._getLabel() + "] " + clockMode_._getLabel() + " " +
           (clockRoot_ ? clockRoot_->getName() : "no clock");
}

} // namespace Pelko
