#include "Snapshot.h"

#include "Pelko/Model.h"

#include <sstream>

namespace HostTest {

namespace {

using namespace Pelko;

std::string nameOf(const Object* object) {
    return object ? object->_getLabel() + "#" + std::to_string(object->getStamp()) : "-";
}

template <class T>
std::string namesOf(const Ruvex::Collection<T>& objects) {
    std::string names = std::to_string(objects.getCount()) + "(";
    for (T object : objects)
        names += " " + nameOf(object);
    return names + " )";
}

void write(std::ostream& out, const Pin* pin) {
    if (!pin)
        return;
    out << "  pin " << nameOf(pin) << " main " << nameOf(pin->getMainPole()) << " auxiliary "
        << namesOf(pin->getAuxiliaryPoles()) << " net " << nameOf(pin->getNet()) << '\n';
    if (pin->getNet())
        out << "    receivers " << namesOf(pin->getNet()->getReceivers()) << '\n';
    if (pin->getInstance())
        out << "    instance " << nameOf(pin->getInstance()) << " pins "
            << namesOf(pin->getInstance()->getPins()) << '\n';
}

void write(std::ostream& out, const Pole* pole) {
    out << nameOf(pole) << " index " << pole->getIndex() << " kinds " << pole->isInput() << pole->isOutput()
        << pole->isClock() << pole->isClockSource() << pole->isInitial() << pole->isTerminal()
        << pole->isSetupCheck() << pole->isHoldCheck() << pole->isCaptureInverted() << " mode "
        << pole->getClockMode()._getLabel() << " clock " << nameOf(pole->getClockPole()) << " main "
        << nameOf(pole->getMainPole()) << " opening " << pole->getOpeningPseudoMask()._getLabel()
        << " closing " << pole->getClosingPseudoMask()._getLabel() << " marked " << pole->isMarked()
        << " referenced " << pole->isReferenced() << pole->isDestroyable() << '\n'
        << "  in " << namesOf(pole->getIncomingEdges()) << " out " << namesOf(pole->getOutgoingEdges())
        << '\n';
    write(out, pole->getPin());
}

void write(std::ostream& out, const Edge* edge) {
    out << nameOf(edge) << " index " << edge->getIndex() << " [" << edge->getMinDelay()._getLabel() << ":"
        << edge->getMaxDelay()._getLabel() << "] active " << edge->isActive() << " mask "
        << edge->getPseudoMask()._getLabel() << " slack " << edge->getSlack()._getLabel() << " weight "
        << edge->getWeight() << " duty " << edge->getMinDutyCycle() << " destroyable "
        << edge->isDestroyable() << '\n';
}

void write(std::ostream& out, const Path* path) {
    out << "    " << nameOf(path) << " longest " << path->isLongest() << " slack "
        << path->getSlack()._getLabel() << " latch " << path->getLatchDelay()._getLabel() << " launch "
        << path->getLaunchDelay()._getLabel() << " adjustment " << path->getAdjustment()._getLabel()
        << " under " << nameOf(path->getConstrainedPath()) << " edges " << namesOf(path->getEdges()) << '\n';
}

void write(std::ostream& out, const Subdomain* subdomain) {
    out << "  " << nameOf(subdomain) << " launch " << namesOf(subdomain->getLaunchLeaves()) << " latch "
        << namesOf(subdomain->getLatchLeaves()) << " setup " << subdomain->getSetupRelation()._getLabel()
        << " hold " << subdomain->getHoldRelation()._getLabel() << " fixed "
        << subdomain->isSetupRelationFixed() << subdomain->isHoldRelationFixed() << " criticity "
        << subdomain->getCriticity() << " decisive " << subdomain->isDecisive() << " LAT "
        << subdomain->getLAT()._getLabel() << " SAT " << subdomain->getSAT()._getLabel() << " mpath "
        << subdomain->isMPathCritical() << '\n';
    for (const Path* path : subdomain->getLongestPaths())
        write(out, path);
    for (const Path* path : subdomain->getShortestPaths())
        write(out, path);
}

void write(std::ostream& out, const Domain* domain) {
    out << nameOf(domain) << " " << nameOf(domain->getLaunchRoot()) << " " << nameOf(domain->getLatchRoot())
        << " asynchronous " << domain->isAsynchronous() << analyzer->isAsynchronous(domain) << " exclusive "
        << analyzer->isExclusive(domain) << " critical " << domain->isCritical() << '\n';
    for (const Subdomain* subdomain : domain->getSubdomains())
        write(out, subdomain);
}

void write(std::ostream& out, const CPath* path) {
    out << nameOf(path) << " sources " << namesOf(path->getSources()) << " bridges "
        << namesOf(path->getBridges()) << " targets " << namesOf(path->getTargets()) << " insulated "
        << path->isInsulated() << " validated " << path->isValidated() << " mask "
        << path->getPseudoMask()._getLabel() << " slacks " << path->getLongestSlack()._getLabel() << " "
        << path->getShortestSlack()._getLabel() << " destroyable " << path->isDestroyable() << '\n';
}

// The analyzer's data of a pole, as a clock root and as a port.
void writeConstraints(std::ostream& out, Pole* pole) {
    out << "  at " << nameOf(pole) << " clock " << analyzer->getRequiredPeriod(pole)._getLabel() << " "
        << analyzer->getShift(pole)._getLabel() << " " << analyzer->getHighWidth(pole)._getLabel() << " "
        << analyzer->getLowWidth(pole)._getLabel() << " " << analyzer->getDutyRatio(pole) << " "
        << analyzer->getPeriod(pole)._getLabel() << " feedback " << analyzer->hasPLLFeedbackDelay(pole) << " "
        << analyzer->getMinPLLFeedbackDelay(pole)._getLabel() << " "
        << analyzer->getMaxPLLFeedbackDelay(pole)._getLabel() << " io "
        << analyzer->getInputConstraint(pole)._getLabel() << " "
        << analyzer->getOutputConstraint(pole)._getLabel() << " slacks "
        << analyzer->getIODelayLongestSlack(pole)._getLabel() << " "
        << analyzer->getIODelayShortestSlack(pole)._getLabel() << '\n';
}

void writeAnalyzer(std::ostream& out) {
    out << nameOf(analyzer) << " verbose " << analyzer->isVerbose() << " mode "
        << analyzer->getAnalysisMode()._getLabel() << " flags " << analyzer->isDomainsOnly()
        << analyzer->isSlackTagging() << analyzer->isWeightTagging() << analyzer->isLongestPath()
        << analyzer->isShortestPath() << " count " << analyzer->getPathCount() << " limit "
        << analyzer->getPathLimit()._getLabel() << " masks " << analyzer->getFalsePathMask()._getLabel()
        << analyzer->getMaxdelayPathMask()._getLabel() << analyzer->getMindelayPathMask()._getLabel()
        << analyzer->getMulticyclePathMask()._getLabel() << '\n'
        << "inputs " << namesOf(analyzer->getConstrainedInputs()) << " outputs "
        << namesOf(analyzer->getConstrainedOutputs()) << '\n';
    for (Pole* pole : analyzer->getCell()->getPoles())
        writeConstraints(out, pole);
    for (const Domain* domain : analyzer->getDomains())
        write(out, domain);
    for (const CPath* path : analyzer->getCPaths())
        write(out, path);
}

} // namespace

std::string takeSnapshot() {
    std::ostringstream out;
    out << "classes " << PseudoMask::getClassCount() << '\n';
    if (cell) {
        out << nameOf(cell) << " bounds " << cell->getPoleBound() << " " << cell->getEdgeBound() << " plls "
            << namesOf(cell->getModule()->getPLLs()) << '\n';
        for (const Pole* pole : cell->getPoles())
            write(out, pole);
        for (const Edge* edge : cell->getEdges())
            write(out, edge);
    }
    if (analyzer)
        writeAnalyzer(out);
    if (application)
        out << nameOf(application) << " batch " << application->isBatch() << " stop "
            << application->isStopRequested() << '\n';
    return out.str();
}

} // namespace HostTest
