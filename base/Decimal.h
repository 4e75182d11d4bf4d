// A decimal number as it is written: mantissa * 10^exponent. Times stay exact until they become integer
// units.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Base {

struct Decimal {
    std::int64_t mantissa = 0;
    std::int32_t exponent = 0;

    // Reads "1", "-1.2e+03", ".5", "5.". Returns nothing for any other text, and if the exponent is above 999
    // or below -999. Digits beyond the eighteenth significant one only round.
    static std::optional<Decimal> parse(std::string_view text);
    static Decimal of(std::int64_t value) { return {value, 0}; }

    // Returns this * 10^shift as the nearest integer, halves away from zero; nothing if that needs more than
    // 62 bits.
    std::optional<std::int64_t> scaled(int shift) const;

    // The power of ten of the last digit that is not 0: -2 for 1.250, 3 for 5000. 0 for 0.
    std::int32_t lastPower() const;

    double toDouble() const;
    // The shortest exact form: "10", "0.123", "-1200".
    std::string toString() const;

    bool isZero() const { return mantissa == 0; }
    bool isNegative() const { return mantissa < 0; }
};

// By value: 1.0 == 1 == 10e-1.
bool operator==(const Decimal& a, const Decimal& b);

} // namespace Base
