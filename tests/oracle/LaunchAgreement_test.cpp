// Whole launches against the reference, on random designs with everything on: what they leave in the database
// and say on the console, and every map of every pole in every sweep at the moment when the sweep ends.
#include "RandomDesign.h"
#include "ReferenceTool.h"
#include "Snapshot.h"

#include "Ruvex/Random.h"
#include "Vorlen/Sweep.h"
#include "Vorlen/Tool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace oracle {

namespace {

constexpr unsigned long designCount = 20000;

// Sweeps hold these at their end, each a line a pole.
std::string titleOf(const Pelko::Subdomain* subdomain) { return "sweep of " + subdomain->getName() + "\n"; }

std::string mapsOf(const Vorlen::Sweep& sweep, const Pelko::Subdomain* subdomain) {
    std::string text = titleOf(subdomain);
    for (Pelko::Pole* pole : Pelko::cell->getPoles()) {
        Vorlen::TimingMap map;
        if (sweep.hasLaunchTimingMap(pole, map))
            text += stateOfTiming("launchAT", pole, map);
        if (sweep.hasLatchTimingMap(pole, map))
            text += stateOfTiming("latchAT", pole, map);
        if (sweep.hasArrivalTimingMap(pole, map))
            text += stateOfTiming("dataAT", pole, map);
        if (sweep.hasRequireTimingMap(pole, map))
            text += stateOfTiming("dataRT", pole, map);
    }
    return text;
}

std::string mapsOf(const ReferenceSweep& sweep) {
    std::string text = titleOf(sweep.getSubdomain());
    const auto add = [&text](const char* title, const ReferenceSweep::PoleMap& maps, Pelko::Pole* pole) {
        const auto found = maps.find(pole);
        if (found != maps.end())
            text += stateOfTiming(title, pole, found->second);
    };
    for (Pelko::Pole* pole : Pelko::cell->getPoles()) {
        add("launchAT", sweep.getLaunchAT(), pole);
        add("latchAT", sweep.getLatchAT(), pole);
        add("dataAT", sweep.getDataAT(), pole);
        add("dataRT", sweep.getDataRT(), pole);
    }
    return text;
}

// Hears of the library's sweeps as they end.
class SweepListener final : public Pelko::ObjectListener {
public:
    explicit SweepListener(std::vector<std::string>& sweeps) : sweeps_(sweeps) {
        Pelko::Object::addListener(this);
    }
    ~SweepListener() override { Pelko::Object::removeListener(this); }

    void onDestroyed(Pelko::Object* object) override {
        if (const auto* sweep = dynamic_cast<const Vorlen::Sweep*>(object))
            sweeps_.push_back(mapsOf(*sweep, sweep->getSubdomain()));
    }

private:
    std::vector<std::string>& sweeps_;
};

// Two launches with a change between them. `launch` is told where to put what it sees of the sweeps.
template <class Launch>
std::string launchTwice(RandomDesign& design, Launch launch) {
    ConsoleRecorder console;
    std::string text;
    for (int round = 0; round < 2; ++round) {
        if (round == 1)
            design.change();
        std::vector<std::string> sweeps;
        const bool completed = launch(sweeps);
        text += completed ? "== completed\n" : "== aborted\n";
        text += console.take();
        // The sweeps that an exception leaves behind end in no particular order.
        if (!completed)
            std::sort(sweeps.begin(), sweeps.end());
        for (const std::string& sweep : sweeps)
            text += sweep;
        text += stateOfModel() + "random " + std::to_string(Ruvex::getRandomValue()) + "\n";
    }
    return text;
}

std::string launchLibrary(RandomDesign& design) {
    Vorlen::Tool* tool = Vorlen::Tool::create();
    std::string text = launchTwice(design, [tool](std::vector<std::string>& sweeps) {
        const SweepListener listener(sweeps);
        return tool->launch();
    });
    tool->destroy();
    return text;
}

std::string launchReference(RandomDesign& design) {
    ReferenceTool tool;
    return launchTwice(design, [&tool](std::vector<std::string>& sweeps) {
        tool.setSweepListener([&sweeps](const ReferenceSweep& sweep) { sweeps.push_back(mapsOf(sweep)); });
        return tool.launch();
    });
}

TEST(LaunchAgreement, TwoLaunchesOnRandomDesigns) {
    compareOnDesigns(designCount, Knobs(), launchLibrary, launchReference);
}

// Without the switches that end runs early or leave phases out, and on small designs, so that every result is
// compared often.
TEST(LaunchAgreement, SmallDesignsThatKeepTheContract) {
    Knobs knobs;
    knobs.poles = 14;
    knobs.brokenContract = false;
    knobs.domainsOnly = false;
    knobs.throwing = false;
    compareOnDesigns(designCount, knobs, launchLibrary, launchReference);
}

// What the comparison is worth depends on what the designs hold. Each text is in the reference's report of at
// least this many in a thousand designs.
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
