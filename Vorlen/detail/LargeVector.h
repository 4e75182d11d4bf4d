// A vector for tables by pole or arc: where it is large, it lies in huge pages if the system has them to
// give. Walks ask for entries from all over a table, and in small pages nearly each of them costs the search
// for its page as well. `resize` needs a value where entries are to have one.
#pragma once

#include <cstdlib>
#include <new>
#include <sys/mman.h>
#include <utility>
#include <vector>

namespace Vorlen::detail {

template <class T>
struct LargePages {
    using value_type = T;

    LargePages() = default;
    template <class Other>
    LargePages(const LargePages<Other>&) {}

    T* allocate(std::size_t count) {
        const std::size_t bytes = count * sizeof(T);
        if (bytes < page)
            return static_cast<T*>(::operator new(bytes));
        void* place = std::aligned_alloc(page, (bytes + page - 1) / page * page);
        if (!place)
            throw std::bad_alloc();
#ifdef MADV_HUGEPAGE
        madvise(place, bytes, MADV_HUGEPAGE); // a hint: what it answers changes nothing
#endif
        return static_cast<T*>(place);
    }

    void deallocate(T* place, std::size_t count) {
        if (count * sizeof(T) < page)
            ::operator delete(place);
        else
            std::free(place);
    }

    // What is added without a value is not written: memory comes from the system when it is first used.
    template <class U>
    void construct(U* place) {
        ::new (static_cast<void*>(place)) U;
    }
    template <class U, class... Arguments>
    void construct(U* place, Arguments&&... arguments) {
        ::new (static_cast<void*>(place)) U(std::forward<Arguments>(arguments)...);
    }

    bool operator==(const LargePages&) const = default;

private:
    static constexpr std::size_t page = std::size_t{2} << 20;
};

template <class T>
using LargeVector = std::vector<T, LargePages<T>>;

} // namespace Vorlen::detail
