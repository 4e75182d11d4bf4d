// What is done when the engine makes a subdomain, and before it destroys a sweep.
#include "analysis/Harvest.h"

#include "Pelko/Subdomain.h"

namespace Analysis {

Harvest::Harvest(const AnalyzedDesign& analyzed, const HarvestOptions& options)
    : of_(analyzed), traces_(options.traces), order_(of_.design, of_.clocks),
      relations_(of_.clocks, of_.model), reader_(of_), endpoints_(order_, of_.clocks, of_.constraints),
      paths_(of_, order_, options.limits) {}

template <class Work>
void Harvest::guarded(Work work) noexcept {
    if (failure_)
        return;
    try {
        work();
    } catch (...) {
        failure_ = std::current_exception();
    }
}

void Harvest::onCreated(Pelko::Object* object) {
    if (auto* subdomain = dynamic_cast<Pelko::Subdomain*>(object))
        guarded([&] { relations_.fix(*subdomain); });
}

void Harvest::onSweepDestroyed(Pelko::Object* object) {
    if (const auto* sweep = dynamic_cast<const Vorlen::Sweep*>(object))
        guarded([&] { read(*sweep); });
}

void Harvest::read(const Vorlen::Sweep& sweep) {
    const ClockEdges edges = relations_.edgesOf(*sweep.getSubdomain());
    const SweepView view{sweep, edges, relations_.find(edges)};
    reader_.read(view, [&](const Arrival& arrival) {
        endpoints_.add(edges, arrival);
        if (!arrival.isFalse && traces_[arrival.side])
            paths_.offer(arrival);
    });
    paths_.trace(view);
}

Harvested Harvest::take() {
    if (failure_)
        std::rethrow_exception(failure_);
    return {endpoints_.take(), paths_.take(), relations_.cutOffPairs()};
}

} // namespace Analysis
