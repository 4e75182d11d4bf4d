// The prolog: loop state, insulation, classes and masks, and the PLL feedback that it ends with.
#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"
#include "tests/support/Thrown.h"

#include <gtest/gtest.h>

using Pelko::analyzer;
using Pelko::CPath;
using Pelko::Delay;
using Pelko::DPath;
using Pelko::FPath;
using Pelko::MPath;
using Pelko::Pole;
using Pelko::PseudoMask;
using Support::inactive;
using Support::Names;
using Support::namesOf;

namespace {

TEST(PrologWithoutDesign, NullAnalyzer) {
    const Support::ToolPointer tool = Support::makeTool();
    tool->loopOpen();
    Support::expectThrown({"null analyzer",
                           [&] { tool->prolog(); },
                           typeid(Ruvex::InvalidRequest),
                           "Null analyzer",
                           {"Tool", "prolog", 650}});
    Support::expectThrown({"checked before the reset",
                           [&] { tool->loopOpen(); },
                           typeid(Ruvex::InvalidRequest),
                           "Already opened",
                           {"Tool", "loopOpen", 525}});
}

class Prolog : public testing::Test {
protected:
    CPath::Objects objects() { return {{source_}, {target_}}; }
    static std::vector<unsigned long> classes() {
        std::vector<unsigned long> bits;
        for (const CPath* path : analyzer->getCPaths())
            bits.push_back(path->getPseudoMask().getBits());
        return bits;
    }
    static std::vector<unsigned long> masks() {
        return {analyzer->getFalsePathMask().getBits(), analyzer->getMaxdelayPathMask().getBits(),
                analyzer->getMindelayPathMask().getBits(), analyzer->getMulticyclePathMask().getBits()};
    }

    Support::Builder design_;
    Support::ToolPointer tool_ = Support::makeTool();
    Pole* source_ = design_.addPole("source");
    Pole* target_ = design_.addPole("target");
};

TEST_F(Prolog, ResetsTheLoopState) {
    tool_->loopOpen();
    tool_->loopPush(source_);
    tool_->prolog();
    EXPECT_EQ(namesOf(tool_->getLoopPoles()), Names{});
    EXPECT_FALSE(tool_->isLooping(source_));
    tool_->loopOpen();
}

TEST_F(Prolog, InsulatesThePolesOfInsulatedFalsePaths) {
    const auto add = [this](const char* name) { return design_.addPole(name); };
    Pole* s = add("s");
    Pole* b = add("b");
    Pole* t = add("t");
    Pole* between = add("between");
    Pole* other = add("other");
    design_.connectAll({s, between, b, t, other, s});
    design_.connect(between, other);
    design_.connect(s, t);
    FPath::create({{between}, {other}, {}}); // not insulated
    MPath::create({{between}, {other}, {}}, 2);
    FPath::create({{s}, {t}, {b}}, true);
    tool_->prolog();
    EXPECT_EQ(inactive(),
              (Names{"s -> between", "between -> b", "b -> t", "t -> other", "other -> s", "s -> t"}));
}

TEST_F(Prolog, NoException) {
    PseudoMask::reset(7);
    tool_->prolog();
    EXPECT_EQ(PseudoMask::getClassCount(), 0U);
    EXPECT_EQ(masks(), (std::vector<unsigned long>{0, 0, 0, 0}));
}

TEST_F(Prolog, ClassesInOrderAndMasksByKind) {
    MPath::create(objects(), 2);               // 1
    FPath::create(objects());                  // 2
    DPath::createMinimum(objects(), Delay(3)); // 3
    CPath::create(objects());                  // 4: of no kind
    DPath::createMaximum(objects(), Delay(3)); // 5
    FPath::create(objects(), true);            // 6: insulated ones have a class too
    MPath::create(objects(), 3);               // 7
    DPath::createMaximum(objects(), Delay(5)); // 8
    DPath::createMinimum(objects(), Delay(5)); // 9
    tool_->prolog();
    EXPECT_EQ(PseudoMask::getClassCount(), 9U);
    EXPECT_EQ(classes(), (std::vector<unsigned long>{1, 2, 4, 8, 16, 32, 64, 128, 256}));
    EXPECT_EQ(masks(), (std::vector<unsigned long>{2 | 32, 16 | 128, 4 | 256, 1 | 64}));
    EXPECT_EQ(source_->getOpeningPseudoMask().getBits(), 511U);
    EXPECT_EQ(target_->getClosingPseudoMask().getBits(), 511U);
}

// Bits from before stay; classes are assigned anew.
TEST_F(Prolog, MasksAccumulate) {
    FPath* first = FPath::create(objects());
    MPath::create(objects(), 2);
    tool_->prolog();
    first->destroy();
    FPath::create(objects());
    tool_->prolog();
    EXPECT_EQ(classes(), (std::vector<unsigned long>{1, 2}));
    EXPECT_EQ(masks(), (std::vector<unsigned long>{1 | 2, 0, 0, 1 | 2}));
}

TEST_F(Prolog, SixtyFourExceptions) {
    for (int i = 0; i < 64; ++i)
        FPath::create(objects());
    tool_->prolog();
    EXPECT_EQ(classes().back(), 1UL << 63);
    EXPECT_EQ(masks()[0], ~0UL);
}

TEST_F(Prolog, SixtyFiveExceptions) {
    for (int i = 0; i < 65; ++i)
        FPath::create(objects());
    Support::expectThrown({"65",
                           [this] { tool_->prolog(); },
                           typeid(Ruvex::InvalidRequest),
                           "65 constrained paths: at most 64 have a class of their own",
                           {"PseudoMask", "reset", 1}});
    EXPECT_EQ(classes(), std::vector<unsigned long>(65, 0)) << "before anything is handed out";
    EXPECT_EQ(masks()[0], 0U);

    const Support::Recorder console;
    EXPECT_FALSE(tool_->launch());
    EXPECT_EQ(
        console.getLines(),
        (Support::Lines{
            "error: 65 constrained paths: at most 64 have a class of their own (PseudoMask, reset, 1)"}));
    analyzer->getCPaths().getLast()->destroy();
    EXPECT_TRUE(tool_->launch());
    EXPECT_EQ(masks()[0], ~0UL);
}

TEST_F(Prolog, EndsWithThePllFeedback) {
    auto* module = Pelko::cell->getModule();
    auto* generator = Pelko::WFG::create(module, "generator");
    generator->setPLLFeedback(true);
    Pole* output = Pole::create(Pelko::cell, Pelko::Pin::create(generator, "ZO"));
    output->setClockSource(true);
    auto* pll = Pelko::PLL::create(module, "pll");
    pll->setFeedbackCompensation(true);
    Pole* feedback = Pole::create(Pelko::cell, Pelko::Pin::create(pll, "FBK"));
    auto* net = Pelko::Net::create(module, "net");
    Pelko::Pin::create(pll, "VCO", Pelko::Pin::Direction::Driver)->connect(net);
    Pelko::Pin::create(generator, "I")->connect(net);
    design_.connect(output, feedback, 3, 5);
    source_->mark();
    tool_->prolog();
    EXPECT_EQ(int(analyzer->getMinPLLFeedbackDelay(output)), 3);
    EXPECT_EQ(int(analyzer->getMaxPLLFeedbackDelay(output)), 5);
    EXPECT_EQ(Support::marked(), Names{});
}

} // namespace
