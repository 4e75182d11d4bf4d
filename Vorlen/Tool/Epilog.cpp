// The epilogue: marks the poles of arcs with a negative or zero slack, and prints a remark for each domain
// with a reported path through a clock pole. Muting does not silence the remark.
#include "Pelko/Analyzer.h"
#include "Pelko/Cell.h"
#include "Pelko/Edge.h"
#include "Pelko/Path.h"
#include "Ruvex/Console.h"
#include "Vorlen/Tool.h"
#include "Vorlen/detail/Messages.h"

namespace Vorlen {

using Pelko::Delay;

namespace {

bool isFailure(const Delay& slack) { return slack.isDefined() && int(slack) <= int(Delay(0)); }

// Whether a path crosses a clock pole. Starting at one does not count.
bool crossClock(const Ruvex::Collection<Pelko::Path*>& paths) {
    for (const Pelko::Path* path : paths)
        for (const Pelko::Edge* edge : path->getEdges())
            if (edge->getTarget()->isClock())
                return true;
    return false;
}

} // namespace

void Tool::epilog() {
    for (const Pelko::Edge* edge : Pelko::cell->getEdges())
        if (isFailure(edge->getSlack())) {
            edge->getSource()->mark();
            edge->getTarget()->mark();
        }
    for (const Pelko::Domain* domain : Pelko::analyzer->getDomains())
        if (crossClock(domain->getLongestPaths()) || crossClock(domain->getShortestPaths()))
            Ruvex::console.remark(domain->getAlias() + detail::messages::intermediateClock, "");
}

} // namespace Vorlen
