// The command after its options are known: it runs a session, writes the report, and prints why it failed.
#pragma once

#include "cli/Options.h"

namespace Cli {

// Returns the status of the process. No exception leaves it, not even if memory runs out: every failure is
// one line on standard error, and no output file is begun after it.
ExitStatus runCommand(const Options& options) noexcept;

// Prints help or the version on standard output, and returns the status, or `badInput` if the text cannot be
// written. An empty answer, as after a usage error, does not touch standard output.
ExitStatus printAnswer(const std::string& answer, ExitStatus status) noexcept;

} // namespace Cli
