// Tables that lie in huge pages where they are large: look-ups ask for entries from all over them, and in
// small pages nearly each costs the search for its page as well.
#pragma once

#include "Pelko/detail/HugePages.h"

#include <tsl/robin_map.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <new>
#include <utility>
#include <vector>

namespace Base {

template <class T>
struct LargePages {
    using value_type = T;

    LargePages() = default;
    template <class Other>
    LargePages(const LargePages<Other>&) noexcept {}

    T* allocate(std::size_t count) {
        const std::size_t bytes = count * sizeof(T);
        return static_cast<T*>(isLarge(count) ? Pelko::detail::HugePages::take(bytes)
                                              : ::operator new(bytes));
    }
    void deallocate(T* place, std::size_t count) noexcept {
        if (isLarge(count))
            Pelko::detail::HugePages::release(place);
        else
            ::operator delete(place);
    }

    bool operator==(const LargePages&) const = default;

private:
    static bool isLarge(std::size_t count) { return count * sizeof(T) >= Pelko::detail::HugePages::size; }
};

template <class T>
using LargeVector = std::vector<T, LargePages<T>>;

// Places are taken from the low bits of a hash: all bits of the key must reach these.
inline std::size_t mixed(std::uint64_t key) noexcept {
    key = (key ^ (key >> 32)) * 0x9E3779B97F4A7C15U;
    return static_cast<std::size_t>(key ^ (key >> 32));
}

struct Mixed {
    std::size_t operator()(std::uint64_t key) const noexcept { return mixed(key); }
};

// For millions of small entries: they lie side by side in one table, so that an entry costs no allocation and
// a look-up mostly one line of the cache. Entries move when others come.
template <class Key, class Value, class Hash = Mixed>
using HashMap = tsl::robin_map<Key, Value, Hash, std::equal_to<Key>, LargePages<std::pair<Key, Value>>>;

} // namespace Base
