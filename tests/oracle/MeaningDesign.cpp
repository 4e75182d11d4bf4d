// See MeaningDesign.h.
#include "MeaningDesign.h"

#include <algorithm>
#include <numeric>

namespace oracle {

using Pelko::analyzer;
using Pelko::cell;
using Pelko::ClockMode;
using Pelko::CPath;
using Pelko::Delay;
using Pelko::Edge;
using Pelko::IOConstraint;
using Pelko::Pole;
using Pelko::Subdomain;

MeaningDesign::MeaningDesign(std::uint64_t seed) : random_(seed) {
    Pelko::Object::addListener(this);
    Pelko::application->setBatch(true);
    exceptions_ = chance(50);
    bridged_ = exceptions_ && chance(30);
    fixesAll_ = exceptions_ || chance(50);
    fixesSame_ = exceptions_ || chance(75);
    makeClocks();
    makeRegisters();
    makeInputs();
    makeLogic();
    makeEnds();
    makeOutputs();
    if (exceptions_)
        makeExceptions();
    static constexpr unsigned long counts[] = {1, 3, ~0UL, 2, 1000};
    analyzer->setPathCount(counts[draw(0, 4)]);
    if (chance(30))
        analyzer->setPathLimit(Delay(draw(-20, 40)));
}

MeaningDesign::~MeaningDesign() { Pelko::Object::removeListener(this); }

int MeaningDesign::draw(int low, int high) {
    return low + static_cast<int>(random_() % static_cast<std::uint64_t>(high - low + 1));
}

Pole* MeaningDesign::pick(const std::vector<Pole*>& poles) {
    return poles[static_cast<std::size_t>(draw(0, static_cast<int>(poles.size()) - 1))];
}

std::string MeaningDesign::name(const std::string& kind) { return kind + std::to_string(++count_); }

Edge* MeaningDesign::arc(Pole* source, Pole* target) {
    const int low = chance(5) ? draw(-5, -1) : draw(0, 8);
    return Edge::create(source, target, Delay(low), Delay(low + (chance(30) ? 0 : draw(0, 8))));
}

// Arcs from up to `count` different poles.
void MeaningDesign::join(const std::vector<Pole*>& sources, Pole* target, int count) {
    for (int i = 0; i < count && !sources.empty(); ++i)
        if (Pole* source = pick(sources); !target->getIncomingEdge(source))
            arc(source, target);
}

// --- Clocks and registers ---

void MeaningDesign::makeClocks() {
    for (int i = draw(1, 2); i > 0; --i) {
        Pole* source = Pole::createClockSource(cell, name("clk"));
        const int period = draw(2, 24);
        const int high = draw(1, period - 1);
        analyzer->setClock(source, Delay(period), Delay(draw(0, 30)), Delay(high), Delay(period - high));
        if (chance(30)) {
            const int early = draw(0, 10);
            analyzer->setSourceLatency(source, Delay(early), Delay(early + draw(0, 5)));
        }
        sources_.push_back(source);
        clockPoles_.push_back(source);
        if (chance(30)) { // one trunk feeds its whole tree, and data may use the source
            clockPoles_.back() = Pole::create(cell, name("trunk"));
            arc(source, clockPoles_.back());
            tapped_.push_back(source);
        }
    }
    for (int i = draw(0, 4); i > 0; --i) {
        Pole* buffer = Pole::create(cell, name("buffer"));
        join(clockPoles_, buffer, chance(25) ? 2 : 1);
        clockPoles_.push_back(buffer);
    }
}

Pole* MeaningDesign::makeClockPin(ClockMode::Code mode) {
    Pelko::Instance* instance = Pelko::Instance::create(cell->getModule(), name("u"));
    Pole* clock =
        Pole::createClock(cell, Pelko::Pin::create(instance, "CK"), mode, instance->getName() + "/CK");
    clock->setCaptureInverted(chance(10));
    return clock;
}

void MeaningDesign::makeRegisters() {
    for (int i = draw(1, 5); i > 0; --i) {
        std::vector<Pole*> pins;
        if (chance(15)) { // on both edges, behind one neutral pole
            Pole* neutral = Pole::create(cell, name("both"));
            join(clockPoles_, neutral, 1);
            for (const auto mode : {ClockMode::Falling, ClockMode::Rising}) {
                pins.push_back(makeClockPin(mode));
                arc(neutral, pins.back());
            }
        } else {
            pins.push_back(makeClockPin(chance(70) ? ClockMode::Rising : ClockMode::Falling));
            join(clockPoles_, pins.back(), chance(5) ? 0 : chance(20) ? 2 : 1);
        }
        registers_.push_back(pins);
    }
    for (const std::vector<Pole*>& pins : registers_) {
        Pole* output = Pole::create(cell, name("Q"));
        for (Pole* pin : pins) {
            arc(pin, output);
            starts_.push_back(pin);
        }
        data_.push_back(output);
    }
}

// --- Ports and logic ---

// Sometimes without one of the bounds; sometimes without a clock. An input may have no edge either.
IOConstraint MeaningDesign::makeConstraint(bool input) {
    Pole* root = chance(90) ? pick(sources_) : nullptr;
    const ClockMode::Code mode = input && chance(10) ? ClockMode::None
                                 : chance(60)        ? ClockMode::Rising
                                                     : ClockMode::Falling;
    const int low = draw(-3, 10);
    return IOConstraint(root, mode, chance(10) ? Delay::getUndefined() : Delay(low),
                        chance(10) ? Delay::getUndefined() : Delay(low + draw(0, 10)));
}

void MeaningDesign::makeInputs() {
    for (int i = draw(0, 3); i > 0; --i) {
        Pole* input = Pole::createInput(cell, name("in"));
        if (chance(65))
            analyzer->setInputConstraint(input, makeConstraint(true));
        starts_.push_back(input);
        data_.push_back(input);
    }
}

void MeaningDesign::makeLogic() {
    if (!tapped_.empty() && chance(40))
        data_.push_back(pick(tapped_));
    for (int i = draw(0, 10); i > 0; --i) {
        Pole* gate = Pole::create(cell, name("gate"));
        join(data_, gate, draw(1, 3));
        for (Edge* edge : gate->getIncomingEdges()) {
            const bool inside = std::count(gates_.begin(), gates_.end(), edge->getSource()) != 0;
            if (inside && chance(5))
                edge->disactivate();
        }
        data_.push_back(gate);
        gates_.push_back(gate);
    }
}

void MeaningDesign::makeEnds() {
    for (const std::vector<Pole*>& pins : registers_) {
        Pole* pin = Pole::create(cell, name("D"));
        join(data_, pin, chance(10) ? 0 : draw(1, 3));
        std::vector<Pole*> checked(pins);
        if (chance(10)) // another clock pin checks this data pin too
            checked.push_back(
                pick(registers_[static_cast<std::size_t>(draw(0, static_cast<int>(registers_.size()) - 1))]));
        for (Pole* clock : checked) {
            Pole* check = Pole::createCheck(clock, name("check"));
            arc(pin, check);
            if (chance(10)) // straight to the check
                join(data_, check, 1);
            ends_.push_back(check);
        }
    }
}

void MeaningDesign::makeOutputs() {
    for (int i = draw(0, 3); i > 0; --i) {
        Pole* output = Pole::createOutput(cell, name("out"));
        join(data_, output, chance(10) ? 0 : draw(1, 3));
        if (chance(65))
            analyzer->setOutputConstraint(output, makeConstraint(false));
        ends_.push_back(output);
    }
}

// Each end point belongs to at most one exception, so that no path is under two exceptions.
void MeaningDesign::makeExceptions() {
    std::vector<CPath::Objects> objects(static_cast<std::size_t>(draw(1, 4)));
    for (Pole* end : ends_)
        if (const auto to = static_cast<std::size_t>(draw(0, 4)); to < objects.size())
            objects[to].targets.push_back(end);
    for (CPath::Objects& one : objects) {
        for (Pole* start : starts_)
            if (chance(70))
                one.sources.push_back(start);
        if (bridged_ && !gates_.empty())
            one.bridges.push_back(pick(gates_));
        switch (draw(0, 3)) {
        case 0:
            Pelko::FPath::create(one);
            break;
        case 1:
            Pelko::DPath::createMaximum(one, Delay(draw(0, 60)));
            break;
        case 2:
            Pelko::DPath::createMinimum(one, Delay(draw(-10, 40)));
            break;
        default:
            Pelko::MPath::create(one, static_cast<unsigned long>(draw(1, 4)));
        }
    }
}

// --- Relations ---

EdgePair MeaningDesign::clocksOf(const Subdomain* subdomain) {
    return {subdomain->getLaunchRoot(), subdomain->getLaunchClockMode().getCode(), subdomain->getLatchRoot(),
            subdomain->getLatchClockMode().getCode()};
}

// The differences between the edges of two clocks are all those that are equal modulo the greatest common
// divisor of the periods. The smallest positive one is the setup relation. The latest earlier capture is one
// divisor before that, and the hold relation is its negated time.
void MeaningDesign::onCreated(Pelko::Object* object) {
    auto* subdomain = dynamic_cast<Subdomain*>(object);
    if (!subdomain)
        return;
    const EdgePair clocks = clocksOf(subdomain);
    if (!clocks.launchRoot || !clocks.latchRoot) {
        if (!fixesAll_)
            return;
        const Demand demand{draw(0, 40), draw(-20, 5)};
        fixed_[clocks] = demand;
        subdomain->fixSetupRelation(Delay(static_cast<int>(*demand.setup)));
        subdomain->fixHoldRelation(Delay(static_cast<int>(-*demand.hold)));
        return;
    }
    if (clocks.launchRoot == clocks.latchRoot && !fixesSame_) {
        if (clocks.launchMode != clocks.latchMode)
            holdMeaningful_ = false;
        return;
    }
    const auto edgeOf = [](Pole* root, ClockMode::Code mode) {
        return int(analyzer->getShift(root)) +
               (mode == ClockMode::Falling ? int(analyzer->getHighWidth(root)) : 0);
    };
    const int step = std::gcd(int(analyzer->getRequiredPeriod(clocks.launchRoot)),
                              int(analyzer->getRequiredPeriod(clocks.latchRoot)));
    int separation =
        (edgeOf(clocks.latchRoot, clocks.latchMode) - edgeOf(clocks.launchRoot, clocks.launchMode)) % step;
    if (separation <= 0)
        separation += step;
    subdomain->fixSetupRelation(Delay(separation));
    subdomain->fixHoldRelation(Delay(step - separation));
}

Demand MeaningDesign::getDemand(const EdgePair& clocks) const {
    if (const auto found = fixed_.find(clocks); found != fixed_.end())
        return found->second;
    if (!clocks.launchRoot || !clocks.latchRoot)
        return {};
    Demand demand = demandOfWaveforms(clocks);
    // The driver leaves equal edges of one clock without a hold relation.
    if (clocks.launchRoot == clocks.latchRoot && !fixesSame_)
        demand.hold.reset();
    return demand;
}

std::set<EdgePair> MeaningDesign::getSubdomains() const {
    std::set<EdgePair> pairs;
    for (Pelko::Domain* domain : analyzer->getDomains())
        for (Subdomain* subdomain : domain->getSubdomains())
            pairs.insert(clocksOf(subdomain));
    return pairs;
}

// --- Text ---

std::string MeaningDesign::getText() const {
    std::string text;
    for (Pole* source : sources_)
        text += "clock " + source->getName() + " period " + analyzer->getRequiredPeriod(source)._getLabel() +
                " shift " + analyzer->getShift(source)._getLabel() + " high " +
                analyzer->getHighWidth(source)._getLabel() + "\n";
    for (Edge* edge : cell->getEdges())
        text += edge->getAlias() + " " + edge->getMinDelay()._getLabel() + " " +
                edge->getMaxDelay()._getLabel() + (edge->isActive() ? "" : " inactive") + "\n";
    for (Pole* pole : analyzer->getConstrainedInputs())
        text += "input " + pole->getName() + " " + analyzer->getInputConstraint(pole)._getLabel() + "\n";
    for (Pole* pole : analyzer->getConstrainedOutputs())
        text += "output " + pole->getName() + " " + analyzer->getOutputConstraint(pole)._getLabel() + "\n";
    for (CPath* path : analyzer->getCPaths()) {
        text += path->getAlias();
        for (Pole* pole : path->getPoles())
            text += " " + pole->getName();
        text += "\n";
    }
    return text + "paths " + std::to_string(analyzer->getPathCount()) + ", limit " +
           analyzer->getPathLimit()._getLabel() + "\n";
}

} // namespace oracle
