// The clock stems: which sources and inputs stand behind every clock pole, and what the walk says and leaves
// behind.
#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"

#include <gtest/gtest.h>

using Pelko::analyzer;
using Pelko::Pole;
using Support::inactive;
using Support::Lines;
using Support::marked;
using Support::Names;
using Support::namesOf;
using Support::Stems;
using Support::stemsOf;

namespace {

class ClockStem : public testing::Test {
protected:
    ~ClockStem() override { Pelko::Analyzer::_muted = false; }

    Stems stems() {
        Vorlen::StemPoleSetMap found;
        tool_->clockStem(found);
        return stemsOf(found);
    }
    // A clock pole whose pin is on a net of that name.
    Pole* addClockOn(const std::string& name, const std::string& net) {
        Pole* clock = design_.addClock(name);
        clock->getPin()->connect(Pelko::Net::create(Pelko::cell->getModule(), net));
        return clock;
    }

    Support::Builder design_;
    Support::ToolPointer tool_ = Support::makeTool();
    Support::Recorder console_;
};

TEST_F(ClockStem, EmptyDesign) { EXPECT_EQ(stems(), Stems{}); }

TEST_F(ClockStem, SourcesThroughTheNetwork) {
    Pole* clk = design_.addClockSource("clk");
    Pole* other = design_.addClockSource("other");
    Pole* in = design_.addInput("in");
    Pole* buffer = design_.addPole("buffer");
    Pole* mux = design_.addPole("mux");
    Pole* direct = design_.addClock("direct/C");
    Pole* buffered = design_.addClock("buffered/C");
    Pole* selected = design_.addClock("selected/C");
    Pole* fromPort = design_.addClock("fromPort/C");
    design_.addClock("unconnected/C");
    design_.connect(clk, direct);
    design_.connectAll({clk, buffer, buffered});
    design_.connectAll({buffer, mux, selected});
    design_.connect(other, mux);
    design_.connect(in, fromPort);
    EXPECT_EQ(stems(), (Stems{{"clk", {"clk"}},
                              {"other", {"other"}},
                              {"direct/C", {"clk"}},
                              {"buffered/C", {"clk"}},
                              {"selected/C", {"clk", "other"}},
                              {"fromPort/C", {"in"}}}));
    EXPECT_TRUE(console_.isEmpty());
}

TEST_F(ClockStem, NoActiveArcNoEntry) {
    Pole* clk = design_.addClockSource("clk");
    Pole* cut = design_.addClock("cut/C");
    Pole* half = design_.addClock("half/C");
    Pole* gate = design_.addPole("gate");
    Pole* dangling = design_.addClock("dangling/C");
    design_.connect(clk, cut)->disactivate();
    design_.connectAll({clk, gate, half});
    half->getIncomingEdge(gate)->disactivate();
    design_.connect(design_.addPole("nothing"), dangling);
    EXPECT_EQ(stems(), (Stems{{"clk", {"clk"}}}));
}

TEST_F(ClockStem, ClockPoleThatIsASource) {
    Pole* clk = design_.addClockSource("clk");
    Pole* alone = design_.addClock("alone/C");
    alone->setClockSource(true);
    Pole* driven = design_.addClock("driven/C");
    driven->setClockSource(true);
    design_.connect(clk, driven);
    EXPECT_EQ(stems(), (Stems{{"clk", {"clk"}}, {"alone/C", {"alone/C"}}, {"driven/C", {"driven/C"}}}));
}

TEST_F(ClockStem, EndsAtTheFirstSourceOrInput) {
    Pole* far = design_.addClockSource("far");
    Pole* near = design_.addClockSource("near");
    Pole* port = design_.addInput("port");
    Pole* a = design_.addClock("a/C");
    Pole* b = design_.addClock("b/C");
    design_.connectAll({far, near, a});
    design_.connectAll({far, port, b});
    EXPECT_EQ(stems(), (Stems{{"far", {"far"}}, {"near", {"near"}}, {"a/C", {"near"}}, {"b/C", {"port"}}}));
}

// The memo serves the poles before one clock pole to the later ones, for any number of sinks.
TEST_F(ClockStem, SharedNetwork) {
    for (const std::size_t sinks : {2U, 3U, 16U, 17U, 40U}) {
        SCOPED_TRACE(sinks);
        const std::string prefix = std::to_string(sinks) + " ";
        Pole* clk = design_.addClockSource(prefix + "clk");
        Pole* tree = design_.addPole(prefix + "tree");
        design_.connect(clk, tree);
        Vorlen::StemPoleSetMap found;
        std::vector<Pole*> clocks;
        for (std::size_t i = 0; i < sinks; ++i) {
            clocks.push_back(design_.addClock(prefix + std::to_string(i)));
            design_.connect(tree, clocks.back());
        }
        tool_->clockStem(found);
        for (Pole* clock : clocks)
            EXPECT_EQ(namesOf(found[clock]), Names{prefix + "clk"}) << clock->getName();
    }
}

// --- Generated clocks ---

TEST_F(ClockStem, GeneratedClockHasTheStemsOfItsClock) {
    Pole* clk = design_.addClockSource("clk");
    Pole* divider = addClockOn("divider/C", "fast net");
    Pole* q = design_.addPole("divider/Q");
    Pole* sink = addClockOn("sink/C", "slow net");
    design_.connectAll({clk, divider, q, sink});
    EXPECT_EQ(stems(), (Stems{{"clk", {"clk"}}, {"divider/C", {"clk"}}, {"sink/C", {"clk"}}}));
    EXPECT_EQ(console_.getLines(), Lines{"remark: Generated clock slow net by fast net"});
}

// One remark per active arc that leaves a clock pole. A pole without a net is reported by its name.
TEST_F(ClockStem, OneRemarkAnArc) {
    Pole* clk = design_.addClockSource("clk");
    Pole* a = design_.addClock("a/C");
    Pole* b = design_.addClock("b/C");
    Pole* gate = design_.addPole("gate");
    Pole* sink = addClockOn("sink/C", "slow net");
    design_.connect(clk, a);
    design_.connect(clk, b);
    design_.connect(a, gate);
    design_.connect(b, gate);
    design_.connect(gate, sink);
    design_.connect(b, sink);
    design_.connect(design_.addClock("cut/C"), sink)->disactivate();
    EXPECT_EQ(stems()["sink/C"], Names{"clk"});
    EXPECT_EQ(console_.getLines(),
              (Lines{"remark: Generated clock slow net by a/C", "remark: Generated clock slow net by b/C",
                     "remark: Generated clock slow net by b/C"}));
}

TEST_F(ClockStem, MutedRemarks) {
    Pole* clk = design_.addClockSource("clk");
    design_.connectAll({clk, design_.addClock("divider/C"), design_.addClock("sink/C")});
    Pelko::Analyzer::_muted = true;
    EXPECT_EQ(stems(), (Stems{{"clk", {"clk"}}, {"divider/C", {"clk"}}, {"sink/C", {"clk"}}}));
    EXPECT_TRUE(console_.isEmpty());
}

// Kept on purpose: poles are read in order, and a stem that an earlier pole released is missing for one
// upstream of it.
TEST_F(ClockStem, ClockPoleUpstreamOfAnEarlierOneHasNoStem) {
    Pole* sink = design_.addClock("sink/C");
    Pole* divider = design_.addClock("divider/C");
    design_.connectAll({design_.addClockSource("clk"), divider, sink});
    EXPECT_EQ(stems(), (Stems{{"clk", {"clk"}}, {"sink/C", {"clk"}}}));
    EXPECT_EQ(console_.getLines(), Lines{"remark: Generated clock sink/C by divider/C"});
}

// --- Ports ---

TEST_F(ClockStem, ConstrainedPorts) {
    Pole* clk = design_.addClockSource("clk");
    Pole* other = design_.addClockSource("other");
    design_.constrainInput(design_.addInput("in"), clk);
    design_.constrainInput(design_.addInput("unclocked in"), nullptr);
    analyzer->setInputConstraint(design_.addInput("undefined in"), Pelko::IOConstraint());
    design_.addInput("free in");
    design_.constrainOutput(design_.addOutput("out"), other);
    design_.constrainOutput(design_.addOutput("unclocked out"), nullptr);
    analyzer->setOutputConstraint(design_.addOutput("undefined out"), Pelko::IOConstraint());
    design_.addOutput("free out");
    // Ports that have an entry already keep it.
    Pole* sourceIn = design_.addInput("source in");
    sourceIn->setClockSource(true);
    design_.constrainInput(sourceIn, clk);
    Pole* sourceOut = design_.addOutput("source out");
    sourceOut->setClockSource(true);
    design_.constrainOutput(sourceOut, clk);
    EXPECT_EQ(stems(), (Stems{{"clk", {"clk"}},
                              {"other", {"other"}},
                              {"in", {"clk"}},
                              {"unclocked in", {"none"}},
                              {"out", {"other"}},
                              {"unclocked out", {"none"}},
                              {"source in", {"source in"}},
                              {"source out", {"source out"}}}));
}

// A port with constraints on both sides uses the input's.
TEST_F(ClockStem, BidirectionalPort) {
    Pole* port = design_.addInput("port");
    port->setOutput(true);
    design_.constrainInput(port, design_.addClockSource("in clock"));
    design_.constrainOutput(port, design_.addClockSource("out clock"));
    EXPECT_EQ(stems()["port"], Names{"in clock"});
}

// --- The state before and after ---

TEST_F(ClockStem, EntriesThatAreThereStay) {
    Pole* clk = design_.addClockSource("clk");
    Pole* other = design_.addClockSource("other");
    Pole* known = design_.addClock("known/C");
    Pole* sink = design_.addClock("sink/C");
    Pole* in = design_.addInput("in");
    design_.connect(clk, known);
    design_.connect(clk, sink);
    design_.constrainInput(in, clk);
    Vorlen::StemPoleSetMap found;
    found[known].insert(other);
    found[in].insert(other);
    found[clk].insert(other);
    tool_->clockStem(found);
    EXPECT_EQ(stemsOf(found), (Stems{{"clk", {"clk", "other"}},
                                     {"other", {"other"}},
                                     {"known/C", {"other"}},
                                     {"sink/C", {"clk"}},
                                     {"in", {"other"}}}));
}

TEST_F(ClockStem, LeavesNothingBehind) {
    Pole* clk = design_.addClockSource("clk");
    design_.connectAll({clk, design_.addPole("a"), design_.addClock("ff/C")});
    const Stems first = stems();
    EXPECT_EQ(marked(), Names{});
    EXPECT_EQ(namesOf(tool_->getLoopPoles()), Names{});
    EXPECT_EQ(stems(), first) << "closed: the phase runs again";
}

// A clock pole is walked even if it is marked; marked poles before it are not.
TEST_F(ClockStem, MarksFromBefore) {
    Pole* clk = design_.addClockSource("clk");
    Pole* a = design_.addClock("a/C");
    Pole* b = design_.addClock("b/C");
    Pole* gate = design_.addPole("gate");
    design_.connect(clk, a);
    design_.connectAll({clk, gate, b});
    a->mark();
    gate->mark();
    EXPECT_EQ(stems(), (Stems{{"clk", {"clk"}}, {"a/C", {"clk"}}}));
    EXPECT_EQ(marked(), Names{});
    EXPECT_EQ(stems()["b/C"], Names{"clk"});
}

// --- Loops ---

// `count` rings of two gates, each driven by the clock, each driving a clock pole with its second gate.
struct Rings {
    Rings(Support::Builder& design, unsigned count) {
        Pole* clk = design.addClockSource("clk");
        for (unsigned i = 1; i <= count; ++i) {
            const std::string number = std::to_string(i);
            Pole* merge = design.addPole("merge" + number);
            Pole* back = design.addPole("back" + number);
            Pole* sink = design.addClock("sink" + number);
            design.connect(clk, merge);
            design.connectAll({merge, back, merge});
            design.connect(merge, sink);
            cut.push_back("back" + number + " -> merge" + number);
        }
    }
    Names cut;
};

TEST_F(ClockStem, LoopsAreCutAndCounted) {
    const std::pair<unsigned, const char*> rows[] = {
        {0, nullptr},
        {1, "warning: 1 combinatorial loop detected during clock paths analysis."},
        {2, "warning: 2 combinatorial loops detected during clock paths analysis."},
        {11, "warning: 11 combinatorial loops detected during clock paths analysis."},
    };
    for (const bool muted : {false, true}) {
        Pelko::Analyzer::_muted = muted;
        for (const auto& [count, warning] : rows) {
            SCOPED_TRACE(std::to_string(count) + (muted ? " muted" : ""));
            const Rings rings(design_, count);
            EXPECT_EQ(stems().size(), count + 1U);
            Names cut = inactive();
            EXPECT_EQ(cut, rings.cut);
            EXPECT_EQ(marked(), Names{});
            EXPECT_EQ(console_.getLines(), warning && !muted ? Lines{warning} : Lines{});
            console_.clear();
            stems();
            EXPECT_TRUE(console_.isEmpty()) << "cut for good";
            for (Pole* pole : Pelko::cell->getPoles())
                pole->destroy();
        }
    }
}

// A ring without a merge point is found but not cut. It is found again in every run.
TEST_F(ClockStem, LoopThatCannotBeCut) {
    Pole* a = design_.addPole("a");
    Pole* b = design_.addPole("b");
    design_.connectAll({a, b, a});
    design_.connect(b, design_.addClock("sink/C"));
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(stems(), Stems{});
        EXPECT_EQ(inactive(), Names{});
        EXPECT_EQ(console_.getLines(),
                  Lines{"warning: 1 combinatorial loop detected during clock paths analysis."});
        console_.clear();
    }
}

// --- One step ---

TEST_F(ClockStem, StepFillsTheWorkingMap) {
    Pole* clk = design_.addClockSource("clk");
    Pole* merge = design_.addPole("merge");
    Pole* back = design_.addPole("back");
    Pole* sink = design_.addClock("sink/C");
    Pole* root = design_.addClock("root/C");
    design_.connect(clk, merge);
    design_.connectAll({merge, back, merge});
    design_.connectAll({merge, design_.addClock("inner/C"), sink});
    Vorlen::StemPoleSetMap work;
    unsigned long loops = 5;
    tool_->clockStem(sink, work, root, loops);
    EXPECT_EQ(stemsOf(work), (Stems{{"sink/C", {"clk"}}}));
    EXPECT_EQ(loops, 6U);
    EXPECT_EQ(inactive(), Names{"back -> merge"});
    EXPECT_EQ(marked(), (Names{"clk", "merge", "back", "sink/C", "inner/C"}));
    EXPECT_EQ(namesOf(tool_->getLoopPoles()), Names{});
    EXPECT_EQ(console_.getLines(), Lines{"remark: Generated clock root/C by inner/C"});

    console_.clear();
    tool_->clockStem(sink, work, root, loops);
    EXPECT_EQ(loops, 6U) << "a marked pole is not entered";
    EXPECT_TRUE(console_.isEmpty());
}

} // namespace
