// A domain: the paths launched by one clock root and latched by another. Either root may be null: a port side
// without a clock.
//
// Domains belong to the analyzer, which reads them in order of creation; a domain's subdomains end with it.
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
    // FactoryFailed: "Null analyzer", "Domain exists already".
    static Domain* create(Pole* launchRoot, Pole* latchRoot);

    // The analyzer that the domain was made for.
    Analyzer* getAnalyzer() const { return analyzer_; }
    Pole* getLaunchRoot() const { return launchRoot_; }
    Pole* getLatchRoot() const { return latchRoot_; }
    bool isAsynchronous() const { return asynchronous_; }
    void setAsynchronous(bool set) { asynchronous_ = set; }
    // Whether both roots have a required period.
    bool isCritical() const;

    // Null when absent.
    Subdomain* getSubdomain(const ClockMode& launchMode, const ClockMode& latchMode) const;
    // In order of creation.
    Ruvex::Collection<Subdomain*> getSubdomains() const {
        return Ruvex::ListCollection<Subdomain*>(subdomains_);
    }
    // The reported paths of all subdomains, one subdomain after another.
    Ruvex::Collection<Path*> getLongestPaths() const;
    Ruvex::Collection<Path*> getShortestPaths() const;

    std::string getClass() const override;
    // "launch -> latch"; "none" for a null root.
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
