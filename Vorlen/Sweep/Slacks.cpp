// Slacks of arcs: for one class of exceptions, how much later (setup) or earlier (hold) data could pass an
// arc.
//
// The required map of the arc's target is read in place: which of its entries count follows from their keys,
// and filtering and re-keying a copy of it would give the same.
#include "Vorlen/Sweep/Sides.h"

namespace Vorlen {

using Pelko::analyzer;
using Pelko::ClockMode;
using Pelko::CPath;
using Pelko::Delay;
using Pelko::Edge;
using Pelko::PseudoMask;

namespace {

// What the entries that count ask for together. `falseBits`: classes cut by a false path. Kept as keys are
// re-keyed to key AND `classBits`: those that become `wanted`.
Timing combineRequired(const TimingMap& required, unsigned long falseBits, unsigned long classBits,
                       unsigned long wanted) {
    Timing result;
    for (const auto& [key, timing] : required)
        if ((key & falseBits) == 0 && (key & classBits) == wanted)
            result.combine(timing);
    return result;
}

// The least key under the exception: the first entry, in key order, that shares a class with it. 0 for none.
unsigned long firstKeyUnder(const TimingMap& required, unsigned long falseBits, unsigned long classBits) {
    unsigned long first = 0;
    for (const auto& entry : required) {
        const unsigned long key = entry.first & classBits;
        if ((entry.first & falseBits) == 0 && key != 0 && (first == 0 || key < first))
            first = key;
    }
    return first;
}

template <class Side>
Delay calculateSlack(const TimingMap& required, const Pelko::Subdomain* subdomain, const Edge* edge,
                     const PseudoMask& mask, const Delay& arrival, const CPath* cpath) {
    PseudoMask classes = mask;
    classes |= edge->getSource()->getOpeningPseudoMask();
    classes &= edge->getPseudoMask();
    classes |= edge->getTarget()->getOpeningPseudoMask();
    const unsigned long falseBits = (classes & analyzer->getFalsePathMask()).getBits();
    if (!cpath) {
        const Timing plain = combineRequired(required, falseBits, classes.getBits(), 0);
        return Side::slack(Side::requiredOf(plain), Side::dataTime(arrival, edge));
    }
    const unsigned long classBits = cpath->getPseudoMask().getBits();
    const unsigned long key = firstKeyUnder(required, falseBits, classBits);
    const Timing under = key == 0 ? Timing() : combineRequired(required, falseBits, classBits, key);
    Delay slack = Side::slack(Side::requiredOf(under), Side::dataTime(arrival, edge));
    if (const Delay adjustment = cpath->getSlackAdjustment(subdomain, Side::isLong); adjustment.isDefined())
        slack += adjustment;
    return slack;
}

template <class Side>
Delay calculateSlack(const PoleTimingMap& requiredMaps, const Pelko::Subdomain* subdomain, const Edge* edge,
                     const PseudoMask& mask, const Delay& arrival, const CPath* cpath) {
    detail::require(edge, Side::nullEdge);
    const auto required = requiredMaps.find(edge->getTarget());
    if (required == requiredMaps.end())
        return Delay::getUndefined();
    return calculateSlack<Side>(required->second, subdomain, edge, mask, arrival, cpath);
}

// The part of the clock's period that a transfer within one clock has, in percent; 100 for a whole period and
// between clocks.
unsigned long dutyCycleOf(const Pelko::Subdomain& subdomain) {
    const Pelko::Pole* root = subdomain.getLaunchRoot();
    if (!root || root != subdomain.getLatchRoot())
        return 100;
    const ClockMode::Code launch = subdomain.getLaunchClockMode().getCode();
    const ClockMode::Code latch = subdomain.getLatchClockMode().getCode();
    if (launch == ClockMode::Rising && latch == ClockMode::Falling)
        return analyzer->getDutyRatio(root);
    if (launch == ClockMode::Falling && latch == ClockMode::Rising)
        return 100 - analyzer->getDutyRatio(root);
    return 100;
}

// The first slack of an arc leaves its duty cycle alone; a lower one brings its own; an equal one may lower
// it.
void tagEdge(Edge& edge, const Delay& best, unsigned long dutyCycle) {
    const Delay current = edge.getSlack();
    if (!current.isDefined() && best != Delay::getMaximum()) {
        edge.setSlack(best);
        return;
    }
    if (best == current && dutyCycle < edge.getMinDutyCycle())
        edge.setMinDutyCycle(dutyCycle);
    if (best < current) {
        edge.setSlack(best);
        edge.setMinDutyCycle(dutyCycle);
    }
}

} // namespace

Delay Sweep::calculateLSlack(Edge* edge, const PseudoMask& mask, const Delay& arrival, CPath* cpath) {
    return calculateSlack<LongSide>(dataRTMapMap, subdomain, edge, mask, arrival, cpath);
}

Delay Sweep::calculateLSlack(Edge* edge, const PseudoMask& mask, const Delay& arrival) {
    return calculateLSlack(edge, mask, arrival, nullptr);
}

Delay Sweep::calculateSSlack(Edge* edge, const PseudoMask& mask, const Delay& arrival, CPath* cpath) {
    return calculateSlack<ShortSide>(dataRTMapMap, subdomain, edge, mask, arrival, cpath);
}

Delay Sweep::calculateSSlack(Edge* edge, const PseudoMask& mask, const Delay& arrival) {
    return calculateSSlack(edge, mask, arrival, nullptr);
}

void Sweep::tagSlacks() {
    const PseudoMask constrained = analyzer->getMaxdelayPathMask() | analyzer->getMulticyclePathMask();
    const unsigned long dutyCycle = dutyCycleOf(*subdomain);
    for (const auto& [pole, arrivals] : dataATMapMap)
        for (Edge* edge : pole->getOutgoingEdges()) {
            Delay best = Delay::getMaximum();
            const auto keep = [&best](const Delay& slack) {
                if (slack.isDefined() && slack < best)
                    best = slack;
            };
            for (const auto& [key, timing] : arrivals) {
                const PseudoMask mask(key);
                keep(calculateLSlack(edge, mask, timing.getMaximumDelay()));
                for (CPath* cpath : analyzer->getCPaths(mask & constrained))
                    keep(calculateLSlack(edge, mask, timing.getMaximumDelay(), cpath));
            }
            tagEdge(*edge, best, dutyCycle);
        }
}

} // namespace Vorlen
