#include "exceptions/Matcher.h"

#include "tests/exceptions/Example.h"

#include <gtest/gtest.h>

namespace {

using Exceptions::By;
using Exceptions::ClassSet;
using Exceptions::Key;
using Exceptions::Match;
using Exceptions::Matcher;
using Support::Small;

std::string variantsOf(const Small& small, const std::vector<Match>& matches) {
    std::string text;
    for (const Match& match : matches)
        text += (text.empty() ? "" : " ") + std::to_string(match.variant - small.resolved.variants.data());
    return text;
}

TEST(Matcher, Example) {
    const Small small(Support::exampleScript);
    Matcher matcher(small.resolved.variants, small.encoding);
    for (const Support::ExamplePath& path : Support::examplePaths())
        EXPECT_EQ(variantsOf(small, matcher.matches(path.key)), path.matches) << path.name;
}

TEST(Matcher, ByWhichObjects) {
    const Small small("set_false_path -from {r0 r0/C} -through [list [get_cells g] g/Z] -to r2/D");
    Matcher matcher(small.resolved.variants, small.encoding);
    Key key;
    key.edges = {Small::a, Small::a};
    key.start = small.startNumber("r0/C");
    key.end = small.encoding.numbers().numberOf(small.pin("r2/D"));
    key.throughs = ClassSet(0b10); // class 0 is that of the start number
    const std::vector<Match> matches = matcher.matches(key);
    ASSERT_EQ(variantsOf(small, matches), "0");
    EXPECT_EQ(matches[0].from, By::cell | By::pin);
    EXPECT_EQ(matches[0].to, By::pin);
    // Only this list holds g/Z, so it makes no difference which of the two objects names it.
    ASSERT_EQ(matches[0].passed.size(), 1U);
    EXPECT_EQ(matches[0].passed[0], Exceptions::Combination{{Exceptions::AtomId(0)}});
}

// Clock edges and the order of through points. Class 0 is g/Z, class 1 h/Z.
TEST(Matcher, Table) {
    struct Row {
        const char* script;
        Exceptions::ClockEdges edges;
        std::uint64_t throughs;
        const char* expected;
    };
    const Design::ClockId a = Small::a, b = Small::b, none;
    const Row rows[] = {
        {"set_false_path -from [get_clocks a]", {a, b}, 0, "0"},
        {"set_false_path -from [get_clocks a]", {b, a}, 0, ""},
        {"set_false_path -from [get_clocks a]", {none, a}, 0, ""},
        {"set_false_path -to [get_clocks {a b}]", {none, b}, 0, "0"},
        {"set_false_path -rise_from [get_clocks a]", {a, a, true, false}, 0, "0"},
        {"set_false_path -fall_from [get_clocks a]", {a, a, true, false}, 0, ""},
        {"set_false_path -fall_to [get_clocks a]", {a, a, true, false}, 0, "0"},
        {"set_false_path -through g/Z -through h/Z", {a, a}, 0b11, "0"},
        {"set_false_path -through g/Z -through h/Z", {a, a}, 0b01, ""},
        {"set_false_path -through g/Z -through h/Z", {a, a}, 0b10, ""},
        {"set_false_path -through h/Z -through g/Z", {a, a}, 0b11, ""},
    };
    for (const Row& row : rows) {
        const Small small(row.script);
        Key key;
        key.edges = row.edges;
        key.throughs = ClassSet(row.throughs);
        EXPECT_EQ(variantsOf(small, Matcher(small.resolved.variants, small.encoding).matches(key)),
                  row.expected)
            << row.script << " " << row.throughs;
    }
}

} // namespace
