// Operations on timing maps. Those that change only values work in place; those that change keys build a new
// map. All are linear in the size of the map, which is mostly one entry.
#include "Vorlen/Sweep.h"

namespace Vorlen {

using Pelko::Delay;
using Pelko::PseudoMask;

void Sweep::filter(const PseudoMask& mask, TimingMap& map) {
    if (!mask.isEmpty())
        std::erase_if(map, [&mask](const auto& entry) { return (entry.first & mask.getBits()) != 0; });
}

// The bound of an overridden class becomes a special that no later comparison selects. The other bound stays.
void Sweep::filter(const PseudoMask& maxMask, const PseudoMask& minMask, TimingMap& map) {
    if (maxMask == minMask)
        return filter(maxMask, map);
    for (auto& [key, timing] : map) {
        if ((key & maxMask.getBits()) != 0)
            timing.setMaximumDelay(Delay::getMinimum());
        if ((key & minMask.getBits()) != 0)
            timing.setMinimumDelay(Delay::getMaximum());
    }
}

namespace {

// If no key changes, the map is left as it is.
template <class NewKey>
void rekey(TimingMap& map, NewKey newKey) {
    bool changes = false;
    for (const auto& entry : map)
        changes = changes || newKey(entry.first) != entry.first;
    if (!changes)
        return;
    TimingMap result;
    for (const auto& [key, timing] : map)
        result[newKey(key)].combine(timing);
    map.swap(result);
}

template <class Shift>
void shift(TimingMap& map, Shift bounds) {
    for (auto& entry : map)
        bounds(entry.second);
}

} // namespace

void Sweep::sensibilize(const PseudoMask& mask, TimingMap& map) {
    rekey(map, [bits = mask.getBits()](unsigned long key) { return key & bits; });
}

void Sweep::mingle(const PseudoMask& mask, TimingMap& map) {
    rekey(map, [bits = mask.getBits()](unsigned long key) { return key | bits; });
}

void Sweep::combine(const TimingMap& from, TimingMap& into) {
    for (const auto& [key, timing] : from)
        into[key].combine(timing);
}

void Sweep::addDelay(const Delay& delay, TimingMap& map) { addDelay(delay, delay, map); }

void Sweep::addDelay(const Delay& minimum, const Delay& maximum, TimingMap& map) {
    shift(map, [interval = Timing(minimum, maximum)](Timing& timing) { timing += interval; });
}

void Sweep::minusDelay(const Delay& delay, TimingMap& map) { minusDelay(delay, delay, map); }

void Sweep::minusDelay(const Delay& minimum, const Delay& maximum, TimingMap& map) {
    shift(map, [crossed = Timing(maximum, minimum)](Timing& timing) { timing -= crossed; });
}

void Sweep::addLatchTiming(const Timing& timing, TimingMap& map) {
    addDelay(timing.getMinimumDelay(), timing.getMaximumDelay(), map);
}

void Sweep::minusLatchTiming(const Timing& timing, TimingMap& map) {
    minusDelay(timing.getMinimumDelay(), timing.getMaximumDelay(), map);
}

void Sweep::takeSetupHold(const Delay& setup, const Delay& hold, TimingMap& map) {
    shift(map, [&](Timing& timing) {
        timing.setMinimumDelay(timing.getMinimumDelay() - setup);
        timing.setMaximumDelay(timing.getMaximumDelay() + hold);
    });
}

void Sweep::freeSetupHold(const Delay& setup, const Delay& hold, TimingMap& map) {
    takeSetupHold(hold, setup, map);
}

} // namespace Vorlen
