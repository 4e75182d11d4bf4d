// The clocks that exist after the last command: waveforms, latencies, and when each arrives at which pin.
//
// A clock walks from its targets along wires and gates, and a rising edge stays a rising edge on the way. It
// stops at a register's clock pin and at every target of a clock, and passes no pin twice. Each pin keeps the
// smallest early and the greatest late value over all walks. The walks are listed one by one, so the cost is
// the number of paths.
#pragma once

#include "Design.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace Brute {

enum class DelayMode { minimum, typical, maximum, minmax };
struct Options {
    DelayMode delays = DelayMode::minmax;
    bool propagated = true; // the default before any command
};

struct Interval {
    int early = 0, late = 0;
};
inline Interval operator+(Interval a, Interval b) { return {a.early + b.early, a.late + b.late}; }

Interval interval(const Values& values, DelayMode mode);
int checkValue(const Triple& triple, DelayMode mode);

struct LiveClock {
    int index = none; // index into Design::clocks
    std::string name;
    int period = 0, rise = 0, fall = 0;
    bool propagated = true;
    Interval root;   // at its targets: source latency, plus insertion delay if it is propagated
    int network = 0; // ideal clocks only
    std::vector<int> targets;
    std::map<int, Interval> arrivals; // key: each pin that it reaches; all latency included

    int edge(bool fallEdge) const { return fallEdge ? fall : rise; }
    // The latency from which a port delay that names the clock starts.
    Interval atPort(bool sourceIncluded, bool networkIncluded) const;
};

struct Clocks {
    std::vector<LiveClock> live;
    std::vector<int> liveOf; // by index into Design::clocks: index into live, none if it was replaced
    std::set<int> sources;   // all targets
};

// Throws std::logic_error if a generated clock has no master, or has several and none was chosen.
Clocks resolveClocks(const Design& design, const Options& options);

// Arcs that no constraint disables, by the pin at which they start.
std::vector<std::vector<int>> liveArcs(const Design& design);
// Cells of which all arcs and checks are disabled.
std::set<int> disabledCells(const Design& design);

// Capture minus launch, with the edges repeated for ever in both directions.
struct Relation {
    int setup = 0; // the smallest above 0
    int hold = 0;  // the largest not above 0
};
Relation relation(int launchEdge, int launchPeriod, int captureEdge, int capturePeriod);

} // namespace Brute
