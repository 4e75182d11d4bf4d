// The finder against the plainest search there is: every name of the kind by the pattern.
#include "readers/sdc/Finder.h"

#include "readers/sdc/Interpreter.h"
#include "readers/sdc/Objects.h"
#include "readers/sdc/Options.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

namespace {

using namespace Readers::Sdc;

using Random = std::mt19937;

std::string word(Random& random, std::string_view letters, unsigned longest) {
    std::string text;
    for (auto left = 1 + random() % longest; left != 0; --left)
        text += letters[random() % letters.size()];
    return text;
}

// Cells' pins come in any order, as the connections of an SDF name them.
Design::RoutedDesign makeDesign(Random& random) {
    Design::RoutedDesign design;
    for (int i = 0; i < 60; ++i) {
        const Design::CellId cell =
            design.addCell(design.names.add(word(random, "abc/", 7)), design.names.add("T"));
        design.addPin(cell, design.names.add(word(random, "abQ", 3)));
    }
    for (int i = 0; i < 120; ++i)
        design.addPin(Design::CellId(static_cast<std::uint32_t>(random() % design.cells.size())),
                      design.names.add(word(random, "abQ", 3)));
    design.addPin(Base::none, design.names.add("abc"));
    for (int i = 0; i < 30; ++i)
        design.addNet(design.names.add(word(random, "abc/", 7)));
    design.index();
    design.classify();
    return design;
}

bool matchesAtAnyLevel(const Glob& glob, std::string_view name, bool hierarchical) {
    if (glob.matches(name))
        return true;
    for (std::size_t at = 0; hierarchical && at + 1 < name.size(); ++at)
        if (name[at] == '/' && glob.matches(name.substr(at + 1)))
            return true;
    return false;
}

std::vector<Design::Object> searchPlainly(const Design::RoutedDesign& design, Design::ObjectKind kind,
                                          const std::string& pattern, const FindOptions& options) {
    const std::size_t slash = kind == Design::ObjectKind::pin ? pattern.rfind('/') : std::string::npos;
    const Glob whole(pattern), cells(pattern.substr(0, slash)),
        pins(slash == std::string::npos ? "" : pattern.substr(slash + 1));
    std::vector<Design::Object> found;
    const auto count = kind == Design::ObjectKind::pin    ? design.pins.size()
                       : kind == Design::ObjectKind::cell ? design.cells.size()
                                                          : design.nets.size();
    for (std::uint32_t index = 0; index < count; ++index) {
        const Design::Object object(kind, index);
        if (kind == Design::ObjectKind::pin && design.isPortOfTop(object.pin()))
            continue;
        const std::string name = kind == Design::ObjectKind::pin ? design.pinName(object.pin())
                                 : kind == Design::ObjectKind::cell
                                     ? std::string(design.cellName(object.cell()))
                                     : std::string(design.netName(object.net()));
        const std::size_t last = name.rfind('/');
        const bool matches = slash == std::string::npos
                                 ? matchesAtAnyLevel(whole, name, options.hierarchical)
                                 : matchesAtAnyLevel(cells, name.substr(0, last), options.hierarchical) &&
                                       pins.matches(name.substr(last + 1));
        if (matches)
            found.push_back({kind, index});
    }
    return found;
}

// With a slash, pins come cell by cell.
std::vector<Design::Object> sorted(std::vector<Design::Object> objects) {
    std::ranges::sort(objects);
    return objects;
}

TEST(SdcFinder, AgreesWithThePlainestSearch) {
    constexpr unsigned seed = 2026;
    SCOPED_TRACE(seed);
    Random random(seed);
    int matched = 0;
    for (int round = 0; round < 20; ++round) {
        const Design::RoutedDesign design = makeDesign(random);
        const Design::ClockTable clocks;
        const Finder finder(design, clocks, nullptr);
        for (int i = 0; i < 500; ++i) {
            constexpr std::array kinds = {Design::ObjectKind::pin, Design::ObjectKind::pin,
                                          Design::ObjectKind::cell, Design::ObjectKind::net};
            const Design::ObjectKind kind = kinds[random() % kinds.size()];
            // A star, so that it is not taken as a name.
            const std::string pattern = word(random, "ab/*?cQ", 4) + "*" + word(random, "ab/*?cQ", 4);
            const FindOptions options{.hierarchical = random() % 4 == 0};
            const std::vector<Design::Object> expected = searchPlainly(design, kind, pattern, options);
            for (const char* time : {"first", "second"}) {
                std::vector<Design::Object> found;
                finder.find(kind, pattern, options, found);
                EXPECT_EQ(sorted(found), expected) << pattern << ", asked for the " << time << " time";
                if (pattern.find('/') == std::string::npos) {
                    EXPECT_TRUE(std::ranges::is_sorted(found)) << pattern;
                }
            }
            matched += !expected.empty();
        }
    }
    EXPECT_GT(matched, 2'000);
}

TEST(SdcFinder, KeepsWhatEachQueryFoundApart) {
    Random random(1);
    Design::RoutedDesign design;
    const Design::CellId cell = design.addCell(design.names.add("u/abc"), design.names.add("T"));
    design.addPin(cell, design.names.add("Q"));
    design.addNet(design.names.add("abc"));
    design.index();
    design.classify();
    Design::ClockTable clocks;
    Finder finder(design, clocks, nullptr);
    const auto count = [&](Design::ObjectKind kind, const char* pattern, const FindOptions& options) {
        std::vector<Design::Object> found;
        finder.find(kind, pattern, options, found);
        return found.size();
    };
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(count(Design::ObjectKind::cell, "ab*", {}), 0U);
        EXPECT_EQ(count(Design::ObjectKind::cell, "ab*", {.hierarchical = true}), 1U);
        EXPECT_EQ(count(Design::ObjectKind::cell, "AB*", {.hierarchical = true}), 0U);
        EXPECT_EQ(count(Design::ObjectKind::cell, "AB*", {.ignoreCase = true, .hierarchical = true}), 1U);
        EXPECT_EQ(count(Design::ObjectKind::net, "ab*", {}), 1U);
        EXPECT_EQ(count(Design::ObjectKind::pin, "*ab*", {}), 1U);
        EXPECT_EQ(count(Design::ObjectKind::clock, "ab*", {}), 0U);
    }
    clocks.emplace_back().name = "abc"; // clocks come at any time
    EXPECT_EQ(count(Design::ObjectKind::clock, "ab*", {}), 1U);
    clocks.front().removed = true;
    EXPECT_EQ(count(Design::ObjectKind::clock, "ab*", {}), 0U);
}

// What patterns have found is forgotten from four million objects on, and found again.
TEST(SdcFinder, FindsTheSameWhenItHasForgotten) {
    constexpr std::size_t cells = 50'000;
    Design::RoutedDesign design;
    const Base::Name type = design.names.add("T");
    for (std::size_t i = 0; i < cells; ++i)
        design.addCell(design.names.add("c" + std::to_string(i)), type);
    design.index();
    design.classify();
    const Design::ClockTable clocks;
    const Finder finder(design, clocks, nullptr);
    for (std::size_t round = 0; round < 2; ++round)
        for (std::size_t stars = 1; stars <= 90; ++stars) {
            std::vector<Design::Object> found;
            finder.find(Design::ObjectKind::cell, std::string(stars, '*'), {}, found);
            ASSERT_EQ(found.size(), cells) << stars;
        }
}

TEST(SdcGlob, KnowsAPieceOfWhatMatches) {
    const struct {
        const char *pattern, *piece;
        bool open;
    } rows[] = {
        {"", "", false},         {"*", "", true},
        {"abc", "abc", false},   {"a*bcd*ef", "bcd", false},
        {"*ab?cd*", "ab", true}, {"a[xy]bc*", "bc", true},
        {"a\\*b*", "a*b", true}, {"in[*]", "in[", false},
    };
    for (const auto& row : rows) {
        const Glob glob(row.pattern);
        EXPECT_EQ(glob.piece(), row.piece) << row.pattern;
        EXPECT_EQ(glob.isOpen(), row.open) << row.pattern;
    }
    EXPECT_EQ(Glob("abc*", true).piece(), "");
}

// A long list of objects that a command gets is not written out.
TEST(SdcArguments, DoNotAskForTheTextOfObjects) {
    Design::Constraints constraints;
    const Interpreter tcl(constraints, {}); // makes Tcl's types known
    static const Syntax syntax{{{"-from", Takes::objects}, {"-to", Takes::objects}}, {Takes::objects}};
    const auto collection = [] {
        return newCollection({{Design::ObjectKind::pin, 1}, {Design::ObjectKind::pin, 2}});
    };
    Tcl_Obj* const words[] = {
        Tcl_NewStringObj("command", -1), Tcl_NewStringObj("-from", -1),           collection(),
        Tcl_NewStringObj("-to", -1),     newHandle({Design::ObjectKind::pin, 3}), collection()};
    for (Tcl_Obj* word : words)
        Tcl_IncrRefCount(word);
    const Arguments arguments(syntax, words);
    EXPECT_EQ(arguments.find("-from"), words[2]);
    EXPECT_EQ(arguments.find("-to"), words[4]);
    EXPECT_EQ(arguments.argument(0), words[5]);
    for (const std::size_t objects : {2, 4, 5})
        EXPECT_EQ(words[objects]->bytes, nullptr) << objects;
    EXPECT_STREQ(Tcl_GetString(words[2]), "@pin:1 @pin:2");
    for (Tcl_Obj* word : words)
        Tcl_DecrRefCount(word);
}

} // namespace
