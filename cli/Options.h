// The command line, as data.
//
// Parsing only writes to the two streams that it is given. It does not look whether input files exist:
// whoever opens them reports that.
#pragma once

#include "analysis/Session.h"

#include <iosfwd>
#include <optional>
#include <string>

namespace Cli {

using Analysis::AnalysisMode;
using Analysis::ClockDefault;
using Analysis::Delays;

enum ExitStatus : int {
    timingMet = 0, // also if nothing is constrained
    timingViolated = 1,
    badInput = 2, // also bad usage, and an output that cannot be written
    internalError = 3,
    interrupted = 130,
};

enum class ColorWhen { automatic, always, never };
enum class ProgressWhen { automatic, never };

// What the session is asked for, and what only the command knows.
struct Options : Analysis::SessionOptions {
    bool exceptions = false;         // whether the text lists the exceptions
    std::optional<std::string> json; // "-": standard output
    bool quiet = false;
    ColorWhen color = ColorWhen::automatic;
    ProgressWhen progress = ProgressWhen::automatic;
    bool allowViolations = false;
};

struct Invocation {
    Options options;
    // Set if everything has been printed: the command ends with this status.
    std::optional<ExitStatus> exit;
};

// The line on standard error for a fault of the command line.
std::string usageError(const std::string& text);

// Writes help and the version to `out`, and a usage error to `err`.
Invocation parse(int argc, const char* const* argv, std::ostream& out, std::ostream& err);

} // namespace Cli
