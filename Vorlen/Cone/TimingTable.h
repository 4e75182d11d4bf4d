// Timing maps by slot, for the walks of a sweep: a compact map from poles to TimingMaps.
//
// One class of a pole's timing takes 16 bytes. The first class lies in a dense array by slot, so that the
// usual map, which has one class, is found and folded without following a pointer. Further classes lie side
// by side in runs of one pool, in ascending order of keys. Folding an arc allocates nothing.
//
// Cost: 17 bytes for each slot. Finding a map is O(1), a class in it logarithmic in the number of classes.
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

// The sum and the difference of two delays, as raw values.
inline int plus(int a, int b) { return int(Pelko::Delay(a) + Pelko::Delay(b)); }
inline int minus(int a, int b) { return int(Pelko::Delay(a) - Pelko::Delay(b)); }

// The timing of one class.
struct ClassTiming {
    unsigned long key;
    int minimum;
    int maximum;

    Timing getTiming() const { return {Pelko::Delay(minimum), Pelko::Delay(maximum)}; }

    // Timing::combine on raw values: undefined counts as the largest minimum and as the smallest maximum.
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

// Whether the map has only the key 0.
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

    // Prefetches what is read of a slot. The slot may be out of reach.
    void prefetch(Slot slot) const {
        __builtin_prefetch(states_.data() + slot);
        __builtin_prefetch(first_.data() + slot);
    }

    // Whether the slot has a map, which may be empty. False for a slot out of reach.
    bool contains(Slot slot) const { return slot < states_.size() && states_[slot] != Absent; }

    // Whether the slot has a map with only the key 0. The slot must be within reach.
    bool isPlain(Slot slot) const { return states_[slot] == One && first_[slot].key == 0; }

    // The classes of a slot in ascending order of keys; empty if there is no map. The next change invalidates
    // it.
    ClassTimings get(Slot slot) const {
        if (slot >= states_.size() || states_[slot] < One)
            return {};
        const ClassTiming& first = first_[slot];
        if (states_[slot] == One)
            return {&first, 1};
        return {&more_[first.key], static_cast<std::size_t>(first.minimum)};
    }

    // Gives the slot an empty map if it has none.
    void touch(Slot slot) {
        if (states_[slot] == Absent)
            states_[slot] = Empty;
    }

    // The timing of a class; an undefined one is inserted if there is none. The next change invalidates the
    // reference.
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

    // Replaces the map by one with this timing under the key 0.
    void assign(Slot slot, const Timing& timing) {
        drop(slot);
        ClassTiming& entry = obtain(slot, 0);
        entry.minimum = int(timing.getMinimumDelay());
        entry.maximum = int(timing.getMaximumDelay());
    }
    // Replaces the map by a copy of this one.
    void assign(Slot slot, const TimingMap& map) {
        drop(slot);
        touch(slot);
        for (const auto& [key, timing] : map) {
            ClassTiming& entry = obtain(slot, key);
            entry.minimum = int(timing.getMinimumDelay());
            entry.maximum = int(timing.getMaximumDelay());
        }
    }

    // Copies the map to `out`, which becomes empty if there is none.
    void copyOut(Slot slot, TimingMap& out) const {
        out.clear();
        for (const ClassTiming& entry : get(slot))
            out.emplace_hint(out.end(), entry.key, entry.getTiming());
    }

    // Every key becomes key OR bits. Classes whose keys become equal are combined.
    void mingle(Slot slot, unsigned long bits);

    // Merges the map of `source` in `from` into that of `target` here. Classes that share a bit with `cut`
    // are left out; the others are shifted by `shift` and get the key AND `keep`. Then the whole map is
    // mingled with `open`.
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

    // If a map has more than one class, its entry here describes their run: `key` is its place in `more_`,
    // `minimum` the number of classes, `maximum` the binary logarithm of its capacity.
    LargeVector<ClassTiming> first_;
    LargeVector<State> states_;
    LargeVector<ClassTiming> more_;
    std::array<std::vector<std::size_t>, 32> free_; // runs, by the logarithm of their capacity
    std::vector<ClassTiming> passing_;
};

} // namespace Vorlen::detail
