// What a run yields, and that a failure while a sweep is read cannot be overlooked.
#include "analysis/Harvest.h"

#include "Analyzed.h"
#include "analysis/EngineRun.h"

#include <gmock/gmock.h>

namespace {

using Analysis::EngineRun;
using Analysis::Harvest;
using Analysis::Harvested;
using Support::Analyzed;
using testing::HasSubstr;

constexpr const char* clock = "create_clock -period 10 [get_ports clk]\n";

Harvested harvest(Analyzed& design, const Analysis::HarvestOptions& options = {}) {
    Harvest harvest(design.analyzed(), options);
    EngineRun(design.application(), false).launch(harvest);
    return harvest.take();
}

TEST(Harvest, TheWorstOfEachEndPoint) {
    Analyzed design(Support::threeRegisters(), clock);
    const Harvested results = harvest(design);
    ASSERT_EQ(results.endpoints.worst.size(), 2U);
    const Analysis::EndResult& near = results.endpoints.worst.at(design.pin("r1/D"));
    ASSERT_TRUE(near.setup && near.hold);
    EXPECT_EQ(near.setup->slack, 10000 - 100 - 10 - 5);
    EXPECT_EQ(near.hold->slack, 100 + 10 - 3);
    const Analysis::EndResult& far = results.endpoints.worst.at(design.pin("r2/D"));
    EXPECT_EQ(far.setup->slack, 10000 - 100 - 30 - 5);
    ASSERT_EQ(results.endpoints.achievedPeriods.size(), 1U);
    EXPECT_EQ(results.endpoints.achievedPeriods.begin()->second, 100 + 30 + 5);
    EXPECT_TRUE(results.cutOffPairs.empty());
}

// The slack of a traced path is that of its end point, and follows from its own parts.
TEST(Harvest, APathAndItsEndPointHaveOneSlack) {
    Analyzed design(Support::threeRegisters(40), clock);
    const Harvested results = harvest(design);
    ASSERT_EQ(results.paths.size(), 4U);
    for (const Report::Path& path : results.paths) {
        SCOPED_TRACE(path.endpoint);
        const Analysis::EndResult& end = results.endpoints.worst.at(design.pin(path.endpoint));
        EXPECT_EQ(path.slack, path.setup ? end.setup->slack : end.hold->slack);
        EXPECT_EQ(path.slack, path.setup ? path.required - path.arrival : path.arrival - path.required);
        EXPECT_EQ(path.launchClockDelay, 40);
    }
    EXPECT_EQ(results.paths[0].endpoint, "r2/D");
    EXPECT_EQ(results.paths[2].endpoint, "r1/D");
    EXPECT_FALSE(results.paths[2].setup);
}

TEST(Harvest, OnlyTheSideThatIsWantedIsTraced) {
    Analyzed design(Support::threeRegisters(), clock);
    const Harvested results = harvest(design, {{1, 1}, {false, true}});
    ASSERT_EQ(results.paths.size(), 1U);
    EXPECT_FALSE(results.paths[0].setup);
    EXPECT_EQ(results.endpoints.worst.size(), 2U);
}

// Registers that the clock reaches at different times, all on the way to one end point; too many to be kept
// apart.
std::string wide() {
    std::string nets, cells, inputs;
    for (int i = 0; i < 500; ++i) {
        const std::string name = "r" + std::to_string(i), input = "I" + std::to_string(i);
        nets += "(INTERCONNECT clk " + name + "/C (" + std::to_string(i % 2) + ")) (INTERCONNECT " + name +
                "/Q w/" + input + " (0)) ";
        inputs += "(IOPATH " + input + " Z (1)) ";
        cells += Support::cell("R", name, "(IOPATH (posedge C) Q (100))");
    }
    return Support::wires(nets + "(INTERCONNECT clk t/C (0)) (INTERCONNECT w/Z t/D (0))") +
           Support::cell("W", "w", inputs) + cells +
           Support::cell("R", "t", "(IOPATH (posedge C) Q (100))", "(SETUPHOLD D (posedge C) (5) (3))");
}

// A delay that ignores the clock's latency, which is not the same for all of its start points: the sweep
// cannot be read. The launch itself completes; the one way to the results throws, however often it is taken.
TEST(Harvest, AFailureWhileASweepIsReadIsThrownByEveryWayToTheResults) {
    Analyzed design(wide(),
                    std::string(clock) + "set_max_delay 5 -ignore_clock_latency -to [get_pins t/D]\n");
    Harvest harvest(design.analyzed(), {});
    EXPECT_NO_THROW(EngineRun(design.application(), false).launch(harvest));
    for (int i = 0; i < 2; ++i)
        EXPECT_THAT([&] { harvest.take(); },
                    testing::ThrowsMessage<Base::BadInput>(HasSubstr("-ignore_clock_latency")));
}

} // namespace
