// The reference itself, on cases timed by hand: clocks, latencies, ports. See Bench.h for the design.
#include "Bench.h"
#include "tests/support/Rows.h"

#include <gtest/gtest.h>

namespace Brute {

namespace {

using Slack = std::optional<std::int64_t>;
const Slack untimed;

TEST(Relation, TakesTheClosestEdgesOfTheCommonPeriod) {
    const struct {
        int launch, launchPeriod, capture, capturePeriod, setup, hold;
    } rows[]{
        {0, 10000, 0, 10000, 10000, 0},        {0, 10000, 0, 15000, 5000, 0},
        {0, 15000, 0, 10000, 5000, 0},         {0, 10000, 3000, 10000, 3000, -7000},
        {3000, 10000, 0, 10000, 7000, -3000},  {0, 10000, 5000, 10000, 5000, -5000},
        {0, 10000, 0, 20000, 10000, 0},        {0, 20000, 0, 10000, 10000, 0},
        {0, 4000, 1000, 6000, 1000, -1000},    {-500, 10000, 0, 10000, 500, -9500},
        {0, 10000, 25000, 10000, 5000, -5000},
    };
    for (const auto& r : rows) {
        const Relation found = relation(r.launch, r.launchPeriod, r.capture, r.capturePeriod);
        EXPECT_EQ(found.setup, r.setup)
            << r.launch << "/" << r.launchPeriod << " " << r.capture << "/" << r.capturePeriod;
        EXPECT_EQ(found.hold, r.hold)
            << r.launch << "/" << r.launchPeriod << " " << r.capture << "/" << r.capturePeriod;
    }
}

TEST(Plain, RegisterToRegister) {
    Bench bench;
    EXPECT_EQ(bench.setup("r1/D"), 9000);
    EXPECT_EQ(bench.hold("r1/D"), 1000);
    bench.check("r1/D").setup = Triple{70, 70, 70};
    bench.check("r1/D").hold = Triple{25, 25, 25};
    EXPECT_EQ(bench.setup("r1/D"), 8930);
    EXPECT_EQ(bench.hold("r1/D"), 975);
    EXPECT_EQ(bench.setup("r0/D"), untimed) << "a port without a delay";
    EXPECT_EQ(bench.setup("out"), untimed);
}

// A routed design of two registers, with slacks computed elsewhere.
TEST(Plain, TwoRoutedRegisters) {
    Bench bench(5000);
    bench.d.clocks.pop_back();
    bench.wire(bench.at("clkA"), bench.at("r1/CLK"), 1625);
    bench.arc("clkA", "r0/CLK").values = {{1625, 1625, 1625}};
    for (const char* name : {"r0", "r1"}) {
        const std::string reg = name;
        bench.arc(reg + "/CLK", reg + "/Q").values = {{540, 540, 540}};
    }
    bench.arc("g/A", "g/Z").values = bench.arc("in", "r0/D").values =
        bench.arc("r1/Q", "out").values = {{588, 588, 588}};
    bench.check("r0/D").setup = Triple{468, 468, 468};
    bench.check("r1/D").setup = Triple{335, 335, 335};
    bench.delay(true, 0, {}, 0);
    bench.delay(false, 0, {}, 0);
    const struct {
        bool propagated;
        const char* end;
        int setup, hold;
    } rows[]{
        {true, "out", 2247, 2753},  {true, "r0/D", 5569, -1037}, {true, "r1/D", 3537, 1128},
        {false, "out", 3872, 1128}, {false, "r0/D", 3944, 588},  {false, "r1/D", 3537, 1128},
    };
    for (const auto& r : rows) {
        bench.options.propagated = r.propagated;
        EXPECT_EQ(bench.setup(r.end), r.setup) << r.end;
        EXPECT_EQ(bench.hold(r.end), r.hold) << r.end;
    }
}

TEST(Plain, FallingEdges) {
    Bench bench;
    bench.check("r1/D").clockEdge = Edge::fall;
    EXPECT_EQ(bench.setup("r1/D"), 4000);
    EXPECT_EQ(bench.hold("r1/D"), 6000);
    bench.delay(false, 1, {}, 0);
    EXPECT_EQ(bench.setup("out"), 4300) << "the edge of the checks where the arc names none";
    bench.arc("r1/CLK", "r1/Q").edge = Edge::rise;
    EXPECT_EQ(bench.setup("out"), 9300);
    bench.check("r1/D").hold.reset();
    EXPECT_EQ(bench.hold("r1/D"), untimed);
}

TEST(Plain, ValuesOfTriplesAndLists) {
    Bench bench;
    bench.arc("g/A", "g/Z").values = {{500, 600, 700}, {450, 620, 690}};
    bench.check("r1/D").setup = Triple{10, 20, 15};
    bench.check("r1/D").hold = Triple{-30, -20, -25};
    const struct {
        DelayMode mode;
        int setup, hold;
    } rows[]{
        {DelayMode::minmax, 10000 - 1100 - 20, 850 + 20},
        {DelayMode::minimum, 10000 - 900 - 10, 850 + 30},
        {DelayMode::typical, 10000 - 1020 - 20, 1000 + 20},
        {DelayMode::maximum, 10000 - 1100 - 15, 1090 + 25},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(Support::rowOf(rows, r));
        bench.options.delays = r.mode;
        EXPECT_EQ(bench.setup("r1/D"), r.setup);
        EXPECT_EQ(bench.hold("r1/D"), r.hold);
    }
}

TEST(Plain, ClockPathsAreIntervalsAndNothingIsGivenBack) {
    Bench bench;
    bench.arc("clkA", "r0/CLK").values = {{100, 150, 250}};
    bench.arc("clkB", "r1/CLK").values = {{300, 300, 340}};
    EXPECT_EQ(bench.setup("r1/D"), 10000 + 300 - 250 - 1000);
    EXPECT_EQ(bench.hold("r1/D"), 100 + 1000 - 340);
    bench.options.propagated = false;
    EXPECT_EQ(bench.setup("r1/D"), 9000);

    Bench shared; // one wire to both registers: the shared delay counts against them
    shared.d.clocks[0].targets = {shared.at("clkA")};
    shared.d.clocks.pop_back();
    shared.wire(shared.at("clkA"), shared.at("clkB"), 0);
    shared.d.arcs.back().values = {{100, 100, 180}};
    shared.d.arcs.push_back({Arc::Kind::wire, shared.at("clkB"), shared.at("r0/CLK"), Edge::any, {}});
    std::erase_if(shared.d.arcs,
                  [&](const Arc& x) { return x.from == shared.at("clkA") && x.to == shared.at("r0/CLK"); });
    EXPECT_EQ(shared.setup("r1/D"), 10000 + 100 - 180 - 1000);
}

TEST(Latencies, EarlyAndLateSourceLatencyEvenOnOneClock) {
    for (bool propagated : {true, false}) {
        SCOPED_TRACE(propagated);
        Bench bench;
        bench.options.propagated = propagated;
        bench.d.clocks[0].targets.push_back(bench.at("clkB"));
        bench.d.clocks.pop_back();
        bench.d.latencies = {{Latency::Kind::source, 0, true, 2000}, {Latency::Kind::source, 0, false, 1000}};
        EXPECT_EQ(bench.setup("r1/D"), 8000);
        EXPECT_EQ(bench.hold("r1/D"), 0);
    }
}

TEST(Latencies, NetworkLatencyIsForIdealClocksAndTheLastWordCounts) {
    Bench bench;
    bench.arc("clkB", "r1/CLK").values = {{300, 300, 300}};
    EXPECT_EQ(bench.setup("r1/D"), 9300);
    bench.d.latencies.push_back({Latency::Kind::network, 1, {}, 500});
    EXPECT_EQ(bench.setup("r1/D"), 9500);
    EXPECT_EQ(bench.hold("r1/D"), 500);
    bench.d.latencies.push_back({Latency::Kind::propagated, 1, {}, 0});
    EXPECT_EQ(bench.setup("r1/D"), 9300);
    bench.d.latencies.push_back({Latency::Kind::network, 1, {}, 200});
    EXPECT_EQ(bench.setup("r1/D"), 9200);
}

TEST(Uncertainty, SimpleFormIsTheCapturesAndThePairReplacesIt) {
    Bench bench;
    bench.d.uncertainties = {{none, 0, {}, 111}};
    EXPECT_EQ(bench.setup("r1/D"), 9000);
    bench.d.uncertainties.push_back({none, 1, {}, 200});
    EXPECT_EQ(bench.setup("r1/D"), 8800);
    EXPECT_EQ(bench.hold("r1/D"), 800) << "at equal edges too";
    bench.d.uncertainties.push_back({none, 1, true, 300});
    EXPECT_EQ(bench.setup("r1/D"), 8700);
    EXPECT_EQ(bench.hold("r1/D"), 800);
    bench.d.uncertainties.insert(bench.d.uncertainties.begin(), {0, 1, false, 50});
    EXPECT_EQ(bench.setup("r1/D"), 8700);
    EXPECT_EQ(bench.hold("r1/D"), 950);
    bench.d.uncertainties.push_back({1, 0, {}, 900});
    EXPECT_EQ(bench.setup("r1/D"), 8700);
    bench.delay(false, 1, {}, 0);
    EXPECT_EQ(bench.setup("out"), 10000 - 700 - 300);
}

TEST(Groups, CutBothWaysBetweenThem) {
    const struct {
        std::vector<std::vector<int>> groups;
        bool timed;
    } rows[]{{{{0}, {1}}, false},
             {{{1}, {0}}, false},
             {{{0, 1}, {2}}, true},
             {{{0}}, false},
             {{{2}}, true},
             {{{0, 1}}, true},
             {{{0}, {2}}, true},
             {{{0, 2}, {1, 2}}, false},
             {{{0, 1}, {1, 2}}, true},
             {{{0}, {1}, {0, 1}}, true}};
    for (const auto& r : rows) {
        Bench bench;
        bench.addClock("v", 10000, {});
        bench.except(Exception::Kind::maximumDelay, 5000, {bench.pin("r0/CLK")}, {}, {});
        bench.d.clockGroups = {{"-asynchronous", r.groups}};
        EXPECT_EQ(bench.setup("r1/D"), r.timed ? Slack(4000) : untimed) << "beats a maximum delay";
    }
}

// --- Ports ---

TEST(InputDelay, Forms) {
    const auto timed = [](auto change) {
        Bench bench;
        change(bench);
        return std::pair{bench.setup("r0/D"), bench.hold("r0/D")};
    };
    using Pair = std::pair<Slack, Slack>;
    EXPECT_EQ(timed([](Bench& x) { x.delay(true, 0, {}, 2000); }), Pair(7500, 2500));
    EXPECT_EQ(timed([](Bench& x) { x.delay(true, 0, true, 2000); }), Pair(7500, untimed));
    EXPECT_EQ(timed([](Bench& x) { x.delay(true, 0, false, 300); }), Pair(untimed, 800));
    EXPECT_EQ(timed([](Bench& x) { x.delay(true, 0, true, 2000), x.delay(true, 0, false, 300); }),
              Pair(7500, 800));
    EXPECT_EQ(timed([](Bench& x) { x.delay(true, 0, {}, 2000, false, true); }), Pair(2500, 7500))
        << "-clock_fall";
    EXPECT_EQ(timed([](Bench& x) { x.delay(true, none, {}, 2000); }), Pair(untimed, untimed));
    EXPECT_EQ(timed([](Bench& x) { x.delay(true, 0, {}, 2000), x.delay(true, 1, {}, 100); }), Pair(9400, 600))
        << "replaced";
    EXPECT_EQ(timed([](Bench& x) { x.delay(true, 0, {}, 2000), x.delay(true, 1, {}, 100, true); }),
              Pair(7500, 600));
    EXPECT_EQ(timed([](Bench& x) { x.delay(true, 0, {}, 2000), x.delay(true, 0, {}, 100, true); }),
              Pair(7500, 600))
        << "worst";
    EXPECT_EQ(
        timed([](Bench& x) { x.delay(true, 0, true, 2000), x.delay(true, 0, false, 100, false, true); }),
        Pair(untimed, 5600))
        << "another edge replaces";
    EXPECT_EQ(timed([](Bench& x) {
                  x.delay(true, 0, {}, 2000), x.d.caseValues = {{x.at("in"), true}};
              }),
              Pair(untimed, untimed));
}

TEST(InputDelay, LatencyOfItsClock) {
    const auto setup = [](bool propagated, bool source, bool network) {
        Bench bench;
        const int v = bench.addClock("v", 10000, {});
        bench.delay(true, v, {}, 2000);
        bench.d.portDelays[0].sourceIncluded = source, bench.d.portDelays[0].networkIncluded = network;
        bench.d.latencies = {{Latency::Kind::source, v, {}, 300}, {Latency::Kind::network, v, {}, 40}};
        if (propagated)
            bench.d.latencies.push_back({Latency::Kind::propagated, v, {}, 0});
        return bench.setup("r0/D");
    };
    EXPECT_EQ(setup(false, false, false), 7500 - 340);
    EXPECT_EQ(setup(true, false, false), 7500 - 300);
    EXPECT_EQ(setup(false, true, false), 7500 - 40);
    EXPECT_EQ(setup(false, false, true), 7500 - 300);
    EXPECT_EQ(setup(false, true, true), 7500);
}

TEST(OutputDelay, Forms) {
    Bench bench;
    bench.delay(false, 1, true, 2000);
    EXPECT_EQ(bench.setup("out"), 7300);
    EXPECT_EQ(bench.hold("out"), untimed);
    bench.delay(false, 1, false, -500);
    EXPECT_EQ(bench.hold("out"), 200);
    bench.delay(false, 1, {}, 1000, true, true);
    EXPECT_EQ(bench.setup("out"), 5000 - 1000 - 700);
    bench.d.latencies = {{Latency::Kind::source, 1, true, 90}, {Latency::Kind::source, 1, false, 40}};
    EXPECT_EQ(bench.setup("out"), 3300 + 40 - 90);
    EXPECT_EQ(bench.hold("out"), 200 + 40 - 90);
}

// --- Clocks ---

Generated divide(int factor, bool invert = false) {
    Generated g;
    g.factor = factor, g.invert = invert;
    return g;
}
Generated multiply(int factor, std::optional<int> duty = {}) {
    Generated g;
    g.kind = Generated::Kind::multiply, g.factor = factor, g.dutyCycle = duty;
    return g;
}
Generated edges(std::array<int, 3> list, std::optional<int> shift = {}) {
    Generated g;
    g.kind = Generated::Kind::edges, g.edges = list, g.edgeShift = shift;
    return g;
}
Generated moved(int offset, int phase) {
    Generated g = divide(2);
    g.offset = offset, g.phase = phase;
    return g;
}

TEST(GeneratedClock, Waveforms) {
    const struct {
        int masterRise, masterFall;
        Generated g;
        int period, rise, fall;
    } rows[]{
        {0, 5000, divide(2), 20000, 0, 10000},
        {0, 5000, divide(3), 30000, 0, 15000},
        {0, 3000, divide(4), 40000, 0, 20000},
        {0, 5000, divide(2, true), 20000, 10000, 20000},
        {3000, 8000, divide(2), 20000, 3000, 13000},
        {0, 5000, multiply(2), 5000, 0, 2500},
        {0, 5000, multiply(2, 20), 5000, 0, 1000},
        {0, 5000, edges({1, 3, 5}), 20000, 0, 10000},
        {0, 3000, edges({1, 2, 5}), 20000, 0, 3000},
        {2000, 5000, edges({2, 3, 4}), 10000, 5000, 12000},
        {0, 5000, edges({1, 3, 5}, 2500), 20000, 2500, 12500},
        {0, 5000, moved(700, 0), 20000, 700, 10700},
        {0, 5000, moved(0, 90), 20000, 5000, 15000},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(Support::rowOf(rows, r));
        Bench bench;
        bench.d.clocks[0].rise = r.masterRise, bench.d.clocks[0].fall = r.masterFall;
        bench.addGenerated("gen", "r0/CLK", "r0/Q", r.g);
        const LiveClock gen = resolveClocks(bench.d, bench.options).live[2];
        EXPECT_EQ(gen.period, r.period);
        EXPECT_EQ(gen.rise, r.rise);
        EXPECT_EQ(gen.fall, r.fall);
    }
}

TEST(GeneratedClock, LatencyIsTheMastersAndTheWayFromItsRoot) {
    Bench bench;
    bench.arc("clkA", "r0/CLK").values = {{100, 100, 120}};
    bench.d.latencies = {{Latency::Kind::source, 0, {}, 1000}};
    const int gen = bench.addGenerated("gen", "clkA", "r0/Q", divide(2));
    bench.delay(false, gen, {}, 0);
    bench.delay(true, gen, {}, 0);
    // Data from the target itself: r1/D is reached from the clock's own source, 600 further on both edges.
    EXPECT_EQ(bench.setup("r1/D"), 10000 - 1520 - 600) << "from gen to b";
    EXPECT_EQ(bench.hold("r1/D"), 1500 + 600) << "both edges, 0 and 10000, fall on b's";
    EXPECT_EQ(bench.setup("out"), 10000 + 1500 - 700) << "from b to gen, insertion delay counted";
    EXPECT_EQ(bench.setup("r0/D"), 10000 + 1000 + 100 - 1520 - 500);
    bench.options.propagated = false;
    EXPECT_EQ(bench.setup("r1/D"), 10000 - 600) << "ideal: nothing from its master";
    EXPECT_EQ(bench.setup("out"), 10000 - 700);
}

TEST(GeneratedClock, ItsRegistersAndItsMastersEnd) {
    Bench bench; // r1 is clocked by r0/Q instead of clkB
    bench.d.clocks.pop_back();
    bench.wire(bench.at("r0/Q"), bench.at("r1/CLK"), 50);
    bench.wire(bench.at("in"), bench.at("r1/D"), 0);
    bench.delay(true, 0, {}, 0);
    std::erase_if(bench.d.arcs, [&](const Arc& x) { return x.from == bench.at("h/Z"); });
    EXPECT_EQ(bench.setup("r1/D"), untimed) << "a clock does not pass clock to output";
    bench.addGenerated("gen", "r0/CLK", "r0/Q", divide(2));
    EXPECT_EQ(bench.setup("r1/D"), 10000 + 400 + 50) << "in, launched by a, captured by gen";
    EXPECT_EQ(bench.hold("r1/D"), -450);
    bench.options.propagated = false;
    EXPECT_EQ(bench.setup("r1/D"), 10000);
}

TEST(Clocks, DataFromAClocksOwnSourceStartsOnBothEdges) {
    Bench bench;
    bench.d.clocks[0].rise = 2000, bench.d.clocks[0].fall = 9000;
    bench.wire(bench.at("clkA"), bench.at("out"), 700);
    std::erase_if(bench.d.arcs, [&](const Arc& x) { return x.from == bench.at("r1/Q"); });
    bench.delay(false, 1, {}, 0);
    EXPECT_EQ(bench.setup("out"), 1000 - 700) << "from the fall at 9000";
    EXPECT_EQ(bench.hold("out"), 700 + 2000) << "from the rise at 2000";
    bench.d.latencies = {{Latency::Kind::network, 0, {}, 300}, {Latency::Kind::source, 0, {}, 10}};
    EXPECT_EQ(bench.setup("out"), 1000 - 710) << "without network latency";
}

TEST(Clocks, TwoOnOnePinAndReplacedOnes) {
    Bench bench;
    bench.addClock("fast", 4000, {"clkB"});
    bench.d.clocks[2].add = true;
    EXPECT_EQ(bench.setup("r1/D"), 1000) << "10 against 4: 2";
    bench.d.clocks[2].add = false;
    EXPECT_EQ(bench.setup("r1/D"), 1000);
    bench.d.clocks[2].period = 20000;
    EXPECT_EQ(bench.setup("r1/D"), 9000);

    bench.delay(false, 1, {}, 0);
    bench.d.portDelays.back().early = true;
    EXPECT_EQ(bench.setup("out"), untimed) << "lost with the clock";
    bench.d.clocks[2].name = "b";
    EXPECT_EQ(bench.setup("out"), 20000 - 700) << "stays with the name";
}

TEST(Disable, TakesOutArcsAndChecks) {
    const auto timed = [](auto make) {
        Bench bench;
        bench.d.disables = {make(bench)};
        return bench.setup("r1/D").has_value();
    };
    EXPECT_FALSE(timed([](Bench& x) { return Disable{x.cell("g"), "", ""}; }));
    EXPECT_FALSE(timed([](Bench& x) { return Disable{x.cell("g"), "A", "Z"}; }));
    EXPECT_TRUE(timed([](Bench& x) { return Disable{x.cell("g"), "B", "Z"}; }));
    EXPECT_FALSE(timed([](Bench& x) { return Disable{x.pin("h/A"), "", ""}; }));
    EXPECT_FALSE(timed([](Bench& x) { return Disable{x.cell("r0"), "", ""}; }));
    EXPECT_FALSE(timed([](Bench& x) { return Disable{x.cell("r1"), "", ""}; }));
    EXPECT_FALSE(timed([](Bench& x) { return Disable{x.port("clkA"), "", ""}; }));
    EXPECT_TRUE(timed([](Bench& x) { return Disable{x.port("in"), "", ""}; }));
}

} // namespace

} // namespace Brute
