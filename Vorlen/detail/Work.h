// How many arcs the walks look at, and how many entries of tables as large as the design are made or cleared,
// so that tests can hold them to a bound: a time says little on a busy machine.
//
// A walk counts a fan when it takes it up, with all its arcs; where it stops early, with those that it saw.
// What is only fetched ahead is not counted. It counts in a build of the engine that only the tests have
// (VORLEN_COUNT_WORK); in the library, counting is nothing. One thread.
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
