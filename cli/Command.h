// The command, once its options are known: a run, its report to where it is wanted, and what is said of
// failures.
#pragma once

#include "Options.h"

namespace Cli {

// Lets nothing out, a lack of memory included: every failure is one line on standard error, and no output
// file is begun after it.
ExitStatus runCommand(const Options& options) noexcept;

} // namespace Cli
