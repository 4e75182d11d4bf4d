// The epilogue: which poles it marks, and which domains it remarks on.
#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"

#include "Pelko/Path.h"

#include <gtest/gtest.h>

#include <list>

namespace {

using namespace Support;
using Pelko::Delay;
using Pelko::Edge;
using Pelko::Pole;

TEST(Epilog, MarksPolesThatTouchAFailure) {
    // Arcs a -> b -> c of these slacks.
    const struct {
        const char* what;
        int first;
        int second;
        Names marked;
    } rows[] = {
        {"undefined", undefined, undefined, {}},
        {"met", 1, 1, {}},
        {"exactly zero", 0, 1, {"a", "b"}},
        {"exactly zero, behind", 1, 0, {"b", "c"}},
        {"failing", -1, 1, {"a", "b"}},
        {"failing, behind", 1, -1, {"b", "c"}},
        {"failing beside undefined", undefined, -1, {"b", "c"}},
        {"failing in front of undefined", -1, undefined, {"a", "b"}},
        {"both", -1, 0, {"a", "b", "c"}},
        {"met beside undefined", undefined, 1, {}},
        {"the minimum special fails", minimum, 1, {"a", "b"}},
        {"the maximum special does not", maximum, maximum, {}},
    };
    for (const auto& row : rows) {
        Builder design;
        Pole* a = design.addPole("a");
        Pole* b = design.addPole("b");
        Pole* c = design.addPole("c");
        design.connect(a, b)->setSlack(Delay(row.first));
        design.connect(b, c)->setSlack(Delay(row.second));
        design.addPole("alone");
        const Recorder recorder;
        makeTool()->epilog();
        EXPECT_EQ(marked(), row.marked) << row.what;
        EXPECT_EQ(recorder.getLines(), Lines{}) << row.what;
    }
}

TEST(Epilog, AnyArcOfAPoleCounts) {
    // A pole between three sources and three targets; one of its six arcs fails.
    for (int failing = 0; failing < 6; ++failing) {
        Builder design;
        Pole* hub = design.addPole("hub");
        std::vector<std::string> names;
        for (int i = 0; i < 6; ++i) {
            names.push_back("p" + std::to_string(i));
            Pole* pole = design.addPole(names.back());
            Edge* edge = i < 3 ? design.connect(pole, hub) : design.connect(hub, pole);
            edge->setSlack(Delay(i == failing ? 0 : 5));
        }
        makeTool()->epilog();
        EXPECT_EQ(marked(), (Names{"hub", names[static_cast<std::size_t>(failing)]}));
    }
}

TEST(Epilog, InactiveArcsCount) {
    Builder design;
    Edge* edge = design.connect(design.addPole("a"), design.addPole("b"));
    edge->setSlack(Delay(-1));
    edge->disactivate();
    makeTool()->epilog();
    EXPECT_EQ(marked().size(), 2U);
}

TEST(Epilog, NeverUnmarks) {
    Builder design;
    Pole* before = design.addPole("before");
    Pole* a = design.addPole("a");
    design.connect(a, design.addPole("b"))->setSlack(Delay(-1));
    before->mark();
    const ToolPointer tool = makeTool();
    tool->epilog();
    EXPECT_EQ(marked(), (Names{"before", "a", "b"}));
    a->getOutgoingEdges().getFirst()->setSlack(Delay(7));
    tool->epilog();
    EXPECT_EQ(marked(), (Names{"before", "a", "b"}));
}

TEST(Epilog, WritesNoTimingValues) {
    Builder design;
    Pole* clk = design.addClockSource("clk", 10);
    Pelko::Subdomain* subdomain = design.addSubdomain(clk, clk);
    Edge* edge = design.connect(clk, design.addPole("b"), 3, 4);
    edge->setSlack(Delay(-1));
    edge->setWeight(7);
    makeTool()->epilog();
    EXPECT_EQ(int(edge->getSlack()), -1);
    EXPECT_EQ(edge->getWeight(), 7U);
    EXPECT_EQ(edge->getMinDutyCycle(), 100U);
    EXPECT_EQ(int(subdomain->getLAT()), undefined);
    EXPECT_EQ(int(subdomain->getSetupRelation()), undefined);
    EXPECT_EQ(int(Pelko::analyzer->getPeriod(clk)), undefined);
}

// Adds a path over these poles to a subdomain.
void addPath(Pelko::Subdomain* subdomain, bool longest, const std::vector<Pole*>& poles) {
    std::list<Edge*> edges;
    for (std::size_t i = 1; i < poles.size(); ++i) {
        Edge* edge = poles[i]->getIncomingEdge(poles[i - 1]);
        edges.push_back(edge ? edge : Edge::create(poles[i - 1], poles[i], Delay(1), Delay(1)));
    }
    const Delay zero(0);
    const Ruvex::ListCollection<Edge*> view(edges);
    if (longest)
        Pelko::Path::createLongest(subdomain, view, zero, zero, zero);
    else
        Pelko::Path::createShortest(subdomain, view, zero, zero, zero);
}

TEST(Epilog, RemarksOnDomainsWhosePathsCrossAClockPole) {
    // Paths over clock poles "c" and others. Each row is the paths of one domain.
    enum class Where { Start, Middle, End, Nowhere, NoArcs };
    struct PathRow {
        bool longest;
        Where clock;
    };
    const struct {
        const char* what;
        std::vector<PathRow> paths;
        bool remarked;
    } rows[] = {
        {"no paths", {}, false},
        {"a longest path", {{true, Where::Middle}}, true},
        {"a shortest path alone", {{false, Where::Middle}}, true},
        {"a path that only starts at a clock pole", {{true, Where::Start}, {false, Where::Start}}, false},
        {"a path that ends at one", {{true, Where::End}}, true},
        {"no clock pole", {{true, Where::Nowhere}, {false, Where::Nowhere}}, false},
        {"a path without arcs", {{true, Where::NoArcs}, {false, Where::NoArcs}}, false},
        {"a shortest path behind longest ones that do not",
         {{true, Where::Nowhere}, {true, Where::Start}, {false, Where::Middle}},
         true},
        {"one of several", {{true, Where::Nowhere}, {true, Where::Middle}, {true, Where::Nowhere}}, true},
        {"once, however many",
         {{true, Where::Middle}, {true, Where::End}, {false, Where::Middle}, {false, Where::End}},
         true},
    };
    for (const bool muted : {false, true})
        for (const bool verbose : {false, true})
            for (const auto& row : rows) {
                SCOPED_TRACE(row.what);
                Builder design;
                Pole* clk = design.addClockSource("clk");
                Pelko::Subdomain* subdomain = design.addSubdomain(clk, clk);
                for (const PathRow& path : row.paths) {
                    Pole* poles[] = {design.addPole(), design.addPole(), design.addPole()};
                    if (path.clock == Where::NoArcs) {
                        addPath(subdomain, path.longest, {});
                        continue;
                    }
                    if (path.clock != Where::Nowhere)
                        poles[path.clock == Where::Start    ? 0
                              : path.clock == Where::Middle ? 1
                                                            : 2]
                            ->setClock(true);
                    addPath(subdomain, path.longest, {poles[0], poles[1], poles[2]});
                }
                Pelko::Analyzer::_muted = muted;
                Pelko::analyzer->setVerbose(verbose);
                const Recorder recorder;
                makeTool()->epilog();
                Pelko::Analyzer::_muted = false;
                Lines lines;
                if (row.remarked)
                    lines.push_back(
                        "remark: clk -> clk: Listed timing path(s) may traverse intermediate clock "
                        "timing point(s)!");
                EXPECT_EQ(recorder.getLines(), lines);
            }
}

TEST(Epilog, OneRemarkADomainInTheirOrder) {
    Builder design;
    Pole* clk = design.addClockSource("clk");
    Pole* gen = design.addClockSource("gen");
    Pole* start = design.addPole("start");
    Pole* clock = design.addClock("clock");
    Pole* end = design.addPole("end");
    const std::vector<Pole*> crossing{start, clock, end};
    const std::vector<Pole*> plain{clock, end};
    // Two subdomains of the first domain have crossing paths, the second domain has none, and ports form a
    // domain like others.
    addPath(design.addSubdomain(gen, clk), true, crossing);
    addPath(design.addSubdomain(gen, clk, falling, rising), true, crossing);
    addPath(design.addSubdomain(clk, clk), true, plain);
    addPath(design.addSubdomain(nullptr, gen), true, plain);
    addPath(design.addSubdomain(nullptr, gen, none, falling), false, crossing);
    addPath(design.addSubdomain(clk, nullptr), false, crossing);
    const Recorder recorder;
    makeTool()->epilog();
    const std::string text = ": Listed timing path(s) may traverse intermediate clock timing point(s)!";
    EXPECT_EQ(recorder.getLines(), (Lines{"remark: gen -> clk" + text, "remark: none -> gen" + text,
                                          "remark: clk -> none" + text}));
    // The message as the console gets it: no label.
    ASSERT_EQ(recorder.getMessages().size(), 3U);
    EXPECT_EQ(recorder.getMessages()[0],
              (Recorder::Message{Recorder::Level::Remark, "gen -> clk" + text, "", 0}));
}

TEST(Epilog, AnEmptyDesign) {
    const Builder design;
    const Recorder recorder;
    makeTool()->epilog();
    EXPECT_EQ(recorder.getLines(), Lines{});
    EXPECT_EQ(marked(), Names{});
}

} // namespace
