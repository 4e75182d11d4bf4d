// The launch, the prolog, and the feedback of PLLs.
#include "ReferenceTool.h"

#include "Pelko/Analyzer.h"
#include "Pelko/Cell.h"
#include "Pelko/Edge.h"
#include "Pelko/Module.h"
#include "Pelko/Subdomain.h"
#include "Ruvex/Console.h"
#include "Ruvex/Exception.h"
#include "Ruvex/Random.h"
#include "Ruvex/Status.h"
#include "Ruvex/Utility.h"

#include <cstdint>
#include <stdexcept>

namespace oracle {

using Pelko::analyzer;
using Pelko::Delay;
using Pelko::Pole;
using Pelko::Subdomain;

bool ReferenceTool::isExhaustive() const { return analyzer->getAnalysisMode().getEffective().getCode() == 3; }

void ReferenceTool::prolog() {
    if (!analyzer)
        throw Ruvex::InvalidRequest(
            Ruvex::InternalError("Null analyzer", Ruvex::Error::locate("Tool", "prolog", 650)));
    reset();
    for (Pelko::FPath* path : analyzer->getFalsePaths())
        if (path->isInsulated())
            for (Pole* pole : path->getPoles())
                pole->insulate();
    const auto paths = analyzer->getCPaths();
    Pelko::PseudoMask::reset(paths.getCount());
    unsigned long number = 0;
    for (Pelko::CPath* path : paths) {
        const Pelko::PseudoMask mask = Pelko::PseudoMask::getBasic(++number);
        path->setPseudoMask(mask);
        if (dynamic_cast<Pelko::FPath*>(path))
            analyzer->setFalsePathMask(analyzer->getFalsePathMask() | mask);
        else if (auto* delayPath = dynamic_cast<Pelko::DPath*>(path); delayPath && delayPath->isMaximum())
            analyzer->setMaxdelayPathMask(analyzer->getMaxdelayPathMask() | mask);
        else if (delayPath)
            analyzer->setMindelayPathMask(analyzer->getMindelayPathMask() | mask);
        else if (dynamic_cast<Pelko::MPath*>(path))
            analyzer->setMulticyclePathMask(analyzer->getMulticyclePathMask() | mask);
    }
    pllFeedbackStem();
}

// --- PLL feedback ---

void ReferenceTool::pllFeedbackStem() {
    loopOpen();
    for (Pelko::PLL* pll : Pelko::cell->getModule()->getPLLs()) {
        Pole* feedback = Pelko::cell->getMainPole(pll->getPin("FBK"));
        if (!feedback || !pll->hasFeedbackCompensation())
            continue;
        Delay minimum = Delay::getUndefined();
        Delay maximum = Delay::getUndefined();
        pllFeedbackStem(feedback, minimum, maximum);
        if (!minimum.isDefined() || !maximum.isDefined())
            continue;
        Pelko::Pin* oscillator = pll->getPin("VCO");
        if (!oscillator || !oscillator->isConnected())
            continue;
        for (Pelko::Pin* receiver : oscillator->getNet()->getReceivers()) {
            auto* generator = dynamic_cast<Pelko::WFG*>(receiver->getInstance());
            if (!generator)
                continue;
            Pelko::Pin* output = generator->getPin("ZO");
            if (Pole* pole = output ? output->getMainPole() : nullptr)
                analyzer->setPLLFeedbackDelay(pole, minimum, maximum);
        }
    }
    loopClose();
    analyzer->unmark();
}

void ReferenceTool::pllFeedbackStem(Pole* pole, Delay& minimum, Delay& maximum) {
    if (pole->isMarked())
        return;
    loopPush(pole);
    if (!pole->isClockSource()) {
        for (Pelko::Edge* edge : pole->getIncomingEdges()) {
            if (minimum.isDefined() && maximum.isDefined())
                break;
            if (isLooping(edge->getSource()))
                continue;
            pllFeedbackStem(edge->getSource(), minimum, maximum);
            minimum += edge->getMinDelay();
            maximum += edge->getMaxDelay();
        }
    } else if (pole->getPin()) {
        auto* generator = dynamic_cast<Pelko::WFG*>(pole->getPin()->getInstance());
        if (generator && generator->hasPLLFeedback())
            minimum = maximum = Delay(0);
    }
    loopPop();
    pole->mark();
}

// --- The launch ---

bool ReferenceTool::launch() {
    Ruvex::setRandomSeed(Ruvex::getDefaultSeed());
    const bool verbose = analyzer->isVerbose();
    if (verbose) {
        Ruvex::console.print("Analyzing project with " + getAlias() + " [" +
                                 Ruvex::getLowered(analyzer->getAnalysisMode()._getLabel()) + " mode]",
                             "");
        Ruvex::console.indent();
        Ruvex::console.openTimer();
    }
    Ruvex::Status status(Ruvex::Status::Running);
    PoleSet clockRoots;
    try {
        try {
            if (!runPhases(clockRoots))
                return true;
            reset();
            status = Ruvex::Status(Ruvex::Status::Completed);
        } catch (const Ruvex::Exception&) {
            throw;
        } catch (...) {
            throw Ruvex::Fatal(Ruvex::InternalError("Analyzing aborted [something strange...]",
                                                    Ruvex::Error::locate("Tool", "launch", 495)));
        }
    } catch (const Ruvex::Interruption& interruption) {
        Ruvex::console.error("Analyzing aborted [" + interruption.getMessage() + "]", "");
    } catch (const Ruvex::Exception& exception) {
        Ruvex::console.error(exception);
    }
    clockRoots.clear();
    if (verbose) {
        Ruvex::console.closeTimer("Analyzing project " + status._getLabel() + " in %");
        Ruvex::console.unindent();
    }
    return status.getCode() == Ruvex::Status::Completed;
}

// Returns false if the run must stop at once, without an epilogue.
bool ReferenceTool::runPhases(PoleSet& clockRoots) {
    prolog();
    if (last_ == Phase::Prolog)
        return false;
    const auto domains = analyzer->getDomains();
    if (domains.isNull() || domains.isEmpty())
        createDomains();
    else
        updateDomains();
    if (analyzer->isDomainsOnly() || last_ == Phase::Domains)
        return false;
    updateRelationship();
    if (last_ == Phase::Relationship)
        return false;
    tagConstrainedPaths();
    if (last_ == Phase::ConstrainedPaths)
        return false;
    const bool exhaustive = isExhaustive();
    for (Pelko::Domain* domain : analyzer->getDomains())
        if (exhaustive || domain->isCritical())
            analyzeDomain(domain, clockRoots);
    if (last_ == Phase::Sweeps)
        return false;
    if (analyzer->isWeightTagging())
        tagWeights(0.5F);
    if (last_ == Phase::Weights)
        return false;
    for (Pole* root : clockRoots)
        analyzer->setPeriod(root, calculatePeriod(root));
    if (last_ == Phase::Periods)
        return false;
    epilog();
    return last_ != Phase::Epilog;
}

// Destroys the sweeps, and clears the marks, that an exception leaves behind.
void ReferenceTool::analyzeDomain(Pelko::Domain* domain, PoleSet& clockRoots) {
    Sweeps sweeps;
    try {
        analyzeDomain(domain, clockRoots, sweeps);
    } catch (...) {
        while (!sweeps.empty())
            endFirst(sweeps);
        analyzer->unmark();
        throw;
    }
}

void ReferenceTool::endFirst(Sweeps& sweeps) {
    if (listener_)
        listener_(*sweeps.front());
    sweeps.pop_front();
}

namespace {

// Specials give no candidate when the arrival would have to be scaled.
std::optional<Delay> scaledArrival(const Delay& arrival, std::int64_t percentage) {
    if (!arrival.isOrdinary())
        return std::nullopt;
    return Delay::saturate(std::int64_t{int(arrival)} * 100 / percentage);
}

// The period that the latest arrival of a same-clock subdomain asks for.
std::optional<Delay> candidatePeriod(const Subdomain* subdomain) {
    const Delay& arrival = subdomain->getLAT();
    const int launch = subdomain->getLaunchClockMode().getCode();
    const int latch = subdomain->getLatchClockMode().getCode();
    const auto duty = static_cast<std::int64_t>(analyzer->getDutyRatio(subdomain->getLaunchRoot()));
    if ((launch == 1 && latch == 1) || (launch == 2 && latch == 2))
        return arrival;
    if (launch == 1 && latch == 2)
        return scaledArrival(arrival, 100 - duty);
    if (launch == 2 && latch == 1)
        return scaledArrival(arrival, duty);
    return std::nullopt;
}

Delay shareOf(const Delay& period, std::int64_t percentage) {
    return period.isOrdinary() ? Delay::saturate(std::int64_t{int(period)} * percentage / 100) : period;
}

} // namespace

void ReferenceTool::analyzeDomain(Pelko::Domain* domain, PoleSet& clockRoots, Sweeps& sweeps) {
    Delay best = Delay::getMinimum();
    for (Subdomain* subdomain : domain->getSubdomains()) {
        sweeps.push_back(std::make_unique<ReferenceSweep>(subdomain));
        sweeps.back()->clockAnalyze();
        sweeps.back()->arrivalAnalyze();
        Pole* root = subdomain->getLaunchRoot();
        if (!root || root != subdomain->getLatchRoot())
            continue;
        clockRoots.insert(root);
        const std::optional<Delay> candidate = candidatePeriod(subdomain);
        if (candidate && candidate->isDefined() && (!best.isDefined() || best < *candidate))
            best = *candidate;
    }
    while (!sweeps.empty()) {
        ReferenceSweep& sweep = *sweeps.front();
        setMissingRelations(sweep.getSubdomain(), best);
        sweep.requireAnalyze();
        if (analyzer->isLongestPath())
            sweep.searchLongestPaths(analyzer->getPathLimit(), analyzer->getPathCount());
        if (analyzer->isShortestPath())
            sweep.searchShortestPaths(analyzer->getPathLimit(), analyzer->getPathCount());
        sweep.iodelaySlackAnalyze();
        if (analyzer->isSlackTagging() && !domain->isAsynchronous())
            sweep.tagSlacks();
        endFirst(sweeps);
    }
}

// If a clock has no period, its subdomain gets the relation that its own arrivals, or those of its clock, ask
// for.
void ReferenceTool::setMissingRelations(Subdomain* subdomain, const Delay& best) {
    if (subdomain->getSetupRelation().isDefined())
        return;
    subdomain->setSetupRelation(subdomain->getLAT());
    const auto duty = static_cast<std::int64_t>(analyzer->getDutyRatio(subdomain->getLatchRoot()));
    if (!best.isDefined() || best == Delay::getMinimum())
        return;
    const Delay high = shareOf(best, duty);
    const Delay low = shareOf(best, 100 - duty);
    const int launch = subdomain->getLaunchClockMode().getCode();
    const int latch = subdomain->getLatchClockMode().getCode();
    if ((launch == 1 && latch == 1) || (launch == 2 && latch == 2)) {
        subdomain->setSetupRelation(best);
    } else if (launch == 1 && latch == 2) {
        subdomain->setSetupRelation(low);
        subdomain->setHoldRelation(-high);
    } else if (launch == 2 && latch == 1) {
        subdomain->setSetupRelation(high);
        subdomain->setHoldRelation(-low);
    }
}

} // namespace oracle
