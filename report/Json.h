// The JSON report: one document, described by docs/report.schema.json and docs/json.md.
//
// It is written piece by piece, so that memory is a block of text for any number of end points. The same
// report always becomes the same bytes. The caller checks the stream for failures.
#pragma once

#include "report/Report.h"

#include <iosfwd>

namespace Report {

void writeJson(const Report& report, std::ostream& out);

} // namespace Report
