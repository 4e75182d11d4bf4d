// Weights: the threshold from a ratio, the path counts, the raw weights, and their classes.
//
// Networks are lists of arcs with their slacks. Names with an "i" in front are inputs, with an "o" outputs.
#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"
#include "tests/support/Thrown.h"

#include <gtest/gtest.h>

namespace {

using namespace Support;
using Pelko::Delay;
using Pelko::Edge;
using Pelko::Pole;
using Vorlen::PoleCountMap;

struct Arc {
    std::string from;
    std::string to;
    int slack = 0;
    unsigned long weight = 0;
    bool active = true;
};

class Network {
public:
    explicit Network(const std::vector<Arc>& arcs) {
        for (const Arc& arc : arcs) {
            Pole* source = find(arc.from);
            Edge* edge = design_.connect(source, find(arc.to));
            edge->setSlack(Delay(arc.slack));
            edge->setWeight(arc.weight);
            if (!arc.active)
                edge->disactivate();
        }
    }
    Pole* find(const std::string& name) {
        Pole*& pole = poles_[name];
        if (!pole)
            pole = name.front() == 'i'   ? design_.addInput(name)
                   : name.front() == 'o' ? design_.addOutput(name)
                                         : design_.addPole(name);
        return pole;
    }
    const ToolPointer& tool() const { return tool_; }

private:
    Builder design_;
    ToolPointer tool_ = makeTool();
    std::map<std::string, Pole*> poles_;
};

// In the order of the arcs.
std::vector<unsigned long> weights() {
    std::vector<unsigned long> read;
    for (const Edge* edge : Pelko::cell->getEdges())
        read.push_back(edge->getWeight());
    return read;
}

using Counts = std::map<std::string, unsigned long>;

Counts countsOf(const PoleCountMap& map) {
    Counts counts;
    for (const auto& [pole, count] : map)
        counts[nameOf(pole)] = count;
    return counts;
}

// Separate arcs between two ports each: a critical one has the weight 1.
std::vector<Arc> separate(const std::vector<int>& slacks) {
    std::vector<Arc> arcs;
    for (const int slack : slacks) {
        const std::string number = std::to_string(arcs.size());
        arcs.push_back({"i" + number, "o" + number, slack});
    }
    return arcs;
}

TEST(Weights, TheRatioChoosesTheThreshold) {
    const struct {
        const char* what;
        std::vector<int> slacks;
        float ratio;
        std::vector<unsigned long> critical;
    } rows[] = {
        {"no arcs", {}, 0.5F, {}},
        {"half of them", {4, 1, 3, 2}, 0.5F, {0, 1, 0, 1}},
        {"a share that is no whole number is cut off", {3, 2, 1}, 0.5F, {0, 0, 1}},
        {"all", {4, 1, 3, 2}, 1.0F, {1, 1, 1, 1}},
        {"more than all", {4, 1, 3, 2}, 2.0F, {1, 1, 1, 1}},
        {"a quarter", {4, 1, 3, 2}, 0.25F, {0, 1, 0, 0}},
        {"just below a quarter is none, and none means all", {4, 1, 3, 2}, 0.24F, {1, 1, 1, 1}},
        {"ratio 0: every defined slack", {4, undefined, 3, maximum}, 0.0F, {1, 0, 1, 1}},
        {"a negative ratio counts as 0", {4, 1}, -1.0F, {1, 1}},
        {"fewer defined slacks than the share: up to the largest",
         {undefined, 7, undefined, undefined, undefined, 3},
         0.5F,
         {0, 1, 0, 0, 0, 1}},
        {"no defined slack", {undefined, undefined}, 0.5F, {0, 0}},
        {"arcs without a slack count in the share", {undefined, undefined, 9, 5}, 0.5F, {0, 0, 1, 1}},
        {"equal slacks at the threshold are all critical", {5, 5, 5, 1}, 0.5F, {1, 1, 1, 1}},
        {"equal ones behind it too", {5, 1, 5, 5}, 0.5F, {1, 1, 1, 1}},
        {"the threshold sinks", {9, 8, 7, 6, 5, 4}, 0.5F, {0, 0, 0, 1, 1, 1}},
        {"it stays where later ones are larger", {4, 5, 6, 7, 8, 9}, 0.5F, {1, 1, 1, 0, 0, 0}},
        {"negative slacks", {-1, -3, 2, 0}, 0.5F, {1, 1, 0, 0}},
        {"the minimum special is the smallest", {1, minimum, 2, 3}, 0.25F, {0, 1, 0, 0}},
        {"the maximum special is never below the threshold",
         {maximum, maximum, 3, maximum},
         0.5F,
         {0, 0, 1, 0}},
        {"only it: the threshold is still the maximum", {maximum, maximum}, 0.5F, {1, 1}},
    };
    for (const auto& row : rows) {
        const Network network(separate(row.slacks));
        network.tool()->tagWeights(row.ratio);
        EXPECT_EQ(weights(), row.critical) << row.what;
    }
}

TEST(Weights, AnArcIsCriticalUpToTheThreshold) {
    const std::vector<int> slacks{undefined, minimum, -1, 0, 1, maximum};
    const struct {
        int threshold;
        std::vector<unsigned long> critical;
    } rows[] = {
        {-1, {0, 1, 1, 0, 0, 0}},      {0, {0, 1, 1, 1, 0, 0}},       {1, {0, 1, 1, 1, 1, 0}},
        {maximum, {0, 1, 1, 1, 1, 1}}, {minimum, {0, 1, 0, 0, 0, 0}}, {undefined, {0, 0, 0, 0, 0, 0}},
    };
    for (const auto& row : rows) {
        const Network network(separate(slacks));
        network.tool()->tagWeights(Delay(row.threshold));
        EXPECT_EQ(weights(), row.critical) << row.threshold;
    }
}

TEST(Weights, CountsPathsBothWays) {
    const struct {
        const char* what;
        std::vector<Arc> arcs;
        Counts forward;
        Counts backward;
    } rows[] = {
        {"one path",
         {{"i", "m"}, {"m", "o"}},
         {{"i", 1}, {"m", 1}, {"o", 1}},
         {{"i", 1}, {"m", 1}, {"o", 1}}},
        {"two starts, three ends",
         {{"i1", "m"}, {"i2", "m"}, {"m", "o1"}, {"m", "o2"}, {"m", "o3"}},
         {{"i1", 1}, {"i2", 1}, {"m", 2}, {"o1", 2}, {"o2", 2}, {"o3", 2}},
         {{"i1", 3}, {"i2", 3}, {"m", 3}, {"o1", 1}, {"o2", 1}, {"o3", 1}}},
        {"two ways",
         {{"i", "a"}, {"i", "b"}, {"a", "o"}, {"b", "o"}},
         {{"i", 1}, {"a", 1}, {"b", 1}, {"o", 2}},
         {{"i", 2}, {"a", 1}, {"b", 1}, {"o", 1}}},
        {"an arc above the threshold",
         {{"i", "a"}, {"i", "b", 1}, {"a", "o"}, {"b", "o"}},
         {{"i", 1}, {"a", 1}, {"o", 1}},
         {{"i", 1}, {"a", 1}, {"o", 1}}},
        {"an arc without a slack",
         {{"i", "a"}, {"i", "b", undefined}, {"a", "o"}, {"b", "o"}},
         {{"i", 1}, {"a", 1}, {"o", 1}},
         {{"i", 1}, {"a", 1}, {"o", 1}}},
        {"an inactive arc",
         {{"i", "a"}, {"i", "b", 0, 0, false}, {"a", "o"}, {"b", "o"}},
         {{"i", 1}, {"a", 1}, {"o", 1}},
         {{"i", 1}, {"a", 1}, {"o", 1}}},
        {"no start", {{"m", "o"}}, {}, {}},
        {"no end", {{"i", "m"}}, {}, {}},
        {"nothing critical", {{"i", "o", 1}}, {}, {}},
        {"a start inside: what lies behind it is not counted",
         {{"i1", "i2"}, {"i2", "o"}, {"i1", "o"}},
         {{"i1", 1}, {"i2", 1}, {"o", 2}},
         {{"i1", 2}, {"i2", 1}, {"o", 1}}},
        {"an end inside",
         {{"i", "o1"}, {"o1", "o2"}, {"i", "o2"}},
         {{"i", 1}, {"o1", 1}, {"o2", 2}},
         {{"i", 2}, {"o1", 1}, {"o2", 1}}},
        {"a loop: its closing arc counts nothing",
         {{"i", "a"}, {"a", "b"}, {"b", "a"}, {"b", "o"}},
         {{"i", 1}, {"a", 1}, {"b", 1}, {"o", 1}},
         {{"i", 1}, {"a", 1}, {"b", 1}, {"o", 1}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const Network network(row.arcs);
        const Recorder recorder;
        PoleCountMap forward;
        network.tool()->edgeForwardStem(Delay(0), forward);
        PoleCountMap backward;
        network.tool()->edgeBackwardStem(Delay(0), backward);
        EXPECT_EQ(countsOf(forward), row.forward);
        EXPECT_EQ(countsOf(backward), row.backward);
        EXPECT_EQ(recorder.getLines(), Lines{});
        EXPECT_EQ(marked(), Names{});
        // No arc is cut.
        Names inactiveArcs;
        for (const Arc& arc : row.arcs)
            if (!arc.active)
                inactiveArcs.push_back(arc.from + " -> " + arc.to);
        EXPECT_EQ(inactive(), inactiveArcs);
    }
}

TEST(Weights, OneStepCountsTheFanIn) {
    Network network({{"i1", "a"}, {"i2", "a"}, {"a", "b"}, {"b", "o"}});
    PoleCountMap counts;
    network.tool()->edgeForwardStem(network.find("b"), Delay(0), counts);
    EXPECT_EQ(countsOf(counts), (Counts{{"i1", 1}, {"i2", 1}, {"a", 2}, {"b", 2}}));
    EXPECT_EQ(marked(), (Names{"i1", "a", "i2", "b"}));
    // A marked pole is not counted again; its count is used.
    network.tool()->edgeForwardStem(network.find("b"), Delay(0), counts);
    network.tool()->edgeForwardStem(network.find("o"), Delay(0), counts);
    EXPECT_EQ(countsOf(counts), (Counts{{"i1", 1}, {"i2", 1}, {"a", 2}, {"b", 2}, {"o", 2}}));
    Pelko::analyzer->unmark();
    PoleCountMap backward;
    network.tool()->edgeBackwardStem(network.find("a"), Delay(0), backward);
    EXPECT_EQ(countsOf(backward), (Counts{{"a", 1}, {"b", 1}, {"o", 1}}));
    EXPECT_EQ(namesOf(network.tool()->getLoopPoles()), Names{});
    Pelko::analyzer->unmark();
}

TEST(Weights, ARawWeightIsTheNumberOfPathsThroughTheArc) {
    // With at most nine different weights, a class is the rank of the weight.
    const struct {
        const char* what;
        std::vector<Arc> arcs;
        std::vector<unsigned long> weights;
    } rows[] = {
        {"one path", {{"i", "m"}, {"m", "o"}}, {1, 1}},
        // Raw weights: 3, 3, 2, 2, 2.
        {"starts times ends",
         {{"i1", "m"}, {"i2", "m"}, {"m", "o1"}, {"m", "o2"}, {"m", "o3"}},
         {2, 2, 1, 1, 1}},
        {"an inactive arc between counted poles has a weight too",
         {{"i", "a"}, {"i", "b"}, {"a", "o"}, {"b", "o"}, {"a", "b", 0, 0, false}},
         {1, 1, 1, 1, 1}},
        {"a closing arc too", {{"i", "a"}, {"a", "b"}, {"b", "a"}, {"b", "o"}}, {1, 1, 1, 1}},
        {"an arc that is not critical has none",
         {{"i", "a"}, {"i", "b", 1}, {"a", "o"}, {"b", "o"}},
         {1, 0, 1, 0}},
        {"nor one that starts nowhere", {{"x", "o"}, {"i", "o"}}, {0, 1}},
        {"nor one that ends nowhere", {{"i", "x"}, {"i", "o"}}, {0, 1}},
    };
    for (const auto& row : rows) {
        const Network network(row.arcs);
        network.tool()->tagWeights(Delay(0));
        EXPECT_EQ(weights(), row.weights) << row.what;
    }
}

TEST(Weights, EarlierWeights) {
    const struct {
        const char* what;
        std::vector<Arc> arcs;
        std::vector<unsigned long> weights;
    } rows[] = {
        {"a critical arc gets a new one", {{"i", "o", 0, 77}}, {1}},
        // The raw weights are 4 (before m) and 1 (behind it).
        {"one that is not critical is folded with the others: as 1",
         {{"i", "m"}, {"m", "o1"}, {"m", "o2"}, {"m", "o3"}, {"m", "o4"}, {"i2", "o5", 9, 1}},
         {2, 1, 1, 1, 1, 1}},
        {"between the boundaries 1 and 4",
         {{"i", "m"}, {"m", "o1"}, {"m", "o2"}, {"m", "o3"}, {"m", "o4"}, {"i2", "o5", 9, 3}},
         {2, 1, 1, 1, 1, 1}},
        {"as the greatest",
         {{"i", "m"}, {"m", "o1"}, {"m", "o2"}, {"m", "o3"}, {"m", "o4"}, {"i2", "o5", 9, 4}},
         {2, 1, 1, 1, 1, 2}},
        {"above the greatest it stays",
         {{"i", "m"}, {"m", "o1"}, {"m", "o2"}, {"m", "o3"}, {"m", "o4"}, {"i2", "o5", 9, 5}},
         {2, 1, 1, 1, 1, 5}},
        {"below the smallest it stays",
         {{"i", "m"}, {"i2", "m"}, {"m", "o"}, {"m", "o2"}, {"i3", "o3", 9, 1}},
         {1, 1, 1, 1, 1}},
        {"a critical arc that ends nowhere keeps its own", {{"i", "o"}, {"i", "x", 0, 7}}, {1, 7}},
        {"a critical arc that starts nowhere too", {{"i", "o"}, {"x", "o", 0, 7}}, {1, 7}},
        {"0 stays 0", {{"i", "o"}, {"i2", "o2", 9, 0}}, {1, 0}},
        {"nothing is critical: all stay", {{"i", "o", 9, 1}, {"i2", "o2", 9, 5}}, {1, 5}},
        {"no slack: all stay", {{"i", "o", undefined, 1}, {"i2", "o2", undefined, 5}}, {1, 5}},
    };
    for (const auto& row : rows) {
        const Network network(row.arcs);
        network.tool()->tagWeights(Delay(0));
        EXPECT_EQ(weights(), row.weights) << row.what;
    }
}

TEST(Weights, DistinctWeightsMakeClasses) {
    // For every weight w, w inputs drive one arc, whose raw weight is w. All other arcs have the raw weight
    // 1, which is one of the weights.
    const struct {
        const char* what;
        std::vector<unsigned long> weights;
        std::vector<unsigned long> classes;
    } rows[] = {
        {"one", {1}, {1}},
        {"two", {1, 2}, {1, 2}},
        {"what counts is the order, not the distance", {1, 50, 7}, {1, 3, 2}},
        {"nine: a class each", {1, 2, 3, 4, 5, 6, 7, 8, 9}, {1, 2, 3, 4, 5, 6, 7, 8, 9}},
        {"ten", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}},
        {"eleven: still a class each",
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11},
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}},
        {"seventeen: still a class each",
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17},
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17}},
        {"eighteen: two a class",
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18},
         {1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7, 8, 8, 9, 9}},
        {"nineteen",
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19},
         {1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7, 8, 8, 9, 9, 10}},
        {"twenty",
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20},
         {1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7, 8, 8, 9, 9, 10, 10}},
        {"twenty, spread",
         {1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31, 33, 35, 37, 39},
         {1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7, 8, 8, 9, 9, 10, 10}},
        {"a weight that many arcs have counts once",
         {1, 1, 1, 2, 2, 2, 5, 5, 5, 5, 5, 5},
         {1, 1, 1, 2, 2, 2, 3, 3, 3, 3, 3, 3}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        std::vector<Arc> arcs;
        for (const unsigned long weight : row.weights) {
            const std::string hub = "hub" + std::to_string(arcs.size());
            for (unsigned long i = 0; i < weight; ++i)
                arcs.push_back({"i" + std::to_string(arcs.size()), hub});
            arcs.push_back({hub, "o" + hub});
        }
        const Network network(arcs);
        network.tool()->tagWeights(Delay(0));
        std::vector<unsigned long> classes;
        for (const Edge* edge : Pelko::cell->getEdges()) {
            if (edge->getTarget()->isOutput())
                classes.push_back(edge->getWeight());
            else
                EXPECT_EQ(edge->getWeight(), 1U);
        }
        EXPECT_EQ(classes, row.classes);
    }
}

TEST(Weights, CountsWrap) {
    // Each stage doubles the number of paths: after 64 stages the count is 0 again.
    const struct {
        int stages;
        unsigned long count;
        unsigned long lastWeight;
    } rows[] = {{1, 2, 2}, {63, 1UL << 63, 3}, {64, 0, 0}, {65, 0, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.stages);
        std::vector<Arc> arcs;
        std::string from = "i";
        for (int stage = 0; stage < row.stages; ++stage) {
            const std::string number = std::to_string(stage);
            for (const char* way : {"a", "b"}) {
                arcs.push_back({from, way + number});
                arcs.push_back({way + number, "m" + number});
            }
            from = "m" + number;
        }
        arcs.push_back({from, "o"});
        // A separate arc of the weight 1.
        arcs.push_back({"i1", "o1"});
        Network network(arcs);
        PoleCountMap counts;
        network.tool()->edgeForwardStem(Delay(0), counts);
        EXPECT_EQ(counts[network.find("o")], row.count);
        network.tool()->tagWeights(Delay(0));
        EXPECT_EQ(network.find("o")->getIncomingEdges().getFirst()->getWeight(), row.lastWeight);
        // If 0 is one of the weights, the first class is for it.
        EXPECT_EQ(network.find("o1")->getIncomingEdges().getFirst()->getWeight(), row.count == 0 ? 2U : 1U);
    }
}

TEST(Weights, RunAgain) {
    const Network network({{"i1", "m"}, {"i2", "m"}, {"m", "o1"}, {"m", "o2"}, {"m", "o3"}, {"i1", "o9", 5}});
    const std::vector<unsigned long> once{2, 2, 1, 1, 1, 0};
    for (int run = 0; run < 3; ++run) {
        network.tool()->tagWeights(Delay(0));
        EXPECT_EQ(weights(), once) << run;
        EXPECT_EQ(marked(), Names{});
    }
}

TEST(Weights, WalksDoNotNest) {
    const Network network({{"i", "o", 0, 7}});
    network.tool()->loopOpen();
    const auto& kind = typeid(Ruvex::InvalidRequest);
    const Ruvex::Place place{"Tool", "loopOpen", 525};
    PoleCountMap counts;
    expectThrown({
        {"threshold", [&] { network.tool()->tagWeights(Delay(0)); }, kind, "Already opened", place},
        {"ratio", [&] { network.tool()->tagWeights(0.5F); }, kind, "Already opened", place},
        {"forward", [&] { network.tool()->edgeForwardStem(Delay(0), counts); }, kind, "Already opened",
         place},
        {"backward", [&] { network.tool()->edgeBackwardStem(Delay(0), counts); }, kind, "Already opened",
         place},
    });
    EXPECT_EQ(weights(), std::vector<unsigned long>{7});
    network.tool()->loopClose();
    network.tool()->tagWeights(Delay(0));
    EXPECT_EQ(weights(), std::vector<unsigned long>{1});
}

} // namespace
