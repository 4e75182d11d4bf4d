// The data arrivals and the required times of a sweep, by the slots of its cone.
#pragma once

#include "Vorlen/Cone/Cone.h"
#include "Vorlen/Cone/TimingTable.h"

namespace Vorlen::detail {

struct DataTimes {
    Cone cone;
    TimingTable arrivals;
    TimingTable required;
    bool hasAnyRequired = false;

    // The slot of the pole, a new one if it has none, with room in both tables.
    Slot obtain(Pelko::Pole* pole) {
        const Slot slot = cone.obtain(pole);
        arrivals.reach(cone.getSlotCount());
        required.reach(cone.getSlotCount());
        return slot;
    }

    ClassTimings getArrivals(const Pelko::Pole* pole) const { return arrivals.get(cone.find(pole)); }
    ClassTimings getRequired(const Pelko::Pole* pole) const { return required.get(cone.find(pole)); }
    bool hasArrivals(const Pelko::Pole* pole) const { return arrivals.contains(cone.find(pole)); }
    bool hasRequired(const Pelko::Pole* pole) const { return required.contains(cone.find(pole)); }
};

} // namespace Vorlen::detail
