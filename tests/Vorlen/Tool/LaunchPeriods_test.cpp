// The launch on clocks without a period: candidate periods from the latest arrivals, and the relations made
// of them.
#include "tests/support/Builder.h"

#include <gtest/gtest.h>

using Pelko::analyzer;
using Pelko::ClockMode;
using Pelko::Delay;
using Pelko::Pole;
using Support::Builder;
using Support::falling;
using Support::maximum;
using Support::minimum;
using Support::none;
using Support::Register;
using Support::rising;
using Support::undefined;

namespace {

// A transfer within the clock: its edges, its latest arrival, and the expected relations. A latch without an
// edge is a port that is constrained to the clock, but to no edge of it.
struct Transfer {
    ClockMode::Code launch, latch;
    int arrival;
    int setup, hold;
};

struct PeriodRow {
    const char* what;
    unsigned long dutyRatio;
    std::vector<Transfer> transfers;
    int period; // achieved
};

class CandidatePeriods : public testing::TestWithParam<PeriodRow> {
protected:
    void add(const Transfer& transfer) {
        const std::string number = std::to_string(++count_);
        Pole* from = design_.addRegister("from" + number, clk_, transfer.launch).output;
        Pole* to = nullptr;
        if (transfer.latch == none) {
            to = design_.addOutput("out" + number);
            design_.constrainOutput(to, clk_, none);
        } else {
            to = design_.addRegister("to" + number, clk_, transfer.latch).data;
        }
        design_.connect(from, to, transfer.arrival, transfer.arrival);
    }

    Builder design_;
    Pole* clk_ = design_.addClockSource("clk");
    int count_ = 0;
};

TEST_P(CandidatePeriods, Row) {
    const PeriodRow& row = GetParam();
    SCOPED_TRACE(row.what);
    analyzer->setDutyRatio(clk_, row.dutyRatio);
    for (const Transfer& transfer : row.transfers)
        add(transfer);
    const Support::ToolPointer tool = Support::makeTool();
    EXPECT_TRUE(tool->launch());
    for (const Transfer& transfer : row.transfers) {
        const Pelko::Subdomain* subdomain =
            Builder::findSubdomain(clk_, clk_, transfer.launch, transfer.latch);
        ASSERT_TRUE(subdomain);
        SCOPED_TRACE(subdomain->getName());
        EXPECT_EQ(int(subdomain->getLAT()), transfer.arrival);
        EXPECT_EQ(int(subdomain->getSetupRelation()), transfer.setup);
        EXPECT_EQ(int(subdomain->getHoldRelation()), transfer.hold);
    }
    EXPECT_EQ(int(analyzer->getPeriod(clk_)), row.period);
}

constexpr int U = undefined;

const PeriodRow periodRows[] = {
    {"same edges: the arrival itself", 40, {{rising, rising, 6, 6, U}}, 6},
    {"same edges, falling", 40, {{falling, falling, 6, 6, U}}, 6},
    {"falling to rising: 6 becomes 10", 40, {{falling, rising, 6, 6, -4}}, 6},
    {"rising to falling: 6 becomes 15", 40, {{rising, falling, 6, 6, -9}}, 12},
    {"both: the larger of 10 and 15", 40, {{falling, rising, 6, 9, -6}, {rising, falling, 6, 6, -9}}, 12},
    {"both, the other way round", 40, {{rising, falling, 6, 6, -9}, {falling, rising, 6, 9, -6}}, 12},
    {"the other phase", 60, {{falling, rising, 6, 6, -9}, {rising, falling, 6, 9, -6}}, 12},
    {"same edges decide for all",
     50,
     {{rising, rising, 20, 20, U}, {rising, falling, 6, 10, -10}, {falling, rising, 1, 10, -10}},
     20},
    {"half a period decides for all", 50, {{rising, rising, 9, 12, U}, {rising, falling, 6, 6, -6}}, 12},
    // 7 x 100 / 60 = 11 and 7 x 100 / 40 = 17. A period of 11 has the phases 11 x 40 / 100 = 4 and 11 x 60 /
    // 100 = 6; a period of 17 has the phases 6 and 10.
    {"divisions truncate", 40, {{falling, rising, 7, 6, -4}}, 7},
    {"divisions truncate, the other edge", 40, {{rising, falling, 7, 6, -10}}, 14},
    {"towards zero", 40, {{falling, rising, -7, -6, 4}}, -7},
    {"nothing arrives late", 50, {{rising, falling, 0, 0, 0}}, 0},
    {"wide products", 40, {{rising, falling, 800'000'000, 800'000'000, -1'200'000'000}}, 1'600'000'000},
    // 1,000,000,000 x 100 / 40 exceeds the range.
    {"saturation", 40, {{rising, falling, 1'000'000'000, maximum, minimum}}, 2'000'000'000},
    {"a special arrival is not scaled", 40, {{rising, falling, maximum, maximum, U}}, maximum},
    {"a special arrival of equal edges is a candidate",
     40,
     {{rising, rising, maximum, maximum, U}, {rising, falling, 6, maximum, minimum}},
     maximum},
    {"no edge: no candidate, and no relation but the own arrival", 50, {{rising, none, 6, 6, U}}, 6},
    {"no edge beside others", 50, {{rising, none, 30, 30, U}, {rising, falling, 6, 6, -6}}, 30},
};

INSTANTIATE_TEST_SUITE_P(Launch, CandidatePeriods, testing::ValuesIn(periodRows));

class LaunchPeriods : public testing::Test {
protected:
    static std::pair<int, int> relations(Pole* launchRoot, Pole* latchRoot, ClockMode::Code launch = rising,
                                         ClockMode::Code latch = rising) {
        const Pelko::Subdomain* subdomain = Builder::findSubdomain(launchRoot, latchRoot, launch, latch);
        return {int(subdomain->getSetupRelation()), int(subdomain->getHoldRelation())};
    }

    Builder design_;
    Support::ToolPointer tool_ = Support::makeTool();
};

using Relations = std::pair<int, int>;

// Domains of two clocks, or of a port, have no candidate: each subdomain uses its own arrival.
TEST_F(LaunchPeriods, NoSameClockSubdomain) {
    Pole* x = design_.addClockSource("x");
    Pole* y = design_.addClockSource("y");
    const Register a = design_.addRegister("a", x);
    const Register b = design_.addRegister("b", y);
    const Register c = design_.addRegister("c", y, falling);
    design_.connect(a.output, b.data, 6, 6);
    design_.connect(a.output, c.data, 8, 8);
    design_.connect(a.output, design_.addOutput("out"), 9, 9);
    design_.connect(design_.addInput("in"), b.data, 4, 4);
    EXPECT_TRUE(tool_->launch());
    EXPECT_EQ(relations(x, y), Relations(6, U));
    EXPECT_EQ(relations(x, y, rising, falling), Relations(8, U));
    EXPECT_EQ(relations(x, nullptr, rising, none), Relations(9, U));
    EXPECT_EQ(relations(nullptr, y, none, rising), Relations(4, U));
    EXPECT_EQ(analyzer->getPeriod(x), Delay::getUndefined());
    EXPECT_EQ(analyzer->getPeriod(y), Delay::getUndefined());
}

TEST_F(LaunchPeriods, CandidatesStayInTheirDomain) {
    Pole* x = design_.addClockSource("x");
    Pole* y = design_.addClockSource("y");
    const Register a = design_.addRegister("a", x);
    const Register b = design_.addRegister("b", x, falling);
    const Register c = design_.addRegister("c", y);
    const Register d = design_.addRegister("d", y, falling);
    design_.connect(a.output, b.data, 50, 50);
    design_.connect(c.output, d.data, 6, 6);
    design_.connect(a.output, c.data, 7, 7);
    EXPECT_TRUE(tool_->launch());
    EXPECT_EQ(relations(x, x, rising, falling), Relations(50, -50));
    EXPECT_EQ(relations(y, y, rising, falling), Relations(6, -6));
    EXPECT_EQ(relations(x, y), Relations(7, U));
    EXPECT_EQ(int(analyzer->getPeriod(x)), 100);
    EXPECT_EQ(int(analyzer->getPeriod(y)), 12);
}

// A relation that is defined is never changed, whatever the candidates are.
TEST_F(LaunchPeriods, DefinedRelationsStay) {
    Pole* clk = design_.addClockSource("clk");
    const Register a = design_.addRegister("a", clk);
    const Register b = design_.addRegister("b", clk, falling);
    design_.connect(a.output, a.data, 9, 9);
    design_.connect(a.output, b.data, 8, 8);
    design_.addSubdomain(clk, clk, rising, falling)->setSetupRelation(Delay(3));
    EXPECT_TRUE(tool_->launch());
    EXPECT_EQ(relations(clk, clk, rising, falling), Relations(3, U)) << "no hold relation either";
    EXPECT_EQ(relations(clk, clk), Relations(16, U)) << "its candidate counts all the same";
    EXPECT_EQ(int(analyzer->getPeriod(clk)), 16);

    design_.setClock(clk, 30, 10);
    EXPECT_TRUE(tool_->launch());
    EXPECT_EQ(relations(clk, clk, rising, falling), Relations(10, -20)) << "of the period";
    EXPECT_EQ(relations(clk, clk), Relations(30, U));
}

// The relations are a result like others: the next run finds them defined.
TEST_F(LaunchPeriods, RelationsOfAnEarlierRunStay) {
    Pole* clk = design_.addClockSource("clk");
    const Register a = design_.addRegister("a", clk);
    Pelko::Edge* arc = design_.connect(a.output, a.data, 9, 9);
    EXPECT_TRUE(tool_->launch());
    EXPECT_EQ(relations(clk, clk), Relations(9, U));
    arc->setMaxDelay(Delay(12));
    EXPECT_TRUE(tool_->launch());
    EXPECT_EQ(relations(clk, clk), Relations(9, U));
    EXPECT_EQ(int(analyzer->getPeriod(clk)), 12);
    analyzer->clearResults();
    EXPECT_TRUE(tool_->launch());
    EXPECT_EQ(relations(clk, clk), Relations(12, U));
}

// A subdomain without arrival gets its relations from the candidates of the others, if there are any.
TEST_F(LaunchPeriods, UndefinedArrival) {
    Pole* clk = design_.addClockSource("clk");
    const Register a = design_.addRegister("a", clk);
    Pole* in = design_.addInput("in");
    design_.constrainInput(in, clk, falling, 0, undefined);
    design_.connect(in, a.data);
    EXPECT_TRUE(tool_->launch());
    EXPECT_EQ(Builder::findSubdomain(clk, clk, falling, rising)->getLAT(), Delay::getUndefined());
    EXPECT_EQ(relations(clk, clk, falling, rising), Relations(U, U));
    EXPECT_EQ(analyzer->getPeriod(clk), Delay::getUndefined());

    design_.connect(a.output, a.data, 8, 8);
    EXPECT_TRUE(tool_->launch());
    EXPECT_EQ(relations(clk, clk, falling, rising), Relations(4, -4));
    EXPECT_EQ(relations(clk, clk), Relations(8, U));
    EXPECT_EQ(int(analyzer->getPeriod(clk)), 8);
}

// A launch at no edge of the clock counts as a launch at both.
TEST_F(LaunchPeriods, LaunchAtBothEdges) {
    Pole* clk = design_.addClockSource("clk");
    analyzer->setDutyRatio(clk, 40);
    Pole* in = design_.addInput("in");
    design_.constrainInput(in, clk, none);
    design_.connect(in, design_.addRegister("ff", clk).data, 6, 6);
    EXPECT_TRUE(tool_->launch());
    EXPECT_EQ(relations(clk, clk, falling, rising), Relations(6, -4)) << "candidates 10 and 6";
    EXPECT_EQ(relations(clk, clk), Relations(10, U));
}

} // namespace
