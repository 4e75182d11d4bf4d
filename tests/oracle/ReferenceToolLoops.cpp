// The loop protocol of all walks: the stack of the poles on the way down, and the cutting of a loop that was
// just closed.
#include "ReferenceTool.h"

#include "Pelko/Analyzer.h"
#include "Pelko/Edge.h"
#include "Ruvex/Console.h"
#include "Ruvex/Exception.h"

#include <iterator>

namespace oracle {

using Pelko::Pole;

namespace {

[[noreturn]] void fail(const std::string& message, const std::string& function, unsigned line) {
    throw Ruvex::InvalidRequest(Ruvex::InternalError(message, Ruvex::Error::locate("Tool", function, line)));
}

} // namespace

void ReferenceTool::loopOpen() {
    if (loopOpen_)
        fail("Already opened", "loopOpen", 525);
    loopOpen_ = true;
}

void ReferenceTool::loopClose() {
    if (!loopOpen_)
        fail("Not opened", "loopClose", 537);
    reset();
}

void ReferenceTool::reset() {
    loopPoleSet_.clear();
    loopStack_.clear();
    loopOpen_ = false;
}

void ReferenceTool::loopPush(Pole* pole) {
    if (!pole)
        fail("Null pole", "loopPush", 566);
    loopStack_.push_front(pole);
    loopPoleSet_.insert(pole);
}

void ReferenceTool::loopPop() {
    if (loopStack_.empty())
        fail("Empty stack", "loopPop", 552);
    loopPoleSet_.erase(loopStack_.front());
    loopStack_.pop_front();
}

bool ReferenceTool::isLooping(Pole* pole) const {
    if (!pole)
        fail("Null pole", "isLooping", 173);
    return loopPoleSet_.count(pole) != 0;
}

// Cuts a loop at the merge point, not a clock pole, that is nearest to the top of the stack: at the arc by
// which the walk entered it. If no arc can be cut, the whole stack is marked.
void ReferenceTool::loopCutting(Pole* pole) {
    if (!isLooping(pole))
        fail("No looping", "loopCutting", 580);
    auto upper = loopStack_.begin();
    for (auto lower = std::next(upper); lower != loopStack_.end(); ++upper, ++lower) {
        if ((*lower)->getIncomingEdges().getCount() <= 1) {
            (*upper)->unmark();
        } else if (!(*lower)->isClock()) {
            (*lower)->getIncomingEdge(*upper)->disactivate();
            return;
        }
        if (*upper == pole) {
            for (Pole* marked : loopStack_)
                marked->mark();
            return;
        }
    }
}

void ReferenceTool::warnOfLoops(unsigned long loops, const std::string& analysis) const {
    if (loops == 0 || Pelko::Analyzer::_muted)
        return;
    if (loops == 1)
        Ruvex::console.warning("1 combinatorial loop detected during " + analysis + " analysis.", "");
    else
        Ruvex::console.warning(
            std::to_string(loops) + " combinatorial loops detected during " + analysis + " analysis.", "");
}

} // namespace oracle
