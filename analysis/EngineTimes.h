// The engine's delays as times of one side. Data counts late for setup and early for hold; the capture clock
// counts early for setup and late for hold.
#pragma once

#include "base/Side.h"
#include "model/Clocks.h"

#include "Pelko/Edge.h"
#include "Pelko/IOConstraint.h"
#include "Pelko/Pole.h"
#include "Vorlen/Timing.h"

#include <optional>

namespace Analysis {

using Base::PerSide;
using Base::Side;
using Model::Time;

// A value of the engine that is a time; nothing for undefined, minimum and maximum.
inline std::optional<Time> ordinary(const Pelko::Delay& delay) {
    const Time value = int(delay);
    if (!delay.isDefined() || value == int(Pelko::Delay::getMinimum()) ||
        value == int(Pelko::Delay::getMaximum()))
        return std::nullopt;
    return value;
}

inline Pelko::Delay dataTime(const Vorlen::Timing& timing, Side side) {
    return side == Side::setup ? timing.getMaximumDelay() : timing.getMinimumDelay();
}
inline Pelko::Delay captureTime(const Vorlen::Timing& timing, Side side) {
    return side == Side::setup ? timing.getMinimumDelay() : timing.getMaximumDelay();
}

// The output delay of a port, less the latency of its clock.
inline Pelko::Delay boundOf(const Pelko::IOConstraint& constraint, Side side) {
    return side == Side::setup ? constraint.getMaximum() : constraint.getMinimum();
}

// What an arc adds to the arrival of data: its delay, or, into a check, the setup value or the negated hold
// value.
inline std::optional<Time> partOf(const Pelko::Edge& edge, Side side) {
    if (side == Side::setup)
        return ordinary(edge.getMaxDelay());
    const std::optional<Time> value = ordinary(edge.getMinDelay());
    return value && edge.getTarget()->isCheck() ? std::optional(-*value) : value;
}

// The latency of the clock that launches, and of the clock that captures.
inline Time launchSide(const Model::Latency& latency, Side side) {
    return side == Side::setup ? latency.late : latency.early;
}
inline Time captureSide(const Model::Latency& latency, Side side) {
    return side == Side::setup ? latency.early : latency.late;
}

} // namespace Analysis
