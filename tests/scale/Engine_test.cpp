// A million arcs in one piece, in every way that a walk finds hard, and a ladder of paths: a launch ends,
// finds the arrivals, looks at each arc a bounded number of times, and takes a bounded number of bytes for
// each.
#include "EngineInputs.h"
#include "Vorlen/detail/Work.h"
#include "tests/faults/Allocator.h"
#include "tests/support/Recorder.h"

#include <gtest/gtest.h>

#include <cctype>
#include <iostream>

namespace Scale {

static void PrintTo(const EngineInput& input, std::ostream* out) { *out << input.name; }

} // namespace Scale

namespace {

class EngineScale : public testing::TestWithParam<Scale::EngineInput> {};

TEST_P(EngineScale, Launch) {
    const Scale::EngineInput& input = GetParam();
    Support::Builder design;
    const Scale::Arrivals expected = input.build(design);
    const std::size_t arcs = Pelko::cell->getEdges().getCount();

    const Support::ToolPointer tool = Support::makeTool();
    const Support::Recorder console;
    const std::size_t before = Faults::liveBytes();
    Faults::startPeak();
    const std::uint64_t visitsBefore = Vorlen::detail::visitedArcs;
    EXPECT_TRUE(tool->launch());
    const std::uint64_t visits = Vorlen::detail::visitedArcs - visitsBefore;
    const std::size_t bytes = Faults::peakBytes() - before;
    std::cout << static_cast<double>(visits) / static_cast<double>(arcs) << " visits and " << bytes / arcs
              << " bytes for each of " << arcs << " arcs\n";
    EXPECT_LE(visits, input.visits * arcs);
    EXPECT_GT(visits, 0U); // the engine counts at all
    EXPECT_LE(bytes, input.bytes * arcs);

    const Pelko::Subdomain* subdomain = Support::Builder::findSubdomain(
        expected.launchRoot, expected.latchRoot, expected.launchRoot ? Support::rising : Support::none,
        expected.latchRoot ? Support::rising : Support::none);
    ASSERT_TRUE(subdomain);
    EXPECT_EQ(int(subdomain->getSAT()), expected.shortest);
    EXPECT_EQ(int(subdomain->getLAT()), expected.latest);
}

std::string nameOf(const testing::TestParamInfo<Scale::EngineInput>& info) {
    std::string name;
    for (const char c : std::string(info.param.name))
        if (std::isalnum(static_cast<unsigned char>(c)) != 0)
            name += c;
    return name;
}

INSTANTIATE_TEST_SUITE_P(Million, EngineScale, testing::ValuesIn(Scale::engineInputs), nameOf);

} // namespace
