// The allocators for large tables: the placement of the memory, and the values of new entries.
#include "Pelko/detail/LargePages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <vector>

namespace HostTest {

namespace {

using Pelko::detail::HugePages;
using Pelko::detail::LargePages;
using Pelko::detail::UnfilledLargePages;

constexpr std::size_t small = 1000;
constexpr std::size_t large = HugePages::size; // entries of four bytes: four pages

template <class Vector>
class LargeTables : public testing::Test {};
using Vectors = testing::Types<std::vector<std::uint32_t, LargePages<std::uint32_t>>,
                               std::vector<std::uint32_t, UnfilledLargePages<std::uint32_t>>>;
TYPED_TEST_SUITE(LargeTables, Vectors);

TYPED_TEST(LargeTables, ALargeTableStartsAtAHugePage) {
    for (const std::size_t count : {HugePages::size / 4, large, large + 1}) {
        const TypeParam table(count, 7);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(table.data()) % HugePages::size, 0U) << count;
    }
}

// A table keeps its entries when it grows from small to large, and when it is copied or moved.
TYPED_TEST(LargeTables, EntriesStay) {
    TypeParam table;
    for (std::uint32_t i = 0; i < large; ++i)
        table.push_back(i);
    TypeParam expected(large, 0);
    std::iota(expected.begin(), expected.end(), 0U);
    EXPECT_EQ(table, expected);
    const TypeParam copy = table;
    const TypeParam moved = std::move(table);
    EXPECT_EQ(copy, expected);
    EXPECT_EQ(moved, expected);
}

// Fills a table's memory and empties the table, so that the test sees what `resize` then writes.
template <class Vector>
std::size_t countZerosAfterResize(std::size_t count) {
    Vector table(count, 7);
    table.clear();
    table.resize(count);
    return static_cast<std::size_t>(std::count(table.begin(), table.end(), 0U));
}

TEST(LargePages, ResizeFillsWithZeros) {
    for (const std::size_t count : {small, large}) {
        SCOPED_TRACE(count);
        EXPECT_EQ((countZerosAfterResize<std::vector<std::uint32_t, LargePages<std::uint32_t>>>(count)),
                  count);
    }
}

TEST(UnfilledLargePages, ResizeWritesNothingWithoutAValue) {
    using Table = std::vector<std::uint32_t, UnfilledLargePages<std::uint32_t>>;
    for (const std::size_t count : {small, large}) {
        SCOPED_TRACE(count);
        EXPECT_EQ(countZerosAfterResize<Table>(count), 0U);
        Table table;
        table.resize(count, 3);
        EXPECT_EQ(std::count(table.begin(), table.end(), 3U), static_cast<std::ptrdiff_t>(count));
    }
}

} // namespace

} // namespace HostTest
