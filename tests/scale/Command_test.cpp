// Large inputs of the command, with every slack worked out beside it, and bounds on the memory that the run
// takes and on the arcs that the engine looks at: what would grow with the square of the input goes far over
// them.
#include "CommandInputs.h"
#include "Vorlen/detail/Work.h"
#include "report/Json.h"
#include "report/Text.h"
#include "tests/faults/Allocator.h"

#include <gtest/gtest.h>

#include <iostream>
#include <streambuf>

using Scale::clockToOutput;
using Scale::Files;
using Scale::hold;
using Scale::PeriodsByClock;
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

struct Analysis {
    explicit Analysis(Files& files, bool isConstrained = true) : arcs(files.getArcCount()) {
        ::Analysis::SessionOptions options = files.write();
        if (!isConstrained)
            options.sdc.clear();
        const std::size_t before = Faults::liveBytes();
        Faults::startPeak();
        const std::uint64_t visitsBefore = Vorlen::detail::visitedArcs;
        const std::uint64_t entriesBefore = Vorlen::detail::clearedEntries;
        report = ::Analysis::Session().run(options);
        visits = Vorlen::detail::visitedArcs - visitsBefore;
        entries = Vorlen::detail::clearedEntries - entriesBefore;
        peak = Faults::peakBytes() - before;
    }

    // `visitsOfArc`: bound on the visits per arc of the design, in all phases and sweeps together.
    void expectBounds(std::size_t megabytes, std::uint64_t visitsOfArc) const {
        std::cout << peak / megabyte << " MB of at most " << megabytes << ", "
                  << static_cast<double>(visits) / static_cast<double>(arcs) << " visits of each of " << arcs
                  << " arcs of at most " << visitsOfArc << "\n";
        EXPECT_LE(peak, megabytes * megabyte);
        EXPECT_LE(visits, visitsOfArc * arcs);
        EXPECT_GT(visits, 0U); // the engine counts at all
    }

    std::size_t arcs;
    Report::Report report;
    std::size_t peak = 0; // in bytes
    std::uint64_t visits = 0;
    std::uint64_t entries = 0; // table entries that were made or cleared
};

TEST(Scale, TenThousandExceptions) {
    Files files;
    const SlacksByEnd expected = writeExceptions(files);
    const Analysis run(files);
    expectSlacks(run.report, expected);
    run.expectBounds(60, 20);
}

// 160,000 pairs of clocks in one command, within the script's limits of time.
TEST(Scale, UncertaintiesBetweenFourHundredClocks) {
    Files files;
    files.wire("clk", "a/C");
    files.wire("clk", "b/C");
    files.wire("a/Q", "b/D");
    files.flipFlop("a");
    files.flipFlop("b");
    files.constrain("create_clock -name clk -period 10 [get_ports clk]");
    files.constrain("for {set i 1} {$i < 400} {incr i} { create_clock -name c$i -period 10 }");
    files.constrain("set_clock_uncertainty 0.3 -from [all_clocks] -to [all_clocks]");
    const Analysis run(files);
    EXPECT_EQ(run.report.clocks.size(), 400U);
    expectSlacks(run.report, {{"b/D", {10'000 - 300 - clockToOutput - setup, clockToOutput - 300 - hold}}});
}

TEST(Scale, ACollectionOfTwentyThousandCellsOneByOne) {
    constexpr std::size_t registers = 20'000;
    Files files;
    files.constrain("create_clock -name clk -period 10 [get_ports clk]");
    files.constrain("foreach_in_collection cell [get_cells *] { append_to_collection all $cell }");
    files.constrain("set_multicycle_path 2 -setup -from $all");
    files.constrain("set_multicycle_path 1 -hold -from $all");
    SlacksByEnd expected;
    for (std::size_t i = 0; i < registers; ++i) {
        const std::string name = "r" + std::to_string(i);
        files.wire("clk", name + "/C");
        files.flipFlop(name);
        if (i == 0)
            continue;
        files.wire("r" + std::to_string(i - 1) + "/Q", name + "/D");
        expected[name + "/D"] = {20'000 - clockToOutput - setup, clockToOutput - hold};
    }
    expectSlacks(Analysis(files).report, expected);
}

TEST(Scale, AThousandClocks) {
    Files files;
    const SlacksByEnd expected = writeClocks(files);
    const Analysis run(files);
    EXPECT_EQ(run.report.clocks.size(), 1000U);
    expectSlacks(run.report, expected);
    run.expectBounds(20, 8);
}

// The cost of a sweep is that of its cone; it makes no table of the size of the design.
TEST(Scale, TwoThousandSeparateClocks) {
    Files files;
    const SlacksByEnd expected = writeSeparateClocks(files, 2000);
    const Analysis run(files);
    EXPECT_EQ(run.report.clocks.size(), 2001U);
    expectSlacks(run.report, expected);
    run.expectBounds(160, 12);
    std::cout << run.entries << " entries of tables\n";
    EXPECT_LE(run.entries, 10 * run.arcs);
    EXPECT_GT(run.entries, run.arcs / 10); // the engine counts at all
}

PeriodsByClock achievedPeriods(const Report::Report& report) {
    PeriodsByClock periods;
    for (const Report::Clock& clock : report.clocks)
        periods[clock.name] = clock.achievedPeriod.value_or(-1);
    return periods;
}

// Without constraints: of four hundred million pairs of clocks, none meet.
TEST(Scale, TwentyThousandFoundClocks) {
    Files files;
    const PeriodsByClock expected = writeFoundClocks(files, 20'000);
    const Analysis run(files, false);
    EXPECT_EQ(achievedPeriods(run.report), expected);
    run.expectBounds(190, 13);
    EXPECT_LE(run.entries, 20 * run.arcs);
}

// The part that a hundred clocks share counts a hundred times, not ten thousand times.
TEST(Scale, AHundredFoundClocksOnOneNet) {
    constexpr std::size_t clocks = 100, registers = 1000;
    Files files;
    writeJoinedClocks(files, clocks, registers);
    const Analysis run(files, false);
    PeriodsByClock expected;
    for (std::size_t i = 0; i < clocks; ++i)
        expected["p" + std::to_string(i)] = clockToOutput + 200 + setup;
    EXPECT_EQ(achievedPeriods(run.report), expected);
    run.expectBounds(10, 20 * clocks);
}

// The last launch point but one is the latest, the first is the earliest.
TEST(Scale, AnEndPointOfAHundredThousandLaunchPoints) {
    Files files;
    const SlacksByEnd expected = writeWideEnd(files);
    const Analysis run(files);
    expectSlacks(run.report, expected);
    ASSERT_FALSE(run.report.paths.empty());
    EXPECT_EQ(run.report.paths.front().points.front().pin, "a99998/C");
    run.expectBounds(320, 12);
}

TEST(Scale, AClockTreeOfAHundredThousandLeaves) {
    Files files;
    const SlacksByEnd expected = writeClockTree(files);
    const Analysis run(files);
    expectSlacks(run.report, expected);
    run.expectBounds(340, 12);
}

// Accepts bytes, and only counts them.
class Counter : public std::streambuf {
public:
    std::size_t count = 0;

protected:
    int_type overflow(int_type c) override {
        ++count;
        return traits_type::not_eof(c);
    }
    std::streamsize xsputn(const char*, std::streamsize size) override {
        count += static_cast<std::size_t>(size);
        return size;
    }
};

// Five paths to one end point, each through half a million gates with two arcs per gate.
TEST(Scale, PathsOfAMillionArcs) {
    constexpr std::size_t gates = 500'000;
    Files files;
    const SlacksByEnd expected = writeLongPath(files, gates);
    ::Analysis::SessionOptions options = files.write();
    options.perEndpoint = 5;
    options.holdPaths = false;
    const Report::Report report = ::Analysis::Session().run(options);
    expectSlacks(report, expected);
    ASSERT_EQ(report.paths.size(), 5U);
    for (const Report::Path& path : report.paths) {
        EXPECT_EQ(path.points.size(), 2 * gates + 3);
        EXPECT_EQ(path.slack, expected.at("b/D").setup);
    }
    // The first path by name takes the first input everywhere. The fifth takes the other input of the third
    // gate from there.
    EXPECT_EQ(report.paths[0].points[2].pin, "g0/A");
    EXPECT_EQ(report.paths[1].points[2].pin, "g0/B");
    EXPECT_EQ(report.paths[4].points[6].pin, "g2/B");
    Counter text, json;
    std::ostream textStream(&text), jsonStream(&json);
    writeText(report, {}, textStream);
    writeJson(report, jsonStream);
    EXPECT_GT(text.count, report.paths.size() * 2 * gates);
    EXPECT_GT(json.count, report.paths.size() * 2 * gates);
}

// Only reported paths are traced: all of them together would be two hundred million steps.
TEST(Scale, AChainWithAnEndPointAtEachGate) {
    constexpr std::size_t gates = 20'000;
    Files files;
    const SlacksByEnd expected = writeTappedChain(files, gates);
    const Analysis run(files);
    expectSlacks(run.report, expected);
    ASSERT_EQ(run.report.paths.size(), 20U);
    for (std::size_t i = 0; i < 10; ++i) {
        EXPECT_EQ(run.report.paths[i].endpoint, "r" + std::to_string(gates - 1 - i) + "/D");
        EXPECT_EQ(run.report.paths[10 + i].endpoint, "r" + std::to_string(i) + "/D");
    }
    run.expectBounds(140, 12);
}

// The command cuts loops before the engine sees them.
TEST(Scale, ALoopOfTwentyThousandArcs) {
    constexpr std::size_t gates = 150;
    Files files;
    writeLoop(files, gates);
    const Analysis run(files);
    const Slacks end = slacksOf(run.report).at("b/D");
    ASSERT_TRUE(end.setup && end.hold);
    EXPECT_EQ(*end.hold, clockToOutput + 1 - hold);
    EXPECT_LE(*end.setup, 10'000 - setup - clockToOutput - 1);
    EXPECT_GE(*end.setup, 10'000 - setup - clockToOutput - 2 * static_cast<long>(gates));
    run.expectBounds(20, 1);
}

} // namespace
