// The sweep as an object of the host: its creation, look-ups, record, and the sequence for a caller that
// wants no slacks.
#include "Pelko/Analyzer.h"
#include "Pelko/Subdomain.h"
#include "Ruvex/StandardSlot.h"
#include "Vorlen/Sweep.h"
#include "Vorlen/detail/Faults.h"

#include <memory>

namespace Vorlen {

Sweep::Sweep(Pelko::Subdomain* analysed) : subdomain(analysed) {}

Sweep::~Sweep() = default;

void Sweep::preCreate(Pelko::Subdomain* subdomain) {
    Pelko::Object::preCreate();
    detail::require(subdomain, detail::Fault::NullSubdomain);
}

void Sweep::postCreate(Pelko::Subdomain*) { Pelko::Object::postCreate(); }

void Sweep::preDestroy() { Pelko::Object::preDestroy(); }

Sweep* Sweep::create(Pelko::Subdomain* subdomain) {
    preCreate(subdomain);
    auto* sweep = new Sweep(subdomain);
    try {
        sweep->postCreate(subdomain);
    } catch (...) {
        abandon(sweep);
        throw;
    }
    return sweep;
}

void Sweep::abandon(Sweep* sweep) noexcept {
    try {
        sweep->destroy();
    } catch (...) {
        delete sweep;
    }
}

namespace {

bool copyOut(const PoleTimingMap& maps, Pelko::Pole* pole, TimingMap& out) {
    const auto found = maps.find(pole);
    if (found == maps.end())
        return false;
    out = found->second;
    return true;
}

} // namespace

bool Sweep::hasArrivalTimingMap(Pelko::Pole* pole) const { return dataATMapMap.count(pole) != 0; }

bool Sweep::hasRequireTimingMap(Pelko::Pole* pole) const { return dataRTMapMap.count(pole) != 0; }

bool Sweep::hasArrivalTimingMap(Pelko::Pole* pole, TimingMap& out) const {
    return copyOut(dataATMapMap, pole, out);
}

bool Sweep::hasRequireTimingMap(Pelko::Pole* pole, TimingMap& out) const {
    return copyOut(dataRTMapMap, pole, out);
}

bool Sweep::hasLatchTimingMap(Pelko::Pole* pole, TimingMap& out) const {
    return copyOut(latchATMapMap, pole, out);
}

bool Sweep::hasLaunchTimingMap(Pelko::Pole* pole, TimingMap& out) const {
    return copyOut(launchATMapMap, pole, out);
}

void Sweep::analyze() {
    clockAnalyze();
    arrivalAnalyze();
    requireAnalyze();
    if (Pelko::analyzer->isLongestPath())
        searchLongestPaths(Pelko::analyzer->getPathLimit(), Pelko::analyzer->getPathCount());
    if (Pelko::analyzer->isShortestPath())
        searchShortestPaths(Pelko::analyzer->getPathLimit(), Pelko::analyzer->getPathCount());
}

std::string Sweep::getAlias() const { return "SWEEP[" + subdomain->getName() + "]"; }

std::string Sweep::_getLabel() const { return Ruvex::Label::create(Pelko::Object::_getLabel()).getText(); }

Ruvex::Record* Sweep::_getRecord() const {
    std::unique_ptr<Ruvex::Record> record(Pelko::Object::_getRecord());
    if (!record)
        return nullptr;
    record->addHeader("Sweep");
    record->add("Subdomain", subdomain->_getSlot());
    record->add("DataAT Map", new Ruvex::StandardSlot<PoleTimingMap>(dataATMapMap));
    record->add("DataRT Map", new Ruvex::StandardSlot<PoleTimingMap>(dataRTMapMap));
    record->add("LatchAT Map", new Ruvex::StandardSlot<PoleTimingMap>(latchATMapMap));
    record->add("LaunchAT Map", new Ruvex::StandardSlot<PoleTimingMap>(launchATMapMap));
    record->add("Arrival Timing", arrivalTiming._getSlot());
    return record.release();
}

} // namespace Vorlen
