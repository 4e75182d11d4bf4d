#include "Pelko/Domain.h"

#include "Pelko/Analyzer.h"
#include "Pelko/Pole.h"
#include "Pelko/Subdomain.h"
#include "Ruvex/Refusal.h"
#include "Ruvex/StandardSlot.h"

#include <memory>

namespace Pelko {

Domain* Domain::create(Pole* launchRoot, Pole* latchRoot) {
    Ruvex::require<Ruvex::FactoryFailed>(analyzer, "Domain", "create", 1, "Null analyzer");
    Ruvex::require<Ruvex::FactoryFailed>(!analyzer->getDomain(launchRoot, latchRoot), "Domain", "create", 2,
                                         "Domain exists already");
    std::unique_ptr<Domain> created(new Domain(analyzer, launchRoot, latchRoot));
    analyzer->add(created.get());
    Domain* domain = created.release();
    Reference::add(launchRoot);
    Reference::add(latchRoot);
    domain->postCreate();
    return domain;
}

void Domain::preDestroy() {
    notifyDestroyed(*this);
    while (!subdomains_.empty())
        subdomains_.front()->destroy();
    analyzer_->remove(this);
    Reference::remove(launchRoot_);
    Reference::remove(latchRoot_);
}

bool Domain::isCritical() const {
    return analyzer_->getRequiredPeriod(launchRoot_).isDefined() &&
           analyzer_->getRequiredPeriod(latchRoot_).isDefined();
}

Subdomain* Domain::getSubdomain(const ClockMode& launchMode, const ClockMode& latchMode) const {
    for (Subdomain* subdomain : subdomains_)
        if (subdomain->getLaunchClockMode() == launchMode && subdomain->getLatchClockMode() == latchMode)
            return subdomain;
    return nullptr;
}

namespace {

template <class Read>
Ruvex::Collection<Path*> gather(const std::list<Subdomain*>& subdomains, Read read) {
    std::vector<Path*> paths;
    for (const Subdomain* subdomain : subdomains)
        for (Path* path : read(*subdomain))
            paths.push_back(path);
    return Ruvex::VectorCollection<Path*>(std::move(paths));
}

std::string nameOf(const Pole* root) { return root ? root->getName() : "none"; }

} // namespace

Ruvex::Collection<Path*> Domain::getLongestPaths() const {
    return gather(subdomains_, [](const Subdomain& subdomain) { return subdomain.getLongestPaths(); });
}

Ruvex::Collection<Path*> Domain::getShortestPaths() const {
    return gather(subdomains_, [](const Subdomain& subdomain) { return subdomain.getShortestPaths(); });
}

std::string Domain::getClass() const { return "Domain"; }

std::string Domain::getAlias() const { return nameOf(launchRoot_) + " -> " + nameOf(latchRoot_); }

Ruvex::Record* Domain::_getRecord() const {
    std::unique_ptr<Ruvex::Record> record(Object::_getRecord());
    if (!record)
        return nullptr;
    record->addHeader("Domain");
    record->add("LaunchRoot", launchRoot_ ? launchRoot_->_getSlot() : nullptr);
    record->add("LatchRoot", latchRoot_ ? latchRoot_->_getSlot() : nullptr);
    record->add("Asynchronous", new Ruvex::StandardSlot<unsigned long>(asynchronous_));
    for (const Subdomain* subdomain : subdomains_)
        record->add("Subdomain", subdomain->_getSlot());
    return record.release();
}

} // namespace Pelko
