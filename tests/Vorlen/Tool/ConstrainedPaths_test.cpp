// Constrained paths: which arcs an exception tags, and what the phase says about loops.
#include "tests/support/Graph.h"
#include "tests/support/Recorder.h"

#include <gtest/gtest.h>

using Pelko::analyzer;
using Pelko::CPath;
using Pelko::Pole;
using Pelko::PseudoMask;
using Support::Graph;
using Support::inactive;
using Support::Lines;
using Support::marked;
using Support::Names;
using Support::namesOf;
using Support::tagged;

namespace {

struct TagRow {
    const char* what;
    const char* arcs;
    Names sources, bridges, targets;
    Names tagged;
    bool validated;
};

class Tagging : public testing::TestWithParam<TagRow> {
protected:
    Support::Recorder console_;
};

TEST_P(Tagging, Row) {
    const TagRow& row = GetParam();
    SCOPED_TRACE(row.what);
    Graph graph(row.arcs);
    CPath* path = CPath::create(graph.objects(row.sources, row.bridges, row.targets));
    const Support::ToolPointer tool = Support::makeTool();
    tool->prolog();
    tool->tagConstrainedPaths();
    EXPECT_EQ(tagged(), row.tagged);
    EXPECT_EQ(tagged(path->getPseudoMask().getBits()), row.tagged);
    EXPECT_EQ(path->isValidated(), row.validated);
    EXPECT_EQ(marked(), Names{});
    EXPECT_EQ(namesOf(tool->getLoopPoles()), Names{});
    EXPECT_TRUE(console_.isEmpty());
}

const TagRow tagRows[] = {
    {"a chain", "s>a a>t", {"s"}, {}, {"t"}, {"s -> a", "a -> t"}, true},
    {"not reached", "x>t s>y", {"s"}, {}, {"t"}, {}, false},
    {"against the arcs", "t>s", {"s"}, {}, {"t"}, {}, false},
    {"an inactive arc on the way", "s!a a>t", {"s"}, {}, {"t"}, {}, false},
    {"no sources", "s>t", {}, {}, {"t"}, {}, false},
    {"no targets", "s>t", {"s"}, {}, {}, {}, false},
    {"a target that is a source", "a>s s>b", {"s"}, {}, {"s"}, {}, true},
    {"a target that is a source, and another one", "s>t", {"s", "t"}, {}, {"t"}, {}, true},
    {"two sources through a shared pole",
     "s1>m s2>m m>x x>t",
     {"s1", "s2"},
     {},
     {"t"},
     {"s1 -> m", "s2 -> m", "m -> x", "x -> t"},
     true},
    {"two ways from one source",
     "s>a s>b a>t b>t",
     {"s"},
     {},
     {"t"},
     {"s -> a", "s -> b", "a -> t", "b -> t"},
     true},
    {"what joins from elsewhere", "s>m o>m m>t o>t", {"s"}, {}, {"t"}, {"s -> m", "m -> t"}, true},
    {"what leaves on the way", "s>m m>o m>t s>o", {"s"}, {}, {"t"}, {"s -> m", "m -> t"}, true},
    {"nothing behind a source", "r>s s>t", {"s", "r"}, {}, {"t"}, {"s -> t"}, true},
    {"two targets behind a shared pole",
     "s>m m>t1 m>t2",
     {"s"},
     {},
     {"t1", "t2"},
     {"s -> m", "m -> t1", "m -> t2"},
     true},
    {"a later target joins a dead end", "d>t1 d>t2 s>t2", {"s"}, {}, {"t1", "t2"}, {"s -> t2"}, true},
    {"a target on the way to another", "s>t1 t1>t2", {"s"}, {}, {"t1", "t2"}, {"s -> t1", "t1 -> t2"}, true},
    {"the same, the far one first", "s>t1 t1>t2", {"s"}, {}, {"t2", "t1"}, {"s -> t1", "t1 -> t2"}, true},

    {"a bridge", "s>b b>t s>x x>t", {"s"}, {"b"}, {"t"}, {"s -> b", "b -> t"}, true},
    {"longer ways around a bridge",
     "s>a a>b b>c c>t",
     {"s"},
     {"b"},
     {"t"},
     {"s -> a", "a -> b", "b -> c", "c -> t"},
     true},
    {"no target behind the bridge", "s>b x>t", {"s"}, {"b"}, {"t"}, {}, false},
    {"no source in front of the bridge", "x>b b>t s>t", {"s"}, {"b"}, {"t"}, {}, false},
    {"only bridges on the way",
     "s>b1 b1>t s>b2 b2>u",
     {"s"},
     {"b1", "b2"},
     {"t"},
     {"s -> b1", "b1 -> t"},
     true},
    // The arcs behind a hit bridge are kept, even if only another bridge has a source before it.
    {"a bridge without a source beside one with",
     "s>b1 b1>t z>b2 b2>t",
     {"s"},
     {"b1", "b2"},
     {"t"},
     {"s -> b1", "b1 -> t", "b2 -> t"},
     true},
    {"bridges behind each other",
     "s>b1 b1>b2 b2>t",
     {"s"},
     {"b1", "b2"},
     {"t"},
     {"s -> b1", "b1 -> b2", "b2 -> t"},
     true},
    {"a bridge in front of a bridge is an ordinary pole to the second stage",
     "b1>b2 b2>t s>b2",
     {"s"},
     {"b1", "b2"},
     {"t"},
     {"b2 -> t", "s -> b2"},
     true},
    {"a bridge that is the target", "s>t", {"s"}, {"t"}, {"t"}, {"s -> t"}, true},
    {"a bridge that is the source", "r>s s>t", {"s"}, {"s"}, {"t"}, {"s -> t"}, true},
    {"a bridge that is both", "r>s s>t", {"s"}, {"s"}, {"s"}, {}, true},
    {"a source behind the bridge does not count", "b>s s>t", {"s"}, {"b"}, {"t"}, {}, false},
    {"two bridges share what is in front",
     "s>m m>b1 m>b2 b1>t b2>t",
     {"s"},
     {"b1", "b2"},
     {"t"},
     {"s -> m", "m -> b1", "m -> b2", "b1 -> t", "b2 -> t"},
     true},

    // Arcs that close a loop are skipped. Without debug mode there is no message.
    {"a loop on the way", "s>m m>x x>m m>t", {"s"}, {}, {"t"}, {"s -> m", "m -> t"}, true},
    {"a loop met before the source",
     "x>m s>x m>x m>t",
     {"s"},
     {},
     {"t"},
     {"x -> m", "s -> x", "m -> t"},
     true},
    {"a loop through the target", "s>t t>x x>t", {"s"}, {}, {"t"}, {"s -> t"}, true},
};

INSTANTIATE_TEST_SUITE_P(ConstrainedPaths, Tagging, testing::ValuesIn(tagRows));

// --- Several exceptions ---

class ConstrainedPaths : public testing::Test {
protected:
    ~ConstrainedPaths() override { Pelko::Analyzer::_muted = false; }

    Support::ToolPointer tool_ = Support::makeTool();
    Support::Recorder console_;
};

TEST_F(ConstrainedPaths, NoExceptionNothingHappens) {
    Graph graph("s>t");
    graph.get("s")->mark();
    tool_->tagConstrainedPaths();
    EXPECT_EQ(tagged(), Names{});
    EXPECT_EQ(marked(), Names{"s"}) << "not even the marks are cleared";
}

// Exceptions of all kinds tag in the same way. Classes are added on shared arcs, and to those that an arc
// has.
TEST_F(ConstrainedPaths, ClassesAddUp) {
    Graph graph("s1>m s2>m m>t1 m>t2");
    Pelko::FPath::create(graph.objects({"s1"}, {}, {"t1"}));
    Pelko::MPath::create(graph.objects({"s2"}, {}, {"t1"}), 2);
    Pelko::DPath::createMaximum(graph.objects({"s1", "s2"}, {}, {"t2"}), Pelko::Delay(3));
    Pelko::DPath::createMinimum(graph.objects({"s1"}, {"m"}, {"t2"}), Pelko::Delay(3));
    CPath::create(graph.objects({"t1"}, {}, {"s1"}));
    graph.get("m")->getIncomingEdge(graph.get("s1"))->sensitize(PseudoMask(1UL << 63));
    tool_->prolog();
    tool_->tagConstrainedPaths();
    EXPECT_EQ(tagged(0b00001), (Names{"s1 -> m", "m -> t1"}));
    EXPECT_EQ(tagged(0b00010), (Names{"s2 -> m", "m -> t1"}));
    EXPECT_EQ(tagged(0b00100), (Names{"s1 -> m", "s2 -> m", "m -> t2"}));
    EXPECT_EQ(tagged(0b01000), (Names{"s1 -> m", "m -> t2"}));
    EXPECT_EQ(tagged(0b10000), Names{});
    EXPECT_EQ(tagged(1UL << 63), Names{"s1 -> m"});
    EXPECT_EQ(namesOf(analyzer->getCPaths(), [](const CPath* path) { return path->isValidated(); }).size(),
              4U);
}

// This phase ignores an insulated false path.
TEST_F(ConstrainedPaths, InsulatedPathsAreLeftOut) {
    Graph graph("s>t");
    auto* insulated = Pelko::FPath::create(graph.objects({"s"}, {}, {"t"}), true);
    auto* ordinary = Pelko::FPath::create(graph.objects({"s"}, {}, {"t"}));
    insulated->setPseudoMask(PseudoMask(1));
    ordinary->setPseudoMask(PseudoMask(2));
    tool_->tagConstrainedPaths();
    EXPECT_EQ(tagged(1), Names{});
    EXPECT_EQ(tagged(2), Names{"s -> t"});
    EXPECT_FALSE(insulated->isValidated());
    EXPECT_TRUE(ordinary->isValidated());
}

// Tags and validation are results: they accumulate until the analyzer clears them.
TEST_F(ConstrainedPaths, TagsOfAnEarlierRunStay) {
    Graph graph("s>a a>t");
    CPath* path = CPath::create(graph.objects({"s"}, {}, {"t"}));
    tool_->prolog();
    tool_->tagConstrainedPaths();
    graph.get("a")->getIncomingEdges().getFirst()->disactivate();
    tool_->tagConstrainedPaths();
    EXPECT_EQ(tagged(), (Names{"s -> a", "a -> t"}));
    EXPECT_TRUE(path->isValidated());
    analyzer->clearResults();
    tool_->prolog();
    tool_->tagConstrainedPaths();
    EXPECT_EQ(tagged(), Names{});
    EXPECT_FALSE(path->isValidated());
}

// --- Loops ---

struct LoopRow {
    unsigned paths; // each of them meets the loop once
    bool debug, muted;
    Lines lines;
};

TEST_F(ConstrainedPaths, LoopsAreCountedInDebugModeOnly) {
    const LoopRow rows[] = {
        {0, true, false, {}},
        {1, true, false, {"warning: 1 combinatorial loop detected during false paths analysis."}},
        {2, true, false, {"warning: 2 combinatorial loops detected during false paths analysis."}},
        {12, true, false, {"warning: 12 combinatorial loops detected during false paths analysis."}},
        {1, false, false, {}},
        {2, false, false, {}},
        {1, true, true, {}},
        {2, true, true, {}},
        {2, false, true, {}},
    };
    for (const LoopRow& row : rows) {
        SCOPED_TRACE(testing::Message() << row.paths << ", debug " << row.debug << ", muted " << row.muted);
        Graph graph("s>m m>x x>m m>t");
        for (unsigned i = 0; i < row.paths; ++i)
            CPath::create(graph.objects({"s"}, {}, {"t"}));
        const Support::DebugMode debug(row.debug);
        Pelko::Analyzer::_muted = row.muted;
        tool_->prolog();
        tool_->tagConstrainedPaths();
        EXPECT_EQ(console_.getLines(), row.lines);
        EXPECT_EQ(inactive(), Names{}) << "counted, never cut";
        console_.clear();
    }
}

// --- One step ---

// The state that a step changes, with the names of the operation's parameters.
struct StepState {
    Vorlen::PoleSet hit;
    Vorlen::EdgeList path;
    Vorlen::EdgeSet tagged;
    bool found = false;
    unsigned long loops = 5;
};

class Step : public ConstrainedPaths {
protected:
    void walk(Pole* pole, const std::vector<Pole*>& starts) {
        tool_->constrainedPathStem(pole, Ruvex::VectorCollection<Pole*>(starts), state_.hit, state_.path,
                                   state_.tagged, state_.found, state_.loops);
    }

    StepState state_;
};

TEST_F(Step, FillsItsSets) {
    Graph graph("s>m o>m m>x x>m m>t");
    walk(graph.get("t"), {graph.get("s")});
    EXPECT_EQ(namesOf(state_.hit), (Names{"s", "m", "t"}));
    EXPECT_EQ(namesOf(state_.tagged), (Names{"s -> m", "m -> t"}));
    EXPECT_TRUE(state_.path.empty());
    EXPECT_TRUE(state_.found);
    EXPECT_EQ(state_.loops, 6U);
    EXPECT_EQ(marked(), (Names{"s", "m", "o", "x", "t"}));
    EXPECT_EQ(namesOf(tool_->getLoopPoles()), Names{});
}

TEST_F(Step, NullStartsFindNothing) {
    Graph graph("s>t");
    tool_->constrainedPathStem(graph.get("t"), Pelko::Poles(), state_.hit, state_.path, state_.tagged,
                               state_.found, state_.loops);
    EXPECT_FALSE(state_.found);
    EXPECT_TRUE(state_.hit.empty());
    EXPECT_EQ(marked(), (Names{"s", "t"}));
}

// The caller's current path counts as a part of the path.
TEST_F(Step, JoinsTheCallersPath) {
    Graph graph("s>m m>t m>u");
    Pole* m = graph.get("m");
    Pole* t = graph.get("t");
    Pole* u = graph.get("u");
    const auto from = [&](Pole* end) {
        tool_->loopPush(end);
        state_.path = {end->getIncomingEdge(m)};
        walk(m, {graph.get("s")});
        tool_->loopPop();
    };
    from(t);
    EXPECT_EQ(namesOf(state_.hit), (Names{"s", "m", "t"}));
    EXPECT_EQ(namesOf(state_.tagged), (Names{"s -> m", "m -> t"}));
    EXPECT_EQ(namesOf(state_.path), Names{"m -> t"}) << "as it was";
    state_.found = false;
    from(u);
    EXPECT_EQ(namesOf(state_.hit), (Names{"s", "m", "t", "u"})) << "m is marked, and known";
    EXPECT_EQ(namesOf(state_.tagged), (Names{"s -> m", "m -> t", "m -> u"}));
    EXPECT_FALSE(state_.found) << "a join alone is no find";
    EXPECT_EQ(namesOf(tool_->getLoopPoles()), Names{});
}

TEST_F(Step, MarkedPoleThatIsNotKnown) {
    Graph graph("s>m m>t");
    Pole* m = graph.get("m");
    m->mark();
    walk(graph.get("t"), {graph.get("s")});
    EXPECT_FALSE(state_.found);
    EXPECT_TRUE(state_.hit.empty());
    EXPECT_TRUE(state_.tagged.empty());
    EXPECT_EQ(marked(), (Names{"m", "t"}));
}

} // namespace
