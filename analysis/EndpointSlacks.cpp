// The worst of each end point.
#include "analysis/EndpointSlacks.h"

#include <algorithm>

namespace Analysis {

using Base::none;

void EndpointSlacks::add(const ClockEdges& edges, const Arrival& arrival) {
    noteGoverning(arrival);
    if (arrival.isFalse)
        return;
    std::optional<Worst>& worst = results_.worst[arrival.end->pin][arrival.side];
    if (!worst || arrival.slack <= worst->slack) {
        const Standing standing = standingOf(edges, arrival);
        if (!worst || arrival.slack < worst->slack || order_.isBefore(standing, *worst))
            worst = Worst{standing, arrival.slack};
    }
    if (arrival.side == Side::setup)
        achieve(edges, arrival);
}

// A path group governs no path that is false.
void EndpointSlacks::noteGoverning(const Arrival& arrival) {
    const auto note = [&](Design::ExceptionId exception) {
        if (exception != none)
            governed_[arrival.side].emplace(exception, arrival.end->pin);
    };
    note(arrival.requirement->exception[arrival.side]);
    if (!arrival.isFalse)
        note(arrival.requirement->group);
}

// A relation between edges of one clock is a fixed part of the clock's period, so it grows with the period.
void EndpointSlacks::achieve(const ClockEdges& edges, const Arrival& arrival) {
    const Time relation = arrival.terms.relation;
    if (edges.launch != edges.capture || edges.launch == none || arrival.requirement->delay[Side::setup] ||
        relation <= 0)
        return;
    const Time used = relation - arrival.slack;
    const Time needed = Model::ceilingOf(clocks_[edges.launch].period * used, relation);
    const auto [place, isNew] = results_.achievedPeriods.try_emplace(edges.launch, needed);
    if (!isNew)
        place->second = std::max(place->second, needed);
}

EndpointResults EndpointSlacks::take() {
    for (const Side side : Base::bothSides) {
        auto& counts = results_.governed[side];
        counts.assign(constraints_.exceptions.size(), 0);
        for (const auto& [exception, pin] : governed_[side])
            ++counts[exception];
    }
    return std::move(results_);
}

} // namespace Analysis
