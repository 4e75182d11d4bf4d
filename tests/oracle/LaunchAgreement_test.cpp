// Whole launches against the reference, on random designs with every feature on: what they leave in the
// database and print on the console, and every map of every pole in every sweep at the moment when the sweep
// is destroyed.
#include "Launches.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace oracle {

namespace {

constexpr unsigned long designCount = 20000;

TEST(LaunchAgreement, TwoLaunchesOnRandomDesigns) {
    compareOnDesigns(designCount, Knobs(), launchLibrary, launchReference);
}

// Without the switches that stop runs early or leave phases out, and on small designs, so that every result
// is compared often.
TEST(LaunchAgreement, SmallDesignsThatKeepTheContract) {
    Knobs knobs;
    knobs.poles = 14;
    knobs.brokenContract = false;
    knobs.domainsOnly = false;
    knobs.throwing = false;
    compareOnDesigns(designCount, knobs, launchLibrary, launchReference);
}

// The comparison proves something only if the designs hold every feature. Each text is in the reference's
// report of at least this many in a thousand designs.
TEST(LaunchAgreement, RandomDesignsShowEveryFeature) {
    struct Row {
        const char* text;
        unsigned least;
    };
    static constexpr std::array<Row, 24> rows{{
        {"== completed", 900},
        {"== aborted", 5},
        {"launchAT ", 400},
        {"latchAT ", 400},
        {"dataRT ", 400},
        {" longest ", 300},
        {" shortest ", 300},
        {" under exception", 100},
        {" multicycle-critical", 5},
        {" decisive", 150},
        {" achieves ", 150},
        {"port ", 200},
        {" duty ", 500},
        {" weight 1", 100},
        {" weight 2", 20},
        {"Analyzing project with VORLEN-4.0 [exhaustive mode]", 100},
        {"Analyzing project completed in %", 100},
        {"Analyzing project not completed in %", 1},
        {" may traverse intermediate clock timing point(s)!", 50},
        {" is not available for ", 1},
        {"Analyzing aborted [the user lost patience]", 1},
        {"Analyzing aborted [something strange...] (Tool, launch, 495)", 1},
        {"no adjustment (Adjuster, adjust, 7)", 1},
        {"indentation 1", 5},
    }};
    std::array<unsigned, rows.size()> found{};
    constexpr unsigned designs = 2000;
    for (unsigned long seed = 1; seed <= designs; ++seed) {
        RandomDesign design(seed);
        const std::string text = launchReference(design);
        for (std::size_t i = 0; i < rows.size(); ++i)
            found[i] += text.find(rows[i].text) != std::string::npos;
    }
    for (std::size_t i = 0; i < rows.size(); ++i)
        EXPECT_GE(found[i] * 1000, rows[i].least * designs)
            << rows[i].text << ": in " << found[i] << " designs";
}

} // namespace

} // namespace oracle
