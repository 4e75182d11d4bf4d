// Domain creation: what becomes of one pair of launch and latch pole, and the phase around it.
#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"
#include "tests/support/Thrown.h"

#include <gtest/gtest.h>

using Pelko::analyzer;
using Pelko::ClockMode;
using Pelko::IOConstraint;
using Pelko::Pole;
using Support::Builder;
using Support::DebugMode;
using Support::falling;
using Support::Lines;
using Support::Names;
using Support::namesOf;
using Support::none;
using Support::Register;
using Support::rising;
using Support::subdomains;

namespace {

class Domains : public testing::Test {
protected:
    Builder design_;
    Support::ToolPointer tool_ = Support::makeTool();
    Support::Recorder console_;
};

// --- One pair ---

// A design with a pole of every kind, by name. "x/C", "y/C" are clock poles with the stems {clk}, {clk,
// other}.
struct PairRow {
    const char* what;
    const char* launch;
    const char* latch;
    Names subdomains;
};

class Pairs : public testing::TestWithParam<PairRow> {
protected:
    Pairs() {
        Pole* clk = add(design_.addClockSource("clk"));
        Pole* other = add(design_.addClockSource("other"));
        for (const auto& [name, mode] : {std::pair("rising/C", rising), {"falling/C", falling}})
            stems_[add(design_.addClock(name, mode))].insert(clk);
        for (const auto& [name, mode] :
             {std::pair("inverted rising/C", rising), {"inverted falling/C", falling}}) {
            Pole* clock = add(design_.addClock(name, mode));
            clock->setCaptureInverted(true);
            stems_[clock].insert(clk);
        }
        Pole* both = add(design_.addClock("both/C"));
        stems_[both] = {clk, other};
        Pole* unclocked = add(design_.addClock("unclocked/C"));
        stems_[add(design_.addClock("null stem/C"))].insert(nullptr);
        unclocked->setClockSource(true); // a clock pole first, and it must have a stem
        stems_.erase(unclocked);

        add(design_.addInput("in"));
        const auto addInput = [&](const char* name, Pole* root, ClockMode::Code mode) {
            design_.constrainInput(add(design_.addInput(name)), root, mode);
        };
        addInput("in rising", clk, rising);
        addInput("in falling", clk, falling);
        addInput("in without edge", clk, none);
        addInput("in without clock", nullptr, rising);
        addInput("in without both", nullptr, none);
        analyzer->setInputConstraint(add(design_.addInput("in undefined")), IOConstraint());
        addInput("source port", nullptr, rising);
        poles_["source port"]->setClockSource(true);
        addInput("source port of other", other, falling);
        poles_["source port of other"]->setClockSource(true);

        add(design_.addOutput("out"));
        const auto addOutput = [&](const char* name, Pole* root, ClockMode::Code mode) {
            design_.constrainOutput(add(design_.addOutput(name)), root, mode);
        };
        addOutput("out rising", other, rising);
        addOutput("out falling", other, falling);
        addOutput("out without edge", other, none);
        addOutput("out without clock", nullptr, falling);
        analyzer->setOutputConstraint(add(design_.addOutput("out undefined")), IOConstraint());
    }
    Pole* add(Pole* pole) { return poles_[pole->getName()] = pole; }

    Builder design_;
    Support::ToolPointer tool_ = Support::makeTool();
    Vorlen::StemPoleSetMap stems_;
    std::map<std::string, Pole*> poles_;
};

TEST_P(Pairs, Row) {
    const PairRow& row = GetParam();
    SCOPED_TRACE(row.what);
    Pole* launch = poles_.at(row.launch);
    Pole* latch = poles_.at(row.latch);
    for (int round = 0; round < 2; ++round) { // in the second round, everything exists
        tool_->createDomains(stems_, launch, latch);
        EXPECT_EQ(subdomains(), row.subdomains);
        for (const Pelko::Domain* domain : analyzer->getDomains())
            for (const Pelko::Subdomain* subdomain : domain->getSubdomains()) {
                EXPECT_EQ(namesOf(subdomain->getLaunchLeaves()), Names{row.launch});
                EXPECT_EQ(namesOf(subdomain->getLatchLeaves()), Names{row.latch});
            }
    }
}

const PairRow pairRows[] = {
    {"register to register", "rising/C", "rising/C", {"clk:rising -> clk:rising"}},
    {"opposite edges", "falling/C", "rising/C", {"clk:falling -> clk:rising"}},
    {"opposite edges, the other way", "rising/C", "falling/C", {"clk:rising -> clk:falling"}},
    {"capture inversion of rising", "rising/C", "inverted rising/C", {"clk:rising -> clk:falling"}},
    {"capture inversion of falling", "rising/C", "inverted falling/C", {"clk:rising -> clk:rising"}},
    {"the launch side is never inverted", "inverted falling/C", "rising/C", {"clk:falling -> clk:rising"}},
    {"several latch roots, in stamp order",
     "rising/C",
     "both/C",
     {"clk:rising -> clk:rising", "clk:rising -> other:rising"}},
    {"launch roots outside, latch roots inside",
     "both/C",
     "both/C",
     {"clk:rising -> clk:rising", "clk:rising -> other:rising", "other:rising -> clk:rising",
      "other:rising -> other:rising"}},
    {"no stem at the launch pole", "unclocked/C", "rising/C", {}},
    {"no stem at the latch pole", "rising/C", "unclocked/C", {}},
    {"a null root in a stem launches", "null stem/C", "falling/C", {"none:rising -> clk:falling"}},
    {"a null root in a stem latches", "falling/C", "null stem/C", {"clk:falling -> none:rising"}},

    {"input without constraint", "in", "rising/C", {"none -> clk:rising"}},
    {"input with undefined constraint", "in undefined", "rising/C", {"none -> clk:rising"}},
    {"input of a rising edge", "in rising", "rising/C", {"clk:rising -> clk:rising"}},
    {"input of a falling edge", "in falling", "rising/C", {"clk:falling -> clk:rising"}},
    {"input of no edge launches on both",
     "in without edge",
     "falling/C",
     {"clk:falling -> clk:falling", "clk:rising -> clk:falling"}},
    {"input of an edge without clock", "in without clock", "rising/C", {"none:rising -> clk:rising"}},
    {"input of neither", "in without both", "rising/C", {"none -> clk:rising"}},

    {"output without constraint", "rising/C", "out", {"clk:rising -> none"}},
    {"output with undefined constraint", "falling/C", "out undefined", {"clk:falling -> none"}},
    {"output of a rising edge", "rising/C", "out rising", {"clk:rising -> other:rising"}},
    {"output of a falling edge", "rising/C", "out falling", {"clk:rising -> other:falling"}},
    {"output of no edge", "rising/C", "out without edge", {"clk:rising -> other"}},
    {"output of an edge without clock", "rising/C", "out without clock", {"clk:rising -> none:falling"}},
    {"input to output", "in", "out", {"none -> none"}},
    {"input to output, constrained", "in rising", "out falling", {"clk:rising -> other:falling"}},

    {"a plain clock source launches on both edges",
     "clk",
     "rising/C",
     {"clk:falling -> clk:rising", "clk:rising -> clk:rising"}},
    {"a plain clock source to a port", "clk", "out", {"clk:falling -> none", "clk:rising -> none"}},
    {"a source port is its own root, on the constraint's edge",
     "source port",
     "rising/C",
     {"source port:rising -> clk:rising"}},
    {"a source port with a reference clock",
     "source port of other",
     "rising/C",
     {"other:falling -> clk:rising"}},
};

INSTANTIATE_TEST_SUITE_P(Domains, Pairs, testing::ValuesIn(pairRows));

TEST_F(Domains, CaptureIsCumulative) {
    Pole* clk = design_.addClockSource("clk");
    Vorlen::StemPoleSetMap stems;
    std::vector<Pole*> clocks;
    for (const char* name : {"a/C", "b/C", "c/C"}) {
        clocks.push_back(design_.addClock(name));
        stems[clocks.back()].insert(clk);
    }
    tool_->createDomains(stems, clocks[2], clocks[0]);
    tool_->createDomains(stems, clocks[0], clocks[1]);
    tool_->createDomains(stems, clocks[2], clocks[0]);
    EXPECT_EQ(subdomains(), Names{"clk:rising -> clk:rising"});
    const Pelko::Subdomain* subdomain = Builder::findSubdomain(clk, clk);
    EXPECT_EQ(namesOf(subdomain->getLaunchLeaves()), (Names{"a/C", "c/C"}));
    EXPECT_EQ(namesOf(subdomain->getLatchLeaves()), (Names{"a/C", "b/C"}));
}

TEST_F(Domains, ClockPoleWithoutClockMode) {
    Pole* good = design_.addClock("good/C");
    Pole* bad = design_.addClock("bad/C");
    Pole* alsoBad = design_.addClock("also bad/C");
    bad->setClockMode(none);
    alsoBad->setClockMode(none);
    Pole* in = design_.addInput("in");
    const auto pair = [&](Pole* launch, Pole* latch) {
        return [this, launch, latch] { tool_->createDomains({}, launch, latch); };
    };
    const std::type_info& critical = typeid(Ruvex::Critical);
    Support::expectThrown({
        {"latch", pair(good, bad), critical, "bad/C has not clock mode!", {"Tool", "createDomains", 2025}},
        {"latch of a port",
         pair(in, bad),
         critical,
         "bad/C has not clock mode!",
         {"Tool", "createDomains", 2025}},
        {"launch", pair(bad, good), critical, "bad/C has not clock mode!", {"Tool", "createDomains", 2065}},
        {"both: the latch is looked at first",
         pair(alsoBad, bad),
         critical,
         "bad/C has not clock mode!",
         {"Tool", "createDomains", 2025}},
    });
    bad->setCaptureInverted(true);
    Support::expectThrown({"inverted",
                           pair(good, bad),
                           critical,
                           "bad/C has not clock mode!",
                           {"Tool", "createDomains", 2025}});
    EXPECT_EQ(subdomains(), Names{});
}

// --- The phase ---

using Phase = void (Vorlen::Tool::*)();

TEST_F(Domains, PhaseFindsEveryPair) {
    Pole* clk = design_.addClockSource("clk");
    const Register a = design_.addRegister("a", clk);
    const Register b = design_.addRegister("b", clk, falling);
    design_.connect(a.output, b.data);
    design_.connect(design_.addInput("in"), a.data);
    design_.connect(b.output, design_.addOutput("out"));
    design_.connect(clk, design_.addOutput("clock out"));
    tool_->createDomains();
    EXPECT_EQ(subdomains(), (Names{"none -> clk:rising", "clk:rising -> clk:falling", "clk:falling -> none",
                                   "clk:rising -> none"}));
    EXPECT_TRUE(console_.isEmpty());
}

TEST_F(Domains, PrintsInDebugModeOnlyWhenCreating) {
    const auto ring = [this] { // a loop, so that the phase prints a warning
        Pole* merge = design_.addPole();
        Pole* back = design_.addPole();
        design_.connectAll({design_.addInput("in"), merge, design_.addOutput("out")});
        design_.connectAll({merge, back, merge});
    };
    const char* warning = "warning: 1 combinatorial loop detected during data domain analysis.";
    struct Row {
        const char* what;
        bool debug;
        Phase phase;
        Lines lines;
    };
    const Row rows[] = {
        {"create", false, &Vorlen::Tool::createDomains, {warning}},
        {"update", false, &Vorlen::Tool::updateDomains, {warning}},
        {"create in debug mode",
         true,
         &Vorlen::Tool::createDomains,
         {"Creating domains", std::string("  ") + warning, "  Creating domains ... done"}},
        {"update in debug mode", true, &Vorlen::Tool::updateDomains, {warning}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        ring();
        const DebugMode debug(row.debug);
        (*tool_.*row.phase)();
        EXPECT_EQ(console_.getLines(), row.lines);
        EXPECT_EQ(Ruvex::console.getIndentation(), 0U);
        console_.clear();
    }
}

// Two clocks, with paths in both directions and from each to itself.
struct TwoClocks {
    explicit TwoClocks(Builder& design) : x(design.addClockSource("x")), y(design.addClockSource("y")) {
        const Register a = design.addRegister("a", x);
        const Register b = design.addRegister("b", y);
        for (Pole* output : {a.output, b.output})
            for (Pole* data : {a.data, b.data})
                design.connect(output, data);
    }
    Pole* x;
    Pole* y;
};

Names asynchronous() {
    return namesOf(analyzer->getDomains(),
                   [](const Pelko::Domain* domain) { return domain->isAsynchronous(); });
}

TEST_F(Domains, ExclusiveAndAsynchronous) {
    const Names own{"x -> x", "y -> y"};
    const Names all{"x -> x", "y -> x", "x -> y", "y -> y"};
    const Names across{"y -> x", "x -> y"};
    struct Row {
        const char* what;
        bool exclusive, asynchronous;
        Names domains, marked;
    };
    const Row rows[] = {
        {"neither", false, false, all, {}},
        {"exclusive", true, false, own, {}},
        {"asynchronous", false, true, all, across},
        {"both: destroyed, not marked", true, true, own, {}},
    };
    const TwoClocks clocks(design_);
    for (const Phase phase : {Phase(&Vorlen::Tool::createDomains), Phase(&Vorlen::Tool::updateDomains)})
        for (const Row& row : rows) {
            SCOPED_TRACE(row.what);
            analyzer->clearClockGroups();
            if (row.asynchronous)
                design_.makeAsynchronous(clocks.x, clocks.y);
            if (row.exclusive)
                design_.makeExclusive(clocks.x, clocks.y);
            (*tool_.*phase)();
            EXPECT_EQ(namesOf(analyzer->getDomains()), row.domains);
            EXPECT_EQ(asynchronous(), row.marked);
            while (!analyzer->getDomains().isEmpty())
                analyzer->getDomains().getFirst()->destroy();
        }
}

// Domains are destroyed with their subdomains, and are created again by each run that finds their pairs.
TEST_F(Domains, ExclusiveDomainsComeAndGo) {
    const TwoClocks clocks(design_);
    tool_->createDomains();
    EXPECT_EQ(namesOf(analyzer->getDomains()), (Names{"x -> x", "y -> x", "x -> y", "y -> y"}));
    const Pelko::Domain* kept = analyzer->getDomain(clocks.x, clocks.x);
    design_.makeExclusive(clocks.x, clocks.y);
    tool_->updateDomains();
    EXPECT_EQ(subdomains(), (Names{"x:rising -> x:rising", "y:rising -> y:rising"}));
    EXPECT_EQ(analyzer->getDomain(clocks.x, clocks.x), kept);
    analyzer->clearClockGroups();
    tool_->updateDomains();
    EXPECT_EQ(namesOf(analyzer->getDomains()), (Names{"x -> x", "y -> y", "y -> x", "x -> y"}));
}

// A domain that is marked already stays so if no constraint applies.
TEST_F(Domains, AsynchronousMarkIsNotTakenBack) {
    const TwoClocks clocks(design_);
    design_.makeAsynchronous(clocks.x, clocks.y);
    tool_->createDomains();
    analyzer->clearClockGroups();
    tool_->updateDomains();
    EXPECT_EQ(asynchronous(), (Names{"y -> x", "x -> y"}));
}

// The domains that were created before the fault stay.
TEST_F(Domains, FaultLeavesWhatIsThere) {
    const TwoClocks clocks(design_);
    Pole* bad = design_.addClock("bad/C");
    bad->setClockMode(none);
    design_.connect(bad, design_.addOutput("out"));
    Support::expectThrown({"no clock mode",
                           [this] { tool_->createDomains(); },
                           typeid(Ruvex::Critical),
                           "bad/C has not clock mode!",
                           {"Tool", "createDomains", 2065}});
    EXPECT_EQ(namesOf(analyzer->getDomains()), (Names{"x -> x", "y -> x", "x -> y", "y -> y"}));
    EXPECT_EQ(Support::marked(), Names{});
    tool_->reset();
    bad->setClockMode(rising);
    tool_->updateDomains();
}

} // namespace
