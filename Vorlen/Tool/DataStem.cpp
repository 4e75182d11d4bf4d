// The data stems: for every end point, the launch poles that reach it. Each such pair is passed to domain
// creation.
//
// A pole is marked after its whole fan-in has been walked, because end points are reached again from other
// end points. (The clock walk marks a pole before.) The walk stops at inputs, clock poles and clock sources,
// so registers launch from their clock pins.
//
// If the design has no loops, all pairs are processed at once (Pairing.h). Otherwise the pairs are walked,
// because the walk determines where a loop is cut.
#include "Pelko/Analyzer.h"
#include "Pelko/Cell.h"
#include "Vorlen/Tool.h"
#include "Vorlen/Tool/Pairing.h"
#include "Vorlen/detail/EventPump.h"
#include "Vorlen/detail/Messages.h"
#include "Vorlen/detail/StemMemo.h"
#include "Vorlen/detail/Walk.h"
#include "Vorlen/detail/Work.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace Vorlen {

namespace {

// Whether a stem ends at the pole. Registers launch from their clock poles.
bool isLaunch(const Pelko::Pole* pole) { return pole->isInput() || pole->isClock() || pole->isClockSource(); }

template <class Stems>
class DataVisitor {
public:
    DataVisitor(Tool& tool, Stems& stems, unsigned long& loops) : tool_(tool), stems_(stems), loops_(loops) {}

    bool enter(Pelko::Pole* pole) {
        if (pole->isMarked())
            return false;
        tool_.loopPush(pole);
        if (isLaunch(pole))
            stems_.addSelf(pole);
        return true;
    }

    Pelko::Edges fan(const Pelko::Pole* pole) const {
        return isLaunch(pole) ? Pelko::Edges() : pole->getIncomingEdges();
    }

    Pelko::Pole* follow(const Pelko::Edge* edge) {
        if (!edge->isActive())
            return nullptr;
        Pelko::Pole* source = edge->getSource();
        if (!tool_.isLooping(source))
            return source;
        ++loops_;
        tool_.loopCutting(source);
        return nullptr;
    }

    void back(Pelko::Edge* edge) { stems_.pass(edge); }

    void leave(Pelko::Pole* pole) {
        tool_.loopPop();
        pole->mark();
        pump_();
    }

private:
    Tool& tool_;
    Stems& stems_;
    unsigned long& loops_;
    detail::WalkPump pump_;
};

bool isEndPoint(const Pelko::Pole* pole) { return pole->isOutput() || pole->isCheck(); }

// Whether a later walk may return over an arc from this pole, and merge its stem.
bool isPassedOn(const Pelko::Pole* pole) {
    for (const Pelko::Edge* edge : pole->getOutgoingEdges()) {
        detail::visitArcs(1);
        if (edge->isActive())
            return true;
    }
    return false;
}

// Passes every pair of launch pole and end point to domain creation. Returns the number of loops.
unsigned long walkPairs(Tool& tool, const StemPoleSetMap& clockStems) {
    detail::PhaseStems work;
    unsigned long loops = 0;
    DataVisitor visitor(tool, work, loops);
    detail::Walk walk;
    for (Pelko::Pole* pole : Pelko::cell->getPoles()) {
        if (!isEndPoint(pole))
            continue;
        walk.run(pole, visitor);
        Pelko::Pole* latch = pole->getMainPole();
        if (const auto* stem = work.find(pole))
            for (Pelko::Pole* launch : *stem)
                tool.createDomains(clockStems, launch, latch);
        if (!isPassedOn(pole))
            work.release(pole);
    }
    return loops;
}

// Processes due host events at the same point as a walk would: at the first pole that the walk leaves, with
// the poles before it on the loop stack.
void pumpAtFirstLeave(Tool& tool, const std::vector<Pelko::Pole*>& ends) {
    if (!detail::isPumpDue())
        return;
    const auto first =
        std::find_if(ends.begin(), ends.end(), [](const Pelko::Pole* end) { return !end->isMarked(); });
    if (first == ends.end())
        return;
    Pelko::Pole* next = *first;
    while (next) {
        Pelko::Pole* pole = std::exchange(next, nullptr);
        tool.loopPush(pole);
        if (!isLaunch(pole))
            for (const Pelko::Edge* edge : pole->getIncomingEdges())
                if (!next && edge->isActive() && !edge->getSource()->isMarked() &&
                    !tool.isLooping(edge->getSource()))
                    next = edge->getSource();
    }
    tool.loopPop();
    detail::pump();
    while (!tool.getLoopPoles().isEmpty())
        tool.loopPop();
}

} // namespace

void Tool::dataStem(const StemPoleSetMap& clockStems) {
    const detail::MarkGuard guard;
    loopOpen();
    std::vector<Pelko::Pole*> ends;
    for (Pelko::Pole* pole : Pelko::cell->getPoles())
        if (isEndPoint(pole))
            ends.push_back(pole);
    pumpAtFirstLeave(*this, ends);
    Pairing pairing(*this, clockStems);
    unsigned long loops = 0;
    const bool isRead = pairing.read(ends, isLaunch);
    if (!isRead || !pairing.run()) {
        if (isRead)
            Pelko::analyzer->unmark();
        loops = walkPairs(*this, clockStems);
    }
    loopClose();
    Pelko::analyzer->unmark();
    warnOfLoops(detail::messages::dataLoops, loops);
}

void Tool::dataStem(Pelko::Pole* pole, StemPoleSetMap& work, unsigned long& loops) {
    detail::CallerStems stems(work);
    DataVisitor visitor(*this, stems, loops);
    detail::Walk().run(pole, visitor);
}

void Tool::updateStemPoleSetMap(Pelko::Edge* edge, StemPoleSetMap& work) {
    detail::CallerStems(work).pass(edge);
}

} // namespace Vorlen
