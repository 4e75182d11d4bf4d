// One run of the command, from its files to its report: read, launch, harvest.
#pragma once

#include "cli/Options.h"
#include "model/Loops.h"
#include "readers/sdc/Limits.h"
#include "report/Report.h"

#include "Ruvex/Console.h"

#include <functional>
#include <stdexcept>
#include <string_view>

namespace Cli {

// Where the time of a run goes.
struct Stage {
    std::string_view name;
    double seconds = 0;
};

struct Session {
    // Told of each stage as it begins.
    std::function<void(std::string_view)> onStage = [](std::string_view) {};
    // Told of each file of constraints, those that others source included, once all of them are read. What it
    // throws ends the run.
    std::function<void(const std::string&)> onInput = [](const std::string&) {};
    // What the engine says, if Options::verbose.
    std::function<void(const Ruvex::Console::Message&)> onEngineMessage = [](const Ruvex::Console::Message&) {
    };
    // For each file of constraints.
    Readers::Sdc::Limits limits;
    Model::LoopLimits loopLimits;
    // Diagnostics that were found before a failure.
    Base::Diagnostics diagnostics;
    std::vector<Stage> stages;

    // Base::BadInput: an input that cannot be read. Base::Interrupted. std::logic_error: the engine gave up,
    // with its message.
    Report::Report run(const Options& options);
};

// Asks the run that goes on, if any, to stop, from another thread or a signal handler: it throws Base::Interrupted.
// Returns whether it heeds that at once; while it reads or reports, it does so at the next stage. The command
// itself does not wait for this, and ends its process (Ending.h).
bool requestStop() noexcept;

} // namespace Cli
