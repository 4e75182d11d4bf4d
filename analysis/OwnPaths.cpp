// Rows of bits that are spread forwards, and cut back to what leads to a check.
#include "analysis/OwnPaths.h"

#include <algorithm>

namespace Analysis {

OwnPaths::OwnPaths(const PoleFlow& flow, std::size_t clocks)
    : flow_(flow), words_((std::min(clocks, most) + 63) / 64), rows_(flow.size() * words_),
      reached_((flow.size() + 63) / 64), isUseful_(flow.size()) {}

void OwnPaths::find(std::span<const Place> roots) {
    clear();
    for (std::size_t clock = 0; clock < roots.size(); ++clock) {
        row(roots[clock])[clock / 64] |= std::uint64_t{1} << (clock % 64);
        reach(roots[clock]);
    }
    flood([this](Place place) { return flow_.isClockSide(place); });
    findUseful();
    for (const Place place : touched_)
        reach(place);
    touched_.clear();
    flood([this](Place place) {
        return !flow_.isClockSide(place) && (place <= flow_.middle() || isUseful_[place]);
    });
    for (std::size_t i = touched_.size(); i-- > 0;)
        prune(touched_[i]);
}

void OwnPaths::clear() {
    for (const Place place : touched_)
        std::fill_n(row(place), words_, 0);
    touched_.clear();
    for (const Place place : useful_)
        isUseful_[place] = false;
    useful_.clear();
}

// Backwards from the checks of the clock poles that are reached, down to the middle.
void OwnPaths::findUseful() {
    const auto reachBack = [this](Place place) {
        if (flow_.isClockSide(place) || place <= flow_.middle() || isUseful_[place])
            return;
        isUseful_[place] = true;
        useful_.push_back(place);
    };
    for (const Place place : touched_)
        for (const PoleFlow::Arc& arc : flow_.outOf(place))
            if (!arc.edge)
                reachBack(arc.target);
    for (std::size_t next = 0; next < useful_.size(); ++next)
        for (const Place source : flow_.into(useful_[next]))
            reachBack(source);
}

// From the places that are reached, on to those for which `passes` holds. A place comes after those that
// reach it, so one pass over the places meets all of them in order.
template <class Passes>
void OwnPaths::flood(Passes passes) {
    for (std::size_t word = 0; word < reached_.size(); ++word)
        for (; reached_[word] != 0; reached_[word] &= reached_[word] - 1) {
            const auto bit = static_cast<unsigned>(std::countr_zero(reached_[word]));
            const Place place(static_cast<std::uint32_t>(word * 64 + bit));
            touched_.push_back(place);
            for (const PoleFlow::Arc& arc : flow_.outOf(place)) {
                if (!arc.edge || !passes(arc.target))
                    continue;
                for (std::size_t i = 0; i < words_; ++i)
                    row(arc.target)[i] |= row(place)[i];
                reach(arc.target);
            }
        }
}

// A check keeps the clocks that its clock pole has. Any other pole keeps those that the poles behind it have
// kept.
void OwnPaths::prune(Place place) {
    kept_.assign(words_, 0);
    const auto keep = [&](Place other) {
        for (std::size_t i = 0; i < words_; ++i)
            kept_[i] |= row(other)[i];
    };
    if (const Pelko::Pole* clockPole = clockPoleOf(flow_.pole(place)))
        keep(flow_.placeOf(clockPole));
    for (const PoleFlow::Arc& arc : flow_.outOf(place))
        keep(arc.target);
    for (std::size_t i = 0; i < words_; ++i)
        row(place)[i] &= kept_[i];
}

} // namespace Analysis
