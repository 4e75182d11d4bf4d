#include "Pelko/CPath.h"

#include "Pelko/Analyzer.h"
#include "Pelko/Pole.h"
#include "Pelko/Subdomain.h"
#include "Ruvex/Refusal.h"
#include "Ruvex/StandardSlot.h"

#include <algorithm>
#include <memory>
#include <unordered_set>

namespace Pelko {

namespace {

CPath::PoleList withoutRepeats(const CPath::PoleList& poles) {
    CPath::PoleList kept;
    kept.reserve(poles.size());
    std::unordered_set<Pole*> seen;
    std::copy_if(poles.begin(), poles.end(), std::back_inserter(kept),
                 [&seen](Pole* pole) { return seen.insert(pole).second; });
    return kept;
}

void require(bool condition, const char* file, unsigned line, const char* message) {
    Ruvex::require<Ruvex::FactoryFailed>(condition, file, "preCreate", line, message);
}

} // namespace

CPath::CPath(const Objects& objects)
    : analyzer_(analyzer), sources_(withoutRepeats(objects.sources)),
      targets_(withoutRepeats(objects.targets)), bridges_(withoutRepeats(objects.bridges)) {}

void CPath::preCreate(const Objects& objects) {
    require(analyzer, "CPath", 1, "Null analyzer");
    for (const PoleList* poles : {&objects.sources, &objects.targets, &objects.bridges})
        require(std::find(poles->begin(), poles->end(), nullptr) == poles->end(), "CPath", 2, "Null pole");
}

// If the analyzer cannot add the exception, it is destroyed.
void CPath::postCreate() {
    std::unique_ptr<CPath> created(this);
    analyzer_->add(this);
    created.release();
    for (const PoleList* poles : {&sources_, &targets_, &bridges_})
        std::for_each(poles->begin(), poles->end(), Reference::add);
    Object::postCreate();
}

void CPath::preDestroy() {
    notifyDestroyed(*this);
    setPseudoMask(PseudoMask());
    analyzer_->remove(this);
    for (const PoleList* poles : {&sources_, &targets_, &bridges_})
        std::for_each(poles->begin(), poles->end(), Reference::remove);
}

CPath* CPath::create(const Objects& objects) {
    preCreate(objects);
    auto* path = new CPath(objects);
    path->postCreate();
    return path;
}

FPath* FPath::create(const Objects& objects, bool insulated) {
    preCreate(objects);
    auto* path = new FPath(objects, insulated);
    path->postCreate();
    return path;
}

DPath* DPath::create(const Objects& objects, const Delay& delay, bool maximum) {
    preCreate(objects);
    require(delay.isOrdinary(), "DPath", 3, "Special delay");
    auto* path = new DPath(objects, delay, maximum);
    path->postCreate();
    return path;
}

MPath* MPath::create(const Objects& objects, unsigned long multiplier) {
    preCreate(objects);
    require(multiplier != 0, "MPath", 4, "Zero multiplier");
    auto* path = new MPath(objects, multiplier);
    path->postCreate();
    return path;
}

Poles CPath::getPoles() const {
    return Ruvex::AppendCollection<Pole*>(getSources(),
                                          Ruvex::AppendCollection<Pole*>(getBridges(), getTargets()));
}

void CPath::showClass() const {
    for (Pole* pole : sources_)
        pole->openingBits_ |= pseudoMask_.getBits();
    for (Pole* pole : targets_)
        pole->closingBits_ |= pseudoMask_.getBits();
}

// While a run assigns classes anew, another exception may have the class that is removed here. It adds the
// class to its poles again.
void CPath::setPseudoMask(const PseudoMask& mask) {
    const unsigned long gone = pseudoMask_.getBits() & ~mask.getBits();
    for (Pole* pole : sources_)
        pole->openingBits_ &= ~gone;
    for (Pole* pole : targets_)
        pole->closingBits_ &= ~gone;
    pseudoMask_ = mask;
    showClass();
    for (const CPath* other : analyzer_->getCPaths(PseudoMask(gone)))
        other->showClass();
}

Delay CPath::getSlackAdjustment(const Subdomain* subdomain, bool longest) const {
    Ruvex::require<Ruvex::InvalidRequest>(subdomain, "CPath", "getSlackAdjustment", 5, "Null subdomain");
    return adjuster_ ? adjuster_(*subdomain, longest) : calculateAdjustment(*subdomain, longest);
}

Delay CPath::calculateAdjustment(const Subdomain&, bool) const { return Delay(0); }

Delay FPath::calculateAdjustment(const Subdomain&, bool) const { return Delay::getMaximum(); }

Delay DPath::calculateAdjustment(const Subdomain& subdomain, bool longest) const {
    if (longest != maximum_)
        return Delay(0);
    const Delay adjustment =
        longest ? delay_ - subdomain.getSetupRelation() : -delay_ - subdomain.getHoldRelation();
    return adjustment.isDefined() ? adjustment : Delay(0);
}

Delay MPath::calculateAdjustment(const Subdomain& subdomain, bool longest) const {
    const Delay period = getAnalyzer().getRequiredPeriod(subdomain.getLatchRoot());
    if (!period.isOrdinary())
        return Delay(0);
    // A count outside the range of a delay saturates.
    const auto cycles =
        static_cast<std::int64_t>(std::min(multiplier_ - 1, static_cast<unsigned long>(Delay::maximumValue)));
    const Delay shift = Delay::saturate(cycles * int(period));
    return longest ? shift : -shift;
}

void CPath::clearResults() {
    setPseudoMask(PseudoMask());
    validated_ = false;
    longestSlack_ = Delay::getUndefined();
    shortestSlack_ = Delay::getUndefined();
}

const Delay& DPath::getMaxdelay() const {
    Ruvex::require<Ruvex::InvalidRequest>(maximum_, "DPath", "getMaxdelay", 123, "Invalid maxdelay");
    return delay_;
}

const Delay& DPath::getMindelay() const {
    Ruvex::require<Ruvex::InvalidRequest>(!maximum_, "DPath", "getMindelay", 135, "Invalid mindelay");
    return delay_;
}

std::string CPath::getClass() const { return "CPath"; }

std::string FPath::getClass() const { return "FPath"; }

std::string DPath::getClass() const { return "DPath"; }

std::string MPath::getClass() const { return "MPath"; }

std::string CPath::getAlias() const {
    return alias_.empty() ? getClass() + "#" + std::to_string(getStamp()) : alias_;
}

Ruvex::Record* CPath::_getRecord() const {
    std::unique_ptr<Ruvex::Record> record(Object::_getRecord());
    if (!record)
        return nullptr;
    record->addHeader("CPath");
    record->add("Sources", new Ruvex::StandardSlot<unsigned long>(sources_.size()));
    record->add("Bridges", new Ruvex::StandardSlot<unsigned long>(bridges_.size()));
    record->add("Targets", new Ruvex::StandardSlot<unsigned long>(targets_.size()));
    record->add("PseudoMask", pseudoMask_._getSlot());
    record->add("Validated", new Ruvex::StandardSlot<unsigned long>(validated_));
    record->add("LongestSlack", longestSlack_._getSlot());
    record->add("ShortestSlack", shortestSlack_._getSlot());
    return record.release();
}

Ruvex::Record* DPath::_getRecord() const {
    Ruvex::Record* record = CPath::_getRecord();
    if (record)
        record->add(maximum_ ? "MaxDelay" : "MinDelay", delay_._getSlot());
    return record;
}

Ruvex::Record* MPath::_getRecord() const {
    Ruvex::Record* record = CPath::_getRecord();
    if (record)
        record->add("Multiplier", new Ruvex::StandardSlot<unsigned long>(multiplier_));
    return record;
}

} // namespace Pelko
