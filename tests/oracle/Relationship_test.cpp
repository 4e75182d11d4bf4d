// The relation of two clocks against the loop that defines it: every pair of small periods with every pair of
// edges, random large periods, and the cases of a missing period or an unusual edge.
#include "RandomDesign.h"
#include "ReferenceTool.h"

#include "Vorlen/Tool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <ostream>
#include <utility>

namespace oracle {

namespace {

using Pelko::Delay;

struct Relation {
    Delay setup = Delay::getUndefined();
    Delay hold = Delay::getUndefined();

    bool operator==(const Relation& other) const { return setup == other.setup && hold == other.hold; }
};

std::ostream& operator<<(std::ostream& out, const Relation& relation) {
    return out << relation.setup._getLabel() << ", " << relation.hold._getLabel();
}

struct Clocks {
    Delay launchPeriod;
    Delay latchPeriod;
    Delay launchEdge;
    Delay latchEdge;
};

std::ostream& operator<<(std::ostream& out, const Clocks& clocks) {
    return out << "periods " << clocks.launchPeriod._getLabel() << ", " << clocks.latchPeriod._getLabel()
               << ", edges " << clocks.launchEdge._getLabel() << ", " << clocks.latchEdge._getLabel();
}

class RelationshipAgreement : public ::testing::Test {
protected:
    RelationshipAgreement() : tool_(Vorlen::Tool::create()) {}
    ~RelationshipAgreement() override { tool_->destroy(); }

    template <class Tool>
    static Relation relate(Tool& tool, const Clocks& clocks) {
        Relation relation;
        tool.calculateRelationship(relation.setup, relation.hold, clocks.launchPeriod, clocks.latchPeriod,
                                   clocks.launchEdge, clocks.latchEdge);
        return relation;
    }
    Relation ofLibrary(const Clocks& clocks) { return relate(*tool_, clocks); }
    Relation ofReference(const Clocks& clocks) { return relate(reference_, clocks); }
    // Fails at most once, so that a defect does not print millions of lines.
    bool agreesOn(const Clocks& clocks) {
        const Relation expected = ofReference(clocks);
        const Relation relation = ofLibrary(clocks);
        if (relation == expected)
            return true;
        ADD_FAILURE() << clocks << "\n  library:   " << relation << "\n  reference: " << expected;
        return false;
    }

private:
    Vorlen::Tool* tool_;
    ReferenceTool reference_;
};

TEST_F(RelationshipAgreement, WorkedValues) {
    struct Row {
        int launchPeriod, latchPeriod, launchEdge, latchEdge;
        int setup, hold;
    };
    static constexpr std::array<Row, 7> rows{{
        {10, 10, 0, 0, 10, 0},
        {10, 10, 4, 0, 6, -4},
        {10, 10, 0, 4, -6, -16},
        {10, 4, 0, 0, 2, 0},
        {10, 4, 3, 0, 3, 1},
        {10, 4, 0, 3, 1, -1},
        {10, 3, 2, 0, 1, -2},
    }};
    for (const Row& row : rows) {
        const Clocks clocks{Delay(row.launchPeriod), Delay(row.latchPeriod), Delay(row.launchEdge),
                            Delay(row.latchEdge)};
        const Relation expected{Delay(row.setup), Delay(row.hold)};
        EXPECT_EQ(ofReference(clocks), expected) << clocks;
        EXPECT_EQ(ofLibrary(clocks), expected) << clocks;
    }
}

TEST_F(RelationshipAgreement, AllSmallPeriodsAndEdges) {
    for (int launchPeriod = 1; launchPeriod <= 40; ++launchPeriod)
        for (int latchPeriod = 1; latchPeriod <= 40; ++latchPeriod)
            for (int launchEdge = 0; launchEdge <= 40; ++launchEdge)
                for (int latchEdge = 0; latchEdge <= 40; ++latchEdge)
                    ASSERT_TRUE(agreesOn(
                        {Delay(launchPeriod), Delay(latchPeriod), Delay(launchEdge), Delay(latchEdge)}));
}

// The approximate number of subtractions for two periods.
long subtractions(long a, long b) {
    long count = 0;
    for (; b != 0; std::swap(a, b)) {
        count += a / b;
        a %= b;
    }
    return count;
}

TEST_F(RelationshipAgreement, LargePeriods) {
    Dice dice(7);
    int compared = 0;
    while (compared < 100000) {
        const int greatest = 1 << dice.between(3, 30);
        const int one = dice.between(1, greatest);
        const int other = dice.oneIn(3) ? std::max(1, one / dice.between(1, 60)) : dice.between(1, greatest);
        const int edges = dice.oneIn(2) ? std::min(one, other) : greatest;
        const int launchEdge = dice.between(-edges / 4, edges);
        const int latchEdge = dice.between(-edges / 4, edges);
        if (subtractions(one, other) > 3000)
            continue;
        ++compared;
        ASSERT_TRUE(agreesOn({Delay(one), Delay(other), Delay(launchEdge), Delay(latchEdge)}));
    }
}

// Edges that saturate or are undefined are subtracted by the rules of Delay.
TEST_F(RelationshipAgreement, SpecialEdges) {
    const Delay edges[] = {
        Delay::getUndefined(), Delay::getMinimum(), Delay::getMaximum(), Delay(0), Delay(-7), Delay(3),
        Delay(2147483000),     Delay(-2147483000)};
    for (const int launchPeriod : {1, 10, 15, 37, 1000})
        for (const int latchPeriod : {1, 10, 15, 37, 1000})
            for (const Delay& launchEdge : edges)
                for (const Delay& latchEdge : edges)
                    ASSERT_TRUE(agreesOn({Delay(launchPeriod), Delay(latchPeriod), launchEdge, latchEdge}));
}

// The search for the stop gap skips an undefined period. The first subtraction makes the other one undefined
// too. So only the offset decides the relation, which is undefined if both edges coincide.
TEST_F(RelationshipAgreement, MissingPeriods) {
    const Delay none = Delay::getUndefined();
    struct Row {
        Clocks clocks;
        Relation relation;
    };
    const Row rows[] = {
        {{none, none, Delay(0), Delay(4)}, {none, none}},
        {{none, Delay(10), Delay(0), Delay(0)}, {none, none}},
        {{none, Delay(10), Delay(0), Delay(4)}, {Delay(4), none}},
        {{none, Delay(10), Delay(4), Delay(0)}, {Delay::getMaximum(), none}},
        {{Delay(10), none, Delay(0), Delay(0)}, {none, none}},
        {{Delay(10), none, Delay(0), Delay(14)}, {Delay(4), none}},
        {{Delay(10), none, Delay(14), Delay(0)}, {Delay::getMaximum(), none}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(ofReference(row.clocks), row.relation) << row.clocks;
        EXPECT_EQ(ofLibrary(row.clocks), row.relation) << row.clocks;
    }
}

} // namespace

} // namespace oracle
