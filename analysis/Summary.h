// From the results of a run to its report: sums, counts and names.
#pragma once

#include "analysis/Harvest.h"

namespace Analysis {

struct Results {
    const Design::RoutedDesign& design;
    const Model::Network& network;
    const Model::Clocks& clocks;
    const Design::Constraints& constraints;
    Model::TimingModel& model;
    const Exceptions::Exceptions& exceptions;
    Harvest& harvest; // hands its paths over
};

// listUnconstrained: with the names of the end points that nothing constrains, not only their number.
void fillReport(const Results& results, bool listUnconstrained, Report::Report& report);

} // namespace Analysis
