// Clock arrival: the times at which the launch edge reaches every launch leaf, and the latch edge every latch
// leaf. The walk goes backwards through the clock network, from the leaves to the clock root.
//
// The arrival at a leaf covers all exception classes, because data starts with classes of its own. A leaf
// that an earlier walk has passed gets no entry.
#include "Pelko/Analyzer.h"
#include "Pelko/Subdomain.h"
#include "Vorlen/Sweep.h"
#include "Vorlen/detail/EventPump.h"
#include "Vorlen/detail/Walk.h"

namespace Vorlen {

using Pelko::analyzer;
using Pelko::Delay;
using Pelko::Edge;
using Pelko::Pole;

namespace {

class ClockVisitor {
public:
    ClockVisitor(Sweep& sweep, Pole* root, PoleSet& path, PoleTimingMap& clockAT)
        : sweep_(sweep), root_(root), path_(path), clockAT_(clockAT) {}

    bool enter(Pole* pole) {
        if (pole->isMarked())
            return false;
        pole->mark();
        path_.insert(pole);
        if (pole == root_)
            sweep_.updateClockATMapMap(root_, clockAT_);
        return true;
    }

    Pelko::Edges fan(const Pole* pole) const {
        return pole == root_ ? Pelko::Edges() : pole->getIncomingEdges();
    }

    Pole* follow(const Edge* edge) const {
        return edge->isActive() && path_.count(edge->getSource()) == 0 ? edge->getSource() : nullptr;
    }

    void back(Edge* edge) { sweep_.updateClockATMapMap(edge, clockAT_); }

    void leave(Pole* pole) {
        path_.erase(pole);
        pump_();
    }

private:
    Sweep& sweep_;
    Pole* root_;
    PoleSet& path_;
    PoleTimingMap& clockAT_;
    detail::WalkPump pump_;
};

// The earliest and the latest arrival of all classes. An undefined bound is skipped if a defined one came
// before it.
Timing reduce(const TimingMap& map) {
    Delay minimum = Delay::getMaximum();
    Delay maximum = Delay::getMinimum();
    for (const auto& entry : map) {
        const Delay& entryMinimum = entry.second.getMinimumDelay();
        if (!minimum.isDefined() || (entryMinimum.isDefined() && !(minimum < entryMinimum)))
            minimum = entryMinimum;
        const Delay& entryMaximum = entry.second.getMaximumDelay();
        if (!maximum.isDefined() || (entryMaximum.isDefined() && maximum < entryMaximum))
            maximum = entryMaximum;
    }
    return {minimum, maximum};
}

// One side of the subdomain. `isPort` returns whether a leaf is a port, which the clock reaches at time zero.
template <class IsPort>
void analyzeSide(Sweep& sweep, Pole* root, const Pelko::Poles& leaves, IsPort isPort,
                 PoleTimingMap& arrivals) {
    if (!root)
        return;
    analyzer->unmark();
    PoleSet path;
    PoleTimingMap clockAT;
    ClockVisitor visitor(sweep, root, path, clockAT);
    detail::Walk walk;
    for (Pole* leaf : leaves) {
        if (leaf->isMarked())
            continue;
        if (isPort(leaf)) {
            arrivals[leaf][0] = Timing(Delay(0), Delay(0));
            continue;
        }
        walk.run(leaf, visitor);
        if (const auto found = clockAT.find(leaf); found != clockAT.end())
            arrivals[leaf][0] = reduce(found->second);
    }
}

} // namespace

void Sweep::clockAnalyze() {
    const detail::MarkGuard guard;
    analyzeSide(
        *this, subdomain->getLaunchRoot(), subdomain->getLaunchLeaves(),
        [](const Pole* leaf) { return leaf->isInput(); }, launchATMapMap);
    analyzeSide(
        *this, subdomain->getLatchRoot(), subdomain->getLatchLeaves(),
        [](const Pole* leaf) { return leaf->isOutput(); }, latchATMapMap);
    analyzer->unmark();
}

void Sweep::clockAnalyze(Pole* root, Pole* pole, PoleSet& path, PoleTimingMap& clockAT) {
    ClockVisitor visitor(*this, root, path, clockAT);
    detail::Walk().run(pole, visitor);
}

// A compensated root starts earlier by the feedback delay: its minimum is minus the minimum feedback, its
// maximum minus the maximum feedback.
void Sweep::updateClockATMapMap(Pole* root, PoleTimingMap& clockAT) {
    TimingMap seed;
    seed[0] = analyzer->hasPLLFeedbackDelay(root)
                  ? Timing(-analyzer->getMinPLLFeedbackDelay(root), -analyzer->getMaxPLLFeedbackDelay(root))
                  : Timing(Delay(0), Delay(0));
    mingle(root->getOpeningPseudoMask() & analyzer->getFalsePathMask(), seed);
    clockAT[root] = std::move(seed);
}

void Sweep::updateClockATMapMap(Edge* edge, PoleTimingMap& clockAT) {
    const auto source = clockAT.find(edge->getSource());
    if (source == clockAT.end())
        return;
    const Pole* target = edge->getTarget();
    TimingMap passing = source->second;
    filter(target->getClosingPseudoMask() & analyzer->getFalsePathMask(), passing);
    addDelay(edge->getMinDelay(), edge->getMaxDelay(), passing);
    sensibilize(edge->getPseudoMask(), passing);
    TimingMap& arrival = clockAT[edge->getTarget()];
    combine(passing, arrival);
    mingle(target->getOpeningPseudoMask(), arrival);
}

} // namespace Vorlen
