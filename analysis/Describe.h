// The words of reports for what stands behind a result.
#pragma once

#include "design/Constraints.h"
#include "model/Ids.h"
#include "model/TimingModel.h"
#include "report/Report.h"

#include <string>

namespace Analysis {

Report::Exception describe(const Design::Constraints& constraints, Design::ExceptionId exception);
Report::Exception describe(const Design::Constraints& constraints, const Design::Exception& exception);

// A start or end point by its kind, with the name of its clock; empty: without a clock.
std::string describe(const Model::Start& start, const std::string& clock);
std::string describe(const Model::End& end, const std::string& clock);

} // namespace Analysis
