// Relations by the edges of clocks: fixed in subdomains, found again, and noted if they were cut off.
#include "analysis/ClockRelations.h"

#include "Analyzed.h"
#include "Pelko/Domain.h"

#include <gtest/gtest.h>

namespace {

using Analysis::ClockEdges;
using Analysis::ClockRelations;
using Design::ClockId;
using Support::Analyzed;

// Two clocks on one port, and a third that has no short common period with them.
constexpr const char* clocks = "create_clock -name a -period 10 [get_ports clk]\n"
                               "create_clock -add -name b -period 15 -waveform {3 8} [get_ports clk]\n"
                               "create_clock -add -name c -period 10.007 [get_ports clk]\n"
                               "set_clock_uncertainty -setup 0.2 [get_clocks b]\n"
                               "set_clock_uncertainty -hold 0.1 [get_clocks b]\n";

Pelko::Subdomain* subdomain(Analyzed& design, std::uint32_t launch, std::uint32_t capture,
                            Pelko::ClockMode::Code launchMode, Pelko::ClockMode::Code captureMode) {
    const Model::TimingModel& model = design.analyzed().model;
    Pelko::Domain* domain = Pelko::Domain::create(model.root(ClockId(launch)), model.root(ClockId(capture)));
    return Pelko::Subdomain::create(domain, launchMode, captureMode);
}

TEST(ClockRelations, AreFixedLessTheUncertainty) {
    Analyzed design(Support::threeRegisters(), clocks);
    const Analysis::AnalyzedDesign of = design.analyzed();
    ClockRelations relations(of.clocks, of.model);
    const ClockEdges edges{ClockId(0U), ClockId(1U), true, false};
    EXPECT_EQ(relations.find(edges), nullptr);
    Pelko::Subdomain* between = subdomain(design, 0, 1, Pelko::ClockMode::Rising, Pelko::ClockMode::Falling);
    EXPECT_EQ(relations.edgesOf(*between), edges);
    relations.fix(*between);
    // b falls at 8, 23, 38 ns, a rises every 10 ns: from 0 to 8 - 5 = 3 at the least.
    const Model::Relation* relation = relations.find(edges);
    ASSERT_NE(relation, nullptr);
    EXPECT_EQ(relation->setup, 3000);
    EXPECT_EQ(relation->hold, -2000);
    EXPECT_EQ(int(between->getSetupRelation()), 3000 - 200);
    EXPECT_EQ(int(between->getHoldRelation()), 2000 - 100);
    EXPECT_EQ(relations.find({ClockId(1U), ClockId(0U), false, true}), nullptr);
    EXPECT_TRUE(relations.cutOffPairs().empty());
}

TEST(ClockRelations, PairsAreListedOnceTheSmallerFirst) {
    Analyzed design(Support::threeRegisters(), clocks);
    const Analysis::AnalyzedDesign of = design.analyzed();
    ClockRelations relations(of.clocks, of.model);
    for (const auto& [launch, capture] : {std::pair(2U, 0U), std::pair(0U, 2U), std::pair(0U, 1U)})
        relations.fix(
            *subdomain(design, launch, capture, Pelko::ClockMode::Rising, Pelko::ClockMode::Rising));
    EXPECT_EQ(relations.cutOffPairs(), (Analysis::ClockPairs{{ClockId(0U), ClockId(2U)}}));
    Base::Diagnostics diagnostics;
    Analysis::noteCutOffs(relations.cutOffPairs(), of.clocks, diagnostics);
    ASSERT_EQ(diagnostics.all().size(), 1U);
    EXPECT_EQ(diagnostics.all()[0].text, "the common period of 'a' and 'c' has more than 1000 edges of the "
                                         "faster clock: only these are compared");
}

// A root without a clock has no edges to relate.
TEST(ClockRelations, WithoutAClockNothingIsFixed) {
    Analyzed design(Support::threeRegisters(), clocks);
    const Analysis::AnalyzedDesign of = design.analyzed();
    ClockRelations relations(of.clocks, of.model);
    Pelko::Domain* domain = Pelko::Domain::create(nullptr, of.model.root(ClockId(0U)));
    Pelko::Subdomain* half =
        Pelko::Subdomain::create(domain, Pelko::ClockMode::None, Pelko::ClockMode::Rising);
    relations.fix(*half);
    EXPECT_FALSE(half->getSetupRelation().isDefined());
    EXPECT_EQ(relations.find(relations.edgesOf(*half)), nullptr);
}

} // namespace
