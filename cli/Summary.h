// From the results of a run to its report: sums, counts and names.
#pragma once

#include "Harvest.h"

namespace Cli {

struct Results {
    const Readers::Design& design;
    const Readers::Model::Network& network;
    const Readers::Model::Clocks& clocks;
    const Readers::Sdc::Constraints& constraints;
    Readers::Model::TimingModel& model;
    const Readers::Model::Exceptions& exceptions;
    Harvest& harvest; // hands its paths over
};

// listUnconstrained: with the names of the end points that nothing constrains, not only their number.
void fillReport(const Results& results, bool listUnconstrained, Report::Report& report);

} // namespace Cli
