// What an analysis reads from the database and writes into it: settings, exceptions, domains, clocks, ports,
// paths.
#include "CollectionChecks.h"
#include "Design.h"
#include "tests/support/Rows.h"
#include "tests/support/Thrown.h"

#include <gmock/gmock.h>

#include <climits>
#include <utility>

namespace Contract {

namespace {

using namespace Pelko;
using testing::ElementsAre;

class Analysis : public testing::Test {
protected:
    std::unique_ptr<Design> design_ = Design::create();
    Pole* clock_ = design_->addClockSource("clk");
    Pole* other_ = design_->addClockSource("other");
};

TEST_F(Analysis, SettingsBeforeAnyWrite) {
    EXPECT_FALSE(Analyzer::_muted);
    EXPECT_FALSE(analyzer->isVerbose());
    EXPECT_EQ(analyzer->getAnalysisMode().getEffective().getCode(), 3);
    EXPECT_FALSE(analyzer->isDomainsOnly());
    EXPECT_TRUE(analyzer->isSlackTagging());
    EXPECT_FALSE(analyzer->isWeightTagging());
    EXPECT_TRUE(analyzer->isLongestPath());
    EXPECT_TRUE(analyzer->isShortestPath());
    EXPECT_EQ(analyzer->getPathCount(), 1u);
    EXPECT_EQ(analyzer->getPathLimit(), Delay::getMaximum());
    EXPECT_FALSE(application->isBatch());
    EXPECT_TRUE(application->getEventTimer().isValid());
    EXPECT_GE(application->getEventTimer().elapsed(), 0);
}

// --- Exceptions ---

TEST_F(Analysis, ConstrainedPathsByKindAndMask) {
    EXPECT_TRUE(analyzer->getCPaths().isEmpty());
    EXPECT_TRUE(analyzer->getFalsePaths().isEmpty());
    FPath* falsePath = design_->addFalsePath({clock_}, {other_}, false);
    DPath* maximum = design_->addDelayPath({clock_}, {}, 100, true);
    DPath* minimum = design_->addDelayPath({clock_}, {}, -3, false);
    MPath* multicycle = design_->addMulticycle({other_}, {}, 4);
    FPath* insulated = design_->addFalsePath({other_}, {}, true);
    EXPECT_THAT(walk(analyzer->getCPaths()), ElementsAre(falsePath, maximum, minimum, multicycle, insulated));
    EXPECT_THAT(walk(analyzer->getFalsePaths()), ElementsAre(falsePath, insulated));
    EXPECT_FALSE(falsePath->isInsulated());
    EXPECT_TRUE(insulated->isInsulated());
    EXPECT_TRUE(maximum->isMaximum());
    EXPECT_FALSE(minimum->isMaximum());
    EXPECT_EQ(int(maximum->getMaxdelay()), 100);
    EXPECT_EQ(int(minimum->getMindelay()), -3);
    EXPECT_EQ(multicycle->getMultiplier(), 4u);
    Support::expectThrown({
        {"maximum of a minimum",
         [&] { minimum->getMaxdelay(); },
         typeid(Ruvex::InvalidRequest),
         "Invalid maxdelay",
         {"DPath", "getMaxdelay", 123}},
        {"minimum of a maximum",
         [&] { maximum->getMindelay(); },
         typeid(Ruvex::InvalidRequest),
         "Invalid mindelay",
         {"DPath", "getMindelay", 135}},
    });

    unsigned long bits = 1;
    for (CPath* path : analyzer->getCPaths())
        path->setPseudoMask(PseudoMask(std::exchange(bits, bits << 1)));
    multicycle->setPseudoMask(PseudoMask(0b101000)); // a mask with either bit matches it
    struct {
        unsigned long mask;
        std::vector<CPath*> paths;
    } const rows[] = {
        {0, {}},
        {1, {falsePath}},
        {0b110, {maximum, minimum}},
        {0b100000, {multicycle}},
        {0b011001, {falsePath, multicycle, insulated}},
        {~0UL, {falsePath, maximum, minimum, multicycle, insulated}},
        {~0b111111UL, {}},
    };
    for (const auto& [mask, paths] : rows) {
        SCOPED_TRACE(mask);
        EXPECT_EQ(walk(analyzer->getCPaths(PseudoMask(mask))), paths) << mask;
        EXPECT_EQ(analyzer->getCPaths(PseudoMask(mask)).getCount(), paths.size());
        EXPECT_EQ(analyzer->getCPaths(PseudoMask(mask)).getFirst(), paths.empty() ? nullptr : paths.front());
    }
}

TEST_F(Analysis, ExceptionsHoldPolesValidationAndWorstSlack) {
    MPath* path = design_->addMulticycle({clock_, other_}, {other_}, 2);
    EXPECT_THAT(walk(path->getSources()), ElementsAre(clock_, other_));
    EXPECT_THAT(walk(path->getTargets()), ElementsAre(other_));
    EXPECT_TRUE(path->getBridges().isEmpty());
    EXPECT_THAT(walk(path->getPoles()), ElementsAre(clock_, other_, other_));
    EXPECT_FALSE(path->isValidated());
    path->validate();
    EXPECT_TRUE(path->isValidated());

    path->setPseudoMask(PseudoMask(2));
    EXPECT_EQ(path->getPseudoMask().getBits(), 2u);
    EXPECT_EQ(clock_->getOpeningPseudoMask().getBits(), 2u);
    EXPECT_EQ(other_->getOpeningPseudoMask().getBits(), 2u);
    EXPECT_TRUE(clock_->getClosingPseudoMask().isEmpty());
    EXPECT_EQ(other_->getClosingPseudoMask().getBits(), 2u);

    EXPECT_FALSE(path->getLongestSlack().isDefined());
    EXPECT_FALSE(path->getShortestSlack().isDefined());
    const int U = INT_MIN;
    struct {
        int longest, shortest, worstLongest, worstShortest;
    } const rows[] = {{5, U, 5, U}, {9, 7, 5, 7}, {U, 8, 5, 7}, {-1, -2, -1, -2}, {INT_MAX, INT_MAX, -1, -2}};
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        path->mergeLongestSlack(Delay(row.longest));
        path->mergeShortestSlack(Delay(row.shortest));
        EXPECT_EQ(int(path->getLongestSlack()), row.worstLongest);
        EXPECT_EQ(int(path->getShortestSlack()), row.worstShortest);
    }
}

TEST_F(Analysis, MasksOfTheAnalyzer) {
    const auto masks = [] {
        return std::vector<unsigned long>{
            analyzer->getFalsePathMask().getBits(), analyzer->getMaxdelayPathMask().getBits(),
            analyzer->getMindelayPathMask().getBits(), analyzer->getMulticyclePathMask().getBits()};
    };
    EXPECT_THAT(masks(), ElementsAre(0, 0, 0, 0));
    analyzer->setFalsePathMask(PseudoMask(1));
    EXPECT_THAT(masks(), ElementsAre(1, 0, 0, 0));
    analyzer->setMaxdelayPathMask(PseudoMask(2));
    EXPECT_THAT(masks(), ElementsAre(1, 2, 0, 0));
    analyzer->setMindelayPathMask(PseudoMask(4));
    EXPECT_THAT(masks(), ElementsAre(1, 2, 4, 0));
    analyzer->setMulticyclePathMask(PseudoMask(8));
    EXPECT_THAT(masks(), ElementsAre(1, 2, 4, 8));
}

// --- Domains ---

TEST_F(Analysis, DomainsOfTwoRoots) {
    EXPECT_TRUE(analyzer->getDomains().isEmpty());
    Pole* const roots[] = {nullptr, clock_, other_};
    std::vector<Domain*> domains;
    for (Pole* launch : roots)
        for (Pole* latch : roots) {
            EXPECT_EQ(analyzer->getDomain(launch, latch), nullptr);
            Domain* domain = Domain::create(launch, latch);
            EXPECT_EQ(domain->getLaunchRoot(), launch);
            EXPECT_EQ(domain->getLatchRoot(), latch);
            EXPECT_EQ(analyzer->getDomain(launch, latch), domain);
            EXPECT_FALSE(domain->isAsynchronous());
            EXPECT_TRUE(domain->getSubdomains().isEmpty());
            EXPECT_TRUE(domain->getLongestPaths().isEmpty());
            domains.push_back(domain);
        }
    EXPECT_EQ(walk(analyzer->getDomains()), domains);
    domains[1]->setAsynchronous(true);
    EXPECT_TRUE(domains[1]->isAsynchronous());
    domains[4]->destroy();
    EXPECT_EQ(analyzer->getDomain(clock_, clock_), nullptr);
    EXPECT_EQ(analyzer->getDomains().getCount(), 8u);
}

TEST_F(Analysis, CriticalDomainsHaveTwoPeriods) {
    design_->setClock(clock_, 10, 0, 5, 5);
    Pole* const roots[] = {nullptr, clock_, other_};
    for (Pole* launch : roots)
        for (Pole* latch : roots)
            EXPECT_EQ(Domain::create(launch, latch)->isCritical(), launch == clock_ && latch == clock_);
    design_->setClock(other_, 20, 0, 5, 15);
    EXPECT_TRUE(analyzer->getDomain(clock_, other_)->isCritical());
    EXPECT_FALSE(analyzer->getDomain(nullptr, other_)->isCritical());
}

TEST_F(Analysis, SeparatedClocks) {
    Pole* third = design_->addClockSource("third");
    design_->separate(clock_, other_, true);
    design_->separate(other_, third, false);
    struct {
        Pole *launch, *latch;
        bool exclusive, asynchronous;
    } const rows[] = {
        {clock_, clock_, false, false},  {clock_, other_, true, false},   {other_, clock_, true, false},
        {other_, third, false, true},    {third, other_, false, true},    {clock_, third, false, false},
        {nullptr, clock_, false, false}, {other_, nullptr, false, false}, {nullptr, nullptr, false, false},
    };
    for (const auto& row : rows) {
        const Domain* domain = Domain::create(row.launch, row.latch);
        EXPECT_EQ(analyzer->isExclusive(domain), row.exclusive) << domain->getAlias();
        EXPECT_EQ(analyzer->isAsynchronous(domain), row.asynchronous) << domain->getAlias();
    }
}

TEST_F(Analysis, Subdomains) {
    Domain* domain = Domain::create(clock_, other_);
    const ClockMode::Code codes[] = {ClockMode::None, ClockMode::Falling, ClockMode::Rising};
    std::vector<Subdomain*> subdomains;
    for (ClockMode::Code launch : codes)
        for (ClockMode::Code latch : codes) {
            EXPECT_EQ(domain->getSubdomain(launch, latch), nullptr);
            Subdomain* subdomain = Subdomain::create(domain, launch, latch);
            EXPECT_EQ(domain->getSubdomain(launch, latch), subdomain);
            EXPECT_EQ(subdomain->getLaunchClockMode().getCode(), launch);
            EXPECT_EQ(subdomain->getLatchClockMode().getCode(), latch);
            EXPECT_EQ(subdomain->getLaunchRoot(), clock_);
            EXPECT_EQ(subdomain->getLatchRoot(), other_);
            EXPECT_EQ(subdomain->getDomain(), domain);
            subdomains.push_back(subdomain);
        }
    EXPECT_EQ(walk(domain->getSubdomains()), subdomains);
}

TEST_F(Analysis, ResultsOfASubdomain) {
    Subdomain* subdomain =
        Subdomain::create(Domain::create(clock_, clock_), ClockMode::Rising, ClockMode::Rising);
    EXPECT_TRUE(subdomain->isPureClock());
    EXPECT_FALSE(subdomain->getSetupRelation().isDefined());
    EXPECT_FALSE(subdomain->getHoldRelation().isDefined());
    EXPECT_FALSE(subdomain->getLAT().isDefined());
    EXPECT_FALSE(subdomain->getSAT().isDefined());
    EXPECT_EQ(subdomain->getCriticity(), 0u);
    EXPECT_FALSE(subdomain->isDecisive());
    EXPECT_FALSE(subdomain->isMPathCritical());

    subdomain->setSetupRelation(Delay(10));
    subdomain->setHoldRelation(Delay(-4));
    subdomain->setLAT(Delay(9));
    subdomain->setSAT(Delay(2));
    subdomain->setCriticity(3);
    subdomain->setDecisive(true);
    subdomain->setMPathCritical();
    EXPECT_EQ(int(subdomain->getSetupRelation()), 10);
    EXPECT_EQ(int(subdomain->getHoldRelation()), -4);
    EXPECT_EQ(int(subdomain->getLAT()), 9);
    EXPECT_EQ(int(subdomain->getSAT()), 2);
    EXPECT_EQ(subdomain->getCriticity(), 3u);
    EXPECT_TRUE(subdomain->isDecisive());
    EXPECT_TRUE(subdomain->isMPathCritical());
    subdomain->resetMPathCritical();
    subdomain->setDecisive(false);
    EXPECT_FALSE(subdomain->isMPathCritical());
    EXPECT_FALSE(subdomain->isDecisive());
}

TEST_F(Analysis, LeavesAreCapturedOnce) {
    Subdomain* subdomain =
        Subdomain::create(Domain::create(clock_, clock_), ClockMode::Rising, ClockMode::Rising);
    Pole* a = design_->addInput("a");
    Pole* b = design_->addOutput("b");
    EXPECT_TRUE(subdomain->getLaunchLeaves().isEmpty());
    EXPECT_TRUE(subdomain->getLatchLeaves().isEmpty());
    for (Pole* pole : {b, a, b, clock_, a}) {
        subdomain->captureLaunch(pole);
        EXPECT_TRUE(subdomain->getLaunchLeaves().contains(pole));
    }
    subdomain->captureLatch(b);
    EXPECT_EQ(subdomain->getLaunchLeaves().getCount(), 3u);
    EXPECT_THAT(walk(subdomain->getLatchLeaves()), ElementsAre(b));
    EXPECT_TRUE(subdomain->getLatchLeaves().contains(b));
    EXPECT_FALSE(subdomain->getLatchLeaves().contains(a));
}

// --- Clocks and ports ---

TEST_F(Analysis, ClocksByRoot) {
    design_->setClock(clock_, 10, 2, 4, 6);
    struct {
        const Pole* root;
        int period, shift, high, low;
        unsigned long duty;
    } const rows[] = {
        {clock_, 10, 2, 4, 6, 40},
        {other_, INT_MIN, INT_MIN, INT_MIN, INT_MIN, 50},
        {nullptr, INT_MIN, INT_MIN, INT_MIN, INT_MIN, 50},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(int(analyzer->getRequiredPeriod(row.root)), row.period);
        EXPECT_EQ(int(analyzer->getShift(row.root)), row.shift);
        EXPECT_EQ(int(analyzer->getHighWidth(row.root)), row.high);
        EXPECT_EQ(int(analyzer->getLowWidth(row.root)), row.low);
        EXPECT_EQ(analyzer->getDutyRatio(row.root), row.duty);
        EXPECT_FALSE(analyzer->hasPLLFeedbackDelay(row.root));
        EXPECT_FALSE(analyzer->getPeriod(row.root).isDefined());
    }
    analyzer->setPLLFeedbackDelay(clock_, Delay(1), Delay(3));
    EXPECT_TRUE(analyzer->hasPLLFeedbackDelay(clock_));
    EXPECT_EQ(int(analyzer->getMinPLLFeedbackDelay(clock_)), 1);
    EXPECT_EQ(int(analyzer->getMaxPLLFeedbackDelay(clock_)), 3);
    EXPECT_FALSE(analyzer->hasPLLFeedbackDelay(other_));
    analyzer->setPeriod(clock_, Delay(8));
    EXPECT_EQ(int(analyzer->getPeriod(clock_)), 8);
    EXPECT_EQ(int(analyzer->getRequiredPeriod(clock_)), 10);
}

TEST_F(Analysis, PortConstraints) {
    Pole* in = design_->addInput("in");
    Pole* free = design_->addInput("free");
    Pole* out = design_->addOutput("out");
    EXPECT_TRUE(analyzer->getConstrainedInputs().isEmpty());
    EXPECT_TRUE(analyzer->getConstrainedOutputs().isEmpty());
    design_->setInputConstraint(in, IOConstraint(clock_, ClockMode::Rising, Delay(2), Delay(5)));
    design_->setOutputConstraint(out, IOConstraint(nullptr, ClockMode::None, Delay(1), Delay(3)));
    design_->setInputConstraint(free, IOConstraint());
    EXPECT_THAT(walk(analyzer->getConstrainedInputs()), ElementsAre(in, free));
    EXPECT_THAT(walk(analyzer->getConstrainedOutputs()), ElementsAre(out));

    IOConstraint found;
    EXPECT_TRUE(analyzer->hasInputConstraint(in, found));
    EXPECT_EQ(found.getClockRoot(), clock_);
    EXPECT_EQ(found.getClockMode().getCode(), ClockMode::Rising);
    EXPECT_EQ(int(found.getMinimum()), 2);
    EXPECT_EQ(int(found.getMaximum()), 5);
    // The pole is not constrained, no port, on the other side, or null: the constraint is not changed.
    EXPECT_FALSE(analyzer->hasInputConstraint(free, found));
    EXPECT_FALSE(analyzer->hasInputConstraint(out, found));
    EXPECT_FALSE(analyzer->hasInputConstraint(nullptr, found));
    EXPECT_FALSE(analyzer->hasOutputConstraint(in, found));
    EXPECT_EQ(int(found.getMaximum()), 5);
    EXPECT_TRUE(analyzer->hasOutputConstraint(out, found));
    EXPECT_EQ(found.getClockRoot(), nullptr);
    EXPECT_EQ(int(found.getMaximum()), 3);

    EXPECT_EQ(int(analyzer->getInputConstraint(in).getMinimum()), 2);
    EXPECT_FALSE(analyzer->getInputConstraint(free).isDefined());
    EXPECT_FALSE(analyzer->getInputConstraint(out).isDefined());
    EXPECT_EQ(int(analyzer->getOutputConstraint(out).getMinimum()), 1);
    EXPECT_FALSE(analyzer->getOutputConstraint(in).isDefined());
}

TEST_F(Analysis, PortSlacksKeepTheWorst) {
    Pole* in = design_->addInput("in");
    const int U = INT_MIN;
    EXPECT_FALSE(analyzer->getIODelayLongestSlack(in).isDefined());
    struct {
        int longest, shortest, worstLongest, worstShortest;
    } const rows[] = {
        {INT_MAX, U, INT_MAX, U}, {9, 4, 9, 4}, {U, 6, 9, 4}, {-2, -3, -2, -3}, {INT_MAX, 0, -2, -3}};
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        analyzer->mergeIODelayLongestSlack(in, Delay(row.longest));
        analyzer->mergeIODelayShortestSlack(in, Delay(row.shortest));
        EXPECT_EQ(int(analyzer->getIODelayLongestSlack(in)), row.worstLongest);
        EXPECT_EQ(int(analyzer->getIODelayShortestSlack(in)), row.worstShortest);
    }
}

// --- Reported paths ---

TEST_F(Analysis, ReportedPaths) {
    Pole* in = design_->addInput("in");
    Pole* mid = design_->addPole("mid");
    Pole* out = design_->addOutput("out");
    const std::vector<Edge*> arcs{design_->addEdge(in, mid, 1, 4), design_->addEdge(mid, out, 2, 3)};
    const Edges edges = Ruvex::MemoryCollection<Edge*>(arcs.data(), arcs.data() + arcs.size());
    Domain* domain = Domain::create(clock_, clock_);
    Subdomain* subdomain = Subdomain::create(domain, ClockMode::Rising, ClockMode::Rising);
    subdomain->setSetupRelation(Delay(10));
    subdomain->setHoldRelation(Delay(0));

    Path* later = Path::createLongest(subdomain, edges, Delay(0), Delay(0), Delay(5)); // 10 - 7 + 5
    Path* worst = Path::createLongest(subdomain, edges, Delay(1), Delay(2), Delay(0)); // 10 + 1 - 2 - 7
    Path* hold = Path::createShortest(subdomain, edges, Delay(1), Delay(0), Delay(0)); // 3 - 1
    EXPECT_EQ(int(later->getSlack()), 8);
    EXPECT_EQ(int(worst->getSlack()), 2);
    EXPECT_EQ(int(hold->getSlack()), 2);
    EXPECT_EQ(walk(worst->getEdges()), arcs);
    EXPECT_EQ(worst->getSubdomain(), subdomain);
    EXPECT_THAT(walk(subdomain->getLongestPaths()), ElementsAre(worst, later));
    EXPECT_THAT(walk(subdomain->getShortestPaths()), ElementsAre(hold));
    EXPECT_THAT(walk(domain->getLongestPaths()), ElementsAre(worst, later));
    EXPECT_THAT(walk(domain->getShortestPaths()), ElementsAre(hold));
    EXPECT_EQ(subdomain->getLongestPaths().getCount(), 2u);
    EXPECT_EQ(subdomain->getLongestPaths().getLast(), later);

    MPath* exception = design_->addMulticycle({in}, {out}, 2);
    EXPECT_EQ(worst->getConstrainedPath(), nullptr);
    worst->setConstrainedPath(exception);
    EXPECT_EQ(worst->getConstrainedPath(), exception);
    worst->setConstrainedPath(nullptr);
    EXPECT_EQ(worst->getConstrainedPath(), nullptr);
    later->destroy();
    EXPECT_THAT(walk(subdomain->getLongestPaths()), ElementsAre(worst));
    EXPECT_EQ(subdomain->getLongestPaths().getLast(), worst);
}

} // namespace

} // namespace Contract
