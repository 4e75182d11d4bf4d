// A subdomain: a domain refined by the launch edge and the latch edge, and the results of an analysis for its
// paths.
//
// Relations follow the convention of the sweep: data must arrive no later than the latch arrival plus the
// setup relation, and no earlier than the latch arrival minus the hold relation. An application that knows a
// relation exactly fixes it. From then on `setSetupRelation` or `setHoldRelation` leave it as it is.
#pragma once

#include "Pelko/ClockMode.h"
#include "Pelko/Delay.h"
#include "Pelko/Path.h"
#include "Pelko/detail/LeafSet.h"

#include <list>
#include <set>

namespace Pelko {

class Domain;

class PELKO_API Subdomain : public Object {
public:
    // A subdomain of the domain, which it is destroyed with. FactoryFailed: "Null domain", "Subdomain exists
    // already".
    static Subdomain* create(Domain* domain, const ClockMode& launchMode, const ClockMode& latchMode);

    Domain* getDomain() const { return domain_; }
    ClockMode getLaunchClockMode() const { return launchMode_; }
    ClockMode getLatchClockMode() const { return latchMode_; }
    // The root of the launching clock, or null for a port side without a clock.
    Pole* getLaunchRoot() const;
    // The root of the latching clock, or null for a port side without a clock.
    Pole* getLatchRoot() const;
    // Whether the same clock launches and latches: the roots are equal and not null.
    bool isPureClock() const;

    // Adds a start point. A pole that is there already counts once. O(1). InvalidRequest: "Null pole".
    void captureLaunch(Pole* pole);
    // Adds an end point. A pole that is there already counts once. O(1). InvalidRequest: "Null pole".
    void captureLatch(Pole* pole);
    // The start points, in stamp order. `contains` is O(1); the first read after an addition sorts them.
    Poles getLaunchLeaves() const { return launchLeaves_.getView(); }
    // The end points, in the same way.
    Poles getLatchLeaves() const { return latchLeaves_.getView(); }

    // The relations, undefined until set.
    const Delay& getSetupRelation() const { return setupRelation_; }
    const Delay& getHoldRelation() const { return holdRelation_; }
    // Set a relation, unless it is fixed.
    void setSetupRelation(const Delay& relation);
    void setHoldRelation(const Delay& relation);
    // Set a relation for good: it can only be fixed again, to another value.
    void fixSetupRelation(const Delay& relation);
    void fixHoldRelation(const Delay& relation);
    bool isSetupRelationFixed() const { return setupFixed_; }
    bool isHoldRelationFixed() const { return holdFixed_; }

    // How critical the driver rates the subdomain; 0 until set.
    unsigned long getCriticity() const { return criticity_; }
    void setCriticity(unsigned long criticity) { criticity_ = criticity; }
    // Whether this subdomain determines the achieved period of its clock.
    bool isDecisive() const { return decisive_; }
    void setDecisive(bool set) { decisive_ = set; }

    // The latest data arrival at the latch side, undefined until set.
    const Delay& getLAT() const { return latestArrival_; }
    // The earliest (shortest) data arrival at the latch side, undefined until set.
    const Delay& getSAT() const { return shortestArrival_; }
    void setLAT(const Delay& arrival) { latestArrival_ = arrival; }
    void setSAT(const Delay& arrival) { shortestArrival_ = arrival; }
    // Whether a path under a multicycle exception is the latest one.
    bool isMPathCritical() const { return mpathCritical_; }
    void setMPathCritical() { mpathCritical_ = true; }
    void resetMPathCritical() { mpathCritical_ = false; }

    // The reported longest (setup) paths, the worst first, equal slacks in order of creation.
    Ruvex::Collection<Path*> getLongestPaths() const {
        return Ruvex::SetCollection<Path*, Path::Worse>(longestPaths_);
    }
    // The reported shortest (hold) paths, in the same order.
    Ruvex::Collection<Path*> getShortestPaths() const {
        return Ruvex::SetCollection<Path*, Path::Worse>(shortestPaths_);
    }

    // Clears relations (fixed ones stay), criticity, arrivals and flags, and destroys the reported paths. The
    // leaves stay.
    void clearResults();

    // Such as "clkA:rising -> clkB:falling". A null root is called "none".
    std::string getName() const;
    std::string getClass() const override;
    std::string getAlias() const override { return getName(); }
    Ruvex::Record* _getRecord() const override;

protected:
    Subdomain(Domain* domain, const ClockMode& launchMode, const ClockMode& latchMode)
        : domain_(domain), launchMode_(launchMode), latchMode_(latchMode) {}
    void preDestroy() override;

private:
    friend class Path;

    void destroyPaths();

    Domain* domain_;
    ClockMode launchMode_;
    ClockMode latchMode_;
    detail::LeafSet launchLeaves_;
    detail::LeafSet latchLeaves_;
    Delay setupRelation_ = Delay::getUndefined();
    Delay holdRelation_ = Delay::getUndefined();
    Delay latestArrival_ = Delay::getUndefined();
    Delay shortestArrival_ = Delay::getUndefined();
    unsigned long criticity_ = 0;
    bool setupFixed_ = false;
    bool holdFixed_ = false;
    bool decisive_ = false;
    bool mpathCritical_ = false;
    std::set<Path*, Path::Worse> longestPaths_;
    std::set<Path*, Path::Worse> shortestPaths_;
    std::list<Subdomain*>::iterator place_; // in the domain's list
};

} // namespace Pelko
