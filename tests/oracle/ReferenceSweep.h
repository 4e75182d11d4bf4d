// The analysis of one subdomain, written as plainly as possible: ordered standard containers, recursion, one
// step after another.
//
// The library's sweep is compared with it on random designs, so it keeps no stack of its own, caches nothing
// and never processes events: a chain of some ten thousand poles is too long for it. It writes its results to
// the host database, as the library's sweep does.
//
// Phases run once, in this order: clockAnalyze, arrivalAnalyze, requireAnalyze, the searches,
// iodelaySlackAnalyze, tagSlacks. Everything is public, so that a test can check each step separately.
#pragma once

#include "Pelko/Model.h"
#include "Vorlen/Timing.h"

#include <list>
#include <map>
#include <set>

namespace oracle {

class ReferenceSweep {
public:
    // Key: class bits. Value: the summary of the paths under these exceptions.
    using Map = std::map<unsigned long, Vorlen::Timing>;
    using PoleMap = std::map<Pelko::Pole*, Map, Pelko::Object::StampLess>;
    using PoleSet = std::set<Pelko::Pole*, Pelko::Object::StampLess>;

    // Throws FactoryFailed "Null subdomain".
    explicit ReferenceSweep(Pelko::Subdomain* subdomain);

    Pelko::Subdomain* getSubdomain() const { return subdomain_; }
    const PoleMap& getLaunchAT() const { return launchAT_; }
    const PoleMap& getLatchAT() const { return latchAT_; }
    const PoleMap& getDataAT() const { return dataAT_; }
    const PoleMap& getDataRT() const { return dataRT_; }
    const Vorlen::Timing& getArrivalTiming() const { return arrivalTiming_; }

    // --- Phases ---
    void clockAnalyze();
    void arrivalAnalyze();
    void requireAnalyze();
    void searchLongestPaths(Pelko::Delay maximumSlack, unsigned long count);
    void searchShortestPaths(Pelko::Delay maximumSlack, unsigned long count);
    void iodelaySlackAnalyze();
    void tagSlacks();

    // --- Slacks ---
    // `cpath` may be null. Throws InvalidRequest "Null edge".
    Pelko::Delay calculateLSlack(Pelko::Edge* edge, const Pelko::PseudoMask& mask,
                                 const Pelko::Delay& arrival, Pelko::CPath* cpath = nullptr);
    Pelko::Delay calculateSSlack(Pelko::Edge* edge, const Pelko::PseudoMask& mask,
                                 const Pelko::Delay& arrival, Pelko::CPath* cpath = nullptr);

    // --- Map operations ---
    void filter(const Pelko::PseudoMask& mask, Map& map);
    void filter(const Pelko::PseudoMask& maxMask, const Pelko::PseudoMask& minMask, Map& map);
    void sensibilize(const Pelko::PseudoMask& mask, Map& map);
    void mingle(const Pelko::PseudoMask& mask, Map& map);
    void combine(const Map& from, Map& into);
    void addDelay(const Pelko::Delay& delay, Map& map);
    void addDelay(const Pelko::Delay& minimum, const Pelko::Delay& maximum, Map& map);
    void minusDelay(const Pelko::Delay& delay, Map& map);
    void minusDelay(const Pelko::Delay& minimum, const Pelko::Delay& maximum, Map& map);
    void addLatchTiming(const Vorlen::Timing& timing, Map& map);
    void minusLatchTiming(const Vorlen::Timing& timing, Map& map);
    void takeSetupHold(const Pelko::Delay& setup, const Pelko::Delay& hold, Map& map);
    void freeSetupHold(const Pelko::Delay& setup, const Pelko::Delay& hold, Map& map);
    void multiplyCycleCount(const Pelko::PseudoMask& mask, Map& map);
    void divideCycleCount(Map& map);
    Pelko::PseudoMask getPriorityMask(const Pelko::PseudoMask& mask, bool longest) const;

    // --- Steps of the walks ---
    void clockAnalyze(Pelko::Pole* root, Pelko::Pole* pole, PoleSet& path, PoleMap& clockAT);
    void updateClockATMapMap(Pelko::Pole* root, PoleMap& clockAT);
    void updateClockATMapMap(Pelko::Edge* edge, PoleMap& clockAT);
    void arrivalAnalyze(Pelko::Pole* pole, PoleSet& path);
    void updateDataATMapMap(Pelko::Pole* pole);
    void updateDataATMapMap(Pelko::Edge* edge);
    void requireAnalyze(Pelko::Pole* pole, PoleSet& path);
    void updateDataRTMapMap(Pelko::Pole* pole);
    void updateDataRTMapMap(Pelko::Edge* edge);

private:
    // The state of one step of a path search. `mask` and `arrival` are of the pole being visited.
    struct Search {
        bool longest;
        Pelko::PseudoMask mask;
        PoleSet path;
        std::list<Pelko::Edge*> edges;
        Pelko::Delay arrival;
        Pelko::Delay bound;
        unsigned long count;
    };

    void analyzeClockLeaves(Pelko::Pole* root, const Pelko::Poles& leaves, bool launch, PoleMap& result);
    void analyzeUnlatchedArrivals(PoleSet& path);
    void analyzeLatchedArrivals(PoleSet& path);

    void searchPaths(bool longest, Pelko::Delay maximumSlack, unsigned long count);
    Pelko::Delay getLeafArrival(bool longest, Pelko::Pole* leaf) const;
    void search(Pelko::Pole* pole, Search& state);
    void searchEdges(Pelko::Pole* pole, Search& state, const Pelko::Delay& limit);
    void makePath(Pelko::Pole* pole, const Search& state, const Pelko::Delay& limit);
    Ruvex::Collection<Pelko::Path*> getKeptPaths(bool longest) const;

    Pelko::Delay calculateSlack(bool longest, Pelko::Edge* edge, const Pelko::PseudoMask& mask,
                                const Pelko::Delay& arrival, Pelko::CPath* cpath);
    unsigned long getTaggedDutyRatio() const;
    void updateWorst(Pelko::Edge* edge, const Map& arrivals, Pelko::Delay& longest, Pelko::Delay& shortest);

    Pelko::Subdomain* subdomain_;
    PoleMap launchAT_;
    PoleMap latchAT_;
    PoleMap dataAT_;
    PoleMap dataRT_;
    Vorlen::Timing arrivalTiming_;
};

} // namespace oracle
