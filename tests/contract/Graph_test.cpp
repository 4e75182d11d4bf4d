// The graph as an analysis reads it: poles and their kinds, arcs and their attributes, marks, pins, PLLs.
#include "CollectionChecks.h"
#include "Design.h"
#include "tests/support/Rows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Contract {

namespace {

using namespace Pelko;
using testing::ElementsAre;

class Graph : public testing::Test {
protected:
    std::unique_ptr<Design> design_ = Design::create();
};

// --- Poles ---

std::string kindsOf(const Pole* pole) {
    std::string kinds;
    const auto note = [&kinds](bool has, const char* kind) { kinds += has ? std::string(" ") + kind : ""; };
    note(pole->isInput(), "input");
    note(pole->isOutput(), "output");
    note(pole->isClock(), "clock");
    note(pole->isClockSource(), "source");
    note(pole->isInitial(), "initial");
    note(pole->isTerminal(), "terminal");
    note(pole->isCheck(), "check");
    note(pole->isCaptureInverted(), "inverted");
    return kinds;
}

TEST_F(Graph, KindsOfPoles) {
    Pole* clock = design_->addClock("r1/C", ClockMode::Rising);
    Pole* falling = design_->addClock("r2/C", ClockMode::Falling);
    struct {
        Pole* pole;
        const char* name;
        const char* kinds;
        ClockMode::Code mode;
    } const rows[] = {
        {design_->addPole("n"), "n", "", ClockMode::None},
        {design_->addInput("in"), "in", " input initial", ClockMode::None},
        {design_->addOutput("out"), "out", " output terminal", ClockMode::None},
        {design_->addClockSource("clk"), "clk", " source initial", ClockMode::None},
        {clock, "r1/C", " clock initial", ClockMode::Rising},
        {falling, "r2/C", " clock initial", ClockMode::Falling},
        {design_->addCheck(clock, "r1/D"), "r1/D", " terminal check", ClockMode::None},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(row.pole->getName(), row.name);
        EXPECT_EQ(kindsOf(row.pole), row.kinds) << row.name;
        EXPECT_EQ(row.pole->getClockMode().getCode(), row.mode) << row.name;
        EXPECT_TRUE(row.pole->getOpeningPseudoMask().isEmpty());
        EXPECT_TRUE(row.pole->getClosingPseudoMask().isEmpty());
        EXPECT_FALSE(row.pole->isMarked());
    }
}

TEST_F(Graph, ChecksBelongToTheirClockPole) {
    Pole* clock = design_->addClock("r/C", ClockMode::Rising);
    Pole* data = design_->addCheck(clock, "r/D");
    Pole* enable = design_->addCheck(clock, "r/E");
    Pole* other = design_->addClock("s/C", ClockMode::Rising);
    for (Pole* check : {data, enable}) {
        EXPECT_EQ(check->getClockPole(), clock);
        EXPECT_EQ(check->getMainPole(), clock);
        EXPECT_EQ(check->getPin(), clock->getPin());
    }
    EXPECT_EQ(clock->getMainPole(), clock);
    EXPECT_EQ(cell->getMainPole(clock->getPin()), clock);
    EXPECT_EQ(clock->getPin()->getMainPole(), clock);
    EXPECT_THAT(walk(cell->getAuxiliaryPoles(clock->getPin())), ElementsAre(data, enable));
    EXPECT_TRUE(cell->getAuxiliaryPoles(other->getPin()).isEmpty());
    EXPECT_EQ(cell->getMainPole(nullptr), nullptr);
    EXPECT_TRUE(cell->getAuxiliaryPoles(nullptr).isEmpty());
}

TEST_F(Graph, PolesAreReadInOrderOfCreation) {
    std::vector<Pole*> poles;
    for (const char* name : {"c", "a", "b"})
        poles.push_back(design_->addPole(name));
    EXPECT_EQ(walk(cell->getPoles()), poles);
    EXPECT_EQ(cell->getPoles().getCount(), 3u);
    poles[1]->destroy();
    EXPECT_THAT(walk(cell->getPoles()), ElementsAre(poles[0], poles[2]));
    EXPECT_EQ(cell->getPoles().getCount(), 2u);
}

// --- Arcs ---

TEST_F(Graph, ArcsInOrderOfCreation) {
    Pole* a = design_->addPole("a");
    Pole* b = design_->addPole("b");
    Pole* c = design_->addPole("c");
    Edge* cb = design_->addEdge(c, b, 1, 2);
    Edge* ab = design_->addEdge(a, b, 3, 4);
    Edge* ac = design_->addEdge(a, c, 5, 6);
    EXPECT_THAT(walk(cell->getEdges()), ElementsAre(cb, ab, ac));
    struct {
        Pole* pole;
        std::vector<Edge*> incoming, outgoing;
    } const rows[] = {{a, {}, {ab, ac}}, {b, {cb, ab}, {}}, {c, {ac}, {cb}}};
    for (const auto& [pole, incoming, outgoing] : rows) {
        SCOPED_TRACE(pole->getName());
        EXPECT_EQ(walk(pole->getIncomingEdges()), incoming);
        EXPECT_EQ(walk(pole->getOutgoingEdges()), outgoing);
    }
    struct {
        Pole *target, *source;
        Edge* edge;
    } const between[] = {{b, c, cb},      {b, a, ab},      {c, a, ac},      {a, b, nullptr},
                         {b, b, nullptr}, {c, b, nullptr}, {a, a, nullptr}, {b, nullptr, nullptr}};
    for (const auto& [target, source, edge] : between)
        EXPECT_EQ(target->getIncomingEdge(source), edge);
}

TEST_F(Graph, WhatIsWrittenOnAnArc) {
    Pole* a = design_->addPole("a");
    Pole* b = design_->addPole("b");
    Edge* edge = design_->addEdge(a, b, 3, 4);
    EXPECT_EQ(edge->getSource(), a);
    EXPECT_EQ(edge->getTarget(), b);
    EXPECT_EQ(int(edge->getMinDelay()), 3);
    EXPECT_EQ(int(edge->getMaxDelay()), 4);
    EXPECT_TRUE(edge->isActive());
    EXPECT_TRUE(edge->getPseudoMask().isEmpty());
    EXPECT_FALSE(edge->getSlack().isDefined());
    EXPECT_EQ(edge->getWeight(), 0u);
    EXPECT_EQ(edge->getMinDutyCycle(), 100u);

    edge->sensitize(PseudoMask(1));
    edge->sensitize(PseudoMask(6));
    edge->sensitize(PseudoMask());
    EXPECT_EQ(edge->getPseudoMask().getBits(), 7u);
    edge->setWeight(~0UL);
    EXPECT_EQ(edge->getWeight(), ~0UL);
    edge->setMinDutyCycle(40);
    EXPECT_EQ(edge->getMinDutyCycle(), 40u);
    edge->disactivate();
    EXPECT_FALSE(edge->isActive());
    edge->disactivate();
    EXPECT_FALSE(edge->isActive());
    for (const Delay& slack :
         {Delay(-5), Delay::getMinimum(), Delay::getMaximum(), Delay::getUndefined(), Delay(0)}) {
        edge->setSlack(slack);
        EXPECT_EQ(edge->getSlack(), slack);
    }
    EXPECT_EQ(int(edge->getMinDelay()), 3);
}

// --- Marks and insulation ---

TEST_F(Graph, Marks) {
    Pole* a = design_->addPole("a");
    Pole* b = design_->addPole("b");
    a->mark();
    EXPECT_TRUE(a->isMarked());
    EXPECT_FALSE(b->isMarked());
    a->mark();
    a->unmark();
    EXPECT_FALSE(a->isMarked());
    a->mark();
    b->mark();
    analyzer->unmark();
    EXPECT_FALSE(a->isMarked());
    EXPECT_FALSE(b->isMarked());
    EXPECT_FALSE(design_->addPole("c")->isMarked());
    b->mark();
    EXPECT_TRUE(b->isMarked());
    EXPECT_FALSE(a->isMarked());
}

TEST_F(Graph, InsulationCutsAllArcsOfAPole) {
    Pole* a = design_->addPole("a");
    Pole* b = design_->addPole("b");
    Pole* c = design_->addPole("c");
    Edge* in = design_->addEdge(a, b, 1, 1);
    Edge* out = design_->addEdge(b, c, 1, 1);
    Edge* past = design_->addEdge(a, c, 1, 1);
    b->insulate();
    b->insulate();
    EXPECT_FALSE(in->isActive());
    EXPECT_FALSE(out->isActive());
    EXPECT_TRUE(past->isActive());
    EXPECT_THAT(walk(b->getIncomingEdges()), ElementsAre(in));
    design_->addPole("lonely")->insulate();
}

// --- Pins, nets, PLLs ---

TEST_F(Graph, PllsAndWaveformGenerators) {
    const Module* module = cell->getModule();
    EXPECT_TRUE(module->getPLLs().isEmpty());
    PLL* second = design_->addPLL("pll2", false);
    Instance* plain = design_->addInstance("u1");
    PLL* first = design_->addPLL("pll1", true);
    EXPECT_THAT(walk(module->getPLLs()), ElementsAre(second, first));
    EXPECT_TRUE(first->hasFeedbackCompensation());
    EXPECT_FALSE(second->hasFeedbackCompensation());

    WFG* generator = design_->addWFG("wfg1", true);
    EXPECT_TRUE(generator->hasPLLFeedback());
    EXPECT_FALSE(design_->addWFG("wfg2", false)->hasPLLFeedback());

    Pin* oscillator = design_->addPin(first, "VCO");
    Pin* reference = design_->addPin(generator, "IN");
    Pin* other = design_->addPin(plain, "A");
    EXPECT_EQ(first->getPin("VCO"), oscillator);
    EXPECT_EQ(first->getPin("FBK"), nullptr);
    EXPECT_EQ(second->getPin("VCO"), nullptr);
    EXPECT_FALSE(oscillator->isConnected());
    EXPECT_EQ(oscillator->getNet(), nullptr);
    Net* net = design_->addNet(oscillator, {reference, other});
    EXPECT_TRUE(oscillator->isConnected());
    EXPECT_EQ(oscillator->getNet(), net);
    EXPECT_THAT(walk(net->getReceivers()), ElementsAre(reference, other));
    EXPECT_EQ(dynamic_cast<WFG*>(reference->getInstance()), generator);
    EXPECT_EQ(dynamic_cast<WFG*>(other->getInstance()), nullptr);
    EXPECT_EQ(reference->getMainPole(), nullptr);
}

} // namespace

} // namespace Contract
