// Plans poles and arcs in the order of the flow, prunes the arcs, and makes the poles.
#include "RandomDesign.h"

#include "Ruvex/Utility.h"

#include <algorithm>
#include <array>
#include <set>
#include <string>

namespace oracle {

using Pelko::ClockMode;
using Pelko::Pole;

std::uint64_t Dice::next() {
    if (!bytes_.empty()) {
        const std::uint8_t byte = bytes_.front();
        bytes_ = bytes_.subspan(1);
        return byte;
    }
    std::uint64_t z = state_ += 0x9E3779B97F4A7C15U;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31);
}

namespace {

enum Kind { Source, Input, ClockNet, Register, Logic, Check, Output };

bool isStart(Kind kind) { return kind == Source || kind == Input; }
bool isEnd(Kind kind) { return kind == Check || kind == Output; }

struct PlannedPole {
    Kind kind;
    int position; // in the order of the flow
    Pelko::Pin* pin = nullptr;
    Pole* pole = nullptr; // null until it is made
};

struct PlannedArc {
    unsigned from;
    unsigned to;
};

// How likely each kind of pole is. A row per style of design: synchronous, clock network, combinational,
// anything.
constexpr std::array<std::array<unsigned, 7>, 4> styles{
    {{2, 3, 3, 6, 10, 6, 3}, {3, 1, 8, 7, 4, 4, 1}, {1, 4, 1, 1, 12, 1, 4}, {1, 1, 1, 1, 1, 1, 1}}};

// Counts the steps of a search of all simple paths, and stops at a bound.
class StepCounter {
public:
    StepCounter(std::size_t poles, const std::vector<PlannedArc>& arcs, unsigned bound)
        : targets_(poles), onPath_(poles), left_(bound) {
        for (const PlannedArc& arc : arcs)
            targets_[arc.from].push_back(arc.to);
    }
    bool fits(unsigned start) {
        onPath_[start] = true;
        bool fitting = true;
        for (const unsigned target : targets_[start])
            if (fitting && !onPath_[target])
                fitting = left_-- > 0 && fits(target);
        onPath_[start] = false;
        return fitting;
    }

private:
    std::vector<std::vector<unsigned>> targets_;
    std::vector<bool> onPath_;
    unsigned left_;
};

class GraphBuilder {
public:
    GraphBuilder(Dice& dice, const Knobs& knobs, Pelko::Cell* cell)
        : dice_(dice), knobs_(knobs), cell_(cell) {}

    void build() {
        planPoles();
        if (knobs_.plls && dice_.percent(18))
            for (unsigned plls = 1 + dice_.below(2); plls > 0; --plls)
                planPll(std::to_string(plls));
        std::stable_sort(plan_.begin(), plan_.end(),
                         [](const PlannedPole& a, const PlannedPole& b) { return a.position < b.position; });
        planArcs();
        if (knobs_.loops && plan_.size() > 2 && dice_.percent(50))
            planLoops();
        pruneArcs();
        if (dice_.oneIn(4))
            dice_.shuffle(arcs_);
        makePoles();
    }

    const std::vector<Pole*>& getPoles() const { return poles_; }
    const std::vector<Pole*>& getRoots() const { return roots_; }
    std::vector<std::pair<Pole*, Pole*>> getArcs() const {
        std::vector<std::pair<Pole*, Pole*>> arcs;
        for (const PlannedArc& arc : arcs_)
            arcs.emplace_back(plan_[arc.from].pole, plan_[arc.to].pole);
        return arcs;
    }

private:
    Pelko::Module* module() const { return cell_->getModule(); }

    void planPoles();
    void planPll(const std::string& number);
    void planGenerator(const std::string& name, Pelko::Net* net);
    bool isLikely(Kind from, Kind to) const;
    int drawSource(unsigned target);
    void planArcs();
    unsigned walkForward(unsigned pole);
    void planLoops();
    void planArc(unsigned from, unsigned to);
    void pruneArcs();
    void makePoles();
    void makePole(PlannedPole& planned);
    void makeCheck(PlannedPole& planned, Pole* clock);

    Dice& dice_;
    const Knobs& knobs_;
    Pelko::Cell* cell_;
    std::vector<PlannedPole> plan_; // in the order of the flow
    std::vector<PlannedArc> arcs_;
    std::set<std::pair<unsigned, unsigned>> known_; // arcs
    std::vector<Pole*> poles_;
    std::vector<Pole*> roots_;
};

// --- The plan ---

void GraphBuilder::planPoles() {
    const auto& weights = styles[std::min(dice_.below(9) / 2, 3U)];
    unsigned total = 0;
    for (const unsigned weight : weights)
        total += weight;
    const std::size_t count = 1 + dice_.below(dice_.percent(60) ? knobs_.poles : std::min(knobs_.poles, 22U));
    const auto add = [this](Kind kind) {
        plan_.push_back({kind, static_cast<int>(kind) * 10 + dice_.between(0, 14)});
    };
    if (count > 4 && dice_.percent(80))
        for (const Kind kind : {Source, Register, Register, Check})
            add(kind);
    while (plan_.size() < count) {
        unsigned drawn = dice_.below(total);
        unsigned kind = 0;
        while (drawn >= weights[kind])
            drawn -= weights[kind++];
        add(static_cast<Kind>(kind));
    }
}

// A PLL has a feedback pin, and waveform generators on its oscillator's net. Occasionally one of them is
// missing.
void GraphBuilder::planPll(const std::string& number) {
    auto* pll = Pelko::PLL::create(module(), "pll" + number);
    pll->setFeedbackCompensation(dice_.percent(90));
    if (dice_.percent(95)) {
        Pelko::Pin* feedback = Pelko::Pin::create(pll, "FBK");
        if (dice_.percent(95))
            plan_.push_back({ClockNet, dice_.between(20, 45), feedback});
    }
    Pelko::Net* net = Pelko::Net::create(module(), "vco" + number);
    if (dice_.percent(95)) {
        Pelko::Pin* oscillator = Pelko::Pin::create(pll, "VCO", Pelko::Pin::Direction::Driver);
        if (dice_.percent(95))
            oscillator->connect(net);
    }
    if (dice_.oneIn(6))
        Pelko::Pin::create(module(), "probe" + number)->connect(net);
    for (unsigned generators = dice_.below(4); generators > 0; --generators)
        planGenerator("wfg" + number + "_" + std::to_string(generators), net);
}

void GraphBuilder::planGenerator(const std::string& name, Pelko::Net* net) {
    Pelko::Instance* generator = nullptr;
    if (dice_.percent(90)) {
        auto* waveforms = Pelko::WFG::create(module(), name);
        waveforms->setPLLFeedback(dice_.percent(75));
        generator = waveforms;
    } else {
        generator = Pelko::Instance::create(module(), name);
    }
    Pelko::Pin::create(generator, "CKI")->connect(net);
    if (dice_.percent(5))
        return;
    Pelko::Pin* output = Pelko::Pin::create(generator, "ZO", Pelko::Pin::Direction::Driver);
    if (dice_.percent(95))
        plan_.push_back({Source, dice_.between(0, 12), output});
}

bool GraphBuilder::isLikely(Kind from, Kind to) const {
    if (to == ClockNet || to == Register)
        return from == Source || from == ClockNet ||
               (knobs_.generatedClocks && from == Register && to == ClockNet);
    return isStart(to) || from == Register || from == Input || from == Logic;
}

// A random pole of a likely kind earlier in the flow; -1 if none was found.
int GraphBuilder::drawSource(unsigned target) {
    for (int attempt = 0; attempt < 6; ++attempt) {
        const unsigned source = dice_.below(target);
        const Kind from = plan_[source].kind;
        const Kind to = plan_[target].kind;
        const bool unlikely = !isLikely(from, to);
        if (isEnd(from) || (unlikely && !knobs_.generatedClocks && (to == ClockNet || to == Register)))
            continue;
        if (!unlikely || dice_.oneIn(6))
            return static_cast<int>(source);
    }
    return -1;
}

void GraphBuilder::planArc(unsigned from, unsigned to) {
    if (from != to && known_.emplace(from, to).second)
        arcs_.push_back({from, to});
}

void GraphBuilder::planArcs() {
    for (unsigned target = 1; target < plan_.size(); ++target) {
        if (isStart(plan_[target].kind) && !dice_.oneIn(8))
            continue;
        unsigned fanin = 1;
        fanin += dice_.percent(45) ? 1 : 0;
        fanin += dice_.percent(20) ? 1 : 0;
        for (; fanin > 0; --fanin)
            if (const int source = drawSource(target); source >= 0)
                planArc(static_cast<unsigned>(source), target);
    }
}

// A pole that this one reaches. An arc from there back closes a loop.
unsigned GraphBuilder::walkForward(unsigned pole) {
    for (unsigned left = 1 + dice_.below(5); left > 0; --left) {
        std::vector<unsigned> targets;
        for (const PlannedArc& arc : arcs_)
            if (arc.from == pole && !isEnd(plan_[arc.to].kind))
                targets.push_back(arc.to);
        if (targets.empty())
            break;
        pole = dice_.pick(targets);
    }
    return pole;
}

// Every second loop is in logic, if there is logic.
void GraphBuilder::planLoops() {
    for (unsigned left = 1 + dice_.below(4); left > 0; --left)
        for (int attempt = 0; attempt < 12; ++attempt) {
            const unsigned to = dice_.below(plan_.size());
            const unsigned from = walkForward(to);
            if (from == to || isStart(plan_[to].kind) || isEnd(plan_[to].kind) ||
                (left % 2 == 0 && plan_[to].kind != Logic))
                continue;
            planArc(from, to);
            break;
        }
}

void GraphBuilder::pruneArcs() {
    const auto fits = [this] {
        StepCounter counter(plan_.size(), arcs_, knobs_.searchSteps);
        for (unsigned pole = 0; pole < plan_.size(); ++pole)
            if ((isStart(plan_[pole].kind) || plan_[pole].kind == Register) && !counter.fits(pole))
                return false;
        return true;
    };
    while (!fits())
        arcs_.erase(arcs_.begin() + dice_.below(arcs_.size()));
}

// --- The poles ---

// A check needs its clock pole. If it has none, it becomes an output port.
void GraphBuilder::makePoles() {
    std::vector<unsigned> registers;
    std::vector<unsigned> order;
    for (unsigned i = 0; i < plan_.size(); ++i) {
        if (plan_[i].kind == Register)
            registers.push_back(i);
        order.push_back(i);
    }
    if (knobs_.shuffledPoles && dice_.oneIn(4))
        dice_.shuffle(order);
    for (const unsigned i : order) {
        if (plan_[i].kind == Check && registers.empty())
            plan_[i].kind = Output;
        if (plan_[i].kind == Check) {
            PlannedPole& clock = plan_[dice_.pick(registers)];
            if (!clock.pole)
                makePole(clock);
            makeCheck(plan_[i], clock.pole);
        } else if (!plan_[i].pole) {
            makePole(plan_[i]);
        }
    }
}

void GraphBuilder::makeCheck(PlannedPole& planned, Pole* clock) {
    planned.pole = Pole::createCheck(clock, "p" + std::to_string(poles_.size()));
    if (dice_.oneIn(10))
        planned.pole->setSetupCheck(false);
    else if (dice_.oneIn(10))
        planned.pole->setHoldCheck(false);
    poles_.push_back(planned.pole);
}

void GraphBuilder::makePole(PlannedPole& planned) {
    const std::string number = std::to_string(poles_.size());
    const std::string name = dice_.oneIn(5) ? "" : "p" + number;
    Pelko::Pin* pin = planned.pin;
    if (!pin && (planned.kind == Register || dice_.oneIn(4)))
        pin = Pelko::Pin::create(Pelko::Instance::create(module(), "u" + number), "A");
    if (pin && !pin->isConnected() && dice_.oneIn(2))
        pin->connect(Pelko::Net::create(module(), "n" + number));
    const bool internalSource = knobs_.generatedClocks && !planned.pin &&
                                (planned.kind == ClockNet || planned.kind == Register) && dice_.oneIn(10);
    const bool clockPort = planned.kind == Input && dice_.oneIn(7);
    Pole* pole = pin ? Pole::create(cell_, pin, name) : Pole::create(cell_, name);
    pole->setClockSource(planned.kind == Source || internalSource || clockPort);
    pole->setInput(planned.kind == Input || (planned.kind == Source && dice_.oneIn(10)));
    pole->setOutput(planned.kind == Output);
    pole->setClock(planned.kind == Register);
    pole->setInitial(pole->isClockSource() || pole->isInput() || pole->isClock());
    pole->setTerminal(pole->isOutput());
    if (pole->isClock()) {
        pole->setClockMode(dice_.oneIn(3) ? ClockMode::Falling : ClockMode::Rising);
        pole->setCaptureInverted(knobs_.inversion && dice_.oneIn(6));
    }
    if (pole->isClockSource() || (pole->isInput() && dice_.oneIn(8)))
        roots_.push_back(pole);
    planned.pole = pole;
    poles_.push_back(pole);
}

} // namespace

// --- The design ---

RandomDesign::RandomDesign(const Dice& dice, const Knobs& knobs) : model_("top"), dice_(dice), knobs_(knobs) {
    drawDelays(drawPolesAndArcs());
    drawClocks();
    if (knobs_.ioConstraints)
        drawPortConstraints();
    if (knobs_.exceptions && dice_.percent(70))
        drawExceptions();
    if (knobs_.clockGroups && dice_.percent(30))
        drawClockGroups();
    if (knobs_.earlierResults && dice_.percent(10))
        drawEarlierResults();
    if (knobs_.brokenContract && dice_.percent(12))
        breakContract();
    drawSettings();
}

RandomDesign::~RandomDesign() {
    Pelko::Analyzer::_muted = false;
    Ruvex::setDebug(false);
}

RandomDesign::Arcs RandomDesign::drawPolesAndArcs() {
    GraphBuilder builder(dice_, knobs_, model_.getCell());
    builder.build();
    poles_ = builder.getPoles();
    roots_ = builder.getRoots();
    return builder.getArcs();
}

} // namespace oracle
