// The poles on the own paths of clocks.
#include "analysis/OwnPaths.h"

#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"

#include "Vorlen/Tool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

namespace {

using Analysis::OwnPaths;
using Analysis::Place;
using Analysis::PoleFlow;
using Pelko::Pole;

std::set<std::string> namesOf(const PoleFlow& flow, const OwnPaths& own, std::size_t clock) {
    std::set<std::string> names;
    own.forEach([&](Place place, std::size_t of) {
        EXPECT_TRUE(own.contains(place, of));
        if (of == clock)
            names.insert(flow.pole(place)->getName());
    });
    return names;
}

// Clock a goes from its register to itself by way of x. Clock b only feeds a register of a.
TEST(OwnPaths, LeadBackToTheClock) {
    Support::Builder builder;
    Pole *a = builder.addClockSource("a"), *b = builder.addClockSource("b"), *x = builder.addPole("x");
    const Support::Register ofA = builder.addRegister("ra", a), ofB = builder.addRegister("rb", b);
    builder.connect(ofA.output, x);
    builder.connect(ofB.output, x);
    builder.connect(x, ofA.data);
    const PoleFlow flow(*Pelko::cell);
    OwnPaths own(flow, 2);
    own.find(std::vector{flow.placeOf(a), flow.placeOf(b)});
    EXPECT_EQ(namesOf(flow, own, 0), (std::set<std::string>{"a", "ra/C", "ra/Q", "x", "ra/D", "ra/check"}));
    EXPECT_EQ(namesOf(flow, own, 1), std::set<std::string>());
    own.find(std::vector{flow.placeOf(b)}); // what was found before is gone
    EXPECT_EQ(namesOf(flow, own, 0), std::set<std::string>());
}

// More clocks than a word has bits, each with a register that feeds itself.
TEST(OwnPaths, OfManyClocksAtOnce) {
    constexpr std::size_t clocks = 130;
    Support::Builder builder;
    std::vector<Pole*> roots;
    for (std::size_t i = 0; i < clocks; ++i) {
        roots.push_back(builder.addClockSource("c" + std::to_string(i)));
        const Support::Register reg = builder.addRegister("r" + std::to_string(i), roots.back());
        builder.connect(reg.output, reg.data);
    }
    const PoleFlow flow(*Pelko::cell);
    std::vector<Place> places;
    for (const Pole* root : roots)
        places.push_back(flow.placeOf(root));
    OwnPaths own(flow, clocks);
    own.find(places);
    std::vector<std::size_t> sizes(clocks);
    own.forEach([&](Place, std::size_t clock) { ++sizes[clock]; });
    EXPECT_EQ(std::ranges::count(sizes, 5U), static_cast<std::ptrdiff_t>(clocks));
}

} // namespace
