// Strongly connected components of a million arcs: every pole leads to every other one, and a ring with
// chords. A launch on them ends, and takes a bounded number of bytes for each arc.
#include "../faults/Allocator.h"
#include "Builder.h"
#include "Recorder.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Pelko::Pole;

struct Row {
    const char* what;
    std::size_t poles;
    std::size_t chords; // arcs from each pole to so many behind it
};

class Component : public testing::TestWithParam<Row> {};

TEST_P(Component, Launch) {
    constexpr std::size_t mostBytes = 80; // for each arc
    const Row& row = GetParam();
    Support::Builder design;
    Pole* clk = design.addClockSource("clk", 1000);
    const Support::Register a = design.addRegister("a", clk);
    const Support::Register b = design.addRegister("b", clk);
    std::vector<Pole*> poles;
    for (std::size_t i = 0; i < row.poles; ++i)
        poles.push_back(design.addPole());
    for (std::size_t i = 0; i < row.poles; ++i)
        for (std::size_t chord = 1; chord <= row.chords; ++chord)
            design.connect(poles[i], poles[(i + chord) % row.poles], 0, 0);
    design.connect(a.output, poles[0], 2, 3);
    design.connect(poles[row.poles / 2], b.data, 5, 7);
    const std::size_t arcs = row.poles * row.chords;
    EXPECT_GE(arcs, 990'000U);

    const Support::ToolPointer tool = Support::makeTool();
    const Support::Recorder console;
    const std::size_t before = Faults::liveBytes();
    Faults::startPeak();
    EXPECT_TRUE(tool->launch());
    const std::size_t peak = Faults::peakBytes() - before;
    std::cout << peak / arcs << " bytes for each of " << arcs << " arcs\n";
    EXPECT_LE(peak, mostBytes * arcs);
    const Pelko::Subdomain* subdomain = Support::Builder::findSubdomain(clk, clk);
    ASSERT_TRUE(subdomain);
    // The loop's own arcs take no time.
    EXPECT_EQ(int(subdomain->getSAT()), 2 + 5);
    EXPECT_EQ(int(subdomain->getLAT()), 3 + 7);
}

INSTANTIATE_TEST_SUITE_P(Scale, Component,
                         testing::Values(Row{"every pole to every other one", 1000, 999},
                                         Row{"a ring with chords", 500'000, 2}),
                         [](const auto& row) { return row.param.poles == 1000 ? "Dense" : "Ring"; });

} // namespace
