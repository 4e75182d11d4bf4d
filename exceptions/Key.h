// What the exceptions can know of a path: paths with the same key are required the same.
#pragma once

#include "design/Ids.h"
#include "exceptions/ClassSet.h"
#include "exceptions/Ids.h"
#include "model/ClockEdges.h"

#include <cstddef>
#include <cstdint>

namespace Exceptions {

using Model::ClockEdges;

struct Key {
    ClockEdges edges;
    StartNumber start = unnamedStart;
    EndNumber end = unnamedEnd;
    // Set only if end points of the same number read the classes of the through points differently.
    Design::PinId endPin;
    ClassSet throughs; // the classes of the through points that the path passed

    bool operator==(const Key&) const = default;
};

struct KeyHash {
    std::size_t operator()(const Key& key) const {
        const ClockEdges& edges = key.edges;
        std::uint64_t hash =
            key.throughs.bits() ^ (edges.launchRise ? 2U : 0U) ^ (edges.captureRise ? 1U : 0U);
        for (const std::uint32_t part : {edges.launch.number(), edges.capture.number(), key.start.number(),
                                         key.end.number(), key.endPin.number()})
            hash = (hash ^ part) * 0x9E3779B97F4A7C15U;
        return static_cast<std::size_t>(hash ^ hash >> 32);
    }
};

} // namespace Exceptions
