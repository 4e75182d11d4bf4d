#include "Pelko/Subdomain.h"

#include "Pelko/Domain.h"
#include "Pelko/Pole.h"
#include "Ruvex/Refusal.h"
#include "Ruvex/StandardSlot.h"

#include <memory>

namespace Pelko {

Subdomain* Subdomain::create(Domain* domain, const ClockMode& launchMode, const ClockMode& latchMode) {
    Ruvex::require<Ruvex::FactoryFailed>(domain, "Subdomain", "create", 1, "Null domain");
    Ruvex::require<Ruvex::FactoryFailed>(!domain->getSubdomain(launchMode, latchMode), "Subdomain", "create",
                                         2, "Subdomain exists already");
    std::unique_ptr<Subdomain> created(new Subdomain(domain, launchMode, latchMode));
    created->place_ = domain->subdomains_.insert(domain->subdomains_.end(), created.get());
    Subdomain* subdomain = created.release();
    subdomain->postCreate();
    return subdomain;
}

void Subdomain::preDestroy() {
    notifyDestroyed(*this);
    destroyPaths();
    domain_->subdomains_.erase(place_);
}

void Subdomain::destroyPaths() {
    for (auto* paths : {&longestPaths_, &shortestPaths_})
        while (!paths->empty())
            (*paths->rbegin())->destroy();
}

Pole* Subdomain::getLaunchRoot() const { return domain_->getLaunchRoot(); }

Pole* Subdomain::getLatchRoot() const { return domain_->getLatchRoot(); }

bool Subdomain::isPureClock() const { return getLaunchRoot() && getLaunchRoot() == getLatchRoot(); }

void Subdomain::captureLaunch(Pole* pole) {
    Ruvex::require<Ruvex::InvalidRequest>(pole, "Subdomain", "captureLaunch", 3, "Null pole");
    launchLeaves_.add(pole);
}

void Subdomain::captureLatch(Pole* pole) {
    Ruvex::require<Ruvex::InvalidRequest>(pole, "Subdomain", "captureLatch", 4, "Null pole");
    latchLeaves_.add(pole);
}

void Subdomain::setSetupRelation(const Delay& relation) {
    if (!setupFixed_)
        setupRelation_ = relation;
}

void Subdomain::setHoldRelation(const Delay& relation) {
    if (!holdFixed_)
        holdRelation_ = relation;
}

void Subdomain::fixSetupRelation(const Delay& relation) {
    setupRelation_ = relation;
    setupFixed_ = true;
}

void Subdomain::fixHoldRelation(const Delay& relation) {
    holdRelation_ = relation;
    holdFixed_ = true;
}

void Subdomain::clearResults() {
    setSetupRelation(Delay::getUndefined());
    setHoldRelation(Delay::getUndefined());
    latestArrival_ = Delay::getUndefined();
    shortestArrival_ = Delay::getUndefined();
    criticity_ = 0;
    decisive_ = false;
    mpathCritical_ = false;
    destroyPaths();
}

namespace {

std::string sideName(const Pole* root, const ClockMode& mode) {
    return (root ? root->getName() : "none") +
           (mode.getCode() == ClockMode::None ? "" : ":" + mode._getLabel());
}

} // namespace

std::string Subdomain::getName() const {
    return sideName(getLaunchRoot(), launchMode_) + " -> " + sideName(getLatchRoot(), latchMode_);
}

std::string Subdomain::getClass() const { return "Subdomain"; }

Ruvex::Record* Subdomain::_getRecord() const {
    std::unique_ptr<Ruvex::Record> record(Object::_getRecord());
    if (!record)
        return nullptr;
    record->addHeader("Subdomain");
    record->add("LaunchLeaves", new Ruvex::StandardSlot<unsigned long>(getLaunchLeaves().getCount()));
    record->add("LatchLeaves", new Ruvex::StandardSlot<unsigned long>(getLatchLeaves().getCount()));
    record->add("SetupRelation", setupRelation_._getSlot());
    record->add("HoldRelation", holdRelation_._getSlot());
    record->add("LAT", latestArrival_._getSlot());
    record->add("SAT", shortestArrival_._getSlot());
    record->add("Criticity", new Ruvex::StandardSlot<unsigned long>(criticity_));
    record->add("LongestPaths", new Ruvex::StandardSlot<unsigned long>(longestPaths_.size()));
    record->add("ShortestPaths", new Ruvex::StandardSlot<unsigned long>(shortestPaths_.size()));
    return record.release();
}

} // namespace Pelko
