#include "exceptions/Variant.h"

#include <gtest/gtest.h>

namespace {

using Design::ClockId;
using Design::PinId;
using Design::Transition;
using Exceptions::By;
using Exceptions::BySet;
using Exceptions::NamedPins;
using Exceptions::Variant;

TEST(Variant, SinglesOfASet) {
    EXPECT_EQ((By::net | By::clockPin).singles(), (std::vector<BySet>{By::clockPin, By::net}));
    EXPECT_EQ(BySet(By::pin).singles(), std::vector<BySet>{By::pin});
    EXPECT_EQ(BySet().singles(), std::vector<BySet>{BySet()});
    EXPECT_TRUE((BySet(By::pin) & By::cell).isEmpty());
}

TEST(Variant, NamedPinsAreKeptOnce) {
    NamedPins named;
    named.add(PinId(7), By::pin);
    named.add(PinId(3), By::cell);
    named.add(PinId(7), By::cell);
    named.sort();
    EXPECT_EQ(named.pins, (std::vector{PinId(3), PinId(7)}));
    EXPECT_EQ(named.by, (std::vector<BySet>{By::cell, By::pin | By::cell}));
}

// An end covers what it names, at the edge that it asks for.
TEST(Variant, EndsCover) {
    struct Row {
        const char* name;
        bool isGiven;
        std::vector<ClockId> clocks;
        Transition edge;
        BySet namedBy;
        ClockId clock;
        bool rise, expected;
    };
    const ClockId a(0), b(1), none;
    const Row rows[] = {
        {"nothing asked", false, {}, Transition::any, {}, a, true, true},
        {"a point that is named", true, {}, Transition::any, By::cell, a, true, true},
        {"a point that is not named", true, {}, Transition::any, {}, a, true, false},
        {"a clock of the list", true, {a}, Transition::any, {}, a, false, true},
        {"another clock", true, {a}, Transition::any, {}, b, true, false},
        {"no clock", true, {a}, Transition::any, {}, none, true, false},
        {"the edge", true, {a}, Transition::rise, {}, a, true, true},
        {"the other edge", true, {a}, Transition::rise, {}, a, false, false},
        {"the falling edge", true, {a}, Transition::fall, {}, a, false, true},
    };
    for (const Row& row : rows) {
        const Variant::End end{row.isGiven, {}, row.clocks, row.edge};
        EXPECT_EQ(end.covers(row.namedBy, row.clock, row.rise), row.expected) << row.name;
    }
}

// From the most to the least specific.
TEST(Variant, Ranks) {
    enum : unsigned { start = 16, end = 8, through = 4, launch = 2, capture = 1 };
    unsigned before = 32;
    for (const unsigned parts :
         {start | through | end, start | end, start | through | capture, start | through, start | capture,
          unsigned{start}, launch | through | end, through | end, launch | end, unsigned{end},
          launch | through | capture, launch | through, through | capture, unsigned{through},
          launch | capture, unsigned{launch}, unsigned{capture}, 0U}) {
        Variant variant;
        if ((parts & start) != 0)
            variant.from.points.add(PinId(0), By::pin);
        if ((parts & end) != 0)
            variant.to.points.add(PinId(0), By::pin);
        if ((parts & through) != 0)
            variant.throughs.emplace_back();
        if ((parts & launch) != 0)
            variant.from.clocks.emplace_back(0U);
        if ((parts & capture) != 0)
            variant.to.clocks.emplace_back(0U);
        EXPECT_LT(variant.rank(), before) << parts;
        before = variant.rank();
    }
}

} // namespace
