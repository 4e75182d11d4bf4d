// The JSON report: one document, described by docs/report.schema.json and docs/json.md.
//
// It is written as it goes, so memory is a block of text whatever the number of end points. The same report
// gives the same bytes. Whether the stream took them is for the caller to ask.
#pragma once

#include "report/Report.h"

#include <iosfwd>

namespace Report {

void writeJson(const Report& report, std::ostream& out);

} // namespace Report
