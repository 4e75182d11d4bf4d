// The analyzer: the settings of an analysis, the constraints, and the results that belong to no single pole
// or arc. The global `analyzer` is the one that tools work with.
//
// Every query by clock root accepts null, the side without a clock: periods, shifts and widths are undefined,
// the duty ratio 50. The same holds for a root without a clock.
#pragma once

#include "Pelko/AnalysisMode.h"
#include "Pelko/CPath.h"
#include "Pelko/Domain.h"
#include "Pelko/IOConstraint.h"
#include "Pelko/Pole.h"
#include "Ruvex/Collections.h"

#include <map>
#include <unordered_map>
#include <vector>

namespace Pelko {

class Cell;

class PELKO_API Analyzer : public Object {
public:
    // Silences the library's warnings and remarks.
    static bool _muted;
    // What a pole's mark is compared with (see Pole::isMarked).
    static std::uint32_t _epoch;

    // FactoryFailed: "Null cell".
    static Analyzer* create(Cell* owner);
    Cell* getCell() const { return cell_; }

    // --- Settings
    // An opening banner, indentation, and a timed closing line. Off.
    bool isVerbose() const { return verbose_; }
    void setVerbose(bool set) { verbose_ = set; }
    // Exhaustive.
    const AnalysisMode& getAnalysisMode() const { return analysisMode_; }
    void setAnalysisMode(const AnalysisMode& mode) { analysisMode_ = mode; }
    // The run stops after domain building. Off.
    bool isDomainsOnly() const { return domainsOnly_; }
    void setDomainsOnly(bool set) { domainsOnly_ = set; }
    // Slacks are written on arcs. On.
    bool isSlackTagging() const { return slackTagging_; }
    void setSlackTagging(bool set) { slackTagging_ = set; }
    // Weights are written on arcs. Off.
    bool isWeightTagging() const { return weightTagging_; }
    void setWeightTagging(bool set) { weightTagging_ = set; }
    // The longest (setup) and shortest (hold) paths are searched. On.
    bool isLongestPath() const { return longestPath_; }
    void setLongestPath(bool set) { longestPath_ = set; }
    bool isShortestPath() const { return shortestPath_; }
    void setShortestPath(bool set) { shortestPath_ = set; }
    // How many paths a subdomain keeps of each kind. 1.
    unsigned long getPathCount() const { return pathCount_; }
    void setPathCount(unsigned long count) { pathCount_ = count; }
    // The greatest slack of a kept path. The maximum special: no limit. InvalidRequest: "Undefined path
    // limit".
    const Delay& getPathLimit() const { return pathLimit_; }
    void setPathLimit(const Delay& limit);

    // --- Timing exceptions
    const PseudoMask& getFalsePathMask() const { return falsePathMask_; }
    const PseudoMask& getMaxdelayPathMask() const { return maxdelayPathMask_; }
    const PseudoMask& getMindelayPathMask() const { return mindelayPathMask_; }
    const PseudoMask& getMulticyclePathMask() const { return multicyclePathMask_; }
    void setFalsePathMask(const PseudoMask& mask) { falsePathMask_ = mask; }
    void setMaxdelayPathMask(const PseudoMask& mask) { maxdelayPathMask_ = mask; }
    void setMindelayPathMask(const PseudoMask& mask) { mindelayPathMask_ = mask; }
    void setMulticyclePathMask(const PseudoMask& mask) { multicyclePathMask_ = mask; }
    // All, in order of creation | those whose class bits intersect the mask | the false paths.
    Ruvex::Collection<CPath*> getCPaths() const;
    Ruvex::Collection<CPath*> getCPaths(const PseudoMask& mask) const;
    Ruvex::Collection<FPath*> getFalsePaths() const;

    // --- Domains
    // In order of creation.
    Ruvex::Collection<Domain*> getDomains() const { return Ruvex::ListCollection<Domain*>(domains_); }
    // The domain of two roots, or null.
    Domain* getDomain(Pole* launchRoot, Pole* latchRoot) const;

    // Clock groups: two clocks of different groups of one statement are exclusive, or asynchronous. A single
    // group stands against all other clocks. A null root is in no group. InvalidRequest: "No clock group",
    // "Null clock root", "Clock in two groups".
    enum class GroupKind { Exclusive, Asynchronous };
    void addClockGroups(GroupKind kind, const std::vector<std::vector<Pole*>>& groups);
    void clearClockGroups();
    bool isExclusive(const Domain* domain) const { return isSeparated(GroupKind::Exclusive, domain); }
    bool isAsynchronous(const Domain* domain) const { return isSeparated(GroupKind::Asynchronous, domain); }

    // --- Clocks, by root
    // -------------------------------------------------------------------------------------------------- A
    // clock that rises at `shift` and falls one high width later. The duty ratio becomes high width × 100 /
    // period, rounded to nearest, at least 1 and at most 99. InvalidRequest: "Null clock root", "Period not
    // positive", "Special shift", "Width not positive", "Widths that do not add up to the period".
    void setClock(Pole* root, const Delay& period, const Delay& shift, const Delay& highWidth,
                  const Delay& lowWidth);
    // The root has no period any more; a duty ratio set by itself goes too.
    void removeClock(Pole* root);
    Delay getRequiredPeriod(const Pole* root) const;
    Delay getShift(const Pole* root) const;
    Delay getHighWidth(const Pole* root) const;
    Delay getLowWidth(const Pole* root) const;
    // A percentage, 1 to 99; 50 unless set. InvalidRequest: "Null clock root", "Duty ratio outside 1 to 99".
    unsigned long getDutyRatio(const Pole* root) const;
    void setDutyRatio(Pole* root, unsigned long percentage);
    // The achieved period, undefined unless set. InvalidRequest: "Null clock root".
    Delay getPeriod(const Pole* root) const;
    void setPeriod(Pole* root, const Delay& period);

    // PLL feedback delays of a clock root. A source latency (early, late) is kept apart, since a run measures
    // the feedback anew: the delays read are the measured ones minus the latency, early from the minimum and
    // late from the maximum. InvalidRequest: "Null clock root".
    bool hasPLLFeedbackDelay(const Pole* root) const;
    // Undefined where there is none.
    Delay getMinPLLFeedbackDelay(const Pole* root) const;
    Delay getMaxPLLFeedbackDelay(const Pole* root) const;
    void setPLLFeedbackDelay(Pole* root, const Delay& minimum, const Delay& maximum);
    void setSourceLatency(Pole* root, const Delay& early, const Delay& late);

    // --- Ports
    // The ports that have a constraint, defined or not, in stamp order.
    Poles getConstrainedInputs() const {
        return Ruvex::KeyCollection<Pole*, IOConstraint, StampLess>(inputs_);
    }
    Poles getConstrainedOutputs() const {
        return Ruvex::KeyCollection<Pole*, IOConstraint, StampLess>(outputs_);
    }
    // A copy; not defined where there is none.
    IOConstraint getInputConstraint(Pole* pole) const;
    IOConstraint getOutputConstraint(Pole* pole) const;
    // Fill the constraint and say whether there is a defined one; otherwise the constraint is left as it is.
    bool hasInputConstraint(Pole* pole, IOConstraint& constraint) const;
    bool hasOutputConstraint(Pole* pole, IOConstraint& constraint) const;
    // Replace what was there. InvalidRequest: "Null pole", "Not an input port", "Not an output port".
    void setInputConstraint(Pole* pole, const IOConstraint& constraint);
    void setOutputConstraint(Pole* pole, const IOConstraint& constraint);
    void removeInputConstraint(Pole* pole);
    void removeOutputConstraint(Pole* pole);

    // The worst slack a port; an undefined slack is passed over. InvalidRequest: "Null pole".
    void mergeIODelayLongestSlack(Pole* pole, const Delay& slack);
    void mergeIODelayShortestSlack(Pole* pole, const Delay& slack);
    // Undefined where none was merged.
    Delay getIODelayLongestSlack(Pole* pole) const;
    Delay getIODelayShortestSlack(Pole* pole) const;

    // --- Marks and results
    // ------------------------------------------------------------------------------------------------ Clears
    // the mark of every pole. O(1).
    void unmark();
    // Forgets what runs have found: marks, slacks, weights, duty cycles, classes and masks, kept paths,
    // relations (fixed ones stay), criticities, arrivals, achieved periods, measured feedback, port slacks.
    // Constraints, domains and cut arcs stay. Results otherwise accumulate from run to run: a host calls this
    // between two.
    void clearResults();

    std::string getClass() const override;
    std::string getAlias() const override;
    Ruvex::Record* _getRecord() const override;

protected:
    explicit Analyzer(Cell* owner) : cell_(owner) {}
    void preDestroy() override;

private:
    friend class CPath;
    friend class Domain;

    struct Clock {
        // Whether nothing is known that a root without a clock would not answer.
        bool isEmpty() const {
            return !period.isDefined() && !achievedPeriod.isDefined() && dutyRatio == 50 && !hasFeedback &&
                   !hasLatency;
        }

        Delay period = Delay::getUndefined();
        Delay shift = Delay::getUndefined();
        Delay highWidth = Delay::getUndefined();
        Delay lowWidth = Delay::getUndefined();
        Delay achievedPeriod = Delay::getUndefined();
        unsigned long dutyRatio = 50;
        bool hasFeedback = false;
        Delay minimumFeedback = Delay(0);
        Delay maximumFeedback = Delay(0);
        bool hasLatency = false;
        Delay earlyLatency = Delay(0);
        Delay lateLatency = Delay(0);
    };
    struct PortSlack {
        Delay longest = Delay::getUndefined();
        Delay shortest = Delay::getUndefined();
    };
    struct ClockGroups {
        GroupKind kind;
        std::unordered_map<const Pole*, std::size_t> groupOf;
        bool single;
    };
    struct RootPairHash {
        std::size_t operator()(const std::pair<const Pole*, const Pole*>& roots) const;
    };
    using ConstraintMap = std::map<Pole*, IOConstraint, StampLess>;

    void add(Domain* domain);
    void remove(Domain* domain);
    void add(CPath* path);
    void remove(CPath* path);
    const Clock* findClock(const Pole* root) const;
    void dropEmptyClocks();
    Clock& getClock(Pole* root, const char* function);
    PortSlack& getPortSlack(Pole* pole, const char* function);
    bool isSeparated(GroupKind kind, const Domain* domain) const;
    static void replace(ConstraintMap& constraints, Pole* pole, const IOConstraint& constraint);
    static void erase(ConstraintMap& constraints, Pole* pole);
    void clearConstraints();

    Cell* cell_;
    bool verbose_ = false;
    AnalysisMode analysisMode_{AnalysisMode::Exhaustive};
    bool domainsOnly_ = false;
    bool slackTagging_ = true;
    bool weightTagging_ = false;
    bool longestPath_ = true;
    bool shortestPath_ = true;
    unsigned long pathCount_ = 1;
    Delay pathLimit_ = Delay::getMaximum();
    PseudoMask falsePathMask_;
    PseudoMask maxdelayPathMask_;
    PseudoMask mindelayPathMask_;
    PseudoMask multicyclePathMask_;
    std::vector<CPath*> cpaths_;
    std::list<Domain*> domains_;
    std::unordered_map<std::pair<const Pole*, const Pole*>, Domain*, RootPairHash> domainsByRoots_;
    std::vector<ClockGroups> clockGroups_;
    std::map<Pole*, Clock, StampLess> clocks_;
    ConstraintMap inputs_;
    ConstraintMap outputs_;
    std::map<Pole*, PortSlack, StampLess> portSlacks_;
};

extern PELKO_API Analyzer* analyzer;

} // namespace Pelko
