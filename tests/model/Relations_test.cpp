// Which edges belong together: known pairs, and all small periods against a search over the common period.
#include "model/Relations.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

using Model::Clock;
using Model::relate;
using Model::Relation;
using Model::Time;

Clock clockOf(Time period, Time rise, Time fall) {
    Clock clock;
    clock.period = period;
    clock.rise = rise;
    clock.fall = fall;
    return clock;
}

struct Row {
    Clock launch;
    bool launchRise;
    Clock capture;
    bool captureRise;
    Time setup, hold;
};

TEST(Relations, OfKnownPairs) {
    const Clock ten = clockOf(10, 0, 5), fifteen = clockOf(15, 0, 7), late = clockOf(10, 3, 8),
                twenty = clockOf(20, 0, 10);
    const Row rows[] = {
        {ten, true, ten, true, 10, 0},
        {ten, true, ten, false, 5, -5},
        {ten, false, ten, true, 5, -5},
        {ten, false, ten, false, 10, 0},
        {ten, true, fifteen, true, 5, 0},
        {fifteen, true, ten, true, 5, 0},
        {ten, true, late, true, 3, -7},
        {late, true, ten, true, 7, -3},
        {ten, true, twenty, true, 10, 0},
        {twenty, true, ten, true, 10, 0},
        {twenty, false, ten, true, 10, 0},
        {ten, false, twenty, true, 5, -5},
        {ten, false, fifteen, false, 2, -3},
        {clockOf(7, 0, 3), true, clockOf(10, 0, 5), true, 1, 0},
        // Edges before time 0, and beyond the first period.
        {clockOf(10, -2, 3), true, ten, true, 2, -8},
        {ten, true, clockOf(10, 12, 17), true, 2, -8},
    };
    for (const Row& row : rows) {
        const Relation found = relate(row.launch, row.launchRise, row.capture, row.captureRise);
        EXPECT_EQ(found.setup, row.setup) << row.launch.period << " to " << row.capture.period;
        EXPECT_EQ(found.hold, row.hold) << row.launch.period << " to " << row.capture.period;
        EXPECT_FALSE(found.cutOff);
    }
}

// All pairs of edges over the common period.
Relation search(Time launchEdge, Time launchPeriod, Time captureEdge, Time capturePeriod) {
    const Time common = std::lcm(launchPeriod, capturePeriod);
    Relation found{2 * common, -2 * common, 0, 0, false};
    for (Time launch = launchEdge; launch < launchEdge + common; launch += launchPeriod)
        for (Time capture = captureEdge - 2 * common; capture < captureEdge + 3 * common;
             capture += capturePeriod) {
            const Time difference = capture - launch;
            if (difference > 0)
                found.setup = std::min(found.setup, difference);
            else
                found.hold = std::max(found.hold, difference);
        }
    return found;
}

TEST(Relations, OfAllSmallPeriodsAreThoseOfASearch) {
    constexpr Time largest = 20;
    unsigned pairs = 0;
    for (Time launchPeriod = 1; launchPeriod <= largest; ++launchPeriod)
        for (Time capturePeriod = 1; capturePeriod <= largest; ++capturePeriod)
            for (Time launchEdge = 0; launchEdge < launchPeriod; ++launchEdge)
                for (Time captureEdge = 0; captureEdge < capturePeriod; ++captureEdge, ++pairs) {
                    const Relation expected = search(launchEdge, launchPeriod, captureEdge, capturePeriod);
                    const Relation found = relate(clockOf(launchPeriod, launchEdge, 0), true,
                                                  clockOf(capturePeriod, captureEdge, 0), true);
                    const auto isCapture = [&](Time time) {
                        return (time - captureEdge) % capturePeriod == 0;
                    };
                    const bool right = found.setup == expected.setup && found.hold == expected.hold &&
                                       (found.setupLaunch - launchEdge) % launchPeriod == 0 &&
                                       (found.holdLaunch - launchEdge) % launchPeriod == 0 &&
                                       isCapture(found.setupLaunch + found.setup) &&
                                       isCapture(found.holdLaunch + found.hold) && !found.cutOff;
                    ASSERT_TRUE(right) << launchEdge << "/" << launchPeriod << " to " << captureEdge << "/"
                                       << capturePeriod << ": " << found.setup << " " << found.hold;
                }
    EXPECT_EQ(pairs, 44'100U); // the square of 1 + ... + 20
}

TEST(Relations, AreCutOffBeyondAThousandEdgesOfTheFasterClock) {
    struct CutRow {
        Time launch, capture;
        Time setup, hold;
        bool cutOff;
    };
    const CutRow rows[] = {
        // A thousand edges exactly.
        {1000, 1, 1, 0, false},
        {1000, 1001, 1, 0, true},
        {1001, 1000, 1, 0, true},
        // From 10,000 k to 9,999 (k + 1): 9,999 - k, least at the last k that is looked at, 999.
        {10'000, 9'999, 9'000, 0, true},
        // From 9,999 k to the next of 10,000: k, from k = 1 on.
        {9'999, 10'000, 1, 0, true},
        // Long periods that meet after a thousand edges.
        {1'000'000, 999'000, 1'000, 0, false},
    };
    for (const CutRow& row : rows) {
        const Relation found = relate(clockOf(row.launch, 0, 1), true, clockOf(row.capture, 0, 1), true);
        EXPECT_EQ(found.setup, row.setup) << row.launch << " to " << row.capture;
        EXPECT_EQ(found.hold, row.hold) << row.launch << " to " << row.capture;
        EXPECT_EQ(found.cutOff, row.cutOff) << row.launch << " to " << row.capture;
    }
}

} // namespace
