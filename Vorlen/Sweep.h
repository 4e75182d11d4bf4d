// A sweep: the whole timing analysis of one subdomain, that is, of one pair of launch and latch clock edges.
//
// The driver creates a sweep a subdomain, runs its phases in the order in which they stand here, and destroys
// it. Timing is carried as a TimingMap a pole: apart for every combination of exception classes. "L" and "S"
// stand for longest (setup) and shortest (hold).
//
//   map             filled by        read by
//   launchATMapMap  clockAnalyze     arrivalAnalyze, the path searches
//   latchATMapMap   clockAnalyze     arrivalAnalyze, requireAnalyze, the path searches
//   dataATMapMap    arrivalAnalyze   requireAnalyze, the path searches, iodelaySlackAnalyze, tagSlacks
//   dataRTMapMap    requireAnalyze   the slack calculations
//   arrivalTiming   arrivalAnalyze   multiplyCycleCount
//
// All walks keep their own stack, and cost one visit a pole and one fold an arc, but for the path search. A
// sweep belongs to one thread at a time and is not used for a second analysis.
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
    // --- Sweep/Object.cpp: the object, its look-ups, the complete sequence

    // FactoryFailed: "Null subdomain".
    static Sweep* create(Pelko::Subdomain* subdomain);
    // Ends a sweep on the way out of a failed run: it goes even where a listener throws at its end.
    static void abandon(Sweep* sweep) noexcept;

    Pelko::Subdomain* getSubdomain() const { return subdomain; }

    std::string _getLabel() const override;
    Ruvex::Record* _getRecord() const override;
    // "SWEEP[", the subdomain's name, "]".
    std::string getAlias() const override;
    void preDestroy() override;

    // Whether the pole has an entry; the second form copies it out, and leaves `out` as it is where there is
    // none.
    bool hasArrivalTimingMap(Pelko::Pole* pole) const;
    bool hasRequireTimingMap(Pelko::Pole* pole) const;
    bool hasArrivalTimingMap(Pelko::Pole* pole, TimingMap& out) const;
    bool hasRequireTimingMap(Pelko::Pole* pole, TimingMap& out) const;
    bool hasLatchTimingMap(Pelko::Pole* pole, TimingMap& out) const;
    bool hasLaunchTimingMap(Pelko::Pole* pole, TimingMap& out) const;

    // Arrivals, required times, and the path searches that the analyzer asks for.
    void analyze();

    // --- Sweep/ClockArrival.cpp: when the clock edges reach the leaves

    void clockAnalyze();
    void clockAnalyze(Pelko::Pole* root, Pelko::Pole* pole, PoleSet& path, PoleTimingMap& clockAT);
    void updateClockATMapMap(Pelko::Pole* root, PoleTimingMap& clockAT);
    void updateClockATMapMap(Pelko::Edge* edge, PoleTimingMap& clockAT);

    // --- Sweep/DataArrival.cpp: arrival times, forwards

    // InvalidRequest: "Not an output pole".
    void arrivalAnalyze();
    void arrivalAnalyze(Pelko::Pole* pole, PoleSet& path);
    void updateDataATMapMap(Pelko::Pole* pole);
    void updateDataATMapMap(Pelko::Edge* edge);

    // --- Sweep/DataRequired.cpp: required times, backwards

    // InvalidRequest: "Not an input pole".
    void requireAnalyze();
    void requireAnalyze(Pelko::Pole* pole, PoleSet& path);
    void updateDataRTMapMap(Pelko::Pole* pole);
    void updateDataRTMapMap(Pelko::Edge* edge);

    // --- Sweep/PathSearch.cpp: the worst paths

    // Keep at most `count` paths of a slack up to `maximumSlack`. Exponential in the worst case: the bound is
    // the only pruning. InvalidRequest: "Undefined maximumSlack", "Multiple constraints".
    void searchLongestPaths(Pelko::Delay maximumSlack, unsigned long count);
    void searchShortestPaths(Pelko::Delay maximumSlack, unsigned long count);
    // One step of the search, from a pole on.
    void searchLongestPaths(Pelko::Pole* pole, Pelko::PseudoMask& mask, PoleSet& path, EdgeList& edges,
                            Pelko::Delay& arrival, const Pelko::Delay& bound, const unsigned long& count);
    void searchShortestPaths(Pelko::Pole* pole, Pelko::PseudoMask& mask, PoleSet& path, EdgeList& edges,
                             Pelko::Delay& arrival, const Pelko::Delay& bound, const unsigned long& count);

    // --- Sweep/IoDelaySlacks.cpp: slacks of ports

    void iodelaySlackAnalyze();

    // --- Sweep/Slacks.cpp: slacks of arcs

    // The slack of an arc for the classes in `mask`, when data arrives at its source at `arrival`; under an
    // exception where one is given. Undefined where the arc's target has no required time for them.
    // InvalidRequest: "Null edge".
    Pelko::Delay calculateLSlack(Pelko::Edge* edge, const Pelko::PseudoMask& mask,
                                 const Pelko::Delay& arrival, Pelko::CPath* cpath);
    Pelko::Delay calculateLSlack(Pelko::Edge* edge, const Pelko::PseudoMask& mask,
                                 const Pelko::Delay& arrival);
    Pelko::Delay calculateSSlack(Pelko::Edge* edge, const Pelko::PseudoMask& mask,
                                 const Pelko::Delay& arrival, Pelko::CPath* cpath);
    Pelko::Delay calculateSSlack(Pelko::Edge* edge, const Pelko::PseudoMask& mask,
                                 const Pelko::Delay& arrival);
    void tagSlacks();

    // --- Sweep/MapAlgebra.cpp: operations on timing maps

    // Removes every entry whose key shares a bit with the mask.
    void filter(const Pelko::PseudoMask& mask, TimingMap& map);
    // Neutralises the maximum of entries under the first mask and the minimum of those under the second;
    // equal masks remove.
    void filter(const Pelko::PseudoMask& maxMask, const Pelko::PseudoMask& minMask, TimingMap& map);
    // Keys become key AND mask | key OR mask; entries whose keys become equal are combined.
    void sensibilize(const Pelko::PseudoMask& mask, TimingMap& map);
    void mingle(const Pelko::PseudoMask& mask, TimingMap& map);
    // Merges the first map into the second, key by key.
    void combine(const TimingMap& from, TimingMap& into);
    // Shifts of every entry. A subtracted interval is crossed: minimum less the greater, maximum less the
    // smaller bound.
    void addDelay(const Pelko::Delay& delay, TimingMap& map);
    void addDelay(const Pelko::Delay& minimum, const Pelko::Delay& maximum, TimingMap& map);
    void minusDelay(const Pelko::Delay& delay, TimingMap& map);
    void minusDelay(const Pelko::Delay& minimum, const Pelko::Delay& maximum, TimingMap& map);
    void addLatchTiming(const Timing& timing, TimingMap& map);
    void minusLatchTiming(const Timing& timing, TimingMap& map);
    // minimum - setup, maximum + hold | minimum - hold, maximum + setup
    void takeSetupHold(const Pelko::Delay& setup, const Pelko::Delay& hold, TimingMap& map);
    void freeSetupHold(const Pelko::Delay& setup, const Pelko::Delay& hold, TimingMap& map);

    // --- Sweep/Multicycle.cpp: exceptions that govern a map

    // Writes the arrival timing, scaled, under the class of every multicycle path in the mask, and unscaled
    // under none.
    void multiplyCycleCount(const Pelko::PseudoMask& mask, TimingMap& map);
    // Brings the maximum of multicycle classes back to one cycle. InvalidRequest: "Abnormal multicycle Path".
    void divideCycleCount(TimingMap& map);
    // The class of the one exception that governs a path under these classes; empty where none does.
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
    std::unique_ptr<detail::DataTimes> data; // dataATMapMap and dataRTMapMap
    Timing arrivalTiming;
};

} // namespace Vorlen
