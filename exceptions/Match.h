// An exception that covers a path, and how it does.
#pragma once

#include "exceptions/Atoms.h"
#include "exceptions/Variant.h"

#include <vector>

namespace Exceptions {

// One way in which a path passes the through lists of a variant: one point of each list, in order.
using Combination = std::vector<ThroughPoint>;

struct Match {
    const Variant* variant = nullptr;
    BySet from, to;                  // by which objects it names the ends; empty: it names no point there
    std::vector<Combination> passed; // never empty; a variant without through lists has one empty combination
};

} // namespace Exceptions
