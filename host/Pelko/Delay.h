// A time: a signed 32-bit count of the design's time unit, with special values.
//
//   undefined  -2147483648   no value
//   minimum    -2147483647   below every ordinary value
//   maximum     2147483647   above every ordinary value
//   none                 0   no delay: an ordinary zero
//
// Arithmetic stays within 32 bits:
//
//   - If an operand is undefined, the result is undefined.
//   - Maximum and minimum stay themselves when an ordinary value is added or subtracted.
//   - If maximum and minimum meet as opposites (maximum + minimum, maximum - maximum), the result is
//     undefined.
//   - An ordinary result outside the ordinary range becomes maximum or minimum.
//   - Negation exchanges minimum and maximum, and leaves undefined as it is.
//
// `<` is a total order over the raw values: undefined, minimum, ordinary values, maximum.
//
// Both conversions are explicit, so that a bare integer is never taken for a time by mistake.
#pragma once

#include "Ruvex/Stuff.h"

#include <cstdint>
#include <limits>

namespace Pelko {

class PELKO_API Delay : public Ruvex::Stuff {
public:
    explicit Delay(int value) : value_(value) {}
    Delay(const Delay&) = default;
    Delay& operator=(const Delay&) = default;
    ~Delay() override = default;

    static Delay getNone() { return Delay(0); }
    static Delay getUndefined() { return Delay(undefinedValue); }
    static Delay getMinimum() { return Delay(minimumValue); }
    static Delay getMaximum() { return Delay(maximumValue); }
    // The delay of a wide integer: minimum or maximum if it lies outside the ordinary range.
    static Delay saturate(std::int64_t wide) { return Delay(saturated(wide)); }

    bool isDefined() const { return value_ != undefinedValue; }
    // Neither undefined, nor minimum, nor maximum.
    bool isOrdinary() const { return value_ > minimumValue && value_ < maximumValue; }
    // The raw value.
    explicit operator int() const { return value_; }

    Delay operator+(const Delay& other) const { return Delay(sum(value_, other.value_)); }
    Delay operator-(const Delay& other) const { return Delay(sum(value_, negated(other.value_))); }
    Delay operator-() const { return Delay(negated(value_)); }
    Delay& operator+=(const Delay& other) {
        value_ = sum(value_, other.value_);
        return *this;
    }
    Delay& operator-=(const Delay& other) {
        value_ = sum(value_, negated(other.value_));
        return *this;
    }

    bool operator==(const Delay& other) const { return value_ == other.value_; }
    bool operator!=(const Delay& other) const { return value_ != other.value_; }
    bool operator<(const Delay& other) const { return value_ < other.value_; }

    // The decimal value, or "undefined", "minimum", "maximum".
    std::string _getLabel() const override;
    Ruvex::Slot* _getSlot() const override;

    static constexpr int undefinedValue = std::numeric_limits<int>::min();
    static constexpr int minimumValue = undefinedValue + 1;
    static constexpr int maximumValue = std::numeric_limits<int>::max();

private:
    static bool isSpecial(int value) { return value <= minimumValue || value == maximumValue; }

    static int saturated(std::int64_t wide) {
        if (wide <= minimumValue)
            return minimumValue;
        return wide >= maximumValue ? maximumValue : static_cast<int>(wide);
    }

    // Undefined stays undefined; the other two specials are each other's negation.
    static int negated(int value) { return value == undefinedValue ? undefinedValue : -value; }

    static int sum(int a, int b) {
        if (!isSpecial(a) && !isSpecial(b)) [[likely]]
            return saturated(std::int64_t{a} + b);
        if (a == undefinedValue || b == undefinedValue)
            return undefinedValue;
        if (isSpecial(a) && isSpecial(b) && a != b)
            return undefinedValue;
        return isSpecial(a) ? a : b;
    }

    int value_;
};

} // namespace Pelko
