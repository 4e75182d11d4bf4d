// Arcs: the factory and the calls it rejects, attributes, results, and the fans that hold them.
#include "ModelTest.h"
#include "Refused.h"
#include "tests/support/Recorder.h"

#include "Ruvex/Record.h"

#include <algorithm>
#include <memory>
#include <random>
#include <sstream>

namespace HostTest {

namespace {

class EdgeTest : public ModelTest {};

TEST_F(EdgeTest, Refusals) {
    Pole* a = addPole("a");
    Pole* b = addPole("b");
    Edge* edge = connect(a, b);
    const auto create = [](Pole* source, Pole* target) {
        return [=] { Edge::create(source, target, Delay(1), Delay(2)); };
    };
    const auto place = [](unsigned line) { return Ruvex::Place{"Edge", "preCreate", line}; };
    expectRefused({
        {"no source", create(nullptr, b), factoryFailed, "Null source", place(1)},
        {"no target", create(a, nullptr), factoryFailed, "Null target", place(2)},
        {"neither", create(nullptr, nullptr), factoryFailed, "Null source", place(1)},
        {"to itself", create(a, a), factoryFailed, "Edge from a pole to itself", place(3)},
        {"a second one", create(a, b), factoryFailed, "Edge exists already", place(5)},
        {"duty cycle 101",
         [=] { edge->setMinDutyCycle(101); },
         invalidRequest,
         "Duty cycle above 100",
         {"Edge", "setMinDutyCycle", 6}},
        {"duty cycle 256",
         [=] { edge->setMinDutyCycle(256); },
         invalidRequest,
         "Duty cycle above 100",
         {"Edge", "setMinDutyCycle", 6}},
        {"duty cycle 2^64-1",
         [=] { edge->setMinDutyCycle(~0UL); },
         invalidRequest,
         "Duty cycle above 100",
         {"Edge", "setMinDutyCycle", 6}},
    });
    edge->disactivate();
    expectRefused({"a second one beside an inactive one", create(a, b), factoryFailed, "Edge exists already",
                   place(5)});
    EXPECT_NE(connect(b, a), nullptr); // the opposite direction is another arc
    edge->destroy();
    EXPECT_NE(connect(a, b), nullptr);
}

TEST_F(EdgeTest, ValuesKeepTheirRange) {
    Edge* edge = connect(addPole(), addPole());
    for (int raw : {U, lowest, lowest + 1, -1, 0, 1, highest - 1, highest}) {
        SCOPED_TRACE(raw);
        edge->setMinDelay(Delay(raw));
        EXPECT_EQ(int(edge->getMinDelay()), raw);
        edge->setMaxDelay(Delay(raw));
        EXPECT_EQ(int(edge->getMaxDelay()), raw);
        edge->setSlack(Delay(raw));
        EXPECT_EQ(int(edge->getSlack()), raw);
    }
    for (unsigned long percentage : {0UL, 1UL, 50UL, 99UL, 100UL}) {
        edge->setMinDutyCycle(percentage);
        EXPECT_EQ(edge->getMinDutyCycle(), percentage);
    }
    edge->sensitize(PseudoMask(1UL << 63));
    edge->sensitize(PseudoMask(1));
    EXPECT_EQ(edge->getPseudoMask().getBits(), (1UL << 63) + 1);
    edge->setWeight(~0UL);
    EXPECT_EQ(edge->getWeight(), ~0UL);
}

TEST_F(EdgeTest, ClearResults) {
    Edge* edge = connect(addPole(), addPole(), 3, 4);
    edge->setSlack(Delay(-1));
    edge->setWeight(7);
    edge->setMinDutyCycle(40);
    edge->sensitize(PseudoMask(5));
    edge->disactivate();
    edge->clearResults();
    EXPECT_FALSE(edge->getSlack().isDefined());
    EXPECT_EQ(edge->getWeight(), 0u);
    EXPECT_EQ(edge->getMinDutyCycle(), 100u);
    EXPECT_TRUE(edge->getPseudoMask().isEmpty());
    EXPECT_FALSE(edge->isActive());
    EXPECT_EQ(int(edge->getMinDelay()), 3);
    EXPECT_EQ(int(edge->getMaxDelay()), 4);
    edge->activate();
    EXPECT_TRUE(edge->isActive());
}

TEST_F(EdgeTest, ReportedPathsKeepArcs) {
    Edge* edge = connect(addPole("a"), addPole("b"));
    Subdomain* subdomain = addSubdomain(nullptr, nullptr);
    Path* first = Path::createLongest(subdomain, view({edge}), Delay(0), Delay(0), Delay(0));
    Path* second = Path::createShortest(subdomain, view({edge}), Delay(0), Delay(0), Delay(0));
    for (Path* path : {first, second}) {
        expectRefused({"arc of a path",
                       [edge] { edge->destroy(); },
                       invalidRequest,
                       "Not destroyable: Edge a -> b",
                       {"Object", "destroy", 1}});
        path->destroy();
    }
    edge->destroy();
    EXPECT_TRUE(cell->getEdges().isEmpty());
}

TEST_F(EdgeTest, Record) {
    const Support::DebugMode debug(true);
    Edge* edge = connect(addPole("a"), addPole("b"), -3, highest);
    edge->sensitize(PseudoMask(2));
    std::ostringstream text;
    std::unique_ptr<Ruvex::Record>(edge->_getRecord())->print(text, 0);
    EXPECT_EQ(text.str(), "Edge a -> b\n"
                          "  [Edge]\n"
                          "  Source: Pole a\n"
                          "  Target: Pole b\n"
                          "  MinDelay: -3\n"
                          "  MaxDelay: maximum\n"
                          "  Active: 1\n"
                          "  PseudoMask: {2}\n"
                          "  Slack: undefined\n"
                          "  Weight: 0\n"
                          "  MinDutyCycle: 100\n");
}

// --- Fans ---

class Fan : public ModelTest, public testing::WithParamInterface<std::size_t> {
protected:
    // Connects the hub to n arcs in and n arcs out, in order.
    void SetUp() override {
        for (std::size_t i = 0; i < GetParam(); ++i)
            append();
    }

    void append() {
        in_.push_back(connect(addPole(), hub_));
        out_.push_back(connect(hub_, addPole()));
    }
    void end(std::size_t i) {
        in_[i]->destroy();
        out_[i]->destroy();
        in_.erase(in_.begin() + static_cast<std::ptrdiff_t>(i));
        out_.erase(out_.begin() + static_cast<std::ptrdiff_t>(i));
    }
    void expectFans(const std::vector<Edge*>& found, const std::vector<Edge*>& expected, const Edges& fan) {
        ASSERT_EQ(found, expected);
        ASSERT_EQ(fan.getCount(), expected.size());
        ASSERT_EQ(fan.isEmpty(), expected.empty());
        ASSERT_EQ(fan.getFirst(), expected.empty() ? nullptr : expected.front());
        ASSERT_EQ(fan.getLast(), expected.empty() ? nullptr : expected.back());
    }
    void check() {
        ASSERT_NO_FATAL_FAILURE(expectFans(walk(hub_->getIncomingEdges()), in_, hub_->getIncomingEdges()));
        ASSERT_NO_FATAL_FAILURE(expectFans(walk(hub_->getOutgoingEdges()), out_, hub_->getOutgoingEdges()));
        for (std::size_t i = 0; i < in_.size(); i += 1 + in_.size() / 20) {
            ASSERT_EQ(hub_->getIncomingEdge(in_[i]->getSource()), in_[i]);
            ASSERT_EQ(out_[i]->getTarget()->getIncomingEdge(hub_), out_[i]);
            ASSERT_EQ(in_[i]->getSource()->getIncomingEdge(hub_), nullptr);
        }
    }

    Pole* hub_ = addPole("hub");
    std::vector<Edge*> in_, out_; // not destroyed, in order of creation
};

INSTANTIATE_TEST_SUITE_P(Sizes, Fan, testing::Values(1, 2, 3, 16, 17, 1000));

TEST_P(Fan, InOrderOfCreation) { check(); }

TEST_P(Fan, EndedFromTheFront) {
    while (!in_.empty()) {
        end(0);
        ASSERT_NO_FATAL_FAILURE(check());
    }
    append();
    check();
}

TEST_P(Fan, EndedFromTheBack) {
    while (!in_.empty()) {
        end(in_.size() - 1);
        ASSERT_NO_FATAL_FAILURE(check());
    }
    append();
    check();
}

TEST_P(Fan, EndedInTheMiddleAndGrownAgain) {
    for (int round = 0; round < 3; ++round) {
        for (std::size_t i = in_.size(); i-- > 0;)
            if (i % 3 != 1)
                end(i);
        ASSERT_NO_FATAL_FAILURE(check());
        for (std::size_t i = 0; i < GetParam(); ++i) {
            append();
            if (i % 7 == 0) {
                ASSERT_NO_FATAL_FAILURE(check());
            }
        }
        ASSERT_NO_FATAL_FAILURE(check());
    }
}

TEST_P(Fan, AnyHistory) {
    const auto seed = static_cast<unsigned>(9000 + GetParam());
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 generator(seed);
    for (int step = 0; step < 3000; ++step) {
        const bool grow = in_.empty() || generator() % (in_.size() < GetParam() ? 3 : 2) != 0;
        if (grow && in_.size() < 2 * GetParam())
            append();
        else
            end(generator() % in_.size());
        if (step % 50 == 0) {
            ASSERT_NO_FATAL_FAILURE(check());
        }
    }
    check();
}

TEST_P(Fan, InsulatedWhole) {
    Edge* past = connect(addPole(), addPole());
    if (in_.size() > 2)
        end(1);
    hub_->insulate();
    for (const Edge* edge : in_)
        EXPECT_FALSE(edge->isActive());
    for (const Edge* edge : out_)
        EXPECT_FALSE(edge->isActive());
    EXPECT_TRUE(past->isActive());
}

// A walk may destroy its current arc, and those behind it.
TEST_P(Fan, EndedBehindAWalk) {
    std::size_t seen = 0;
    for (Edge* edge : hub_->getIncomingEdges()) {
        EXPECT_EQ(edge, in_[seen++]);
        edge->destroy();
    }
    EXPECT_EQ(seen, in_.size());
    EXPECT_TRUE(hub_->getIncomingEdges().isEmpty());
}

// An arc that is destroyed before a walk reaches it is skipped. Above all, no walk meets a null arc.
TEST_P(Fan, EndedAheadOfAWalk) {
    std::vector<Edge*> seen, expected{in_.front()};
    expected.insert(expected.end(), in_.begin() + std::min<std::ptrdiff_t>(2, std::ssize(in_)), in_.end());
    for (Edge* edge : hub_->getIncomingEdges()) {
        if (seen.empty() && in_.size() > 1)
            in_[1]->destroy();
        seen.push_back(edge);
    }
    EXPECT_EQ(seen, expected);
}

// If the time grew with the square of the fan, this would take minutes.
TEST_F(EdgeTest, LargeFansGrowAndEndQuickly) {
    Pole* hub = addPole();
    std::vector<Edge*> edges;
    for (int i = 0; i < 200000; ++i) {
        edges.push_back(connect(hub, addPole()));
        edges.push_back(connect(addPole(), hub));
    }
    EXPECT_EQ(hub->getIncomingEdge(edges.back()->getSource()), edges.back());
    std::shuffle(edges.begin(), edges.end(), std::mt19937(1));
    for (Edge* edge : edges)
        edge->destroy();
    EXPECT_TRUE(hub->getOutgoingEdges().isEmpty());
    EXPECT_TRUE(hub->getIncomingEdges().isEmpty());
    hub->destroy();
}

} // namespace

} // namespace HostTest
