// The data stems: for every end point, the launch poles that reach it. Each such pair goes to domain
// creation.
//
// A pole is marked when its whole fan-in has been walked (the clock walk marks before): end points are
// reached again from other end points. The walk stops at inputs, clock poles and clock sources, so registers
// launch from their clock pins.
#include "Pelko/Analyzer.h"
#include "Pelko/Cell.h"
#include "Vorlen/Tool.h"
#include "Vorlen/detail/EventPump.h"
#include "Vorlen/detail/Messages.h"
#include "Vorlen/detail/StemMemo.h"
#include "Vorlen/detail/Walk.h"

namespace Vorlen {

namespace {

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
    static bool isLaunch(const Pelko::Pole* pole) {
        return pole->isInput() || pole->isClock() || pole->isClockSource();
    }

    Tool& tool_;
    Stems& stems_;
    unsigned long& loops_;
    detail::WalkPump pump_;
};

bool isEndPoint(const Pelko::Pole* pole) { return pole->isOutput() || pole->isCheck(); }

// Whether a later walk may still come back over an arc from this pole, and merge its stem.
bool isPassedOn(const Pelko::Pole* pole) {
    for (const Pelko::Edge* edge : pole->getOutgoingEdges())
        if (edge->isActive())
            return true;
    return false;
}

} // namespace

void Tool::dataStem(const StemPoleSetMap& clockStems) {
    const detail::MarkGuard guard;
    loopOpen();
    detail::PhaseStems work;
    unsigned long loops = 0;
    DataVisitor visitor(*this, work, loops);
    detail::Walk walk;
    for (Pelko::Pole* pole : Pelko::cell->getPoles()) {
        if (!isEndPoint(pole))
            continue;
        walk.run(pole, visitor);
        Pelko::Pole* latch = pole->getMainPole();
        if (const auto* stem = work.find(pole))
            for (Pelko::Pole* launch : *stem)
                createDomains(clockStems, launch, latch);
        if (!isPassedOn(pole))
            work.release(pole);
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
