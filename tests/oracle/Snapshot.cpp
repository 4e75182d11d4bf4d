// Prints the model as text.
#include "Snapshot.h"

#include "Ruvex/Exception.h"
#include "Ruvex/Utility.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <typeinfo>

namespace oracle {

using Pelko::analyzer;
using Pelko::Delay;
using Pelko::Pole;

namespace {

std::string textOf(const Delay& delay) { return delay._getLabel(); }

std::string textOf(const Pole* pole) { return pole ? std::to_string(pole->getIndex()) : "-"; }

template <class Range>
std::string listOf(const Range& poles) {
    std::string text = "{";
    for (const Pole* pole : poles)
        text += (text.size() > 1 ? " " : "") + textOf(pole);
    return text + "}";
}

void addPoles(std::string& text) {
    for (const Pole* pole : Pelko::cell->getPoles()) {
        const unsigned long opening = pole->getOpeningPseudoMask().getBits();
        const unsigned long closing = pole->getClosingPseudoMask().getBits();
        if (pole->isMarked() || opening != 0 || closing != 0)
            text += "pole " + textOf(pole) + (pole->isMarked() ? " marked" : "") + " opening " +
                    std::to_string(opening) + " closing " + std::to_string(closing) + "\n";
    }
}

void addEdges(std::string& text) {
    for (const Pelko::Edge* edge : Pelko::cell->getEdges()) {
        const unsigned long mask = edge->getPseudoMask().getBits();
        if (edge->isActive() && mask == 0 && !edge->getSlack().isDefined() && edge->getWeight() == 0 &&
            edge->getMinDutyCycle() == 100)
            continue;
        text += "arc " + textOf(edge->getSource()) + "-" + textOf(edge->getTarget()) +
                (edge->isActive() ? "" : " inactive") + " mask " + std::to_string(mask) + " slack " +
                textOf(edge->getSlack()) + " weight " + std::to_string(edge->getWeight()) + " duty " +
                std::to_string(edge->getMinDutyCycle()) + "\n";
    }
}

void addPaths(std::string& text, const char* kind, const Ruvex::Collection<Pelko::Path*>& paths) {
    for (const Pelko::Path* path : paths) {
        text += std::string("  ") + kind + " " + textOf(path->getSlack()) + " latch " +
                textOf(path->getLatchDelay()) + " launch " + textOf(path->getLaunchDelay()) + " adjustment " +
                textOf(path->getAdjustment()) + " under " +
                (path->getConstrainedPath() ? path->getConstrainedPath()->getAlias() : "none") + ":";
        for (const Pelko::Edge* edge : path->getEdges())
            text += " " + textOf(edge->getSource()) + "-" + textOf(edge->getTarget());
        text += "\n";
    }
}

void addDomains(std::string& text) {
    for (const Pelko::Domain* domain : analyzer->getDomains()) {
        text += "domain " + textOf(domain->getLaunchRoot()) + " -> " + textOf(domain->getLatchRoot()) +
                (domain->isAsynchronous() ? " asynchronous" : "") + "\n";
        for (const Pelko::Subdomain* subdomain : domain->getSubdomains()) {
            text += " subdomain " + std::to_string(subdomain->getLaunchClockMode().getCode()) + " -> " +
                    std::to_string(subdomain->getLatchClockMode().getCode()) + " launch " +
                    listOf(subdomain->getLaunchLeaves()) + " latch " + listOf(subdomain->getLatchLeaves()) +
                    " setup " + textOf(subdomain->getSetupRelation()) + " hold " +
                    textOf(subdomain->getHoldRelation()) + " criticity " +
                    std::to_string(subdomain->getCriticity()) + " arrival " + textOf(subdomain->getSAT()) +
                    ":" + textOf(subdomain->getLAT()) + (subdomain->isDecisive() ? " decisive" : "") +
                    (subdomain->isMPathCritical() ? " multicycle-critical" : "") + "\n";
            addPaths(text, "longest", subdomain->getLongestPaths());
            addPaths(text, "shortest", subdomain->getShortestPaths());
        }
    }
}

void addExceptions(std::string& text) {
    for (const Pelko::CPath* path : analyzer->getCPaths())
        text += path->getAlias() + " class " + std::to_string(path->getPseudoMask().getBits()) +
                (path->isValidated() ? " validated" : "") + " slack " + textOf(path->getLongestSlack()) +
                " " + textOf(path->getShortestSlack()) + "\n";
    text += "masks " + std::to_string(analyzer->getFalsePathMask().getBits()) + " " +
            std::to_string(analyzer->getMaxdelayPathMask().getBits()) + " " +
            std::to_string(analyzer->getMindelayPathMask().getBits()) + " " +
            std::to_string(analyzer->getMulticyclePathMask().getBits()) + "\n";
}

void addClocksAndPorts(std::string& text) {
    for (Pole* pole : Pelko::cell->getPoles()) {
        if (analyzer->getPeriod(pole).isDefined())
            text += "clock " + textOf(pole) + " achieves " + textOf(analyzer->getPeriod(pole)) + "\n";
        if (analyzer->hasPLLFeedbackDelay(pole))
            text += "clock " + textOf(pole) + " feedback " + textOf(analyzer->getMinPLLFeedbackDelay(pole)) +
                    " " + textOf(analyzer->getMaxPLLFeedbackDelay(pole)) + "\n";
        const Delay longest = analyzer->getIODelayLongestSlack(pole);
        const Delay shortest = analyzer->getIODelayShortestSlack(pole);
        if (longest.isDefined() || shortest.isDefined())
            text += "port " + textOf(pole) + " slack " + textOf(longest) + " " + textOf(shortest) + "\n";
    }
}

} // namespace

std::string stateOfModel() {
    std::string text;
    text.reserve(4096);
    addPoles(text);
    addEdges(text);
    addDomains(text);
    addExceptions(text);
    addClocksAndPorts(text);
    return text;
}

std::string stateOfStems(const Vorlen::StemPoleSetMap& stems) {
    std::string text;
    for (const auto& [pole, stem] : stems)
        text += "stem " + textOf(pole) + " " + listOf(stem) + "\n";
    return text;
}

std::string stateOfTiming(const char* map, const Pole* pole, const Vorlen::TimingMap& timing) {
    std::string text = std::string(map) + " " + textOf(pole) + " {";
    for (const auto& [key, value] : timing)
        text += " " + std::to_string(key) + ": [" + textOf(value.getMinimumDelay()) + ":" +
                textOf(value.getMaximumDelay()) + "]";
    return text + " }\n";
}

std::string stateOfPoles(const char* title, const Pelko::Poles& poles) {
    return std::string(title) + " " + listOf(poles) + "\n";
}

// --- For a reader ---

namespace {

std::string kindsOf(const Pole* pole) {
    const std::pair<bool, const char*> kinds[] = {{pole->isInput(), " input"},
                                                  {pole->isOutput(), " output"},
                                                  {pole->isClock(), " clock"},
                                                  {pole->isClockSource(), " source"},
                                                  {pole->isInitial(), " initial"},
                                                  {pole->isTerminal(), " terminal"},
                                                  {pole->isSetupCheck(), " setup"},
                                                  {pole->isHoldCheck(), " hold"},
                                                  {pole->isCaptureInverted(), " inverted"},
                                                  {pole->isMarked(), " marked"}};
    std::string text;
    for (const auto& [is, word] : kinds)
        text += is ? word : "";
    return text;
}

void describePole(std::ostream& text, Pole* pole) {
    text << "pole " << textOf(pole) << " '" << pole->getName() << "'" << kindsOf(pole) << " mode "
         << pole->getClockMode()._getLabel() << " main " << textOf(pole->getMainPole());
    if (pole->getClockPole())
        text << " clock " << textOf(pole->getClockPole());
    Pelko::IOConstraint constraint;
    if (analyzer->hasInputConstraint(pole, constraint) || analyzer->hasOutputConstraint(pole, constraint))
        text << " delay " << constraint._getLabel();
    if (analyzer->getRequiredPeriod(pole).isDefined())
        text << " period " << textOf(analyzer->getRequiredPeriod(pole)) << " shift "
             << textOf(analyzer->getShift(pole)) << " high " << textOf(analyzer->getHighWidth(pole));
    text << "\n";
}

void describeException(std::ostream& text, const Pelko::CPath* path) {
    text << path->getClass() << " " << path->getAlias() << " from " << listOf(path->getSources())
         << " through " << listOf(path->getBridges()) << " to " << listOf(path->getTargets())
         << (path->isInsulated() ? " insulated" : "");
    if (const auto* delayPath = dynamic_cast<const Pelko::DPath*>(path))
        text << (delayPath->isMaximum() ? " maximum " + textOf(delayPath->getMaxdelay())
                                        : " minimum " + textOf(delayPath->getMindelay()));
    if (const auto* multicycle = dynamic_cast<const Pelko::MPath*>(path))
        text << " x" << multicycle->getMultiplier();
    text << "\n";
}

} // namespace

std::string describeDesign() {
    std::ostringstream text;
    for (Pole* pole : Pelko::cell->getPoles())
        describePole(text, pole);
    for (const Pelko::Edge* edge : Pelko::cell->getEdges())
        text << "arc " << textOf(edge->getSource()) << "-" << textOf(edge->getTarget()) << " ["
             << textOf(edge->getMinDelay()) << ":" << textOf(edge->getMaxDelay()) << "]"
             << (edge->isActive() ? "" : " inactive") << "\n";
    for (const Pelko::CPath* path : analyzer->getCPaths())
        describeException(text, path);
    text << "mode " << analyzer->getAnalysisMode()._getLabel() << ", paths " << analyzer->getPathCount()
         << " up to " << textOf(analyzer->getPathLimit()) << (Pelko::Analyzer::_muted ? ", muted" : "")
         << (Ruvex::isDebug() ? ", debug" : "") << (analyzer->isDomainsOnly() ? ", domains only" : "")
         << "\n";
    return text.str();
}

// --- Comparing ---

std::string faultOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const Ruvex::Exception& exception) {
        return std::string(typeid(exception).name()) + " " + exception._getLabel() + "\n";
    } catch (const std::exception& exception) {
        return std::string(typeid(exception).name()) + " " + exception.what() + "\n";
    }
    return "";
}

std::string firstDifference(const std::string& library, const std::string& reference) {
    if (library == reference)
        return "";
    std::istringstream left(library);
    std::istringstream right(reference);
    for (int line = 1;; ++line) {
        std::string ours;
        std::string theirs;
        const bool hasOurs = static_cast<bool>(std::getline(left, ours));
        const bool hasTheirs = static_cast<bool>(std::getline(right, theirs));
        if (hasOurs != hasTheirs || ours != theirs)
            return "line " + std::to_string(line) + "\n  library:   " + (hasOurs ? ours : "(no more)") +
                   "\n  reference: " + (hasTheirs ? theirs : "(no more)") + "\n";
        if (!hasOurs)
            return "a line's end\n";
    }
}

namespace {

unsigned long numberFrom(const char* variable, unsigned long otherwise) {
    const char* text = std::getenv(variable);
    return text && *text ? std::strtoul(text, nullptr, 10) : otherwise;
}

std::string describeSeed(unsigned long seed, const Knobs& knobs) {
    const RandomDesign design(seed, knobs);
    return describeDesign();
}

} // namespace

void compareOnDesigns(unsigned long designs, const Knobs& knobs, const Side& library, const Side& reference) {
    const auto runOn = [&knobs](unsigned long seed, const Side& side) {
        RandomDesign design(seed, knobs);
        return side(design);
    };
    const unsigned long first = numberFrom("VORLEN_SEED", 1);
    const unsigned long count = numberFrom("VORLEN_DESIGNS", designs);
    const int mostFailures = 3;
    int failures = 0;
    for (unsigned long seed = first; seed < first + count && failures < mostFailures; ++seed) {
        const std::string difference = firstDifference(runOn(seed, library), runOn(seed, reference));
        if (difference.empty())
            continue;
        ++failures;
        ADD_FAILURE() << "VORLEN_SEED=" << seed << ", " << difference << describeSeed(seed, knobs);
    }
}

// --- Console ---

namespace {

// "Analyzing project completed in 0.001 s"
std::string withoutElapsedTime(const std::string& text) {
    const std::string start = "Analyzing project ";
    const std::size_t place = text.rfind(" in ");
    if (text.compare(0, start.size(), start) != 0 || place == std::string::npos)
        return text;
    return text.substr(0, place) + " in %";
}

} // namespace

ConsoleRecorder::ConsoleRecorder() {
    Ruvex::console.setOutput(nullptr);
    Ruvex::console.setIndentation(0);
    Ruvex::console.setRecorder([this](const Ruvex::Console::Message& message) {
        static const char* const levels[] = {"print", "remark", "warning", "error"};
        text_ += std::string(levels[static_cast<int>(message.level)]) + " " +
                 std::to_string(message.indentation) + " [" + message.label + "] " +
                 withoutElapsedTime(message.text) + "\n";
    });
}

ConsoleRecorder::~ConsoleRecorder() {
    Ruvex::console.setRecorder({});
    Ruvex::console.setIndentation(0);
    Ruvex::console.setErrorOutput();
}

std::string ConsoleRecorder::take() {
    std::string taken =
        std::move(text_) + "indentation " + std::to_string(Ruvex::console.getIndentation()) + "\n";
    text_.clear();
    Ruvex::console.setIndentation(0);
    return taken;
}

} // namespace oracle
