// The launch: what it prints, whether it creates or updates domains, and which phases run for which settings.
#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"

#include "Pelko/Path.h"

#include <gtest/gtest.h>

using Pelko::analyzer;
using Pelko::Delay;
using Pelko::Pole;
using Support::Builder;
using Support::DebugMode;
using Support::falling;
using Support::Lines;
using Support::Names;
using Support::namesOf;
using Support::Register;
using Support::rising;
using Support::subdomains;

namespace {

using Mode = Pelko::AnalysisMode;

class Launch : public testing::Test {
protected:
    // Two registers of a clock of period 10, and an arc of 2 to 5 between them.
    void addPath() {
        clk_ = design_.addClockSource("clk", 10);
        a_ = design_.addRegister("a", clk_);
        b_ = design_.addRegister("b", clk_);
        arc_ = design_.connect(a_.output, b_.data, 2, 5);
    }

    Builder design_;
    Support::ToolPointer tool_ = Support::makeTool();
    Support::Recorder console_;
    Pole* clk_ = nullptr;
    Register a_{}, b_{};
    Pelko::Edge* arc_ = nullptr;
};

// --- Messages ---

struct ReportRow {
    Mode::Code mode;
    bool verbose, debug, domainsOnly;
    Lines lines;
    unsigned indentation; // afterwards
};

TEST_F(Launch, Report) {
    const ReportRow rows[] = {
        {Mode::Exhaustive, false, false, false, {}, 0},
        {Mode::Exhaustive,
         true,
         false,
         false,
         {"Analyzing project with VORLEN-4.0 [exhaustive mode]", "  Analyzing project completed in %"},
         0},
        {Mode::Critical,
         true,
         false,
         false,
         {"Analyzing project with VORLEN-4.0 [critical mode]", "  Analyzing project completed in %"},
         0},
        {Mode::Default,
         true,
         false,
         false,
         {"Analyzing project with VORLEN-4.0 [default mode]", "  Analyzing project completed in %"},
         0},
        // Stopped after the domains: no closing line, and the console stays indented.
        {Mode::Exhaustive, false, false, true, {}, 0},
        {Mode::Exhaustive, true, false, true, {"Analyzing project with VORLEN-4.0 [exhaustive mode]"}, 1},
        {Mode::Exhaustive, false, true, false, {"Creating domains", "  Creating domains ... done"}, 0},
        {Mode::Exhaustive,
         true,
         true,
         false,
         {"Analyzing project with VORLEN-4.0 [exhaustive mode]", "  Creating domains",
          "    Creating domains ... done", "  Analyzing project completed in %"},
         0},
        {Mode::Exhaustive,
         true,
         true,
         true,
         {"Analyzing project with VORLEN-4.0 [exhaustive mode]", "  Creating domains",
          "    Creating domains ... done"},
         1},
    };
    addPath();
    for (const ReportRow& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.lines));
        const Support::Recorder console;
        const DebugMode debug(row.debug);
        analyzer->setAnalysisMode(row.mode);
        analyzer->setVerbose(row.verbose);
        analyzer->setDomainsOnly(row.domainsOnly);
        EXPECT_TRUE(tool_->launch());
        EXPECT_EQ(console.getTimelessLines(), row.lines);
        EXPECT_EQ(Ruvex::console.getIndentation(), row.indentation);
        analyzer->getDomain(clk_, clk_)->destroy();
    }
}

// The flag is read at the start.
TEST_F(Launch, VerboseIsReadOnce) {
    class Switch : public Pelko::ObjectListener {
    public:
        Switch() { Pelko::Object::addListener(this); }
        ~Switch() override { Pelko::Object::removeListener(this); }
        void onCreated(Pelko::Object* object) override {
            if (dynamic_cast<Pelko::Domain*>(object))
                analyzer->setVerbose(!analyzer->isVerbose());
        }
    };
    addPath();
    analyzer->setVerbose(true);
    {
        const Switch off;
        tool_->launch();
    }
    EXPECT_EQ(console_.getTimelessLines(), (Lines{"Analyzing project with VORLEN-4.0 [exhaustive mode]",
                                                  "  Analyzing project completed in %"}));
    EXPECT_FALSE(analyzer->isVerbose());
    console_.clear();
    analyzer->getDomain(clk_, clk_)->destroy();
    const Switch on;
    tool_->launch();
    EXPECT_TRUE(console_.isEmpty());
    EXPECT_TRUE(analyzer->isVerbose());
    EXPECT_EQ(Ruvex::console.getIndentation(), 0U);
}

TEST_F(Launch, EmptyDesign) {
    analyzer->setVerbose(true);
    for (int round = 0; round < 2; ++round)
        EXPECT_TRUE(tool_->launch());
    EXPECT_TRUE(analyzer->getDomains().isEmpty());
}

// --- Domains ---

TEST_F(Launch, CreatesDomainsThenUpdatesThem) {
    addPath();
    const DebugMode debug(true);
    const Lines creating{"Creating domains", "  Creating domains ... done"};
    for (const bool domainsOnly : {true, false}) {
        SCOPED_TRACE(domainsOnly);
        analyzer->setDomainsOnly(domainsOnly);
        EXPECT_TRUE(tool_->launch());
        EXPECT_EQ(console_.getLines(), creating);
        console_.clear();
        const Pelko::Domain* domain = analyzer->getDomain(clk_, clk_);
        Pole* out = design_.addOutput("out");
        design_.connect(b_.output, out);
        EXPECT_TRUE(tool_->launch());
        EXPECT_TRUE(console_.isEmpty());
        EXPECT_EQ(subdomains(), (Names{"clk:rising -> clk:rising", "clk:rising -> none"}));
        EXPECT_EQ(analyzer->getDomain(clk_, clk_), domain);
        for (Pole* root : {clk_, static_cast<Pole*>(nullptr)})
            analyzer->getDomain(clk_, root)->destroy();
        out->destroy();
    }
}

TEST_F(Launch, DomainsOnlyStopsThere) {
    addPath();
    analyzer->setDomainsOnly(true);
    EXPECT_TRUE(tool_->launch());
    const Pelko::Subdomain* subdomain = Builder::findSubdomain(clk_, clk_);
    ASSERT_TRUE(subdomain);
    EXPECT_EQ(subdomain->getSetupRelation(), Delay::getUndefined());
    EXPECT_EQ(subdomain->getCriticity(), 0U);
    EXPECT_EQ(subdomain->getLAT(), Delay::getUndefined());
    EXPECT_EQ(analyzer->getPeriod(clk_), Delay::getUndefined());
    EXPECT_EQ(arc_->getSlack(), Delay::getUndefined());
}

TEST_F(Launch, AfterAnExclusiveDomainWasDestroyed) {
    for (const bool domainsOnly : {true, false}) {
        SCOPED_TRACE(domainsOnly);
        analyzer->setDomainsOnly(domainsOnly);
        Pole* x = design_.addClockSource("x", 10);
        Pole* y = design_.addClockSource("y", 10);
        const std::string prefix = domainsOnly ? "1" : "2";
        const Register a = design_.addRegister(prefix + "a", x);
        const Register b = design_.addRegister(prefix + "b", y);
        design_.connect(a.output, b.data);
        EXPECT_TRUE(tool_->launch());
        EXPECT_EQ(subdomains(), Names{"x:rising -> y:rising"});
        design_.makeExclusive(x, y);
        EXPECT_TRUE(tool_->launch());
        EXPECT_EQ(subdomains(), Names{});
        EXPECT_TRUE(tool_->launch());
        EXPECT_EQ(subdomains(), Names{});
        analyzer->clearClockGroups();
        EXPECT_TRUE(tool_->launch());
        EXPECT_EQ(subdomains(), Names{"x:rising -> y:rising"});
        analyzer->getDomain(x, y)->destroy();
        x->setClockSource(false);
        y->setClockSource(false);
    }
}

// --- Phases ---

TEST_F(Launch, RunsEveryPhase) {
    addPath();
    design_.setClock(clk_, 4, 2);
    design_.addSubdomain(clk_, clk_)->fixHoldRelation(Delay(0)); // equal edges have none by default
    Pelko::MPath* exception = Pelko::MPath::create({{a_.clock}, {b_.check}}, 1);
    EXPECT_TRUE(tool_->launch());
    EXPECT_TRUE(console_.isEmpty());
    EXPECT_EQ(exception->getPseudoMask().getBits(), 1U) << "prolog";
    const Pelko::Subdomain* subdomain = Builder::findSubdomain(clk_, clk_);
    ASSERT_TRUE(subdomain) << "domains";
    EXPECT_EQ(int(subdomain->getSetupRelation()), 4) << "relations";
    EXPECT_EQ(subdomain->getCriticity(), 2U);
    EXPECT_TRUE(exception->isValidated()) << "constrained paths";
    EXPECT_EQ(arc_->getPseudoMask().getBits(), 1U);
    EXPECT_EQ(int(subdomain->getLAT()), 5) << "arrivals";
    EXPECT_EQ(int(subdomain->getSAT()), 2);
    EXPECT_EQ(namesOf(subdomain->getLongestPaths()), Names{"a/C -> b/check"}) << "searches";
    EXPECT_EQ(namesOf(subdomain->getShortestPaths()), Names{"a/C -> b/check"});
    EXPECT_EQ(int(arc_->getSlack()), -1) << "slacks";
    EXPECT_EQ(int(analyzer->getPeriod(clk_)), 5) << "periods";
    EXPECT_TRUE(subdomain->isDecisive());
    EXPECT_EQ(Support::marked(), (Names{"a/C", "a/Q", "b/D", "b/check"})) << "epilogue";
}

struct SettingRow {
    const char* what;
    void (*set)();
    Names longest, shortest;
    bool slacks, weights;
};

class Settings : public Launch, public testing::WithParamInterface<SettingRow> {};

TEST_P(Settings, Row) {
    const SettingRow& row = GetParam();
    SCOPED_TRACE(row.what);
    addPath();
    Pelko::Subdomain* subdomain = design_.addSubdomain(clk_, clk_);
    subdomain->fixHoldRelation(Delay(0));
    row.set();
    EXPECT_TRUE(tool_->launch());
    // The setup slack is 10 - 5, the hold slack 2 - 0.
    EXPECT_EQ(namesOf(subdomain->getLongestPaths()), row.longest);
    EXPECT_EQ(namesOf(subdomain->getShortestPaths()), row.shortest);
    EXPECT_EQ(arc_->getSlack().isDefined(), row.slacks);
    EXPECT_EQ(arc_->getWeight() != 0, row.weights);
}

const Names one{"a/C -> b/check"};
const SettingRow settingRows[] = {
    {"as they are", [] {}, one, one, true, false},
    {"no longest paths", [] { analyzer->setLongestPath(false); }, {}, one, true, false},
    {"no shortest paths", [] { analyzer->setShortestPath(false); }, one, {}, true, false},
    {"no slacks", [] { analyzer->setSlackTagging(false); }, one, one, false, false},
    {"weights", [] { analyzer->setWeightTagging(true); }, one, one, true, true},
    {"weights without slacks",
     [] {
         analyzer->setWeightTagging(true);
         analyzer->setSlackTagging(false);
     },
     one, one, false, false},
    {"no path is kept", [] { analyzer->setPathCount(0); }, {}, {}, true, false},
    {"a limit between the slacks", [] { analyzer->setPathLimit(Delay(3)); }, {}, one, true, false},
    {"a limit below both", [] { analyzer->setPathLimit(Delay(1)); }, {}, {}, true, false},
};

INSTANTIATE_TEST_SUITE_P(Launch, Settings, testing::ValuesIn(settingRows));

// Arcs of asynchronous domains get no slack; the rest of the analysis is the same.
TEST_F(Launch, AsynchronousDomainsGetNoSlacks) {
    Pole* x = design_.addClockSource("x", 10);
    Pole* y = design_.addClockSource("y", 10);
    const Register a = design_.addRegister("a", x);
    const Register b = design_.addRegister("b", y);
    const Pelko::Edge* across = design_.connect(a.output, b.data);
    const Pelko::Edge* own = design_.connect(b.output, a.data);
    design_.connect(a.output, a.data);
    analyzer->addClockGroups(Pelko::Analyzer::GroupKind::Asynchronous, {{x}, {y}});
    for (Pelko::Subdomain* subdomain : {design_.addSubdomain(x, y), design_.addSubdomain(y, x)})
        subdomain->setSetupRelation(Delay(10));
    EXPECT_TRUE(tool_->launch());
    EXPECT_EQ(across->getSlack(), Delay::getUndefined());
    EXPECT_EQ(own->getSlack(), Delay::getUndefined());
    EXPECT_EQ(int(a.data->getIncomingEdge(a.output)->getSlack()), 9);
    EXPECT_EQ(namesOf(Builder::findSubdomain(x, y)->getLongestPaths()), Names{"a/C -> b/check"});
    EXPECT_EQ(int(Builder::findSubdomain(x, y)->getLAT()), 1);
}

} // namespace
