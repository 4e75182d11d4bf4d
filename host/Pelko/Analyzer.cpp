// An analyzer as an object: its settings, exceptions and domains, marks, and the clearing of results. Clocks,
// clock groups and ports are in files of their own.
#include "Pelko/Analyzer.h"

#include "Pelko/Cell.h"
#include "Pelko/Edge.h"
#include "Pelko/Pole.h"
#include "Pelko/Subdomain.h"
#include "Ruvex/Refusal.h"
#include "Ruvex/StandardSlot.h"

#include <algorithm>
#include <memory>

namespace Pelko {

Analyzer* analyzer = nullptr;

bool Analyzer::_muted = false;
std::uint32_t Analyzer::_epoch = 1;

namespace {

void require(bool condition, const char* function, unsigned line, const char* message) {
    Ruvex::require<Ruvex::InvalidRequest>(condition, "Analyzer", function, line, message);
}

} // namespace

Analyzer* Analyzer::create(Cell* owner) {
    Ruvex::require<Ruvex::FactoryFailed>(owner, "Analyzer", "create", 1, "Null cell");
    auto* created = new Analyzer(owner);
    ++owner->analyzers_;
    created->postCreate();
    return created;
}

void Analyzer::preDestroy() {
    notifyDestroyed(*this);
    while (!domains_.empty())
        domains_.front()->destroy();
    while (!cpaths_.empty())
        cpaths_.back()->destroy();
    clearConstraints();
    --cell_->analyzers_;
    if (Pelko::analyzer == this)
        Pelko::analyzer = nullptr;
}

void Analyzer::clearConstraints() {
    while (!inputs_.empty())
        erase(inputs_, inputs_.begin()->first);
    while (!outputs_.empty())
        erase(outputs_, outputs_.begin()->first);
    clearClockGroups();
    for (const auto& entry : clocks_)
        Reference::remove(entry.first);
    clocks_.clear();
    for (const auto& entry : portSlacks_)
        Reference::remove(entry.first);
    portSlacks_.clear();
}

void Analyzer::setPathLimit(const Delay& limit) {
    require(limit.isDefined(), "setPathLimit", 2, "Undefined path limit");
    pathLimit_ = limit;
}

// --- Timing exceptions ---

namespace {

// The exceptions whose class is in a mask. A walk finds them, so that the collection is small and allocates
// nothing.
class ClassCollection final : public Ruvex::DriverOf<Ruvex::CollectionDriver<CPath*>, ClassCollection> {
public:
    ClassCollection(const std::vector<CPath*>& paths, unsigned long bits) : paths_(&paths), bits_(bits) {}

    Ruvex::Locator<CPath*> getLocator() const override { return Cursor(*paths_, bits_); }
    std::string _getLabel() const override { return "Class collection"; }

private:
    class Cursor final : public Ruvex::DriverOf<Ruvex::LocatorDriver<CPath*>, Cursor> {
    public:
        Cursor(const std::vector<CPath*>& paths, unsigned long bits)
            : paths_(&paths), bits_(bits), index_(bits == 0 ? paths.size() : 0) {
            skip();
        }
        bool isValid() const override { return index_ < paths_->size(); }
        CPath* getCurrent() const override { return isValid() ? (*paths_)[index_] : nullptr; }
        void progress() override {
            if (!isValid())
                return;
            ++index_;
            skip();
        }
        std::string _getLabel() const override { return "Class locator"; }

    private:
        void skip() {
            while (isValid() && ((*paths_)[index_]->getPseudoMask().getBits() & bits_) == 0)
                ++index_;
        }

        const std::vector<CPath*>* paths_;
        unsigned long bits_;
        std::size_t index_;
    };

    const std::vector<CPath*>* paths_;
    unsigned long bits_;
};

} // namespace

Ruvex::Collection<CPath*> Analyzer::getCPaths() const {
    return Ruvex::MemoryCollection<CPath*>(cpaths_.data(), cpaths_.data() + cpaths_.size());
}

Ruvex::Collection<CPath*> Analyzer::getCPaths(const PseudoMask& mask) const {
    return ClassCollection(cpaths_, mask.getBits());
}

Ruvex::Collection<FPath*> Analyzer::getFalsePaths() const {
    return Ruvex::TypeCollection<FPath*, CPath*>(getCPaths());
}

void Analyzer::add(CPath* path) { cpaths_.push_back(path); }

void Analyzer::remove(CPath* path) { cpaths_.erase(std::find(cpaths_.begin(), cpaths_.end(), path)); }

// --- Domains ---

std::size_t Analyzer::RootPairHash::operator()(const std::pair<const Pole*, const Pole*>& roots) const {
    const auto stampOf = [](const Pole* root) { return root ? root->getStamp() : 0; };
    return std::hash<unsigned long>()(stampOf(roots.first) * 0x9E3779B97F4A7C15UL + stampOf(roots.second));
}

Domain* Analyzer::getDomain(Pole* launchRoot, Pole* latchRoot) const {
    const auto found = domainsByRoots_.find({launchRoot, latchRoot});
    return found == domainsByRoots_.end() ? nullptr : found->second;
}

void Analyzer::add(Domain* domain) {
    std::list<Domain*> made{domain}; // allocate first: nothing has changed if it fails
    domainsByRoots_.emplace(std::pair(domain->launchRoot_, domain->latchRoot_), domain);
    domain->place_ = made.begin();
    domains_.splice(domains_.end(), made);
}

void Analyzer::remove(Domain* domain) {
    domains_.erase(domain->place_);
    domainsByRoots_.erase({domain->launchRoot_, domain->latchRoot_});
}

// --- Marks and results ---

// A pole is marked if its epoch is this one. When the epoch returns to 0, the epochs of all poles are
// cleared, so that no old one counts as new.
void Analyzer::unmark() {
    if (++_epoch != 0)
        return;
    for (Pole* pole : cell_->getPoles())
        pole->unmark();
    _epoch = 1;
}

void Analyzer::clearResults() {
    unmark();
    for (Edge* edge : cell_->getEdges())
        edge->clearResults();
    for (Domain* domain : domains_)
        for (Subdomain* subdomain : domain->getSubdomains())
            subdomain->clearResults();
    for (CPath* path : cpaths_)
        path->clearResults();
    falsePathMask_ = maxdelayPathMask_ = mindelayPathMask_ = multicyclePathMask_ = PseudoMask();
    for (auto& [root, clock] : clocks_) {
        clock.achievedPeriod = Delay::getUndefined();
        clock.hasFeedback = false;
        clock.minimumFeedback = clock.maximumFeedback = Delay(0);
    }
    dropEmptyClocks();
    for (const auto& entry : portSlacks_)
        Reference::remove(entry.first);
    portSlacks_.clear();
}

std::string Analyzer::getClass() const { return "Analyzer"; }

std::string Analyzer::getAlias() const { return cell_->getName(); }

Ruvex::Record* Analyzer::_getRecord() const {
    std::unique_ptr<Ruvex::Record> record(Object::_getRecord());
    if (!record)
        return nullptr;
    record->addHeader("Analyzer");
    record->add("AnalysisMode", new Ruvex::StandardSlot<AnalysisMode>(analysisMode_));
    record->add("PathCount", new Ruvex::StandardSlot<unsigned long>(pathCount_));
    record->add("PathLimit", pathLimit_._getSlot());
    record->add("FalsePathMask", falsePathMask_._getSlot());
    record->add("MaxdelayPathMask", maxdelayPathMask_._getSlot());
    record->add("MindelayPathMask", mindelayPathMask_._getSlot());
    record->add("MulticyclePathMask", multicyclePathMask_._getSlot());
    record->addHeader("Domains");
    for (const Domain* domain : domains_)
        record->add("Domain", domain->_getSlot());
    record->addHeader("Constrained paths");
    for (const CPath* path : cpaths_)
        record->add("CPath", path->_getSlot());
    return record.release();
}

} // namespace Pelko
