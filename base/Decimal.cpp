// Decimal numbers: reading, scaling and printing without a binary fraction in between.
#include "base/Decimal.h"

#include <cmath>
#include <cstdlib>

namespace Base {

namespace {

constexpr std::int64_t largestMantissa = 999'999'999'999'999'999; // eighteen digits
constexpr int largestExponent = 999;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Drops the zeros at the mantissa's end.
Decimal reduced(Decimal value) {
    if (value.mantissa == 0)
        return {};
    while (value.mantissa % 10 == 0) {
        value.mantissa /= 10;
        ++value.exponent;
    }
    return value;
}

} // namespace

std::optional<Decimal> Decimal::parse(std::string_view text) {
    const char* at = text.data();
    const char* const end = at + text.size();
    bool negative = false;
    if (at != end && (*at == '+' || *at == '-'))
        negative = *at++ == '-';

    Decimal value;
    bool digits = false, point = false, full = false;
    for (; at != end; ++at) {
        if (*at == '.' && !point) {
            point = true;
            continue;
        }
        if (!isDigit(*at))
            break;
        digits = true;
        if (!full && value.mantissa <= (largestMantissa - 9) / 10) {
            value.mantissa = value.mantissa * 10 + (*at - '0');
            value.exponent -= point;
        } else {
            if (!full && *at >= '5')
                ++value.mantissa;
            full = true;
            value.exponent += !point;
        }
    }
    if (!digits)
        return std::nullopt;

    if (at != end && (*at == 'e' || *at == 'E')) {
        ++at;
        bool minus = false;
        if (at != end && (*at == '+' || *at == '-'))
            minus = *at++ == '-';
        if (at == end)
            return std::nullopt;
        int exponent = 0;
        for (; at != end && isDigit(*at); ++at) {
            exponent = exponent * 10 + (*at - '0');
            if (exponent > largestExponent)
                return std::nullopt;
        }
        value.exponent += minus ? -exponent : exponent;
    }
    if (at != end)
        return std::nullopt;
    if (negative)
        value.mantissa = -value.mantissa;
    if (value.mantissa == 0)
        value.exponent = 0;
    return value;
}

std::optional<std::int64_t> Decimal::scaled(int shift) const {
    constexpr std::int64_t limit = std::int64_t{1} << 62;
    std::int64_t value = mantissa;
    int power = exponent + shift;
    if (value == 0)
        return 0;
    if (power >= 0 && (value > limit || value < -limit))
        return std::nullopt;
    for (; power > 0; --power) {
        if (value > limit / 10 || value < -(limit / 10))
            return std::nullopt;
        value *= 10;
    }
    // All but the last digit that goes are cut off: rounding looks at the last one, and a cut digit cannot
    // make a half out of less, nor less out of a half.
    for (; power < -1 && value != 0; ++power)
        value /= 10;
    if (power < 0) {
        const std::int64_t last = value % 10;
        value = value / 10 + (last >= 5 ? 1 : last <= -5 ? -1 : 0);
    }
    return value;
}

std::int32_t Decimal::lastPower() const { return reduced(*this).exponent; }

double Decimal::toDouble() const {
    // Up to 2^53 an integer is an exact double, up to 10^22 a power of ten: one operation rounds just once.
    constexpr std::int64_t exactMantissa = std::int64_t{1} << 53;
    constexpr int exactPower = 22;
    const bool exact = mantissa >= -exactMantissa && mantissa <= exactMantissa;
    if (exact && exponent <= 0 && exponent >= -exactPower)
        return static_cast<double>(mantissa) / std::pow(10.0, -exponent);
    // Without a point in the text no locale has a say.
    return std::strtod((std::to_string(mantissa) + "e" + std::to_string(exponent)).c_str(), nullptr);
}

std::string Decimal::toString() const {
    constexpr int mostZeros = 20, mostPlaces = 30; // beyond that an exponent is shorter
    const Decimal value = reduced(*this);
    std::string digits = std::to_string(value.mantissa);
    if (value.exponent > mostZeros || value.exponent < -mostPlaces)
        return digits + "e" + std::to_string(value.exponent);
    const std::size_t sign = value.mantissa < 0 ? 1 : 0;
    if (value.exponent > 0)
        digits.append(static_cast<std::size_t>(value.exponent), '0');
    if (value.exponent < 0) {
        const std::size_t places = static_cast<std::size_t>(-value.exponent);
        if (digits.size() - sign <= places)
            digits.insert(sign, places + 1 - (digits.size() - sign), '0');
        digits.insert(digits.size() - places, ".");
    }
    return digits;
}

bool operator==(const Decimal& a, const Decimal& b) {
    const Decimal x = reduced(a), y = reduced(b);
    return x.mantissa == y.mantissa && x.exponent == y.exponent;
}

} // namespace Base
