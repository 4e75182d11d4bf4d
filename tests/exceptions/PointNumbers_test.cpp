#include "exceptions/PointNumbers.h"

#include "tests/exceptions/Small.h"

#include <gtest/gtest.h>

namespace {

using Exceptions::By;
using Exceptions::VariantId;
using Support::Small;

// The start numbers of r0, r1 and r2, and the end numbers of r1/D and r2/D: "1 1 0; 0 1".
std::string numbers(const std::string& script) {
    const Small small(script);
    std::string text;
    for (const char* clockPin : {"r0/C", "r1/C", "r2/C"})
        text += std::to_string(small.startNumber(clockPin).number()) + " ";
    text.back() = ';';
    for (const char* end : {"r1/D", "r2/D"})
        text += " " + std::to_string(small.encoding.numbers().numberOf(small.pin(end)).number());
    return text;
}

TEST(PointNumbers, Table) {
    struct Row {
        const char *script, *expected;
    };
    const Row rows[] = {
        {"", "0 0 0; 0 0"},
        {"set_false_path -from {r0 r1} -to r2", "1 1 0; 0 1"},
        {"set_false_path -from {r0 r1}; set_multicycle_path 2 -from r1", "1 2 0; 0 0"},
        // Named by the cell, and by the clock pin.
        {"set_false_path -from {r0 r1/C}", "1 2 0; 0 0"},
        // In the order of the pins, of which r2/D is the first.
        {"set_false_path -to {r1 r2/D}", "0 0 0; 2 1"},
        // Clocks name no points.
        {"set_false_path -from [get_clocks a] -to [get_clocks a]", "0 0 0; 0 0"},
        // Each by itself, for its latency.
        {"set_max_delay 5 -from {r0 r1} -ignore_clock_latency", "1 2 0; 0 0"},
        {"set_max_delay 5 -to r2 -ignore_clock_latency", "2 3 4; 0 1"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(numbers(row.script), row.expected) << row.script;
}

TEST(PointNumbers, Namings) {
    const Small small("set_false_path -from {r0 r1}; set_multicycle_path 2 -from {r1 r1/C}");
    const Exceptions::PointNumbers& numbers = small.encoding.numbers();
    EXPECT_EQ(numbers.starts(), 3U);
    const auto r1 = small.startNumber("r1/C");
    EXPECT_EQ(numbers.namedBy(r1, VariantId(0)), By::cell);
    EXPECT_EQ(numbers.namedBy(r1, VariantId(1)), By::cell | By::pin);
    EXPECT_TRUE(numbers.namedBy(small.startNumber("r0/C"), VariantId(1)).isEmpty());
    EXPECT_TRUE(numbers.namings(Exceptions::unnamedStart).empty());
}

} // namespace
