// Clock stems, data stems, and the domains that result from them.
#include "ReferenceTool.h"

#include "Pelko/Analyzer.h"
#include "Pelko/Cell.h"
#include "Pelko/Edge.h"
#include "Pelko/Subdomain.h"
#include "Ruvex/Console.h"
#include "Ruvex/Utility.h"

#include <vector>

namespace oracle {

using Pelko::analyzer;
using Pelko::ClockMode;
using Pelko::Domain;
using Pelko::Edge;
using Pelko::IOConstraint;
using Pelko::Pole;
using Pelko::Subdomain;

// --- Clock stems ---

void ReferenceTool::clockStem(StemPoleSetMap& stems) {
    loopOpen();
    StemPoleSetMap work;
    unsigned long loops = 0;
    for (Pole* pole : Pelko::cell->getPoles()) {
        if (pole->isClock() && stems.count(pole) == 0) {
            pole->unmark();
            clockStem(pole, work, pole, loops);
            if (work.count(pole) != 0)
                stems[pole] = work[pole];
        }
        if (pole->isClockSource())
            stems[pole].insert(pole);
    }
    for (Pole* pole : analyzer->getConstrainedInputs())
        if (const IOConstraint constraint = analyzer->getInputConstraint(pole);
            stems.count(pole) == 0 && constraint.isDefined())
            stems[pole].insert(constraint.getClockRoot());
    for (Pole* pole : analyzer->getConstrainedOutputs())
        if (const IOConstraint constraint = analyzer->getOutputConstraint(pole);
            stems.count(pole) == 0 && constraint.isDefined())
            stems[pole].insert(constraint.getClockRoot());
    loopClose();
    analyzer->unmark();
    warnOfLoops(loops, "clock paths");
}

void ReferenceTool::clockStem(Pole* pole, StemPoleSetMap& work, Pole* root, unsigned long& loops) {
    if (pole->isMarked())
        return;
    pole->mark();
    loopPush(pole);
    if (pole->isInput() || pole->isClockSource()) {
        work[pole].insert(pole);
    } else {
        for (Edge* edge : pole->getIncomingEdges()) {
            if (!edge->isActive())
                continue;
            Pole* source = edge->getSource();
            if (source->isClock() && !Pelko::Analyzer::_muted)
                Ruvex::console.remark(
                    "Generated clock " + root->getNetUserName() + " by " + source->getNetUserName(), "");
            if (isLooping(source)) {
                ++loops;
                loopCutting(source);
            } else {
                clockStem(source, work, root, loops);
                updateStemPoleSetMap(edge, work);
            }
        }
    }
    loopPop();
}

// --- Data stems ---

// A pair that makes no domain stops the phase and leaves no marks behind. The walk stays open until the next
// reset.
void ReferenceTool::dataStem(const StemPoleSetMap& clockStems) {
    loopOpen();
    StemPoleSetMap work;
    unsigned long loops = 0;
    for (Pole* pole : Pelko::cell->getPoles()) {
        if (!pole->isOutput() && !pole->isCheck())
            continue;
        dataStem(pole, work, loops);
        Pole* latch = pole->getMainPole();
        try {
            for (Pole* launch : work[pole])
                createDomains(clockStems, launch, latch);
        } catch (...) {
            analyzer->unmark();
            throw;
        }
    }
    loopClose();
    analyzer->unmark();
    warnOfLoops(loops, "data domain");
}

void ReferenceTool::dataStem(Pole* pole, StemPoleSetMap& work, unsigned long& loops) {
    if (pole->isMarked())
        return;
    loopPush(pole);
    if (pole->isInput() || pole->isClock() || pole->isClockSource()) {
        work[pole].insert(pole);
    } else {
        for (Edge* edge : pole->getIncomingEdges()) {
            if (!edge->isActive())
                continue;
            Pole* source = edge->getSource();
            if (isLooping(source)) {
                ++loops;
                loopCutting(source);
            } else {
                dataStem(source, work, loops);
                updateStemPoleSetMap(edge, work);
            }
        }
    }
    loopPop();
    pole->mark();
}

void ReferenceTool::updateStemPoleSetMap(Edge* edge, StemPoleSetMap& work) {
    Pole* source = edge->getSource();
    if (work.count(source) == 0)
        return;
    const PoleSet stem = work[source];
    work[edge->getTarget()].insert(stem.begin(), stem.end());
    for (Edge* other : source->getOutgoingEdges())
        if (other->isActive() && other != edge && !other->getTarget()->isMarked())
            return;
    work.erase(source);
}

// --- Domains ---

void ReferenceTool::createDomains() {
    const bool debug = Ruvex::isDebug();
    if (debug) {
        Ruvex::console.print("Creating domains", "");
        Ruvex::console.indent();
    }
    updateDomains();
    if (debug) {
        Ruvex::console.print("Creating domains ... done", "");
        Ruvex::console.unindent();
    }
}

void ReferenceTool::updateDomains() {
    StemPoleSetMap stems;
    clockStem(stems);
    dataStem(stems);
    std::vector<Domain*> domains;
    for (Domain* domain : analyzer->getDomains())
        domains.push_back(domain);
    for (Domain* domain : domains) {
        if (analyzer->isExclusive(domain))
            domain->destroy();
        else if (analyzer->isAsynchronous(domain))
            domain->setAsynchronous(true);
    }
}

namespace {

// The edge on which a clock pole works; it must have one.
ClockMode modeOf(const Pole* pole, unsigned line) {
    const ClockMode mode = pole->getClockMode();
    if (mode.getCode() == 0)
        throw Ruvex::Critical(Ruvex::Error(pole->getName() + " has not clock mode!",
                                           Ruvex::Error::locate("Tool", "createDomains", line)));
    return mode;
}

void addStem(const StemPoleSetMap& stems, Pole* pole, PoleSet& roots) {
    const auto stem = stems.find(pole);
    if (stem != stems.end())
        roots.insert(stem->second.begin(), stem->second.end());
}

void capture(Domain* domain, const ClockMode& launchMode, const ClockMode& latchMode, Pole* launch,
             Pole* latch) {
    Subdomain* subdomain = domain->getSubdomain(launchMode, latchMode);
    if (!subdomain)
        subdomain = Subdomain::create(domain, launchMode, latchMode);
    subdomain->captureLatch(latch);
    subdomain->captureLaunch(launch);
}

} // namespace

void ReferenceTool::createDomains(const StemPoleSetMap& clockStems, Pole* launch, Pole* latch) {
    ClockMode launchMode(ClockMode::None);
    ClockMode latchMode(ClockMode::None);
    PoleSet launchRoots;
    PoleSet latchRoots;

    if (!latch->isClock()) {
        Pole* root = nullptr;
        if (IOConstraint constraint; analyzer->hasOutputConstraint(latch, constraint)) {
            latchMode = constraint.getClockMode();
            root = constraint.getClockRoot();
        }
        latchRoots.insert(root);
    } else {
        latchMode = modeOf(latch, 2025);
        if (latch->isCaptureInverted())
            latchMode = latchMode.getCode() == 2 ? ClockMode::Falling : ClockMode::Rising;
        addStem(clockStems, latch, latchRoots);
    }

    if (!launch->isClock()) {
        Pole* root = nullptr;
        if (IOConstraint constraint; analyzer->hasInputConstraint(launch, constraint)) {
            root = constraint.getClockRoot();
            launchMode = constraint.getClockMode();
        }
        if (!root && launch->isClockSource())
            root = launch;
        launchRoots.insert(root);
    } else {
        launchMode = modeOf(launch, 2065);
        addStem(clockStems, launch, launchRoots);
    }

    for (Pole* launchRoot : launchRoots)
        for (Pole* latchRoot : latchRoots) {
            Domain* domain = analyzer->getDomain(launchRoot, latchRoot);
            if (!domain)
                domain = Domain::create(launchRoot, latchRoot);
            if (!launchRoot || launchMode.getCode() != 0) {
                capture(domain, launchMode, latchMode, launch, latch);
            } else {
                capture(domain, ClockMode::Falling, latchMode, launch, latch);
                capture(domain, ClockMode::Rising, latchMode, launch, latch);
            }
        }
}

} // namespace oracle
