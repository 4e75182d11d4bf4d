// Tables that lie in huge pages where they are large: look-ups ask for entries from all over them, and in
// small pages nearly each costs the search for its page as well.
#pragma once

#include "Pelko/detail/LargePages.h"

#include <tsl/robin_map.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace Base {

using Pelko::detail::LargePages;

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
