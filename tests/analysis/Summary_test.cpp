// From the results of a run to its report.
#include "analysis/Summary.h"

#include "Analyzed.h"
#include "analysis/Describe.h"

#include <gtest/gtest.h>

namespace {

using Analysis::Harvested;
using Analysis::Worst;
using Design::ClockId;
using Design::ExceptionId;

constexpr const char* script = "create_clock -name c -period 10 [get_ports clk]\n"
                               "set_multicycle_path 2 -to [get_pins r1/D]\n"
                               "set_false_path -from [get_pins r1/C]\n";

class SummaryTest : public testing::Test {
protected:
    SummaryTest() {
        const std::size_t exceptions = of_.constraints.exceptions.size();
        results_.endpoints.governed.setup.resize(exceptions);
        results_.endpoints.governed.hold.resize(exceptions);
    }
    // The worst of an end point, under the clock.
    static Worst worst(Analysis::Time slack) {
        Worst made;
        made.edges = {ClockId(0U), ClockId(0U)};
        made.slack = slack;
        return made;
    }
    Report::Report report(bool listUnconstrained = false) {
        Report::Report made;
        fillReport(of_, results_, listUnconstrained, made);
        return made;
    }

    Support::Analyzed design_{Support::threeRegisters(), script};
    const Analysis::AnalyzedDesign of_ = design_.analyzed();
    Harvested results_;
};

TEST_F(SummaryTest, SumsOfAllAndOfTheClock) {
    results_.endpoints.worst[design_.pin("r1/D")] = {worst(-30), worst(4)};
    results_.endpoints.worst[design_.pin("r2/D")] = {worst(-12), {}};
    const Report::Report made = report();
    ASSERT_EQ(made.clocks.size(), 1U);
    for (const Report::Summary* setup : {&made.setup, &made.clocks[0].setup}) {
        EXPECT_EQ(setup->endpoints, 2U);
        EXPECT_EQ(setup->failing, 2U);
        EXPECT_EQ(setup->total, -42);
        EXPECT_EQ(setup->worst, -30);
        EXPECT_EQ(setup->worstSlack, -30);
    }
    for (const Report::Summary* hold : {&made.hold, &made.clocks[0].hold}) {
        EXPECT_EQ(hold->endpoints, 1U);
        EXPECT_EQ(hold->failing, 0U);
        EXPECT_EQ(hold->worst, 0);
        EXPECT_EQ(hold->worstSlack, 4);
    }
    ASSERT_EQ(made.endpoints.size(), 2U);
    EXPECT_EQ(made.endpoints[0].pin, "r1/D");
    EXPECT_EQ(made.endpoints[0].setupSlack, -30);
    EXPECT_EQ(made.endpoints[0].holdClocks[1], "c");
    EXPECT_FALSE(made.endpoints[1].holdSlack);
}

TEST_F(SummaryTest, EndPointsWithoutASlack) {
    results_.endpoints.worst[design_.pin("r1/D")] = {worst(1), worst(1)};
    EXPECT_EQ(report().unconstrainedEndpoints, 1U);
    EXPECT_TRUE(report().unconstrained.empty());
    EXPECT_EQ(report(true).unconstrained, std::vector<std::string>{"r2/D"});
}

TEST_F(SummaryTest, AchievedPeriods) {
    EXPECT_FALSE(report().clocks.at(0).achievedPeriod);
    results_.endpoints.achievedPeriods[ClockId(0U)] = 135;
    EXPECT_EQ(report().clocks.at(0).achievedPeriod, 135);
    results_.endpoints.achievedPeriods[ClockId(0U)] = 0; // of paths that take no time
    EXPECT_FALSE(report().clocks.at(0).achievedPeriod);
}

TEST_F(SummaryTest, WhatExceptionsDo) {
    results_.endpoints.governed.setup[ExceptionId(0U)] = 3;
    Report::Path path;
    path.exception = Analysis::describe(of_.constraints, ExceptionId(0U));
    results_.paths = {path, path, Report::Path()};
    const Report::Report made = report();
    ASSERT_EQ(made.exceptions.size(), 2U);
    EXPECT_EQ(made.exceptions[0].status, "governs");
    EXPECT_EQ(made.exceptions[0].setupEndpoints, 3U);
    EXPECT_EQ(made.exceptions[0].holdEndpoints, 0U);
    EXPECT_EQ(made.exceptions[0].paths, 2U);
    EXPECT_EQ(made.exceptions[1].status, "matches no path");
    EXPECT_EQ(made.paths.size(), 3U);
}

} // namespace
