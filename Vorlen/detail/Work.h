// Counts the arcs that walks read, and the entries that are created or cleared in tables as large as the
// design. Tests compare the counts with bounds, because times vary on a busy machine.
//
// A walk counts all arcs of a fan when it starts to read it. If it stops early, it counts those that it has
// read. Prefetching is not counted. Counting is compiled only into a build of the engine for tests
// (VORLEN_COUNT_WORK); in the library these functions do nothing. For use in one thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Vorlen::detail {

#ifdef VORLEN_COUNT_WORK
inline std::uint64_t visitedArcs = 0;
inline std::uint64_t clearedEntries = 0;
#endif

inline void visitArcs([[maybe_unused]] std::size_t arcs) {
#ifdef VORLEN_COUNT_WORK
    visitedArcs += arcs;
#endif
}

inline void clearEntries([[maybe_unused]] std::size_t entries) {
#ifdef VORLEN_COUNT_WORK
    clearedEntries += entries;
#endif
}

} // namespace Vorlen::detail
