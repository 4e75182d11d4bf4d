// Takes the results of a run out of the engine's sweeps.
//
// A Harvest listens to the host while the engine runs. As soon as a subdomain exists, it fixes the relations
// of the clocks' edges; just before a sweep is destroyed, it reads the arrivals at the sweep's end points,
// finds the exception that governs each, keeps the worst, and traces the worst paths.
//
//     Analysis::Harvest harvest(analyzed, options);
//     Analysis::EngineRun run(application, verbose, hear);
//     run.launch(harvest);
//     const Analysis::Harvested results = harvest.take();
//
// No exception leaves a listener, since it would end the run with another reason: what goes wrong is kept,
// nothing more is read, and take() throws it.
#pragma once

#include "analysis/EndpointReader.h"
#include "analysis/EndpointSlacks.h"
#include "analysis/PathTraces.h"

#include <exception>

namespace Analysis {

struct HarvestOptions {
    PathLimits limits;
    PerSide<bool> traces{true, true}; // whether paths of the side are reported
};

// All results of a run.
struct Harvested {
    EndpointResults endpoints;
    std::vector<Report::Path> paths; // that are reported: setup first, each side worst first
    ClockPairs cutOffPairs;          // clocks whose edges were compared up to a limit only
};

class Harvest : public Pelko::ObjectListener, public Pelko::SweepListener {
public:
    // What the design refers to must outlive the object.
    Harvest(const AnalyzedDesign& analyzed, const HarvestOptions& options);
    Harvest(const Harvest&) = delete;
    Harvest& operator=(const Harvest&) = delete;

    void onCreated(Pelko::Object* object) override;
    void onSweepDestroyed(Pelko::Object* object) override;

    // Hands over the results of a launch that returned; those of one that failed would be incomplete. Throws
    // what went wrong while a sweep was read, every time. The only way to the results.
    Harvested take();

private:
    template <class Work>
    void guarded(Work work) noexcept;
    void read(const Vorlen::Sweep& sweep);

    const AnalyzedDesign of_;
    const PerSide<bool> traces_;
    const ResultOrder order_;
    ClockRelations relations_;
    const EndpointReader reader_;
    EndpointSlacks endpoints_;
    PathTraces paths_;
    std::exception_ptr failure_;
};

} // namespace Analysis
