// The clock stems: for every clock pole, the clock sources and primary inputs that drive it.
//
// A pole is marked before its fan-in is walked, and is walked once. Stems are merged from a memo
// (detail/StemMemo.h). A clock pole is unmarked before its own walk, because an earlier walk may have passed
// it. The walk does not stop at a clock pole: a clock that is derived from a register of another clock gets
// the stems of that clock, and a remark.
#include "Pelko/Analyzer.h"
#include "Pelko/Cell.h"
#include "Ruvex/Console.h"
#include "Vorlen/Tool.h"
#include "Vorlen/detail/EventPump.h"
#include "Vorlen/detail/Messages.h"
#include "Vorlen/detail/StemMemo.h"
#include "Vorlen/detail/Walk.h"

namespace Vorlen {

namespace {

template <class Stems>
class ClockVisitor {
public:
    ClockVisitor(Tool& tool, Stems& stems, unsigned long& loops)
        : tool_(tool), stems_(stems), loops_(loops) {}

    void setRoot(const Pelko::Pole* root) { root_ = root; }

    bool enter(Pelko::Pole* pole) {
        if (pole->isMarked())
            return false;
        pole->mark();
        tool_.loopPush(pole);
        if (isSource(pole))
            stems_.addSelf(pole);
        return true;
    }

    Pelko::Edges fan(const Pelko::Pole* pole) const {
        return isSource(pole) ? Pelko::Edges() : pole->getIncomingEdges();
    }

    Pelko::Pole* follow(const Pelko::Edge* edge) {
        if (!edge->isActive())
            return nullptr;
        Pelko::Pole* source = edge->getSource();
        if (source->isClock() && !Pelko::Analyzer::_muted)
            Ruvex::console.remark(detail::messages::generatedClock + root_->getNetUserName() +
                                      detail::messages::generatedClockBy + source->getNetUserName(),
                                  "");
        if (!tool_.isLooping(source))
            return source;
        ++loops_;
        tool_.loopCutting(source);
        return nullptr;
    }

    void back(Pelko::Edge* edge) { stems_.pass(edge); }

    void leave(Pelko::Pole*) {
        tool_.loopPop();
        pump_();
    }

private:
    static bool isSource(const Pelko::Pole* pole) { return pole->isInput() || pole->isClockSource(); }

    Tool& tool_;
    Stems& stems_;
    unsigned long& loops_;
    const Pelko::Pole* root_ = nullptr;
    detail::WalkPump pump_;
};

// A port's stem is the reference clock of its constraint.
template <class GetConstraint>
void addPortStems(const Pelko::Poles& ports, StemPoleSetMap& stems, GetConstraint getConstraint) {
    for (Pelko::Pole* port : ports) {
        if (stems.count(port) != 0)
            continue;
        const Pelko::IOConstraint constraint = getConstraint(port);
        if (constraint.isDefined())
            stems[port].insert(constraint.getClockRoot());
    }
}

} // namespace

void Tool::clockStem(StemPoleSetMap& stems) {
    const detail::MarkGuard guard;
    loopOpen();
    detail::PhaseStems work;
    unsigned long loops = 0;
    ClockVisitor visitor(*this, work, loops);
    detail::Walk walk;
    for (Pelko::Pole* pole : Pelko::cell->getPoles()) {
        if (pole->isClock() && stems.count(pole) == 0) {
            pole->unmark();
            visitor.setRoot(pole);
            walk.run(pole, visitor);
            if (const auto* stem = work.find(pole))
                stems[pole] = PoleSet(stem->begin(), stem->end());
        }
        if (pole->isClockSource())
            stems[pole].insert(pole);
    }
    addPortStems(Pelko::analyzer->getConstrainedInputs(), stems,
                 [](Pelko::Pole* port) { return Pelko::analyzer->getInputConstraint(port); });
    addPortStems(Pelko::analyzer->getConstrainedOutputs(), stems,
                 [](Pelko::Pole* port) { return Pelko::analyzer->getOutputConstraint(port); });
    loopClose();
    Pelko::analyzer->unmark();
    warnOfLoops(detail::messages::clockLoops, loops);
}

void Tool::clockStem(Pelko::Pole* pole, StemPoleSetMap& work, Pelko::Pole* root, unsigned long& loops) {
    detail::CallerStems stems(work);
    ClockVisitor visitor(*this, stems, loops);
    visitor.setRoot(root);
    detail::Walk().run(pole, visitor);
}

} // namespace Vorlen
