// Memory in pages of two megabytes where the system has them to give. A walk of a large design asks for
// objects from all over it; in small pages nearly every one of them costs the search for its page as well.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>
#include <sys/mman.h>

namespace Pelko::detail {

struct HugePages {
    static constexpr std::size_t size = std::size_t{2} << 20;

    // A whole number of pages. Throws std::bad_alloc.
    static void* take(std::size_t bytes) {
        void* place = std::aligned_alloc(size, (bytes + size - 1) / size * size);
        if (!place)
            throw std::bad_alloc();
#ifdef MADV_HUGEPAGE
        madvise(place, bytes, MADV_HUGEPAGE); // a hint: what it answers changes nothing
#endif
        return place;
    }
    static void release(void* place) { std::free(place); }
};

} // namespace Pelko::detail
