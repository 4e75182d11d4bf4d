// The period that a clock achieves, from the latest arrivals of its same-clock subdomains.
#include "tests/support/Builder.h"
#include "tests/support/Thrown.h"

#include <gtest/gtest.h>

using Pelko::analyzer;
using Pelko::ClockMode;
using Pelko::Delay;
using Pelko::Pole;
using Support::falling;
using Support::maximum;
using Support::minimum;
using Support::Names;
using Support::none;
using Support::rising;
using Support::undefined;

namespace {

class Period : public testing::Test {
protected:
    Pelko::Subdomain* add(Pole* launch, Pole* latch, ClockMode::Code launchMode, ClockMode::Code latchMode,
                          int arrival) {
        Pelko::Subdomain* subdomain = design_.addSubdomain(launch, latch, launchMode, latchMode);
        subdomain->setLAT(Delay(arrival));
        return subdomain;
    }
    static Names decisive() {
        Names names;
        for (const Pelko::Domain* domain : analyzer->getDomains())
            for (const Pelko::Subdomain* subdomain : domain->getSubdomains())
                if (subdomain->isDecisive())
                    names.push_back(subdomain->getName());
        return names;
    }

    Support::Builder design_;
    Support::ToolPointer tool_ = Support::makeTool();
    Pole* clk_ = design_.addClockSource("clk");
};

struct ArrivalRow {
    unsigned long dutyRatio;
    ClockMode::Code launch, latch;
    int arrival;
    int period;
};

TEST_F(Period, OneSubdomain) {
    const ArrivalRow rows[] = {
        {50, rising, falling, 7, 14},
        {50, falling, rising, 7, 14},
        {50, rising, rising, 7, 7},
        {50, falling, falling, 7, 7},
        {50, none, rising, 7, 7},
        {50, none, falling, 7, 7},
        {50, rising, none, 7, 7},
        {50, falling, none, 7, 7},
        {50, none, none, 7, 7},
        // Only whole phases count: 100 / 40 counts as 2, 100 / 60 as 1.
        {40, rising, falling, 7, 14},
        {40, falling, rising, 7, 7},
        {60, rising, falling, 7, 7},
        {60, falling, rising, 7, 14},
        {33, rising, falling, 7, 21},
        {34, rising, falling, 7, 14},
        {67, falling, rising, 7, 21},
        {1, rising, falling, 7, 700},
        {1, falling, rising, 7, 7},
        {99, falling, rising, 7, 700},
        {99, rising, falling, 7, 7},
        {50, rising, falling, 0, 0},
        {50, rising, falling, -7, -14},
        // A result outside of the range becomes the special at that end; a special is not scaled.
        {50, rising, falling, 1'073'741'823, 2'147'483'646},
        {50, rising, falling, 1'073'741'824, maximum},
        {1, rising, falling, 2'147'483'646, maximum},
        {50, rising, falling, maximum, maximum},
        {50, rising, rising, maximum, maximum},
    };
    for (const ArrivalRow& row : rows) {
        analyzer->setDutyRatio(clk_, row.dutyRatio);
        const Pelko::Subdomain* subdomain = add(clk_, clk_, row.launch, row.latch, row.arrival);
        SCOPED_TRACE(testing::Message() << subdomain->getName() << ", duty ratio " << row.dutyRatio);
        EXPECT_EQ(int(tool_->calculatePeriod(clk_)), row.period);
        EXPECT_TRUE(subdomain->isDecisive());
        analyzer->getDomain(clk_, clk_)->destroy();
    }
}

// Arrivals that ask for no period.
TEST_F(Period, NoArrival) {
    for (const int arrival : {undefined, minimum}) {
        SCOPED_TRACE(arrival);
        const Pelko::Subdomain* same = add(clk_, clk_, rising, rising, arrival);
        const Pelko::Subdomain* opposite = add(clk_, clk_, rising, falling, arrival);
        EXPECT_EQ(tool_->calculatePeriod(clk_), Delay::getUndefined());
        EXPECT_FALSE(same->isDecisive());
        EXPECT_FALSE(opposite->isDecisive());
    }
    // Negative arrivals, outside of the range: below every candidate.
    add(clk_, clk_, rising, falling, -1'500'000'000);
    EXPECT_EQ(tool_->calculatePeriod(clk_), Delay::getUndefined());
    EXPECT_EQ(decisive(), Names{});
}

TEST_F(Period, TheLargestDecides) {
    add(clk_, clk_, rising, rising, 13);
    add(clk_, clk_, rising, falling, 7);
    add(clk_, clk_, falling, rising, 6);
    EXPECT_EQ(int(tool_->calculatePeriod(clk_)), 14);
    EXPECT_EQ(decisive(), Names{"clk:rising -> clk:falling"});
}

TEST_F(Period, TiesKeepTheEarlier) {
    add(clk_, clk_, rising, falling, 7);
    add(clk_, clk_, rising, rising, 14);
    add(clk_, clk_, falling, rising, 7);
    EXPECT_EQ(int(tool_->calculatePeriod(clk_)), 14);
    EXPECT_EQ(decisive(), Names{"clk:rising -> clk:falling"});
}

TEST_F(Period, OnlySameClockDomainsCount) {
    Pole* other = design_.addClockSource("other");
    add(clk_, other, rising, rising, 100);
    add(other, clk_, rising, rising, 100);
    add(nullptr, clk_, none, rising, 100);
    add(clk_, nullptr, rising, none, 100);
    add(other, other, rising, rising, 100);
    EXPECT_EQ(tool_->calculatePeriod(clk_), Delay::getUndefined());
    EXPECT_EQ(decisive(), Names{});
    add(clk_, clk_, rising, rising, 3);
    EXPECT_EQ(int(tool_->calculatePeriod(clk_)), 3);
    EXPECT_EQ(decisive(), Names{"clk:rising -> clk:rising"});
}

TEST_F(Period, DecisiveMarksAreNotTakenBack) {
    Pelko::Subdomain* same = add(clk_, clk_, rising, rising, 9);
    Pelko::Subdomain* opposite = add(clk_, clk_, rising, falling, 4);
    EXPECT_EQ(int(tool_->calculatePeriod(clk_)), 9);
    same->setLAT(Delay(1));
    EXPECT_EQ(int(tool_->calculatePeriod(clk_)), 8);
    EXPECT_TRUE(same->isDecisive());
    EXPECT_TRUE(opposite->isDecisive());
}

// Only the mark is written.
TEST_F(Period, WritesNothingElse) {
    const Pelko::Subdomain* subdomain = add(clk_, clk_, rising, falling, 7);
    tool_->calculatePeriod(clk_);
    EXPECT_EQ(analyzer->getPeriod(clk_), Delay::getUndefined());
    EXPECT_EQ(subdomain->getSetupRelation(), Delay::getUndefined());
    EXPECT_EQ(int(subdomain->getLAT()), 7);
}

TEST_F(Period, NullSource) {
    Support::expectThrown({"null",
                           [this] { tool_->calculatePeriod(nullptr); },
                           typeid(Ruvex::InvalidRequest),
                           "Null clock source",
                           {"Tool", "calculatePeriod", 1255}});
}

} // namespace
