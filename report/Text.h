// The text report: tables first, then the paths, then what else was asked for.
//
// Times in ns with three digits. Where the run's unit is finer than 1 ps, they are rounded so that every sum
// that is shown adds up, and a violation never looks met: docs/command.md says how.
#pragma once

#include "report/Report.h"

#include <cstddef>
#include <iosfwd>

namespace Report {

struct TextOptions {
    bool color = false;
    bool quiet = false;             // only what fails
    bool listUnconstrained = false; // their names, not only their number
    bool listExceptions = false;    // the table of them, not only counts
    std::size_t width = 100;        // where commands in the table of exceptions wrap; names are never cut
};

void writeText(const Report& report, const TextOptions& options, std::ostream& out);

// One path alone, as in the report.
void writePath(const Path& path, int scale, bool color, std::ostream& out);

} // namespace Report
