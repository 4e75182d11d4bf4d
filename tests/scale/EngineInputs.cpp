#include "EngineInputs.h"

#include "Pelko/Net.h"
#include "Pelko/Pin.h"

#include <algorithm>

namespace Scale {

namespace {

using Pelko::Pole;
using Support::Builder;
using Support::Register;

constexpr std::size_t million = 1'000'000;
constexpr int period = 4 * static_cast<int>(million);

struct Registers {
    Pole* clk;
    Register from, to;
};

Registers addRegisters(Builder& design) {
    Registers made{};
    made.clk = design.addClockSource("clk", period);
    made.from = design.addRegister("from", made.clk);
    made.to = design.addRegister("to", made.clk);
    return made;
}

// --- Length ---

// The exceptions have no kind: each costs a walk, and changes no slack.
template <int exceptions, bool isWeighted = false>
Arrivals addDataChain(Builder& design) {
    Pelko::analyzer->setWeightTagging(isWeighted);
    const Registers made = addRegisters(design);
    design.connect(design.addChain(made.from.output, million), made.to.data);
    for (int i = 0; i < exceptions; ++i)
        Pelko::CPath::create({{made.from.clock}, {made.to.check}});
    return {made.clk, made.clk, million + 1, million + 1};
}

// The chain drives the clock pin of the register that latches.
Arrivals addClockChain(Builder& design) {
    Pole* clk = design.addClockSource("clk", period);
    const Register from = design.addRegister("from", clk);
    const Register to = design.addRegister("to");
    design.connect(design.addChain(clk, million), to.clock);
    design.connect(from.output, to.data, 7, 9);
    return {clk, clk, 7 - static_cast<int>(million) - 1, 9 - static_cast<int>(million) - 1};
}

// From a waveform generator back to the PLL that drives it.
Arrivals addFeedbackChain(Builder& design) {
    const Registers made = addRegisters(design);
    design.connect(made.from.output, made.to.data, 7, 9);
    Pelko::Module* module = Pelko::cell->getModule();
    Pelko::WFG* generator = Pelko::WFG::create(module, "generator");
    generator->setPLLFeedback(true);
    Pole* source = Pole::create(Pelko::cell, Pelko::Pin::create(generator, "ZO"));
    source->setClockSource(true);
    Pelko::PLL* pll = Pelko::PLL::create(module, "pll");
    pll->setFeedbackCompensation(true);
    Pole* feedback = Pole::create(Pelko::cell, Pelko::Pin::create(pll, "FBK"));
    Pelko::Net* net = Pelko::Net::create(module, "oscillator");
    Pelko::Pin::create(pll, "VCO", Pelko::Pin::Direction::Driver)->connect(net);
    Pelko::Pin::create(generator, "I")->connect(net);
    design.connect(design.addChain(source, million), feedback);
    return {made.clk, made.clk, 7, 9};
}

// A ring is entered at its first pole. It is left at its first pole, and then it is cut; or at its last pole,
// and then no arc can be cut and the loop stays.
template <bool isCut>
Arrivals addRing(Builder& design) {
    const Registers made = addRegisters(design);
    Pole* first = design.addChain(made.from.output, 1);
    Pole* last = design.addChain(first, million - 1);
    design.connect(last, first);
    design.connect(isCut ? first : last, made.to.data);
    const int length = isCut ? 2 : million + 1;
    return {made.clk, made.clk, length, length};
}

// --- Fan-out and fan-in ---

// A clock net of a million sinks, of which two are registers with a path between them.
Arrivals addClockNet(Builder& design) {
    Pole* clk = design.addClockSource("clk", period);
    Pole* net = design.addChain(clk, 1);
    const Register from = design.addRegister("from", net);
    for (std::size_t i = 0; i < million; ++i)
        design.connect(net, design.addClock("sink" + std::to_string(i)), 1, 2);
    const Register to = design.addRegister("to", net);
    design.connect(from.output, to.data, 7, 9);
    return {clk, clk, 7, 9};
}

// A net with a million ends.
Arrivals addDataNet(Builder& design) {
    Pole* gate = design.addChain(design.addInput("in"), 1);
    for (std::size_t i = 0; i < million; ++i)
        design.connect(gate, Pole::createOutput(Pelko::cell), 1, 2);
    return {nullptr, nullptr, 2, 3};
}

// A gate with a million inputs.
Arrivals addGate(Builder& design) {
    Pole* gate = design.addPole();
    for (std::size_t i = 0; i < million; ++i)
        design.connect(Pole::createInput(Pelko::cell), gate, 1, 2);
    design.connect(gate, design.addOutput("out"));
    return {nullptr, nullptr, 2, 3};
}

// --- Components ---

// Each pole of a ring has arcs without delay to the `chords` poles behind it.
template <std::size_t poles, std::size_t chords>
Arrivals addComponent(Builder& design) {
    const Registers made = addRegisters(design);
    std::vector<Pole*> ring;
    for (std::size_t i = 0; i < poles; ++i)
        ring.push_back(design.addPole());
    for (std::size_t i = 0; i < poles; ++i)
        for (std::size_t chord = 1; chord <= chords; ++chord)
            design.connect(ring[i], ring[(i + chord) % poles], 0, 0);
    design.connect(made.from.output, ring.front(), 2, 3);
    design.connect(ring[poles / 2], made.to.data, 5, 7);
    return {made.clk, made.clk, 2 + 5, 3 + 7};
}

// --- Paths ---

// Forty stages, each of which doubles the paths. The later a stage, the less its two ways differ, and the
// shorter way comes first. So nearly every one of the 2^40 paths is a little worse than the one before it.
Arrivals addLadder(Builder& design) {
    constexpr int stages = 40;
    Pelko::analyzer->setPathCount(1000);
    Pole* here = design.addInput("in");
    int latest = 1;
    for (int stage = 0; stage < stages; ++stage) {
        const int extra = 1 << std::min(stages - 1 - stage, 24);
        Pole* first = design.addPole();
        Pole* second = design.addPole();
        Pole* join = design.addPole();
        design.connect(here, first);
        design.connect(here, second, 1, 1 + extra);
        design.connect(first, join);
        design.connect(second, join);
        latest += 2 + extra;
        here = join;
    }
    design.connect(here, design.addOutput("out"));
    return {nullptr, nullptr, 2 * stages + 1, latest};
}

} // namespace

const std::vector<EngineInput> engineInputs{
    {"a chain of data", addDataChain<0>, 15, 200},
    {"a chain of data under 60 exceptions", addDataChain<60>, 75, 200},
    {"a chain of data with weights", addDataChain<0, true>, 19, 200},
    {"a chain of feedback", addFeedbackChain, 2, 100},
    {"a chain of clock", addClockChain, 4, 260},
    {"a ring that is cut", addRing<true>, 4, 100},
    {"a ring that stays", addRing<false>, 11, 200},
    {"a clock net", addClockNet, 5, 240},
    {"a data net", addDataNet, 14, 90},
    {"a gate", addGate, 19, 120},
    {"every pole to every other one", addComponent<1000, 999>, 6, 80},
    {"a ring with chords", addComponent<500'000, 2>, 8, 80},
    {"a ladder of 2^40 paths", addLadder, 300, 25'000},
};

} // namespace Scale
