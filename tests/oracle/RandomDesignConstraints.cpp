// Draws what is not part of the graph: delays, clocks, constraints, exceptions, settings, and the changes
// between runs.
#include "RandomDesign.h"

#include "Ruvex/Exception.h"
#include "Ruvex/Utility.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>

namespace oracle {

using Pelko::analyzer;
using Pelko::ClockMode;
using Pelko::CPath;
using Pelko::Delay;
using Pelko::Domain;
using Pelko::Edge;
using Pelko::IOConstraint;
using Pelko::Pole;
using Pelko::Subdomain;

Delay RandomDesign::drawDelay(int least, int greatest) {
    static const std::vector<Delay> wild{Delay::getUndefined(),
                                         Delay::getMinimum(),
                                         Delay::getMaximum(),
                                         Delay(2000000000),
                                         Delay(-2000000000),
                                         Delay(0),
                                         Delay(-15),
                                         Delay(-4)};
    return wildDelays_ && dice_.oneIn(8) ? dice_.pick(wild) : Delay(dice_.between(least, greatest));
}

void RandomDesign::drawDelays(const Arcs& arcs) {
    wildDelays_ = knobs_.specials && dice_.percent(6);
    for (const auto& [source, target] : arcs) {
        const Delay minimum = drawDelay(0, 12);
        const bool apart = wildDelays_ || dice_.oneIn(12);
        const Delay maximum = apart ? drawDelay(0, 20) : minimum + Delay(dice_.between(0, 6));
        Edge* edge = Edge::create(source, target, minimum, maximum);
        if (knobs_.inactiveArcs && dice_.percent(3))
            edge->disactivate();
    }
}

// --- Clocks and ports ---

void RandomDesign::drawClock(Pole* root) {
    static const std::vector<int> harmonic{10, 20, 40, 15, 5, 30};
    const int period = dice_.oneIn(2) ? dice_.pick(harmonic) : dice_.between(2, 40);
    const int high = dice_.oneIn(2) ? period / 2 : dice_.between(1, period - 1);
    const int shift = dice_.oneIn(2) ? 0 : dice_.between(-5, 20);
    analyzer->setClock(root, Delay(period), Delay(shift), Delay(high), Delay(period - high));
}

void RandomDesign::drawClocks() {
    for (Pole* root : roots_) {
        if (dice_.percent(65))
            drawClock(root);
        else if (dice_.oneIn(2))
            analyzer->setDutyRatio(root, 1 + dice_.below(99));
        if (dice_.oneIn(12)) {
            const int early = dice_.between(0, 3);
            analyzer->setSourceLatency(root, Delay(early), Delay(early + dice_.between(0, 4)));
        }
    }
}

void RandomDesign::drawClockGroups() {
    using Kind = Pelko::Analyzer::GroupKind;
    if (roots_.empty())
        return;
    std::vector<std::vector<Pole*>> groups(1 + dice_.below(3));
    for (Pole* root : roots_)
        groups[dice_.below(groups.size())].push_back(root);
    analyzer->addClockGroups(dice_.oneIn(2) ? Kind::Exclusive : Kind::Asynchronous, groups);
}

IOConstraint RandomDesign::drawPortConstraint() {
    if (dice_.oneIn(10))
        return IOConstraint();
    Pole* root = roots_.empty() || dice_.oneIn(6) ? nullptr : dice_.pick(roots_);
    ClockMode::Code mode = ClockMode::None;
    if (root)
        mode = dice_.oneIn(2) ? ClockMode::Rising : ClockMode::Falling;
    if (dice_.oneIn(8))
        mode = static_cast<ClockMode::Code>(dice_.below(3));
    const Delay minimum = dice_.oneIn(8) ? Delay::getUndefined() : drawDelay(-3, 6);
    const Delay maximum = dice_.oneIn(20) ? Delay::getUndefined() : drawDelay(0, 8);
    return IOConstraint(root, mode, minimum, maximum);
}

void RandomDesign::drawPortConstraints() {
    for (Pole* pole : poles_) {
        if (pole->isInput() && dice_.percent(60))
            analyzer->setInputConstraint(pole, drawPortConstraint());
        if (pole->isOutput() && dice_.percent(60))
            analyzer->setOutputConstraint(pole, drawPortConstraint());
    }
}

// --- Exceptions ---

CPath::PoleList RandomDesign::drawPoles(bool starts) {
    CPath::PoleList likely;
    for (Pole* pole : poles_)
        if (starts ? pole->isInput() || pole->isClock() : pole->isCheck() || pole->isOutput())
            likely.push_back(pole);
    const CPath::PoleList& from = likely.empty() || dice_.oneIn(5) ? poles_ : likely;
    CPath::PoleList drawn;
    for (unsigned left = dice_.oneIn(25) ? 0 : 1 + dice_.below(3); left > 0; --left)
        drawn.push_back(dice_.pick(from));
    return drawn;
}

// One exception in three has the start or the end points of the one before.
CPath::Objects RandomDesign::drawObjects() {
    CPath::Objects objects;
    objects.sources = drawPoles(true);
    objects.targets = drawPoles(false);
    if (dice_.percent(18))
        objects.sources = lastObjects_.sources;
    else if (dice_.percent(18))
        objects.targets = lastObjects_.targets;
    if (knobs_.bridges && dice_.percent(25))
        for (unsigned left = 1 + dice_.below(3); left > 0; --left)
            objects.bridges.push_back(dice_.pick(poles_));
    return lastObjects_ = objects;
}

namespace {

[[noreturn]] void throwSomething(unsigned which) {
    if (which == 0)
        throw Ruvex::Interruption("the user lost patience");
    if (which == 1)
        throw std::runtime_error("out of luck");
    throw Ruvex::Critical(Ruvex::Error("no adjustment", Ruvex::Error::locate("Adjuster", "adjust", 7)));
}

} // namespace

// The result depends only on the subdomain's edges and the side, so it is the same whenever it is called.
CPath::Adjuster RandomDesign::drawAdjuster() {
    const int unit = dice_.between(-15, 15);
    const unsigned style = dice_.below(8);
    const bool throwing = knobs_.throwing && dice_.oneIn(5);
    const unsigned fault = dice_.below(3);
    return [=](const Subdomain& subdomain, bool longest) {
        const int edges =
            3 * subdomain.getLaunchClockMode().getCode() + subdomain.getLatchClockMode().getCode();
        if (throwing && edges == 8)
            throwSomething(fault);
        if ((style == 0 && longest) || (style == 1 && edges >= 4))
            return Delay::getUndefined();
        if (style == 2 && longest)
            return Delay::getMaximum();
        return Delay(longest ? unit : unit + edges);
    };
}

void RandomDesign::drawException() {
    const CPath::Objects objects = drawObjects();
    const unsigned kind = dice_.below(9);
    CPath* path = nullptr;
    if (kind < 2)
        path = Pelko::FPath::create(objects, dice_.oneIn(6));
    else if (kind < 4)
        path = Pelko::DPath::createMaximum(objects, Delay(dice_.between(-3, 30)));
    else if (kind < 6)
        path = Pelko::DPath::createMinimum(objects, Delay(dice_.between(-3, 12)));
    else if (kind < 8)
        path = Pelko::MPath::create(objects, dice_.oneIn(15) ? 4000000000UL : 1UL + dice_.below(4));
    else
        path = CPath::create(objects);
    path->setAlias("exception" + std::to_string(analyzer->getCPaths().getCount()));
    if (knobs_.adjusters && dice_.oneIn(6))
        path->setAdjuster(drawAdjuster());
}

// Occasionally more exceptions than there are classes.
void RandomDesign::drawExceptions() {
    for (unsigned left = dice_.oneIn(300) ? 65 : 1 + dice_.below(6); left > 0; --left)
        drawException();
}

// --- What runs have left, and what a host must not do ---

void RandomDesign::drawEarlierResults() {
    for (Pole* pole : poles_)
        if (dice_.oneIn(6))
            pole->mark();
    for (Edge* edge : model_.getCell()->getEdges()) {
        if (dice_.oneIn(4))
            edge->setSlack(drawDelay(-20, 20));
        if (dice_.oneIn(6))
            edge->setWeight(dice_.below(30));
        if (dice_.oneIn(6))
            edge->setMinDutyCycle(dice_.below(101));
    }
}

namespace {

// Adds an arc out of an end point into a pole without outgoing arcs.
void leadOn(Pole* end, Pole* other) {
    if (end != other && (end->isCheck() || end->isOutput()) && other->getOutgoingEdges().isEmpty() &&
        !other->getIncomingEdge(end))
        Edge::create(end, other, Delay(1), Delay(2));
}

} // namespace

void RandomDesign::breakContract() {
    using Break = void (*)(Pole*, Pole*);
    static const std::vector<Break> breaks{
        [](Pole* pole, Pole*) { pole->setClockMode(ClockMode::None); },
        [](Pole* pole, Pole*) { pole->setClockMode(ClockMode::None); },
        [](Pole* pole, Pole*) { pole->setInitial(!pole->isInitial()); },
        [](Pole* pole, Pole*) { pole->setTerminal(!pole->isTerminal()); },
        [](Pole* pole, Pole*) { pole->setClock(!pole->isClock()); },
        [](Pole* pole, Pole*) { pole->setOutput(!pole->isOutput()); },
        [](Pole* pole, Pole*) { pole->setInput(!pole->isInput()); },
        [](Pole* pole, Pole*) { pole->setSetupCheck(!pole->isSetupCheck()); },
        [](Pole* pole, Pole*) { pole->setClockPole(nullptr); },
        [](Pole* pole, Pole* other) { pole->setClockPole(other); },
        [](Pole* pole, Pole*) { pole->setMainPole(nullptr); },
        [](Pole* pole, Pole* other) { pole->setMainPole(other); },
        [](Pole* pole, Pole*) { pole->setCaptureInverted(!pole->isCaptureInverted()); },
        leadOn,
    };
    for (unsigned left = 1 + dice_.below(3); left > 0; --left) {
        Pole* pole = dice_.pick(poles_);
        Pole* other = dice_.pick(poles_);
        dice_.pick(breaks)(pole, other);
    }
}

// --- Settings and changes ---

void RandomDesign::drawSettings() {
    using Mode = Pelko::AnalysisMode;
    static const std::vector<Mode::Code> modes{Mode::Exhaustive, Mode::Exhaustive, Mode::Default,
                                               Mode::Critical};
    static const std::vector<unsigned long> counts{0, 1, 1, 3, 3, std::numeric_limits<unsigned long>::max()};
    analyzer->setVerbose(dice_.percent(30));
    analyzer->setAnalysisMode(dice_.pick(modes));
    analyzer->setDomainsOnly(knobs_.domainsOnly && dice_.percent(8));
    analyzer->setSlackTagging(dice_.percent(88));
    analyzer->setWeightTagging(dice_.percent(50));
    analyzer->setLongestPath(dice_.percent(88));
    analyzer->setShortestPath(dice_.percent(88));
    analyzer->setPathCount(dice_.pick(counts));
    analyzer->setPathLimit(Delay::getMaximum());
    if (dice_.oneIn(2))
        analyzer->setPathLimit(dice_.oneIn(12) ? Delay::getMinimum() : Delay(dice_.between(-20, 30)));
    // Reading the time at every pole is most of the cost of a run on a small design.
    model_.getApplication()->setBatch(!dice_.oneIn(10));
    Pelko::Analyzer::_muted = dice_.percent(25);
    Ruvex::setDebug(dice_.percent(25));
}

void RandomDesign::change() {
    const std::vector<std::function<void()>> changes{
        [this] { drawSettings(); },
        [this] {
            if (roots_.empty())
                return;
            Pole* root = dice_.pick(roots_);
            dice_.oneIn(2) ? drawClock(root) : analyzer->removeClock(root);
        },
        [this] {
            analyzer->clearClockGroups();
            if (knobs_.clockGroups && dice_.oneIn(2))
                drawClockGroups();
        },
        [this] {
            if (const unsigned long count = analyzer->getDomains().getCount())
                analyzer->getDomains().getAt(dice_.below(count))->destroy();
        },
        [this] {
            if (knobs_.exceptions && analyzer->getCPaths().getCount() < 64)
                drawException();
        },
        [] {
            for (CPath* path : analyzer->getCPaths())
                if (path->isDestroyable()) {
                    path->destroy();
                    break;
                }
        },
        [this] {
            for (Edge* edge : model_.getCell()->getEdges())
                if (dice_.oneIn(8))
                    edge->isActive() ? edge->disactivate() : edge->activate();
        },
        [this] {
            for (Domain* domain : analyzer->getDomains())
                for (Subdomain* subdomain : domain->getSubdomains()) {
                    if (dice_.oneIn(6))
                        subdomain->fixSetupRelation(Delay(dice_.between(0, 30)));
                    if (dice_.oneIn(6))
                        subdomain->fixHoldRelation(Delay(dice_.between(-10, 10)));
                }
        },
    };
    if (dice_.oneIn(2))
        analyzer->clearResults();
    for (unsigned left = dice_.below(4); left > 0; --left)
        dice_.pick(changes)();
    if (dice_.percent(70))
        analyzer->setDomainsOnly(false);
}

void RandomDesign::scatterResults() {
    static const std::vector<Delay> specials{Delay::getUndefined(), Delay::getMinimum(), Delay::getMaximum(),
                                             Delay(2147483000)};
    const int spread = dice_.oneIn(3) ? 3 : 25;
    for (Edge* edge : model_.getCell()->getEdges())
        if (!dice_.oneIn(4))
            edge->setSlack(Delay(dice_.between(-spread, spread)));
    for (Domain* domain : analyzer->getDomains())
        for (Subdomain* subdomain : domain->getSubdomains())
            if (!dice_.oneIn(6))
                subdomain->setLAT(dice_.oneIn(12) ? dice_.pick(specials) : Delay(dice_.between(-5, 60)));
}

} // namespace oracle
