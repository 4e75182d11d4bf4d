// A map from poles to values that is used like a std::map ordered by stamp, with O(1) look-up. Entries lie in
// order of insertion, and a hash of the poles' dense indices finds them. They are sorted by stamp when the
// map is next iterated.
//
// References to values stay valid while the map grows. Single entries cannot be erased. Space: a few bytes
// for each entry in addition to the entry itself, and 4 more after an iteration.
#pragma once

#include "Pelko/Pole.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <numeric>
#include <type_traits>
#include <utility>
#include <vector>

namespace Vorlen {

template <class Value>
class PoleMap {
public:
    using key_type = Pelko::Pole*;
    using mapped_type = Value;
    using value_type = std::pair<Pelko::Pole* const, Value>;

    struct End {};

    // The result of a look-up: an entry, or the end.
    template <class Entry>
    class Found {
    public:
        explicit Found(Entry* entry) : entry_(entry) {}
        Entry& operator*() const { return *entry_; }
        Entry* operator->() const { return entry_; }
        bool operator==(End) const { return !entry_; }

    private:
        Entry* entry_;
    };

    // Iterates over the entries in stamp order.
    template <class Entry, class Map>
    class Iterator {
    public:
        Iterator(Map& map, std::size_t place) : map_(&map), place_(place) {}
        Entry& operator*() const { return map_->entries_[map_->order_[place_]]; }
        Entry* operator->() const { return &**this; }
        Iterator& operator++() {
            ++place_;
            return *this;
        }
        bool operator==(End) const { return place_ == map_->order_.size(); }

    private:
        Map* map_;
        std::size_t place_;
    };

    std::size_t size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }
    std::size_t count(const Pelko::Pole* pole) const { return lookUp(pole) ? 1 : 0; }

    Found<value_type> find(const Pelko::Pole* pole) {
        return Found<value_type>(const_cast<value_type*>(lookUp(pole)));
    }
    Found<const value_type> find(const Pelko::Pole* pole) const {
        return Found<const value_type>(lookUp(pole));
    }

    // The value of the pole; a default value is inserted if there is none.
    Value& operator[](Pelko::Pole* pole) {
        if (const value_type* entry = lookUp(pole))
            return const_cast<value_type*>(entry)->second;
        entries_.emplace_back(pole, Value());
        if (2 * entries_.size() > table_.size())
            rehash(std::max<std::size_t>(16, 4 * entries_.size()));
        else
            place(entries_.size() - 1);
        return entries_.back().second;
    }

    auto begin() { return Iterator<value_type, PoleMap>(sorted(), 0); }
    auto begin() const { return Iterator<const value_type, const PoleMap>(sorted(), 0); }
    End end() const { return {}; }

    void clear() { *this = PoleMap(); }

private:
    // Spreads neighbouring indices over the table, whose size is a power of two.
    std::size_t slotOf(const Pelko::Pole* pole) const {
        return (pole->getIndex() * 0x9E3779B97F4A7C15UL) >> shift_;
    }

    // A place of the table holds the number of an entry plus one, or 0.
    const value_type* lookUp(const Pelko::Pole* pole) const {
        if (!pole || table_.empty())
            return nullptr;
        for (std::size_t slot = slotOf(pole);; slot = (slot + 1) & (table_.size() - 1)) {
            if (table_[slot] == 0)
                return nullptr;
            if (const value_type& entry = entries_[table_[slot] - 1]; entry.first == pole)
                return &entry;
        }
    }

    void place(std::size_t number) {
        std::size_t slot = slotOf(entries_[number].first);
        while (table_[slot] != 0)
            slot = (slot + 1) & (table_.size() - 1);
        table_[slot] = static_cast<std::uint32_t>(number + 1);
    }

    void rehash(std::size_t wanted) {
        unsigned bits = 4;
        while ((std::size_t{1} << bits) < wanted)
            ++bits;
        shift_ = 64 - bits;
        table_.assign(std::size_t{1} << bits, 0);
        for (std::size_t number = 0; number < entries_.size(); ++number)
            place(number);
    }

    const PoleMap& sorted() const {
        if (order_.size() != entries_.size()) {
            order_.resize(entries_.size());
            std::iota(order_.begin(), order_.end(), 0U);
            std::sort(order_.begin(), order_.end(), [this](std::uint32_t a, std::uint32_t b) {
                return Pelko::Object::StampLess()(entries_[a].first, entries_[b].first);
            });
        }
        return *this;
    }
    PoleMap& sorted() {
        std::as_const(*this).sorted();
        return *this;
    }

    std::deque<value_type> entries_;
    std::vector<std::uint32_t> table_;
    unsigned shift_ = 0;
    mutable std::vector<std::uint32_t> order_;
};

} // namespace Vorlen
