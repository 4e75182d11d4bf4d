// What every part of the analysis reads: the design, and what was made of it for the engine.
#pragma once

#include "exceptions/Exceptions.h"
#include "model/Ids.h"
#include "model/TimingModel.h"

namespace Analysis {

// References only: all of it must outlive its users.
struct AnalyzedDesign {
    const Design::RoutedDesign& design;
    const Model::Network& network;
    const Model::Clocks& clocks;
    const Design::Constraints& constraints;
    // Not const, since what the host offers is reached through it.
    Model::TimingModel& model;
    // Not const, since it remembers what it has decided.
    Exceptions::Exceptions& exceptions;
};

} // namespace Analysis
