#include "exceptions/Levels.h"

#include "tests/exceptions/Small.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace {

using Exceptions::Levels;
using Exceptions::Nodes;
using Support::Small;

// "g/Z h/A"
Nodes nodes(const Small& small, const std::string& names) {
    Nodes found;
    std::istringstream in(names);
    for (std::string name; in >> name;)
        found.push_back(small.node(name));
    std::ranges::sort(found);
    return found;
}

TEST(Levels, LongestWays) {
    const Small small("");
    const Levels levels(*small.built.network);
    const std::pair<const char*, std::uint32_t> rows[] = {{"r0/Q", 0}, {"g/A", 1}, {"g/Z", 2}, {"w/A", 3},
                                                          {"w/B", 1},  {"w/Z", 4}, {"h/Z", 6}, {"r2/D", 7}};
    for (const auto& [name, level] : rows)
        EXPECT_EQ(levels[small.node(name)], level) << name;
}

TEST(Levels, Reaches) {
    const Small small("");
    const Levels levels(*small.built.network);
    struct Row {
        const char *from, *to;
        bool expected;
    };
    const Row rows[] = {
        {"g/Z", "h/Z", true},  {"h/Z", "g/Z", false},        {"g/Z", "w/B", false},
        {"g/Z", "g/Z", false}, {"w/B g/A", "g/Z w/A", true}, {"r2/Q", "r0/Q", false},
        {"r2/Q", "q", true},   {"r1/Q", "w/A g/Z", false}, // not through a register
    };
    for (const Row& row : rows)
        EXPECT_EQ(levels.reaches(nodes(small, row.from), nodes(small, row.to)), row.expected)
            << row.from << " to " << row.to;
}

TEST(Levels, Antichains) {
    const Small small("");
    const Levels levels(*small.built.network);
    const std::pair<const char*, bool> rows[] = {
        {"g/Z", true}, {"g/A w/B", true}, {"w/B g/Z", true}, {"g/A w/Z", false}, {"g/Z w/B h/A", false}};
    for (const auto& [names, expected] : rows)
        EXPECT_EQ(levels.isAntichain(nodes(small, names)), expected) << names;
}

} // namespace
