// Interned names: each text once, by number, for ever at the same place.
#include "base/Names.h"
#include "tests/support/Rows.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <unordered_map>

using Base::Name;
using Base::Names;

namespace {

using namespace std::string_view_literals;

TEST(Names, NumbersTextsInTheOrderTheyCome) {
    Names names;
    const struct {
        std::string_view text;
        std::uint32_t number;
        std::size_t size;
    } rows[] = {
        {"clk", 0, 1}, {"D", 1, 2},     {"clk", 0, 2},   {"", 2, 3},  {"", 2, 3},
        {"d", 3, 4},   {"D\0"sv, 4, 5}, {"in[3]", 5, 6}, {"D", 1, 6},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EQ(names.add(row.text), Name{row.number}) << row.text;
        EXPECT_EQ(names.size(), row.size) << row.text;
        EXPECT_EQ(names[Name{row.number}], row.text);
    }
}

TEST(Names, FindsOnlyWhatWasAdded) {
    Names names;
    EXPECT_EQ(names.find("clk"), std::nullopt);
    EXPECT_EQ(names.find(""), std::nullopt);
    names.add("clk");
    EXPECT_EQ(names.find("clk"), Name{0});
    EXPECT_EQ(names.find("cl"), std::nullopt);
    EXPECT_EQ(names.find("clk "), std::nullopt);
    EXPECT_EQ(names.find(""), std::nullopt);
    EXPECT_EQ(names.size(), 1U);
}

TEST(Names, KeepsTextsOfAnyLength) {
    Names names;
    std::string text;
    for (const std::size_t size : {1U, 65'535U, 65'536U, 65'537U, 1'000'000U, 3U}) {
        SCOPED_TRACE(size);
        text.assign(size, static_cast<char>('a' + size % 26));
        const Name name = names.add(text);
        EXPECT_TRUE(names[name] == text) << size;
        EXPECT_EQ(names.find(text), name);
    }
}

TEST(Names, TakesATextOfItsOwn) {
    Names names;
    const Name name = names.add("counter");
    EXPECT_EQ(names.add(names[name]), name);
    EXPECT_EQ(names.add(names[name].substr(0, 5)), Name{1});
    EXPECT_EQ(names[Name{1}], "count");
}

TEST(Names, MeansTheSameAsAMap) {
    constexpr unsigned seed = 13;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    Names names;
    std::unordered_map<std::string, Name> reference;
    std::vector<std::string_view> views; // must never move
    for (int i = 0; i < 200'000; ++i) {
        const std::string text = "u" + std::to_string(random() % 50'000);
        const auto [entry, isNew] =
            reference.emplace(text, Name{static_cast<std::uint32_t>(reference.size())});
        const std::optional<Name> before = names.find(text);
        ASSERT_EQ(before, isNew ? std::nullopt : std::optional(entry->second)) << text;
        ASSERT_EQ(names.add(text), entry->second) << text;
        if (isNew)
            views.push_back(names[entry->second]);
    }
    ASSERT_EQ(names.size(), reference.size());
    for (const auto& [text, name] : reference) {
        EXPECT_EQ(names[name], text);
        EXPECT_EQ(views[static_cast<std::size_t>(name)].data(), names[name].data());
    }
}

} // namespace
