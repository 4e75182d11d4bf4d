// Slacks of arcs: how much later (setup) or earlier (hold) data could pass an arc, for one class of
// exceptions.
//
// The required map of the arc's target is read in place. The keys of its entries show which of them count;
// filtering and re-keying a copy would have the same result.
#include "Vorlen/Cone/DataTimes.h"
#include "Vorlen/Cone/FanReader.h"
#include "Vorlen/Sweep/Sides.h"
#include "Vorlen/detail/Work.h"

#include <optional>
#include <vector>

namespace Vorlen {

using Pelko::analyzer;
using Pelko::ClockMode;
using Pelko::CPath;
using Pelko::Delay;
using Pelko::Edge;
using Pelko::PseudoMask;

namespace {

using detail::ClassTiming;
using detail::ClassTimings;

// The widest timing of the entries that count: those with no class of a false path (`falseBits`) whose key
// AND `classBits` is `wanted`.
ClassTiming combineRequired(ClassTimings required, unsigned long falseBits, unsigned long classBits,
                            unsigned long wanted) {
    ClassTiming result{wanted, Delay::undefinedValue, Delay::undefinedValue};
    for (const ClassTiming& each : required)
        if ((each.key & falseBits) == 0 && (each.key & classBits) == wanted)
            result.widen(each.minimum, each.maximum);
    return result;
}

// The smallest key AND `classBits` that is not 0, of entries with no class of a false path; 0 if there is
// none.
unsigned long firstKeyUnder(ClassTimings required, unsigned long falseBits, unsigned long classBits) {
    unsigned long first = 0;
    for (const ClassTiming& each : required) {
        const unsigned long key = each.key & classBits;
        if ((each.key & falseBits) == 0 && key != 0 && (first == 0 || key < first))
            first = key;
    }
    return first;
}

// The classes at an arc for data under the classes in `mask`.
unsigned long classesAt(const Edge& edge, unsigned long mask) {
    mask |= edge.getSource()->getOpeningPseudoMask().getBits();
    mask &= edge.getPseudoMask().getBits();
    return mask | edge.getTarget()->getOpeningPseudoMask().getBits();
}

template <class Side>
Delay slackOf(const ClassTiming& required, const Delay& arrival, const Edge& edge) {
    return Side::slack(Side::requiredOf(required.getTiming()), Side::dataTime(arrival, &edge));
}

template <class Side>
Delay plainSlack(ClassTimings required, unsigned long classes, unsigned long falseMask, const Delay& arrival,
                 const Edge& edge) {
    return slackOf<Side>(combineRequired(required, classes & falseMask, classes, 0), arrival, edge);
}

// The slack without the adjustment of the exception.
template <class Side>
Delay slackUnder(ClassTimings required, unsigned long classes, unsigned long falseMask,
                 unsigned long classBits, const Delay& arrival, const Edge& edge) {
    const unsigned long falseBits = classes & falseMask;
    ClassTiming under{0, Delay::undefinedValue, Delay::undefinedValue};
    if (const unsigned long key = firstKeyUnder(required, falseBits, classBits); key != 0)
        under = combineRequired(required, falseBits, classBits, key);
    return slackOf<Side>(under, arrival, edge);
}

template <class Side>
Delay calculateSlack(const detail::DataTimes& data, const Pelko::Subdomain* subdomain, const Edge* edge,
                     const PseudoMask& mask, const Delay& arrival, const CPath* cpath) {
    detail::require(edge, Side::nullEdge);
    const detail::Slot target = data.cone.find(edge->getTarget());
    if (!data.required.contains(target))
        return Delay::getUndefined();
    const ClassTimings required = data.required.get(target);
    const unsigned long classes = classesAt(*edge, mask.getBits());
    const unsigned long falseMask = analyzer->getFalsePathMask().getBits();
    if (!cpath)
        return plainSlack<Side>(required, classes, falseMask, arrival, *edge);
    Delay slack =
        slackUnder<Side>(required, classes, falseMask, cpath->getPseudoMask().getBits(), arrival, *edge);
    if (const Delay adjustment = cpath->getSlackAdjustment(subdomain, Side::isLong); adjustment.isDefined())
        slack += adjustment;
    return slack;
}

// The part of the period that a transfer within one clock takes, in percent; 100 for a whole period, and for
// a transfer between two clocks.
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

// Writes a slack on an arc. The first slack leaves the duty cycle as it is, a lower one replaces it, and an
// equal one may lower it.
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
    return calculateSlack<LongSide>(*data, subdomain, edge, mask, arrival, cpath);
}

Delay Sweep::calculateLSlack(Edge* edge, const PseudoMask& mask, const Delay& arrival) {
    return calculateLSlack(edge, mask, arrival, nullptr);
}

Delay Sweep::calculateSSlack(Edge* edge, const PseudoMask& mask, const Delay& arrival, CPath* cpath) {
    return calculateSlack<ShortSide>(*data, subdomain, edge, mask, arrival, cpath);
}

Delay Sweep::calculateSSlack(Edge* edge, const PseudoMask& mask, const Delay& arrival) {
    return calculateSSlack(edge, mask, arrival, nullptr);
}

namespace {

// The setup slacks of arcs: the worst over all classes of the arrivals, without an exception and under each
// maximum delay or multicycle path among them. The adjustment of an exception is the same everywhere in a
// subdomain. It is computed when it is first needed.
class WorstSlacks {
public:
    WorstSlacks(const detail::DataTimes& data, const Pelko::Subdomain* subdomain)
        : data_(data), subdomain_(subdomain), falseMask_(analyzer->getFalsePathMask().getBits()) {
        const PseudoMask constrained = analyzer->getMaxdelayPathMask() | analyzer->getMulticyclePathMask();
        if (!constrained.isEmpty())
            for (CPath* cpath : analyzer->getCPaths(constrained))
                exceptions_.push_back({cpath, cpath->getPseudoMask().getBits(), {}});
        constrained_ = constrained.getBits();
        opensClasses_ = !analyzer->getCPaths().isEmpty();
    }

    // Whether adjustments may be computed, which may throw.
    bool asksTheHost() const { return !exceptions_.empty(); }

    // The worst slack of the arc, or the maximum special if there is none.
    Delay find(ClassTimings arrivals, const Edge& edge) {
        const detail::Slot target = data_.cone.find(edge.getTarget());
        return data_.required.contains(target) ? find(arrivals, data_.required.get(target), edge)
                                               : Delay::getMaximum();
    }
    Delay find(ClassTimings arrivals, ClassTimings required, const Edge& edge) {
        Delay best = Delay::getMaximum();
        const auto keep = [&best](const Delay& slack) {
            if (slack.isDefined() && slack < best)
                best = slack;
        };
        for (const ClassTiming& each : arrivals) {
            // Without exceptions no pole opens a class, and the poles are not read.
            const unsigned long classes =
                opensClasses_ ? classesAt(edge, each.key) : each.key & edge.getPseudoMask().getBits();
            const Delay arrival(each.maximum);
            keep(plainSlack<LongSide>(required, classes, falseMask_, arrival, edge));
            if ((each.key & constrained_) == 0)
                continue;
            for (Exception& exception : exceptions_)
                if ((each.key & constrained_ & exception.bits) != 0)
                    keep(adjusted(exception, slackUnder<LongSide>(required, classes, falseMask_,
                                                                  exception.bits, arrival, edge)));
        }
        return best;
    }

private:
    struct Exception {
        const CPath* cpath;
        unsigned long bits;
        std::optional<Delay> adjustment;
    };

    Delay adjusted(Exception& exception, const Delay& slack) const {
        if (!exception.adjustment)
            exception.adjustment = exception.cpath->getSlackAdjustment(subdomain_, LongSide::isLong);
        return exception.adjustment->isDefined() ? slack + *exception.adjustment : slack;
    }

    const detail::DataTimes& data_;
    const Pelko::Subdomain* subdomain_;
    unsigned long falseMask_;
    unsigned long constrained_ = 0;
    bool opensClasses_ = false;
    std::vector<Exception> exceptions_;
};

// Tags the arcs into poles that have required times, pole by pole in the order in which the cone was read. So
// only the arcs of the design are read, not its poles.
void tagInConeOrder(const detail::DataTimes& data, WorstSlacks& slacks, unsigned long dutyCycle) {
    const detail::Cone& cone = data.cone;
    const auto tag = [&](Edge* edge, detail::Slot source, ClassTimings required) {
        if (source == detail::noSlot) // the arc was not active
            source = cone.find(edge->getSource());
        if (data.arrivals.contains(source))
            tagEdge(*edge, slacks.find(data.arrivals.get(source), required, *edge), dutyCycle);
    };
    const auto slotCount = static_cast<detail::Slot>(cone.getSlotCount());
    for (detail::Slot slot = 0; slot < slotCount; ++slot) {
        if (slot + detail::Cone::ahead < slotCount)
            cone.prefetchDesign(slot + detail::Cone::ahead);
        if (slot + detail::Cone::nearAhead < slotCount)
            cone.prefetchSources(slot + detail::Cone::nearAhead, data.arrivals);
        if (!data.required.contains(slot))
            continue;
        const ClassTimings required = data.required.get(slot);
        if ((cone.getFlags(slot) & (detail::Cone::Start | detail::Cone::Closed)) != 0) {
            for (Edge* edge : cone.getPoles()[slot]->getIncomingEdges()) {
                detail::visitArcs(1);
                tag(edge, detail::noSlot, required);
            }
            continue;
        }
        const detail::Cone::Arcs arcs = cone.getArcs(slot);
        for (std::uint32_t arc = arcs.begin; arc != arcs.end; ++arc)
            tag(cone.getEdge(arc), cone.getSource(arc), required);
    }
}

} // namespace

// An arc into a pole without required times has the maximum special as its slack. That is never written, but
// it is compared with the slack of the arc, and so matters if a host has written the same value. In that
// case, and if an adjustment may throw, the arcs are tagged pole by pole in stamp order.
void Sweep::tagSlacks() {
    const unsigned long dutyCycle = dutyCycleOf(*subdomain);
    WorstSlacks slacks(*data, subdomain);
    if (data->cone.isWhole() && !Edge::_hasMaximumSlack && !slacks.asksTheHost())
        return tagInConeOrder(*data, slacks, dutyCycle);
    const detail::LargeVector<Pelko::Pole*> poles = data->cone.getSortedPoles();
    detail::FanReader<detail::Direction::Outgoing> reader;
    for (std::size_t place = 0; place < poles.size(); ++place) {
        reader.advance(poles, place);
        reader.forEachEndAt(place + reader.farAhead,
                            [this](const Pelko::Pole* pole) { data->cone.prefetchSlot(pole); });
        reader.forEachEndAt(place + reader.nearAhead, [this](const Pelko::Pole* pole) {
            data->required.prefetch(data->cone.find(pole));
        });
        if (place + reader.nearAhead < poles.size())
            data->arrivals.prefetch(data->cone.find(poles[place + reader.nearAhead]));
        const ClassTimings arrivals = data->getArrivals(poles[place]);
        if (data->hasArrivals(poles[place]))
            for (Edge* edge : poles[place]->getOutgoingEdges()) {
                detail::visitArcs(1);
                tagEdge(*edge, slacks.find(arrivals, *edge), dutyCycle);
            }
    }
}

} // namespace Vorlen
