// Tables that are put into huge pages if they are large. Look-ups go to entries all over a table, and in
// small pages nearly every one of them would have to search for its page as well.
#pragma once

#include "Pelko/detail/LargePages.h"
#include "base/Index.h"

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

// The place of an entry is taken from the low bits of the hash, so all bits of the key must have an effect on
// them.
inline std::size_t mixed(std::uint64_t key) noexcept {
    key = (key ^ (key >> 32)) * 0x9E3779B97F4A7C15U;
    return static_cast<std::size_t>(key ^ (key >> 32));
}

struct Mixed {
    std::size_t operator()(std::uint64_t key) const noexcept { return mixed(key); }
    template <class Tag>
    std::size_t operator()(Index<Tag> key) const noexcept {
        return mixed(key.number());
    }
};

// For millions of small entries. They are stored in one array, so that an entry costs no allocation and a
// look-up usually one cache line. Adding an entry invalidates references and iterators.
template <class Key, class Value, class Hash = Mixed>
using HashMap = tsl::robin_map<Key, Value, Hash, std::equal_to<Key>, LargePages<std::pair<Key, Value>>>;

} // namespace Base
