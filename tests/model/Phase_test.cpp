// Division of times by periods, on both sides of 0.
#include "model/Phase.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using Model::Time;

TEST(Phase, RoundsAlikeOnBothSidesOfZero) {
    struct Row {
        Time time, period;
        Time phase, floor, ceiling, nearest;
    };
    const Row rows[] = {
        {0, 10, 0, 0, 0, 0},      {1, 10, 1, 0, 1, 0},      {9, 10, 9, 0, 1, 1},
        {10, 10, 0, 1, 1, 1},     {-1, 10, 9, -1, 0, 0},    {-9, 10, 1, -1, 0, -1},
        {-10, 10, 0, -1, -1, -1}, {-11, 10, 9, -2, -1, -1}, {5, 10, 5, 0, 1, 1}, // halves upwards
        {-5, 10, 5, -1, 0, 0},                                                   // here too
        {-15, 10, 5, -2, -1, -1}, {7, 1, 0, 7, 7, 7},       {-7, 1, 0, -7, -7, -7},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::to_string(row.time) + " / " + std::to_string(row.period));
        EXPECT_EQ(Model::phaseOf(row.time, row.period), row.phase);
        EXPECT_EQ(Model::floorOf(row.time, row.period), row.floor);
        EXPECT_EQ(Model::ceilingOf(row.time, row.period), row.ceiling);
        EXPECT_EQ(Model::nearestOf(row.time, row.period), row.nearest);
    }
}

TEST(Phase, AgreesWithTheFloatingPoint) {
    for (Time period = 1; period <= 12; ++period)
        for (Time time = -50; time <= 50; ++time) {
            SCOPED_TRACE(std::to_string(time) + " / " + std::to_string(period));
            const double quotient = static_cast<double>(time) / static_cast<double>(period);
            EXPECT_EQ(static_cast<double>(Model::floorOf(time, period)), std::floor(quotient));
            EXPECT_EQ(static_cast<double>(Model::ceilingOf(time, period)), std::ceil(quotient));
            EXPECT_EQ(Model::floorOf(time, period) * period + Model::phaseOf(time, period), time);
        }
}

} // namespace
