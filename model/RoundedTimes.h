// Which times of the constraints are rounded to the unit of the run.
#pragma once

#include "base/Rounding.h"
#include "design/Constraints.h"

namespace Model {

// Each time as the user wrote it, once. A waveform that was not written is not counted.
void lookAtTimes(const Design::Constraints& constraints, int scale, Base::Rounding& rounding);

} // namespace Model
