// The sweep as an object of the host: its creation and destruction, look-ups and record, and the sequence for
// callers that want no slacks.
#include "Pelko/Analyzer.h"
#include "Pelko/Subdomain.h"
#include "Ruvex/StandardSlot.h"
#include "Vorlen/Cone/DataTimes.h"
#include "Vorlen/Sweep.h"
#include "Vorlen/detail/Faults.h"

#include <memory>

namespace Vorlen {

Sweep::Sweep(Pelko::Subdomain* analysed) : subdomain(analysed), data(std::make_unique<detail::DataTimes>()) {}

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

bool Sweep::hasArrivalTimingMap(Pelko::Pole* pole) const { return pole && data->hasArrivals(pole); }

bool Sweep::hasRequireTimingMap(Pelko::Pole* pole) const { return pole && data->hasRequired(pole); }

bool Sweep::hasArrivalTimingMap(Pelko::Pole* pole, TimingMap& out) const {
    if (!hasArrivalTimingMap(pole))
        return false;
    data->arrivals.copyOut(data->cone.find(pole), out);
    return true;
}

bool Sweep::hasRequireTimingMap(Pelko::Pole* pole, TimingMap& out) const {
    if (!hasRequireTimingMap(pole))
        return false;
    data->required.copyOut(data->cone.find(pole), out);
    return true;
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

namespace {

PoleTimingMap mapsOf(const detail::Cone& cone, const detail::TimingTable& table) {
    PoleTimingMap maps;
    for (Pelko::Pole* pole : cone.getSortedPoles())
        if (const detail::Slot slot = cone.find(pole); table.contains(slot))
            table.copyOut(slot, maps[pole]);
    return maps;
}

} // namespace

std::string Sweep::getAlias() const { return "SWEEP[" + subdomain->getName() + "]"; }

std::string Sweep::_getLabel() const { return Ruvex::Label::create(Pelko::Object::_getLabel()).getText(); }

Ruvex::Record* Sweep::_getRecord() const {
    std::unique_ptr<Ruvex::Record> record(Pelko::Object::_getRecord());
    if (!record)
        return nullptr;
    record->addHeader("Sweep");
    record->add("Subdomain", subdomain->_getSlot());
    record->add("DataAT Map", new Ruvex::StandardSlot<PoleTimingMap>(mapsOf(data->cone, data->arrivals)));
    record->add("DataRT Map", new Ruvex::StandardSlot<PoleTimingMap>(mapsOf(data->cone, data->required)));
    record->add("LatchAT Map", new Ruvex::StandardSlot<PoleTimingMap>(latchATMapMap));
    record->add("LaunchAT Map", new Ruvex::StandardSlot<PoleTimingMap>(launchATMapMap));
    record->add("Arrival Timing", arrivalTiming._getSlot());
    return record.release();
}

} // namespace Vorlen
