// Reported paths: the factory and the calls it rejects, and the slack of both kinds, by hand and against a
// plain sum.
#include "ModelTest.h"
#include "Refused.h"
#include "tests/support/Recorder.h"

#include "Ruvex/Record.h"
#include "tests/support/Rows.h"

#include <algorithm>
#include <list>
#include <memory>
#include <random>
#include <sstream>

namespace HostTest {

namespace {

class PathTest : public ModelTest {
protected:
    Pole* clk_ = Pole::createClockSource(cell, "clk");
};

TEST_F(PathTest, Refusals) {
    Pole* poles[] = {addPole("a"), addPole("b"), addPole("c")};
    Edge* ab = connect(poles[0], poles[1]);
    Edge* bc = connect(poles[1], poles[2]);
    Edge* ac = connect(poles[0], poles[2]);
    Subdomain* subdomain = addSubdomain(clk_, clk_);
    Path::createLongest(subdomain, view({ab, bc}), Delay(0), Delay(0), Delay(0));
    const auto longest = [](Subdomain* owner, const std::vector<Edge*>& edges) {
        return [=] { Path::createLongest(owner, view(edges), Delay(0), Delay(0), Delay(0)); };
    };
    const auto shortest = [](Subdomain* owner, const std::vector<Edge*>& edges) {
        return [=] { Path::createShortest(owner, view(edges), Delay(0), Delay(0), Delay(0)); };
    };
    const auto place = [](unsigned line) { return Ruvex::Place{"Path", "create", line}; };
    expectRefused({
        {"no subdomain", longest(nullptr, {ab}), factoryFailed, "Null subdomain", place(1)},
        {"no subdomain, short", shortest(nullptr, {ab}), factoryFailed, "Null subdomain", place(1)},
        {"null arc", longest(subdomain, {nullptr}), factoryFailed, "Null edge", place(2)},
        {"null arc behind", longest(subdomain, {ab, nullptr}), factoryFailed, "Null edge", place(2)},
        {"out of order", longest(subdomain, {bc, ab}), factoryFailed, "Broken path", place(3)},
        {"a gap", shortest(subdomain, {ab, ac}), factoryFailed, "Broken path", place(3)},
        {"twice", shortest(subdomain, {ab, ab}), factoryFailed, "Broken path", place(3)},
        {"broken at the end", longest(subdomain, {ab, bc, ac}), factoryFailed, "Broken path", place(3)},
    });
    EXPECT_TRUE(ac->isDestroyable());
    EXPECT_FALSE(ab->isDestroyable());
}

TEST_F(PathTest, HoldsWhatItIsGiven) {
    Pole* a = addPole("a");
    Pole* b = addPole("b");
    Edge* edge = connect(a, b);
    Subdomain* subdomain = addSubdomain(clk_, clk_);
    std::list<Edge*> edges{edge};
    Path* longest =
        Path::createLongest(subdomain, Ruvex::ListCollection<Edge*>(edges), Delay(1), Delay(2), Delay(3));
    Path* shortest =
        Path::createShortest(subdomain, Ruvex::ListCollection<Edge*>(edges), Delay(4), Delay(5), Delay(6));
    edges.clear(); // the path has its own copy
    struct {
        const Path* path;
        bool longest;
        int latch, launch, adjust;
    } const rows[] = {{longest, true, 1, 2, 3}, {shortest, false, 4, 5, 6}};
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(row.path->getSubdomain(), subdomain);
        EXPECT_EQ(row.path->isLongest(), row.longest);
        EXPECT_EQ(int(row.path->getLatchDelay()), row.latch);
        EXPECT_EQ(int(row.path->getLaunchDelay()), row.launch);
        EXPECT_EQ(int(row.path->getAdjustment()), row.adjust);
        EXPECT_EQ(row.path->getConstrainedPath(), nullptr);
        EXPECT_THAT(walk(row.path->getEdges()), ElementsAre(edge));
        EXPECT_EQ(row.path->getAlias(), "a -> b");
    }
}

// --- Slack ---

struct Bounds {
    int minimum, maximum;
};

struct SlackRow {
    const char* what;
    bool launchRoot, latchRoot;
    int setup, hold;
    int latch, launch, adjust;
    std::vector<Bounds> arcs;
    std::vector<Bounds> input, output; // the port's constraints, with one bound or none
    bool check;                        // the path's end point is a check
    int longest, shortest;
};

// Worked out by hand: required - arrival + adjust, and arrival - required + adjust.
const SlackRow slackRows[] = {
    {"no arcs", true, true, 10, 0, 0, 0, 0, {}, {}, {}, false, 10, 0},
    {"no arcs, clock arrivals", true, true, 10, 2, 5, 1, 0, {}, {}, {}, false, 14, -2},
    {"one arc", true, true, 10, 0, 0, 0, 0, {{2, 7}}, {}, {}, false, 3, 2},
    {"arcs add up", true, true, 10, 0, 0, 0, 0, {{2, 7}, {1, 4}}, {}, {}, false, -1, 3},
    {"skew", true, true, 10, 0, 3, 1, 0, {{2, 7}}, {}, {}, false, 5, 0},
    {"hold relation", true, true, 10, 4, 0, 0, 0, {{2, 7}}, {}, {}, false, 3, 6},
    {"hold relation, earlier", true, true, 5, -5, 0, 0, 0, {{2, 7}}, {}, {}, false, -2, -3},
    {"adjusted", true, true, 10, 0, 0, 0, 6, {{2, 7}}, {}, {}, false, 9, 8},
    {"into a check", true, true, 10, 0, 0, 0, 0, {{2, 7}, {1, 3}}, {}, {}, true, 0, 1},
    {"into a check, one arc", true, true, 10, 0, 0, 4, 0, {{-1, 3}}, {}, {}, true, 3, 5},
    {"input", true, true, 10, 0, 0, 0, 0, {{2, 7}}, {{1, 2}}, {}, false, 1, 3},
    {"output", true, true, 10, 0, 0, 0, 0, {{2, 7}}, {}, {{-1, 2}}, false, 1, 1},
    {"both ports", true, true, 20, 0, 1, 2, 0, {{2, 7}, {3, 3}}, {{1, 2}}, {{-4, 5}}, false, 2, 3},
    {"input without launch root", false, true, 10, 0, 0, 0, 0, {{2, 7}}, {{1, 2}}, {}, false, 3, 2},
    {"output without latch root", true, false, 10, 0, 0, 0, 0, {{2, 7}}, {}, {{-1, 2}}, false, 3, 2},
    {"ports without roots", false, false, 10, 0, 0, 0, 0, {{2, 7}}, {{1, 2}}, {{-1, 2}}, false, 3, 2},
    {"input without maximum", true, true, 10, 0, 0, 0, 0, {{2, 7}}, {{1, U}}, {}, false, U, 3},
    {"output without minimum", true, true, 10, 0, 0, 0, 0, {{2, 7}}, {}, {{U, 2}}, false, 1, U},
    {"no setup relation", true, true, U, 0, 0, 0, 0, {{2, 7}}, {}, {}, false, U, 2},
    {"no hold relation", true, true, 10, U, 0, 0, 0, {{2, 7}}, {}, {}, false, 3, U},
    {"no adjustment", true, true, 10, 0, 0, 0, U, {{2, 7}}, {}, {}, false, U, U},
    {"no launch arrival", true, true, 10, 0, 0, U, 0, {{2, 7}}, {}, {}, false, U, U},
    {"no latch arrival", true, true, 10, 0, U, 0, 0, {{2, 7}}, {}, {}, false, U, U},
    {"an arc without maximum", true, true, 10, 0, 0, 0, 0, {{2, U}, {1, 1}}, {}, {}, false, U, 3},
    {"an arc of no end", true, true, 10, 0, 0, 0, 0, {{2, highest}, {1, 1}}, {}, {}, false, lowest, 3},
    {"an arc from no beginning", true, true, 10, 0, 0, 0, 0, {{lowest, 7}, {1, 1}}, {}, {}, false, 2, lowest},
    {"opposite arcs", true, true, 10, 0, 0, 0, 0, {{lowest, 7}, {highest, 1}}, {}, {}, false, 2, U},
    {"made false", true, true, 10, 0, 0, 0, highest, {{2, 7}}, {}, {}, false, highest, highest},
    {"no end, made false", true, true, 10, 0, 0, 0, highest, {{2, highest}}, {}, {}, false, U, highest},
    {"setup without limit", true, true, highest, 0, 0, 0, 0, {{2, 7}}, {}, {}, false, highest, 2},
    {"hold without limit", true, true, 10, highest, 0, 0, 0, {{2, 7}}, {}, {}, false, 3, highest},
    {"beyond the range",
     true,
     true,
     lowest + 1,
     highest - 1,
     0,
     0,
     0,
     {{2, 7}},
     {},
     {},
     false,
     lowest,
     highest},
    {"arrival beyond the range",
     true,
     true,
     10,
     0,
     0,
     highest - 1,
     0,
     {{1, 1}},
     {},
     {},
     false,
     lowest,
     highest},
};

class PathSlack : public PathTest {
protected:
    // Creates poles and arcs for the row, with ports if it has constraints on them.
    void expectSlacks(const SlackRow& row) {
        SCOPED_TRACE(row.what);
        Pole* pole = row.input.empty() ? addPole() : Pole::createInput(cell);
        if (!row.input.empty())
            analyzer->setInputConstraint(pole, constraintOf(row.input[0]));
        std::vector<Edge*> edges;
        for (std::size_t i = 0; i < row.arcs.size(); ++i) {
            Pole* next = i + 1 == row.arcs.size() ? addEnd(row) : addPole();
            edges.push_back(connect(pole, next, row.arcs[i].minimum, row.arcs[i].maximum));
            pole = next;
        }
        Subdomain* subdomain = addSubdomain(row.launchRoot ? clk_ : nullptr, row.latchRoot ? clk_ : nullptr);
        subdomain->setSetupRelation(Delay(row.setup));
        subdomain->setHoldRelation(Delay(row.hold));
        const auto create = [&](auto factory) {
            return int(factory(subdomain, view(edges), Delay(row.latch), Delay(row.launch), Delay(row.adjust))
                           ->getSlack());
        };
        EXPECT_EQ(create(Path::createLongest), row.longest);
        EXPECT_EQ(create(Path::createShortest), row.shortest);
        subdomain->getDomain()->destroy();
    }

private:
    Pole* addEnd(const SlackRow& row) {
        if (row.check)
            return Pole::createCheck(clock_);
        if (row.output.empty())
            return addPole();
        Pole* port = Pole::createOutput(cell);
        analyzer->setOutputConstraint(port, constraintOf(row.output[0]));
        return port;
    }
    IOConstraint constraintOf(const Bounds& bounds) const {
        return {clk_, ClockMode::Rising, Delay(bounds.minimum), Delay(bounds.maximum)};
    }

    Pole* clock_ = addClock("r/C");
};

TEST_F(PathSlack, ByHand) {
    for (const SlackRow& row : slackRows)
        expectSlacks(row);
}

// Ordinary values, against a plain sum in 64 bits.
TEST_F(PathSlack, AgainstAPlainSum) {
    const unsigned seed = 5150;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 generator(seed);
    std::uniform_int_distribution<int> value(-1000000, 1000000);
    const auto bounds = [&] { return Bounds{value(generator), value(generator)}; };
    for (int i = 0; i < 500; ++i) {
        SlackRow row{"random",
                     generator() % 4 != 0,
                     generator() % 4 != 0,
                     value(generator),
                     value(generator),
                     value(generator),
                     value(generator),
                     value(generator),
                     {},
                     {},
                     {},
                     false,
                     0,
                     0};
        row.arcs.resize(1 + generator() % 6);
        std::generate(row.arcs.begin(), row.arcs.end(), bounds);
        if (generator() % 2)
            row.input.push_back(bounds());
        row.check = generator() % 3 == 0;
        if (!row.check && generator() % 2)
            row.output.push_back(bounds());

        std::int64_t late = row.launch, early = row.launch;
        std::int64_t setup = std::int64_t{row.latch} + row.setup, hold = std::int64_t{row.latch} - row.hold;
        for (const Bounds& arc : row.arcs) {
            late += arc.maximum;
            early += row.check && &arc == &row.arcs.back() ? -arc.minimum : arc.minimum;
        }
        if (row.launchRoot && !row.input.empty()) {
            late += row.input[0].maximum;
            early += row.input[0].minimum;
        }
        if (row.latchRoot && !row.output.empty()) {
            setup -= row.output[0].maximum;
            hold -= row.output[0].minimum;
        }
        row.longest = static_cast<int>(setup - late + row.adjust);
        row.shortest = static_cast<int>(early - hold + row.adjust);
        expectSlacks(row);
    }
}

// A constraint that is undefined does not count; nor does one on a pole that is no port any more.
TEST_F(PathTest, ConstraintsThatDoNotCount) {
    Pole* in = Pole::createInput(cell);
    Pole* out = Pole::createOutput(cell);
    Edge* edge = connect(in, out, 2, 7);
    Subdomain* subdomain = addSubdomain(clk_, clk_);
    subdomain->setSetupRelation(Delay(10));
    const IOConstraint constraint(clk_, ClockMode::Rising, Delay(1), Delay(2));
    const auto slack = [&] {
        return int(Path::createLongest(subdomain, view({edge}), Delay(0), Delay(0), Delay(0))->getSlack());
    };
    EXPECT_EQ(slack(), 3);
    analyzer->setInputConstraint(in, IOConstraint());
    analyzer->setOutputConstraint(out, IOConstraint());
    EXPECT_EQ(slack(), 3);
    analyzer->setInputConstraint(in, constraint);
    analyzer->setOutputConstraint(out, constraint);
    EXPECT_EQ(slack(), -1);
    in->setInput(false);
    EXPECT_EQ(slack(), 1);
    out->setOutput(false);
    EXPECT_EQ(slack(), 3);
}

// The slack is computed when the path is created, and does not change later.
TEST_F(PathTest, SlackStays) {
    Edge* edge = connect(addPole(), addPole(), 2, 7);
    Subdomain* subdomain = addSubdomain(clk_, clk_);
    subdomain->setSetupRelation(Delay(10));
    const Path* path = Path::createLongest(subdomain, view({edge}), Delay(0), Delay(0), Delay(0));
    edge->setMaxDelay(Delay(100));
    subdomain->setSetupRelation(Delay(1));
    EXPECT_EQ(int(path->getSlack()), 3);
}

TEST_F(PathTest, Record) {
    const Support::DebugMode debug(true);
    Edge* edge = connect(addPole("a"), addPole("b"), 2, 7);
    Subdomain* subdomain = addSubdomain(clk_, clk_);
    subdomain->setSetupRelation(Delay(10));
    Path* path = Path::createLongest(subdomain, view({edge}), Delay(1), Delay(2), Delay(3));
    MPath* exception = MPath::create({{edge->getSource()}, {}}, 2);
    exception->setAlias("slow");
    path->setConstrainedPath(exception);
    std::ostringstream text;
    std::unique_ptr<Ruvex::Record>(path->_getRecord())->print(text, 0);
    EXPECT_EQ(text.str(), "Path a -> b\n"
                          "  [Path]\n"
                          "  Slack: 5\n"
                          "  Latch: 1\n"
                          "  Launch: 2\n"
                          "  Adjustment: 3\n"
                          "  ConstrainedPath: MPath slow\n"
                          "  Edges: 1\n");
}

} // namespace

} // namespace HostTest
