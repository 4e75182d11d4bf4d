// Ends of the process that do not come back to main: by a signal, for lack of memory, and by a script that
// cannot be left.
//
// An output file that was begun goes, and so does the progress line; nothing else is put away.
#pragma once

#include <string_view>

namespace Cli {

// SIGINT stops the run, or ends the process where nothing would heed that; others that end it leave no file.
void handleSignals();

// An allocation that fails ends the process, wherever it is: what is on the way up could not go on without
// memory either, and the engine takes it for a fault of its own.
void handleLackOfMemory();

// The last line, and the status for a bad input. Safe on any thread, and in a signal handler.
[[noreturn]] void endBadScript(std::string_view line) noexcept;

} // namespace Cli
