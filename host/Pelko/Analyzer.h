// The analyzer: the settings of an analysis, the constraints, and the results that belong to no single pole
// or arc. The global `analyzer` is the one that tools work with.
//
// Every query by clock root accepts null, which is the side without a clock. For null, and for a root without
// a clock, periods, shifts and widths are undefined and the duty ratio is 50.
//
// Cost: settings are O(1). What is kept by pole (clocks, port constraints, port slacks) costs the logarithm
// of the number of such poles.
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
    // Whether the engine's warnings and remarks are silenced. False at start.
    static bool _muted;
    // The epoch of marks: a pole is marked if its own epoch equals this one (Pole::isMarked).
    static std::uint32_t _epoch;

    // An analyzer of the cell. FactoryFailed: "Null cell".
    static Analyzer* create(Cell* owner);
    // The cell that the analyzer works on. It cannot be destroyed before the analyzer.
    Cell* getCell() const { return cell_; }

    // --- Settings ---

    // Whether a run prints a banner, indents its messages, and prints a closing line with the elapsed time.
    // Default: off.
    bool isVerbose() const { return verbose_; }
    void setVerbose(bool set) { verbose_ = set; }
    // Which domains a run analyses. Default: Exhaustive.
    const AnalysisMode& getAnalysisMode() const { return analysisMode_; }
    void setAnalysisMode(const AnalysisMode& mode) { analysisMode_ = mode; }
    // Whether a run stops after domains are built. Default: off.
    bool isDomainsOnly() const { return domainsOnly_; }
    void setDomainsOnly(bool set) { domainsOnly_ = set; }
    // Whether a run writes slacks on arcs. Default: on.
    bool isSlackTagging() const { return slackTagging_; }
    void setSlackTagging(bool set) { slackTagging_ = set; }
    // Whether a run writes weights on arcs. Default: off.
    bool isWeightTagging() const { return weightTagging_; }
    void setWeightTagging(bool set) { weightTagging_ = set; }
    // Whether a run searches the longest (setup) paths. Default: on.
    bool isLongestPath() const { return longestPath_; }
    void setLongestPath(bool set) { longestPath_ = set; }
    // Whether a run searches the shortest (hold) paths. Default: on.
    bool isShortestPath() const { return shortestPath_; }
    void setShortestPath(bool set) { shortestPath_ = set; }
    // How many paths a subdomain keeps of each kind. Default: 1.
    unsigned long getPathCount() const { return pathCount_; }
    void setPathCount(unsigned long count) { pathCount_ = count; }
    // The largest slack of a kept path. Default: the maximum special, which is no limit.
    const Delay& getPathLimit() const { return pathLimit_; }
    // InvalidRequest: "Undefined path limit".
    void setPathLimit(const Delay& limit);

    // --- Timing exceptions ---

    // The classes of all exceptions of one kind. A run sets them in its prolog; empty at start.
    const PseudoMask& getFalsePathMask() const { return falsePathMask_; }
    const PseudoMask& getMaxdelayPathMask() const { return maxdelayPathMask_; }
    const PseudoMask& getMindelayPathMask() const { return mindelayPathMask_; }
    const PseudoMask& getMulticyclePathMask() const { return multicyclePathMask_; }
    void setFalsePathMask(const PseudoMask& mask) { falsePathMask_ = mask; }
    void setMaxdelayPathMask(const PseudoMask& mask) { maxdelayPathMask_ = mask; }
    void setMindelayPathMask(const PseudoMask& mask) { mindelayPathMask_ = mask; }
    void setMulticyclePathMask(const PseudoMask& mask) { multicyclePathMask_ = mask; }
    // All exceptions, in order of creation.
    Ruvex::Collection<CPath*> getCPaths() const;
    // Those whose class is in the mask, in order of creation. A walk looks at all exceptions.
    Ruvex::Collection<CPath*> getCPaths(const PseudoMask& mask) const;
    // The false paths, in order of creation. A walk looks at all exceptions.
    Ruvex::Collection<FPath*> getFalsePaths() const;

    // --- Domains ---

    // All domains, in order of creation.
    Ruvex::Collection<Domain*> getDomains() const { return Ruvex::ListCollection<Domain*>(domains_); }
    // The domain of two roots, each of which may be null; null if there is none. O(1).
    Domain* getDomain(Pole* launchRoot, Pole* latchRoot) const;

    // What clocks of different groups are to each other.
    enum class GroupKind { Exclusive, Asynchronous };
    // Adds one statement: any two clocks of different groups are separated, in both directions. If there is
    // only one group, its clocks are separated from all other clocks. InvalidRequest: "No clock group", "Null
    // clock root", "Clock in two groups".
    void addClockGroups(GroupKind kind, const std::vector<std::vector<Pole*>>& groups);
    // Removes all statements.
    void clearClockGroups();
    // Whether a statement separates the two clocks of the domain. False if a root is null. Costs a look-up
    // for each statement. InvalidRequest: "Null domain".
    bool isExclusive(const Domain* domain) const { return isSeparated(GroupKind::Exclusive, domain); }
    bool isAsynchronous(const Domain* domain) const { return isSeparated(GroupKind::Asynchronous, domain); }

    // --- Clocks, by root ---

    // Makes the root a clock that rises at `shift` and falls one high width later, or replaces its clock. The
    // duty ratio becomes high width × 100 / period, rounded to nearest, at least 1 and at most 99.
    // InvalidRequest: "Null clock root", "Period not positive", "Special shift", "Width not positive",
    // "Widths that do not add up to the period".
    void setClock(Pole* root, const Delay& period, const Delay& shift, const Delay& highWidth,
                  const Delay& lowWidth);
    // Removes period, shift and widths, and sets the duty ratio back to 50. InvalidRequest: "Null clock
    // root".
    void removeClock(Pole* root);
    // The period that `setClock` was called with.
    Delay getRequiredPeriod(const Pole* root) const;
    // When the clock first rises.
    Delay getShift(const Pole* root) const;
    // How long the clock is high in each period.
    Delay getHighWidth(const Pole* root) const;
    // How long the clock is low in each period.
    Delay getLowWidth(const Pole* root) const;
    // The part of the period in which the clock is high, as a percentage from 1 to 99; 50 unless set.
    unsigned long getDutyRatio(const Pole* root) const;
    // InvalidRequest: "Null clock root", "Duty ratio outside 1 to 99".
    void setDutyRatio(Pole* root, unsigned long percentage);
    // The achieved period, which a run writes; undefined until set.
    Delay getPeriod(const Pole* root) const;
    // InvalidRequest: "Null clock root".
    void setPeriod(Pole* root, const Delay& period);

    // Whether the root has a measured feedback delay or a source latency.
    bool hasPLLFeedbackDelay(const Pole* root) const;
    // The minimum feedback delay, less the early source latency; undefined if the root has neither.
    Delay getMinPLLFeedbackDelay(const Pole* root) const;
    // The maximum feedback delay, less the late source latency; undefined if the root has neither.
    Delay getMaxPLLFeedbackDelay(const Pole* root) const;
    // The feedback that a run measures. `clearResults()` removes it. InvalidRequest: "Null clock root".
    void setPLLFeedbackDelay(Pole* root, const Delay& minimum, const Delay& maximum);
    // The delay from the origin of the clock to its root, a constraint. It is kept apart from the feedback,
    // because each run measures that anew. InvalidRequest: "Null clock root".
    void setSourceLatency(Pole* root, const Delay& early, const Delay& late);

    // --- Ports ---

    // The ports that have an input constraint, defined or not, in stamp order.
    Poles getConstrainedInputs() const {
        return Ruvex::KeyCollection<Pole*, IOConstraint, StampLess>(inputs_);
    }
    // The ports that have an output constraint, defined or not, in stamp order.
    Poles getConstrainedOutputs() const {
        return Ruvex::KeyCollection<Pole*, IOConstraint, StampLess>(outputs_);
    }
    // A copy of the port's constraint, which is not defined if the port has none.
    IOConstraint getInputConstraint(Pole* pole) const;
    IOConstraint getOutputConstraint(Pole* pole) const;
    // Whether the port has a defined constraint. If so, it is copied to `constraint`, which is otherwise left
    // as it is.
    bool hasInputConstraint(Pole* pole, IOConstraint& constraint) const;
    bool hasOutputConstraint(Pole* pole, IOConstraint& constraint) const;
    // Replaces the port's constraint as a whole. InvalidRequest: "Null pole", "Not an input port", "Not an
    // output port".
    void setInputConstraint(Pole* pole, const IOConstraint& constraint);
    void setOutputConstraint(Pole* pole, const IOConstraint& constraint);
    void removeInputConstraint(Pole* pole);
    void removeOutputConstraint(Pole* pole);

    // Keep the worst slack of the port. An undefined slack is ignored. InvalidRequest: "Null pole".
    void mergeIODelayLongestSlack(Pole* pole, const Delay& slack);
    void mergeIODelayShortestSlack(Pole* pole, const Delay& slack);
    // The worst slack of the port, undefined if none was merged.
    Delay getIODelayLongestSlack(Pole* pole) const;
    Delay getIODelayShortestSlack(Pole* pole) const;

    // --- Marks and results ---

    // Clears the marks of all poles. O(1).
    void unmark();
    // Clears the results of runs, which otherwise accumulate from run to run: marks, slacks, weights, duty
    // cycles, classes and masks, kept paths, relations (fixed ones stay), criticities, arrivals, achieved
    // periods, measured feedback, port slacks. Constraints, domains and inactive arcs stay. Costs a step for
    // each arc.
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
        // Whether queries return the same as for a root without a clock.
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
