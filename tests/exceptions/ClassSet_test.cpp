#include "exceptions/ClassSet.h"

#include <gtest/gtest.h>

namespace {

using Exceptions::ClassSet;

TEST(ClassSet, Numbers) {
    struct Row {
        std::uint64_t bits;
        unsigned first, count;
        std::uint64_t expected;
    };
    const std::uint64_t all = ~std::uint64_t{0};
    const Row rows[] = {
        {0b1101, 0, 0, 0},    {0b1101, 0, 2, 0b01}, {0b1101, 1, 2, 0b10}, {0b1101, 2, 2, 0b11},
        {0b1101, 3, 8, 0b01}, {all, 0, 64, all},    {all, 63, 1, 1},      {all, 10, 54, all >> 10},
    };
    for (const Row& row : rows)
        EXPECT_EQ(ClassSet(row.bits).number(row.first, row.count), row.expected)
            << row.bits << " from " << row.first << ": " << row.count;
}

TEST(ClassSet, Rest) {
    struct Row {
        std::uint64_t bits;
        unsigned first;
        std::uint64_t expected;
    };
    const std::uint64_t all = ~std::uint64_t{0};
    const Row rows[] = {
        {0b1101, 0, 0b1101}, {0b1101, 1, 0b1100}, {0b1101, 4, 0}, {all, 63, all << 63}, {all, 64, 0}};
    for (const Row& row : rows)
        EXPECT_EQ(ClassSet(row.bits).from(row.first), ClassSet(row.expected))
            << row.bits << " from " << row.first;
}

TEST(ClassSet, Members) {
    EXPECT_TRUE(ClassSet().isEmpty());
    EXPECT_FALSE(ClassSet(std::uint64_t{1} << 63).isEmpty());
    EXPECT_TRUE(ClassSet(0b101).has(2));
    EXPECT_FALSE(ClassSet(0b101).has(1));
}

} // namespace
