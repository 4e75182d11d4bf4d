// The order of results with equal slacks.
#include "analysis/ResultOrder.h"

#include "Analyzed.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Analysis::ClockEdges;
using Analysis::ResultOrder;
using Analysis::Standing;
using Design::ClockId;
using Design::ExceptionId;

// The clock z is stated first, and comes after a by its name.
const ClockId z(0U), a(1U);

class ResultOrderTest : public testing::Test {
protected:
    ResultOrderTest() {
        for (Model::End* end : {&lower_, &upper_, &falling_})
            end->pin = design_.pin("r1/D");
        lower_.clockPin = falling_.clockPin = design_.pin("r1/C");
        upper_.clockPin = design_.pin("r2/C");
        falling_.rise = false;
    }

    Support::Analyzed design_{Support::threeRegisters(),
                              "create_clock -name z -period 10 [get_ports clk]\n"
                              "create_clock -add -name a -period 10 [get_ports clk]\n"};
    const Analysis::AnalyzedDesign of_ = design_.analyzed();
    const ResultOrder order_{of_.design, of_.clocks};
    Model::End lower_, upper_, falling_;
};

// Each of these comes before the next, and before all others behind it.
TEST_F(ResultOrderTest, OfOneEndPoint) {
    const std::vector<Standing> sorted = {
        {{}, {}, &lower_},                  // no clock
        {{{}, a}, {}, &lower_},             // by the launching clock, then the capturing one
        {{a, a}, ExceptionId(0U), &lower_}, // exceptions in the order of their commands
        {{a, a}, ExceptionId(1U), &lower_}, //
        {{a, a}, {}, &lower_},              // none comes after all exceptions
        {{a, a}, {}, &falling_},            // of one clock pin: the rising edge first
        {{a, a}, {}, &upper_},              // by the clock pin's name
        {{a, a, true, false}, {}, &lower_}, // a falling capture edge
        {{a, z}, {}, &lower_},              //
        {{a, a, false, true}, {}, &lower_}, // a falling launch edge
        {{z, a}, {}, &lower_},              //
    };
    for (std::size_t i = 0; i < sorted.size(); ++i)
        for (std::size_t j = 0; j < sorted.size(); ++j)
            EXPECT_EQ(order_.isBefore(sorted[i], sorted[j]), i < j) << i << " " << j;
}

TEST_F(ResultOrderTest, OfArrivals) {
    Model::End other = lower_;
    other.pin = design_.pin("r2/D");
    const auto arrival = [](const Model::End& end, Analysis::Time slack) {
        Analysis::Arrival made;
        made.end = &end;
        made.slack = slack;
        return made;
    };
    const std::vector<Analysis::Arrival> sorted = {arrival(other, -3), arrival(lower_, 5), arrival(other, 5)};
    for (std::size_t i = 0; i < sorted.size(); ++i)
        for (std::size_t j = 0; j < sorted.size(); ++j)
            EXPECT_EQ(order_.isBefore(sorted[i], sorted[j]), i < j) << i << " " << j;
    EXPECT_FALSE(order_.isBefore(arrival(lower_, 5), arrival(upper_, 5))) << "one end point";
}

} // namespace
