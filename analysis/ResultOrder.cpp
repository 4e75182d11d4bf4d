// Comparisons of results.
#include "analysis/ResultOrder.h"

#include "analysis/PinOrder.h"

#include <functional>
#include <string_view>
#include <tuple>

namespace Analysis {

using Base::none;

bool ResultOrder::isBefore(Design::PinId a, Design::PinId b) const {
    return a != b && isNamedBefore(design_, a, b);
}

// Rising edges come first. The delays of a port are in the order of their commands.
bool ResultOrder::isBefore(const Standing& a, const Standing& b) const {
    const auto nameOf = [this](Design::ClockId clock) {
        return clock == none ? std::string_view() : std::string_view(clocks_[clock].name);
    };
    const auto key = [&](const Standing& of) {
        return std::tuple(nameOf(of.edges.launch), !of.edges.launchRise, nameOf(of.edges.capture),
                          !of.edges.captureRise, of.exception);
    };
    if (a.end == b.end || key(a) != key(b))
        return key(a) < key(b);
    if (a.end->clockPin != b.end->clockPin && a.end->clockPin != none && b.end->clockPin != none)
        return isNamedBefore(design_, a.end->clockPin, b.end->clockPin);
    return a.end->rise != b.end->rise ? a.end->rise : std::less()(a.end->delay, b.end->delay);
}

bool ResultOrder::isBefore(const Arrival& a, const Arrival& b) const {
    return a.slack != b.slack ? a.slack < b.slack : isBefore(a.end->pin, b.end->pin);
}

} // namespace Analysis
