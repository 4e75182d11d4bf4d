#include "exceptions/Variant.h"

#include <utility>

namespace Exceptions {

std::vector<BySet> BySet::singles() const {
    std::vector<BySet> each;
    for (unsigned rest = bits_; rest != 0; rest &= rest - 1)
        each.push_back(ofBits(rest & (~rest + 1)));
    if (each.empty())
        each.emplace_back();
    return each;
}

void NamedPins::add(Design::PinId pin, By object) {
    pins.push_back(pin);
    by.push_back(object);
}

void NamedPins::sort() {
    std::vector<std::pair<Design::PinId, BySet>> all;
    for (std::size_t i = 0; i < pins.size(); ++i)
        all.emplace_back(pins[i], by[i]);
    std::ranges::sort(all);
    pins.clear();
    by.clear();
    for (const auto& [pin, object] : all)
        if (!pins.empty() && pins.back() == pin) {
            by.back() = by.back() | object;
        } else {
            pins.push_back(pin);
            by.push_back(object);
        }
}

bool Variant::End::covers(BySet namedBy, Design::ClockId clock, bool rise) const {
    if (namedBy.isEmpty() && !admits(clock))
        return false;
    return edge == Design::Transition::any || (edge == Design::Transition::rise) == rise;
}

unsigned Variant::rank() const {
    return (from.points.empty() ? 0U : 16U) + (to.points.empty() ? 0U : 8U) + (throughs.empty() ? 0U : 4U) +
           (from.clocks.empty() ? 0U : 2U) + (to.clocks.empty() ? 0U : 1U);
}

} // namespace Exceptions
