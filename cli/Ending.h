// Ends of the process that do not come back to main: by a signal, for lack of memory, and by a script that
// cannot be left.
//
// An output file that was begun is removed, and so is the progress line; nothing else is put away.
#pragma once

#include "cli/Options.h"

#include <functional>
#include <string_view>

namespace Cli {

// From now on every signal that ends a process leaves no begun file behind. SIGINT ends with a line and
// status 130, any other one as if it were not handled. A signal that the process was started with as ignored
// (nohup, a job in the background) stays ignored, and SIGXFSZ becomes an error of writing.
void handleSignals();

// Puts the outputs in their places, by the call, and fixes the status of the process: signals wait for the
// end of the call, and after it they end the process with this status. If the call throws, nothing is fixed.
void conclude(ExitStatus status, const std::function<void()>& putInPlace);

// An allocation that fails ends the process, wherever it is: what is on the way up could not go on without
// memory either, and the engine takes it for a fault of its own.
void handleLackOfMemory();

// The last line, and the status for a bad input. Safe on any thread, and in a signal handler.
[[noreturn]] void endBadScript(std::string_view line) noexcept;

} // namespace Cli
