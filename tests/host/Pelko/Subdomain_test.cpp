// Subdomains: leaves by stamp, relations that an application fixes, the order of kept paths, what clearing
// keeps.
#include "ModelTest.h"
#include "Refused.h"
#include "tests/support/Rows.h"

#include <algorithm>
#include <random>

namespace HostTest {

namespace {

class SubdomainTest : public ModelTest {
protected:
    Pole* clk_ = Pole::createClockSource(cell, "clk");
    Pole* other_ = Pole::createClockSource(cell, "other");
};

TEST_F(SubdomainTest, Refusals) {
    Subdomain* subdomain = addSubdomain(clk_, clk_);
    expectRefused({
        {"launch",
         [=] { subdomain->captureLaunch(nullptr); },
         invalidRequest,
         "Null pole",
         {"Subdomain", "captureLaunch", 3}},
        {"latch",
         [=] { subdomain->captureLatch(nullptr); },
         invalidRequest,
         "Null pole",
         {"Subdomain", "captureLatch", 4}},
    });
}

TEST_F(SubdomainTest, NamesAndPureClocks) {
    constexpr auto None = ClockMode::None, Rising = ClockMode::Rising, Falling = ClockMode::Falling;
    struct {
        Pole *launch, *latch;
        ClockMode::Code launchMode, latchMode;
        bool pure;
        const char* name;
    } const rows[] = {
        {clk_, clk_, Rising, Rising, true, "clk:rising -> clk:rising"},
        {clk_, clk_, Rising, Falling, true, "clk:rising -> clk:falling"},
        {clk_, clk_, None, None, true, "clk -> clk"},
        {clk_, other_, Rising, Rising, false, "clk:rising -> other:rising"},
        {nullptr, clk_, None, Falling, false, "none -> clk:falling"},
        {clk_, nullptr, Falling, None, false, "clk:falling -> none"},
        {nullptr, nullptr, None, None, false, "none -> none"},
        {nullptr, nullptr, Rising, None, false, "none:rising -> none"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        const Subdomain* subdomain = addSubdomain(row.launch, row.latch, row.launchMode, row.latchMode);
        EXPECT_EQ(subdomain->isPureClock(), row.pure) << row.name;
        EXPECT_EQ(subdomain->getName(), row.name);
        EXPECT_EQ(subdomain->getAlias(), row.name);
    }
}

// --- Leaves ---

TEST_F(SubdomainTest, LeavesComeByStamp) {
    std::vector<Pole*> poles;
    for (int i = 0; i < 200; ++i)
        poles.push_back(addPole());
    const unsigned seed = 77;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 generator(seed);
    Subdomain* subdomain = addSubdomain(clk_, clk_);
    std::vector<Pole*> order = poles;
    std::shuffle(order.begin(), order.end(), generator);
    std::vector<Pole*> captured;
    for (Pole* pole : order) {
        EXPECT_FALSE(subdomain->getLaunchLeaves().contains(pole));
        subdomain->captureLaunch(pole);
        subdomain->captureLaunch(order[generator() % (captured.size() + 1)]); // one that is captured already
        captured.push_back(pole);
        EXPECT_TRUE(subdomain->getLaunchLeaves().contains(pole));
        if (captured.size() % 20 == 0) {
            std::vector<Pole*> expected = captured;
            std::sort(expected.begin(), expected.end(), Object::StampLess());
            const Poles leaves = subdomain->getLaunchLeaves();
            ASSERT_EQ(walk(leaves), expected);
            ASSERT_EQ(leaves.getCount(), expected.size());
            ASSERT_TRUE(leaves.hasCount(expected.size()));
            ASSERT_EQ(leaves.getFirst(), expected.front());
            ASSERT_EQ(leaves.getLast(), expected.back());
            ASSERT_EQ(leaves.getAt(3), expected[3]);
        }
    }
    EXPECT_EQ(walk(subdomain->getLaunchLeaves()), poles);
    EXPECT_TRUE(subdomain->getLatchLeaves().isEmpty());
    EXPECT_FALSE(subdomain->getLaunchLeaves().contains(nullptr));
    EXPECT_EQ(subdomain->getLaunchLeaves()._getLabel(), "Leaf collection");
    const Poles reversed = Ruvex::ReverseCollection<Pole*>(subdomain->getLaunchLeaves());
    EXPECT_EQ(walk(reversed), std::vector<Pole*>(poles.rbegin(), poles.rend()));
}

// A pole is captured once per launch/latch pair, so the lookup of a leaf must not walk over the others.
TEST_F(SubdomainTest, CapturingAgainIsCheap) {
    Subdomain* subdomain = addSubdomain(clk_, clk_);
    std::vector<Pole*> poles;
    for (int i = 0; i < 50000; ++i)
        poles.push_back(addPole());
    for (int round = 0; round < 20; ++round)
        for (std::size_t i = poles.size(); i-- > 0;) {
            subdomain->captureLatch(poles[i]);
            EXPECT_TRUE(subdomain->getLatchLeaves().contains(poles[i]));
        }
    EXPECT_EQ(walk(subdomain->getLatchLeaves()), poles);
}

// --- Relations ---

TEST_F(SubdomainTest, FixedRelationsStay) {
    Subdomain* subdomain = addSubdomain(clk_, other_);
    const auto set = [subdomain](int setup, int hold) {
        subdomain->setSetupRelation(Delay(setup));
        subdomain->setHoldRelation(Delay(hold));
    };
    struct {
        const char* what;
        std::function<void()> step;
        int setup, hold;
        bool setupFixed, holdFixed;
    } const steps[] = {
        {"not set", [] {}, U, U, false, false},
        {"set", [&] { set(10, -4); }, 10, -4, false, false},
        {"set again", [&] { set(5, 0); }, 5, 0, false, false},
        {"setup fixed", [&] { subdomain->fixSetupRelation(Delay(7)); }, 7, 0, true, false},
        {"set with one fixed", [&] { set(1, 1); }, 7, 1, true, false},
        {"hold fixed", [&] { subdomain->fixHoldRelation(Delay(-2)); }, 7, -2, true, true},
        {"set with both fixed", [&] { set(3, 3); }, 7, -2, true, true},
        {"set undefined", [&] { set(U, U); }, 7, -2, true, true},
        {"fixed again", [&] { subdomain->fixSetupRelation(Delay(8)); }, 8, -2, true, true},
        {"cleared", [&] { subdomain->clearResults(); }, 8, -2, true, true},
        {"fixed to undefined", [&] { subdomain->fixHoldRelation(Delay(U)); }, 8, U, true, true},
        {"set over undefined", [&] { set(3, 3); }, 8, U, true, true},
    };
    for (const auto& row : steps) {
        row.step();
        EXPECT_EQ(int(subdomain->getSetupRelation()), row.setup) << row.what;
        EXPECT_EQ(int(subdomain->getHoldRelation()), row.hold) << row.what;
        EXPECT_EQ(subdomain->isSetupRelationFixed(), row.setupFixed) << row.what;
        EXPECT_EQ(subdomain->isHoldRelationFixed(), row.holdFixed) << row.what;
    }
}

// A listener fixes both relations at the creation, before any other code sees the subdomain.
TEST_F(SubdomainTest, AListenerFixesRelations) {
    class Fixing : public ObjectListener {
    public:
        Fixing() { Object::addListener(this); }
        ~Fixing() override { Object::removeListener(this); }
        void onCreated(Object* object) override {
            if (auto* subdomain = dynamic_cast<Subdomain*>(object)) {
                subdomain->fixSetupRelation(Delay(6));
                subdomain->fixHoldRelation(Delay(0));
            }
        }
    } fixing;
    Subdomain* subdomain = addSubdomain(clk_, other_);
    subdomain->setSetupRelation(Delay(-6));
    subdomain->setHoldRelation(Delay(-16));
    EXPECT_EQ(int(subdomain->getSetupRelation()), 6);
    EXPECT_EQ(int(subdomain->getHoldRelation()), 0);
}

// --- Kept paths ---

// The worst path first, by the order of raw values; equal ones in the order of creation.
TEST_F(SubdomainTest, OrderOfKeptPaths) {
    Subdomain* subdomain = addSubdomain(clk_, clk_);
    subdomain->setSetupRelation(Delay(0));
    subdomain->setHoldRelation(Delay(0));
    const int slacks[] = {3, 0, highest, -7, 3, U, 0, lowest, -7, 12, U, 3};
    for (const bool longest : {true, false}) {
        SCOPED_TRACE(longest);
        std::vector<Path*> made;
        for (int slack : slacks) {
            made.push_back(longest ? Path::createLongest(subdomain, {}, Delay(0), Delay(0), Delay(slack))
                                   : Path::createShortest(subdomain, {}, Delay(0), Delay(0), Delay(slack)));
            EXPECT_EQ(int(made.back()->getSlack()), slack);
        }
        std::vector<Path*> expected = made;
        std::stable_sort(expected.begin(), expected.end(), [](const Path* a, const Path* b) {
            return int(a->getSlack()) < int(b->getSlack());
        });
        const auto kept = [&] {
            return longest ? subdomain->getLongestPaths() : subdomain->getShortestPaths();
        };
        EXPECT_EQ(walk(kept()), expected);
        EXPECT_EQ(kept().getCount(), made.size());
        EXPECT_EQ(kept().getFirst(), made[5]);
        EXPECT_EQ(kept().getLast(), made[2]); // the least critical one
        EXPECT_TRUE(kept().contains(made[7]));
        while (!kept().isEmpty()) {
            kept().getLast()->destroy();
            expected.pop_back();
            ASSERT_EQ(walk(kept()), expected);
        }
    }
}

TEST_F(SubdomainTest, ClearResultsKeepsTheLeaves) {
    Subdomain* subdomain = addSubdomain(clk_, clk_);
    subdomain->captureLaunch(clk_);
    subdomain->captureLatch(other_);
    subdomain->setSetupRelation(Delay(1));
    subdomain->setHoldRelation(Delay(2));
    const std::string before = takeSnapshot();
    subdomain->setLAT(Delay(3));
    subdomain->setSAT(Delay(4));
    subdomain->setCriticity(3);
    subdomain->setDecisive(true);
    subdomain->setMPathCritical();
    Path::createLongest(subdomain, {}, Delay(0), Delay(0), Delay(0));
    Path::createShortest(subdomain, {}, Delay(0), Delay(0), Delay(0));
    subdomain->clearResults();
    EXPECT_FALSE(subdomain->getSetupRelation().isDefined());
    EXPECT_FALSE(subdomain->getHoldRelation().isDefined());
    subdomain->setSetupRelation(Delay(1));
    subdomain->setHoldRelation(Delay(2));
    EXPECT_EQ(takeSnapshot(), before);
}

TEST_F(SubdomainTest, EndsWithItsPathsAndLeaves) {
    Edge* edge = connect(addPole("a"), addPole("b"));
    Subdomain* subdomain = addSubdomain(clk_, clk_);
    subdomain->captureLaunch(edge->getSource());
    subdomain->captureLatch(edge->getTarget());
    Path::createLongest(subdomain, view({edge}), Delay(0), Delay(0), Delay(0));
    Path::createShortest(subdomain, view({edge}), Delay(0), Delay(0), Delay(0));
    EXPECT_FALSE(edge->isDestroyable());
    EXPECT_TRUE(edge->getSource()->isReferenced());
    subdomain->destroy();
    EXPECT_TRUE(edge->isDestroyable());
    EXPECT_FALSE(edge->getSource()->isReferenced());
    EXPECT_TRUE(analyzer->getDomain(clk_, clk_)->getSubdomains().isEmpty());
    EXPECT_NE(addSubdomain(clk_, clk_), nullptr);
}

} // namespace

} // namespace HostTest
