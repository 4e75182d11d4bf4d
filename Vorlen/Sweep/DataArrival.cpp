// Data arrival: forwards from the launch leaves to the latch leaves, class by class. The walk goes backwards
// from the end points, so that the whole fan-in of a pole is final before the pole is.
//
// If the cone has an order (Cone/Cone.h), the poles are folded in that order. The result is the same, because
// folding is associative and commutative. Otherwise, the depth-first walk skips an arc that would close a
// loop.
//
// At the latch side the arrivals determine those of the subdomain: its latest and shortest arrival, and
// whether a multicycle path is the latest one.
#include "Pelko/Analyzer.h"
#include "Pelko/Cell.h"
#include "Pelko/Subdomain.h"
#include "Vorlen/Cone/DataTimes.h"
#include "Vorlen/PoleFlags.h"
#include "Vorlen/Sweep.h"
#include "Vorlen/detail/EventPump.h"
#include "Vorlen/detail/Faults.h"
#include "Vorlen/detail/Walk.h"

namespace Vorlen {

using Pelko::analyzer;
using Pelko::Delay;
using Pelko::Edge;
using Pelko::Pole;
using Pelko::PseudoMask;

namespace {

bool isStart(const Pole* pole) { return pole->isInitial() || pole->isClockSource(); }

// `Path` holds the poles of the walk's stack: a set of the caller, or flags.
template <class Path>
class ArrivalVisitor {
public:
    ArrivalVisitor(Sweep& sweep, Path& path) : sweep_(sweep), path_(path) {}

    bool enter(Pole* pole) {
        if (pole->isMarked())
            return false;
        path_.insert(pole);
        pole->mark();
        if (isStart(pole))
            sweep_.updateDataATMapMap(pole);
        return true;
    }

    Pelko::Edges fan(const Pole* pole) const {
        return isStart(pole) ? Pelko::Edges() : pole->getIncomingEdges();
    }

    Pole* follow(const Edge* edge) const {
        return edge->isActive() && !path_.contains(edge->getSource()) ? edge->getSource() : nullptr;
    }

    void back(Edge* edge) { sweep_.updateDataATMapMap(edge); }

    void leave(Pole* pole) {
        path_.erase(pole);
        pump_();
    }

private:
    Sweep& sweep_;
    Path& path_;
    detail::WalkPump pump_;
};

// The shift of arrivals by an arc. An arc into a check holds a hold value and a setup value.
class ArrivalShift {
public:
    ArrivalShift(const Edge& edge, bool isCheck)
        : early_(int(edge.getMinDelay())), late_(int(edge.getMaxDelay())), isCheck_(isCheck) {}
    ArrivalShift(const detail::Cone::Delays& delays, bool isCheck)
        : early_(delays.minimum), late_(delays.maximum), isCheck_(isCheck) {}

    void operator()(detail::ClassTiming& timing) const {
        timing.minimum =
            isCheck_ ? detail::minus(timing.minimum, early_) : detail::plus(timing.minimum, early_);
        timing.maximum = detail::plus(timing.maximum, late_);
    }

private:
    int early_;
    int late_;
    bool isCheck_;
};

// Calls `visit` for the end points of a latch leaf: the checks of a clock pin, or the leaf itself.
template <class Visit>
void forEachEnd(Pole* leaf, Visit visit) {
    if (!leaf->isClock())
        visit(leaf);
    else
        for (Pole* end : Pelko::cell->getAuxiliaryPoles(leaf->getPin()))
            visit(end);
}

// Reports the arrivals of end points to the subdomain: the widest of all classes, and whether a multicycle
// class is the latest.
class ArrivalReport {
public:
    ArrivalReport(Pelko::Subdomain& subdomain, Timing& widest) : subdomain_(subdomain), widest_(widest) {}

    void add(const Timing& timing) {
        widest_.combine(timing);
        subdomain_.setLAT(widest_.getMaximumDelay());
        subdomain_.setSAT(widest_.getMinimumDelay());
    }
    // An arrival at a clocked end point, under the classes of its key.
    void addLatched(unsigned long key, const Timing& timing) {
        add(timing);
        if (!subdomain_.isPureClock() || widest_.getMaximumDelay() != timing.getMaximumDelay())
            return;
        if ((PseudoMask(key) & analyzer->getMulticyclePathMask()).isEmpty())
            subdomain_.resetMPathCritical();
        else
            subdomain_.setMPathCritical();
    }

private:
    Pelko::Subdomain& subdomain_;
    Timing& widest_;
};

} // namespace

void Sweep::arrivalAnalyze() {
    const detail::MarkGuard guard;
    const bool toPorts = !subdomain->getLatchRoot();
    const bool isDone = propagateArrivals();
    PoleFlags path;
    ArrivalVisitor visitor(*this, path);
    detail::Walk walk;
    ArrivalReport report(*subdomain, arrivalTiming);
    const auto reach = [&](Pole* end) {
        if (!isDone)
            walk.run(end, visitor);
        return data->hasArrivals(end);
    };
    const auto endAtPort = [&](Pole* leaf) {
        detail::require(leaf->isOutput(), detail::Fault::NotAnOutput);
        if (!reach(leaf))
            return;
        TimingMap arrival;
        hasArrivalTimingMap(leaf, arrival);
        filter(analyzer->getMaxdelayPathMask(), analyzer->getMindelayPathMask(), arrival);
        for (const auto& entry : arrival)
            report.add(entry.second);
    };
    // Arrivals become relative to the latch edge, and multicycle classes are brought back to one cycle.
    const auto endAtLatch = [&](Pole* end, const Timing& latch) {
        if (!reach(end))
            return;
        TimingMap arrival;
        Pelko::IOConstraint io;
        const bool isConstrained = end->isOutput() && analyzer->hasOutputConstraint(end, io);
        const detail::ClassTimings classes = data->getArrivals(end);
        if (!isConstrained && classes.size() == 1 && classes.front().key == 0) {
            report.addLatched(0, classes.front().getTiming() -
                                     Timing(latch.getMaximumDelay(), latch.getMinimumDelay()));
            return;
        }
        hasArrivalTimingMap(end, arrival);
        if (isConstrained)
            addDelay(io.getMinimum(), io.getMaximum(), arrival);
        minusLatchTiming(latch, arrival);
        divideCycleCount(arrival);
        for (const auto& [key, timing] : arrival)
            report.addLatched(key, timing);
    };
    for (Pole* leaf : subdomain->getLatchLeaves()) {
        if (toPorts) {
            endAtPort(leaf);
            continue;
        }
        TimingMap latch;
        if (!hasLatchTimingMap(leaf, latch))
            continue;
        sensibilize(PseudoMask(0), latch);
        forEachEnd(leaf, [&, timing = latch[0]](Pole* end) { endAtLatch(end, timing); });
    }
    analyzer->unmark();
}

// The arrivals at all ends, in the order of their cone. Returns false, with no arrivals, if there is no such
// order, or if a leaf will be refused, because then only the leaves before it get arrivals.
bool Sweep::propagateArrivals() {
    if (data->cone.getSlotCount() != 0)
        return false;
    std::vector<Pole*> ends;
    for (Pole* leaf : subdomain->getLatchLeaves())
        if (!subdomain->getLatchRoot()) {
            if (!leaf->isOutput())
                return false;
            ends.push_back(leaf);
        } else if (latchATMapMap.count(leaf) != 0) {
            forEachEnd(leaf, [&ends](Pole* end) { ends.push_back(end); });
        }
    detail::Cone& cone = data->cone;
    if (!cone.read(ends, isStart)) {
        cone.forget();
        return false;
    }
    data->arrivals.reach(cone.getSlotCount());
    data->required.reach(cone.getSlotCount());
    detail::WalkPump pump;
    bool isLive = cone.hasHeardEvents();
    const detail::LargeVector<detail::Slot>& order = cone.getOrder();
    for (std::size_t place = order.size(); place-- > 0;) {
        if (place >= detail::Cone::ahead)
            cone.prefetchArcs(order[place - detail::Cone::ahead]);
        if (place >= detail::Cone::nearAhead)
            cone.prefetchSources(order[place - detail::Cone::nearAhead], data->arrivals);
        updateArrivals(order[place], isLive);
        if (!pump())
            continue;
        isLive = true;
        if (!cone.isCurrent()) {
            *data = {};
            return false;
        }
    }
    cone.dropDelays();
    return true;
}

// If `isLive`, delays are read from the design, because host events may have changed them. Otherwise the
// design is read only for the classes of arcs, which matter only to arrivals that have classes.
void Sweep::updateArrivals(detail::Slot slot, bool isLive) {
    const detail::Cone& cone = data->cone;
    const unsigned flags = cone.getFlags(slot);
    if ((flags & detail::Cone::Closed) != 0)
        return;
    Pole* pole = cone.getPoles()[slot];
    if ((flags & detail::Cone::Start) != 0)
        return updateDataATMapMap(pole);
    unsigned long cut = 0;
    unsigned long open = 0;
    bool isCheck = false;
    if ((flags & detail::Cone::Special) != 0) {
        cut = (pole->getClosingPseudoMask() & analyzer->getFalsePathMask()).getBits();
        open = pole->getOpeningPseudoMask().getBits();
        isCheck = pole->isCheck();
    }
    detail::TimingTable& arrivals = data->arrivals;
    const detail::Cone::Arcs arcs = cone.getArcs(slot);
    for (std::uint32_t arc = arcs.begin; arc != arcs.end; ++arc) {
        const detail::Slot source = cone.getSource(arc);
        if (source == detail::noSlot || !arrivals.contains(source))
            continue;
        if (!isLive && arrivals.isPlain(source)) {
            arrivals.fold(arrivals, source, slot, cut, 0, open, ArrivalShift(cone.getDelays(arc), isCheck));
            continue;
        }
        const Edge* edge = cone.getEdge(arc);
        if (edge->isActive())
            arrivals.fold(arrivals, source, slot, cut, edge->getPseudoMask().getBits(), open,
                          ArrivalShift(*edge, isCheck));
    }
}

void Sweep::arrivalAnalyze(Pole* pole, PoleSet& path) {
    ArrivalVisitor visitor(*this, path);
    detail::Walk().run(pole, visitor);
}

void Sweep::updateDataATMapMap(Pole* pole) {
    TimingMap start;
    if (!subdomain->getLaunchRoot()) {
        if (!subdomain->getLaunchLeaves().contains(pole))
            return;
        start[0] = Timing(Delay(0), Delay(0));
    } else {
        const auto launch = launchATMapMap.find(pole); // only launch leaves have an entry
        if (launch == launchATMapMap.end())
            return;
        if (detail::isPlain(launch->second) && !pole->isInput() && pole->getOpeningPseudoMask().isEmpty()) {
            data->arrivals.assign(data->obtain(pole), launch->second.begin()->second);
            return;
        }
        start = launch->second;
        sensibilize(PseudoMask(0), start);
        Pelko::IOConstraint io;
        if (pole->isInput() && analyzer->hasInputConstraint(pole, io))
            addDelay(io.getMinimum(), io.getMaximum(), start);
    }
    mingle(pole->getOpeningPseudoMask(), start);
    data->arrivals.assign(data->obtain(pole), start);
}

void Sweep::updateDataATMapMap(Edge* edge) {
    if (!data->hasArrivals(edge->getSource()))
        return;
    const Pole* target = edge->getTarget();
    const detail::Slot source = data->cone.find(edge->getSource());
    const detail::Slot slot = data->obtain(edge->getTarget());
    data->arrivals.fold(data->arrivals, source, slot,
                        (target->getClosingPseudoMask() & analyzer->getFalsePathMask()).getBits(),
                        edge->getPseudoMask().getBits(), target->getOpeningPseudoMask().getBits(),
                        ArrivalShift(*edge, target->isCheck()));
}

} // namespace Vorlen
