// The launch sequence: the phases in order, and the one place that catches their exceptions.
//
// Only one domain's sweeps exist at a time, and a sweep ends right after its last phase; an exception ends
// those of the domain that it came from. Otherwise nothing is rolled back.
#include "Pelko/Analyzer.h"
#include "Pelko/Subdomain.h"
#include "Ruvex/Console.h"
#include "Ruvex/Random.h"
#include "Ruvex/Status.h"
#include "Ruvex/Utility.h"
#include "Vorlen/Cone/SlotTable.h"
#include "Vorlen/Sweep.h"
#include "Vorlen/Tool.h"
#include "Vorlen/detail/EventPump.h"
#include "Vorlen/detail/Faults.h"
#include "Vorlen/detail/Messages.h"

#include <cxxabi.h>
#include <list>
#include <optional>

namespace Vorlen {

using Pelko::analyzer;
using Pelko::ClockMode;
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

// A time by a percentage: 64 bits wide, truncated, saturating. A special is never scaled.
Delay scale(const Delay& delay, std::int64_t factor, std::int64_t divisor) {
    return delay.isOrdinary() ? Delay::saturate(int(delay) * factor / divisor) : delay;
}

enum class Edges { Same, FallingToRising, RisingToFalling, Other };

Edges edgesOf(const Pelko::Subdomain& subdomain) {
    const ClockMode::Code launch = subdomain.getLaunchClockMode().getCode();
    const ClockMode::Code latch = subdomain.getLatchClockMode().getCode();
    if (launch == ClockMode::None || latch == ClockMode::None)
        return Edges::Other;
    if (launch == latch)
        return Edges::Same;
    return launch == ClockMode::Falling ? Edges::FallingToRising : Edges::RisingToFalling;
}

// The period that the latest arrival of a same-clock subdomain asks for; undefined for none. A transfer
// within one phase stands for a whole period; a special arrival asks for none there, and so does a phase of
// no length.
Delay candidatePeriod(const Pelko::Subdomain& subdomain, std::int64_t dutyRatio) {
    const Delay arrival = subdomain.getLAT();
    const Edges edges = edgesOf(subdomain);
    if (edges == Edges::Same)
        return arrival;
    const std::int64_t phase = edges == Edges::FallingToRising ? 100 - dutyRatio : dutyRatio;
    if (edges == Edges::Other || phase == 0 || !arrival.isOrdinary())
        return Delay::getUndefined();
    return scale(arrival, 100, phase);
}

// A subdomain whose clock has no period is held against the best candidate of its domain, or else against its
// own latest arrival.
void relateToArrival(Pelko::Subdomain& subdomain, const Delay& best) {
    if (subdomain.getSetupRelation().isDefined())
        return;
    subdomain.setSetupRelation(subdomain.getLAT());
    if (!best.isDefined() || best == Delay::getMinimum())
        return;
    const auto dutyRatio = static_cast<std::int64_t>(analyzer->getDutyRatio(subdomain.getLatchRoot()));
    const Delay high = scale(best, dutyRatio, 100);
    const Delay low = scale(best, 100 - dutyRatio, 100);
    switch (edgesOf(subdomain)) {
    case Edges::Same:
        subdomain.setSetupRelation(best);
        break;
    case Edges::FallingToRising:
        subdomain.setSetupRelation(low);
        subdomain.setHoldRelation(-high);
        break;
    case Edges::RisingToFalling:
        subdomain.setSetupRelation(high);
        subdomain.setHoldRelation(-low);
        break;
    case Edges::Other:
        break;
    }
}

// The sweeps of one domain, in order of creation. Those that have not ended by themselves end with it; until
// then nobody else destroys them.
class DomainSweeps {
public:
    DomainSweeps() = default;
    DomainSweeps(const DomainSweeps&) = delete;
    DomainSweeps& operator=(const DomainSweeps&) = delete;
    ~DomainSweeps() {
        for (Driven& driven : sweeps_) {
            driven.keep.reset();
            if (driven.sweep)
                Sweep::abandon(driven.sweep);
        }
    }

    // The place comes first: for want of memory for it, no sweep is left behind.
    Sweep* add(Pelko::Subdomain* subdomain) {
        Driven& place = sweeps_.emplace_back();
        place.sweep = Sweep::create(subdomain);
        place.keep.emplace(place.sweep);
        return place.sweep;
    }

    template <class Finish>
    void finishEach(Finish finish) {
        for (Driven& driven : sweeps_) {
            finish(*driven.sweep);
            driven.keep.reset();
            driven.sweep->destroy();
            driven.sweep = nullptr;
            detail::pump();
        }
    }

private:
    struct Driven {
        Sweep* sweep = nullptr;
        std::optional<Pelko::Object::Keep> keep;
    };

    std::list<Driven> sweeps_;
};

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

// First the arrivals of all subdomains, since the best candidate period is the domain's; then each sweep to
// its end.
void analyzeDomain(const Pelko::Domain& domain, PoleSet& clockRoots) {
    Delay best = Delay::getMinimum();
    DomainSweeps sweeps;
    for (Pelko::Subdomain* subdomain : domain.getSubdomains()) {
        Sweep* sweep = sweeps.add(subdomain);
        sweep->clockAnalyze();
        sweep->arrivalAnalyze();
        Pelko::Pole* root = subdomain->getLaunchRoot();
        if (!root || root != subdomain->getLatchRoot())
            continue;
        clockRoots.insert(root);
        const Delay candidate =
            candidatePeriod(*subdomain, static_cast<std::int64_t>(analyzer->getDutyRatio(root)));
        if (candidate.isDefined() && best < candidate)
            best = candidate;
    }
    sweeps.finishEach(
        [&](Sweep& sweep) { finish(sweep, best, analyzer->isSlackTagging() && !domain.isAsynchronous()); });
}

// The run, from the prolog to the epilogue. Gives false where it stops after the domains.
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
    const detail::SlotTable::Keeping keepsTables;
    PoleSet clockRoots;
    const bool exhaustive = tool.isExhaustive();
    for (const Pelko::Domain* domain : analyzer->getDomains())
        if (exhaustive || domain->isCritical())
            analyzeDomain(*domain, clockRoots);
    if (analyzer->isWeightTagging())
        tool.tagWeights(0.5F);
    for (Pelko::Pole* root : clockRoots)
        analyzer->setPeriod(root, tool.calculatePeriod(root));
    tool.epilog();
    tool.reset();
    return true;
}

// What is no exception of the framework becomes one; a thread's cancellation goes on as it is. It has no
// object, so that the reference which names it is a null one; checks for that are off here, and stay so only
// where the function is not inlined.
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
