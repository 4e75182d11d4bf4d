#include "Pelko/Analyzer.h"

#include "Pelko/Cell.h"
#include "Pelko/Edge.h"
#include "Pelko/Pole.h"
#include "Pelko/Subdomain.h"
#include "Ruvex/Refusal.h"
#include "Ruvex/StandardSlot.h"

#include <algorithm>
#include <memory>
#include <unordered_set>

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

// --- Timing exceptions
// ------------------------------------------------------------------------------------------------------

namespace {

// The exceptions of a mask, found on the walk. Kept small, so that asking for them allocates nothing.
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

// --- Domains
// ----------------------------------------------------------------------------------------------------------------

std::size_t Analyzer::RootPairHash::operator()(const std::pair<const Pole*, const Pole*>& roots) const {
    const auto stampOf = [](const Pole* root) { return root ? root->getStamp() : 0; };
    return std::hash<unsigned long>()(stampOf(roots.first) * 0x9E3779B97F4A7C15UL + stampOf(roots.second));
}

Domain* Analyzer::getDomain(Pole* launchRoot, Pole* latchRoot) const {
    const auto found = domainsByRoots_.find({launchRoot, latchRoot});
    return found == domainsByRoots_.end() ? nullptr : found->second;
}

void Analyzer::add(Domain* domain) {
    std::list<Domain*> made{domain}; // what may fail comes before what is to be seen
    domainsByRoots_.emplace(std::pair(domain->launchRoot_, domain->latchRoot_), domain);
    domain->place_ = made.begin();
    domains_.splice(domains_.end(), made);
}

void Analyzer::remove(Domain* domain) {
    domains_.erase(domain->place_);
    domainsByRoots_.erase({domain->launchRoot_, domain->latchRoot_});
}

namespace {

// All single groups of a kind are one statement: a clock's number there stands for the single groups that it
// is in, and two clocks are separated if their numbers differ. So a pair of clocks is looked up once, however
// many single groups there are.
void addSingleGroup(const std::vector<Pole*>& group, std::unordered_map<const Pole*, std::size_t>& numberOf) {
    static std::size_t lastNumber = 0;
    std::unordered_map<std::size_t, std::size_t> numbers; // without this group and with it; 0: in none
    for (Pole* root : std::unordered_set<Pole*>(group.begin(), group.end())) {
        const auto [place, isNew] = numberOf.try_emplace(root, 0);
        if (isNew)
            Reference::add(root);
        std::size_t& number = numbers[place->second];
        if (number == 0)
            number = ++lastNumber;
        place->second = number;
    }
}

} // namespace

void Analyzer::addClockGroups(GroupKind kind, const std::vector<std::vector<Pole*>>& groups) {
    require(!groups.empty(), "addClockGroups", 3, "No clock group");
    if (groups.size() == 1) {
        for (const Pole* root : groups.front())
            require(root, "addClockGroups", 4, "Null clock root");
        auto statement =
            std::find_if(clockGroups_.begin(), clockGroups_.end(),
                         [kind](const ClockGroups& other) { return other.single && other.kind == kind; });
        if (statement == clockGroups_.end())
            statement = clockGroups_.insert(clockGroups_.end(), ClockGroups{kind, {}, true});
        return addSingleGroup(groups.front(), statement->groupOf);
    }
    ClockGroups statement{kind, {}, false};
    for (std::size_t group = 0; group < groups.size(); ++group)
        for (const Pole* root : groups[group]) {
            require(root, "addClockGroups", 4, "Null clock root");
            const auto [place, isNew] = statement.groupOf.emplace(root, group);
            require(isNew || place->second == group, "addClockGroups", 5, "Clock in two groups");
        }
    clockGroups_.push_back(std::move(statement));
    for (const auto& entry : clockGroups_.back().groupOf)
        Reference::add(const_cast<Pole*>(entry.first));
}

void Analyzer::clearClockGroups() {
    for (const ClockGroups& statement : clockGroups_)
        for (const auto& entry : statement.groupOf)
            Reference::remove(const_cast<Pole*>(entry.first));
    clockGroups_.clear();
}

bool Analyzer::isSeparated(GroupKind kind, const Domain* domain) const {
    require(domain, "isSeparated", 6, "Null domain");
    const Pole* launch = domain->getLaunchRoot();
    const Pole* latch = domain->getLatchRoot();
    if (!launch || !latch)
        return false;
    return std::any_of(clockGroups_.begin(), clockGroups_.end(), [&](const ClockGroups& statement) {
        if (statement.kind != kind)
            return false;
        const auto launchGroup = statement.groupOf.find(launch);
        const auto latchGroup = statement.groupOf.find(latch);
        const bool launchIn = launchGroup != statement.groupOf.end();
        const bool latchIn = latchGroup != statement.groupOf.end();
        if (launchIn && latchIn)
            return launchGroup->second != latchGroup->second;
        return statement.single && launchIn != latchIn;
    });
}

// --- Clocks
// -----------------------------------------------------------------------------------------------------------------

const Analyzer::Clock* Analyzer::findClock(const Pole* root) const {
    const auto found = clocks_.find(const_cast<Pole*>(root));
    return root && found != clocks_.end() ? &found->second : nullptr;
}

Analyzer::Clock& Analyzer::getClock(Pole* root, const char* function) {
    require(root, function, 7, "Null clock root");
    const auto [place, isNew] = clocks_.try_emplace(root);
    if (isNew)
        Reference::add(root);
    return place->second;
}

void Analyzer::dropEmptyClocks() {
    std::erase_if(clocks_, [](const auto& entry) {
        if (entry.second.isEmpty())
            Reference::remove(entry.first);
        return entry.second.isEmpty();
    });
}

void Analyzer::setClock(Pole* root, const Delay& period, const Delay& shift, const Delay& highWidth,
                        const Delay& lowWidth) {
    require(root, "setClock", 7, "Null clock root");
    require(period.isOrdinary() && int(period) > 0, "setClock", 8, "Period not positive");
    require(shift.isOrdinary(), "setClock", 9, "Special shift");
    require(highWidth.isOrdinary() && lowWidth.isOrdinary() && int(highWidth) > 0 && int(lowWidth) > 0,
            "setClock", 10, "Width not positive");
    require(highWidth + lowWidth == period, "setClock", 11, "Widths that do not add up to the period");
    Clock& clock = getClock(root, "setClock");
    clock.period = period;
    clock.shift = shift;
    clock.highWidth = highWidth;
    clock.lowWidth = lowWidth;
    const std::int64_t rounded =
        (std::int64_t{int(highWidth)} * 200 + int(period)) / (2 * std::int64_t{int(period)});
    clock.dutyRatio = static_cast<unsigned long>(std::clamp<std::int64_t>(rounded, 1, 99));
}

void Analyzer::removeClock(Pole* root) {
    Clock& clock = getClock(root, "removeClock");
    clock.period = clock.shift = clock.highWidth = clock.lowWidth = Delay::getUndefined();
    clock.dutyRatio = 50;
    dropEmptyClocks();
}

Delay Analyzer::getRequiredPeriod(const Pole* root) const {
    const Clock* clock = findClock(root);
    return clock ? clock->period : Delay::getUndefined();
}

Delay Analyzer::getShift(const Pole* root) const {
    const Clock* clock = findClock(root);
    return clock ? clock->shift : Delay::getUndefined();
}

Delay Analyzer::getHighWidth(const Pole* root) const {
    const Clock* clock = findClock(root);
    return clock ? clock->highWidth : Delay::getUndefined();
}

Delay Analyzer::getLowWidth(const Pole* root) const {
    const Clock* clock = findClock(root);
    return clock ? clock->lowWidth : Delay::getUndefined();
}

unsigned long Analyzer::getDutyRatio(const Pole* root) const {
    const Clock* clock = findClock(root);
    return clock ? clock->dutyRatio : 50;
}

void Analyzer::setDutyRatio(Pole* root, unsigned long percentage) {
    require(percentage >= 1 && percentage <= 99, "setDutyRatio", 12, "Duty ratio outside 1 to 99");
    getClock(root, "setDutyRatio").dutyRatio = percentage;
}

Delay Analyzer::getPeriod(const Pole* root) const {
    const Clock* clock = findClock(root);
    return clock ? clock->achievedPeriod : Delay::getUndefined();
}

void Analyzer::setPeriod(Pole* root, const Delay& period) {
    getClock(root, "setPeriod").achievedPeriod = period;
}

bool Analyzer::hasPLLFeedbackDelay(const Pole* root) const {
    const Clock* clock = findClock(root);
    return clock && (clock->hasFeedback || clock->hasLatency);
}

Delay Analyzer::getMinPLLFeedbackDelay(const Pole* root) const {
    if (!hasPLLFeedbackDelay(root))
        return Delay::getUndefined();
    const Clock* clock = findClock(root);
    return clock->minimumFeedback - clock->earlyLatency;
}

Delay Analyzer::getMaxPLLFeedbackDelay(const Pole* root) const {
    if (!hasPLLFeedbackDelay(root))
        return Delay::getUndefined();
    const Clock* clock = findClock(root);
    return clock->maximumFeedback - clock->lateLatency;
}

void Analyzer::setPLLFeedbackDelay(Pole* root, const Delay& minimum, const Delay& maximum) {
    Clock& clock = getClock(root, "setPLLFeedbackDelay");
    clock.hasFeedback = true;
    clock.minimumFeedback = minimum;
    clock.maximumFeedback = maximum;
}

void Analyzer::setSourceLatency(Pole* root, const Delay& early, const Delay& late) {
    Clock& clock = getClock(root, "setSourceLatency");
    clock.hasLatency = true;
    clock.earlyLatency = early;
    clock.lateLatency = late;
}

// --- Ports
// ------------------------------------------------------------------------------------------------------------------

namespace {

template <class Map>
IOConstraint constraintOf(const Map& constraints, Pole* pole) {
    const auto found = constraints.find(pole);
    return found == constraints.end() ? IOConstraint() : found->second;
}

template <class Map>
bool fill(const Map& constraints, Pole* pole, IOConstraint& constraint) {
    const auto found = constraints.find(pole);
    if (found == constraints.end() || !found->second.isDefined())
        return false;
    constraint = found->second;
    return true;
}

} // namespace

IOConstraint Analyzer::getInputConstraint(Pole* pole) const { return constraintOf(inputs_, pole); }

IOConstraint Analyzer::getOutputConstraint(Pole* pole) const { return constraintOf(outputs_, pole); }

bool Analyzer::hasInputConstraint(Pole* pole, IOConstraint& constraint) const {
    return fill(inputs_, pole, constraint);
}

bool Analyzer::hasOutputConstraint(Pole* pole, IOConstraint& constraint) const {
    return fill(outputs_, pole, constraint);
}

void Analyzer::replace(ConstraintMap& constraints, Pole* pole, const IOConstraint& constraint) {
    const auto [place, isNew] = constraints.try_emplace(pole, constraint);
    Reference::add(constraint.getClockRoot());
    if (isNew) {
        Reference::add(pole);
        return;
    }
    Reference::remove(place->second.getClockRoot());
    place->second = constraint;
}

void Analyzer::erase(ConstraintMap& constraints, Pole* pole) {
    const auto found = constraints.find(pole);
    if (found == constraints.end())
        return;
    Reference::remove(pole);
    Reference::remove(found->second.getClockRoot());
    constraints.erase(found);
}

void Analyzer::setInputConstraint(Pole* pole, const IOConstraint& constraint) {
    require(pole, "setInputConstraint", 13, "Null pole");
    require(pole->isInput(), "setInputConstraint", 14, "Not an input port");
    replace(inputs_, pole, constraint);
}

void Analyzer::setOutputConstraint(Pole* pole, const IOConstraint& constraint) {
    require(pole, "setOutputConstraint", 13, "Null pole");
    require(pole->isOutput(), "setOutputConstraint", 15, "Not an output port");
    replace(outputs_, pole, constraint);
}

void Analyzer::removeInputConstraint(Pole* pole) { erase(inputs_, pole); }

void Analyzer::removeOutputConstraint(Pole* pole) { erase(outputs_, pole); }

namespace {

void merge(Delay& worst, const Delay& slack) {
    if (slack.isDefined() && (!worst.isDefined() || slack < worst))
        worst = slack;
}

} // namespace

Analyzer::PortSlack& Analyzer::getPortSlack(Pole* pole, const char* function) {
    require(pole, function, 13, "Null pole");
    const auto [place, isNew] = portSlacks_.try_emplace(pole);
    if (isNew)
        Reference::add(pole);
    return place->second;
}

void Analyzer::mergeIODelayLongestSlack(Pole* pole, const Delay& slack) {
    merge(getPortSlack(pole, "mergeIODelayLongestSlack").longest, slack);
}

void Analyzer::mergeIODelayShortestSlack(Pole* pole, const Delay& slack) {
    merge(getPortSlack(pole, "mergeIODelayShortestSlack").shortest, slack);
}

Delay Analyzer::getIODelayLongestSlack(Pole* pole) const {
    const auto found = portSlacks_.find(pole);
    return found == portSlacks_.end() ? Delay::getUndefined() : found->second.longest;
}

Delay Analyzer::getIODelayShortestSlack(Pole* pole) const {
    const auto found = portSlacks_.find(pole);
    return found == portSlacks_.end() ? Delay::getUndefined() : found->second.shortest;
}

// --- Marks and results
// ------------------------------------------------------------------------------------------------------

// A pole is marked where its epoch is this one. When the count comes round, old epochs are wiped, so that
// none looks new.
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
