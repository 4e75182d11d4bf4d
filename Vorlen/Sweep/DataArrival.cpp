// Data arrival: forwards from the launch leaves to the latch leaves, class by class. The walk goes backwards
// from the end points, so that the whole fan-in of a pole is final before the pole is.
//
// At the latch side the arrivals become those of the subdomain: its latest and shortest arrival, and whether
// a multicycle path is the latest one.
#include "Pelko/Analyzer.h"
#include "Pelko/Cell.h"
#include "Pelko/Subdomain.h"
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

class ArrivalVisitor {
public:
    ArrivalVisitor(Sweep& sweep, PoleSet& path) : sweep_(sweep), path_(path) {}

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
        return edge->isActive() && path_.count(edge->getSource()) == 0 ? edge->getSource() : nullptr;
    }

    void back(Edge* edge) { sweep_.updateDataATMapMap(edge); }

    void leave(Pole* pole) {
        path_.erase(pole);
        pump_();
    }

private:
    static bool isStart(const Pole* pole) { return pole->isInitial() || pole->isClockSource(); }

    Sweep& sweep_;
    PoleSet& path_;
    detail::WalkPump pump_;
};

} // namespace

void Sweep::arrivalAnalyze() {
    const detail::MarkGuard guard;
    PoleSet path;
    ArrivalVisitor visitor(*this, path);
    detail::Walk walk;
    const auto report = [this](const Timing& timing) {
        arrivalTiming.combine(timing);
        subdomain->setLAT(arrivalTiming.getMaximumDelay());
        subdomain->setSAT(arrivalTiming.getMinimumDelay());
    };
    const auto endAtPort = [&](Pole* leaf) {
        detail::require(leaf->isOutput(), detail::Fault::NotAnOutput);
        walk.run(leaf, visitor);
        TimingMap arrival;
        if (!hasArrivalTimingMap(leaf, arrival))
            return;
        filter(analyzer->getMaxdelayPathMask(), analyzer->getMindelayPathMask(), arrival);
        for (const auto& entry : arrival)
            report(entry.second);
    };
    // Arrivals become relative to the latch edge, and multicycle classes are brought back to one cycle.
    const auto endAtLatch = [&](Pole* end, const Timing& latch) {
        walk.run(end, visitor);
        TimingMap arrival;
        if (!hasArrivalTimingMap(end, arrival))
            return;
        Pelko::IOConstraint io;
        if (end->isOutput() && analyzer->hasOutputConstraint(end, io))
            addDelay(io.getMinimum(), io.getMaximum(), arrival);
        minusLatchTiming(latch, arrival);
        divideCycleCount(arrival);
        for (const auto& [key, timing] : arrival) {
            report(timing);
            if (!subdomain->isPureClock() || arrivalTiming.getMaximumDelay() != timing.getMaximumDelay())
                continue;
            if ((PseudoMask(key) & analyzer->getMulticyclePathMask()).isEmpty())
                subdomain->resetMPathCritical();
            else
                subdomain->setMPathCritical();
        }
    };
    const bool toPorts = !subdomain->getLatchRoot();
    for (Pole* leaf : subdomain->getLatchLeaves()) {
        if (toPorts) {
            endAtPort(leaf);
            continue;
        }
        TimingMap latch;
        if (!hasLatchTimingMap(leaf, latch))
            continue;
        sensibilize(PseudoMask(0), latch);
        if (!leaf->isClock())
            endAtLatch(leaf, latch[0]);
        else
            for (Pole* end : Pelko::cell->getAuxiliaryPoles(leaf->getPin()))
                endAtLatch(end, latch[0]);
    }
    analyzer->unmark();
}

void Sweep::arrivalAnalyze(Pole* pole, PoleSet& path) {
    ArrivalVisitor visitor(*this, path);
    detail::Walk().run(pole, visitor);
}

void Sweep::updateDataATMapMap(Pole* pole) {
    if (!subdomain->getLaunchLeaves().contains(pole))
        return;
    TimingMap start;
    if (!subdomain->getLaunchRoot()) {
        start[0] = Timing(Delay(0), Delay(0));
    } else {
        if (!hasLaunchTimingMap(pole, start))
            return;
        sensibilize(PseudoMask(0), start);
        Pelko::IOConstraint io;
        if (pole->isInput() && analyzer->hasInputConstraint(pole, io))
            addDelay(io.getMinimum(), io.getMaximum(), start);
    }
    mingle(pole->getOpeningPseudoMask(), start);
    dataATMapMap[pole] = std::move(start);
}

void Sweep::updateDataATMapMap(Edge* edge) {
    const auto source = dataATMapMap.find(edge->getSource());
    if (source == dataATMapMap.end())
        return;
    const Pole* target = edge->getTarget();
    TimingMap passing = source->second;
    filter(target->getClosingPseudoMask() & analyzer->getFalsePathMask(), passing);
    if (target->isCheck())
        takeSetupHold(edge->getMinDelay(), edge->getMaxDelay(), passing);
    else
        addDelay(edge->getMinDelay(), edge->getMaxDelay(), passing);
    sensibilize(edge->getPseudoMask(), passing);
    TimingMap& arrival = dataATMapMap[edge->getTarget()];
    combine(passing, arrival);
    mingle(target->getOpeningPseudoMask(), arrival);
}

} // namespace Vorlen
