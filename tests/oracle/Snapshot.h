// Everything that can be observed of a model, as text: one fact per line, without defaults, objects named by
// index and never by address or stamp, so that two builds of one design can be compared line by line. Also
// makes that comparison over many seeds.
#pragma once

#include "RandomDesign.h"

#include "Pelko/Model.h"
#include "Ruvex/Console.h"
#include "Vorlen/TimingMap.h"

#include <functional>
#include <string>

namespace oracle {

// What runs have left in the database: marks, masks, arcs, domains, relations, leaves, kept paths,
// exceptions, clocks, ports.
std::string stateOfModel();
std::string stateOfStems(const Vorlen::StemPoleSetMap& stems);
// One pole's map in a sweep, for example "dataAT 4 {0: [1:2] 5: [undefined]}".
std::string stateOfTiming(const char* map, const Pelko::Pole* pole, const Vorlen::TimingMap& timing);
std::string stateOfPoles(const char* title, const Pelko::Poles& poles);

// The design itself, for a human reader: kinds, arcs, clocks, constraints, exceptions, settings.
std::string describeDesign();

// Returns the type, message and place of the exception that the call threw, or "".
std::string faultOf(const std::function<void()>& call);

// Returns the number of the first line that differs, and that line of each text; "" if the texts are equal.
std::string firstDifference(const std::string& library, const std::string& reference);

// Runs two sides on designs of consecutive seeds, each on its own build of the design, and compares what they
// report. A test failure names the seed, the first line that differs, and the design. The environment can
// override the first seed (VORLEN_SEED) and the number of designs (VORLEN_DESIGNS).
using Side = std::function<std::string(RandomDesign&)>;
void compareOnDesigns(unsigned long designs, const Knobs& knobs, const Side& library, const Side& reference);

// Records the console during its lifetime and keeps it silent. Elapsed times are replaced by "%".
class ConsoleRecorder {
public:
    ConsoleRecorder();
    ConsoleRecorder(const ConsoleRecorder&) = delete;
    ConsoleRecorder& operator=(const ConsoleRecorder&) = delete;
    ~ConsoleRecorder();

    // All messages since the last call, one per line, then the indentation; the indentation starts again at
    // 0.
    std::string take();

private:
    std::string text_;
};

} // namespace oracle
