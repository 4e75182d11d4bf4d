// The text report: tables first, then the paths, then everything else that was asked for.
//
// Times are printed in ns with three digits. If the run's unit is finer than 1 ps, they are rounded so that
// every sum that is shown adds up, and a violation never looks met; docs/command.md describes how.
#pragma once

#include "report/Report.h"

#include <cstddef>
#include <iosfwd>

namespace Report {

struct TextOptions {
    bool color = false;
    bool quiet = false;             // only violations are printed
    bool listUnconstrained = false; // the names of unconstrained end points, in addition to their number
    bool listExceptions = false;    // the table of exceptions, in addition to their counts
    std::size_t width = 100;        // the column at which commands in that table wrap; names are never cut
};

void writeText(const Report& report, const TextOptions& options, std::ostream& out);

// Writes a single path, as it is in the report.
void writePath(const Path& path, int scale, bool color, std::ostream& out);

} // namespace Report
