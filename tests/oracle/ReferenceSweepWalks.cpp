// The three propagations: clock arrivals at the leaves, data arrivals forwards, required times backwards.
#include "ReferenceSweep.h"

namespace oracle {

using Pelko::Delay;
using Pelko::Edge;
using Pelko::IOConstraint;
using Pelko::Pole;
using Pelko::PseudoMask;
using Vorlen::Timing;

namespace {

bool look(const ReferenceSweep::PoleMap& maps, Pole* pole, ReferenceSweep::Map& out) {
    const auto found = maps.find(pole);
    if (found == maps.end())
        return false;
    out = found->second;
    return true;
}

ReferenceSweep::Map copyOrEmpty(const ReferenceSweep::PoleMap& maps, Pole* pole) {
    ReferenceSweep::Map out;
    look(maps, pole, out);
    return out;
}

} // namespace

// --- Clock arrival ---

void ReferenceSweep::clockAnalyze() {
    if (Pole* root = subdomain_->getLaunchRoot())
        analyzeClockLeaves(root, subdomain_->getLaunchLeaves(), true, launchAT_);
    if (Pole* root = subdomain_->getLatchRoot())
        analyzeClockLeaves(root, subdomain_->getLatchLeaves(), false, latchAT_);
    Pelko::analyzer->unmark();
}

void ReferenceSweep::analyzeClockLeaves(Pole* root, const Pelko::Poles& leaves, bool launch,
                                        PoleMap& result) {
    Pelko::analyzer->unmark();
    PoleSet path;
    PoleMap clockAT;
    for (Pole* leaf : leaves) {
        if (leaf->isMarked())
            continue;
        if (launch ? leaf->isInput() : leaf->isOutput()) {
            result[leaf][0] = Timing(Delay(0), Delay(0));
            continue;
        }
        clockAnalyze(root, leaf, path, clockAT);
        const auto found = clockAT.find(leaf);
        if (found == clockAT.end())
            continue;
        Delay minimum = Delay::getMaximum();
        Delay maximum = Delay::getMinimum();
        for (const auto& entry : found->second) {
            const Delay entryMinimum = entry.second.getMinimumDelay();
            const Delay entryMaximum = entry.second.getMaximumDelay();
            if (!minimum.isDefined() || (entryMinimum.isDefined() && !(minimum < entryMinimum)))
                minimum = entryMinimum;
            if (!maximum.isDefined() || (entryMaximum.isDefined() && maximum < entryMaximum))
                maximum = entryMaximum;
        }
        result[leaf][0] = Timing(minimum, maximum);
    }
}

void ReferenceSweep::clockAnalyze(Pole* root, Pole* pole, PoleSet& path, PoleMap& clockAT) {
    if (pole->isMarked())
        return;
    pole->mark();
    path.insert(pole);
    if (pole == root) {
        updateClockATMapMap(root, clockAT);
    } else {
        for (Edge* edge : pole->getIncomingEdges()) {
            if (!edge->isActive())
                continue;
            if (path.count(edge->getSource()) != 0)
                continue;
            clockAnalyze(root, edge->getSource(), path, clockAT);
            updateClockATMapMap(edge, clockAT);
        }
    }
    path.erase(pole);
}

void ReferenceSweep::updateClockATMapMap(Pole* root, PoleMap& clockAT) {
    Map map;
    map[0] = Timing(Delay(0), Delay(0));
    if (Pelko::analyzer->hasPLLFeedbackDelay(root))
        map[0] = Timing(-Pelko::analyzer->getMinPLLFeedbackDelay(root),
                        -Pelko::analyzer->getMaxPLLFeedbackDelay(root));
    mingle(root->getOpeningPseudoMask() & Pelko::analyzer->getFalsePathMask(), map);
    clockAT[root] = map;
}

void ReferenceSweep::updateClockATMapMap(Edge* edge, PoleMap& clockAT) {
    Pole* target = edge->getTarget();
    Map working;
    if (!look(clockAT, edge->getSource(), working))
        return;
    Map arrival = copyOrEmpty(clockAT, target);
    filter(target->getClosingPseudoMask() & Pelko::analyzer->getFalsePathMask(), working);
    addDelay(edge->getMinDelay(), edge->getMaxDelay(), working);
    sensibilize(edge->getPseudoMask(), working);
    combine(working, arrival);
    mingle(target->getOpeningPseudoMask(), arrival);
    clockAT[target] = arrival;
}

// --- Data arrival ---

void ReferenceSweep::arrivalAnalyze() {
    PoleSet path;
    if (!subdomain_->getLatchRoot())
        analyzeUnlatchedArrivals(path);
    else
        analyzeLatchedArrivals(path);
    Pelko::analyzer->unmark();
}

void ReferenceSweep::analyzeUnlatchedArrivals(PoleSet& path) {
    for (Pole* leaf : subdomain_->getLatchLeaves()) {
        if (!leaf->isOutput())
            throw Ruvex::InvalidRequest(Ruvex::InternalError(
                "Not an output pole", Ruvex::Error::locate("Sweep", "arrivalAnalyze", 1280)));
        arrivalAnalyze(leaf, path);
        Map arrival;
        if (!look(dataAT_, leaf, arrival))
            continue;
        filter(Pelko::analyzer->getMaxdelayPathMask(), Pelko::analyzer->getMindelayPathMask(), arrival);
        for (const auto& entry : arrival) {
            arrivalTiming_.combine(entry.second);
            subdomain_->setLAT(arrivalTiming_.getMaximumDelay());
            subdomain_->setSAT(arrivalTiming_.getMinimumDelay());
        }
    }
}

void ReferenceSweep::analyzeLatchedArrivals(PoleSet& path) {
    for (Pole* leaf : subdomain_->getLatchLeaves()) {
        Map latch;
        if (!look(latchAT_, leaf, latch))
            continue;
        sensibilize(PseudoMask(0), latch);
        std::list<Pole*> ends;
        if (!leaf->isClock())
            ends.push_back(leaf);
        else
            for (Pole* auxiliary : Pelko::cell->getAuxiliaryPoles(leaf->getPin()))
                ends.push_back(auxiliary);
        for (Pole* end : ends) {
            arrivalAnalyze(end, path);
            Map arrival;
            if (!look(dataAT_, end, arrival))
                continue;
            IOConstraint io;
            if (end->isOutput() && Pelko::analyzer->hasOutputConstraint(end, io))
                addDelay(io.getMinimum(), io.getMaximum(), arrival);
            minusLatchTiming(latch[0], arrival);
            divideCycleCount(arrival);
            for (const auto& [key, timing] : arrival) {
                arrivalTiming_.combine(timing);
                if (subdomain_->isPureClock() &&
                    arrivalTiming_.getMaximumDelay() == timing.getMaximumDelay()) {
                    if ((PseudoMask(key) & Pelko::analyzer->getMulticyclePathMask()).isEmpty())
                        subdomain_->resetMPathCritical();
                    else
                        subdomain_->setMPathCritical();
                }
                subdomain_->setLAT(arrivalTiming_.getMaximumDelay());
                subdomain_->setSAT(arrivalTiming_.getMinimumDelay());
            }
        }
    }
}

void ReferenceSweep::arrivalAnalyze(Pole* pole, PoleSet& path) {
    if (pole->isMarked())
        return;
    path.insert(pole);
    pole->mark();
    if (pole->isInitial() || pole->isClockSource()) {
        updateDataATMapMap(pole);
    } else {
        for (Edge* edge : pole->getIncomingEdges()) {
            if (!edge->isActive())
                continue;
            if (path.count(edge->getSource()) != 0)
                continue;
            arrivalAnalyze(edge->getSource(), path);
            updateDataATMapMap(edge);
        }
    }
    path.erase(pole);
}

void ReferenceSweep::updateDataATMapMap(Pole* pole) {
    if (!subdomain_->getLaunchLeaves().contains(pole))
        return;
    Map map;
    if (!subdomain_->getLaunchRoot()) {
        map[0] = Timing(Delay(0), Delay(0));
        mingle(pole->getOpeningPseudoMask(), map);
        dataAT_[pole] = map;
        return;
    }
    if (!look(launchAT_, pole, map))
        return;
    sensibilize(PseudoMask(0), map);
    IOConstraint io;
    if (pole->isInput() && Pelko::analyzer->hasInputConstraint(pole, io))
        addDelay(io.getMinimum(), io.getMaximum(), map);
    mingle(pole->getOpeningPseudoMask(), map);
    dataAT_[pole] = map;
}

void ReferenceSweep::updateDataATMapMap(Edge* edge) {
    Pole* target = edge->getTarget();
    Map working;
    if (!look(dataAT_, edge->getSource(), working))
        return;
    Map arrival = copyOrEmpty(dataAT_, target);
    filter(target->getClosingPseudoMask() & Pelko::analyzer->getFalsePathMask(), working);
    if (target->isCheck())
        takeSetupHold(edge->getMinDelay(), edge->getMaxDelay(), working);
    else
        addDelay(edge->getMinDelay(), edge->getMaxDelay(), working);
    sensibilize(edge->getPseudoMask(), working);
    combine(working, arrival);
    mingle(target->getOpeningPseudoMask(), arrival);
    dataAT_[target] = arrival;
}

// --- Required times ---

void ReferenceSweep::requireAnalyze() {
    PoleSet path;
    for (Pole* leaf : subdomain_->getLaunchLeaves()) {
        if (!subdomain_->getLaunchRoot() && !leaf->isInput())
            throw Ruvex::InvalidRequest(Ruvex::InternalError(
                "Not an input pole", Ruvex::Error::locate("Sweep", "requireAnalyze", 1598)));
        if (dataAT_.count(leaf) != 0)
            requireAnalyze(leaf, path);
    }
    Pelko::analyzer->unmark();
}

void ReferenceSweep::requireAnalyze(Pole* pole, PoleSet& path) {
    if (dataAT_.count(pole) == 0)
        return;
    if (pole->isMarked())
        return;
    path.insert(pole);
    pole->mark();
    if (pole->isTerminal()) {
        updateDataRTMapMap(pole);
    } else {
        for (Edge* edge : pole->getOutgoingEdges()) {
            if (!edge->isActive())
                continue;
            if (path.count(edge->getTarget()) != 0)
                continue;
            requireAnalyze(edge->getTarget(), path);
            updateDataRTMapMap(edge);
        }
    }
    path.erase(pole);
}

void ReferenceSweep::updateDataRTMapMap(Pole* pole) {
    const Delay setup = subdomain_->getSetupRelation();
    const Delay hold = subdomain_->getHoldRelation();
    const Pelko::Poles leaves = subdomain_->getLatchLeaves();
    Map required;
    if (!subdomain_->getLatchRoot()) {
        if (!leaves.contains(pole))
            return;
        required[0] = Timing(setup, -hold);
        mingle(pole->getClosingPseudoMask(), required);
        dataRT_[pole] = required;
        return;
    }
    Pole* governor = pole->isOutput() ? pole : pole->getClockPole();
    Map latch;
    if (!leaves.contains(governor) || !look(latchAT_, governor, latch))
        return;
    required[0] = Timing(setup + latch[0].getMinimumDelay(), -hold + latch[0].getMaximumDelay());
    IOConstraint io;
    if (pole->isOutput() && Pelko::analyzer->hasOutputConstraint(pole, io))
        minusDelay(io.getMinimum(), io.getMaximum(), required);
    mingle(pole->getClosingPseudoMask(), required);
    dataRT_[pole] = required;
}

void ReferenceSweep::updateDataRTMapMap(Edge* edge) {
    Pole* source = edge->getSource();
    Map working;
    if (!look(dataRT_, edge->getTarget(), working))
        return;
    Map required = copyOrEmpty(dataRT_, source);
    filter(source->getOpeningPseudoMask(), working);
    if (edge->getTarget()->isCheck())
        freeSetupHold(edge->getMinDelay(), edge->getMaxDelay(), working);
    else
        minusDelay(edge->getMinDelay(), edge->getMaxDelay(), working);
    sensibilize(edge->getPseudoMask(), working);
    combine(working, required);
    mingle(source->getClosingPseudoMask(), required);
    dataRT_[source] = required;
}

} // namespace oracle
