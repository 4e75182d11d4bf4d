// Ends of the process that do not return to main: by a signal, if memory runs out, and by a script that does
// not end.
//
// An output file that was begun is removed, and so is the progress line. Nothing else is cleaned up.
#pragma once

#include "cli/Options.h"

#include <functional>
#include <string_view>

namespace Cli {

// From now on no signal that ends the process leaves a begun file behind. SIGINT ends it with a line and
// status 130, any other signal as if it were not handled. A signal that was ignored when the process started
// (nohup, a job in the background) stays ignored, and SIGXFSZ becomes an error of writing.
void handleSignals();

// Calls `putInPlace`, which puts the outputs in their places, and fixes the status of the process. Signals
// wait until the call returns; after that they end the process with this status. If the call throws, the
// status is not fixed.
void conclude(ExitStatus status, const std::function<void()>& putInPlace);

// From now on an allocation that fails ends the process at once. Its callers could not go on without memory
// either, and the engine would report it as a fault of its own.
void handleLackOfMemory();

// Prints the line and ends the process with the status for a bad input. Safe on any thread and in a signal
// handler.
[[noreturn]] void endBadScript(std::string_view line) noexcept;

} // namespace Cli
