// Memory in pages of two megabytes, if the system has any. A walk of a large design reads objects from all
// over it, and in small pages nearly each of them costs the search for its page as well.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>
#include <sys/mman.h>

namespace Pelko::detail {

struct HugePages {
    static constexpr std::size_t size = std::size_t{2} << 20;

    // At least this many bytes, as a whole number of pages, aligned to a page. Throws std::bad_alloc.
    static void* take(std::size_t bytes) {
        void* place = std::aligned_alloc(size, (bytes + size - 1) / size * size);
        if (!place)
            throw std::bad_alloc();
#ifdef MADV_HUGEPAGE
        madvise(place, bytes, MADV_HUGEPAGE); // a hint: its result does not matter
#endif
        return place;
    }
    static void release(void* place) { std::free(place); }
};

} // namespace Pelko::detail
