// An allocator for tables by pole, arc or name: a large table lies in huge pages, if the system has any.
// Look-ups ask for entries from all over a table, and in small pages nearly each of them costs the search for
// its page as well.
//
// Memory of less than one huge page comes from `operator new`, aligned as that aligns it; anything larger
// starts at a huge page and takes a whole number of them. Both throw std::bad_alloc if memory runs out.
#pragma once

#include "Pelko/detail/HugePages.h"

#include <cstddef>
#include <new>
#include <utility>

namespace Pelko::detail {

// New entries get their value as in any container: `resize(n)` fills with zeros.
template <class T>
struct LargePages {
    using value_type = T;

    LargePages() = default;
    template <class Other>
    LargePages(const LargePages<Other>&) noexcept {}

    T* allocate(std::size_t count) {
        const std::size_t bytes = count * sizeof(T);
        return static_cast<T*>(isLarge(bytes) ? HugePages::take(bytes) : ::operator new(bytes));
    }
    void deallocate(T* place, std::size_t count) noexcept {
        if (isLarge(count * sizeof(T)))
            HugePages::release(place);
        else
            ::operator delete(place);
    }

    bool operator==(const LargePages&) const = default;

private:
    static bool isLarge(std::size_t bytes) { return bytes >= HugePages::size; }
};

// The same, but entries that are added without a value are not written: `resize(n)` leaves integers
// undefined, and the system provides their memory when it is first used. `resize(n, value)` fills as usual.
template <class T>
struct UnfilledLargePages : LargePages<T> {
    UnfilledLargePages() = default;
    template <class Other>
    UnfilledLargePages(const UnfilledLargePages<Other>&) noexcept {}

    template <class U>
    void construct(U* place) {
        ::new (static_cast<void*>(place)) U;
    }
    template <class U, class... Arguments>
    void construct(U* place, Arguments&&... arguments) {
        ::new (static_cast<void*>(place)) U(std::forward<Arguments>(arguments)...);
    }
};

} // namespace Pelko::detail
