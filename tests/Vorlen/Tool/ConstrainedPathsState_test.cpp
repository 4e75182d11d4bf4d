// Constrained paths: what the phase finds when it begins, and what happens while it walks. Marks and a loop
// stack from before count; events may change the design from one step to the next, or end the run.
#include "tests/support/Graph.h"
#include "tests/support/Recorder.h"
#include "tests/support/Thrown.h"

#include <gtest/gtest.h>

#include <QObject>
#include <QTime>

#include <functional>

using Pelko::analyzer;
using Pelko::application;
using Pelko::CPath;
using Support::Graph;
using Support::marked;
using Support::Names;
using Support::namesOf;
using Support::tagged;

namespace {

// Sets the event timer back by an hour, so that the next step processes events.
void letTimerRunUp() { application->getEventTimer() = QTime::currentTime().addSecs(-3600); }

// Called whenever events are processed: in these designs once per stage, when its walk leaves its first pole.
class Meddler : public QObject {
public:
    explicit Meddler(std::function<void(int)> action) : action_(std::move(action)) {
        application->setBatch(false);
        startTimer(0);
        letTimerRunUp();
    }
    int getCount() const { return count_; }

private:
    void timerEvent(QTimerEvent*) override {
        action_(++count_);
        letTimerRunUp();
    }

    std::function<void(int)> action_;
    int count_ = 0;
};

class ConstrainedPathsState : public testing::Test {
protected:
    Support::ToolPointer tool_ = Support::makeTool();
    Support::Recorder console_;
};

// --- The state before ---

// Only the first walk can meet earlier marks: it clears them when it is done.
TEST_F(ConstrainedPathsState, MarkedPolesAreVisited) {
    Graph graph("s>m m>t s>t");
    for (int i = 0; i < 2; ++i)
        CPath::create(graph.objects({"s"}, {}, {"t"}));
    tool_->prolog();
    graph.get("m")->mark();
    tool_->tagConstrainedPaths();
    EXPECT_EQ(tagged(1), Names{"s -> t"});
    EXPECT_EQ(tagged(2), (Names{"s -> m", "m -> t", "s -> t"}));
    EXPECT_EQ(marked(), Names{});
}

TEST_F(ConstrainedPathsState, MarkedTargetIsNotWalked) {
    Graph graph("s>t s>u");
    CPath* path = CPath::create(graph.objects({"s"}, {}, {"t", "u"}));
    tool_->prolog();
    graph.get("t")->mark();
    tool_->tagConstrainedPaths();
    EXPECT_EQ(tagged(), Names{"s -> u"});
    EXPECT_TRUE(path->isValidated());
}

// A pole on the loop stack closes a loop, until the first walk closes the loop protocol.
TEST_F(ConstrainedPathsState, PolesOnTheLoopStackClosePaths) {
    Graph graph("s>m m>t s>t");
    for (int i = 0; i < 2; ++i)
        CPath::create(graph.objects({"s"}, {}, {"t"}));
    tool_->prolog();
    tool_->loopPush(graph.get("m"));
    const Support::DebugMode debug(true);
    tool_->tagConstrainedPaths();
    EXPECT_EQ(tagged(1), Names{"s -> t"});
    EXPECT_EQ(tagged(2), (Names{"s -> m", "m -> t", "s -> t"}));
    EXPECT_EQ(console_.getLines(),
              Support::Lines{"warning: 1 combinatorial loop detected during false paths analysis."});
    EXPECT_EQ(namesOf(tool_->getLoopPoles()), Names{});
}

// Poles on the loop stack belong to the current path, so a find hits them too: here a bridge without
// fan-out.
TEST_F(ConstrainedPathsState, PolesOnTheLoopStackAreHit) {
    for (const bool pushed : {false, true}) {
        SCOPED_TRACE(pushed);
        Graph graph("s>b b>t s>c");
        CPath::create(graph.objects({"s"}, {"b", "c"}, {"t"}));
        tool_->prolog();
        if (pushed)
            tool_->loopPush(graph.get("c"));
        tool_->tagConstrainedPaths();
        EXPECT_EQ(tagged(), (pushed ? Names{"s -> b", "b -> t", "s -> c"} : Names{"s -> b", "b -> t"}));
    }
}

TEST_F(ConstrainedPathsState, OpenLoopProtocol) {
    Graph graph("s>t");
    CPath::create(graph.objects({"s"}, {}, {"t"}));
    tool_->prolog();
    graph.get("s")->mark();
    tool_->loopOpen();
    Support::expectThrown({"already open",
                           [this] { tool_->tagConstrainedPaths(); },
                           typeid(Ruvex::InvalidRequest),
                           "Already opened",
                           {"Tool", "loopOpen", 525}});
    EXPECT_EQ(tagged(), Names{});
    EXPECT_EQ(marked(), Names{});
}

// --- Changes during the walk ---

struct ChangeRow {
    const char* what;
    const char* arcs;
    int walk; // the walk in which the change happens, of two
    std::function<void(Graph&)> change;
    Names first, second;
};

// Two exceptions from s to t, with the same fan-in. The change happens when the walk leaves d: t is on the
// current path, and a has not been reached.
TEST_F(ConstrainedPathsState, EventsMayChangeTheDesign) {
    const Names whole{"a -> t", "s -> a"};
    const ChangeRow rows[] = {
        {"nothing", "d>t a>t s>a", 1, [](Graph&) {}, whole, whole},
        {"an arc ahead ends",
         "d>t a>t s>a",
         1,
         [](Graph& graph) { graph.getEdge("s", "a")->disactivate(); },
         {},
         {}},
        {"an arc ahead ends, in the second walk",
         "d>t a>t s>a",
         2,
         [](Graph& graph) { graph.getEdge("s", "a")->disactivate(); },
         whole,
         {}},
        {"an arc of the open pole ends",
         "d>t a>t s>a",
         1,
         [](Graph& graph) { graph.getEdge("a", "t")->disactivate(); },
         {},
         {}},
        {"an arc of the open pole ends, in the second walk",
         "d>t a>t s>a",
         2,
         [](Graph& graph) { graph.getEdge("a", "t")->disactivate(); },
         whole,
         {}},
        {"an arc behind ends", "d>t a>t s>a", 2, [](Graph& graph) { graph.getEdge("d", "t")->disactivate(); },
         whole, whole},
        {"an arc ahead begins", "d>t a>t s!a", 1, [](Graph& graph) { graph.getEdge("s", "a")->activate(); },
         whole, whole},
        {"an arc ahead begins, in the second walk",
         "d>t a>t s!a",
         2,
         [](Graph& graph) { graph.getEdge("s", "a")->activate(); },
         {},
         whole},
        {"an arc of the open pole begins, in the second walk",
         "d>t a!t s>a",
         2,
         [](Graph& graph) { graph.getEdge("a", "t")->activate(); },
         {},
         whole},
        {"an arc is added ahead", "d>t a>t", 1, [](Graph& graph) { graph.connect("s", "a"); }, whole, whole},
        {"an arc is added ahead, in the second walk",
         "d>t a>t x>a",
         2,
         [](Graph& graph) { graph.connect("s", "a"); },
         {},
         whole},
        {"an arc is added to the open pole: not for the walk that has opened it",
         "d>t a>t s>a",
         1,
         [](Graph& graph) { graph.connect("s", "t"); },
         whole,
         {"a -> t", "s -> a", "s -> t"}},
        {"a pole is added ahead, in the second walk",
         "d>t a>t s>a",
         2,
         [](Graph& graph) { graph.connect("s", "n"), graph.connect("n", "a"); },
         whole,
         {"a -> t", "s -> a", "s -> n", "n -> a"}},
        {"an arc ahead is ended for good and made again, in the second walk",
         "d>t a>t y>a s>a",
         2,
         [](Graph& graph) {
             graph.getEdge("y", "a")->destroy(), graph.connect("s", "y"), graph.connect("y", "a");
         },
         whole,
         {"a -> t", "s -> a", "s -> y", "y -> a"}},
    };
    for (const ChangeRow& row : rows) {
        SCOPED_TRACE(row.what);
        Graph graph(row.arcs);
        for (int i = 0; i < 2; ++i)
            CPath::create(graph.objects({"s"}, {}, {"t"}));
        tool_->prolog();
        const Meddler meddler([&](int count) {
            if (count == row.walk)
                row.change(graph);
        });
        tool_->tagConstrainedPaths();
        EXPECT_GE(meddler.getCount(), 2);
        EXPECT_EQ(tagged(1), row.first);
        EXPECT_EQ(tagged(2), row.second);
        EXPECT_EQ(namesOf(tool_->getLoopPoles()), Names{});
    }
    EXPECT_TRUE(console_.isEmpty());
}

// --- Stops during the walk ---

// The results so far stay, and so does the path of the walk that was stopped.
TEST_F(ConstrainedPathsState, StopInTheThirdWalk) {
    Graph graph("d>c c>b b>t s>t");
    for (int i = 0; i < 4; ++i)
        CPath::create(graph.objects({"s"}, {}, {"t"}));
    tool_->prolog();
    {
        const Meddler meddler([](int count) {
            if (count == 2)
                application->requestStop();
        });
        Support::expectThrown({"stop",
                               [this] { tool_->tagConstrainedPaths(); },
                               typeid(Ruvex::Interruption),
                               "stopped by the user",
                               {}});
    }
    EXPECT_EQ(namesOf(tool_->getLoopPoles()), (Names{"c", "b", "t"})) << "d has been left";
    EXPECT_EQ(marked(), Names{});
    EXPECT_EQ(tagged(0b0011), Names{"s -> t"});
    EXPECT_EQ(tagged(0b0001), Names{"s -> t"});
    EXPECT_EQ(tagged(0b1100), Names{});
    EXPECT_EQ(namesOf(analyzer->getCPaths(), [](const CPath* path) { return path->isValidated(); }).size(),
              2U);
    application->setBatch(true);
    tool_->prolog();
    tool_->tagConstrainedPaths();
    EXPECT_EQ(tagged(0b1000), Names{"s -> t"});
    EXPECT_EQ(namesOf(tool_->getLoopPoles()), Names{});
}

} // namespace
