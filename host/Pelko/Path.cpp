#include "Pelko/Path.h"

#include "Pelko/Analyzer.h"
#include "Pelko/CPath.h"
#include "Pelko/Cell.h"
#include "Pelko/Domain.h"
#include "Pelko/Edge.h"
#include "Pelko/Subdomain.h"
#include "Ruvex/Refusal.h"
#include "Ruvex/StandardSlot.h"

#include <memory>

namespace Pelko {

Path::Path(Subdomain* subdomain, bool longest, std::vector<Edge*> edges, const Delay& latch,
           const Delay& launch, const Delay& adjust)
    : subdomain_(subdomain), longest_(longest), edges_(std::move(edges)), latch_(latch), launch_(launch),
      adjust_(adjust), slack_(calculateSlack()) {}

Path* Path::createLongest(Subdomain* subdomain, const Edges& edges, const Delay& latch, const Delay& launch,
                          const Delay& adjust) {
    return create(subdomain, true, edges, latch, launch, adjust);
}

Path* Path::createShortest(Subdomain* subdomain, const Edges& edges, const Delay& latch, const Delay& launch,
                           const Delay& adjust) {
    return create(subdomain, false, edges, latch, launch, adjust);
}

Path* Path::create(Subdomain* subdomain, bool longest, const Edges& edges, const Delay& latch,
                   const Delay& launch, const Delay& adjust) {
    const auto require = [](bool condition, unsigned line, const char* message) {
        Ruvex::require<Ruvex::FactoryFailed>(condition, "Path", "create", line, message);
    };
    require(subdomain, 1, "Null subdomain");
    std::vector<Edge*> chain;
    chain.reserve(edges.getCount());
    for (Edge* edge : edges) {
        require(edge, 2, "Null edge");
        require(chain.empty() || chain.back()->getTarget() == edge->getSource(), 3, "Broken path");
        chain.push_back(edge);
    }
    std::unique_ptr<Path> created(new Path(subdomain, longest, std::move(chain), latch, launch, adjust));
    (longest ? subdomain->longestPaths_ : subdomain->shortestPaths_).insert(created.get());
    Path* path = created.release();
    for (Edge* edge : path->edges_)
        ++edge->getDetails().references;
    path->postCreate();
    return path;
}

void Path::preDestroy() {
    notifyDestroyed(*this);
    (longest_ ? subdomain_->longestPaths_ : subdomain_->shortestPaths_).erase(this);
    for (Edge* edge : edges_)
        --edge->getDetails().references;
    setConstrainedPath(nullptr);
}

void Path::setConstrainedPath(CPath* path) {
    if (constrainedPath_)
        --constrainedPath_->references_;
    constrainedPath_ = path;
    if (constrainedPath_)
        ++constrainedPath_->references_;
}

Delay Path::calculateSlack() const {
    Delay arrival = launch_;
    Delay required = (longest_ ? subdomain_->getSetupRelation() : -subdomain_->getHoldRelation()) + latch_;
    if (!edges_.empty()) {
        Pole* start = edges_.front()->getSource();
        Pole* end = edges_.back()->getTarget();
        const Analyzer* owner = subdomain_->getDomain()->getAnalyzer();
        IOConstraint io;
        if (subdomain_->getLaunchRoot() && start->isInput() && owner->hasInputConstraint(start, io))
            arrival += longest_ ? io.getMaximum() : io.getMinimum();
        if (subdomain_->getLatchRoot() && end->isOutput() && owner->hasOutputConstraint(end, io))
            required -= longest_ ? io.getMaximum() : io.getMinimum();
    }
    for (const Edge* edge : edges_) {
        if (longest_)
            arrival += edge->getMaxDelay();
        else if (edge->getTarget()->isCheck())
            arrival -= edge->getMinDelay();
        else
            arrival += edge->getMinDelay();
    }
    return (longest_ ? required - arrival : arrival - required) + adjust_;
}

std::string Path::getClass() const { return "Path"; }

std::string Path::getAlias() const {
    if (edges_.empty())
        return subdomain_->getName();
    return edges_.front()->getSource()->getName() + " -> " + edges_.back()->getTarget()->getName();
}

Ruvex::Record* Path::_getRecord() const {
    std::unique_ptr<Ruvex::Record> record(Object::_getRecord());
    if (!record)
        return nullptr;
    record->addHeader("Path");
    record->add("Slack", slack_._getSlot());
    record->add("Latch", latch_._getSlot());
    record->add("Launch", launch_._getSlot());
    record->add("Adjustment", adjust_._getSlot());
    record->add("ConstrainedPath", constrainedPath_ ? constrainedPath_->_getSlot() : nullptr);
    record->add("Edges", new Ruvex::StandardSlot<unsigned long>(edges_.size()));
    return record.release();
}

} // namespace Pelko
