// The worst of each end point, by tables of arrivals.
#include "analysis/EndpointSlacks.h"

#include "Analyzed.h"

#include <gtest/gtest.h>

namespace {

using Analysis::Arrival;
using Analysis::ClockEdges;
using Analysis::EndpointResults;
using Analysis::EndpointSlacks;
using Analysis::Side;
using Analysis::Time;
using Design::ClockId;
using Design::ExceptionId;
using Design::PinId;

constexpr const char* script = "create_clock -name z -period 10 [get_ports clk]\n"
                               "create_clock -add -name a -period 10 [get_ports clk]\n"
                               "set_multicycle_path 2 -to [get_pins r1/D]\n"
                               "set_false_path -to [get_pins r2/D]\n"
                               "group_path -name g -to [get_pins r1/D]\n";
const ClockId z(0U), a(1U);
const ExceptionId multicycle(0U), falsePath(1U), group(2U);

class EndpointSlacksTest : public testing::Test {
protected:
    EndpointSlacksTest() { end_.pin = PinId(0U); }

    // An arrival at the end point that no exception governs.
    Arrival arrival(Side side, Time slack) const {
        Arrival made;
        made.end = &end_;
        made.requirement = &plain_;
        made.side = side;
        made.terms.relation = side == Side::setup ? 1000 : 0;
        made.slack = slack;
        return made;
    }

    Support::Analyzed design_{Support::threeRegisters(), script};
    const Analysis::AnalyzedDesign of_ = design_.analyzed();
    const Analysis::ResultOrder order_{of_.design, of_.clocks};
    EndpointSlacks slacks_{order_, of_.clocks, of_.constraints};
    const Exceptions::Requirement plain_;
    Model::End end_;
};

TEST_F(EndpointSlacksTest, TheWorstOfEachSide) {
    for (const Time slack : {30, 10, 20})
        slacks_.add({z, z}, arrival(Side::setup, slack));
    for (const Time slack : {-5, 40})
        slacks_.add({z, a}, arrival(Side::hold, slack));
    const EndpointResults results = slacks_.take();
    ASSERT_EQ(results.worst.size(), 1U);
    const Analysis::EndResult& result = results.worst.at(end_.pin);
    EXPECT_EQ(result.setup->slack, 10);
    EXPECT_EQ(result.setup->edges, (ClockEdges{z, z}));
    EXPECT_EQ(result.hold->slack, -5);
    EXPECT_EQ(result.hold->edges.capture, a);
}

// Of equal slacks: the clock whose name comes first, then the rising edge.
TEST_F(EndpointSlacksTest, EqualSlacksAreInTheOrderOfNames) {
    for (const ClockEdges& edges :
         {ClockEdges{z, z}, ClockEdges{z, a, true, false}, ClockEdges{a, z, false, true}, ClockEdges{a, z}})
        slacks_.add(edges, arrival(Side::setup, 7));
    EXPECT_EQ(slacks_.take().worst.at(end_.pin).setup->edges, (ClockEdges{a, z}));
}

TEST_F(EndpointSlacksTest, AnEndPointWithFalsePathsOnlyIsNotListed) {
    Exceptions::Requirement requirement;
    requirement.isFalse.setup = true;
    requirement.exception.setup = falsePath;
    requirement.group = group;
    Arrival one = arrival(Side::setup, 0);
    one.requirement = &requirement;
    one.isFalse = true;
    slacks_.add({z, z}, one);
    const EndpointResults results = slacks_.take();
    EXPECT_TRUE(results.worst.empty());
    EXPECT_EQ(results.governed.setup[falsePath], 1U);
    EXPECT_EQ(results.governed.setup[group], 0U); // it governs no path that is false
    EXPECT_EQ(results.governed.hold[falsePath], 0U);
}

// By end points: several arrivals of one count once.
TEST_F(EndpointSlacksTest, EndPointsThatAnExceptionGoverns) {
    Exceptions::Requirement requirement;
    requirement.exception.setup = multicycle;
    requirement.group = group;
    Model::End other = end_;
    other.pin = PinId(1U);
    for (const Model::End* end : std::initializer_list<const Model::End*>{&end_, &end_, &other}) {
        Arrival one = arrival(Side::setup, 3);
        one.end = end;
        one.requirement = &requirement;
        slacks_.add({z, z}, one);
    }
    const EndpointResults results = slacks_.take();
    ASSERT_EQ(results.governed.setup.size(), of_.constraints.exceptions.size());
    EXPECT_EQ(results.governed.setup[multicycle], 2U);
    EXPECT_EQ(results.governed.setup[group], 2U);
    EXPECT_EQ(results.governed.setup[falsePath], 0U);
}

// The clocks have a period of 10000: what a relation leaves unused shortens it in proportion.
TEST_F(EndpointSlacksTest, AchievedPeriods) {
    struct Row {
        const char* what;
        ClockEdges edges;
        Side side;
        Time relation, slack;
        Time achieved; // 0: none
    };
    const Row rows[] = {
        {"a whole period", {z, z}, Side::setup, 10000, 4000, 6000},
        {"half a period", {z, z, true, false}, Side::setup, 5000, 4000, 2000},
        {"rounded up", {z, z}, Side::setup, 3000, 2999, 4},
        {"violated", {z, z}, Side::setup, 10000, -1, 10001},
        {"of two clocks", {z, a}, Side::setup, 10000, 4000, 0},
        {"without a clock", {}, Side::setup, 10000, 4000, 0},
        {"hold", {z, z}, Side::hold, 10000, 4000, 0},
        {"no relation", {z, z}, Side::setup, 0, 4000, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EndpointSlacks slacks(order_, of_.clocks, of_.constraints);
        Arrival one = arrival(row.side, row.slack);
        one.terms.relation = row.relation;
        slacks.add(row.edges, one);
        const auto periods = slacks.take().achievedPeriods;
        EXPECT_EQ(periods.contains(z) ? periods.at(z) : 0, row.achieved);
        EXPECT_FALSE(periods.contains(a));
    }
}

} // namespace
