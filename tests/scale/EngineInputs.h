// Large graphs for the engine: a million poles in a chain, in parallel, in a ring, and components in which
// all poles are connected to all others.
#pragma once

#include "tests/support/Builder.h"

#include <vector>

namespace Scale {

// What a launch must find: the latest and the shortest arrival in one subdomain.
struct Arrivals {
    Pelko::Pole* launchRoot;
    Pelko::Pole* latchRoot;
    int shortest;
    int latest;
};

struct EngineInput {
    const char* name;
    Arrivals (*build)(Support::Builder& design);
    // Bounds per arc: arcs visited in all phases together, and bytes at the peak.
    unsigned visits;
    unsigned bytes;
};

extern const std::vector<EngineInput> engineInputs;

} // namespace Scale
