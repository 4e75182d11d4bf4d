// A vector for tables by pole or arc, in huge pages if it is large and the system has any. `resize(n)` leaves
// new entries undefined; `resize(n, value)` gives them a value.
#pragma once

#include "Pelko/detail/LargePages.h"

#include <vector>

namespace Vorlen::detail {

template <class T>
using LargeVector = std::vector<T, Pelko::detail::UnfilledLargePages<T>>;

} // namespace Vorlen::detail
