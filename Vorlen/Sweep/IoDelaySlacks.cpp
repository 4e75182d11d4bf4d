// Slacks of ports: the worst setup and hold slack at the input ports that launch the subdomain and at the
// output ports that latch it, over paths with and without exceptions. The host keeps the worst slack of each
// port over all subdomains.
#include "Vorlen/Cone/DataTimes.h"
#include "Vorlen/Sweep/Sides.h"
#include "Vorlen/detail/Work.h"

namespace Vorlen {

using Pelko::Delay;
using Pelko::Edge;
using Pelko::Pole;
using Pelko::PseudoMask;

namespace {

struct PortSlacks {
    Delay longest = Delay::getMaximum();
    Delay shortest = Delay::getMaximum();

    void add(Sweep& sweep, Edge* edge, detail::ClassTimings arrivals) {
        for (const detail::ClassTiming& each : arrivals) {
            const PseudoMask mask(each.key);
            const Timing timing = each.getTiming();
            add(sweep, edge, mask, timing, nullptr);
            for (Pelko::CPath* cpath : Pelko::analyzer->getCPaths(mask))
                add(sweep, edge, mask, timing, cpath);
        }
    }

    void merge(Pole* port) const {
        LongSide::mergePortSlack(port, longest);
        ShortSide::mergePortSlack(port, shortest);
    }

private:
    void add(Sweep& sweep, Edge* edge, const PseudoMask& mask, const Timing& timing, Pelko::CPath* cpath) {
        keep(longest, sweep.calculateLSlack(edge, mask, timing.getMaximumDelay(), cpath));
        keep(shortest, sweep.calculateSSlack(edge, mask, timing.getMinimumDelay(), cpath));
    }

    static void keep(Delay& worst, const Delay& slack) {
        if (slack.isDefined() && slack < worst)
            worst = slack;
    }
};

} // namespace

void Sweep::iodelaySlackAnalyze() {
    const auto addEdge = [this](PortSlacks& slacks, Edge* edge) {
        detail::visitArcs(1);
        slacks.add(*this, edge, data->getArrivals(edge->getSource()));
    };
    if (subdomain->getLaunchRoot())
        for (Pole* leaf : subdomain->getLaunchLeaves()) {
            if (!leaf->isInput())
                continue;
            PortSlacks slacks;
            for (Edge* edge : leaf->getOutgoingEdges())
                addEdge(slacks, edge);
            slacks.merge(leaf);
        }
    if (subdomain->getLatchRoot())
        for (Pole* leaf : subdomain->getLatchLeaves()) {
            if (!leaf->isOutput())
                continue;
            PortSlacks slacks;
            for (Edge* edge : leaf->getIncomingEdges())
                addEdge(slacks, edge);
            slacks.merge(leaf);
        }
}

} // namespace Vorlen
