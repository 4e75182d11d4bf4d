// Properties of a report as a whole.
#include "report/Report.h"

#include <algorithm>

namespace Report {

bool Report::isViolated() const {
    return setup.failing != 0 || hold.failing != 0 ||
           std::ranges::any_of(pulseChecks, [](const PulseCheck& check) { return check.slack < 0; });
}

} // namespace Report
