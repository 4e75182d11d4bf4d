#include "Launches.h"

#include "ReferenceTool.h"

#include "Ruvex/Random.h"
#include "Vorlen/Sweep.h"
#include "Vorlen/Tool.h"

#include <algorithm>
#include <string>
#include <vector>

namespace oracle {

namespace {

// What a sweep holds when it is destroyed: a title, then one line per map of a pole.
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

// Records the library's sweeps as they are destroyed.
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

// Two launches with a change between them. `launch` gets the list to which it appends what it sees of the
// sweeps.
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
        // The sweeps that an exception leaves behind are destroyed in no particular order.
        if (!completed)
            std::sort(sweeps.begin(), sweeps.end());
        for (const std::string& sweep : sweeps)
            text += sweep;
        text += stateOfModel() + "random " + std::to_string(Ruvex::getRandomValue()) + "\n";
    }
    return text;
}

} // namespace

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

} // namespace oracle
