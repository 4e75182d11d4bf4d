// Numbers as text.
#include "report/Numbers.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using Report::Time;

constexpr Time least = std::numeric_limits<Time>::min();
constexpr Time greatest = std::numeric_limits<Time>::max();

TEST(Numbers, exactNs) {
    struct Row {
        Time value;
        int scale;
        const char* expected;
    };
    const Row rows[] = {
        {0, -12, "0"},
        {0, -15, "0"},
        {1, -12, "0.001"},
        {-1, -12, "-0.001"},
        {3537, -12, "3.537"},
        {10000, -12, "10"},
        {100000, -12, "100"},
        {-120, -12, "-0.12"},
        {-1500, -12, "-1.5"},
        {10, -13, "0.001"},
        {1, -13, "0.0001"},
        {12345, -14, "0.12345"},
        {1, -15, "0.000001"},
        {-1000001, -15, "-1.000001"},
        {2000000, -15, "2"},
        {greatest, -12, "9223372036854775.807"},
        {least, -12, "-9223372036854775.808"},
        {least, -15, "-9223372036854.775808"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Report::exactNs(row.value, row.scale), row.expected) << row.value << " at " << row.scale;
}

TEST(Numbers, shownWithThreeDigits) {
    struct Row {
        Time value;
        int scale;
        const char* time;
        const char* slack;
    };
    const Row rows[] = {
        {0, -12, "0.000", "0.000"},
        {3537, -12, "3.537", "3.537"},
        {10000, -12, "10.000", "10.000"},
        {-1, -12, "-0.001", "-0.001"},
        {-120, -12, "-0.120", "-0.120"},
        {4, -13, "0.000", "0.000"},
        {5, -13, "0.001", "0.001"},
        {-4, -13, "0.000", "-0.001"},
        {-5, -13, "-0.001", "-0.001"},
        {-14, -13, "-0.001", "-0.001"},
        {-15, -13, "-0.002", "-0.002"},
        {49, -14, "0.000", "0.000"},
        {1499, -15, "0.001", "0.001"},
        {1500, -15, "0.002", "0.002"},
        {-1, -15, "0.000", "-0.001"},
        {-499, -15, "0.000", "-0.001"},
        {-500, -15, "-0.001", "-0.001"},
        {-1499, -15, "-0.001", "-0.001"},
        {greatest, -15, "9223372036854.776", "9223372036854.776"},
        {least, -15, "-9223372036854.776", "-9223372036854.776"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Report::threeDigits(Report::shownPs(row.value, row.scale)), row.time) << row.value;
        EXPECT_EQ(Report::threeDigits(Report::shownSlackPs(row.value, row.scale)), row.slack) << row.value;
    }
}

TEST(Numbers, fmaxMhz) {
    struct Row {
        Time period;
        int scale;
        const char* expected;
    };
    const Row rows[] = {
        {10000, -12, "100"},        {7410, -12, "134.953"},
        {3, -12, "333333"},         {1, -12, "1000000"},
        {7, -15, "142857000"},      {6, -15, "166667000"},
        {7410000, -15, "134.953"},  {1000001, -12, "0.999999"}, // 0.999999000000...
        {1000000, -12, "1"},        {10000001, -12, "0.1"},     // 0.09999999, rounded up through all digits
        {3000000, -12, "0.333333"}, {600000000, -12, "0.00166667"},
        {128, -12, "7812.5"},       {8, -12, "125000"},
        {64, -13, "156250"},        {100000000000000000, -12, "0.00000000001"},
        {100000001, -15, "10"}, // 9.9999999, which becomes longer
    };
    for (const Row& row : rows)
        EXPECT_EQ(Report::fmaxMhz(row.period, row.scale), row.expected) << row.period << " at " << row.scale;
}

} // namespace
