// The clocks of an analyzer, by root: their periods, shifts and widths, PLL feedback and source latencies.
#include "Pelko/Analyzer.h"
#include "Ruvex/Refusal.h"

#include <algorithm>

namespace Pelko {

namespace {

void require(bool condition, const char* function, unsigned line, const char* message) {
    Ruvex::require<Ruvex::InvalidRequest>(condition, "Analyzer", function, line, message);
}

} // namespace

const Analyzer::Clock* Analyzer::findClock(const Pole* root) const {
    const auto found = clocks_.find(const_cast<Pole*>(root));
    return root && found != clocks_.end() ? &found->second : nullptr;
}

Analyzer::Clock& Analyzer::getClock(Pole* root, const char* function) {
    require(root, function, 7, "Null clock root");
    const auto [place, isNew] = clocks_.try_emplace(root);
    if (isNew)
        Reference::add(root);
    return place->second;
}

void Analyzer::dropEmptyClocks() {
    std::erase_if(clocks_, [](const auto& entry) {
        if (entry.second.isEmpty())
            Reference::remove(entry.first);
        return entry.second.isEmpty();
    });
}

void Analyzer::setClock(Pole* root, const Delay& period, const Delay& shift, const Delay& highWidth,
                        const Delay& lowWidth) {
    require(root, "setClock", 7, "Null clock root");
    require(period.isOrdinary() && int(period) > 0, "setClock", 8, "Period not positive");
    require(shift.isOrdinary(), "setClock", 9, "Special shift");
    require(highWidth.isOrdinary() && lowWidth.isOrdinary() && int(highWidth) > 0 && int(lowWidth) > 0,
            "setClock", 10, "Width not positive");
    require(highWidth + lowWidth == period, "setClock", 11, "Widths that do not add up to the period");
    Clock& clock = getClock(root, "setClock");
    clock.period = period;
    clock.shift = shift;
    clock.highWidth = highWidth;
    clock.lowWidth = lowWidth;
    const std::int64_t rounded =
        (std::int64_t{int(highWidth)} * 200 + int(period)) / (2 * std::int64_t{int(period)});
    clock.dutyRatio = static_cast<unsigned long>(std::clamp<std::int64_t>(rounded, 1, 99));
}

void Analyzer::removeClock(Pole* root) {
    Clock& clock = getClock(root, "removeClock");
    clock.period = clock.shift = clock.highWidth = clock.lowWidth = Delay::getUndefined();
    clock.dutyRatio = 50;
    dropEmptyClocks();
}

Delay Analyzer::getRequiredPeriod(const Pole* root) const {
    const Clock* clock = findClock(root);
    return clock ? clock->period : Delay::getUndefined();
}

Delay Analyzer::getShift(const Pole* root) const {
    const Clock* clock = findClock(root);
    return clock ? clock->shift : Delay::getUndefined();
}

Delay Analyzer::getHighWidth(const Pole* root) const {
    const Clock* clock = findClock(root);
    return clock ? clock->highWidth : Delay::getUndefined();
}

Delay Analyzer::getLowWidth(const Pole* root) const {
    const Clock* clock = findClock(root);
    return clock ? clock->lowWidth : Delay::getUndefined();
}

unsigned long Analyzer::getDutyRatio(const Pole* root) const {
    const Clock* clock = findClock(root);
    return clock ? clock->dutyRatio : 50;
}

void Analyzer::setDutyRatio(Pole* root, unsigned long percentage) {
    require(percentage >= 1 && percentage <= 99, "setDutyRatio", 12, "Duty ratio outside 1 to 99");
    getClock(root, "setDutyRatio").dutyRatio = percentage;
}

Delay Analyzer::getPeriod(const Pole* root) const {
    const Clock* clock = findClock(root);
    return clock ? clock->achievedPeriod : Delay::getUndefined();
}

void Analyzer::setPeriod(Pole* root, const Delay& period) {
    getClock(root, "setPeriod").achievedPeriod = period;
}

bool Analyzer::hasPLLFeedbackDelay(const Pole* root) const {
    const Clock* clock = findClock(root);
    return clock && (clock->hasFeedback || clock->hasLatency);
}

Delay Analyzer::getMinPLLFeedbackDelay(const Pole* root) const {
    if (!hasPLLFeedbackDelay(root))
        return Delay::getUndefined();
    const Clock* clock = findClock(root);
    return clock->minimumFeedback - clock->earlyLatency;
}

Delay Analyzer::getMaxPLLFeedbackDelay(const Pole* root) const {
    if (!hasPLLFeedbackDelay(root))
        return Delay::getUndefined();
    const Clock* clock = findClock(root);
    return clock->maximumFeedback - clock->lateLatency;
}

void Analyzer::setPLLFeedbackDelay(Pole* root, const Delay& minimum, const Delay& maximum) {
    Clock& clock = getClock(root, "setPLLFeedbackDelay");
    clock.hasFeedback = true;
    clock.minimumFeedback = minimum;
    clock.maximumFeedback = maximum;
}

void Analyzer::setSourceLatency(Pole* root, const Delay& early, const Delay& late) {
    Clock& clock = getClock(root, "setSourceLatency");
    clock.hasLatency = true;
    clock.earlyLatency = early;
    clock.lateLatency = late;
}

} // namespace Pelko
