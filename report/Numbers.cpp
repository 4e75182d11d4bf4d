// Times as text: exact decimals, three digits, and the frequency of a period.
#include "report/Numbers.h"

#include <fmt/format.h>

#include <cstdint>

namespace Report {

namespace {

constexpr int nsScale = -9;
constexpr int psScale = -12;
constexpr int mhzOfSeconds = -6; // 1 MHz is the frequency of 10^-6 s
constexpr std::size_t shownDigits = 3;
constexpr std::size_t significantDigits = 6;

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

void dropZerosAtEnd(std::string& decimal) {
    if (decimal.find('.') == std::string::npos)
        return;
    decimal.erase(decimal.find_last_not_of('0') + 1);
    if (decimal.back() == '.')
        decimal.pop_back();
}

// Digits of a number below the point that is to the right of them all, rounded up by one unit of the last
// one.
void roundUp(std::string& digits) {
    std::size_t at = digits.size();
    while (at > 0 && digits[at - 1] == '9')
        digits[--at] = '0';
    if (at == 0)
        digits.insert(0, "1");
    else
        ++digits[at - 1];
}

} // namespace

std::string exactNs(Time value, int scale) {
    std::string text = withPoint(value, static_cast<std::size_t>(nsScale - scale));
    dropZerosAtEnd(text);
    return text;
}

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

// A division by hand: the whole part, then digit by digit until six of them are significant.
std::string fmaxMhz(Time period, int scale) {
    const std::uint64_t divisor = magnitude(period);
    const std::uint64_t dividend = powerOfTen(mhzOfSeconds - scale);
    const std::uint64_t whole = dividend / divisor;
    std::uint64_t rest = dividend % divisor;

    std::string digits = std::to_string(whole);
    if (whole != 0 && digits.size() > significantDigits) {
        const std::uint64_t unit = powerOfTen(static_cast<int>(digits.size() - significantDigits));
        return std::to_string((whole + unit / 2) / unit * unit);
    }
    std::size_t places = 0;
    std::size_t significant = whole == 0 ? 0 : digits.size();
    for (; significant < significantDigits; ++places) {
        rest *= 10;
        const auto digit = static_cast<char>('0' + rest / divisor);
        rest %= divisor;
        digits += digit;
        if (significant != 0 || digit != '0')
            ++significant;
    }
    if (rest >= divisor - rest)
        roundUp(digits);
    digits.insert(digits.size() - places, ".");
    dropZerosAtEnd(digits);
    return digits;
}

} // namespace Report
