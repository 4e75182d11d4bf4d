// The data stems: which launch poles reach every end point, what domain creation hears of it, and how stems
// move on and are freed.
#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"
#include "tests/support/Thrown.h"

#include <gtest/gtest.h>

using Pelko::analyzer;
using Pelko::Pole;
using Support::Builder;
using Support::inactive;
using Support::Lines;
using Support::marked;
using Support::Names;
using Support::namesOf;
using Support::none;
using Support::Register;
using Support::rising;
using Support::Stems;
using Support::stemsOf;

namespace {

class DataStem : public testing::Test {
protected:
    ~DataStem() override { Pelko::Analyzer::_muted = false; }

    // The pairs, as the leaves of the only subdomain without clocks: first the launch poles, then the latch
    // poles.
    std::pair<Names, Names> leaves() const {
        const Pelko::Subdomain* subdomain = Builder::findSubdomain(nullptr, nullptr, none, none);
        if (!subdomain)
            return {};
        return {namesOf(subdomain->getLaunchLeaves()), namesOf(subdomain->getLatchLeaves())};
    }
    std::pair<Names, Names> run() {
        tool_->dataStem({});
        return leaves();
    }

    Builder design_;
    Support::ToolPointer tool_ = Support::makeTool();
    Support::Recorder console_;
};

using Leaves = std::pair<Names, Names>;

TEST_F(DataStem, EmptyDesign) {
    EXPECT_EQ(run(), Leaves());
    EXPECT_TRUE(analyzer->getDomains().isEmpty());
}

// More end points than a walk fetches ahead.
TEST_F(DataStem, EndPointsWithoutArcs) {
    for (int i = 0; i < 40; ++i)
        design_.addOutput("o" + std::to_string(i));
    EXPECT_EQ(run(), Leaves());
    EXPECT_TRUE(analyzer->getDomains().isEmpty());
}

TEST_F(DataStem, FanInOfPorts) {
    Pole* a = design_.addInput("a");
    Pole* b = design_.addInput("b");
    Pole* c = design_.addInput("c");
    Pole* gate = design_.addPole("gate");
    Pole* first = design_.addOutput("first");
    Pole* second = design_.addOutput("second");
    design_.addOutput("unconnected");
    design_.addInput("unused");
    design_.connect(a, gate);
    design_.connect(b, gate);
    design_.connect(gate, first);
    design_.connect(gate, second);
    design_.connect(c, second);
    EXPECT_EQ(run(), Leaves({"a", "b", "c"}, {"first", "second"}));
    EXPECT_TRUE(console_.isEmpty());
}

// Ways that separate and meet again, and stems that overlap.
TEST_F(DataStem, Reconvergence) {
    Pole* a = design_.addInput("a");
    Pole* b = design_.addInput("b");
    Pole* c = design_.addInput("c");
    Pole* left = design_.addPole("left");
    Pole* right = design_.addPole("right");
    Pole* out = design_.addOutput("out");
    Pole* side = design_.addOutput("side");
    for (Pole* pole : {c, a})
        design_.connect(pole, left);
    for (Pole* pole : {b, a})
        design_.connect(pole, right);
    design_.connect(right, out);
    design_.connect(left, out);
    design_.connect(left, side);
    Vorlen::StemPoleSetMap work;
    unsigned long loops = 0;
    tool_->dataStem(out, work, loops);
    EXPECT_EQ(stemsOf(work), (Stems{{"left", {"a", "c"}}, {"out", {"a", "b", "c"}}}));
    analyzer->unmark();
    EXPECT_EQ(run(), Leaves({"a", "b", "c"}, {"out", "side"}));
    design_.constrainOutput(side, nullptr); // on no clock edge: a new subdomain
    run();
    EXPECT_EQ(namesOf(Builder::findSubdomain(nullptr, nullptr, none, rising)->getLaunchLeaves()),
              (Names{"a", "c"}));
}

// An end point without a launch pole makes no domain.
TEST_F(DataStem, NoLaunchPole) {
    Pole* out = design_.addOutput("out");
    design_.connect(design_.addPole("nothing"), out);
    design_.connect(design_.addInput("in"), out)->disactivate();
    EXPECT_EQ(run(), Leaves());
    EXPECT_TRUE(analyzer->getDomains().isEmpty());
}

// End points are output ports and check poles; one check bit is enough.
TEST_F(DataStem, EndPoints) {
    Pole* in = design_.addInput("in");
    struct Row {
        const char* name;
        void (Pole::*set)(bool);
    };
    const Row rows[] = {{"output", &Pole::setOutput},
                        {"setup check", &Pole::setSetupCheck},
                        {"hold check", &Pole::setHoldCheck},
                        {"terminal", &Pole::setTerminal}}; // not an end point
    for (const Row& row : rows) {
        Pole* pole = design_.addPole(row.name);
        (pole->*row.set)(true);
        design_.connect(in, pole);
    }
    EXPECT_EQ(run(), Leaves({"in"}, {"output", "setup check", "hold check"}));
}

// The walk stops at inputs, clock poles and clock sources. An initial pole of no other kind does not stop it.
TEST_F(DataStem, LaunchPoles) {
    Pole* behind = design_.addInput("behind");
    Pole* in = design_.addInput("in");
    Pole* clk = design_.addClockSource("clk");
    Pole* initial = design_.addPole("initial");
    initial->setInitial(true);
    Pole* clock = design_.addClock("ff/C");
    Pole* out = design_.addOutput("out");
    for (Pole* pole : {in, clk, initial, clock}) {
        design_.connect(behind, pole);
        design_.connect(pole, out);
    }
    Vorlen::StemPoleSetMap work;
    unsigned long loops = 0;
    tool_->dataStem(out, work, loops);
    EXPECT_EQ(namesOf(work[out]), (Names{"behind", "in", "clk", "ff/C"}));
}

// The latch pole is the main pole of the end point: the clock pole for a check.
TEST_F(DataStem, LatchIsTheMainPole) {
    Pole* clk = design_.addClockSource("clk");
    const Register ff = design_.addRegister("ff", clk);
    Pole* in = design_.addInput("in");
    design_.connect(in, ff.data);
    Vorlen::StemPoleSetMap stems;
    stems[ff.clock].insert(clk);
    tool_->dataStem(stems);
    EXPECT_EQ(Support::subdomains(), Names{"none -> clk:rising"});
    const Pelko::Subdomain* subdomain = Builder::findSubdomain(nullptr, clk, none, rising);
    ASSERT_TRUE(subdomain);
    EXPECT_EQ(namesOf(subdomain->getLaunchLeaves()), Names{"in"});
    EXPECT_EQ(namesOf(subdomain->getLatchLeaves()), Names{"ff/C"});
}

// Every end point is paired with all its launch poles, and with no others.
TEST_F(DataStem, PairsByEndPoint) {
    Pole* clocks[3] = {design_.addClockSource("c0"), design_.addClockSource("c1"),
                       design_.addClockSource("c2")};
    const Register a = design_.addRegister("a", clocks[0]);
    const Register b = design_.addRegister("b", clocks[1]);
    const Register c = design_.addRegister("c", clocks[2]);
    Pole* shared = design_.addPole("shared");
    design_.connectAll({a.output, shared, b.data});
    design_.connectAll({b.output, shared, c.data});
    design_.connect(c.output, c.data);
    design_.connect(c.output, a.data);
    Vorlen::StemPoleSetMap stems;
    tool_->clockStem(stems);
    tool_->dataStem(stems);
    EXPECT_EQ(Support::subdomains(),
              (Names{"c2:rising -> c0:rising", "c0:rising -> c1:rising", "c1:rising -> c1:rising",
                     "c0:rising -> c2:rising", "c1:rising -> c2:rising", "c2:rising -> c2:rising"}));
}

// The stems of a shared fan-in remain for every later end point, for any number of them.
TEST_F(DataStem, SharedFanIn) {
    for (const std::size_t ends : {2U, 3U, 16U, 17U, 40U}) {
        SCOPED_TRACE(ends);
        Pole* in = design_.addInput("in");
        Pole* gate = design_.addPole("gate");
        design_.connect(in, gate);
        for (std::size_t i = 0; i < ends; ++i)
            design_.connect(gate, design_.addOutput("out"));
        EXPECT_EQ(run(), Leaves({"in"}, Names(ends, "out")));
        analyzer->getDomain(nullptr, nullptr)->destroy();
        for (Pole* pole : Pelko::cell->getPoles())
            pole->destroy();
    }
}

// Kept on purpose: an end point on the way to another one loses its pairs if the other one comes first.
TEST_F(DataStem, EndPointBeforeAnEndPoint) {
    Pole* in = design_.addInput("in");
    Pole* near = design_.addOutput("near");
    Pole* far = design_.addOutput("far");
    design_.connectAll({in, near, far});
    EXPECT_EQ(run(), Leaves({"in"}, {"near", "far"})) << "the near one first: both";

    Pole* last = design_.addOutput("last");
    Pole* middle = design_.addOutput("middle");
    design_.connectAll({design_.addInput("other"), middle, last});
    EXPECT_EQ(run(), Leaves({"in", "other"}, {"near", "far", "last"})) << "the far one first: only that one";
}

TEST_F(DataStem, LeavesNothingBehind) {
    design_.connectAll({design_.addInput("in"), design_.addPole("gate"), design_.addOutput("out")});
    run();
    EXPECT_EQ(marked(), Names{});
    EXPECT_EQ(namesOf(tool_->getLoopPoles()), Names{});
    EXPECT_EQ(run(), Leaves({"in"}, {"out"})) << "closed: the phase runs again";
}

TEST_F(DataStem, FaultsOfDomainCreationPass) {
    Pole* clock = design_.addClock("ff/C");
    clock->setClockMode(none);
    design_.connect(clock, design_.addOutput("out"));
    Support::expectThrown({"no clock mode",
                           [this] { tool_->dataStem({}); },
                           typeid(Ruvex::Critical),
                           "ff/C has not clock mode!",
                           {"Tool", "createDomains", 2065}});
    EXPECT_EQ(marked(), Names{});
}

// --- Loops ---

TEST_F(DataStem, LoopsAreCutAndCounted) {
    const std::pair<unsigned, const char*> rows[] = {
        {0, nullptr},
        {1, "warning: 1 combinatorial loop detected during data domain analysis."},
        {3, "warning: 3 combinatorial loops detected during data domain analysis."},
        {10, "warning: 10 combinatorial loops detected during data domain analysis."},
    };
    for (const bool muted : {false, true}) {
        Pelko::Analyzer::_muted = muted;
        for (const auto& [count, warning] : rows) {
            SCOPED_TRACE(std::to_string(count) + (muted ? " muted" : ""));
            Names cut;
            for (unsigned i = 0; i < count; ++i) {
                Pole* merge = design_.addPole("merge");
                Pole* back = design_.addPole("back");
                design_.connectAll({design_.addInput("in"), merge, design_.addOutput("out")});
                design_.connectAll({merge, back, merge});
                cut.push_back("back -> merge");
            }
            EXPECT_EQ(run(), Leaves(Names(count, "in"), Names(count, "out")));
            EXPECT_EQ(inactive(), cut);
            EXPECT_EQ(marked(), Names{});
            EXPECT_EQ(console_.getLines(), warning && !muted ? Lines{warning} : Lines{});
            console_.clear();
            run();
            EXPECT_TRUE(console_.isEmpty()) << "cut for good";
            if (Pelko::Domain* domain = analyzer->getDomain(nullptr, nullptr))
                domain->destroy();
            for (Pole* pole : Pelko::cell->getPoles())
                pole->destroy();
        }
    }
}

TEST_F(DataStem, LoopThatCannotBeCut) {
    Pole* a = design_.addPole("a");
    Pole* b = design_.addPole("b");
    design_.connectAll({a, b, a});
    design_.connect(b, design_.addOutput("out"));
    EXPECT_EQ(run(), Leaves());
    EXPECT_EQ(inactive(), Names{});
    EXPECT_EQ(console_.getLines(),
              Lines{"warning: 1 combinatorial loop detected during data domain analysis."});
}

// --- One step ---

TEST_F(DataStem, StepFillsTheWorkingMap) {
    Pole* in = design_.addInput("in");
    Pole* merge = design_.addPole("merge");
    Pole* back = design_.addPole("back");
    Pole* out = design_.addOutput("out");
    design_.connectAll({in, merge, out});
    design_.connectAll({merge, back, merge});
    Vorlen::StemPoleSetMap work;
    unsigned long loops = 5;
    tool_->dataStem(out, work, loops);
    EXPECT_EQ(stemsOf(work), (Stems{{"out", {"in"}}}));
    EXPECT_EQ(loops, 6U);
    EXPECT_EQ(inactive(), Names{"back -> merge"});
    EXPECT_EQ(marked(), (Names{"in", "merge", "back", "out"}));
    EXPECT_EQ(namesOf(tool_->getLoopPoles()), Names{});
    tool_->dataStem(out, work, loops);
    EXPECT_EQ(loops, 6U) << "a marked pole is not entered";
}

// A pole is marked after its fan-in has been walked, not before.
TEST_F(DataStem, StepMarksOnTheWayBack) {
    class MarkReader : public Pelko::ObjectListener {
    public:
        void onCreated(Pelko::Object* object) override {
            if (dynamic_cast<Pelko::Domain*>(object))
                seen = marked();
        }
        Names seen;
    } reader;
    design_.connectAll({design_.addInput("in"), design_.addPole("gate"), design_.addOutput("out")});
    design_.addOutput("later");
    Pelko::Object::addListener(&reader);
    run();
    Pelko::Object::removeListener(&reader);
    EXPECT_EQ(reader.seen, (Names{"in", "gate", "out"}));
}

// --- The merge of stems ---

struct MergeRow {
    const char* what;
    bool hasStem;  // the source has a stem
    bool otherArc; // from the source to another target
    bool otherActive;
    bool otherMarked;
    Stems after;
};

TEST_F(DataStem, StemsMoveOnAndAreFreed) {
    const MergeRow rows[] = {
        {"no stem", false, true, true, false, {{"target", {"before"}}}},
        {"no other arc", true, false, true, false, {{"target", {"before", "root"}}}},
        {"another arc is still to be walked",
         true,
         true,
         true,
         false,
         {{"source", {"root"}}, {"target", {"before", "root"}}}},
        {"another arc, inactive", true, true, false, false, {{"target", {"before", "root"}}}},
        {"another arc, its target walked", true, true, true, true, {{"target", {"before", "root"}}}},
    };
    for (const unsigned walked : {0U, 15U, 16U, 40U}) // further targets, marked
        for (const MergeRow& row : rows) {
            SCOPED_TRACE(row.what + (", with " + std::to_string(walked) + " more"));
            Pole* before = design_.addPole("before");
            Pole* root = design_.addPole("root");
            Pole* source = design_.addPole("source");
            Pole* target = design_.addPole("target");
            Pelko::Edge* edge = design_.connect(source, target);
            for (unsigned i = 0; i < walked; ++i) {
                Pole* more = design_.addPole();
                design_.connect(source, more);
                more->mark();
            }
            if (row.otherArc) {
                Pole* other = design_.addPole("other");
                Pelko::Edge* otherEdge = design_.connect(source, other);
                if (!row.otherActive)
                    otherEdge->disactivate();
                if (row.otherMarked)
                    other->mark();
            }
            Vorlen::StemPoleSetMap work;
            work[target].insert(before);
            if (row.hasStem)
                work[source].insert(root);
            tool_->updateStemPoleSetMap(edge, work);
            EXPECT_EQ(stemsOf(work), row.after);
        }
}

// The arc's own target does not keep the stem, whether marked or not, and needs no entry.
TEST_F(DataStem, StemOfATargetWithoutEntry) {
    Pole* root = design_.addPole("root");
    Pole* source = design_.addPole("source");
    Pole* target = design_.addPole("target");
    Pelko::Edge* edge = design_.connect(source, target);
    for (const bool isMarked : {false, true}) {
        SCOPED_TRACE(isMarked);
        if (isMarked)
            target->mark();
        Vorlen::StemPoleSetMap work;
        work[source].insert(root);
        tool_->updateStemPoleSetMap(edge, work);
        EXPECT_EQ(stemsOf(work), (Stems{{"target", {"root"}}}));
    }
}

} // namespace
