// A session: from the files of a design to its report. The command runs one; so can any other program.
//
//     Analysis::SessionOptions options;
//     options.sdf = "top.sdf";
//     options.sdc = {"top.sdc"};
//     const Report::Report report = Analysis::Session().run(options);
//
// It prints nothing and writes no file. What there is to say goes to the callbacks and to `diagnostics`. The
// host's model is global, so one session runs at a time in a process.
#pragma once

#include "base/Diagnostics.h"
#include "model/Loops.h"
#include "readers/sdc/Limits.h"
#include "report/Report.h"

#include "Ruvex/Console.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Analysis {

// Which values of a delay's triple count as early and late.
enum class Delays { min, typ, max, minmax };
// What a clock is until the constraints say otherwise.
enum class ClockDefault { propagated, ideal };
// Which pairs of clocks are analysed: all, or only those of two clocks with periods.
enum class AnalysisMode { exhaustive, critical };

// What is read, and how it is analysed.
struct SessionOptions {
    std::string sdf;
    std::vector<std::string> sdc; // read in this order
    std::optional<std::string> netlist;
    std::optional<std::string> top; // the netlist's module; nothing: the one marked as top, or the only one
    Delays delays = Delays::minmax;
    ClockDefault clocks = ClockDefault::propagated;
    int scale = -12; // the unit of time is 10^scale s; from -15 to -12
    AnalysisMode mode = AnalysisMode::exhaustive;
    unsigned paths = 10;      // reported, of each side
    unsigned perEndpoint = 1; // of them
    bool setupPaths = true;   // whether paths of the side are reported
    bool holdPaths = true;
    bool unconstrained = false; // whether the end points without constraint are listed
    bool verbose = false;       // whether the engine's console is heard
};

// Where the time of a run goes.
struct Stage {
    std::string_view name;
    double seconds = 0;
};

struct Session {
    // Called for each stage when it begins.
    std::function<void(std::string_view)> onStage = [](std::string_view) {};
    // Called for each file of constraints, sourced ones included, when all of them have been read. An
    // exception ends the run.
    std::function<void(const std::string&)> onInput = [](const std::string&) {};
    // Called for each message of the engine if SessionOptions::verbose is set. An exception ends the run.
    std::function<void(const Ruvex::Console::Message&)> onEngineMessage = [](const Ruvex::Console::Message&) {
    };
    // For each file of constraints.
    Readers::Sdc::Limits limits;
    Model::LoopLimits loopLimits;

    // Of the last run. If it failed, what was found before the failure.
    Base::Diagnostics diagnostics;
    std::vector<Stage> stages;

    // Throws Base::BadInput for an input that cannot be read, Base::Interrupted after requestStop()
    // (EngineRun.h), and EngineFailure if the engine gave up. Everything that is global is then as it was
    // before.
    Report::Report run(const SessionOptions& options);
};

} // namespace Analysis
