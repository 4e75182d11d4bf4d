// Ends of the process that do not come back to main: by a signal, and by a script that cannot be left.
//
// An output file that was begun goes, and so does the progress line; nothing else is put away.
#pragma once

#include <string_view>

namespace Cli {

// SIGINT stops the run, or ends the process where nothing would heed that; others that end it leave no file.
void handleSignals();

// The last line, and the status for a bad input. Safe on any thread, and in a signal handler.
[[noreturn]] void endBadScript(std::string_view line) noexcept;

} // namespace Cli
