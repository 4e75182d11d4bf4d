// The launch: which domains it analyses, the order in which their sweeps come and go, and what one run leaves
// to the next.
#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"

#include "Pelko/Path.h"
#include "Ruvex/Random.h"
#include "Vorlen/Sweep.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

using Pelko::analyzer;
using Pelko::Pole;
using Support::falling;
using Support::Lines;
using Support::Names;
using Support::namesOf;
using Support::Register;
using Support::subdomains;

namespace {

using Mode = Pelko::AnalysisMode;

class LaunchOrder : public testing::Test {
protected:
    // Two registers of a clock of period 4, and an arc of 2 to 5 between them.
    void addPath() {
        clk_ = design_.addClockSource("clk", 4);
        const Register a = design_.addRegister("a", clk_);
        b_ = design_.addRegister("b", clk_);
        design_.connect(a.output, b_.data, 2, 5);
    }

    Support::Builder design_;
    Support::ToolPointer tool_ = Support::makeTool();
    Support::Recorder console_;
    Pole* clk_ = nullptr;
    Register b_{};
};

// Records the creation and destruction of sweeps and reported paths, in order.
class Diary : public Pelko::ObjectListener, public Pelko::SweepListener {
public:
    Diary() {
        Pelko::Object::addListener(this);
        Pelko::Object::addSweepListener(this);
    }
    ~Diary() override {
        Pelko::Object::removeListener(this);
        Pelko::Object::removeSweepListener(this);
    }
    void onCreated(Pelko::Object* object) override {
        if (const auto* sweep = dynamic_cast<Vorlen::Sweep*>(object))
            lines_.push_back("create " + sweep->getAlias());
        if (const auto* path = dynamic_cast<Pelko::Path*>(object))
            lines_.push_back((path->isLongest() ? "longest path of " : "shortest path of ") +
                             path->getSubdomain()->getName());
    }
    void onSweepDestroyed(Pelko::Object* sweep) override { lines_.push_back("end " + sweep->getAlias()); }
    Lines take() { return std::exchange(lines_, {}); }

private:
    Lines lines_;
};

// First all arrivals of a domain; then each sweep is destroyed before the next one is finished.
TEST_F(LaunchOrder, SweepsInOrder) {
    Pole* clk = design_.addClockSource("clk", 10);
    const Register a = design_.addRegister("a", clk);
    const Register b = design_.addRegister("b", clk);
    const Register c = design_.addRegister("c", clk, falling);
    design_.connect(a.output, b.data);
    design_.connect(b.output, c.data);
    design_.connect(c.output, design_.addOutput("out"));
    Diary diary;
    const Lines expected{
        "create SWEEP[clk:rising -> clk:rising]",    "create SWEEP[clk:rising -> clk:falling]",
        "longest path of clk:rising -> clk:rising",  "end SWEEP[clk:rising -> clk:rising]",
        "longest path of clk:rising -> clk:falling", "shortest path of clk:rising -> clk:falling",
        "end SWEEP[clk:rising -> clk:falling]",      "create SWEEP[clk:falling -> none]",
        "longest path of clk:falling -> none",       "end SWEEP[clk:falling -> none]",
    };
    EXPECT_TRUE(tool_->launch());
    EXPECT_EQ(diary.take(), expected);
    analyzer->clearResults();
    EXPECT_TRUE(tool_->launch());
    EXPECT_EQ(diary.take(), expected);
}

TEST_F(LaunchOrder, CriticalModeAnalysesCriticalDomainsOnly) {
    Pole* x = design_.addClockSource("x", 10);
    Pole* y = design_.addClockSource("y");
    const Register a = design_.addRegister("a", x);
    const Register b = design_.addRegister("b", y);
    for (Pole* output : {a.output, b.output})
        for (Pole* data : {a.data, b.data})
            design_.connect(output, data, 3, 3);
    analyzer->setLongestPath(false);
    analyzer->setShortestPath(false);
    const Lines onlyX{"create SWEEP[x:rising -> x:rising]", "end SWEEP[x:rising -> x:rising]"};
    const Lines all{"create SWEEP[x:rising -> x:rising]", "end SWEEP[x:rising -> x:rising]",
                    "create SWEEP[y:rising -> x:rising]", "end SWEEP[y:rising -> x:rising]",
                    "create SWEEP[x:rising -> y:rising]", "end SWEEP[x:rising -> y:rising]",
                    "create SWEEP[y:rising -> y:rising]", "end SWEEP[y:rising -> y:rising]"};
    struct Row {
        Mode::Code mode;
        Lines sweeps;
        int xPeriod, yPeriod; // achieved
    };
    const Row rows[] = {
        {Mode::Critical, onlyX, 3, Support::undefined},
        {Mode::Exhaustive, all, 3, 3},
        {Mode::Default, all, 3, 3},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Mode(row.mode)._getLabel());
        analyzer->clearResults();
        analyzer->setAnalysisMode(row.mode);
        Diary diary;
        EXPECT_TRUE(tool_->launch());
        EXPECT_EQ(diary.take(), row.sweeps);
        EXPECT_EQ(int(analyzer->getPeriod(x)), row.xPeriod);
        EXPECT_EQ(int(analyzer->getPeriod(y)), row.yPeriod);
    }
}

// --- From run to run ---

TEST_F(LaunchOrder, ResetsTheRandomSeed) {
    addPath();
    Ruvex::setRandomSeed(Ruvex::getDefaultSeed());
    const unsigned long first = Ruvex::getRandomValue();
    for (const unsigned long seed : {1UL, 77UL}) {
        Ruvex::setRandomSeed(seed);
        EXPECT_NE(Ruvex::getRandomValue(), first);
        EXPECT_TRUE(tool_->launch());
        EXPECT_EQ(Ruvex::getRandomValue(), first);
    }
}

TEST_F(LaunchOrder, LoopStateIsCleanAtBothEnds) {
    addPath();
    tool_->loopOpen();
    tool_->loopPush(clk_);
    EXPECT_TRUE(tool_->launch());
    EXPECT_EQ(namesOf(tool_->getLoopPoles()), Names{});
    EXPECT_FALSE(tool_->isLooping(clk_));

    // Entries that the host adds to the stack during a run are removed at its end.
    class Pusher : public Pelko::ObjectListener {
    public:
        explicit Pusher(Vorlen::Tool& tool) : tool_(tool) { Pelko::Object::addListener(this); }
        ~Pusher() override { Pelko::Object::removeListener(this); }
        void onDestroyed(Pelko::Object* object) override {
            if (dynamic_cast<Vorlen::Sweep*>(object))
                tool_.loopPush(Pelko::cell->getPoles().getFirst());
        }

    private:
        Vorlen::Tool& tool_;
    };
    const Pusher pusher(*tool_);
    EXPECT_TRUE(tool_->launch());
    EXPECT_EQ(namesOf(tool_->getLoopPoles()), Names{});
    tool_->loopOpen();
}

// Marks of the epilogue do not affect the next run, and cleared results are the same again.
TEST_F(LaunchOrder, RunsAgainWithTheSameResults) {
    addPath();
    Pole* out = design_.addOutput("out");
    design_.connect(b_.output, out);
    const auto results = [this] {
        Lines lines = subdomains();
        for (const Pelko::Edge* edge : Pelko::cell->getEdges())
            lines.push_back(edge->getAlias() + " " + edge->getSlack()._getLabel());
        for (const Pelko::Domain* domain : analyzer->getDomains())
            for (const Pelko::Path* each : domain->getLongestPaths())
                lines.push_back(each->getAlias() + " " + each->getSlack()._getLabel());
        for (const std::string& name : Support::marked())
            lines.push_back(name);
        lines.push_back(analyzer->getPeriod(clk_)._getLabel());
        return lines;
    };
    EXPECT_TRUE(tool_->launch());
    const Lines first = results();
    EXPECT_EQ(first.back(), "5");
    for (int round = 0; round < 2; ++round) {
        const Names marks = Support::marked();
        EXPECT_FALSE(marks.empty());
        analyzer->clearResults();
        for (Pole* pole : Pelko::cell->getPoles())
            if (std::find(marks.begin(), marks.end(), pole->getName()) != marks.end())
                pole->mark(); // as the epilogue left them
        EXPECT_TRUE(tool_->launch());
        EXPECT_EQ(results(), first);
    }
}

} // namespace
