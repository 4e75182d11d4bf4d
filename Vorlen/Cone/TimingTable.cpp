#include "Vorlen/Cone/TimingTable.h"

namespace Vorlen::detail {

ClassTiming& TimingTable::obtainFurther(Slot slot, unsigned long key) {
    constexpr ClassTiming nothing{0, Pelko::Delay::undefinedValue, Pelko::Delay::undefinedValue};
    if (states_[slot] == One) {
        const std::size_t run = take(1);
        more_[run] = first_[slot];
        first_[slot] = {run, 1, 1};
        states_[slot] = Many;
    }
    ClassTiming* begin = &more_[first_[slot].key];
    ClassTiming* end = begin + first_[slot].minimum;
    ClassTiming* place = std::lower_bound(
        begin, end, key, [](const ClassTiming& entry, unsigned long wanted) { return entry.key < wanted; });
    if (place != end && place->key == key)
        return *place;
    const std::ptrdiff_t offset = place - begin;
    const auto bits = static_cast<unsigned>(first_[slot].maximum);
    if (static_cast<unsigned>(first_[slot].minimum) == 1U << bits) {
        const std::size_t old = first_[slot].key;
        const std::size_t run = take(bits + 1);
        std::copy_n(&more_[old], first_[slot].minimum, &more_[run]);
        release(old, bits);
        first_[slot].key = run;
        first_[slot].maximum = static_cast<int>(bits + 1);
        begin = &more_[run];
        end = begin + first_[slot].minimum;
        place = begin + offset;
    }
    std::copy_backward(place, end, end + 1);
    ++first_[slot].minimum;
    *place = nothing;
    place->key = key;
    return *place;
}

void TimingTable::mingle(Slot slot, unsigned long bits) {
    if (states_[slot] == One) {
        first_[slot].key |= bits;
        return;
    }
    if (states_[slot] != Many)
        return;
    ClassTiming* begin = &more_[first_[slot].key];
    ClassTiming* end = begin + first_[slot].minimum;
    if (std::all_of(begin, end, [bits](const ClassTiming& entry) { return (entry.key & bits) == bits; }))
        return;
    for (ClassTiming* entry = begin; entry != end; ++entry)
        entry->key |= bits;
    std::sort(begin, end, [](const ClassTiming& a, const ClassTiming& b) { return a.key < b.key; });
    ClassTiming* last = begin;
    for (ClassTiming* entry = begin + 1; entry != end; ++entry)
        if (entry->key == last->key)
            last->widen(entry->minimum, entry->maximum);
        else
            *++last = *entry;
    first_[slot].minimum = static_cast<int>(last - begin) + 1;
}

std::size_t TimingTable::take(unsigned capacityBits) {
    std::vector<std::size_t>& free = free_[capacityBits];
    if (free.empty()) {
        more_.resize(more_.size() + (std::size_t{1} << capacityBits));
        return more_.size() - (std::size_t{1} << capacityBits);
    }
    const std::size_t run = free.back();
    free.pop_back();
    return run;
}

void TimingTable::release(std::size_t run, unsigned capacityBits) { free_[capacityBits].push_back(run); }

void TimingTable::drop(Slot slot) {
    if (states_[slot] == Many)
        release(first_[slot].key, static_cast<unsigned>(first_[slot].maximum));
    states_[slot] = Absent;
}

} // namespace Vorlen::detail
