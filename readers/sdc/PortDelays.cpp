// Which entry of a port a command replaces, joins or adds.
#include "readers/sdc/PortDelays.h"

#include <algorithm>

namespace Readers::Sdc {

namespace {

bool sameEdge(const Design::PortDelay& a, const Design::PortDelay& b) {
    return a.clock == b.clock && a.clockFall == b.clockFall;
}

void put(std::optional<Base::Decimal>& place, const Base::Decimal& value, bool worst, bool largest) {
    if (worst && place && isLess(*place, value) != largest)
        return;
    place = value;
}

std::optional<Base::Decimal> worse(const std::array<std::optional<Base::Decimal>, 2>& edges, bool largest) {
    if (!edges[0] || !edges[1])
        return edges[0] ? edges[0] : edges[1];
    return isLess(*edges[0], *edges[1]) == largest ? edges[1] : edges[0];
}

} // namespace

bool isLess(const Base::Decimal& a, const Base::Decimal& b) {
    return !(a == b) && a.toDouble() < b.toDouble();
}

// Without -add_delay the entries of other clock edges go.
PortDelays::Entry& PortDelays::entryFor(const Setting& setting, std::vector<std::size_t>& ofPort) {
    if (!setting.add)
        std::erase_if(ofPort, [&](std::size_t index) {
            const bool other = !sameEdge(entries_[index].delay, setting.entry);
            entries_[index].live = !other;
            return other;
        });
    for (const std::size_t index : ofPort)
        if (sameEdge(entries_[index].delay, setting.entry))
            return entries_[index];
    ofPort.push_back(entries_.size());
    return entries_.emplace_back(Entry{setting.entry, {}, {}, true});
}

void PortDelays::set(const Setting& setting) {
    std::vector<std::size_t>& ofPort =
        byPort_[std::uint64_t{setting.entry.pin.number()} * 2 + setting.entry.input];
    Entry& entry = entryFor(setting, ofPort);
    entry.delay = setting.entry;
    for (std::size_t edge = 0; edge < 2; ++edge) {
        if (!(edge == 0 ? setting.rise : setting.fall))
            continue;
        if (setting.max)
            put(entry.max[edge], setting.value, setting.add, true);
        if (setting.min)
            put(entry.min[edge], setting.value, setting.add, false);
    }
}

std::size_t PortDelays::forgetClock(Design::ClockId clock) {
    std::size_t count = 0;
    for (auto& [port, ofPort] : byPort_)
        count += std::erase_if(ofPort, [&](std::size_t index) {
            const bool gone = entries_[index].delay.clock == clock;
            entries_[index].live = !gone;
            return gone;
        });
    return count;
}

std::vector<Design::PortDelay> PortDelays::take() const {
    std::vector<Design::PortDelay> delays;
    for (const Entry& entry : entries_) {
        if (!entry.live)
            continue;
        delays.push_back(entry.delay);
        delays.back().min = worse(entry.min, false);
        delays.back().max = worse(entry.max, true);
    }
    return delays;
}

} // namespace Readers::Sdc
