// A domain: the paths that are launched by one clock root and latched by another. Either root may be null,
// for the side of a port without a clock.
//
// Domains belong to the analyzer, in order of creation. The subdomains of a domain are destroyed with it.
#pragma once

#include "Pelko/ClockMode.h"
#include "Pelko/Object.h"
#include "Ruvex/Collections.h"

#include <list>

namespace Pelko {

class Analyzer;
class Path;
class Pole;
class Subdomain;

class PELKO_API Domain : public Object {
public:
    // A domain of the global analyzer. FactoryFailed: "Null analyzer", "Domain exists already".
    static Domain* create(Pole* launchRoot, Pole* latchRoot);

    // The analyzer that the domain belongs to.
    Analyzer* getAnalyzer() const { return analyzer_; }
    Pole* getLaunchRoot() const { return launchRoot_; }
    Pole* getLatchRoot() const { return latchRoot_; }
    // Whether the clocks are asynchronous to each other. A run sets it from the clock groups.
    bool isAsynchronous() const { return asynchronous_; }
    void setAsynchronous(bool set) { asynchronous_ = set; }
    // Whether both roots have a required period.
    bool isCritical() const;

    // The subdomain of two clock edges, or null if there is none.
    Subdomain* getSubdomain(const ClockMode& launchMode, const ClockMode& latchMode) const;
    // All subdomains, in order of creation.
    Ruvex::Collection<Subdomain*> getSubdomains() const {
        return Ruvex::ListCollection<Subdomain*>(subdomains_);
    }
    // The reported paths of all subdomains, one subdomain after another.
    Ruvex::Collection<Path*> getLongestPaths() const;
    Ruvex::Collection<Path*> getShortestPaths() const;

    std::string getClass() const override;
    // "launch -> latch", the names of the roots. A null root is called "none".
    std::string getAlias() const override;
    Ruvex::Record* _getRecord() const override;

protected:
    Domain(Analyzer* owner, Pole* launchRoot, Pole* latchRoot)
        : analyzer_(owner), launchRoot_(launchRoot), latchRoot_(latchRoot) {}
    void preDestroy() override;

private:
    friend class Analyzer;
    friend class Subdomain;

    Analyzer* analyzer_;
    Pole* launchRoot_;
    Pole* latchRoot_;
    bool asynchronous_ = false;
    std::list<Subdomain*> subdomains_;
    std::list<Domain*>::iterator place_; // in the analyzer's list
};

} // namespace Pelko
