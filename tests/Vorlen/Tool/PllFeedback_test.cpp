// PLL feedback: which delay is measured from a feedback source to a feedback pin, and where it is stored.
#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"

#include <gtest/gtest.h>

#include <utility>

using Pelko::analyzer;
using Pelko::Delay;
using Pelko::Pin;
using Pelko::Pole;
using Support::marked;
using Support::Names;
using Support::namesOf;
using Support::undefined;
using Vorlen::Timing;

namespace {

using Bounds = std::pair<int, int>;

Bounds boundsOf(const Timing& timing) {
    return {int(timing.getMinimumDelay()), int(timing.getMaximumDelay())};
}

constexpr Bounds nothing{undefined, undefined};

class PllFeedback : public testing::Test {
protected:
    // Adds a generator's output: the main pole of its pin "ZO", a clock source.
    Pole* addGenerator(const std::string& name, bool feedback = true) {
        auto* generator = Pelko::WFG::create(Pelko::cell->getModule(), name);
        generator->setPLLFeedback(feedback);
        Pole* output = Pole::create(Pelko::cell, Pin::create(generator, "ZO", Pin::Direction::Driver));
        output->setClockSource(true);
        return output;
    }
    // Adds a PLL whose oscillator drives those generators. Returns its feedback pole.
    Pole* addPll(const std::string& name, const std::vector<Pole*>& driven, bool compensates = true) {
        auto* pll = Pelko::PLL::create(Pelko::cell->getModule(), name);
        pll->setFeedbackCompensation(compensates);
        Pole* feedback = Pole::create(Pelko::cell, Pin::create(pll, "FBK"));
        auto* net = Pelko::Net::create(Pelko::cell->getModule(), name + " net");
        Pin::create(pll, "VCO", Pin::Direction::Driver)->connect(net);
        for (Pole* generator : driven)
            Pin::create(generator->getPin()->getInstance(), name)->connect(net);
        return feedback;
    }
    static Bounds stored(const Pole* generator) {
        if (!analyzer->hasPLLFeedbackDelay(generator))
            return nothing;
        return {int(analyzer->getMinPLLFeedbackDelay(generator)),
                int(analyzer->getMaxPLLFeedbackDelay(generator))};
    }

    Support::Builder design_;
    Support::ToolPointer tool_ = Support::makeTool();
    Support::Recorder console_;
};

TEST_F(PllFeedback, NoPll) {
    Pole* source = addGenerator("source");
    tool_->pllFeedbackStem();
    EXPECT_EQ(stored(source), nothing);
}

TEST_F(PllFeedback, SumsTheArcsForEveryDrivenGenerator) {
    Pole* source = addGenerator("source");
    Pole* a = addGenerator("a");
    Pole* b = addGenerator("b", false); // driven generators need no feedback of their own
    Pole* apart = addGenerator("apart");
    Pole* feedback = addPll("pll", {a, b, source});
    Pole* net = design_.addPole("net");
    design_.connect(source, net, 1, 2);
    design_.connect(net, feedback, 3, 4);
    tool_->pllFeedbackStem();
    for (const Pole* generator : {a, b, source})
        EXPECT_EQ(stored(generator), Bounds(4, 6)) << generator->getName();
    EXPECT_EQ(stored(apart), nothing);
    EXPECT_EQ(marked(), Names{});
    EXPECT_EQ(namesOf(tool_->getLoopPoles()), Names{});
    EXPECT_TRUE(console_.isEmpty());
}

TEST_F(PllFeedback, RunsAgain) {
    Pole* source = addGenerator("source");
    Pole* feedback = addPll("pll", {source});
    Pelko::Edge* edge = design_.connect(source, feedback, 1, 2);
    tool_->pllFeedbackStem();
    EXPECT_EQ(stored(source), Bounds(1, 2));
    edge->setMaxDelay(Delay(9));
    tool_->pllFeedbackStem();
    EXPECT_EQ(stored(source), Bounds(1, 9));
}

// --- PLLs that store nothing ---

struct NothingRow {
    const char* what;
    void (*change)(Pole* source, Pole* relay, Pole* feedback);
};

class StoresNothing : public PllFeedback, public testing::WithParamInterface<NothingRow> {};

// source -> relay -> feedback pin, with one change.
TEST_P(StoresNothing, Row) {
    SCOPED_TRACE(GetParam().what);
    Pole* source = addGenerator("source");
    Pole* driven = addGenerator("driven");
    Pole* feedback = addPll("pll", {driven});
    Pole* relay = design_.addPole("relay");
    design_.connectAll({source, relay, feedback});
    GetParam().change(source, relay, feedback);
    tool_->pllFeedbackStem();
    EXPECT_EQ(stored(driven), nothing);
    EXPECT_EQ(stored(source), nothing);
    EXPECT_EQ(marked(), Names{});
    EXPECT_EQ(namesOf(tool_->getLoopPoles()), Names{});
    EXPECT_TRUE(console_.isEmpty());
}

template <class Kind>
Kind* instanceOf(const Pole* pole) {
    return dynamic_cast<Kind*>(pole->getPin()->getInstance());
}

const NothingRow nothingRows[] = {
    {"compensation off",
     [](Pole*, Pole*, Pole* feedback) { instanceOf<Pelko::PLL>(feedback)->setFeedbackCompensation(false); }},
    {"no feedback pole", [](Pole*, Pole*, Pole* feedback) { feedback->destroy(); }},
    {"no way to a source",
     [](Pole* source, Pole*, Pole*) { source->getOutgoingEdges().getFirst()->destroy(); }},
    {"no arc at all",
     [](Pole*, Pole*, Pole* feedback) { feedback->getIncomingEdges().getFirst()->destroy(); }},
    {"generator without feedback",
     [](Pole* source, Pole*, Pole*) { instanceOf<Pelko::WFG>(source)->setPLLFeedback(false); }},
    {"generator output that is no clock source",
     [](Pole* source, Pole*, Pole*) { source->setClockSource(false); }},
    {"a clock source without a pin in front", [](Pole*, Pole* relay, Pole*) { relay->setClockSource(true); }},
    {"an undefined minimum on the way",
     [](Pole*, Pole*, Pole* feedback) {
         feedback->getIncomingEdges().getFirst()->setMinDelay(Delay::getUndefined());
     }},
    {"an undefined maximum on the way",
     [](Pole* source, Pole*, Pole*) {
         source->getOutgoingEdges().getFirst()->setMaxDelay(Delay::getUndefined());
     }},
    {"oscillator unconnected",
     [](Pole*, Pole*, Pole* feedback) {
         feedback->getPin()->getInstance()->getPin("VCO")->connect(nullptr);
     }},
};

INSTANTIATE_TEST_SUITE_P(PllFeedback, StoresNothing, testing::ValuesIn(nothingRows));

TEST_F(PllFeedback, MissingPins) {
    auto* module = Pelko::cell->getModule();
    for (const char* present : {"", "FBK", "VCO"}) {
        auto* pll = Pelko::PLL::create(module, std::string("pll") + present);
        pll->setFeedbackCompensation(true);
        if (*present)
            Pin::create(pll, present);
    }
    // A PLL with its feedback pole, but without an oscillator.
    auto* pll = Pelko::PLL::create(module, "no oscillator");
    pll->setFeedbackCompensation(true);
    Pole* source = addGenerator("source");
    design_.connect(source, Pole::create(Pelko::cell, Pin::create(pll, "FBK")));
    tool_->pllFeedbackStem();
    EXPECT_EQ(stored(source), nothing);
}

// Receivers that are no generators, or have no output pole, are skipped; those after them are not.
TEST_F(PllFeedback, ReceiversThatAreNoGenerators) {
    auto* module = Pelko::cell->getModule();
    Pole* source = addGenerator("source");
    Pole* driven = addGenerator("driven");
    Pole* feedback = addPll("pll", {});
    auto* net = feedback->getPin()->getInstance()->getPin("VCO")->getNet();
    auto* plain = Pelko::Instance::create(module, "plain");
    Pole* plainOutput = Pole::create(Pelko::cell, Pin::create(plain, "ZO"));
    Pin::create(plain, "I")->connect(net);
    Pin::create(Pelko::WFG::create(module, "without output"), "I")->connect(net);
    auto* withoutPole = Pelko::WFG::create(module, "without pole");
    Pin::create(withoutPole, "ZO");
    Pin::create(withoutPole, "I")->connect(net);
    Pin::create(module, "port")->connect(net);
    Pin::create(driven->getPin()->getInstance(), "I")->connect(net);
    design_.connect(source, feedback, 1, 2);
    tool_->pllFeedbackStem();
    EXPECT_EQ(stored(driven), Bounds(1, 2));
    EXPECT_EQ(stored(plainOutput), nothing);
}

// --- The way back ---

TEST_F(PllFeedback, FirstArcThatFindsASourceDecides) {
    Pole* source = addGenerator("source");
    Pole* feedback = addPll("pll", {source});
    design_.connect(design_.addPole("dead end"), feedback, 7, 7);
    Pole* relay = design_.addPole("relay");
    design_.connect(source, relay, 1, 2);
    design_.connect(relay, feedback, 10, 20);
    design_.connect(source, feedback, 3, 4); // shorter, but added later
    tool_->pllFeedbackStem();
    EXPECT_EQ(stored(source), Bounds(11, 22));
}

TEST_F(PllFeedback, InactiveArcsCount) {
    Pole* source = addGenerator("source");
    Pole* feedback = addPll("pll", {source});
    design_.connect(source, feedback, 3, 4)->disactivate();
    tool_->pllFeedbackStem();
    EXPECT_EQ(stored(source), Bounds(3, 4));
}

TEST_F(PllFeedback, FeedbackPinThatIsASource) {
    Pole* driven = addGenerator("driven");
    Pole* feedback = addPll("pll", {driven});
    feedback->setClockSource(true); // the PLL's pole, so not a generator's
    design_.connect(addGenerator("source"), feedback);
    tool_->pllFeedbackStem();
    EXPECT_EQ(stored(driven), nothing);
}

TEST_F(PllFeedback, NegativeAndSpecialDelays) {
    struct Row {
        Bounds first, second, sum;
    };
    const Row rows[] = {
        {{-1, -2}, {3, 4}, {2, 2}},
        {{0, 0}, {0, 0}, {0, 0}},
        {{Support::minimum, 1}, {3, Support::maximum}, {Support::minimum, Support::maximum}},
        {{undefined, 1}, {3, 4}, {undefined, 5}}, // only half of it is defined: nothing is stored
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.sum));
        Pole* source = addGenerator("source" + std::to_string(&row - rows));
        Pole* relay = design_.addPole("relay");
        Pole* feedback = addPll("pll" + std::to_string(&row - rows), {source});
        design_.connect(source, relay, row.first.first, row.first.second);
        design_.connect(relay, feedback, row.second.first, row.second.second);
        Timing timing;
        tool_->pllFeedbackStem(feedback, timing);
        EXPECT_EQ(boundsOf(timing), row.sum);
        analyzer->unmark();
        tool_->pllFeedbackStem();
        EXPECT_EQ(stored(source), timing.isUndefined() ? nothing : row.sum);
    }
}

// Marks are cleared after all PLLs, so the second walk stops at the poles of the first.
TEST_F(PllFeedback, SharedFeedback) {
    Pole* source = addGenerator("source");
    Pole* a = addGenerator("a");
    Pole* b = addGenerator("b");
    Pole* c = addGenerator("c");
    Pole* shared = design_.addPole("shared");
    design_.connect(source, shared, 1, 1);
    design_.connect(shared, addPll("first", {a}), 1, 1);
    design_.connect(shared, addPll("second", {b}), 1, 1);
    Pole* third = addPll("third", {c});
    design_.connect(shared, third, 1, 1);
    design_.connect(addGenerator("own"), third, 5, 5); // and a way from a generator of its own
    tool_->pllFeedbackStem();
    EXPECT_EQ(stored(a), Bounds(2, 2));
    EXPECT_EQ(stored(b), nothing);
    EXPECT_EQ(stored(c), Bounds(5, 5));
    EXPECT_EQ(marked(), Names{});
}

// A loop is skipped at the pole on the way: neither cut nor counted.
TEST_F(PllFeedback, Loop) {
    Pole* source = addGenerator("source");
    Pole* feedback = addPll("pll", {source});
    Pole* merge = design_.addPole("merge");
    Pole* back = design_.addPole("back");
    design_.connect(merge, back, 100, 100);
    design_.connect(back, merge, 100, 100);
    design_.connect(source, merge, 1, 2);
    design_.connect(merge, feedback, 3, 4);
    tool_->pllFeedbackStem();
    EXPECT_EQ(stored(source), Bounds(4, 6));
    EXPECT_EQ(Support::inactive(), Names{});
    EXPECT_EQ(marked(), Names{});
    EXPECT_TRUE(console_.isEmpty());
}

TEST_F(PllFeedback, LoopWithoutASource) {
    Pole* driven = addGenerator("driven");
    Pole* feedback = addPll("pll", {driven});
    Pole* a = design_.addPole("a");
    Pole* b = design_.addPole("b");
    design_.connectAll({a, b, a});
    design_.connect(b, feedback);
    tool_->pllFeedbackStem();
    EXPECT_EQ(stored(driven), nothing);
    EXPECT_EQ(Support::inactive(), Names{});
    EXPECT_TRUE(console_.isEmpty());
}

// --- One walk ---

TEST_F(PllFeedback, WalkMarksWhatItPassed) {
    Pole* source = addGenerator("source");
    Pole* relay = design_.addPole("relay");
    Pole* end = design_.addPole("end");
    Pole* unseen = design_.addPole("unseen");
    design_.connectAll({source, relay, end});
    design_.connect(unseen, relay); // behind the arc that decides
    Timing timing;
    tool_->pllFeedbackStem(end, timing);
    EXPECT_EQ(boundsOf(timing), Bounds(2, 2));
    EXPECT_EQ(marked(), (Names{"source/ZO", "relay", "end"}));
    EXPECT_EQ(namesOf(tool_->getLoopPoles()), Names{});

    Timing again(Delay(7), Delay(8));
    tool_->pllFeedbackStem(end, again);
    EXPECT_EQ(boundsOf(again), Bounds(7, 8)) << "a marked pole: unchanged";
}

// The timing is defined already, so no arc is visited.
TEST_F(PllFeedback, WalkWithADefinedTiming) {
    Pole* relay = design_.addPole("relay");
    design_.connect(addGenerator("source"), relay);
    Timing timing(Delay(7), Delay(8));
    tool_->pllFeedbackStem(relay, timing);
    EXPECT_EQ(boundsOf(timing), Bounds(7, 8));
    EXPECT_EQ(marked(), Names{"relay"});
}

} // namespace
