// The command, once its options are known: a run, its report to where it is wanted, and what is said of
// failures.
#pragma once

#include "cli/Options.h"

namespace Cli {

// Lets nothing out, a lack of memory included: every failure is one line on standard error, and no output
// file is begun after it.
ExitStatus runCommand(const Options& options) noexcept;

// Help or the version, on standard output: the status, or that of an output that cannot be written. A usage
// error leaves nothing to print there, and no need of standard output.
ExitStatus printAnswer(const std::string& answer, ExitStatus status) noexcept;

} // namespace Cli
