// Data required times: backwards from the latch leaves to the launch leaves, class by class. The walk goes
// forwards from the launch leaves, so that the whole fan-out of a pole is final before the pole is. Only
// poles that data reaches get required times.
//
// If the cone of the arrivals has an order, and a walk from the launch leaves would visit the same poles and
// arcs, required times are folded in that order.
//
// A required timing has the setup requirement as its minimum, and the hold requirement as its maximum.
#include "Pelko/Analyzer.h"
#include "Pelko/Subdomain.h"
#include "Vorlen/Cone/DataTimes.h"
#include "Vorlen/Cone/FanReader.h"
#include "Vorlen/PoleFlags.h"
#include "Vorlen/Sweep.h"
#include "Vorlen/detail/EventPump.h"
#include "Vorlen/detail/Faults.h"
#include "Vorlen/detail/Walk.h"
#include "Vorlen/detail/Work.h"

#include <vector>

namespace Vorlen {

using Pelko::analyzer;
using Pelko::Edge;
using Pelko::Pole;

namespace {

// The shift of required times by an arc, backwards: its delays are subtracted, or the setup and hold values
// of a check are applied.
class RequiredShift {
public:
    RequiredShift(const Edge& edge, bool isCheck)
        : early_(int(edge.getMinDelay())), late_(int(edge.getMaxDelay())), isCheck_(isCheck) {}

    void operator()(detail::ClassTiming& timing) const {
        timing.minimum = detail::minus(timing.minimum, late_);
        timing.maximum =
            isCheck_ ? detail::plus(timing.maximum, early_) : detail::minus(timing.maximum, early_);
    }

private:
    int early_;
    int late_;
    bool isCheck_;
};

// `Path` holds the poles of the walk's stack: a set of the caller, or flags.
template <class Path>
class RequiredVisitor {
public:
    RequiredVisitor(Sweep& sweep, Path& path) : sweep_(sweep), path_(path) {}

    bool enter(Pole* pole) {
        if (!sweep_.hasArrivalTimingMap(pole) || pole->isMarked())
            return false;
        path_.insert(pole);
        pole->mark();
        if (pole->isTerminal())
            sweep_.updateDataRTMapMap(pole);
        return true;
    }

    Pelko::Edges fan(const Pole* pole) const {
        return pole->isTerminal() ? Pelko::Edges() : pole->getOutgoingEdges();
    }

    Pole* follow(const Edge* edge) const {
        return edge->isActive() && !path_.contains(edge->getTarget()) ? edge->getTarget() : nullptr;
    }

    void back(Edge* edge) { sweep_.updateDataRTMapMap(edge); }

    void leave(Pole* pole) {
        path_.erase(pole);
        pump_();
    }

private:
    Sweep& sweep_;
    Path& path_;
    detail::WalkPump pump_;
};

} // namespace

void Sweep::requireAnalyze() {
    const detail::MarkGuard guard;
    if (propagateRequired())
        return analyzer->unmark();
    PoleFlags path;
    RequiredVisitor visitor(*this, path);
    detail::Walk walk;
    const bool fromPorts = !subdomain->getLaunchRoot();
    for (Pole* leaf : subdomain->getLaunchLeaves()) {
        if (fromPorts)
            detail::require(leaf->isInput(), detail::Fault::NotAnInput);
        walk.run(leaf, visitor);
    }
    analyzer->unmark();
}

void Sweep::requireAnalyze(Pole* pole, PoleSet& path) {
    RequiredVisitor visitor(*this, path);
    detail::Walk().run(pole, visitor);
}

void Sweep::updateDataRTMapMap(Pole* pole) {
    TimingMap required;
    if (!subdomain->getLatchRoot()) {
        if (!subdomain->getLatchLeaves().contains(pole))
            return;
        required[0] = Timing(subdomain->getSetupRelation(), -subdomain->getHoldRelation());
    } else {
        Pole* leaf = pole->isOutput() ? pole : pole->getClockPole();
        const auto latch = latchATMapMap.find(leaf); // only latch leaves have an entry
        if (latch == latchATMapMap.end())
            return;
        const auto entry = latch->second.find(0);
        const Timing clock = entry == latch->second.end() ? Timing::getUndefined() : entry->second;
        const Timing asked(subdomain->getSetupRelation() + clock.getMinimumDelay(),
                           -subdomain->getHoldRelation() + clock.getMaximumDelay());
        if (!pole->isOutput() && pole->getClosingPseudoMask().isEmpty()) {
            data->required.assign(data->obtain(pole), asked);
            data->hasAnyRequired = true;
            return;
        }
        required[0] = asked;
        Pelko::IOConstraint io;
        if (pole->isOutput() && analyzer->hasOutputConstraint(pole, io))
            minusDelay(io.getMinimum(), io.getMaximum(), required);
    }
    mingle(pole->getClosingPseudoMask(), required);
    data->required.assign(data->obtain(pole), required);
    data->hasAnyRequired = true;
}

void Sweep::updateDataRTMapMap(Edge* edge) {
    if (!data->hasRequired(edge->getTarget()))
        return;
    const Pole* source = edge->getSource();
    const detail::Slot target = data->cone.find(edge->getTarget());
    const detail::Slot slot = data->obtain(edge->getSource());
    data->required.fold(data->required, target, slot, source->getOpeningPseudoMask().getBits(),
                        edge->getPseudoMask().getBits(), source->getClosingPseudoMask().getBits(),
                        RequiredShift(*edge, edge->getTarget()->isCheck()));
}

namespace {

// The state of a pole of the cone when required times are computed.
enum Kind : std::uint8_t { Reached = 1, Terminal = 2, Masked = 4, Check = 8 };

// The kinds of poles, by slot. Empty if a walk from the launch leaves would not visit exactly the cone: if a
// pole is marked, or if data runs into a start, which the cone does not show.
std::vector<std::uint8_t> kindsOf(const detail::DataTimes& data) {
    constexpr std::size_t ahead = 16;
    const detail::LargeVector<Pole*>& poles = data.cone.getPoles();
    std::vector<std::uint8_t> kinds(poles.size());
    for (detail::Slot slot = 0; slot < poles.size(); ++slot) {
        if (slot + ahead < poles.size())
            detail::prefetchPole(poles[slot + ahead]);
        if (!data.arrivals.contains(slot))
            continue;
        const Pole* pole = poles[slot];
        if (pole->isMarked())
            return {};
        unsigned kind = Reached;
        if (pole->isTerminal())
            kind |= Terminal;
        if (pole->isCheck())
            kind |= Check;
        if (!pole->getOpeningPseudoMask().isEmpty() || !pole->getClosingPseudoMask().isEmpty())
            kind |= Masked;
        kinds[slot] = static_cast<std::uint8_t>(kind);
        if ((data.cone.getFlags(slot) & detail::Cone::Start) != 0)
            for (const Edge* edge : pole->getIncomingEdges()) {
                detail::visitArcs(1);
                if (edge->isActive() && data.hasArrivals(edge->getSource()))
                    return {};
            }
    }
    return kinds;
}

} // namespace

// Required times in the order of the cone. Returns false, with no required times, if they need the
// depth-first walk.
bool Sweep::propagateRequired() {
    const detail::Cone& cone = data->cone;
    if (!cone.isCurrent() || data->hasAnyRequired || (!subdomain->getLaunchRoot() && !launchesFromInputs()))
        return false;
    const std::vector<std::uint8_t> kinds = kindsOf(*data);
    if (kinds.empty())
        return false;
    detail::WalkPump pump;
    const detail::LargeVector<detail::Slot>& order = cone.getOrder();
    for (std::size_t place = 0; place < order.size(); ++place) {
        if (place + detail::Cone::ahead < order.size())
            cone.prefetchDesign(order[place + detail::Cone::ahead]);
        if (place + detail::Cone::nearAhead < order.size())
            cone.prefetchSources(order[place + detail::Cone::nearAhead], data->required);
        const detail::Slot slot = order[place];
        if ((kinds[slot] & Reached) == 0)
            continue;
        if (!updateRequired(slot, kinds) || (pump() && !cone.isCurrent())) {
            data->required.clear();
            data->hasAnyRequired = false;
            data->required.reach(cone.getSlotCount());
            return false;
        }
    }
    return true;
}

bool Sweep::launchesFromInputs() const {
    for (const Pole* leaf : subdomain->getLaunchLeaves())
        if (!leaf->isInput())
            return false;
    return true;
}

// Folds the required times of a pole into those of its drivers. Returns false if data passes a terminal pole,
// or if an arc has become active or inactive: then the depth-first walk does not visit all poles that have
// arrivals.
bool Sweep::updateRequired(detail::Slot slot, const std::vector<std::uint8_t>& kinds) {
    const detail::Cone& cone = data->cone;
    detail::TimingTable& required = data->required;
    if ((kinds[slot] & Terminal) != 0)
        updateDataRTMapMap(cone.getPoles()[slot]);
    const bool isRequired = required.contains(slot);
    const bool isCheck = (kinds[slot] & Check) != 0;
    const detail::Cone::Arcs arcs = cone.getArcs(slot);
    for (std::uint32_t arc = arcs.begin; arc != arcs.end; ++arc) {
        const detail::Slot source = cone.getSource(arc);
        const Edge* edge = cone.getEdge(arc);
        if (edge->isActive() != (source != detail::noSlot))
            return false;
        if (source == detail::noSlot || (kinds[source] & Reached) == 0)
            continue;
        if ((kinds[source] & Terminal) != 0)
            return false;
        if (!isRequired)
            continue;
        unsigned long cut = 0;
        unsigned long open = 0;
        if ((kinds[source] & Masked) != 0) {
            cut = cone.getPoles()[source]->getOpeningPseudoMask().getBits();
            open = cone.getPoles()[source]->getClosingPseudoMask().getBits();
        }
        required.fold(required, slot, source, cut, edge->getPseudoMask().getBits(), open,
                      RequiredShift(*edge, isCheck));
    }
    return true;
}

} // namespace Vorlen
