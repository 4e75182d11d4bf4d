// The framework's small services: run status, random numbers, text, the debug switch.
#include "tests/support/Recorder.h"

#include "Ruvex/Random.h"
#include "Ruvex/Status.h"
#include "tests/support/Rows.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace Contract {

namespace {

using namespace Ruvex;

TEST(Status, Labels) {
    struct {
        Status status;
        int code;
        const char* label;
    } const rows[] = {
        {Status(Status::Unknown), 0, "unknown"},
        {Status(Status::Ready), 1, "ready"},
        {Status(Status::Running), 2, "not completed"},
        {Status(Status::Completed), 3, "completed"},
        {Status(static_cast<Status::Code>(2)), 2, "not completed"},
    };
    Status assigned(Status::Unknown);
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(row.status.getCode(), row.code);
        EXPECT_EQ(row.status._getLabel(), row.label);
        assigned = row.status;
        EXPECT_EQ(assigned._getLabel(), row.label);
    }
    assigned = Status::Completed;
    EXPECT_EQ(assigned.getCode(), 3);
}

TEST(Random, RepeatsBySeed) {
    const auto draw = [](unsigned long seed) {
        setRandomSeed(seed);
        std::vector<unsigned long> values;
        for (int i = 0; i < 1000; ++i)
            values.push_back(getRandomValue());
        return values;
    };
    const unsigned long seeds[] = {getDefaultSeed(), 0, 1, 2, ~0UL};
    std::set<std::vector<unsigned long>> sequences;
    for (unsigned long seed : seeds) {
        const auto first = draw(seed);
        EXPECT_EQ(draw(seed), first) << seed;
        EXPECT_GT(std::set<unsigned long>(first.begin(), first.end()).size(), 990u);
        sequences.insert(first);
    }
    EXPECT_EQ(sequences.size(), std::size(seeds));
    EXPECT_EQ(getDefaultSeed(), getDefaultSeed());
    setRandomSeed(getDefaultSeed());
}

// Every one of the 64 bits is set in about half of 2000 values (within six standard deviations).
TEST(Random, UsesAllBits) {
    setRandomSeed(getDefaultSeed());
    std::vector<int> counts(64);
    for (int i = 0; i < 2000; ++i) {
        const unsigned long value = getRandomValue();
        for (std::size_t bit = 0; bit < counts.size(); ++bit)
            counts[bit] += static_cast<int>(value >> bit & 1);
    }
    for (int count : counts)
        EXPECT_NEAR(count, 1000, 135);
    setRandomSeed(getDefaultSeed());
}

TEST(Text, Lowered) {
    struct {
        const char* text;
        const char* lowered;
    } const rows[] = {
        {"", ""},
        {"Exhaustive", "exhaustive"},
        {"ABCXYZ", "abcxyz"},
        {"abcxyz", "abcxyz"},
        {"@[`{ 09-_/[]", "@[`{ 09-_/[]"},
        {"\xC3\x84 \xC3\xA4", "\xC3\x84 \xC3\xA4"}, // letters outside ASCII are not changed
        {"A\tB\nC", "a\tb\nc"},
    };
    for (const auto& [text, lowered] : rows) {
        SCOPED_TRACE(text);
        EXPECT_EQ(getLowered(text), lowered);
    }
    EXPECT_EQ(getLowered(std::string("A\0B", 3)), std::string("a\0b", 3));
}

TEST(Debug, IsOffAtStartAndSwitches) {
    EXPECT_FALSE(isDebug());
    {
        const Support::DebugMode on(true);
        EXPECT_TRUE(isDebug());
        const Support::DebugMode off(false);
        EXPECT_FALSE(isDebug());
    }
    EXPECT_FALSE(isDebug());
}

} // namespace

} // namespace Contract
