// What a host clears between two runs: all results of a run, and none of its inputs.
#include "ModelTest.h"
#include "Refused.h"

namespace HostTest {

namespace {

class Results : public ModelTest {
protected:
    // Sets the constraints of a design.
    void SetUp() override {
        analyzer->setClock(clk_, Delay(10), Delay(1), Delay(4), Delay(6));
        analyzer->setDutyRatio(other_, 30);
        analyzer->setSourceLatency(clk_, Delay(1), Delay(2));
        analyzer->setInputConstraint(in_, IOConstraint(clk_, ClockMode::Rising, Delay(1), Delay(2)));
        analyzer->setOutputConstraint(out_, IOConstraint(clk_, ClockMode::Rising, Delay(1), Delay(2)));
        analyzer->addClockGroups(Analyzer::GroupKind::Asynchronous, {{clk_}, {other_}});
        analyzer->setPathCount(5);
        analyzer->setPathLimit(Delay(100));
        analyzer->setVerbose(true);
        cycles_->setAlias("slow");
        domain_->setAsynchronous(true);
        subdomain_->captureLaunch(in_);
        subdomain_->captureLatch(out_);
        fixed_->fixSetupRelation(Delay(7));
        cut_->disactivate();
    }

    // Writes every kind of result that a run can write.
    void analyse() {
        PseudoMask::reset(3);
        cycles_->setPseudoMask(PseudoMask::getBasic(1));
        false_->setPseudoMask(PseudoMask::getBasic(2));
        limit_->setPseudoMask(PseudoMask::getBasic(3));
        analyzer->setFalsePathMask(PseudoMask(2));
        analyzer->setMulticyclePathMask(PseudoMask(1));
        analyzer->setMaxdelayPathMask(PseudoMask(4));
        analyzer->setMindelayPathMask(PseudoMask(8));
        for (Edge* edge : cell->getEdges()) {
            edge->setSlack(Delay(-1));
            edge->setWeight(9);
            edge->setMinDutyCycle(40);
            edge->sensitize(PseudoMask(3));
        }
        for (Pole* pole : cell->getPoles())
            pole->mark();
        for (Subdomain* subdomain : {subdomain_, fixed_}) {
            subdomain->setSetupRelation(Delay(10));
            subdomain->setHoldRelation(Delay(0));
            subdomain->setCriticity(2);
            subdomain->setLAT(Delay(5));
            subdomain->setSAT(Delay(4));
            subdomain->setDecisive(true);
            subdomain->setMPathCritical();
            Path::createLongest(subdomain, view({arc_}), Delay(0), Delay(0), Delay(0))
                ->setConstrainedPath(cycles_);
            Path::createShortest(subdomain, view({arc_}), Delay(0), Delay(0), Delay(0));
        }
        cycles_->mergeLongestSlack(Delay(-2));
        limit_->mergeShortestSlack(Delay(-2));
        cycles_->validate();
        analyzer->setPeriod(clk_, Delay(8));
        analyzer->setPLLFeedbackDelay(clk_, Delay(3), Delay(4));
        analyzer->setPLLFeedbackDelay(in_, Delay(3), Delay(4));
        analyzer->mergeIODelayLongestSlack(in_, Delay(3));
        analyzer->mergeIODelayShortestSlack(out_, Delay(3));
    }

    Pole* clk_ = Pole::createClockSource(cell, "clk");
    Pole* other_ = Pole::createClockSource(cell, "other");
    Pole* in_ = Pole::createInput(cell, "in");
    Pole* out_ = Pole::createOutput(cell, "out");
    Edge* arc_ = connect(in_, out_, 2, 7);
    Edge* cut_ = connect(clk_, out_, 1, 1);
    MPath* cycles_ = MPath::create({{in_}, {out_}}, 2);
    FPath* false_ = FPath::create({{in_}, {out_}});
    DPath* limit_ = DPath::createMinimum({{clk_}, {}}, Delay(1));
    Subdomain* subdomain_ = addSubdomain(clk_, clk_);
    Subdomain* fixed_ = addSubdomain(clk_, clk_, ClockMode::Rising, ClockMode::Falling);
    Domain* domain_ = subdomain_->getDomain();
};

TEST_F(Results, AreClearedAndNothingElse) {
    PseudoMask::reset(3); // the class space of the run stays
    const std::string before = takeSnapshot();
    for (int run = 0; run < 3; ++run) {
        analyse();
        EXPECT_NE(takeSnapshot(), before);
        analyzer->clearResults();
        EXPECT_EQ(takeSnapshot(), before);
        analyzer->clearResults();
        EXPECT_EQ(takeSnapshot(), before);
    }
    // Also read one by one, to check the snapshot itself.
    EXPECT_FALSE(arc_->getSlack().isDefined());
    EXPECT_TRUE(subdomain_->getLongestPaths().isEmpty());
    EXPECT_TRUE(in_->getOpeningPseudoMask().isEmpty());
    EXPECT_TRUE(out_->getClosingPseudoMask().isEmpty());
    EXPECT_TRUE(analyzer->getMulticyclePathMask().isEmpty());
    EXPECT_TRUE(arc_->isDestroyable());
    EXPECT_FALSE(in_->isMarked());
    EXPECT_FALSE(analyzer->getPeriod(clk_).isDefined());
    EXPECT_FALSE(analyzer->getIODelayLongestSlack(in_).isDefined());
    EXPECT_EQ(int(fixed_->getSetupRelation()), 7);
    EXPECT_FALSE(fixed_->getHoldRelation().isDefined());
    EXPECT_FALSE(cut_->isActive());
    EXPECT_TRUE(domain_->isAsynchronous());
    EXPECT_EQ(int(analyzer->getMinPLLFeedbackDelay(clk_)), -1);
    EXPECT_EQ(int(analyzer->getRequiredPeriod(clk_)), 10);
    EXPECT_EQ(analyzer->getPathCount(), 5u);
}

// Without clearing, results accumulate: kept paths double, masks keep their bits, the worst slack stays.
TEST_F(Results, AccumulateOtherwise) {
    analyse();
    analyse();
    EXPECT_EQ(subdomain_->getLongestPaths().getCount(), 2u);
    arc_->sensitize(PseudoMask(4));
    EXPECT_EQ(arc_->getPseudoMask().getBits(), 7u);
    cycles_->mergeLongestSlack(Delay(5));
    EXPECT_EQ(int(cycles_->getLongestSlack()), -2);
}

// --- The class space ---

TEST_F(Results, RefusedClassesChangeNothing) {
    analyse();
    const auto reset = [](unsigned long n) { return [n] { PseudoMask::reset(n); }; };
    const auto get = [](unsigned long i) { return [i] { PseudoMask::getBasic(i); }; };
    expectRefused({
        {"65",
         reset(65),
         invalidRequest,
         "65 constrained paths: at most 64 have a class of their own",
         {"PseudoMask", "reset", 1}},
        {"class 0",
         get(0),
         invalidRequest,
         "No class 0: the classes are numbered 1 to 3",
         {"PseudoMask", "getBasic", 2}},
        {"class 4",
         get(4),
         invalidRequest,
         "No class 4: the classes are numbered 1 to 3",
         {"PseudoMask", "getBasic", 2}},
    });
}

} // namespace

} // namespace HostTest
