#include "Vorlen/Tool/Pairing.h"

#include "Pelko/Analyzer.h"
#include "Pelko/Subdomain.h"
#include "Vorlen/detail/EventPump.h"
#include "Vorlen/detail/Work.h"

#include <algorithm>
#include <limits>

namespace Vorlen {

using Pelko::ClockMode;
using Pelko::Pole;

namespace {

// With more classes or pairs than these, walking the pairs is cheaper.
constexpr std::size_t mostClasses = 1024;
constexpr std::size_t mostPairs = 65536;

constexpr unsigned noClass = std::numeric_limits<unsigned>::max();

// Whether domain creation refuses the pole.
bool lacksMode(const Pole* pole) {
    return pole->isClock() && pole->getClockMode().getCode() == ClockMode::None;
}

} // namespace

namespace {

// Whether both sides have one root, the same one, and the same edge. A quick test for the usual case.
bool areAlike(const ClockSide& a, const ClockSide& b) {
    return a.mode == b.mode && a.stem && b.stem && a.stem->size() == 1 && b.stem->size() == 1 &&
           *a.stem->begin() == *b.stem->begin();
}

} // namespace

unsigned Pairing::Classes::getNumber(const ClockSide& side) {
    if (last < sides.size() && areAlike(sides[last], side))
        return last;
    return last = lookUp(side);
}

unsigned Pairing::Classes::lookUp(const ClockSide& side) {
    Key key{side.mode.getCode(), {}};
    side.forEachRoot([&key](Pole* root) { key.second.push_back(root); });
    const auto [place, isNew] = numbers.emplace(std::move(key), static_cast<unsigned>(sides.size()));
    if (isNew)
        sides.push_back(side);
    return place->second;
}

bool Pairing::read(const std::vector<Pole*>& ends, detail::Cone::IsStart isLaunch) {
    endCount_ = ends.size();
    if (!cone_.read(ends, isLaunch) || goesOnFromEnds() || !classify())
        return false;
    launches_.place(cone_.getSlotCount());
    latches_.place(cone_.getSlotCount());
    pairs_.resize(launches_.sides.size() * latches_.sides.size());
    propagateLaunches();
    return true;
}

// End points have the first slots.
bool Pairing::goesOnFromEnds() const {
    detail::visitArcs(cone_.getArcCount());
    for (std::uint32_t arc = 0; arc < cone_.getArcCount(); ++arc)
        if (cone_.getSource(arc) < endCount_)
            return true;
    return false;
}

bool Pairing::classify() {
    PoleMap<const PoleSet*> stems; // a copy with O(1) look-up
    for (const auto& [pole, stem] : clockStems_)
        stems[pole] = &stem;
    const auto stemOf = [&stems](const Pole* pole) {
        const auto stem = stems.find(pole);
        return stem == stems.end() ? nullptr : stem->second;
    };
    for (Slot slot = 0; slot < cone_.getSlotCount(); ++slot) {
        if ((cone_.getFlags(slot) & (detail::Cone::Start | detail::Cone::Closed)) != detail::Cone::Start)
            continue;
        Pole* pole = cone_.getPoles()[slot];
        if (lacksMode(pole))
            return false;
        launchSlots_.push_back(slot);
        launchClasses_.push_back(launches_.getNumber(launchSideOf(stemOf(pole), pole)));
        if (launches_.sides.size() > mostClasses)
            return false;
    }
    for (Slot end = 0; end < endCount_; ++end) {
        latchPoles_.push_back(cone_.getPoles()[end]->getMainPole());
        if (lacksMode(latchPoles_.back()))
            return false;
        latchClasses_.push_back(
            latches_.getNumber(latchSideOf(stemOf(latchPoles_.back()), latchPoles_.back())));
        if (latches_.sides.size() > mostClasses)
            return false;
    }
    return launches_.sides.size() * latches_.sides.size() <= mostPairs;
}

void Pairing::propagateLaunches() {
    classOfSlot_.assign(cone_.getSlotCount(), noClass);
    for (std::size_t i = 0; i < launchSlots_.size(); ++i) {
        classOfSlot_[launchSlots_[i]] = launchClasses_[i];
        launches_.add(launchSlots_[i], launchClasses_[i]);
    }
    const detail::LargeVector<Slot>& order = cone_.getOrder();
    for (std::size_t place = order.size(); place-- > 0;) {
        const detail::Cone::Arcs arcs = cone_.getArcs(order[place]);
        for (std::uint32_t arc = arcs.begin; arc != arcs.end; ++arc)
            if (const Slot source = cone_.getSource(arc); source != detail::noSlot)
                launches_.merge(source, order[place]);
    }
}

// Propagates the classes of only the first end points.
void Pairing::propagateLatches(std::size_t ends) {
    latches_.place(cone_.getSlotCount());
    for (Slot end = 0; end < ends; ++end)
        latches_.add(end, latchClasses_[end]);
    for (const Slot slot : cone_.getOrder()) {
        const detail::Cone::Arcs arcs = cone_.getArcs(slot);
        for (std::uint32_t arc = arcs.begin; arc != arcs.end; ++arc)
            if (const Slot source = cone_.getSource(arc); source != detail::noSlot)
                latches_.merge(slot, source);
    }
}

bool Pairing::run() {
    // Host events are processed as often as in a walk of the same poles.
    detail::WalkPump pump;
    const auto polesOfEnd = static_cast<unsigned>(cone_.getSlotCount() / std::max<std::size_t>(endCount_, 1));
    Slot end = 0;
    try {
        for (; end < endCount_; ++end) {
            if (end != 0 && pump.pass(polesOfEnd) && !cone_.isCurrent())
                return false;
            pairEnd(end);
        }
    } catch (...) {
        if (cone_.isCurrent())
            captureLaunches(end);
        throw;
    }
    captureLaunches(endCount_);
    return true;
}

void Pairing::pairEnd(Slot end) {
    const unsigned latch = latchClasses_[end];
    std::vector<unsigned> fresh;
    for (std::size_t word = 0; word < launches_.words; ++word)
        for (Word left = launches_.at(end)[word]; left != 0; left &= left - 1) {
            const auto launch =
                static_cast<unsigned>(word * 64) + static_cast<unsigned>(std::countr_zero(left));
            if (!pairOf(launch, latch).isSeen)
                fresh.push_back(launch);
        }
    if (!fresh.empty())
        createPairs(end, fresh);
    captureLatch(end);
}

// If a creation throws, the pairs before it are captured, as if they had been created one after another.
void Pairing::createPairs(Slot end, const std::vector<unsigned>& fresh) {
    markBehind(end);
    Pole* latchPole = latchPoles_[end];
    for (const Slot first : findFirst(end, fresh)) {
        try {
            tool_.createDomains(clockStems_, cone_.getPoles()[first], latchPole);
        } catch (...) {
            for (const Slot launch : findLaunches(end)) {
                if (launch == first)
                    break;
                tool_.createDomains(clockStems_, cone_.getPoles()[launch], latchPole);
            }
            throw;
        }
        PairOfClasses& pair = pairOf(classOfSlot_[first], latchClasses_[end]);
        pair.isSeen = true;
        forEachSubdomain(
            launches_.sides[classOfSlot_[first]], latches_.sides[latchClasses_[end]],
            [&pair](Pole* launchRoot, Pole* latchRoot, const ClockMode& launchMode,
                    const ClockMode& latchMode) {
                pair.subdomains.push_back(
                    Pelko::analyzer->getDomain(launchRoot, latchRoot)->getSubdomain(launchMode, latchMode));
            });
    }
}

// Calls `enter(slot)` once for each slot behind an end point. If it returns false, the walk does not go on
// from there.
template <class Enter>
void Pairing::walk(Slot end, Enter enter) {
    visits_.resize(cone_.getSlotCount(), 0);
    ++visit_;
    stack_.assign(1, end);
    visits_[end] = visit_;
    while (!stack_.empty()) {
        const Slot slot = stack_.back();
        stack_.pop_back();
        if (!enter(slot))
            continue;
        const detail::Cone::Arcs arcs = cone_.getArcs(slot);
        for (std::uint32_t arc = arcs.begin; arc != arcs.end; ++arc)
            if (const Slot source = cone_.getSource(arc);
                source != detail::noSlot && visits_[source] != visit_) {
                visits_[source] = visit_;
                stack_.push_back(source);
            }
    }
}

// For each of the launch classes, the first launch pole behind the end point. The result is in stamp order.
std::vector<Pairing::Slot> Pairing::findFirst(Slot end, const std::vector<unsigned>& fresh) {
    const auto isBefore = [this](Slot a, Slot b) {
        return Pelko::Object::StampLess()(cone_.getPoles()[a], cone_.getPoles()[b]);
    };
    std::vector<Slot> firsts(launches_.sides.size(), detail::noSlot);
    walk(end, [&](Slot slot) {
        if (const unsigned number = classOfSlot_[slot]; number != noClass)
            if (Slot& first = firsts[number]; first == detail::noSlot || isBefore(slot, first))
                first = slot;
        return std::any_of(fresh.begin(), fresh.end(),
                           [&](unsigned number) { return launches_.contains(slot, number); });
    });
    std::vector<Slot> found;
    for (const unsigned number : fresh)
        found.push_back(firsts[number]);
    std::sort(found.begin(), found.end(), isBefore);
    return found;
}

std::vector<Pairing::Slot> Pairing::findLaunches(Slot end) {
    std::vector<Slot> found;
    walk(end, [&](Slot slot) {
        if (classOfSlot_[slot] != noClass)
            found.push_back(slot);
        return true;
    });
    std::sort(found.begin(), found.end(), [this](Slot a, Slot b) {
        return Pelko::Object::StampLess()(cone_.getPoles()[a], cone_.getPoles()[b]);
    });
    return found;
}

// Marks poles as the walks up to this end point would, for listeners that are notified of a new domain.
void Pairing::markBehind(Slot end) {
    for (; markedEnds_ <= end; ++markedEnds_)
        if (!cone_.getPoles()[markedEnds_]->isMarked())
            walk(markedEnds_, [this](Slot slot) {
                Pole* pole = cone_.getPoles()[slot];
                if (pole->isMarked())
                    return false;
                pole->mark();
                return true;
            });
}

void Pairing::captureLatch(Slot end) {
    for (std::size_t word = 0; word < launches_.words; ++word)
        for (Word left = launches_.at(end)[word]; left != 0; left &= left - 1) {
            const auto launch =
                static_cast<unsigned>(word * 64) + static_cast<unsigned>(std::countr_zero(left));
            for (Pelko::Subdomain* subdomain : pairOf(launch, latchClasses_[end]).subdomains)
                subdomain->captureLatch(latchPoles_[end]);
        }
}

// Captures the launch poles of the first end points.
void Pairing::captureLaunches(std::size_t ends) {
    propagateLatches(ends);
    for (std::size_t i = 0; i < launchSlots_.size(); ++i)
        for (std::size_t word = 0; word < latches_.words; ++word)
            for (Word left = latches_.at(launchSlots_[i])[word]; left != 0; left &= left - 1) {
                const auto latch =
                    static_cast<unsigned>(word * 64) + static_cast<unsigned>(std::countr_zero(left));
                for (Pelko::Subdomain* subdomain : pairOf(launchClasses_[i], latch).subdomains)
                    subdomain->captureLaunch(cone_.getPoles()[launchSlots_[i]]);
            }
}

} // namespace Vorlen
