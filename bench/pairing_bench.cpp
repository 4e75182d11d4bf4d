// The launch/latch pairing on 100,000 registers whose cones hold at most 200 launch points: one pair per
// launch point of each end point.
#include "LayeredDesign.h"
#include "Measure.h"
#include "Vorlen/Tool.h"

int main() {
    bench::LayeredDesign design({.poles = 100'000 * 34, .depth = 30, .reach = 3});
    Vorlen::Tool* tool = Vorlen::Tool::create();
    tool->prolog();
    Vorlen::StemPoleSetMap stems;
    const double before = bench::residentBytes();
    const double clockSeconds = bench::timeOf([&] { tool->clockStem(stems); });
    const double dataSeconds = bench::timeOf([&] { tool->dataStem(stems); });
    const double after = bench::residentBytes();
    std::printf("%zu registers, %.0f poles, %.0f arcs, cones of at most %u launch points\n",
                design.getWidth(), design.getPoleCount(), design.getEdgeCount(), 2 * 3 * 30 + 1);
    std::printf("clock stems            %7.2f s\n", clockSeconds);
    std::printf("data stems and pairing %7.2f s\n", dataSeconds);
    std::printf("memory added           %7.1f MB\n", (after - before) / 1e6);
    tool->destroy();
    return 0;
}
