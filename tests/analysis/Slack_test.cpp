// The one slack: every term on both sides, with its sign.
#include "analysis/Slack.h"

#include <gtest/gtest.h>

namespace {

using Analysis::Side;
using Analysis::SlackTerms;
using Analysis::Time;

// Setup at 10000, with data at 7000: each term moves the slack by its own value.
TEST(Slack, EachTermHasItsSign) {
    struct Row {
        const char* what;
        SlackTerms terms;
        Time setupRequired, setup;
        Time holdRequired, hold;
    };
    const Row rows[] = {
        {"the relation alone", {7000, 10000, 0, 0, 0, 0}, 10000, 3000, 10000, -3000},
        {"data is later", {7001, 10000, 0, 0, 0, 0}, 10000, 2999, 10000, -2999},
        {"the capture clock is late", {7000, 10000, 20, 0, 0, 0}, 10020, 3020, 10020, -3020},
        {"uncertainty is against both", {7000, 10000, 0, 30, 0, 0}, 9970, 2970, 10030, -3030},
        {"a check is against both", {7000, 10000, 0, 0, 40, 0}, 9960, 2960, 10040, -3040},
        {"an output delay is ahead of the data", {7000, 10000, 0, 0, 0, 50}, 9950, 2950, 9950, -2950},
        {"a negative output delay", {7000, 10000, 0, 0, 0, -50}, 10050, 3050, 10050, -3050},
        {"all", {7000, 10000, 20, 30, 40, 50}, 9900, 2900, 10040, -3040},
        {"hold of one edge", {130, 0, 20, 30, 40, 0}, -50, -180, 90, 40},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(requiredTime(Side::setup, row.terms), row.setupRequired);
        EXPECT_EQ(slackOf(Side::setup, row.terms), row.setup);
        EXPECT_EQ(requiredTime(Side::hold, row.terms), row.holdRequired);
        EXPECT_EQ(slackOf(Side::hold, row.terms), row.hold);
    }
}

// The engine adds the setup value to the arrival, and takes the hold value from it.
TEST(Slack, ACheckMayBePartOfTheArrival) {
    for (const Time check : {-7, 0, 40}) {
        const SlackTerms apart{7000, 10000, 20, 30, check, 50};
        SlackTerms setup = apart, hold = apart;
        setup.check = hold.check = 0;
        setup.arrival += check;
        hold.arrival -= check;
        EXPECT_EQ(slackOf(Side::setup, setup), slackOf(Side::setup, apart));
        EXPECT_EQ(slackOf(Side::hold, hold), slackOf(Side::hold, apart));
    }
}

} // namespace
