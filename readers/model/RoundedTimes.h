// Which times of the constraints are rounded to the unit of the run.
#pragma once

#include "../Rounding.h"
#include "../sdc/Constraints.h"

namespace Readers::Model {

// Each time as the user wrote it, once. A waveform that was not written is not counted.
void lookAtTimes(const Sdc::Constraints& constraints, int scale, Rounding& rounding);

} // namespace Readers::Model
