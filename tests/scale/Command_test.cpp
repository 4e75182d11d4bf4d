// Large inputs of the command, with every slack worked out beside it, and bounds on the memory that the run
// takes and on the arcs that the engine looks at: what would grow with the square of the input goes far over
// them.
#include "CommandInputs.h"

#include <gtest/gtest.h>

#include <iostream>

using Scale::clockToOutput;
using Scale::Files;
using Scale::hold;
using Scale::setup;
using Scale::Slacks;
using Scale::SlacksByEnd;
using Scale::slacksOf;

namespace {

constexpr std::size_t megabyte = std::size_t{1} << 20;

void expectSlacks(const Report::Report& report, const SlacksByEnd& expected) {
    const SlacksByEnd slacks = slacksOf(report);
    std::size_t wrong = 0;
    std::string first;
    for (const auto& [pin, expectedSlacks] : expected) {
        const auto found = slacks.find(pin);
        if (found != slacks.end() && found->second == expectedSlacks)
            continue;
        if (++wrong == 1)
            first = pin;
    }
    EXPECT_EQ(wrong, 0U) << "the first is " << first;
}

// Arcs looked at: for each arc of the design, in all phases and sweeps together.
void expectBounds(const Files& files, std::size_t megabytes, std::uint64_t visits) {
    std::cout << files.peak / megabyte << " MB of at most " << megabytes << ", "
              << static_cast<double>(files.visits) / static_cast<double>(files.arcs) << " visits of each of "
              << files.arcs << " arcs of at most " << visits << "\n";
    EXPECT_LE(files.peak, megabytes * megabyte);
    EXPECT_LE(files.visits, visits * files.arcs);
    EXPECT_GT(files.visits, 0U); // somebody counts
}

TEST(Scale, TenThousandExceptions) {
    Files files;
    const SlacksByEnd expected = writeExceptions(files);
    expectSlacks(files.run(), expected);
    expectBounds(files, 60, 20);
}

TEST(Scale, AThousandClocks) {
    Files files;
    const SlacksByEnd expected = writeClocks(files);
    const Report::Report report = files.run();
    EXPECT_EQ(report.clocks.size(), 1000U);
    expectSlacks(report, expected);
    expectBounds(files, 20, 8);
}

// The last launch point but one is the latest, the first the earliest.
TEST(Scale, AnEndPointOfAHundredThousandLaunchPoints) {
    Files files;
    const SlacksByEnd expected = writeWideEnd(files);
    const Report::Report report = files.run();
    expectSlacks(report, expected);
    ASSERT_FALSE(report.paths.empty());
    EXPECT_EQ(report.paths.front().points.front().pin, "a99998/C");
    expectBounds(files, 320, 12);
}

TEST(Scale, AClockTreeOfAHundredThousandLeaves) {
    Files files;
    const SlacksByEnd expected = writeClockTree(files);
    expectSlacks(files.run(), expected);
    expectBounds(files, 340, 12);
}

// The command cuts loops before the engine sees them.
TEST(Scale, ALoopOfTwentyThousandArcs) {
    constexpr std::size_t gates = 150;
    Files files;
    writeLoop(files, gates);
    const Slacks end = slacksOf(files.run()).at("b/D");
    ASSERT_TRUE(end.setup && end.hold);
    EXPECT_EQ(*end.hold, clockToOutput + 1 - hold);
    EXPECT_LE(*end.setup, 10'000 - setup - clockToOutput - 1);
    EXPECT_GE(*end.setup, 10'000 - setup - clockToOutput - 2 * static_cast<long>(gates));
    expectBounds(files, 20, 1);
}

} // namespace
