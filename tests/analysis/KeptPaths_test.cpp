// Which paths are kept, against a sort of all of them.
#include "analysis/KeptPaths.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <map>
#include <random>
#include <string>

namespace {

using Analysis::KeptPath;
using Analysis::KeptPaths;
using Analysis::PathLimits;
using Analysis::Time;

// Ports whose names are not in the order of their numbers, and no clocks.
class KeptPathsTest : public testing::Test {
protected:
    KeptPathsTest() {
        for (const char* port : {"d", "b", "a", "c"})
            design_.addPin(Base::none, design_.names.add(port));
        network_ = std::make_unique<Model::Network>(design_, constraints_, decltype(Design::Clock::targets)(),
                                                    diagnostics_);
        clocks_ = std::make_unique<Model::Clocks>(design_, *network_, constraints_, Model::ClockOptions(),
                                                  diagnostics_);
        order_ = std::make_unique<Analysis::ResultOrder>(design_, *clocks_);
    }

    KeptPath path(std::uint32_t port, Time slack, const std::string& through = "x") {
        KeptPath made;
        made.end = Design::PinId(port);
        made.by.end = &end_;
        made.path.slack = slack;
        made.path.endpoint = design_.pinName(made.end);
        for (const std::string& pin : {std::string("start"), through, made.path.endpoint})
            made.path.points.push_back({pin, 0, 0, Report::PointKind::cell, '\0', {}});
        return made;
    }
    static std::string shown(const Report::Path& path) {
        return path.endpoint + " " + std::to_string(path.slack) + " " + path.points[1].pin;
    }
    static std::vector<std::string> take(KeptPaths& kept) {
        std::vector<Report::Path> paths;
        kept.moveTo(paths);
        std::vector<std::string> lines;
        for (const Report::Path& path : paths)
            lines.push_back(shown(path));
        return lines;
    }

    Design::RoutedDesign design_;
    Design::Constraints constraints_;
    Base::Diagnostics diagnostics_;
    std::unique_ptr<Model::Network> network_;
    std::unique_ptr<Model::Clocks> clocks_;
    std::unique_ptr<Analysis::ResultOrder> order_;
    Model::End end_;
};

using Lines = std::vector<std::string>;

TEST_F(KeptPathsTest, NoneIsWantedIfNoneIsReported) {
    KeptPaths kept(*order_, PathLimits{0, 1});
    EXPECT_FALSE(kept.isWanted(Design::PinId(0U), -5));
    EXPECT_EQ(take(kept), Lines());
}

TEST_F(KeptPathsTest, TheWorstOfEachEndPoint) {
    KeptPaths kept(*order_, PathLimits{2, 1});
    EXPECT_TRUE(kept.keep(path(0, 5)));
    EXPECT_TRUE(kept.keep(path(1, 7)));
    EXPECT_FALSE(kept.isWanted(Design::PinId(1U), 8)) << "the end point has a worse one";
    EXPECT_FALSE(kept.keep(path(1, 8)));
    EXPECT_TRUE(kept.keep(path(1, 4))) << "in place of the end point's other one";
    EXPECT_FALSE(kept.isWanted(Design::PinId(2U), 6)) << "enough are worse";
    EXPECT_TRUE(kept.isWanted(Design::PinId(2U), 5)) << "'a' comes before 'd'";
    EXPECT_TRUE(kept.keep(path(2, 5)));
    EXPECT_EQ(take(kept), (Lines{"b 4 x", "a 5 x"}));
    EXPECT_EQ(take(kept), Lines());
}

TEST_F(KeptPathsTest, EqualSlacksAreInTheOrderOfNames) {
    KeptPaths kept(*order_, PathLimits{10, 2});
    for (const std::uint32_t port : {0U, 1U, 2U, 3U})
        for (const char* through : {"z", "y", "x"})
            kept.keep(path(port, 5, through));
    EXPECT_EQ(take(kept), (Lines{"a 5 x", "a 5 y", "b 5 x", "b 5 y", "c 5 x", "c 5 y", "d 5 x", "d 5 y"}));
}

TEST_F(KeptPathsTest, AsIfAllWereSorted) {
    const unsigned seed = std::random_device{}();
    std::cout << "seed " << seed << "\n";
    std::mt19937 random(seed);
    for (int round = 0; round < 200; ++round) {
        const PathLimits limits{1 + random() % 6, 1 + random() % 3};
        KeptPaths kept(*order_, limits);
        std::vector<std::tuple<Time, std::string, std::string>> all;
        for (int i = 0; i < 30; ++i) {
            // Each path is another one, by the pin in its middle.
            const std::string through =
                std::string(1, static_cast<char>('a' + random() % 26)) + std::to_string(i);
            KeptPath one =
                path(static_cast<std::uint32_t>(random() % 4), static_cast<Time>(random() % 5), through);
            all.emplace_back(one.path.slack, one.path.endpoint, through);
            kept.keep(std::move(one));
        }
        std::ranges::sort(all);
        std::map<std::string, std::size_t> ofEnd;
        Lines expected;
        for (const auto& [slack, end, through] : all)
            if (expected.size() < limits.paths && ofEnd[end]++ < limits.perEndpoint)
                expected.push_back(end + " " + std::to_string(slack) + " " + through);
        ASSERT_EQ(take(kept), expected);
    }
}

} // namespace
