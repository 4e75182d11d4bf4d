// The differences between setup (the long side) and hold (the short side), as two policies with the same
// members. Everything else about slacks and path search is written once, for either policy.
#pragma once

#include "Pelko/Analyzer.h"
#include "Pelko/Path.h"
#include "Pelko/Subdomain.h"
#include "Vorlen/Sweep.h"
#include "Vorlen/detail/Faults.h"

namespace Vorlen {

// Setup: the latest data must come before the earliest latch edge.
struct LongSide {
    using Delay = Pelko::Delay;
    using Edge = Pelko::Edge;
    using Subdomain = Pelko::Subdomain;

    static constexpr bool isLong = true;
    static constexpr detail::Fault nullEdge = detail::Fault::LongNullEdge;
    static constexpr detail::Fault undefinedSlack = detail::Fault::LongestUndefinedSlack;
    static constexpr detail::Fault multipleConstraints = detail::Fault::LongestMultipleConstraints;

    // The setup requirement is the minimum of a required timing.
    static const Delay& requiredOf(const Timing& timing) { return timing.getMinimumDelay(); }
    // Late data counts: the late clock at the launch, maximum delays, and the setup value of a check arc as a
    // further delay.
    static const Delay& arrivalOf(const Timing& timing) { return timing.getMaximumDelay(); }
    static const Delay& launchOf(const Timing& timing) { return timing.getMaximumDelay(); }
    static Delay delayOf(const Edge* edge) { return edge->getMaxDelay(); }
    static Delay dataTime(const Delay& arrival, const Edge* edge) { return arrival + edge->getMaxDelay(); }
    // The earliest latch edge is the critical one.
    static const Delay& latchOf(const Timing& timing) { return timing.getMinimumDelay(); }
    // Positive if the data arrives before it is required.
    static Delay slack(const Delay& required, const Delay& dataTime) { return required - dataTime; }

    static Delay calculateSlack(Sweep& sweep, Edge* edge, const Pelko::PseudoMask& mask, const Delay& arrival,
                                Pelko::CPath* cpath) {
        return sweep.calculateLSlack(edge, mask, arrival, cpath);
    }
    static Ruvex::Collection<Pelko::Path*> pathsOf(const Subdomain& subdomain) {
        return subdomain.getLongestPaths();
    }
    static Pelko::Path* createPath(Subdomain* subdomain, const Pelko::Edges& edges, const Delay& latch,
                                   const Delay& launch, const Delay& adjust) {
        return Pelko::Path::createLongest(subdomain, edges, latch, launch, adjust);
    }
    static void mergeSlack(Pelko::CPath& cpath, const Delay& slack) { cpath.mergeLongestSlack(slack); }
    static void mergePortSlack(Pelko::Pole* port, const Delay& slack) {
        Pelko::analyzer->mergeIODelayLongestSlack(port, slack);
    }
};

// Hold: the earliest data must come after the latest latch edge.
struct ShortSide {
    using Delay = Pelko::Delay;
    using Edge = Pelko::Edge;
    using Subdomain = Pelko::Subdomain;

    static constexpr bool isLong = false;
    static constexpr detail::Fault nullEdge = detail::Fault::ShortNullEdge;
    static constexpr detail::Fault undefinedSlack = detail::Fault::ShortestUndefinedSlack;
    static constexpr detail::Fault multipleConstraints = detail::Fault::ShortestMultipleConstraints;

    // The hold requirement is the maximum of a required timing.
    static const Delay& requiredOf(const Timing& timing) { return timing.getMaximumDelay(); }
    // Early data counts: the early clock at the launch, minimum delays; the hold value of a check arc is
    // subtracted.
    static const Delay& arrivalOf(const Timing& timing) { return timing.getMinimumDelay(); }
    static const Delay& launchOf(const Timing& timing) { return timing.getMinimumDelay(); }
    static Delay delayOf(const Edge* edge) { return edge->getMinDelay(); }
    static Delay dataTime(const Delay& arrival, const Edge* edge) {
        return edge->getTarget()->isCheck() ? arrival - edge->getMinDelay() : arrival + edge->getMinDelay();
    }
    // The latest latch edge is the critical one.
    static const Delay& latchOf(const Timing& timing) { return timing.getMaximumDelay(); }
    // Positive if the data arrives after it is required.
    static Delay slack(const Delay& required, const Delay& dataTime) { return dataTime - required; }

    static Delay calculateSlack(Sweep& sweep, Edge* edge, const Pelko::PseudoMask& mask, const Delay& arrival,
                                Pelko::CPath* cpath) {
        return sweep.calculateSSlack(edge, mask, arrival, cpath);
    }
    static Ruvex::Collection<Pelko::Path*> pathsOf(const Subdomain& subdomain) {
        return subdomain.getShortestPaths();
    }
    static Pelko::Path* createPath(Subdomain* subdomain, const Pelko::Edges& edges, const Delay& latch,
                                   const Delay& launch, const Delay& adjust) {
        return Pelko::Path::createShortest(subdomain, edges, latch, launch, adjust);
    }
    static void mergeSlack(Pelko::CPath& cpath, const Delay& slack) { cpath.mergeShortestSlack(slack); }
    static void mergePortSlack(Pelko::Pole* port, const Delay& slack) {
        Pelko::analyzer->mergeIODelayShortestSlack(port, slack);
    }
};

} // namespace Vorlen
