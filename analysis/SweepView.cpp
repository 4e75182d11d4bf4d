// What is looked up in a sweep by several readers.
#include "analysis/SweepView.h"

namespace Analysis {

Time launchLatency(const SweepView& view, const Model::TimingModel& model, const Model::Start& start,
                   Side side) {
    if (start.kind == Model::Start::Kind::port)
        return launchSide(model.latencyAt(start.delay), side);
    Vorlen::TimingMap launch;
    if (!view.sweep.hasLaunchTimingMap(start.pole, launch))
        return 0;
    return ordinary(dataTime(launch[0], side)).value_or(0);
}

} // namespace Analysis
