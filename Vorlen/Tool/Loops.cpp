// The loop protocol: keeps the poles of the current descent as a stack and as a set, and breaks a loop that
// closes on it.
//
// Push, pop and look-up are O(1); a cut costs a walk of the loop.
#include "Pelko/Edge.h"
#include "Vorlen/Tool.h"
#include "Vorlen/detail/Faults.h"
#include "Vorlen/detail/Work.h"

#include <iterator>

namespace Vorlen {

using detail::Fault;
using detail::require;

void Tool::loopOpen() {
    require(!loopOpen_, Fault::LoopAlreadyOpened);
    loopOpen_ = true;
}

void Tool::loopPush(Pelko::Pole* pole) {
    require(pole, Fault::PushNullPole);
    loopStack_.push_front(pole);
    loopPoleSet_.insert(pole);
}

void Tool::loopPop() {
    require(!loopStack_.empty(), Fault::LoopEmptyStack);
    loopPoleSet_.erase(loopStack_.front());
    loopStack_.pop_front();
}

bool Tool::isLooping(Pelko::Pole* pole) const {
    require(pole, Fault::LoopingNullPole);
    return loopPoleSet_.contains(pole);
}

// Walks go backwards, so of two neighbours on the stack the upper one is a source of the lower. The cut is
// made at the merge point nearest to the top that is not a clock pole: the arc between it and the pole above
// it becomes inactive. The pole below the loop counts as well.
void Tool::loopCutting(Pelko::Pole* pole) {
    require(isLooping(pole), Fault::CuttingNoLooping);
    for (auto upper = loopStack_.begin();; ++upper) {
        const auto lower = std::next(upper);
        if (lower == loopStack_.end())
            return;
        detail::visitArcs(1);
        const bool isMerge = !Ruvex::TailCollection<Pelko::Edge*>((*lower)->getIncomingEdges()).isEmpty();
        if (!isMerge) {
            (*upper)->unmark();
        } else if (!(*lower)->isClock()) {
            if (Pelko::Edge* edge = (*lower)->getIncomingEdge(*upper))
                edge->disactivate();
            return;
        }
        if (*upper == pole)
            break;
    }
    for (Pelko::Pole* stacked : loopStack_)
        stacked->mark();
}

Ruvex::Collection<Pelko::Pole*> Tool::getLoopPoles() const {
    return Ruvex::ListCollection<Pelko::Pole*>(loopStack_);
}

void Tool::loopClose() {
    require(loopOpen_, Fault::LoopNotOpened);
    reset();
}

void Tool::reset() {
    loopPoleSet_.clear();
    loopStack_.clear();
    loopOpen_ = false;
}

} // namespace Vorlen
