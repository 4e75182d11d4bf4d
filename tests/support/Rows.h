// Names the row of a table that a check fails on.
//
//   for (const auto& row : rows) {
//       SCOPED_TRACE(Support::rowOf(rows, row));
//       EXPECT_EQ(lowered(row.text), row.expected);
//   }
#pragma once

#include <iterator>
#include <memory>
#include <string>

namespace Support {

// "row 3 of 7", counted from 1. The row is an element of the table, whose elements are behind each other in
// memory.
template <class Rows, class Row>
std::string rowOf(const Rows& rows, const Row& row) {
    const auto place = std::addressof(row) - std::addressof(*std::begin(rows));
    return "row " + std::to_string(place + 1) + " of " + std::to_string(std::size(rows));
}

} // namespace Support
