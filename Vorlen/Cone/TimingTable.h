// Timing maps by slot, for the walks of a sweep: what a map from poles to TimingMaps says, in a few bytes.
//
// A class of a pole's timing takes 16 bytes. The first class lies in a dense array by slot, so that the usual
// map, of one class, is found and folded without following a pointer; further ones lie side by side in runs
// of one pool, in ascending order of keys. Nothing is allocated an arc.
//
// Cost: 17 bytes a slot. Finding a map is O(1), a class in it a logarithm of the classes.
#pragma once

#include "Vorlen/TimingMap.h"
#include "Vorlen/detail/LargeVector.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace Vorlen::detail {

using Slot = std::uint32_t;
inline constexpr Slot noSlot = std::numeric_limits<Slot>::max();

// Delays by their raw values: the arithmetic is theirs.
inline int plus(int a, int b) { return int(Pelko::Delay(a) + Pelko::Delay(b)); }
inline int minus(int a, int b) { return int(Pelko::Delay(a) - Pelko::Delay(b)); }

// The timing of one class.
struct ClassTiming {
    unsigned long key;
    int minimum;
    int maximum;

    Timing getTiming() const { return {Pelko::Delay(minimum), Pelko::Delay(maximum)}; }

    // Timing::combine on raw values: undefined is the greatest as a minimum, and the least as a maximum.
    void widen(int otherMinimum, int otherMaximum) {
        minimum = rankOfMinimum(otherMinimum) < rankOfMinimum(minimum) ? otherMinimum : minimum;
        maximum = std::max(maximum, otherMaximum);
    }

private:
    static unsigned rankOfMinimum(int value) {
        return static_cast<unsigned>(value) - static_cast<unsigned>(Pelko::Delay::minimumValue);
    }
};

using ClassTimings = std::span<const ClassTiming>;

// Whether the map has just the class of no exception.
inline bool isPlain(const TimingMap& map) { return map.size() == 1 && map.begin()->first == 0; }

class TimingTable {
public:
    // Makes room for slots below the bound.
    void reach(std::size_t bound) {
        if (bound > states_.size()) {
            states_.resize(bound, Absent);
            first_.resize(bound);
        }
    }

    // Of a slot within reach, or of none.
    void prefetch(Slot slot) const {
        __builtin_prefetch(states_.data() + slot);
        __builtin_prefetch(first_.data() + slot);
    }

    // Every slot asked for lies within reach.
    bool contains(Slot slot) const { return slot < states_.size() && states_[slot] != Absent; }

    // Whether the map holds the one class of no exception.
    bool isPlain(Slot slot) const { return states_[slot] == One && first_[slot].key == 0; }

    // The classes of a slot in ascending order of keys; empty where there is no map.
    ClassTimings get(Slot slot) const {
        if (slot >= states_.size() || states_[slot] < One)
            return {};
        const ClassTiming& first = first_[slot];
        if (states_[slot] == One)
            return {&first, 1};
        return {&more_[first.key], static_cast<std::size_t>(first.minimum)};
    }

    // An empty map where there is none.
    void touch(Slot slot) {
        if (states_[slot] == Absent)
            states_[slot] = Empty;
    }

    // The timing of a class, undefined where it is new. The reference ends with the next change.
    ClassTiming& obtain(Slot slot, unsigned long key) {
        ClassTiming& first = first_[slot];
        if (states_[slot] < One) {
            states_[slot] = One;
            first = {key, Pelko::Delay::undefinedValue, Pelko::Delay::undefinedValue};
        }
        if (states_[slot] == One && first.key == key) [[likely]]
            return first;
        return obtainFurther(slot, key);
    }

    // Replaces the map | by one of the class of no exception.
    void assign(Slot slot, const Timing& timing) {
        drop(slot);
        ClassTiming& entry = obtain(slot, 0);
        entry.minimum = int(timing.getMinimumDelay());
        entry.maximum = int(timing.getMaximumDelay());
    }
    void assign(Slot slot, const TimingMap& map) {
        drop(slot);
        touch(slot);
        for (const auto& [key, timing] : map) {
            ClassTiming& entry = obtain(slot, key);
            entry.minimum = int(timing.getMinimumDelay());
            entry.maximum = int(timing.getMaximumDelay());
        }
    }

    void copyOut(Slot slot, TimingMap& out) const {
        out.clear();
        for (const ClassTiming& entry : get(slot))
            out.emplace_hint(out.end(), entry.key, entry.getTiming());
    }

    // Every key becomes key OR bits; classes that become equal are combined.
    void mingle(Slot slot, unsigned long bits);

    // Merges the map of a slot of `from`, shifted, into that of another slot here: without the classes that
    // share a bit with `cut`, under keys AND `keep`; then mingles the whole with `open`.
    template <class Shift>
    void fold(const TimingTable& from, Slot source, Slot target, unsigned long cut, unsigned long keep,
              unsigned long open, Shift shift) {
        touch(target);
        if (from.states_[source] == One) [[likely]] {
            foldClass(from.first_[source], target, cut, keep, shift);
        } else if (from.states_[source] == Many) {
            // The pool may move as classes are added to it.
            const ClassTimings classes = from.get(source);
            passing_.assign(classes.begin(), classes.end());
            for (const ClassTiming& entry : passing_)
                foldClass(entry, target, cut, keep, shift);
        }
        if (open != 0)
            mingle(target, open);
    }

    void clear() { *this = TimingTable(); }

private:
    enum State : std::uint8_t { Absent, Empty, One, Many };

    template <class Shift>
    void foldClass(const ClassTiming& entry, Slot target, unsigned long cut, unsigned long keep,
                   Shift shift) {
        if ((entry.key & cut) != 0)
            return;
        ClassTiming shifted = entry;
        shift(shifted);
        obtain(target, entry.key & keep).widen(shifted.minimum, shifted.maximum);
    }

    ClassTiming& obtainFurther(Slot slot, unsigned long key);
    std::size_t take(unsigned capacityBits);
    void release(std::size_t run, unsigned capacityBits);
    void drop(Slot slot);

    // Of a map of many classes, the first entry tells where they are: `key` their run, `minimum` their
    // number, `maximum` the binary logarithm of the run's capacity.
    LargeVector<ClassTiming> first_;
    LargeVector<State> states_;
    LargeVector<ClassTiming> more_;
    std::array<std::vector<std::size_t>, 32> free_; // runs, by the logarithm of their capacity
    std::vector<ClassTiming> passing_;
};

} // namespace Vorlen::detail
