// Setup and hold relations: of one clock to itself, of two clocks, and what the update leaves alone.
#include "tests/support/Builder.h"

#include <gtest/gtest.h>

#include <array>

using Pelko::analyzer;
using Pelko::ClockMode;
using Pelko::Delay;
using Pelko::Pole;
using Support::Builder;
using Support::falling;
using Support::maximum;
using Support::minimum;
using Support::none;
using Support::rising;
using Support::undefined;

namespace {

// --- Two clocks ---

struct TwoClockRow {
    std::array<int, 4> clocks; // launch period, latch period, launch edge, latch edge
    int setup, hold;
};

const TwoClockRow twoClockRows[] = {
    {{10, 10, 0, 0}, 10, 0},
    {{10, 10, 4, 0}, 6, -4},
    {{10, 10, 0, 4}, -6, -16}, // equal periods, the latch edge not before the launch edge: offset less period
    {{10, 4, 0, 0}, 2, 0},
    {{10, 4, 3, 0}, 3, 1},
    {{10, 4, 0, 3}, 1, -1},
    {{10, 3, 2, 0}, 1, -2}, // stops at 3, the stop gap
    // Edges that coincide: the last value of the subtraction.
    {{4, 10, 0, 0}, 2, 0},
    {{10, 5, 0, 0}, 5, 0},
    {{5, 10, 0, 0}, 5, 0},
    {{10, 3, 0, 0}, 3, 0},
    {{7, 5, 0, 0}, 1, 0},
    {{9, 6, 0, 0}, 3, 0},
    {{1, 1, 0, 0}, 1, 0},
    {{10, 4, 7, 7}, 2, 0},
    // Offsets of whole periods coincide too: of the latch period if the latch edge comes first, otherwise of
    // the launch period.
    {{10, 4, 8, 0}, 2, 0},
    {{10, 4, 0, 10}, 2, 0},
    {{10, 4, 0, 20}, 2, 0},
    {{10, 4, 0, 8}, 2, 0}, // not exact: 8 minus 6, the next value below it
    // An offset that the subtraction reaches is exact.
    {{10, 4, 0, 2}, 2, 0},
    {{10, 4, 2, 0}, 2, 0},
    {{10, 4, 0, 6}, 2, 0},
    {{10, 4, 0, 4}, 2, 0},
    // Between two values: the nearest below, or the nearest above if the latch edge comes first.
    {{10, 4, 0, 5}, 3, 1}, // the subtraction of 10 and 4 reaches only 6 and 2
    {{10, 4, 0, 7}, 1, -1},
    {{10, 4, 0, 1}, 1, -1},
    {{10, 4, 1, 0}, 1, -1},
    {{10, 4, 5, 0}, 1, -1},
    {{4, 10, 5, 0}, 1, -1},
    {{4, 10, 7, 0}, maximum, maximum}, // no value above
};

class TwoClocks : public testing::TestWithParam<TwoClockRow> {};

TEST_P(TwoClocks, Row) {
    const auto& [clocks, setup, hold] = GetParam();
    SCOPED_TRACE(testing::PrintToString(clocks));
    const Support::ToolPointer tool = Support::makeTool();
    Delay foundSetup(77);
    Delay foundHold(77);
    tool->calculateRelationship(foundSetup, foundHold, Delay(clocks[0]), Delay(clocks[1]), Delay(clocks[2]),
                                Delay(clocks[3]));
    EXPECT_EQ(int(foundSetup), setup);
    EXPECT_EQ(int(foundHold), hold);
}

INSTANTIATE_TEST_SUITE_P(Relationship, TwoClocks, testing::ValuesIn(twoClockRows));

// Many subtractions are not made one by one.
TEST(Relationship, FarApartPeriods) {
    constexpr int huge = 2'147'483'646;
    const TwoClockRow rows[] = {
        {{huge, 1, 0, 0}, 1, 0},
        {{1, huge, 0, 0}, 1, 0},
        {{huge, 2, 0, 0}, 2, 0},
        {{huge, huge - 1, 0, 0}, 1, 0},
        {{huge, 1, 0, huge - 1}, 1, 0},
        {{huge, 4, 0, 3}, 3, -1}, // stops at 4, the stop gap of 2
        {{huge, huge, huge - 1, 0}, 1, -(huge - 1)},
    };
    const Support::ToolPointer tool = Support::makeTool();
    for (const auto& [clocks, setup, hold] : rows) {
        SCOPED_TRACE(testing::PrintToString(clocks));
        Delay foundSetup(0);
        Delay foundHold(0);
        tool->calculateRelationship(foundSetup, foundHold, Delay(clocks[0]), Delay(clocks[1]),
                                    Delay(clocks[2]), Delay(clocks[3]));
        EXPECT_EQ(int(foundSetup), setup);
        EXPECT_EQ(int(foundHold), hold);
    }
}

// A missing period makes the other one undefined: only the offset decides. A value that is no period has no
// relation.
TEST(Relationship, WithoutPeriods) {
    const TwoClockRow rows[] = {
        {{undefined, 10, 1, 3}, 2, undefined},
        {{10, undefined, 1, 3}, 2, undefined},
        {{10, undefined, 1, 13}, 2, undefined},
        {{undefined, 10, 3, 1}, maximum, undefined},
        {{10, undefined, 3, 1}, maximum, undefined},
        {{undefined, 10, 3, 3}, undefined, undefined},
        {{10, undefined, 3, 3}, undefined, undefined},
        {{10, undefined, 1, 11}, undefined, undefined},
        {{undefined, undefined, 1, 3}, undefined, undefined},
        {{undefined, undefined, 3, 1}, undefined, undefined},
        {{undefined, undefined, 3, 3}, undefined, undefined},
        {{0, 10, 3, 1}, undefined, undefined},
        {{10, 0, 3, 1}, undefined, undefined},
        {{-10, 10, 3, 1}, undefined, undefined},
        {{maximum, 10, 3, 1}, undefined, undefined},
        {{10, minimum, 3, 1}, undefined, undefined},
    };
    const Support::ToolPointer tool = Support::makeTool();
    for (const auto& [clocks, setup, hold] : rows) {
        SCOPED_TRACE(testing::PrintToString(clocks));
        Delay foundSetup(77);
        Delay foundHold(77);
        tool->calculateRelationship(foundSetup, foundHold, Delay(clocks[0]), Delay(clocks[1]),
                                    Delay(clocks[2]), Delay(clocks[3]));
        EXPECT_EQ(int(foundSetup), setup);
        EXPECT_EQ(int(foundHold), hold);
    }
}

// --- The update ---

class Update : public testing::Test {
protected:
    // Adds a subdomain with a hold relation, a setup relation and a criticity from before.
    Pelko::Subdomain* addSubdomain(Pole* launch, Pole* latch, ClockMode::Code launchMode,
                                   ClockMode::Code latchMode) {
        Pelko::Subdomain* subdomain = design_.addSubdomain(launch, latch, launchMode, latchMode);
        subdomain->setSetupRelation(Delay(71));
        subdomain->setHoldRelation(Delay(72));
        subdomain->setCriticity(73);
        return subdomain;
    }

    Builder design_;
    Support::ToolPointer tool_ = Support::makeTool();
};

struct Relations {
    int setup, hold;
    unsigned long criticity;
    bool operator==(const Relations&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Relations& relations) {
    return out << "setup " << relations.setup << ", hold " << relations.hold << ", criticity "
               << relations.criticity;
}

Relations relationsOf(const Pelko::Subdomain* subdomain) {
    return {int(subdomain->getSetupRelation()), int(subdomain->getHoldRelation()), subdomain->getCriticity()};
}

struct SameClockRow {
    ClockMode::Code launch, latch;
    Relations withPeriod, withoutPeriod; // 71, 72: unchanged
};

TEST_F(Update, SameClock) {
    const SameClockRow rows[] = {
        {falling, falling, {10, 72, 2}, {71, 72, 1}}, {rising, rising, {10, 72, 2}, {71, 72, 1}},
        {falling, rising, {6, -4, 3}, {71, 72, 2}},   {rising, falling, {4, -6, 3}, {71, 72, 2}},
        {none, none, {71, 72, 2}, {71, 72, 1}},       {none, rising, {71, 72, 3}, {71, 72, 2}},
        {none, falling, {71, 72, 3}, {71, 72, 2}},    {rising, none, {71, 72, 3}, {71, 72, 2}},
        {falling, none, {71, 72, 3}, {71, 72, 2}},
    };
    Pole* clk = design_.addClockSource("clk");
    design_.setClock(clk, 10, 4, 3); // the shift does not matter
    Pole* free = design_.addClockSource("free");
    for (const SameClockRow& row : rows) {
        addSubdomain(clk, clk, row.launch, row.latch);
        addSubdomain(free, free, row.launch, row.latch);
    }
    for (int round = 0; round < 2; ++round) {
        tool_->updateRelationship();
        for (const SameClockRow& row : rows) {
            const Pelko::Subdomain* timed = Builder::findSubdomain(clk, clk, row.launch, row.latch);
            SCOPED_TRACE(timed->getName());
            EXPECT_EQ(relationsOf(timed), row.withPeriod);
            EXPECT_EQ(relationsOf(Builder::findSubdomain(free, free, row.launch, row.latch)),
                      row.withoutPeriod);
        }
    }
}

TEST_F(Update, RelationsAreUndefinedUntilSet) {
    Pole* clk = design_.addClockSource("clk", 10);
    const Pelko::Subdomain* same = design_.addSubdomain(clk, clk);
    Pole* free = design_.addClockSource("free");
    const Pelko::Subdomain* opposite = design_.addSubdomain(free, free, falling, rising);
    tool_->updateRelationship();
    EXPECT_EQ(relationsOf(same), (Relations{10, undefined, 2}));
    EXPECT_EQ(relationsOf(opposite), (Relations{undefined, undefined, 2}));
}

// Two sides without a clock are one clock without a period.
TEST_F(Update, NoClocks) {
    const Pelko::Subdomain* same = addSubdomain(nullptr, nullptr, none, none);
    const Pelko::Subdomain* other = addSubdomain(nullptr, nullptr, rising, none);
    tool_->updateRelationship();
    EXPECT_EQ(relationsOf(same), (Relations{71, 72, 1}));
    EXPECT_EQ(relationsOf(other), (Relations{71, 72, 2}));
}

// The edge of a falling mode is one high phase after the shift, the edge of every other mode is at the shift.
TEST_F(Update, TwoClocksByTheirEdges) {
    Pole* a = design_.addClockSource("a");
    Pole* b = design_.addClockSource("b");
    design_.setClock(a, 10, 3, 1); // edges at 1 and 4
    design_.setClock(b, 4, 2, 1);  // edges at 1 and 3
    struct Row {
        ClockMode::Code launch, latch;
        int launchEdge, latchEdge;
    };
    const Row rows[] = {
        {rising, rising, 1, 1}, {falling, rising, 4, 1}, {rising, falling, 1, 3}, {falling, falling, 4, 3},
        {none, rising, 1, 1},   {falling, none, 4, 1},   {none, none, 1, 1},
    };
    for (const Row& row : rows)
        addSubdomain(a, b, row.launch, row.latch);
    tool_->updateRelationship();
    for (const Row& row : rows) {
        const Pelko::Subdomain* subdomain = Builder::findSubdomain(a, b, row.launch, row.latch);
        SCOPED_TRACE(subdomain->getName());
        Delay setup(0);
        Delay hold(0);
        tool_->calculateRelationship(setup, hold, Delay(10), Delay(4), Delay(row.launchEdge),
                                     Delay(row.latchEdge));
        EXPECT_EQ(relationsOf(subdomain), (Relations{int(setup), int(hold), 73})) << "the criticity stays";
    }
    EXPECT_EQ(relationsOf(Builder::findSubdomain(a, b, rising, rising)), (Relations{2, 0, 73}));
    EXPECT_EQ(relationsOf(Builder::findSubdomain(a, b, falling, rising)), (Relations{3, 1, 73}));
    EXPECT_EQ(relationsOf(Builder::findSubdomain(a, b, rising, falling)), (Relations{2, 0, 73}));
}

TEST_F(Update, TwoClocksWithoutPeriods) {
    Pole* timed = design_.addClockSource("timed", 10);
    Pole* free = design_.addClockSource("free");
    const std::pair<Pole*, Pole*> rows[] = {{timed, free},    {free, timed},    {free, nullptr},
                                            {nullptr, timed}, {timed, nullptr}, {nullptr, free}};
    for (const auto& [launch, latch] : rows)
        addSubdomain(launch, latch, falling, rising);
    tool_->updateRelationship();
    for (const auto& [launch, latch] : rows) {
        const Pelko::Subdomain* subdomain = Builder::findSubdomain(launch, latch, falling, rising);
        EXPECT_EQ(relationsOf(subdomain), (Relations{71, 72, 73})) << subdomain->getName();
    }
}

TEST_F(Update, AsynchronousDomainsAreLeftAlone) {
    Pole* a = design_.addClockSource("a", 10);
    Pole* b = design_.addClockSource("b", 4);
    const Pelko::Subdomain* across = addSubdomain(a, b, rising, rising);
    const Pelko::Subdomain* own = addSubdomain(a, a, rising, falling);
    for (Pelko::Domain* domain : analyzer->getDomains())
        domain->setAsynchronous(true);
    tool_->updateRelationship();
    EXPECT_EQ(relationsOf(across), (Relations{71, 72, 73}));
    EXPECT_EQ(relationsOf(own), (Relations{71, 72, 73}));
}

// A removed period leaves the old relations, and lowers the rank.
TEST_F(Update, EveryRunWritesAnew) {
    Pole* clk = design_.addClockSource("clk", 10);
    const Pelko::Subdomain* subdomain = addSubdomain(clk, clk, rising, falling);
    tool_->updateRelationship();
    EXPECT_EQ(relationsOf(subdomain), (Relations{5, -5, 3}));
    design_.setClock(clk, 20, 4);
    tool_->updateRelationship();
    EXPECT_EQ(relationsOf(subdomain), (Relations{4, -16, 3}));
    analyzer->removeClock(clk);
    tool_->updateRelationship();
    EXPECT_EQ(relationsOf(subdomain), (Relations{4, -16, 2}));
}

TEST_F(Update, FixedRelationsStay) {
    Pole* clk = design_.addClockSource("clk", 10);
    Pelko::Subdomain* subdomain = addSubdomain(clk, clk, rising, falling);
    subdomain->fixSetupRelation(Delay(8));
    tool_->updateRelationship();
    EXPECT_EQ(relationsOf(subdomain), (Relations{8, -5, 3}));
}

} // namespace
