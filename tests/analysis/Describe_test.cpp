// The words of reports.
#include "analysis/Describe.h"

#include <gtest/gtest.h>

namespace {

using Analysis::describe;
using Kind = Design::Exception::Kind;

TEST(Describe, Exceptions) {
    Design::Exception exception;
    exception.multiplier = 3;
    exception.value = *Base::Decimal::parse("2.50");
    exception.group = "fast";
    exception.origin = {Design::FileId(1), 7};
    Design::Constraints constraints;
    constraints.files = {"a.sdc", "b.sdc"};
    struct Row {
        Kind kind;
        const char *name, *value;
    };
    const Row rows[] = {
        {Kind::falsePath, "false_path", ""},     {Kind::multicycle, "multicycle_path", "3"},
        {Kind::maxDelay, "max_delay", "2.5"},    {Kind::minDelay, "min_delay", "2.5"},
        {Kind::pathGroup, "path_group", "fast"},
    };
    for (const Row& row : rows) {
        exception.kind = row.kind;
        const Report::Exception described = describe(constraints, exception);
        EXPECT_EQ(described.file, "b.sdc");
        EXPECT_EQ(described.line, 7U);
        EXPECT_EQ(described.kind, row.name);
        EXPECT_EQ(described.value, row.value);
    }
}

TEST(Describe, StartPoints) {
    using Model::Start;
    struct Row {
        Start::Kind kind;
        bool rise;
        const char *clock, *expected;
    };
    const Row rows[] = {
        {Start::Kind::reg, true, "c", "rising edge-triggered register clocked by c"},
        {Start::Kind::reg, false, "c", "falling edge-triggered register clocked by c"},
        {Start::Kind::clockSource, false, "c", "falling edge of clock source c"},
        {Start::Kind::port, true, "c", "input port clocked by c"},
        {Start::Kind::port, true, "", "input port"},
    };
    for (const Row& row : rows) {
        Start start;
        start.kind = row.kind;
        start.rise = row.rise;
        EXPECT_EQ(describe(start, row.clock), row.expected);
    }
}

TEST(Describe, EndPoints) {
    Model::End port, check;
    check.clockPin = Design::PinId(4U);
    check.rise = false;
    EXPECT_EQ(describe(check, "c"), "falling edge-triggered register clocked by c");
    EXPECT_EQ(describe(port, "c"), "output port clocked by c");
    EXPECT_EQ(describe(port, ""), "output port");
}

} // namespace
