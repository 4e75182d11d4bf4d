// What the exceptions require of a path.
#pragma once

#include "base/Side.h"
#include "design/Ids.h"
#include "model/Clocks.h"

#include <optional>

namespace Exceptions {

struct Requirement {
    Base::PerSide<bool> isFalse; // the path is not checked on that side
    // In units, in place of the relation between the clocks: a maximum delay for setup, a minimum delay for
    // hold.
    Base::PerSide<std::optional<Model::Time>> delay;
    Base::PerSide<bool> ignoresLatency;           // the delay is without the latencies of the clocks
    Base::PerSide<Model::Time> shift;             // in units, added to the relation between the clocks
    Base::PerSide<Design::ExceptionId> exception; // the one that governs the side; none: no exception does
    Design::ExceptionId group;                    // the statement of the path's group; none: the usual group

    bool operator==(const Requirement&) const = default;
};

} // namespace Exceptions
