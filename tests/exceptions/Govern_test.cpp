// Which of hand-made matches governs. Precedence_test.cpp has every pair of kinds and forms over whole runs.
#include "exceptions/Govern.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Base::Side;
using Design::ExceptionId;
using Exceptions::By;
using Exceptions::BySet;
using Exceptions::Match;
using Exceptions::Requirement;
using Exceptions::Variant;
using Kind = Design::Exception::Kind;

// An exception, and the variant of it that covers the path.
struct Given {
    Design::Exception exception;
    BySet from = {}, to = {}; // by which objects it names the ends
};

Design::Exception exception(Kind kind, int value = 0) {
    Design::Exception stated;
    stated.kind = kind;
    stated.multiplier = value;
    stated.value = Base::Decimal(value);
    return stated;
}
Design::Exception maxDelay(int value) {
    Design::Exception stated = exception(Kind::maxDelay, value);
    stated.hold = false;
    return stated;
}
Design::Exception minDelay(int value) {
    Design::Exception stated = exception(Kind::minDelay, value);
    stated.setup = false;
    return stated;
}
Design::Exception falsePath(bool setup = true, bool hold = true) {
    Design::Exception stated = exception(Kind::falsePath);
    stated.setup = setup;
    stated.hold = hold;
    return stated;
}
Design::Exception multicycle(int count) { return exception(Kind::multicycle, count); }
Design::Exception ofSide(Side side, int count) {
    Design::Exception stated = multicycle(count);
    (side == Side::setup ? stated.hold : stated.setup) = false;
    stated.flagged = true;
    return stated;
}
Design::Exception atLaunch(Design::Exception stated) {
    stated.start = true;
    return stated;
}

// "setup false by 0, hold shift 10 by 1": what is required, and the position of the exception that governs.
// The launch period is 10 ps, the capture period 7 ps, delays are in ns.
std::string outcome(const std::vector<Given>& given) {
    Design::Constraints constraints;
    constraints.files = {"d.sdc"};
    std::vector<Variant> variants(given.size());
    std::vector<Match> matches;
    for (std::size_t i = 0; i < given.size(); ++i) {
        constraints.exceptions.push_back(given[i].exception);
        Variant& variant = variants[i];
        variant.exception = ExceptionId(static_cast<std::uint32_t>(i));
        if (!given[i].from.isEmpty())
            variant.from.points.add(Design::PinId(0), By::pin);
        if (!given[i].to.isEmpty())
            variant.to.points.add(Design::PinId(1), By::pin);
        matches.push_back({&variant, given[i].from, given[i].to, {{}}});
    }
    const Requirement requirement = Exceptions::govern(matches, {10, 7}, constraints, -12);
    std::string text;
    for (const Side side : Base::bothSides) {
        text += side == Side::setup ? "setup " : ", hold ";
        text += requirement.isFalse[side] ? "false"
                : requirement.delay[side] ? "delay " + std::to_string(*requirement.delay[side])
                                          : "shift " + std::to_string(requirement.shift[side]);
        if (requirement.exception[side] != Base::none)
            text += " by " + std::to_string(requirement.exception[side].number());
    }
    return text +
           (requirement.group == Base::none ? "" : ", group " + std::to_string(requirement.group.number()));
}

TEST(Govern, Table) {
    struct Row {
        const char* name;
        std::vector<Given> given;
        const char* expected;
    };
    const BySet cell = By::cell, pin = By::pin;
    const Row rows[] = {
        {"nothing", {}, "setup shift 0, hold shift 0"},
        // By kind.
        {"a false path before a delay",
         {{falsePath()}, {maxDelay(5), pin}},
         "setup false by 0, hold false by 0"},
        {"a delay before a multicycle",
         {{maxDelay(5)}, {multicycle(2), pin}},
         "setup delay 5000 by 0, hold shift 7 by 1"},
        {"each side by itself",
         {{falsePath(true, false)}, {minDelay(3)}},
         "setup false by 0, hold delay 3000 by 1"},
        // How specific they are.
        {"a start point", {{maxDelay(5), pin}, {maxDelay(4)}}, "setup delay 5000 by 0, hold shift 0"},
        {"a start point before an end point",
         {{maxDelay(5), pin}, {maxDelay(4), {}, pin}},
         "setup delay 5000 by 0, hold shift 0"},
        // The last on identical objects, the tightest on others.
        {"the last", {{maxDelay(4), cell}, {maxDelay(5), cell}}, "setup delay 5000 by 1, hold shift 0"},
        {"the tightest", {{maxDelay(4), cell}, {maxDelay(5), pin}}, "setup delay 4000 by 0, hold shift 0"},
        {"a later one on one of two objects",
         {{maxDelay(4), cell | pin}, {maxDelay(5), cell}},
         "setup delay 4000 by 0, hold shift 0"},
        {"a later one on both objects",
         {{maxDelay(4), cell}, {maxDelay(4), pin}, {maxDelay(5), cell | pin}},
         "setup delay 5000 by 2, hold shift 0"},
        {"the greatest minimum delay",
         {{minDelay(3), cell}, {minDelay(2), pin}},
         "setup shift 0, hold delay 3000 by 0"},
        // Multicycles: setup moves hold too, then hold moves back.
        {"both sides", {{multicycle(3)}}, "setup shift 14 by 0, hold shift 14 by 0"},
        {"launch periods", {{atLaunch(multicycle(3))}}, "setup shift 20 by 0, hold shift 20 by 0"},
        {"setup alone", {{ofSide(Side::setup, 3)}}, "setup shift 14 by 0, hold shift 14 by 0"},
        {"hold alone", {{ofSide(Side::hold, 1)}}, "setup shift 0, hold shift -10 by 0"},
        {"setup and hold",
         {{ofSide(Side::setup, 3)}, {ofSide(Side::hold, 1)}},
         "setup shift 14 by 0, hold shift 4 by 1"},
        {"one for a side before one for both",
         {{ofSide(Side::setup, 2)}, {multicycle(5)}},
         "setup shift 7 by 0, hold shift 7 by 1"},
        {"the fewest cycles",
         {{multicycle(4), cell}, {multicycle(3), pin}},
         "setup shift 14 by 1, hold shift 14 by 0"},
        // Path groups, apart from the others.
        {"a group",
         {{exception(Kind::pathGroup)}, {falsePath()}},
         "setup false by 1, hold false by 1, group 0"},
        {"the last group",
         {{exception(Kind::pathGroup)}, {exception(Kind::pathGroup)}},
         "setup shift 0, hold shift 0, group 1"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(outcome(row.given), row.expected) << row.name;
}

} // namespace
