// Fetches poles and arcs ahead, at the addresses that the host recommends. A host that has no advice returns
// null, and nothing is fetched. The object may not be null, and is not read.
#pragma once

#include "Pelko/Edge.h"

namespace Vorlen::detail {

// What a walk reads of an arc.
inline void prefetchEdge(const Pelko::Edge* edge) { __builtin_prefetch(edge->_getFetchAddress()); }

// What a walk against the arcs reads of a pole, and what is read of the pole at the far end of any arc.
inline void prefetchEnd(const Pelko::Pole* pole) { __builtin_prefetch(pole->_getFetchAddress()); }

// The same, and the arcs out of the pole.
inline void prefetchPole(const Pelko::Pole* pole) {
    __builtin_prefetch(pole->_getOutgoingFetchAddress());
    prefetchEnd(pole);
}

} // namespace Vorlen::detail
