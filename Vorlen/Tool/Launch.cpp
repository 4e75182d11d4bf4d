// The launch sequence: calls the phases in order, and is the only place that catches their exceptions.
//
// Only the sweeps of one domain exist at a time, and each is destroyed right after its last phase. An
// exception destroys the sweeps of the domain that it came from; nothing else is rolled back.
#include "Pelko/Analyzer.h"
#include "Pelko/Subdomain.h"
#include "Ruvex/Console.h"
#include "Ruvex/Random.h"
#include "Ruvex/Status.h"
#include "Ruvex/Utility.h"
#include "Vorlen/Cone/SlotTable.h"
#include "Vorlen/Tool.h"
#include "Vorlen/Tool/ArrivalPeriod.h"
#include "Vorlen/Tool/DomainSweeps.h"
#include "Vorlen/detail/EventPump.h"
#include "Vorlen/detail/Faults.h"
#include "Vorlen/detail/Messages.h"

#include <cxxabi.h>

namespace Vorlen {

using Pelko::analyzer;
using Pelko::Delay;

namespace {

void openReport(const Tool& tool) {
    Ruvex::console.print(detail::messages::bannerOpening + tool.getAlias() + detail::messages::bannerMode +
                             Ruvex::getLowered(analyzer->getAnalysisMode()._getLabel()) +
                             detail::messages::bannerClosing,
                         "");
    Ruvex::console.indent();
    Ruvex::console.openTimer();
}

void closeReport(const Ruvex::Status& status) {
    Ruvex::console.closeTimer(detail::messages::closingOpening + status._getLabel() +
                              detail::messages::closingTime);
    Ruvex::console.unindent();
}

// Clock and data arrivals. Returns the period that the latest arrival asks for, if one clock launches and
// latches; adds that clock's root to `clockRoots`.
Delay propagate(Sweep& sweep, PoleSet& clockRoots) {
    sweep.clockAnalyze();
    sweep.arrivalAnalyze();
    Pelko::Pole* root = sweep.getSubdomain()->getLaunchRoot();
    if (!root || root != sweep.getSubdomain()->getLatchRoot())
        return Delay::getUndefined();
    clockRoots.insert(root);
    return candidatePeriod(*sweep.getSubdomain());
}

// The phases of a sweep after the arrivals of its whole domain are known.
void finish(Sweep& sweep, const Delay& best, bool tagsSlacks) {
    relateToArrival(*sweep.getSubdomain(), best);
    sweep.requireAnalyze();
    if (analyzer->isLongestPath())
        sweep.searchLongestPaths(analyzer->getPathLimit(), analyzer->getPathCount());
    if (analyzer->isShortestPath())
        sweep.searchShortestPaths(analyzer->getPathLimit(), analyzer->getPathCount());
    sweep.iodelaySlackAnalyze();
    if (tagsSlacks)
        sweep.tagSlacks();
}

// The arrivals of all subdomains come first, because the best candidate period is that of the whole domain.
void analyzeDomain(const Pelko::Domain& domain, PoleSet& clockRoots) {
    Delay best = Delay::getMinimum();
    DomainSweeps sweeps;
    for (Pelko::Subdomain* subdomain : domain.getSubdomains()) {
        const Delay candidate = propagate(*sweeps.add(subdomain), clockRoots);
        if (candidate.isDefined() && best < candidate)
            best = candidate;
    }
    sweeps.finishEach(
        [&](Sweep& sweep) { finish(sweep, best, analyzer->isSlackTagging() && !domain.isAsynchronous()); });
}

// The domains that the analysis mode selects. Returns the clocks that launch and latch one subdomain.
PoleSet analyzeDomains(const Tool& tool) {
    const detail::SlotTable::Keeping keepsTables;
    PoleSet clockRoots;
    const bool exhaustive = tool.isExhaustive();
    for (const Pelko::Domain* domain : analyzer->getDomains())
        if (exhaustive || domain->isCritical())
            analyzeDomain(*domain, clockRoots);
    return clockRoots;
}

// The phases, in order. Returns false if the run stops after the domains.
bool runPhases(Tool& tool) {
    tool.prolog();
    if (analyzer->getDomains().isEmpty())
        tool.createDomains();
    else
        tool.updateDomains();
    if (analyzer->isDomainsOnly())
        return false;
    detail::pump();
    tool.updateRelationship();
    detail::pump();
    tool.tagConstrainedPaths();
    detail::pump();
    const PoleSet clockRoots = analyzeDomains(tool);
    if (analyzer->isWeightTagging())
        tool.tagWeights(0.5F);
    for (Pelko::Pole* root : clockRoots)
        analyzer->setPeriod(root, tool.calculatePeriod(root));
    tool.epilog();
    tool.reset();
    return true;
}

// An exception that is not the framework's becomes one. The cancellation of a thread passes as it is: it has
// no object, so the reference that names it is a null one. The sanitizer's check for that is off in this
// function, which must not be inlined for that.
[[gnu::noinline, gnu::no_sanitize("null")]] bool runGuarded(Tool& tool) {
    try {
        return runPhases(tool);
    } catch (const Ruvex::Exception&) {
        throw;
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (...) {
        detail::raise(detail::Fault::AnalyzingAborted);
    }
}

} // namespace

bool Tool::launch() {
    const Run run(this);
    Ruvex::setRandomSeed(Ruvex::getDefaultSeed());
    const bool verbose = analyzer && analyzer->isVerbose();
    if (verbose)
        openReport(*this);
    Ruvex::Status status(Ruvex::Status::Running);
    try {
        if (!runGuarded(*this))
            return true;
        status = Ruvex::Status(Ruvex::Status::Completed);
    } catch (const Ruvex::Interruption& interruption) {
        Ruvex::console.error(detail::messages::abortedOpening + interruption.getMessage() +
                                 detail::messages::abortedClosing,
                             "");
    } catch (const Ruvex::Exception& exception) {
        Ruvex::console.error(exception);
    }
    if (verbose)
        closeReport(status);
    return status.getCode() == Ruvex::Status::Completed;
}

} // namespace Vorlen
