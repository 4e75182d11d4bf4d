// The time of every phase on layered designs of 10^4, 10^5 and 10^6 poles: one clock, and four clocks with 30
// exceptions.
//
// Each line has seconds, nanoseconds per arc of the design, and at the end the bytes per pole that the phases
// add at their peak.
#include "LayeredDesign.h"
#include "Measure.h"
#include "Vorlen/Sweep.h"
#include "Vorlen/Tool.h"

#include <string>

namespace {

struct Row {
    const char* phase;
    double seconds;
};

void run(const bench::LayeredParameters& parameters) {
    const double empty = bench::residentBytes();
    bench::LayeredDesign design(parameters);
    const double built = bench::residentBytes();
    Pelko::Analyzer* analyzer = design.getModel().getAnalyzer();
    Vorlen::Tool* tool = Vorlen::Tool::create();
    std::vector<Row> rows;
    double peak = built;
    const auto measure = [&](const char* phase, auto work) {
        const double seconds = bench::timeOf(work);
        peak = std::max(peak, bench::residentBytes());
        for (Row& row : rows)
            if (std::string(row.phase) == phase) {
                row.seconds += seconds;
                return;
            }
        rows.push_back({phase, seconds});
    };

    measure("prolog", [&] { tool->prolog(); });
    Vorlen::StemPoleSetMap stems;
    measure("clock stems", [&] { tool->clockStem(stems); });
    measure("data stems and domains", [&] { tool->dataStem(stems); });
    stems.clear();
    measure("relations", [&] { tool->updateRelationship(); });
    measure("constrained paths", [&] { tool->tagConstrainedPaths(); });
    unsigned long sweeps = 0;
    for (const Pelko::Domain* domain : analyzer->getDomains())
        for (Pelko::Subdomain* subdomain : domain->getSubdomains()) {
            Vorlen::Sweep* sweep = Vorlen::Sweep::create(subdomain);
            ++sweeps;
            measure("clock arrival", [&] { sweep->clockAnalyze(); });
            measure("data arrival", [&] { sweep->arrivalAnalyze(); });
            measure("required times", [&] { sweep->requireAnalyze(); });
            measure("longest paths (10)", [&] { sweep->searchLongestPaths(Pelko::Delay::getMaximum(), 10); });
            measure("shortest paths (10)",
                    [&] { sweep->searchShortestPaths(Pelko::Delay::getMaximum(), 10); });
            measure("port slacks", [&] { sweep->iodelaySlackAnalyze(); });
            measure("slack tagging", [&] { sweep->tagSlacks(); });
            sweep->destroy();
        }
    measure("weights", [&] { tool->tagWeights(0.5F); });
    measure("epilogue", [&] { tool->epilog(); });
    tool->destroy();

    std::printf("\n%.0f poles, %.0f arcs, %zu registers, %u clocks, %u exceptions, %lu sweeps\n",
                design.getPoleCount(), design.getEdgeCount(), design.getWidth(), parameters.clocks,
                parameters.exceptions, sweeps);
    double total = 0;
    for (const Row& row : rows) {
        std::printf("  %-24s %9.4f s %9.1f ns/arc\n", row.phase, row.seconds,
                    row.seconds / design.getEdgeCount() * 1e9);
        total += row.seconds;
    }
    std::printf("  %-24s %9.4f s %9.1f ns/arc\n", "all", total, total / design.getEdgeCount() * 1e9);
    std::printf("  model %.0f bytes/pole, phases at their peak %.0f bytes/pole more\n",
                (built - empty) / design.getPoleCount(), (peak - built) / design.getPoleCount());
    std::fflush(stdout);
}

} // namespace

int main() {
    for (const unsigned clocks : {1U, 4U})
        for (const std::size_t poles : {10'000UL, 100'000UL, 1'000'000UL})
            run({.poles = poles, .clocks = clocks, .exceptions = clocks == 1 ? 0U : 30U});
    return 0;
}
