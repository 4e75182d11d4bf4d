// A subdomain: a domain refined by the launch edge and the latch edge, and all that an analysis finds about
// its paths.
//
// Relations, in the convention of the sweep: data must arrive no later than the latch arrival plus the setup
// relation, and no earlier than the latch arrival minus the hold relation. An application that knows better
// than the driver fixes a relation: from then on it is what the database holds, and `setSetupRelation` /
// `setHoldRelation` leave it as it is.
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
    // FactoryFailed: "Null domain", "Subdomain exists already".
    static Subdomain* create(Domain* domain, const ClockMode& launchMode, const ClockMode& latchMode);

    Domain* getDomain() const { return domain_; }
    ClockMode getLaunchClockMode() const { return launchMode_; }
    ClockMode getLatchClockMode() const { return latchMode_; }
    // The clock roots, null on a port side.
    Pole* getLaunchRoot() const;
    Pole* getLatchRoot() const;
    // Whether one and the same clock root, not null, launches and latches.
    bool isPureClock() const;

    // Add a start point | an end point; a pole counts once. InvalidRequest: "Null pole".
    void captureLaunch(Pole* pole);
    void captureLatch(Pole* pole);
    // In stamp order; `contains` costs O(1).
    Poles getLaunchLeaves() const { return launchLeaves_.getView(); }
    Poles getLatchLeaves() const { return latchLeaves_.getView(); }

    // Undefined until set.
    const Delay& getSetupRelation() const { return setupRelation_; }
    const Delay& getHoldRelation() const { return holdRelation_; }
    void setSetupRelation(const Delay& relation);
    void setHoldRelation(const Delay& relation);
    void fixSetupRelation(const Delay& relation);
    void fixHoldRelation(const Delay& relation);
    bool isSetupRelationFixed() const { return setupFixed_; }
    bool isHoldRelationFixed() const { return holdFixed_; }

    unsigned long getCriticity() const { return criticity_; }
    void setCriticity(unsigned long criticity) { criticity_ = criticity; }
    // Whether this subdomain decides the achieved period of its clock.
    bool isDecisive() const { return decisive_; }
    void setDecisive(bool set) { decisive_ = set; }

    // The latest and the shortest data arrival at the latch side, undefined until set.
    const Delay& getLAT() const { return latestArrival_; }
    const Delay& getSAT() const { return shortestArrival_; }
    void setLAT(const Delay& arrival) { latestArrival_ = arrival; }
    void setSAT(const Delay& arrival) { shortestArrival_ = arrival; }
    // Whether a path under a multicycle exception is the latest one.
    bool isMPathCritical() const { return mpathCritical_; }
    void setMPathCritical() { mpathCritical_ = true; }
    void resetMPathCritical() { mpathCritical_ = false; }

    // The kept paths: the worst first, the first come first among equals.
    Ruvex::Collection<Path*> getLongestPaths() const {
        return Ruvex::SetCollection<Path*, Path::Worse>(longestPaths_);
    }
    Ruvex::Collection<Path*> getShortestPaths() const {
        return Ruvex::SetCollection<Path*, Path::Worse>(shortestPaths_);
    }

    // Forgets relations (fixed ones stay), criticity, arrivals, flags and kept paths. The leaves stay.
    void clearResults();

    // "clkA:rising -> clkB:falling"; "none" for a null root.
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
