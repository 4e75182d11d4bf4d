// A million poles behind each other, in a ring, and behind one: ordinary inputs of a launch, on a stack of 8
// MB.
#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"

#include "Pelko/Path.h"

#include <gtest/gtest.h>

#include <pthread.h>

#include <ostream>

using Pelko::analyzer;
using Pelko::Pole;
using Support::Builder;
using Support::Lines;
using Support::Names;
using Support::namesOf;
using Support::Register;
using Support::subdomains;

namespace {

constexpr std::size_t million = 1'000'000;

// Launches on a thread with a stack of the usual size, whatever the limits of the process.
bool launchOnUsualStack(Vorlen::Tool& tool) {
    struct Call {
        Vorlen::Tool& tool;
        bool completed = false;
    } call{tool};
    pthread_attr_t attributes;
    EXPECT_EQ(pthread_attr_init(&attributes), 0);
    EXPECT_EQ(pthread_attr_setstacksize(&attributes, 8 << 20), 0);
    pthread_t thread{};
    const auto run = [](void* argument) -> void* {
        auto* mine = static_cast<Call*>(argument);
        mine->completed = mine->tool.launch();
        return nullptr;
    };
    EXPECT_EQ(pthread_create(&thread, &attributes, run, &call), 0);
    EXPECT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
    return call.completed;
}

// The place of the poles, and their arrangement. A ring is entered at its first pole. It is left at its first
// pole, and then it is cut there; or at its last pole, and then no arc can be cut and the loop stays.
enum class Network { Data, Clock, Feedback };
enum class Shape { Chain, CutRing, UncutRing };

struct DeepRow {
    Network network;
    Shape shape;
    Lines warnings;
};

class Deep : public testing::TestWithParam<DeepRow> {
protected:
    // Puts the million poles between two others.
    void fill(Pole* from, Pole* to) {
        Pole* first = design_.addPole("first");
        design_.connect(from, first);
        Pole* last = design_.addChain(first, million - 1);
        if (GetParam().shape != Shape::Chain)
            design_.connect(last, first);
        design_.connect(GetParam().shape == Shape::CutRing ? first : last, to);
    }
    // Number of arcs from the one to the other.
    static int length() { return GetParam().shape == Shape::CutRing ? 2 : million + 1; }

    Builder design_;
    Support::Recorder console_;
};

TEST_P(Deep, Launch) {
    const auto& [network, shape, warnings] = GetParam();
    Pelko::cell->reserve(million + 100, million + 100);
    constexpr int period = 10 * million;
    Pole* clk = design_.addClockSource("clk", period);
    Pole* clockNet = network == Network::Clock ? design_.addPole("clock net") : clk;
    const Register a = design_.addRegister("a", clk);
    const Register b = design_.addRegister("b", clockNet);
    if (network == Network::Clock)
        fill(clk, clockNet);
    if (network == Network::Data)
        fill(a.output, b.data);
    else
        design_.connect(a.output, b.data);

    // A PLL with a feedback from a generator of its own.
    auto* module = Pelko::cell->getModule();
    auto* generator = Pelko::WFG::create(module, "generator");
    generator->setPLLFeedback(true);
    Pole* source = Pole::create(Pelko::cell, Pelko::Pin::create(generator, "ZO"));
    source->setClockSource(true);
    auto* pll = Pelko::PLL::create(module, "pll");
    pll->setFeedbackCompensation(true);
    Pole* feedback = Pole::create(Pelko::cell, Pelko::Pin::create(pll, "FBK"));
    auto* net = Pelko::Net::create(module, "oscillator");
    Pelko::Pin::create(pll, "VCO", Pelko::Pin::Direction::Driver)->connect(net);
    Pelko::Pin::create(generator, "I")->connect(net);
    if (network == Network::Feedback)
        fill(source, feedback);
    else
        design_.connect(source, feedback);

    auto* exception = Pelko::MPath::create({{a.clock}, {b.check}}, 1);
    analyzer->setWeightTagging(true);
    const Support::DebugMode debug(true); // so that loops of constrained paths are reported
    const Support::ToolPointer tool = Support::makeTool();
    EXPECT_TRUE(launchOnUsualStack(*tool));

    Lines expected = warnings;
    expected.insert(expected.begin(), "Creating domains");
    EXPECT_EQ(console_.getLines(), expected);
    EXPECT_EQ(subdomains(), Names{"clk:rising -> clk:rising"});
    const Pelko::Subdomain* subdomain = Builder::findSubdomain(clk, clk);
    const int data = network == Network::Data ? length() : 1;
    const int skew = network == Network::Clock ? length() : 0;
    EXPECT_EQ(int(subdomain->getLAT()), data - skew);
    EXPECT_EQ(int(analyzer->getPeriod(clk)), data - skew);
    EXPECT_EQ(int(analyzer->getMaxPLLFeedbackDelay(source)), network == Network::Feedback ? length() : 1);
    ASSERT_EQ(subdomain->getLongestPaths().getCount(), 1U);
    const Pelko::Path* path = subdomain->getLongestPaths().getFirst();
    EXPECT_EQ(path->getEdges().getCount(), 2U + static_cast<unsigned>(data));
    EXPECT_EQ(int(path->getSlack()), period - data + skew);
    EXPECT_EQ(path->getConstrainedPath(), exception);
    const Pelko::Edge* last = b.data->getIncomingEdges().getFirst();
    EXPECT_EQ(last->getPseudoMask().getBits(), 1U);
    EXPECT_EQ(int(last->getSlack()), period - data + skew);
    EXPECT_EQ(last->getWeight(), 1U);
}

const char* const done = "  Creating domains ... done";

const DeepRow deepRows[] = {
    {Network::Data, Shape::Chain, {done}},
    {Network::Data,
     Shape::CutRing,
     {"  warning: 1 combinatorial loop detected during data domain analysis.", done}},
    {Network::Data,
     Shape::UncutRing,
     {"  warning: 1 combinatorial loop detected during data domain analysis.", done,
      "warning: 1 combinatorial loop detected during false paths analysis."}},
    {Network::Clock, Shape::Chain, {done}},
    {Network::Clock,
     Shape::CutRing,
     {"  warning: 1 combinatorial loop detected during clock paths analysis.", done}},
    {Network::Clock,
     Shape::UncutRing,
     {"  warning: 1 combinatorial loop detected during clock paths analysis.", done}},
    {Network::Feedback, Shape::Chain, {done}},
    {Network::Feedback, Shape::CutRing, {done}},
    {Network::Feedback, Shape::UncutRing, {done}},
};

std::string nameOfRow(const testing::TestParamInfo<DeepRow>& row) {
    static const char* const networks[] = {"Data", "Clock", "Feedback"};
    static const char* const shapes[] = {"Chain", "CutRing", "UncutRing"};
    return std::string(networks[static_cast<int>(row.param.network)]) +
           shapes[static_cast<int>(row.param.shape)];
}

INSTANTIATE_TEST_SUITE_P(Million, Deep, testing::ValuesIn(deepRows), nameOfRow);

// --- Fan-out ---

TEST(Wide, ClockNetOfAMillionSinks) {
    Builder design;
    const Support::Recorder console;
    Pole* clk = design.addClockSource("clk");
    Pole* tree = design.addPole("tree");
    design.connect(clk, tree);
    const Register first = design.addRegister("first", tree);
    for (std::size_t i = 0; i < million; ++i)
        design.connect(tree,
                       Pole::createClock(Pelko::cell, Pelko::Pin::create(Pelko::cell->getModule(), "sink"),
                                         Pelko::ClockMode::Rising));
    const Register last = design.addRegister("last", tree);
    design.connect(first.output, last.data);
    analyzer->setDomainsOnly(true);
    const Support::ToolPointer tool = Support::makeTool();
    EXPECT_TRUE(launchOnUsualStack(*tool));
    EXPECT_EQ(console.getLines(), Lines{});
    EXPECT_EQ(subdomains(), Names{"clk:rising -> clk:rising"});
    EXPECT_EQ(namesOf(Builder::findSubdomain(clk, clk)->getLatchLeaves()), Names{"last/C"});
}

TEST(Wide, DataNetOfAMillionEnds) {
    Builder design;
    Pole* in = design.addInput("in");
    Pole* gate = design.addPole("gate");
    design.connect(in, gate);
    for (std::size_t i = 0; i < million; ++i)
        design.connect(gate, Pole::createOutput(Pelko::cell));
    analyzer->setDomainsOnly(true);
    const Support::ToolPointer tool = Support::makeTool();
    EXPECT_TRUE(launchOnUsualStack(*tool));
    EXPECT_EQ(subdomains(), Names{"none -> none"});
    const Pelko::Subdomain* subdomain =
        Builder::findSubdomain(nullptr, nullptr, Support::none, Support::none);
    EXPECT_EQ(namesOf(subdomain->getLaunchLeaves()), Names{"in"});
    EXPECT_EQ(subdomain->getLatchLeaves().getCount(), million);
}

} // namespace
