// Reads the arrivals at the end points of a sweep, class by class, and computes their slacks.
//
// It costs a look-up for each end point, and for each of its sets of classes two slacks and the decision
// which exception governs them.
#pragma once

#include "analysis/Arrival.h"
#include "analysis/SweepView.h"

#include <functional>

namespace Analysis {

class EndpointReader {
public:
    using Use = std::function<void(const Arrival&)>;

    explicit EndpointReader(const AnalyzedDesign& analyzed) : of_(analyzed) {}

    // Calls `use` for every arrival that is timed or that a false path governs, by end points in the order of
    // the sweep's leaves. Throws Base::Interrupted if the run is to stop, and Base::BadInput for an exception
    // that ignores a clock latency which is not the same for all of its start points.
    void read(const SweepView& view, const Use& use) const;

private:
    void readEnd(const SweepView& view, Pelko::Pole* pole, const Vorlen::Timing& latch, const Use& use) const;
    bool readSide(const SweepView& view, const Vorlen::Timing& data, const Vorlen::Timing& latch,
                  Arrival& arrival) const;
    bool findTerms(const SweepView& view, const Vorlen::Timing& data, const Vorlen::Timing& latch,
                   Arrival& arrival) const;
    std::optional<Time> commonLaunchLatency(const SweepView& view, ClassSet classes, Side side) const;
    void ignoreLatencies(const SweepView& view, Arrival& arrival) const;

    const AnalyzedDesign& of_;
};

} // namespace Analysis
