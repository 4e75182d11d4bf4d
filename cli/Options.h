// The command line, as data.
//
// Parsing has no effect but on the two streams that it is given: help and version go to the one, a usage
// error to the other. Whether files exist is found out by who opens them.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace Cli {

enum ExitStatus : int {
    timingMet = 0, // or nothing is constrained
    timingViolated = 1,
    badInput = 2, // or bad usage, or an output that cannot be written
    internalError = 3,
    interrupted = 130,
};

enum class Delays { min, typ, max, minmax };
enum class ClockDefault { propagated, ideal };
enum class AnalysisMode { exhaustive, critical };
enum class ColorWhen { automatic, always, never };
enum class ProgressWhen { automatic, never };

struct Options {
    std::string sdf;
    std::vector<std::string> sdc; // in their order
    std::optional<std::string> netlist;
    std::optional<std::string> top;
    Delays delays = Delays::minmax;
    ClockDefault clocks = ClockDefault::propagated;
    int scale = -12; // the unit of time is 10^scale s
    unsigned paths = 10;
    unsigned perEndpoint = 1;
    bool setupPaths = true; // the sides of which paths are reported
    bool holdPaths = true;
    bool unconstrained = false;
    bool exceptions = false;
    AnalysisMode mode = AnalysisMode::exhaustive;
    std::optional<std::string> json; // "-": standard output
    bool quiet = false;
    bool verbose = false;
    ColorWhen color = ColorWhen::automatic;
    ProgressWhen progress = ProgressWhen::automatic;
    bool allowViolations = false;
};

struct Invocation {
    Options options;
    std::optional<ExitStatus> exit; // set: all is said, and the command ends with it
};

// The line on standard error that says what is wrong with the command line.
std::string usageError(const std::string& text);

Invocation parse(int argc, const char* const* argv, std::ostream& out, std::ostream& err);

} // namespace Cli
