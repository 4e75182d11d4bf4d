// Clocks that are not related to each other: each achieves apart what it achieves among all pairs, which the
// engine finds if the design is launched as it is.
#include "analysis/AchieveApart.h"

#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"

#include "Vorlen/Tool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>

using Pelko::analyzer;
using Pelko::Pole;
using Support::Builder;
using Support::Register;

namespace {

std::uint64_t numberFrom(const char* variable, std::uint64_t otherwise) {
    const char* text = std::getenv(variable);
    return text ? std::strtoull(text, nullptr, 10) : otherwise;
}

using Periods = std::vector<int>;

struct Design {
    Periods achieved() const {
        Periods found;
        for (const Pole* root : roots)
            found.push_back(int(analyzer->getPeriod(root)));
        return found;
    }
    // By one launch of all.
    Periods launch() {
        EXPECT_TRUE(tool->launch());
        Periods found = achieved();
        analyzer->clearResults();
        return found;
    }
    Periods launchApart() {
        launches = 0;
        const Pelko::Cell* cell = Pelko::cell;
        const Pelko::Analyzer* before = analyzer;
        Analysis::achieveApart(roots, [&] {
            ++launches;
            largest = std::max<std::size_t>(largest, Pelko::cell->getPoles().getCount());
            EXPECT_NE(Pelko::cell, cell);
            EXPECT_TRUE(tool->launch());
            for (const Pelko::Domain* domain : analyzer->getDomains())
                EXPECT_EQ(domain->getLaunchRoot(), domain->getLatchRoot());
        });
        EXPECT_EQ(Pelko::cell, cell);
        EXPECT_EQ(analyzer, before);
        return achieved();
    }

    Builder builder;
    Support::Recorder console;
    Support::ToolPointer tool = Support::makeTool();
    std::vector<Pole*> roots;
    unsigned launches = 0;
    std::size_t largest = 0; // design that was launched, in poles
};

// --- By hand ---

TEST(AchieveApart, EachClockByItself) {
    Design design;
    Builder& builder = design.builder;
    const auto root = [&](const char* name) {
        return design.roots.emplace_back(builder.addClockSource(name));
    };
    Pole *a = root("a"), *b = root("b");
    root("unused");
    Pole* merged = root("merged");
    // Between a and b nothing counts; back to a it does, with the skew of its own clock.
    const Register a1 = builder.addRegister("a1", a, Support::rising, 3, 1, 2),
                   b1 = builder.addRegister("b1", b);
    const Register a2 = builder.addRegister("a2", nullptr, Support::rising, 0, 1, 2);
    builder.connect(a, a2.clock, 4, 4);
    builder.connect(a1.output, b1.data, 100, 100);
    builder.connect(b1.output, a2.data, 100, 100);
    builder.connect(a1.output, a2.data, 20, 20);
    builder.connect(a2.output, a1.data, 7, 7);
    // Half a cycle counts twice. The clocks b and merged share a register.
    const Register half = builder.addRegister("half", b, Support::falling);
    builder.connect(merged, half.clock, 5, 5);
    builder.connect(b1.output, half.data, 9, 9);
    builder.connect(half.output, half.data, 2, 2);
    const int undefined = Support::undefined;
    const Periods expected{3 + 20 + 2 - 4, 18, undefined, 2};
    EXPECT_EQ(design.launch(), expected);
    EXPECT_EQ(design.launchApart(), expected);
    EXPECT_EQ(design.launches, 2U); // what is shared counts twice: more than the design has
    EXPECT_TRUE(design.console.isEmpty());
}

TEST(AchieveApart, Nothing) {
    Design design;
    EXPECT_EQ(design.launchApart(), Periods{});
    design.roots.push_back(design.builder.addClockSource("a"));
    EXPECT_EQ(design.launchApart(), Periods{Support::undefined});
    EXPECT_EQ(design.launches, 0U);
}

// All data of all clocks meets on one net, and goes to all: each has an own path of its own length.
TEST(AchieveApart, ManyClocksOverOneNet) {
    constexpr int clocks = 1500;
    Design design;
    Pole* net = design.builder.addPole();
    Periods expected;
    for (int i = 0; i < clocks; ++i) {
        design.roots.push_back(design.builder.addClockSource("clk"));
        const Register reg = design.builder.addRegister("r", design.roots.back());
        design.builder.connect(reg.output, net, 1, i + 1);
        // The net itself was made first: the order of creation is not that of the flow.
        design.builder.connect(net, reg.data, 1, 2 * i + 1);
        expected.push_back(3 * i + 2);
    }
    EXPECT_EQ(design.launchApart(), expected);
    EXPECT_EQ(design.launches, 2U); // the net is in each own design
    EXPECT_LE(design.largest, Pelko::cell->getPoles().getCount());
}

TEST(AchieveApart, ALoopIsRefused) {
    Design design;
    Pole *a = design.builder.addPole(), *b = design.builder.addPole();
    design.builder.connectAll({a, b, a});
    EXPECT_THROW(design.launchApart(), std::logic_error);
}

// --- At random ---

// Clock networks that merge, registers of both edges, some of both clocks, and data from everywhere to
// everywhere.
void fill(Design& design, std::mt19937_64& dice) {
    const auto below = [&dice](std::size_t bound) { return static_cast<std::size_t>(dice() % bound); };
    Builder& builder = design.builder;
    std::vector<Pole*> clocks, data;
    const auto connect = [&](Pole* from, Pole* to) {
        if (!to->getIncomingEdge(from)) {
            const int least = static_cast<int>(below(20));
            builder.connect(from, to, least, least + static_cast<int>(below(20)));
        }
    };
    for (std::size_t i = 0, count = 1 + below(below(4) == 0 ? 150 : 8); i < count; ++i)
        clocks.push_back(design.roots.emplace_back(builder.addClockSource("k")));
    for (std::size_t i = 0, count = below(2 * design.roots.size()); i < count; ++i) {
        Pole* gate = builder.addPole();
        for (std::size_t inputs = 1 + below(3); inputs > 0; --inputs)
            connect(clocks[below(clocks.size())], gate);
        clocks.push_back(gate);
    }
    std::vector<Register> registers;
    for (std::size_t i = 0, count = 1 + below(3 * design.roots.size()); i < count; ++i) {
        const Register& made = registers.emplace_back(builder.addRegister(
            "r", nullptr, below(3) == 0 ? Support::falling : Support::rising, static_cast<int>(below(5)),
            static_cast<int>(below(5)), static_cast<int>(below(5))));
        for (std::size_t inputs = 1 + below(2); inputs > 0; --inputs)
            connect(clocks[below(clocks.size())], made.clock);
        data.push_back(made.output);
    }
    for (std::size_t i = 0, count = below(2 * registers.size()); i < count; ++i) {
        Pole* gate = builder.addPole();
        for (std::size_t inputs = 1 + below(4); inputs > 0; --inputs)
            connect(data[below(data.size())], gate);
        data.push_back(gate);
    }
    for (const Register& each : registers)
        for (std::size_t inputs = below(3); inputs > 0; --inputs)
            if (Pole* from = data[below(data.size())]; from != each.data)
                connect(from, each.data);
}

TEST(AchieveApart, AsAmongAllPairs) {
    constexpr std::uint64_t share = 20; // of the designs of other tests: these have many clocks each
    const std::uint64_t first = numberFrom("VORLEN_SEED", 1),
                        designs =
                            std::max<std::uint64_t>(numberFrom("VORLEN_DESIGNS", 300 * share) / share, 1);
    std::size_t defined = 0;
    for (std::uint64_t seed = first; seed < first + designs; ++seed) {
        std::mt19937_64 dice(seed);
        Design design;
        fill(design, dice);
        const Periods all = design.launch();
        ASSERT_EQ(design.launchApart(), all) << "VORLEN_SEED=" << seed << " VORLEN_DESIGNS=1";
        defined += static_cast<std::size_t>(
            std::count_if(all.begin(), all.end(), [](int period) { return period != Support::undefined; }));
    }
    EXPECT_GT(defined, designs);
}

} // namespace
