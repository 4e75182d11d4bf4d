// Periods and relations from the latest arrivals of a domain: a candidate from each same-clock subdomain, and
// the relations of a subdomain whose clock has no period.
#pragma once

#include "Pelko/Delay.h"

namespace Pelko {
class Subdomain;
} // namespace Pelko

namespace Vorlen {

// The period that the latest arrival of a same-clock subdomain asks for. A transfer from one edge of the
// clock to the other takes one phase, and is scaled to a whole period. Undefined if the clock edges do not
// show the phase, if the phase has no length, or if the arrival to be scaled is a special.
Pelko::Delay candidatePeriod(const Pelko::Subdomain& subdomain);

// Sets the relations of a subdomain whose setup relation is not defined: from `best`, the largest candidate
// of its domain, or from its own latest arrival if there is no candidate (`best` undefined or the minimum
// special).
void relateToArrival(Pelko::Subdomain& subdomain, const Pelko::Delay& best);

} // namespace Vorlen
