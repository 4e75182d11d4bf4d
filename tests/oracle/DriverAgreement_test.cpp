// The driver's phases, one by one and joined, against the reference, on random designs.
#include "RandomDesign.h"
#include "ReferenceTool.h"
#include "Snapshot.h"

#include "Vorlen/Tool.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace oracle {

namespace {

constexpr unsigned long designCount = 20000;

struct Destroy {
    void operator()(Vorlen::Tool* tool) const { tool->destroy(); }
};
using ToolPointer = std::unique_ptr<Vorlen::Tool, Destroy>;

std::string loopPolesOf(const Vorlen::Tool& tool) {
    return stateOfPoles("on the loop stack", tool.getLoopPoles());
}

std::string loopPolesOf(const ReferenceTool& tool) {
    return stateOfPoles("on the loop stack", Ruvex::ListCollection<Pelko::Pole*>(tool.getLoopPoles()));
}

// Path counts as either tool keeps them.
template <class Tool>
using CountsOf = std::conditional_t<std::is_same_v<Tool, ReferenceTool>, PoleCountMap, Vorlen::PoleCountMap>;

template <class Counts>
std::string stateOfCounts(const Counts& counts) {
    std::string text;
    for (const auto& [pole, count] : counts)
        text += "count " + std::to_string(pole->getIndex()) + " " + std::to_string(count) + "\n";
    return text;
}

// Runs one phase after another on either tool, and records what each phase leaves behind.
template <class Tool>
class PhaseRecorder {
public:
    explicit PhaseRecorder(Tool& tool) : tool_(tool) {}

    template <class Phase>
    void run(const char* name, Phase phase) {
        text_ += std::string("== ") + name + "\n";
        const std::string fault = faultOf(phase);
        text_ += fault + stateOfModel() + loopPolesOf(tool_) + console_.take();
        if (!fault.empty())
            tool_.reset();
    }
    void note(const std::string& text) { text_ += text; }
    std::string take() { return std::move(text_); }

private:
    Tool& tool_;
    ConsoleRecorder console_;
    std::string text_;
};

template <class Tool>
void recordWeights(RandomDesign& design, Tool& tool, PhaseRecorder<Tool>& recorder) {
    static const std::vector<Pelko::Delay> thresholds{Pelko::Delay(-3),
                                                      Pelko::Delay(0),
                                                      Pelko::Delay(1),
                                                      Pelko::Delay(6),
                                                      Pelko::Delay(25),
                                                      Pelko::Delay::getUndefined(),
                                                      Pelko::Delay::getMinimum(),
                                                      Pelko::Delay::getMaximum()};
    static const std::vector<float> ratios{0.5F, 0.0F, 0.1F, 1.0F, 0.33F};
    const std::size_t poles = design.getPoles().size();
    const Pelko::Delay& threshold = thresholds[poles % thresholds.size()];
    CountsOf<Tool> forward;
    CountsOf<Tool> backward;
    recorder.run("forward counts", [&] { tool.edgeForwardStem(threshold, forward); });
    recorder.run("backward counts", [&] { tool.edgeBackwardStem(threshold, backward); });
    recorder.note(stateOfCounts(forward) + stateOfCounts(backward));
    recorder.run("weights by threshold", [&] { tool.tagWeights(threshold); });
    recorder.run("weights by ratio", [&] { tool.tagWeights(ratios[poles % ratios.size()]); });
}

template <class Tool>
std::string runPhases(RandomDesign& design, Tool& tool) {
    PhaseRecorder<Tool> recorder(tool);
    StemPoleSetMap stems;
    recorder.run("prolog", [&] { tool.prolog(); });
    recorder.run("PLL feedback", [&] { tool.pllFeedbackStem(); });
    recorder.run("clock stems", [&] { tool.clockStem(stems); });
    recorder.note(stateOfStems(stems));
    recorder.run("data stems", [&] { tool.dataStem(stems); });
    recorder.run("domains", [&] { tool.createDomains(); });
    recorder.run("relations", [&] { tool.updateRelationship(); });
    recorder.run("constrained paths", [&] { tool.tagConstrainedPaths(); });

    design.scatterResults();
    recorder.run("no period", [&] { tool.calculatePeriod(nullptr); });
    for (Pelko::Pole* root : design.getRoots())
        recorder.run("period", [&] { recorder.note(tool.calculatePeriod(root)._getLabel() + "\n"); });
    recordWeights(design, tool, recorder);
    recorder.run("epilogue", [&] { tool.epilog(); });

    design.change();
    recorder.run("second prolog", [&] { tool.prolog(); });
    recorder.run("updated domains", [&] { tool.updateDomains(); });
    recorder.run("updated relations", [&] { tool.updateRelationship(); });
    recorder.run("second constrained paths", [&] { tool.tagConstrainedPaths(); });
    return recorder.take();
}

// Creates the domains, updates them after a change, and updates them once more without a change.
template <class Tool>
std::string launchDomainsOnly(RandomDesign& design, Tool& tool) {
    PhaseRecorder<Tool> recorder(tool);
    for (int round = 0; round < 3; ++round) {
        if (round == 1)
            design.change();
        Pelko::analyzer->setDomainsOnly(true);
        recorder.run("launch", [&] { recorder.note(tool.launch() ? "completed\n" : "aborted\n"); });
    }
    return recorder.take();
}

template <class Run>
std::string withLibrary(RandomDesign& design, Run run) {
    const ToolPointer tool(Vorlen::Tool::create());
    return run(design, *tool);
}

template <class Run>
std::string withReference(RandomDesign& design, Run run) {
    ReferenceTool tool;
    return run(design, tool);
}

TEST(DriverAgreement, EveryPhaseOnRandomDesigns) {
    const auto run = [](RandomDesign& design, auto& tool) { return runPhases(design, tool); };
    compareOnDesigns(
        designCount, Knobs(), [&run](RandomDesign& design) { return withLibrary(design, run); },
        [&run](RandomDesign& design) { return withReference(design, run); });
}

TEST(DriverAgreement, DomainsOnlyLaunchesOnRandomDesigns) {
    const auto run = [](RandomDesign& design, auto& tool) { return launchDomainsOnly(design, tool); };
    compareOnDesigns(
        designCount, Knobs(), [&run](RandomDesign& design) { return withLibrary(design, run); },
        [&run](RandomDesign& design) { return withReference(design, run); });
}

// The weights need no path search, so these designs may have any number of paths: many paths make many
// classes.
TEST(DriverAgreement, WeightsOnDenseDesigns) {
    const auto run = [](RandomDesign& design, auto& tool) {
        PhaseRecorder recorder(tool);
        design.scatterResults();
        recordWeights(design, tool, recorder);
        return recorder.take();
    };
    Knobs knobs;
    knobs.searchSteps = 100000;
    knobs.exceptions = false;
    compareOnDesigns(
        designCount, knobs, [&run](RandomDesign& design) { return withLibrary(design, run); },
        [&run](RandomDesign& design) { return withReference(design, run); });
}

// A launch that is stopped after the domains leaves the same as a launch with the domains-only switch.
TEST(DriverAgreement, StoppedReferenceIsADomainsOnlyLaunch) {
    for (unsigned long seed = 1; seed <= 500; ++seed) {
        std::string texts[2];
        for (const bool stopped : {false, true}) {
            RandomDesign design(seed);
            ReferenceTool tool;
            PhaseRecorder recorder(tool);
            if (stopped)
                tool.stopAfter(ReferenceTool::Phase::Domains);
            Pelko::analyzer->setDomainsOnly(!stopped);
            recorder.run("launch", [&] { recorder.note(tool.launch() ? "completed\n" : "aborted\n"); });
            texts[stopped] = recorder.take();
        }
        ASSERT_EQ(texts[0], texts[1]) << "VORLEN_SEED=" << seed;
    }
}

// The comparison proves something only if the designs hold every feature. Each text is in the reference's
// report of at least this many in a thousand designs.
TEST(DriverAgreement, RandomDesignsShowEveryFeature) {
    struct Row {
        const char* text;
        unsigned least;
    };
    static constexpr std::array<Row, 26> rows{{
        {"domain ", 500},
        {"domain - -> -", 100},
        {" asynchronous", 20},
        {"subdomain 1 -> 2", 100},
        {"subdomain 2 -> 1", 100},
        {"subdomain 0 -> 0", 100},
        {"Generated clock ", 100},
        {"1 combinatorial loop detected during clock paths analysis.", 20},
        {" combinatorial loops detected during clock paths analysis.", 10},
        {"1 combinatorial loop detected during data domain analysis.", 50},
        {" combinatorial loops detected during data domain analysis.", 5},
        {"1 combinatorial loop detected during false paths analysis.", 1},
        {" combinatorial loops detected during false paths analysis.", 1},
        {" has not clock mode!", 5},
        {" inactive", 300},
        {" criticity 1", 100},
        {" criticity 2", 100},
        {" criticity 3", 50},
        {" feedback ", 20},
        {" validated", 300},
        {" decisive", 200},
        {" weight 2", 100},
        {" marked", 500},
        {" opening ", 400},
        {"Creating domains ... done", 100},
        {"65 constrained paths: at most 64", 1},
    }};
    std::array<unsigned, rows.size()> found{};
    constexpr unsigned designs = 2000;
    for (unsigned long seed = 1; seed <= designs; ++seed) {
        RandomDesign design(seed);
        const std::string text =
            withReference(design, [](RandomDesign& drawn, auto& tool) { return runPhases(drawn, tool); });
        for (std::size_t i = 0; i < rows.size(); ++i)
            found[i] += text.find(rows[i].text) != std::string::npos;
    }
    for (std::size_t i = 0; i < rows.size(); ++i)
        EXPECT_GE(found[i] * 1000, rows[i].least * designs)
            << rows[i].text << ": in " << found[i] << " designs";
}

} // namespace

} // namespace oracle
