// Data required times: backwards from the latch leaves to the launch leaves, class by class. The walk goes
// forwards from the launch leaves, so that the whole fan-out of a pole is final before the pole is. Only
// poles that data reaches get required times.
//
// A required timing holds the setup requirement as its minimum, and the hold requirement as its maximum.
#include "Pelko/Analyzer.h"
#include "Pelko/Subdomain.h"
#include "Vorlen/Sweep.h"
#include "Vorlen/detail/EventPump.h"
#include "Vorlen/detail/Faults.h"
#include "Vorlen/detail/Walk.h"

namespace Vorlen {

using Pelko::analyzer;
using Pelko::Edge;
using Pelko::Pole;

namespace {

class RequiredVisitor {
public:
    RequiredVisitor(Sweep& sweep, PoleSet& path) : sweep_(sweep), path_(path) {}

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
        return edge->isActive() && path_.count(edge->getTarget()) == 0 ? edge->getTarget() : nullptr;
    }

    void back(Edge* edge) { sweep_.updateDataRTMapMap(edge); }

    void leave(Pole* pole) {
        path_.erase(pole);
        pump_();
    }

private:
    Sweep& sweep_;
    PoleSet& path_;
    detail::WalkPump pump_;
};

} // namespace

void Sweep::requireAnalyze() {
    const detail::MarkGuard guard;
    PoleSet path;
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
        TimingMap latch;
        if (!subdomain->getLatchLeaves().contains(leaf) || !hasLatchTimingMap(leaf, latch))
            return;
        required[0] = Timing(subdomain->getSetupRelation() + latch[0].getMinimumDelay(),
                             -subdomain->getHoldRelation() + latch[0].getMaximumDelay());
        Pelko::IOConstraint io;
        if (pole->isOutput() && analyzer->hasOutputConstraint(pole, io))
            minusDelay(io.getMinimum(), io.getMaximum(), required);
    }
    mingle(pole->getClosingPseudoMask(), required);
    dataRTMapMap[pole] = std::move(required);
}

void Sweep::updateDataRTMapMap(Edge* edge) {
    const auto target = dataRTMapMap.find(edge->getTarget());
    if (target == dataRTMapMap.end())
        return;
    const Pole* source = edge->getSource();
    TimingMap passing = target->second;
    filter(source->getOpeningPseudoMask(), passing);
    if (edge->getTarget()->isCheck())
        freeSetupHold(edge->getMinDelay(), edge->getMaxDelay(), passing);
    else
        minusDelay(edge->getMinDelay(), edge->getMaxDelay(), passing);
    sensibilize(edge->getPseudoMask(), passing);
    TimingMap& required = dataRTMapMap[edge->getSource()];
    combine(passing, required);
    mingle(source->getClosingPseudoMask(), required);
}

} // namespace Vorlen
