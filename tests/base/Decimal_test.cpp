// Decimals: what is read, how they scale and print.
#include "base/Decimal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

using Base::Decimal;

namespace {

constexpr std::int64_t eighteen = 123'456'789'012'345'678;
constexpr std::uint64_t eighteenDigits = 1'000'000'000'000'000'000; // the first number that has more

TEST(Decimal, ReadsNumbers) {
    const struct {
        const char* text;
        Decimal expected;
    } rows[] = {
        {"0", {0, 0}},
        {"1", {1, 0}},
        {"+1", {1, 0}},
        {"-1", {-1, 0}},
        {"007", {7, 0}},
        {".5", {5, -1}},
        {"5.", {5, 0}},
        {"-.25", {-25, -2}},
        {"1.250", {1250, -3}},
        {"0.001", {1, -3}},
        {"1e3", {1, 3}},
        {"1E3", {1, 3}},
        {"1e+3", {1, 3}},
        {"-1.2e+03", {-12, 2}},
        {"1.5e-3", {15, -4}},
        {"5.e1", {5, 1}},
        {"-0", {0, 0}},
        {"-0.000", {0, 0}},
        {"0e9", {0, 0}},
        {"1e999", {1, 999}},
        {"1e-999", {1, -999}},
        {"1e+0000000000000000000000999", {1, 999}},
        {"0.1e999", {1, 998}},
        {"0.00000000000000000000000000001", {1, -29}},
        {"123456789012345678", {eighteen, 0}},
        {"1234567890123456784", {eighteen, 1}},
        {"1234567890123456785", {eighteen + 1, 1}},
        {"12345678901234567849", {eighteen, 2}},
        {"1.234567890123456785", {eighteen + 1, -17}},
        {"12.3456789012345678499", {eighteen, -16}},
        {"9999999999999999999", {1'000'000'000'000'000'000, 1}},
        {"1000000000000000000000", {100'000'000'000'000'000, 4}},
    };
    for (const auto& row : rows) {
        const std::optional<Decimal> value = Decimal::parse(row.text);
        ASSERT_TRUE(value) << row.text;
        EXPECT_EQ(value->mantissa, row.expected.mantissa) << row.text;
        EXPECT_EQ(value->exponent, row.expected.exponent) << row.text;
    }
}

TEST(Decimal, RefusesWhatIsNoNumber) {
    for (const char* text :
         {"",    "+",    "-",     ".",   "-.",     "--1",     "+-1",      "1..2",    "1.2.3",
          "e5",  ".e5",  "1e",    "1e+", "1e1000", "1e99999", "1e-99999", "0e99999", "1e99999999999999999999",
          "1e-", "1e5.", "1e5e5", "1 ",  " 1",     "1x",      "0x10",     "1,5",     "inf",
          "nan", "1-2",  "1:2"})
        EXPECT_FALSE(Decimal::parse(text)) << text;
}

TEST(Decimal, ComparesByValue) {
    EXPECT_EQ(*Decimal::parse("1.0"), *Decimal::parse("1"));
    EXPECT_EQ(*Decimal::parse("10e-1"), Decimal::of(1));
    EXPECT_EQ(*Decimal::parse("-0"), Decimal::of(0));
    EXPECT_EQ((Decimal{0, 5}), Decimal::of(0));
    EXPECT_FALSE(*Decimal::parse("1") == *Decimal::parse("10"));
    EXPECT_FALSE(*Decimal::parse("1") == *Decimal::parse("-1"));
}

TEST(Decimal, TellsSignAndZero) {
    EXPECT_TRUE(Decimal::of(0).isZero());
    EXPECT_FALSE(Decimal::of(0).isNegative());
    EXPECT_TRUE(Decimal::parse("-0.1")->isNegative());
    EXPECT_FALSE(Decimal::parse("-0.1")->isZero());
    EXPECT_FALSE(Decimal::parse("0.1")->isNegative());
}

TEST(Decimal, ScalesToTheNearestInteger) {
    const struct {
        const char* text;
        int shift;
        std::int64_t expected;
    } rows[] = {
        {"1.234", 3, 1234},
        {"1.2344", 3, 1234},
        {"1.2345", 3, 1235},
        {"-1.2344", 3, -1234},
        {"-1.2345", 3, -1235},
        {"0.5", 0, 1},
        {"-0.5", 0, -1},
        {"0.4999", 0, 0},
        {"-0.4999", 0, 0},
        {"0.05", 0, 0},
        {"0.95", 0, 1},
        {"1.4999999", 0, 1},
        {"9.5", 0, 10},
        {"7", 0, 7},
        {"7", 3, 7000},
        {"7e3", -3, 7},
        {"7499", -3, 7},
        {"7500", -3, 8},
        {"0", 1'000, 0},
        {"1e-999", 3, 0},
        {"4611686018427387900", 0, 4'611'686'018'427'387'900},
        {"4", 18, 4'000'000'000'000'000'000},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Decimal::parse(row.text)->scaled(row.shift), row.expected) << row.text << " " << row.shift;
}

TEST(Decimal, ScalesToNothingWhatDoesNotFit) {
    EXPECT_EQ(Decimal::parse("5")->scaled(18), std::nullopt);
    EXPECT_EQ(Decimal::parse("-5")->scaled(18), std::nullopt);
    EXPECT_EQ(Decimal::parse("1e999")->scaled(0), std::nullopt);
    EXPECT_EQ((Decimal{1, 2'000'000'000}).scaled(0), std::nullopt);
    EXPECT_EQ(Decimal::of(std::numeric_limits<std::int64_t>::max()).scaled(0), std::nullopt);
    EXPECT_EQ(Decimal::of(std::numeric_limits<std::int64_t>::min()).scaled(0), std::nullopt);
}

TEST(Decimal, PrintsTheShortestExactForm) {
    const struct {
        const char* text;
        const char* expected;
    } rows[] = {
        {"0", "0"},           {"-0.0", "0"},
        {"10", "10"},         {"1e1", "10"},
        {"0.123", "0.123"},   {".5", "0.5"},
        {"-.5", "-0.5"},      {"1.500", "1.5"},
        {"-1.2e3", "-1200"},  {"100.0", "100"},
        {"-12.34", "-12.34"}, {"0.001", "0.001"},
        {"-0.01", "-0.01"},   {"1e20", "100000000000000000000"},
        {"1e21", "1e21"},     {"-12e30", "-12e30"},
        {"1e-31", "1e-31"},   {"1e-5", "0.00001"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Decimal::parse(row.text)->toString(), row.expected) << row.text;
    EXPECT_EQ(Decimal::of(std::numeric_limits<std::int64_t>::min()).toString(), "-9223372036854775808");
}

TEST(Decimal, BecomesTheNearestDouble) {
    const struct {
        const char* text;
        double expected;
    } rows[] = {
        {"0", 0.0},
        {"0.1", 0.1},
        {"-0.3", -0.3},
        {"1e3", 1e3},
        {"123456789012345678e-3", 123456789012345.678},
        {"0.123456789012345678", 0.123456789012345678},
        {"1e-30", 1e-30},
        {"123e30", 123e30},
        {"1e-400", 0.0},
        {"1e400", HUGE_VAL},
        {"-1e400", -HUGE_VAL},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Decimal::parse(row.text)->toDouble(), row.expected) << row.text;
}

TEST(Decimal, ComesBackFromItsText) {
    constexpr unsigned seed = 7;
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    for (int i = 0; i < 10'000; ++i) {
        const Decimal value{static_cast<std::int64_t>(random() % eighteenDigits >> random() % 60) - 1'000,
                            static_cast<std::int32_t>(random() % 80) - 40};
        const std::optional<Decimal> back = Decimal::parse(value.toString());
        ASSERT_TRUE(back) << value.toString();
        EXPECT_EQ(*back, value) << value.toString();
        EXPECT_EQ(value.toDouble(), std::stod(value.toString())) << value.toString();
    }
}

TEST(Decimal, KnowsItsLastDigit) {
    const std::pair<const char*, int> rows[] = {{"1.250", -2}, {"5000", 3},  {"7", 0},     {"0", 0},
                                                {"0.000", 0},  {"-0.5", -1}, {"2e-3", -3}, {"1.0e4", 4}};
    for (const auto& [text, power] : rows)
        EXPECT_EQ(Decimal::parse(text)->lastPower(), power) << text;
}

} // namespace
