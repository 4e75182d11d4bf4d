// The judges themselves: each on reports that agree and on reports that do not, with the differences that it
// finds.
#include "Relation.h"

#include <gtest/gtest.h>

namespace {

using namespace Metamorphic;

// A report of two end points. A null slack is absent.
Outcome outcome(const char* firstSetup, const char* firstHold, const char* others = "",
                const char* clock = "c") {
    Outcome result;
    result.report = nlohmann::json::parse(
        std::string(R"({"inputs": [{"sha256": "a"}], "summary": {}, "unconstrained": {"endpoints": 0},
                        "diagnostics": [{"line": 3, "text": "t"}],
                        "clocks": [{"name": ")") +
        clock + R"(", "period": 10}],
                        "endpoints": [{"pin": "r/D", "setup_slack": )" +
        firstSetup + R"(, "hold_slack": )" + firstHold + "}" + others + "]}");
    return result;
}

constexpr const char* second = R"(, {"pin": "o", "setup_slack": 2.5, "hold_slack": null})";
constexpr const char* third = R"(, {"pin": "p", "setup_slack": 1, "hold_slack": 1})";

struct Row {
    const char* name;
    Judge judge;
    Outcome before, after;
    const char* says;
};

Case changed() {
    Brute::Shape small;
    small.maximumRegisters = 2;
    small.maximumGates = 0;
    Case result(1, small);
    result.amount = 100;
    result.names = {{"z", "r"}, {"d", "c"}};
    return result;
}

TEST(Judges, SayWhatDiffers) {
    const Outcome base = outcome("1.5", "0.25", second);
    Outcome otherInput = base, otherLine = base;
    otherInput.report["inputs"][0]["sha256"] = "b";
    otherLine.report["diagnostics"][0]["line"] = 4;
    Outcome renamed = outcome("1.5", "0.25", second, "d"), wronglyRenamed = renamed;
    renamed.report["endpoints"][0]["pin"] = "z/D";
    wronglyRenamed.report["endpoints"][0]["pin"] = "y/D";

    const Judge same0 = same(), sameLines = same({"line"}), renamedEnds = sameEndsRenamed(),
                slacks = sameSlacks();
    const Judge tenfold = slacksTimes(10, 1), shifted = slacksShifted(1, -1);
    const Judge setupWorse = slacksOnly(Change::worse, Change::none), gone = onlyEndGone(),
                added = othersAdded();
    const Row rows[] = {
        {"the same", same0, base, base, ""},
        {"the same of other bytes", same0, base, otherInput, ""},
        {"a key left out", sameLines, base, otherLine, ""},
        {"renamed", renamedEnds, base, renamed, ""},
        {"the same slacks", slacks, base, otherLine, ""},
        {"tenfold", tenfold, base,
         outcome("15", "2.5", R"(, {"pin": "o", "setup_slack": 25, "hold_slack": null})"), ""},
        {"shifted", shifted, base,
         outcome("1.6", "0.15", R"(, {"pin": "o", "setup_slack": 2.6, "hold_slack": null})"), ""},
        {"worse", setupWorse, base, outcome("1.499", "0.25", second), ""},
        {"no worse", setupWorse, base, base, ""},
        {"added", added, base, outcome("1.5", "0.25", (std::string(second) + third).c_str()), ""},

        {"another key", same0, base, otherLine, "diagnostics/0/line: 3, then 4"},
        {"another slack", same0, base, outcome("1.4", "0.25", second),
         "endpoints/r/D/setup_slack: 1.5, then 1.4"},
        {"an end point more", same0, outcome("1", "1"), outcome("1", "1", second),
         R"(endpoints/o: nothing, then {"hold_slack":null,"pin":"o","setup_slack":2.5})"},
        {"an end point less", same0, outcome("1", "1", second), outcome("1", "1"),
         R"(endpoints/o: {"hold_slack":null,"pin":"o","setup_slack":2.5}, then nothing)"},
        {"another name", renamedEnds, base, wronglyRenamed,
         R"(endpoints/r/D: {"hold_slack":0.25,"pin":"r/D","setup_slack":1.5}, then nothing)"},
        {"a slack's last digit", slacks, base, outcome("1.5", "0.250001", second),
         "r/D/hold_slack: 250000 fs, then 250001 fs"},
        {"no slack", slacks, base, outcome("null", "0.25", second), "r/D/setup_slack: 1500000 fs, then none"},
        {"a slack that was not there", slacks, outcome("null", "1"), outcome("3", "1"),
         "r/D/setup_slack: none, then 3000000 fs"},
        {"an end point that was not there", slacks, outcome("1", "1"), outcome("1", "1", second),
         "o: nothing, then 2500000 fs and none"},
        {"not tenfold", tenfold, outcome("1", "1"), outcome("10", "1"),
         "r/D/hold_slack: 1000000 fs, then 1000000 fs, not 10000000 fs"},
        {"shifted the other way", shifted, outcome("1", "1"), outcome("0.9", "1.1"),
         "r/D/setup_slack: 1000000 fs, then 900000 fs, not 1100000 fs"},
        {"better", setupWorse, base, outcome("1.501", "0.25", second),
         "r/D/setup_slack: 1500000 fs, then 1501000 fs"},
        {"the other side too", setupWorse, base, outcome("1.4", "0.24", second),
         "r/D/hold_slack: 250000 fs, then 240000 fs"},
        {"worse until it is gone", setupWorse, base, outcome("null", "0.25", second),
         "r/D/setup_slack: 1500000 fs, then none"},
        {"nothing gone", gone, outcome("1", "1"), outcome("1", "null"),
         "r/D/setup_slack: 1000000 fs, then 1000000 fs, not none"},
        {"added and changed", added, base, outcome("1.5", "0.2", third),
         "o/setup_slack: 2500000 fs, then none"},
    };
    for (const Row& row : rows) {
        Case design = changed();
        if (std::string(row.name) == "nothing gone")
            design.end = "r/D";
        EXPECT_EQ(row.judge(row.before, row.after, design), row.says) << row.name;
    }
}

TEST(Judges, OneEndPointIsShiftedOrGone) {
    Case design = changed();
    design.end = "o";
    const Outcome base = outcome("1.5", "0.25", second);
    const Outcome shiftedEnd =
        outcome("1.5", "0.25", R"(, {"pin": "o", "setup_slack": 2.6, "hold_slack": null})");
    const Outcome goneEnd = outcome("1.5", "0.25");
    EXPECT_EQ(slacksShifted(1, 0)(base, shiftedEnd, design), "");
    EXPECT_EQ(onlyEndGone()(base, goneEnd, design), "");
    EXPECT_EQ(onlyEndGone()(base, outcome("1.5", "null"), design), "r/D/hold_slack: 250000 fs, then none");
    EXPECT_EQ(slacksShifted(1, 0)(base, outcome("1.6", "0.25", second), design),
              "o/setup_slack: 2500000 fs, then 2500000 fs, not 2600000 fs");
}

} // namespace
