// Chains of a million poles: every phase of a sweep, the path searches, the weights and a whole launch walk
// them on a stack of the ordinary 8 MB.
#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"

#include "Pelko/Path.h"
#include "Vorlen/Sweep.h"

#include <gtest/gtest.h>

#include <chrono>
#include <sys/resource.h>

namespace {

using namespace Support;
using Pelko::Delay;
using Pelko::Edge;
using Pelko::Path;
using Pelko::Pole;
using Vorlen::Sweep;
using Vorlen::TimingMap;

constexpr std::size_t million = 1'000'000;

// A stack of the default size, whatever the limit of the program that runs the tests.
class OrdinaryStack {
public:
    OrdinaryStack() {
        getrlimit(RLIMIT_STACK, &before_);
        rlimit limit = before_;
        limit.rlim_cur = std::min<rlim_t>(before_.rlim_cur, 8 << 20);
        isSet_ = setrlimit(RLIMIT_STACK, &limit) == 0;
    }
    OrdinaryStack(const OrdinaryStack&) = delete;
    OrdinaryStack& operator=(const OrdinaryStack&) = delete;
    ~OrdinaryStack() { setrlimit(RLIMIT_STACK, &before_); }

    bool isSet() const { return isSet_; }

private:
    rlimit before_{};
    bool isSet_ = false;
};

class DeepSweep : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(stack_.isSet()); }

    // Runs a phase, and prints its time.
    template <class Phase>
    void run(const std::string& name, Phase phase) {
        const auto start = std::chrono::steady_clock::now();
        phase();
        const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
        RecordProperty(name + " ms", static_cast<int>(time.count()));
    }

    // Checks the only path of a collection: its ends, number of arcs and slack.
    static void expectPath(const Ruvex::Collection<Path*>& paths, const std::string& ends, std::size_t arcs,
                           int slack) {
        ASSERT_EQ(paths.getCount(), 1U);
        const Path* path = paths.getFirst();
        EXPECT_EQ(path->getAlias(), ends);
        EXPECT_EQ(path->getEdges().getCount(), arcs);
        EXPECT_EQ(int(path->getSlack()), slack);
    }

    static std::pair<int, int> boundsOf(bool found, TimingMap& map) {
        return found ? std::pair(int(map[0].getMinimumDelay()), int(map[0].getMaximumDelay()))
                     : std::pair(undefined, undefined);
    }

    OrdinaryStack stack_;
    Builder design_;
};

TEST_F(DeepSweep, DataPath) {
    // Clock to output 5, a million arcs of 1, one arc of 7 to the data pin, hold 3 and setup 4. With a period
    // of 2,000,000 the setup slack is 2,000,000 - 1,000,012 - 4, and the hold slack 1,000,012 - 3.
    Pole* clk = design_.addClockSource("clk", 2 * million);
    const Register a = design_.addRegister("a", clk, rising, 5);
    const Register b = design_.addRegister("b", clk, rising, 5, 3, 4);
    run("build", [&] { design_.connect(design_.addChain(a.output, million), b.data, 7, 7); });
    Pelko::Subdomain* subdomain = design_.addSubdomain(clk, clk);
    subdomain->captureLaunch(a.clock);
    subdomain->captureLatch(b.clock);
    subdomain->setSetupRelation(Delay(2 * million));
    subdomain->setHoldRelation(Delay(0));

    Sweep* sweep = Sweep::create(subdomain);
    run("clock arrival", [&] { sweep->clockAnalyze(); });
    run("data arrival", [&] { sweep->arrivalAnalyze(); });
    run("data required", [&] { sweep->requireAnalyze(); });
    run("longest paths", [&] { sweep->searchLongestPaths(Delay::getMaximum(), 1); });
    run("shortest paths", [&] { sweep->searchShortestPaths(Delay::getMaximum(), 1); });
    run("port slacks", [&] { sweep->iodelaySlackAnalyze(); });
    run("arc slacks", [&] { sweep->tagSlacks(); });

    TimingMap map;
    EXPECT_EQ(boundsOf(sweep->hasArrivalTimingMap(b.check, map), map), std::pair(1'000'009, 1'000'016));
    EXPECT_EQ(boundsOf(sweep->hasRequireTimingMap(a.clock, map), map), std::pair(999'984, -1'000'009));
    EXPECT_EQ(int(subdomain->getLAT()), 1'000'016);
    EXPECT_EQ(int(subdomain->getSAT()), 1'000'009);
    constexpr std::size_t arcs = 1 + million + 1 + 1;
    expectPath(subdomain->getLongestPaths(), "a/C -> b/check", arcs, 999'984);
    expectPath(subdomain->getShortestPaths(), "a/C -> b/check", arcs, 1'000'009);
    std::size_t tagged = 0;
    for (const Edge* edge : Pelko::cell->getEdges())
        if (edge->getSlack().isDefined()) {
            ++tagged;
            ASSERT_EQ(int(edge->getSlack()), 999'984);
        }
    EXPECT_EQ(tagged, arcs);
    run("end of the sweep", [&] { sweep->destroy(); });
    run("end of the paths", [&] { subdomain->clearResults(); });
}

TEST_F(DeepSweep, ClockPath) {
    // A million arcs of (1, 2) from the clock to the register that latches; none to the one that launches.
    Pole* clk = design_.addClockSource("clk", 4 * million);
    const Register a = design_.addRegister("a", clk);
    const Register b = design_.addRegister("b");
    Pole* last = clk;
    run("build", [&] {
        for (std::size_t i = 1; i < million; ++i) {
            Pole* next = design_.addPole();
            design_.connect(last, next, 1, 2);
            last = next;
        }
        design_.connect(last, b.clock, 1, 2);
    });
    design_.connect(a.output, b.data, 10, 20);
    Pelko::Subdomain* subdomain = design_.addSubdomain(clk, clk);
    subdomain->captureLaunch(a.clock);
    subdomain->captureLatch(b.clock);
    subdomain->setSetupRelation(Delay(4 * million));
    subdomain->setHoldRelation(Delay(0));
    Sweep* sweep = Sweep::create(subdomain);
    run("clock arrival", [&] { sweep->clockAnalyze(); });
    TimingMap map;
    EXPECT_EQ(boundsOf(sweep->hasLatchTimingMap(b.clock, map), map), std::pair(1'000'000, 2'000'000));
    run("everything else", [&] {
        sweep->arrivalAnalyze();
        sweep->requireAnalyze();
        sweep->searchLongestPaths(Delay::getMaximum(), 1);
        sweep->searchShortestPaths(Delay::getMaximum(), 1);
    });
    expectPath(subdomain->getLongestPaths(), "a/C -> b/check", 3, 4'999'980);
    expectPath(subdomain->getShortestPaths(), "a/C -> b/check", 3, -1'999'990);
    sweep->destroy();
}

TEST_F(DeepSweep, PortsAndALoop) {
    // From port to port without a clock, with an arc back from the last pole to the first one.
    Pole* in = design_.addInput("in");
    Pole* out = design_.addOutput("out");
    Pole* first = design_.addChain(in, 1);
    Pole* last = design_.addChain(first, million - 1);
    design_.connect(last, out);
    design_.connect(last, first);
    Pelko::Subdomain* subdomain = design_.addSubdomain(nullptr, nullptr);
    subdomain->captureLaunch(in);
    subdomain->captureLatch(out);
    subdomain->setSetupRelation(Delay(million));
    subdomain->setHoldRelation(Delay(0));
    Sweep* sweep = Sweep::create(subdomain);
    run("all", [&] { sweep->analyze(); });
    expectPath(subdomain->getLongestPaths(), "in -> out", million + 1, -1);
    expectPath(subdomain->getShortestPaths(), "in -> out", million + 1, 1'000'001);
    EXPECT_EQ(marked(), Names{});
    sweep->destroy();
}

TEST_F(DeepSweep, Launch) {
    // Every phase of a run: domains, relations, sweeps, weights, period and epilogue.
    Pole* clk = design_.addClockSource("clk", million);
    const Register a = design_.addRegister("a", clk);
    const Register b = design_.addRegister("b", clk);
    design_.connect(design_.addChain(a.output, million), b.data, 0, 0);
    Pelko::analyzer->setWeightTagging(true);
    const Recorder recorder;
    const ToolPointer tool = makeTool();
    run("launch", [&] { EXPECT_TRUE(tool->launch()); });
    EXPECT_EQ(recorder.getLines(), Lines{});
    const Pelko::Subdomain* subdomain = Builder::findSubdomain(clk, clk);
    ASSERT_NE(subdomain, nullptr);
    EXPECT_EQ(int(subdomain->getLAT()), 1'000'000);
    EXPECT_EQ(int(Pelko::analyzer->getPeriod(clk)), 1'000'000);
    // The slack is zero: every arc of the path has the only weight, and every pole on it is marked.
    constexpr std::size_t arcs = 1 + million + 1 + 1;
    expectPath(subdomain->getLongestPaths(), "a/C -> b/check", arcs, 0);
    std::size_t weighted = 0;
    std::size_t failing = 0;
    for (const Edge* edge : Pelko::cell->getEdges())
        weighted += edge->getWeight();
    for (const Pole* pole : Pelko::cell->getPoles())
        failing += pole->isMarked();
    EXPECT_EQ(weighted, arcs);
    EXPECT_EQ(failing, arcs + 1);
}

} // namespace
