// A sweep: the whole timing analysis of one subdomain, that is, of one pair of launch and latch clock edges.
//
// The driver creates a sweep for each subdomain, runs its phases (docs/flow.md), and destroys it. Each pole
// has a TimingMap: one timing for every combination of exception classes. "AT" is an arrival time, "RT" a
// required time; "L" is the longest (setup) side, "S" the shortest (hold) side.
//
//   times             written by       read by
//   launch arrivals   clockAnalyze     arrivalAnalyze, the path searches
//   latch arrivals    clockAnalyze     arrivalAnalyze, requireAnalyze, the path searches
//   data arrivals     arrivalAnalyze   requireAnalyze, the path searches, iodelaySlackAnalyze, tagSlacks
//   required times    requireAnalyze   the slack calculations
//   arrivalTiming     arrivalAnalyze   multiplyCycleCount
//
// All walks keep their own stack. They cost one visit for each pole and one fold for each arc, except the
// path search. A sweep is used by one thread at a time, and for one analysis.
#pragma once

#include "Pelko/Object.h"
#include "Pelko/PseudoMask.h"
#include "Vorlen/Export.h"
#include "Vorlen/TimingMap.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Pelko {
class CPath;
class Subdomain;
} // namespace Pelko

namespace Vorlen {

namespace detail {
struct DataTimes;
} // namespace detail

class VORLEN_API Sweep : public Pelko::Object {
public:
    // --- Sweep/Object.cpp: the object, its look-ups, the complete sequence ---

    // A sweep without times. FactoryFailed: "Null subdomain".
    static Sweep* create(Pelko::Subdomain* subdomain);
    // Destroys a sweep after a failure, also if a listener throws.
    static void abandon(Sweep* sweep) noexcept;

    // The subdomain that the sweep was created for; never null.
    Pelko::Subdomain* getSubdomain() const { return subdomain; }

    std::string _getLabel() const override;
    // Null outside debug mode. The caller owns it.
    Ruvex::Record* _getRecord() const override;
    // "SWEEP[", the subdomain's name, "]".
    std::string getAlias() const override;
    void preDestroy() override;

    // Whether the pole has data arrivals or required times. False for null. O(1).
    bool hasArrivalTimingMap(Pelko::Pole* pole) const;
    bool hasRequireTimingMap(Pelko::Pole* pole) const;
    // Whether the pole has such times. If so, they are copied to `out`, which is otherwise left as it is. The
    // latch and launch look-ups find the clock arrivals at leaves.
    bool hasArrivalTimingMap(Pelko::Pole* pole, TimingMap& out) const;
    bool hasRequireTimingMap(Pelko::Pole* pole, TimingMap& out) const;
    bool hasLatchTimingMap(Pelko::Pole* pole, TimingMap& out) const;
    bool hasLaunchTimingMap(Pelko::Pole* pole, TimingMap& out) const;

    // For callers that want no slacks: arrivals, required times, and the path searches that the analyzer has
    // switched on.
    void analyze();

    // --- Sweep/ClockArrival.cpp: when the clock edges reach the leaves ---

    // Fills the clock arrivals of all launch and latch leaves. Each has the one key 0.
    void clockAnalyze();
    // The backward walk from one pole to the root, which adds to `clockAT`.
    void clockAnalyze(Pelko::Pole* root, Pelko::Pole* pole, PoleSet& path, PoleTimingMap& clockAT);
    // The arrival at the root: 0, or minus its PLL feedback delay.
    void updateClockATMapMap(Pelko::Pole* root, PoleTimingMap& clockAT);
    // Folds the arrival at the arc's source into that at its target.
    void updateClockATMapMap(Pelko::Edge* edge, PoleTimingMap& clockAT);

    // --- Sweep/DataArrival.cpp: arrival times, forwards ---

    // Fills the data arrivals, and writes the subdomain's latest and shortest arrival. InvalidRequest: "Not
    // an output pole" (a latch leaf of a subdomain without latch root); the times stay as far as they were
    // filled.
    void arrivalAnalyze();
    // The backward walk from one pole.
    void arrivalAnalyze(Pelko::Pole* pole, PoleSet& path);
    // The arrival at a launch pole.
    void updateDataATMapMap(Pelko::Pole* pole);
    // Folds the arrival at the arc's source into that at its target.
    void updateDataATMapMap(Pelko::Edge* edge);

    // --- Sweep/DataRequired.cpp: required times, backwards ---

    // Fills the required times. InvalidRequest: "Not an input pole" (a launch leaf of a subdomain without
    // launch root).
    void requireAnalyze();
    // The forward walk from one pole.
    void requireAnalyze(Pelko::Pole* pole, PoleSet& path);
    // The required time at an end point.
    void updateDataRTMapMap(Pelko::Pole* pole);
    // Folds the required time at the arc's target into that at its source.
    void updateDataRTMapMap(Pelko::Edge* edge);

    // --- Sweep/PathSearch.cpp: the worst paths ---

    // Create at most `count` reported paths in the subdomain, the worst, with slacks up to `maximumSlack`.
    // Exponential in the worst case, because the bound is the only pruning. InvalidRequest: "Undefined
    // maximumSlack", "Multiple constraints".
    void searchLongestPaths(Pelko::Delay maximumSlack, unsigned long count);
    void searchShortestPaths(Pelko::Delay maximumSlack, unsigned long count);
    // The search from one pole.
    void searchLongestPaths(Pelko::Pole* pole, Pelko::PseudoMask& mask, PoleSet& path, EdgeList& edges,
                            Pelko::Delay& arrival, const Pelko::Delay& bound, const unsigned long& count);
    void searchShortestPaths(Pelko::Pole* pole, Pelko::PseudoMask& mask, PoleSet& path, EdgeList& edges,
                             Pelko::Delay& arrival, const Pelko::Delay& bound, const unsigned long& count);

    // --- Sweep/IoDelaySlacks.cpp: slacks of ports ---

    // Merges the worst slacks at the subdomain's ports into the analyzer.
    void iodelaySlackAnalyze();

    // --- Sweep/Slacks.cpp: slacks of arcs ---

    // The slack of an arc for the classes in `mask`, if data arrives at its source at `arrival`: the long one
    // (setup) or the short one (hold). If `cpath` is not null, the path is under that exception. Undefined if
    // the arc's target has no required time for these classes. InvalidRequest: "Null edge".
    Pelko::Delay calculateLSlack(Pelko::Edge* edge, const Pelko::PseudoMask& mask,
                                 const Pelko::Delay& arrival, Pelko::CPath* cpath);
    Pelko::Delay calculateLSlack(Pelko::Edge* edge, const Pelko::PseudoMask& mask,
                                 const Pelko::Delay& arrival);
    Pelko::Delay calculateSSlack(Pelko::Edge* edge, const Pelko::PseudoMask& mask,
                                 const Pelko::Delay& arrival, Pelko::CPath* cpath);
    Pelko::Delay calculateSSlack(Pelko::Edge* edge, const Pelko::PseudoMask& mask,
                                 const Pelko::Delay& arrival);
    // Writes the worst long slack and the smallest duty cycle on each arc of the subdomain.
    void tagSlacks();

    // --- Sweep/MapAlgebra.cpp: operations on timing maps ---

    // Removes every entry whose key shares a bit with the mask.
    void filter(const Pelko::PseudoMask& mask, TimingMap& map);
    // Neutralises the maximum of entries under the first mask and the minimum of entries under the second. If
    // the masks are equal, their entries are removed.
    void filter(const Pelko::PseudoMask& maxMask, const Pelko::PseudoMask& minMask, TimingMap& map);
    // Every key becomes key AND mask. Entries whose keys become equal are combined.
    void sensibilize(const Pelko::PseudoMask& mask, TimingMap& map);
    // Every key becomes key OR mask. Entries whose keys become equal are combined.
    void mingle(const Pelko::PseudoMask& mask, TimingMap& map);
    // Merges the first map into the second, key by key.
    void combine(const TimingMap& from, TimingMap& into);
    // Add to both bounds of every entry: one delay, or `minimum` to the minimum and `maximum` to the maximum.
    void addDelay(const Pelko::Delay& delay, TimingMap& map);
    void addDelay(const Pelko::Delay& minimum, const Pelko::Delay& maximum, TimingMap& map);
    // Subtract from both bounds of every entry: one delay, or crossed, `maximum` from the minimum and
    // `minimum` from the maximum.
    void minusDelay(const Pelko::Delay& delay, TimingMap& map);
    void minusDelay(const Pelko::Delay& minimum, const Pelko::Delay& maximum, TimingMap& map);
    // Adds or subtracts a latch arrival.
    void addLatchTiming(const Timing& timing, TimingMap& map);
    void minusLatchTiming(const Timing& timing, TimingMap& map);
    // Every entry becomes (minimum - setup, maximum + hold).
    void takeSetupHold(const Pelko::Delay& setup, const Pelko::Delay& hold, TimingMap& map);
    // Every entry becomes (minimum - hold, maximum + setup).
    void freeSetupHold(const Pelko::Delay& setup, const Pelko::Delay& hold, TimingMap& map);

    // --- Sweep/Multicycle.cpp: exceptions that govern a map ---

    // Writes the arrival timing under key 0 and, with a maximum scaled by its multiplier, under the class of
    // every multicycle path in the mask.
    void multiplyCycleCount(const Pelko::PseudoMask& mask, TimingMap& map);
    // Neutralises the bounds under delay exceptions. If one clock launches and latches, divides the maximum
    // of entries under multicycle classes, so that it stands for one cycle. InvalidRequest: "Abnormal
    // multicycle Path".
    void divideCycleCount(TimingMap& map);
    // The class of the one exception that governs a path under these classes; empty if none does.
    Pelko::PseudoMask getPriorityMask(const Pelko::PseudoMask& mask, bool longest) const;

protected:
    explicit Sweep(Pelko::Subdomain* analysed);
    ~Sweep() override;

    static void preCreate(Pelko::Subdomain* subdomain);
    void postCreate(Pelko::Subdomain* subdomain);

private:
    bool propagateArrivals();
    void updateArrivals(unsigned slot, bool isLive);
    bool propagateRequired();
    bool updateRequired(unsigned slot, const std::vector<std::uint8_t>& kinds);
    bool launchesFromInputs() const;

    Pelko::Subdomain* subdomain;
    PoleTimingMap launchATMapMap;
    PoleTimingMap latchATMapMap;
    std::unique_ptr<detail::DataTimes> data; // data arrivals and required times
    Timing arrivalTiming;
};

} // namespace Vorlen
