// Poles in the order of the flow, and their arcs by place, against the host's own fans.
#include "analysis/PoleFlow.h"

#include "tests/support/Builder.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace {

using Analysis::Place;
using Analysis::PoleFlow;
using Pelko::Pole;

// A register that feeds another one by way of a net that was made first, so that it is not in the order of
// the flow.
struct Chain {
    Chain() {
        builder.connect(clock, first.clock);
        builder.connect(clock, second.clock);
        builder.connect(first.output, net);
        builder.connect(net, second.data);
    }
    Support::Builder builder;
    Pole* net = builder.addPole("net");
    Support::Register second = builder.addRegister("second", nullptr),
                      first = builder.addRegister("first", nullptr);
    Pole* clock = builder.addClockSource("clk");
};

TEST(PoleFlow, EveryArcLeadsForwards) {
    Chain chain;
    const PoleFlow flow(*Pelko::cell);
    ASSERT_EQ(flow.size(), Pelko::cell->getPoles().getCount());
    std::size_t arcs = 0, ties = 0;
    for (const Place place : flow.places()) {
        EXPECT_EQ(flow.placeOf(flow.pole(place)), place);
        for (const PoleFlow::Arc& arc : flow.outOf(place)) {
            EXPECT_LT(place.number(), arc.target.number());
            if (arc.edge) {
                ++arcs;
                EXPECT_EQ(arc.edge->getSource(), flow.pole(place));
                EXPECT_EQ(arc.edge->getTarget(), flow.pole(arc.target));
            } else {
                ++ties;
                EXPECT_EQ(Analysis::clockPoleOf(flow.pole(arc.target)), flow.pole(place));
            }
        }
    }
    EXPECT_EQ(arcs, 8U); // four of the chain, and two in each register
    EXPECT_EQ(ties, 2U);
}

TEST(PoleFlow, EachArcIsHeldOnceAndKnownAtItsTarget) {
    Chain chain;
    const PoleFlow flow(*Pelko::cell);
    std::set<const Pelko::Edge*> held;
    std::multimap<std::uint32_t, std::uint32_t> into, expected;
    for (const Place place : flow.places()) {
        for (const PoleFlow::HeldArc& arc : flow.heldBy(place)) {
            EXPECT_TRUE(held.insert(arc.edge).second);
            EXPECT_TRUE(arc.source.number() == place.number() || arc.target.number() == place.number());
            expected.emplace(arc.target.number(), arc.source.number());
        }
        for (const Place source : flow.into(place))
            into.emplace(place.number(), source.number());
    }
    EXPECT_EQ(held.size(), 8U);
    EXPECT_EQ(std::set(into.begin(), into.end()), std::set(expected.begin(), expected.end()));
}

TEST(PoleFlow, ClockSideAndData) {
    Chain chain;
    const PoleFlow flow(*Pelko::cell);
    const auto isClockSide = [&](const Pole* pole) { return flow.isClockSide(flow.placeOf(pole)); };
    EXPECT_TRUE(isClockSide(chain.clock));
    EXPECT_TRUE(isClockSide(chain.first.clock));
    EXPECT_FALSE(isClockSide(chain.first.output));
    EXPECT_FALSE(isClockSide(chain.net));
    EXPECT_FALSE(isClockSide(chain.second.check));
    EXPECT_FALSE(flow.isClockSide(flow.middle()));
}

TEST(PoleFlow, ArcsThatAreNotActiveDoNotCount) {
    Chain chain;
    chain.net->insulate();
    const PoleFlow flow(*Pelko::cell);
    EXPECT_TRUE(flow.outOf(flow.placeOf(chain.net)).empty());
    EXPECT_TRUE(flow.into(flow.placeOf(chain.net)).empty());
}

TEST(PoleFlow, ALoopIsRefused) {
    Support::Builder builder;
    Pole *a = builder.addPole(), *b = builder.addPole();
    builder.connectAll({a, b, a});
    EXPECT_THROW(PoleFlow(*Pelko::cell), std::logic_error);
}

} // namespace
