// Times as text: exact decimals, three digits, and the frequency of a period.
#include "report/Numbers.h"

#include "base/Decimal.h"

#include <fmt/format.h>

#include <cstdint>
#include <string>

namespace Report {

namespace {

constexpr int nsScale = -9;
constexpr int psScale = -12;
constexpr int mhzOfSeconds = -6; // 1 MHz is the frequency of 10^-6 s
constexpr std::size_t shownDigits = 3;
constexpr int significantDigits = 6;

std::uint64_t powerOfTen(int exponent) {
    std::uint64_t power = 1;
    for (; exponent > 0; --exponent)
        power *= 10;
    return power;
}

// The most negative time has a magnitude too.
std::uint64_t magnitude(Time value) {
    const auto bits = static_cast<std::uint64_t>(value);
    return value < 0 ? 0 - bits : bits;
}

// value / 10^places, with all digits.
std::string withPoint(Time value, std::size_t places) {
    std::string digits = fmt::format("{:0{}}", magnitude(value), places + 1);
    digits.insert(digits.size() - places, ".");
    return value < 0 ? "-" + digits : digits;
}

} // namespace

std::string exactNs(Time value, int scale) { return Base::Decimal{value, scale - nsScale}.toString(); }

Time shownPs(Time value, int scale) {
    const std::uint64_t unit = powerOfTen(psScale - scale);
    const std::uint64_t size = magnitude(value);
    const auto ps = static_cast<Time>(size / unit + (size % unit * 2 >= unit ? 1 : 0));
    return value < 0 ? -ps : ps;
}

Time shownSlackPs(Time slack, int scale) {
    const Time ps = shownPs(slack, scale);
    return slack < 0 && ps == 0 ? -1 : ps;
}

std::string threeDigits(Time ps) { return withPoint(ps, shownDigits); }

// A division by hand, digit by digit until six of them are significant. Halves are rounded up.
std::string fmaxMhz(Time period, int scale) {
    const std::uint64_t divisor = magnitude(period);
    const std::uint64_t dividend = powerOfTen(mhzOfSeconds - scale);
    std::uint64_t digits = dividend / divisor;
    std::uint64_t rest = dividend % divisor;

    if (const std::uint64_t most = powerOfTen(significantDigits); digits >= most) {
        std::uint64_t unit = 10;
        while (digits / unit >= most)
            unit *= 10;
        return std::to_string((digits + unit / 2) / unit * unit);
    }
    int places = 0;
    for (; digits < powerOfTen(significantDigits - 1); ++places) {
        rest *= 10;
        digits = digits * 10 + rest / divisor;
        rest %= divisor;
    }
    if (rest >= divisor - rest)
        ++digits;
    return Base::Decimal{static_cast<std::int64_t>(digits), -places}.toString();
}

} // namespace Report
