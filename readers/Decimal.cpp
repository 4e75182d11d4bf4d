// Decimal numbers: reading, scaling and printing without a binary fraction in between.
#include "Decimal.h"

#include <cmath>
#include <limits>

namespace Readers {

namespace {

constexpr std::int64_t largestMantissa = 999'999'999'999'999'999; // eighteen digits
constexpr int exponentLimit = 100'000;

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
        for (; at != end && isDigit(*at); ++at)
            if (exponent < exponentLimit)
                exponent = exponent * 10 + (*at - '0');
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
    for (; power > 0; --power) {
        if (value > limit / 10 || value < -(limit / 10))
            return std::nullopt;
        value *= 10;
    }
    // All but the last digit that goes are cut off: rounding looks at the last one, and a cut digit cannot make a
    // half out of less, nor less out of a half.
    for (; power < -1 && value != 0; ++power)
        value /= 10;
    if (power < 0) {
        const std::int64_t last = value % 10;
        value = value / 10 + (last >= 5 ? 1 : last <= -5 ? -1 : 0);
    }
    return value;
}

double Decimal::toDouble() const {
    // Powers up to 10^22 are exact doubles, so that one division or multiplication rounds just once.
    if (exponent < 0 && exponent >= -22)
        return static_cast<double>(mantissa) / std::pow(10.0, -exponent);
    return static_cast<double>(mantissa) * std::pow(10.0, exponent);
}

std::string Decimal::toString() const {
    const Decimal value = reduced(*this);
    if (value.exponent > 20 || value.exponent < -30)
        return std::to_string(value.mantissa) + "e" + std::to_string(value.exponent);
    std::string digits = std::to_string(std::abs(value.mantissa));
    if (value.exponent > 0)
        digits.append(static_cast<std::size_t>(value.exponent), '0');
    if (value.exponent < 0) {
        const std::size_t places = static_cast<std::size_t>(-value.exponent);
        if (digits.size() <= places)
            digits.insert(0, places + 1 - digits.size(), '0');
        digits.insert(digits.size() - places, ".");
    }
    return value.mantissa < 0 ? "-" + digits : digits;
}

bool operator==(const Decimal& a, const Decimal& b) {
    const Decimal x = reduced(a), y = reduced(b);
    return x.mantissa == y.mantissa && x.exponent == y.exponent;
}

} // namespace Readers
