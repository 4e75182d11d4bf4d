#include "Vorlen/Timing.h"

#include "Ruvex/StandardSlot.h"

#include <memory>

namespace Vorlen {

using Pelko::Delay;

const Timing& Timing::getNone() {
    static const Timing none(Delay::getNone(), Delay::getNone());
    return none;
}

const Timing& Timing::getMinimum() {
    static const Timing minimum(Delay::getMinimum(), Delay::getMinimum());
    return minimum;
}

const Timing& Timing::getMaximum() {
    static const Timing maximum(Delay::getMaximum(), Delay::getMaximum());
    return maximum;
}

const Timing& Timing::getUndefined() {
    static const Timing undefined(Delay::getUndefined(), Delay::getUndefined());
    return undefined;
}

bool Timing::isMinimum() const {
    return int(minimumDelay_) == Delay::minimumValue && int(maximumDelay_) == Delay::minimumValue;
}

bool Timing::isMaximum() const {
    return int(minimumDelay_) == Delay::maximumValue && int(maximumDelay_) == Delay::maximumValue;
}

bool Timing::isUndefined() const {
    return int(minimumDelay_) == Delay::undefinedValue || int(maximumDelay_) == Delay::undefinedValue;
}

Timing Timing::operator+(const Timing& other) const {
    const Delay maximum = maximumDelay_ + other.maximumDelay_;
    return {minimumDelay_ + other.minimumDelay_, maximum};
}

Timing Timing::operator-(const Timing& other) const {
    const Delay maximum = maximumDelay_ - other.maximumDelay_;
    return {minimumDelay_ - other.minimumDelay_, maximum};
}

Timing Timing::operator-() const { return {-minimumDelay_, -maximumDelay_}; }

Timing& Timing::operator+=(const Timing& other) {
    minimumDelay_ += other.minimumDelay_;
    maximumDelay_ += other.maximumDelay_;
    return *this;
}

Timing& Timing::operator-=(const Timing& other) {
    minimumDelay_ -= other.minimumDelay_;
    maximumDelay_ -= other.maximumDelay_;
    return *this;
}

bool Timing::operator==(const Timing& other) const {
    return minimumDelay_ == other.minimumDelay_ && maximumDelay_ == other.maximumDelay_;
}

bool Timing::operator!=(const Timing& other) const {
    return minimumDelay_ != other.minimumDelay_ || maximumDelay_ != other.maximumDelay_;
}

bool Timing::operator<(const Timing& other) const {
    if (minimumDelay_ < other.minimumDelay_)
        return true;
    return minimumDelay_ == other.minimumDelay_ && maximumDelay_ < other.maximumDelay_;
}

std::string Timing::_getLabel() const {
    if (isUndefined())
        return "[undefined]";
    if (isMinimum())
        return "[minimum]";
    if (isMaximum())
        return "[maximum]";
    return "[" + minimumDelay_._getLabel() + ":" + maximumDelay_._getLabel() + "]";
}

bool Timing::_hasRecord() const { return Ruvex::isDebug(); }

Ruvex::Record* Timing::_getRecord() const {
    if (!_hasRecord())
        return nullptr;
    auto record = std::make_unique<Ruvex::Record>(_getLabel());
    record->addHeader("Timing");
    record->add("MinimumDelay", minimumDelay_._getSlot());
    record->add("MaximumDelay", maximumDelay_._getSlot());
    return record.release();
}

Ruvex::Slot* Timing::_getSlot() const { return new Ruvex::StandardSlot<Timing>(*this); }

} // namespace Vorlen
