// Vectors as sorted sets.
#pragma once

#include <algorithm>
#include <vector>

namespace Exceptions {

// Sorts the values and keeps each of them once.
template <class Value>
void sortOnce(std::vector<Value>& values) {
    std::ranges::sort(values);
    const auto rest = std::ranges::unique(values);
    values.erase(rest.begin(), rest.end());
}

// REQUIRES: the values are sorted.
template <class Value>
bool isIn(const std::vector<Value>& values, const Value& value) {
    return std::ranges::binary_search(values, value);
}

} // namespace Exceptions
