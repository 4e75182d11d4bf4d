// The analyzer: settings, clocks, clock groups, port constraints and slacks; and which calls it rejects.
#include "ModelTest.h"
#include "Refused.h"
#include "tests/support/Recorder.h"

#include "Pelko/Issue.h"

#include "Ruvex/Record.h"

#include <memory>
#include <sstream>

namespace HostTest {

namespace {

class AnalyzerTest : public ModelTest {
protected:
    static Ruvex::Place place(const char* function, unsigned line) { return {"Analyzer", function, line}; }

    Pole* a_ = Pole::createClockSource(cell, "a");
    Pole* b_ = Pole::createClockSource(cell, "b");
    Pole* c_ = Pole::createClockSource(cell, "c");
    Pole* d_ = Pole::createClockSource(cell, "d");
    Pole* in_ = Pole::createInput(cell, "in");
    Pole* out_ = Pole::createOutput(cell, "out");
};

TEST_F(AnalyzerTest, Settings) {
    struct {
        void (Analyzer::*set)(bool);
        bool (Analyzer::*is)() const;
        bool before;
    } const flags[] = {
        {&Analyzer::setVerbose, &Analyzer::isVerbose, false},
        {&Analyzer::setDomainsOnly, &Analyzer::isDomainsOnly, false},
        {&Analyzer::setSlackTagging, &Analyzer::isSlackTagging, true},
        {&Analyzer::setWeightTagging, &Analyzer::isWeightTagging, false},
        {&Analyzer::setLongestPath, &Analyzer::isLongestPath, true},
        {&Analyzer::setShortestPath, &Analyzer::isShortestPath, true},
    };
    for (const auto& flag : flags) {
        EXPECT_EQ((analyzer->*flag.is)(), flag.before);
        (analyzer->*flag.set)(!flag.before);
        for (const auto& other : flags)
            EXPECT_EQ((analyzer->*other.is)(), other.before == (&flag != &other));
        (analyzer->*flag.set)(flag.before);
    }
    for (AnalysisMode::Code mode :
         {AnalysisMode::Critical, AnalysisMode::Default, AnalysisMode::Exhaustive}) {
        analyzer->setAnalysisMode(mode);
        EXPECT_EQ(analyzer->getAnalysisMode().getCode(), mode);
    }
    for (unsigned long count : {0UL, 1UL, 1000UL, ~0UL}) {
        analyzer->setPathCount(count);
        EXPECT_EQ(analyzer->getPathCount(), count);
    }
    for (int limit : {lowest, -5, 0, highest - 1, highest}) {
        SCOPED_TRACE(limit);
        analyzer->setPathLimit(Delay(limit));
        EXPECT_EQ(int(analyzer->getPathLimit()), limit);
    }
    expectRefused({"limit", [] { analyzer->setPathLimit(Delay(U)); }, invalidRequest, "Undefined path limit",
                   place("setPathLimit", 2)});
}

TEST_F(AnalyzerTest, Record) {
    EXPECT_EQ(analyzer->_getRecord(), nullptr) << "only for debugging";
    const Support::DebugMode debug(true);
    addSubdomain(a_, b_);
    FPath::create({{a_}, {out_}})->setAlias("cut");
    analyzer->setPathCount(3);
    analyzer->setMulticyclePathMask(PseudoMask(5));
    std::ostringstream text;
    std::unique_ptr<Ruvex::Record>(analyzer->_getRecord())->print(text, 0);
    EXPECT_EQ(text.str(), "Analyzer top\n"
                          "  [Analyzer]\n"
                          "  AnalysisMode: Exhaustive\n"
                          "  PathCount: 3\n"
                          "  PathLimit: maximum\n"
                          "  FalsePathMask: {}\n"
                          "  MaxdelayPathMask: {}\n"
                          "  MindelayPathMask: {}\n"
                          "  MulticyclePathMask: {1 3}\n"
                          "  [Domains]\n"
                          "  Domain: Domain a -> b\n"
                          "  [Constrained paths]\n"
                          "  CPath: FPath cut\n");
}

// The analyzer finds no issue of its own, and these values have no slot.
TEST_F(AnalyzerTest, IsNoIssue) {
    Issue issue;
    analyzer->check(issue);
    EXPECT_TRUE(issue.isEmpty());
    EXPECT_EQ(IOConstraint()._getSlot(), nullptr);
    EXPECT_EQ(analyzer->getCPaths(PseudoMask(1))._getLabel(), "Class collection");
    EXPECT_EQ(analyzer->getCPaths(PseudoMask(1)).getLocator()._getLabel(), "Class locator");
}

// --- Clocks ---

TEST_F(AnalyzerTest, RefusedClocks) {
    analyzer->setClock(b_, Delay(10), Delay(1), Delay(4), Delay(6));
    const auto set = [this](int period, int shift, int high, int low) {
        return [=, this] { analyzer->setClock(b_, Delay(period), Delay(shift), Delay(high), Delay(low)); };
    };
    const auto duty = [this](unsigned long percentage) {
        return [=, this] { analyzer->setDutyRatio(b_, percentage); };
    };
    const char* const period = "Period not positive";
    const char* const width = "Width not positive";
    const char* const sum = "Widths that do not add up to the period";
    const char* const ratio = "Duty ratio outside 1 to 99";
    expectRefused({
        {"no root", [] { analyzer->setClock(nullptr, Delay(10), Delay(0), Delay(5), Delay(5)); },
         invalidRequest, "Null clock root", place("setClock", 7)},
        {"period 0", set(0, 0, 5, 5), invalidRequest, period, place("setClock", 8)},
        {"period -10", set(-10, 0, 5, 5), invalidRequest, period, place("setClock", 8)},
        {"period undefined", set(U, 0, 5, 5), invalidRequest, period, place("setClock", 8)},
        {"period without end", set(highest, 0, 5, 5), invalidRequest, period, place("setClock", 8)},
        {"shift undefined", set(10, U, 5, 5), invalidRequest, "Special shift", place("setClock", 9)},
        {"shift minimum", set(10, lowest, 5, 5), invalidRequest, "Special shift", place("setClock", 9)},
        {"shift maximum", set(10, highest, 5, 5), invalidRequest, "Special shift", place("setClock", 9)},
        {"no high width", set(10, 0, 0, 10), invalidRequest, width, place("setClock", 10)},
        {"no low width", set(10, 0, 10, 0), invalidRequest, width, place("setClock", 10)},
        {"negative width", set(10, 0, 11, -1), invalidRequest, width, place("setClock", 10)},
        {"undefined width", set(10, 0, U, 5), invalidRequest, width, place("setClock", 10)},
        {"endless width", set(10, 0, 5, highest), invalidRequest, width, place("setClock", 10)},
        {"too wide", set(10, 0, 6, 5), invalidRequest, sum, place("setClock", 11)},
        {"too narrow", set(10, 0, 4, 5), invalidRequest, sum, place("setClock", 11)},
        {"far too wide", set(10, 0, highest - 1, highest - 1), invalidRequest, sum, place("setClock", 11)},
        {"duty 0", duty(0), invalidRequest, ratio, place("setDutyRatio", 12)},
        {"duty 100", duty(100), invalidRequest, ratio, place("setDutyRatio", 12)},
        {"duty 2^64-1", duty(~0UL), invalidRequest, ratio, place("setDutyRatio", 12)},
        {"duty of nothing", [] { analyzer->setDutyRatio(nullptr, 40); }, invalidRequest, "Null clock root",
         place("setDutyRatio", 7)},
        {"removed", [] { analyzer->removeClock(nullptr); }, invalidRequest, "Null clock root",
         place("removeClock", 7)},
        {"period of nothing", [] { analyzer->setPeriod(nullptr, Delay(1)); }, invalidRequest,
         "Null clock root", place("setPeriod", 7)},
        {"feedback of nothing", [] { analyzer->setPLLFeedbackDelay(nullptr, Delay(1), Delay(1)); },
         invalidRequest, "Null clock root", place("setPLLFeedbackDelay", 7)},
        {"latency of nothing", [] { analyzer->setSourceLatency(nullptr, Delay(1), Delay(1)); },
         invalidRequest, "Null clock root", place("setSourceLatency", 7)},
    });
}

TEST_F(AnalyzerTest, DutyRatioOfAWaveform) {
    struct {
        int high, low;
        unsigned long ratio;
    } const rows[] = {
        {4, 6, 40},  {5, 5, 50},           {1, 2, 33},          {2, 1, 67},
        {1, 7, 13},  {7, 1, 88},           {1, 99, 1},          {99, 1, 99},
        {1, 199, 1}, {1, 1000000, 1},      {1000000, 1, 99},    {199, 1, 99},
        {1, 1, 50},  {highest - 2, 1, 99}, {1, highest - 2, 1}, {1073741823, 1073741823, 50},
    };
    for (const auto& [high, low, ratio] : rows) {
        SCOPED_TRACE(ratio);
        analyzer->setClock(a_, Delay(high + low), Delay(-3), Delay(high), Delay(low));
        EXPECT_EQ(analyzer->getDutyRatio(a_), ratio) << high << " " << low;
        EXPECT_EQ(int(analyzer->getRequiredPeriod(a_)), high + low);
        EXPECT_EQ(int(analyzer->getShift(a_)), -3);
        EXPECT_EQ(int(analyzer->getHighWidth(a_)), high);
        EXPECT_EQ(int(analyzer->getLowWidth(a_)), low);
    }
    for (unsigned long ratio : {1UL, 50UL, 99UL}) {
        analyzer->setDutyRatio(b_, ratio); // also without a period
        EXPECT_EQ(analyzer->getDutyRatio(b_), ratio);
        EXPECT_FALSE(analyzer->getRequiredPeriod(b_).isDefined());
    }
    analyzer->removeClock(b_);
    EXPECT_EQ(analyzer->getDutyRatio(b_), 50u);
    analyzer->removeClock(a_);
    EXPECT_EQ(analyzer->getDutyRatio(a_), 50u);
    EXPECT_FALSE(analyzer->getHighWidth(a_).isDefined());
}

TEST_F(AnalyzerTest, NullRootsAndRootsWithoutClock) {
    for (const Pole* root : {static_cast<const Pole*>(nullptr), static_cast<const Pole*>(a_)}) {
        for (const Delay& delay :
             {analyzer->getRequiredPeriod(root), analyzer->getShift(root), analyzer->getHighWidth(root),
              analyzer->getLowWidth(root), analyzer->getPeriod(root), analyzer->getMinPLLFeedbackDelay(root),
              analyzer->getMaxPLLFeedbackDelay(root)})
            EXPECT_FALSE(delay.isDefined());
        EXPECT_EQ(analyzer->getDutyRatio(root), 50u);
        EXPECT_FALSE(analyzer->hasPLLFeedbackDelay(root));
    }
    EXPECT_FALSE(a_->isReferenced()); // reading leaves nothing behind
}

// The value read is the measured feedback minus the latency of the source.
TEST_F(AnalyzerTest, FeedbackAndSourceLatency) {
    struct {
        const char* what;
        std::function<void()> step;
        bool has;
        int minimum, maximum;
    } const steps[] = {
        {"nothing", [] {}, false, U, U},
        {"latency alone", [&] { analyzer->setSourceLatency(a_, Delay(1), Delay(4)); }, true, -1, -4},
        {"with feedback", [&] { analyzer->setPLLFeedbackDelay(a_, Delay(10), Delay(20)); }, true, 9, 16},
        {"measured anew", [&] { analyzer->setPLLFeedbackDelay(a_, Delay(5), Delay(6)); }, true, 4, 2},
        {"latency again", [&] { analyzer->setSourceLatency(a_, Delay(-2), Delay(0)); }, true, 7, 6},
        {"results cleared", [] { analyzer->clearResults(); }, true, 2, 0},
        {"feedback of no value", [&] { analyzer->setPLLFeedbackDelay(a_, Delay(U), Delay(highest)); }, true,
         U, highest},
        {"clock removed", [&] { analyzer->removeClock(a_); }, true, U, highest},
    };
    for (const auto& row : steps) {
        row.step();
        EXPECT_EQ(analyzer->hasPLLFeedbackDelay(a_), row.has) << row.what;
        EXPECT_EQ(int(analyzer->getMinPLLFeedbackDelay(a_)), row.minimum) << row.what;
        EXPECT_EQ(int(analyzer->getMaxPLLFeedbackDelay(a_)), row.maximum) << row.what;
    }
    analyzer->setPLLFeedbackDelay(b_, Delay(1), Delay(3));
    EXPECT_EQ(int(analyzer->getMinPLLFeedbackDelay(b_)), 1);
    EXPECT_EQ(int(analyzer->getMaxPLLFeedbackDelay(b_)), 3);
    analyzer->clearResults();
    EXPECT_FALSE(analyzer->hasPLLFeedbackDelay(b_));
}

// --- Clock groups ---

TEST_F(AnalyzerTest, ClockGroups) {
    using Groups = std::vector<std::vector<Pole*>>;
    struct {
        const char* what;
        std::vector<Groups> statements;
        std::string separated; // the pairs of roots, "-" for null
    } const rows[] = {
        {"none", {}, ""},
        {"two clocks", {{{a_}, {b_}}}, " ab ba"},
        {"two groups", {{{a_, c_}, {b_}}}, " ab ba bc cb"},
        {"three groups", {{{a_}, {b_}, {c_}}}, " ab ac ba bc ca cb"},
        {"a single group stands against all others", {{{a_, b_}}}, " ac ad bc bd ca cb da db"},
        {"two single groups", {{{a_}}, {{b_}}}, " ab ac ad ba bc bd ca cb da db"},
        {"single groups that overlap", {{{a_, b_}}, {{b_, c_}}}, " ab ac ad ba bc bd ca cb cd da db dc"},
        {"a single group twice", {{{a_, b_}}, {{b_, a_}}}, " ac ad bc bd ca cb da db"},
        {"a single group and two groups", {{{a_}}, {{b_}, {c_}}}, " ab ac ad ba bc ca cb da"},
        {"a single group of all", {{{a_, b_, c_, d_}}}, ""},
        {"an empty group", {{{}}}, ""},
        {"an empty group beside another", {{{a_}, {}}}, ""},
        {"named twice in a group", {{{a_, a_}, {b_}}}, " ab ba"},
        {"two statements", {{{a_}, {b_}}, {{c_}, {d_}}}, " ab ba cd dc"},
        {"one pair by two statements", {{{a_}, {b_}}, {{b_, c_}, {a_}}}, " ab ac ba ca"},
    };
    Pole* const roots[] = {nullptr, a_, b_, c_, d_};
    const auto letter = [](const Pole* root) { return root ? root->getName() : "-"; };
    for (const auto& row : rows)
        for (const auto kind : {Analyzer::GroupKind::Exclusive, Analyzer::GroupKind::Asynchronous}) {
            for (const Groups& groups : row.statements)
                analyzer->addClockGroups(kind, groups);
            std::string exclusive, asynchronous;
            for (Pole* launch : roots)
                for (Pole* latch : roots) {
                    Domain* domain = Domain::create(launch, latch);
                    const std::string pair = " " + letter(launch) + letter(latch);
                    exclusive += analyzer->isExclusive(domain) ? pair : "";
                    asynchronous += analyzer->isAsynchronous(domain) ? pair : "";
                    domain->destroy();
                }
            const bool isExclusive = kind == Analyzer::GroupKind::Exclusive;
            EXPECT_EQ(exclusive, isExclusive ? row.separated : "") << row.what;
            EXPECT_EQ(asynchronous, isExclusive ? "" : row.separated) << row.what;
            analyzer->clearClockGroups();
        }
}

TEST_F(AnalyzerTest, RefusedClockGroups) {
    Domain::create(a_, b_);
    const auto add = [](const std::vector<std::vector<Pole*>>& groups) {
        return [=] { analyzer->addClockGroups(Analyzer::GroupKind::Exclusive, groups); };
    };
    expectRefused({
        {"no groups", add({}), invalidRequest, "No clock group", place("addClockGroups", 3)},
        {"null", add({{a_}, {nullptr}}), invalidRequest, "Null clock root", place("addClockGroups", 4)},
        {"in two groups", add({{a_}, {b_, a_}}), invalidRequest, "Clock in two groups",
         place("addClockGroups", 5)},
        {"exclusive nothing", [] { analyzer->isExclusive(nullptr); }, invalidRequest, "Null domain",
         place("isSeparated", 6)},
        {"asynchronous nothing", [] { analyzer->isAsynchronous(nullptr); }, invalidRequest, "Null domain",
         place("isSeparated", 6)},
    });
    EXPECT_FALSE(c_->isReferenced());
}

// --- Ports ---

TEST_F(AnalyzerTest, RefusedPorts) {
    const IOConstraint constraint(a_, ClockMode::Rising, Delay(1), Delay(2));
    analyzer->setInputConstraint(in_, constraint);
    analyzer->setOutputConstraint(out_, constraint);
    expectRefused({
        {"null input", [=] { analyzer->setInputConstraint(nullptr, constraint); }, invalidRequest,
         "Null pole", place("setInputConstraint", 13)},
        {"null output", [=] { analyzer->setOutputConstraint(nullptr, constraint); }, invalidRequest,
         "Null pole", place("setOutputConstraint", 13)},
        {"an output", [=, this] { analyzer->setInputConstraint(out_, constraint); }, invalidRequest,
         "Not an input port", place("setInputConstraint", 14)},
        {"an input", [=, this] { analyzer->setOutputConstraint(in_, constraint); }, invalidRequest,
         "Not an output port", place("setOutputConstraint", 15)},
        {"no port", [=, this] { analyzer->setInputConstraint(a_, constraint); }, invalidRequest,
         "Not an input port", place("setInputConstraint", 14)},
        {"long slack of nothing", [] { analyzer->mergeIODelayLongestSlack(nullptr, Delay(1)); },
         invalidRequest, "Null pole", place("mergeIODelayLongestSlack", 13)},
        {"short slack of nothing", [] { analyzer->mergeIODelayShortestSlack(nullptr, Delay(1)); },
         invalidRequest, "Null pole", place("mergeIODelayShortestSlack", 13)},
    });
}

TEST_F(AnalyzerTest, PortsComeByStamp) {
    std::vector<Pole*> ports;
    for (int i = 0; i < 20; ++i)
        ports.push_back(Pole::createInput(cell));
    for (std::size_t i = 0; i < ports.size(); ++i)
        analyzer->setInputConstraint(ports[(7 * i) % ports.size()], IOConstraint());
    EXPECT_EQ(walk(analyzer->getConstrainedInputs()), ports);
    analyzer->removeInputConstraint(ports[3]);
    analyzer->removeInputConstraint(ports[3]);
    analyzer->removeInputConstraint(nullptr);
    ports.erase(ports.begin() + 3);
    EXPECT_EQ(walk(analyzer->getConstrainedInputs()), ports);
    EXPECT_TRUE(analyzer->getConstrainedOutputs().isEmpty());
}

TEST_F(AnalyzerTest, ConstraintsAreReplacedWhole) {
    const auto set = [this](Pole* root, int minimum, int maximum) {
        analyzer->setOutputConstraint(out_,
                                      IOConstraint(root, ClockMode::Falling, Delay(minimum), Delay(maximum)));
    };
    const auto expect = [this](bool defined, const char* label, bool aReferenced, bool bReferenced) {
        IOConstraint found;
        EXPECT_EQ(analyzer->hasOutputConstraint(out_, found), defined);
        EXPECT_EQ(found._getLabel(), label);
        EXPECT_EQ(analyzer->getOutputConstraint(out_)._getLabel(), label);
        EXPECT_EQ(a_->isReferenced(), aReferenced);
        EXPECT_EQ(b_->isReferenced(), bReferenced);
    };
    expect(false, "undefined", false, false);
    set(a_, 1, U);
    expect(true, "[1:undefined] falling a", true, false);
    set(a_, 2, 3);
    expect(true, "[2:3] falling a", true, false);
    set(b_, U, 3);
    expect(true, "[undefined:3] falling b", false, true);
    set(nullptr, U, U);
    expect(true, "[undefined:undefined] falling no clock", false, false);
    analyzer->setOutputConstraint(out_, IOConstraint());
    expect(false, "undefined", false, false);
    EXPECT_TRUE(out_->isReferenced());
    analyzer->removeOutputConstraint(out_);
    EXPECT_FALSE(out_->isReferenced());
}

} // namespace

} // namespace HostTest
