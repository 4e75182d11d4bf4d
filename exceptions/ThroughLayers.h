// How the through points of exceptions share classes.
//
// A layer is a set of points of which no path passes two. Its points are numbered in binary, one class for
// each digit. Two points of a layer have the same number if no end point has to tell them apart, that is, if
// neither of them is of interest at any end point that paths through both arrive at. So the classes needed
// grow with how many points meet at one end point, and with how many follow one another, but not with the
// number of points.
//
// A point's layer is the longest chain of points that leads to it, which makes as few layers as possible. All
// nodes of a point have the same level (Levels.h), so that chains never close.
//
// It costs one walk forwards from every point. If these walks would pass more arcs than the limit, the layers
// are the levels instead, and each point of a layer has a number of its own.
#pragma once

#include "exceptions/Ids.h"
#include "exceptions/Levels.h"
#include "model/Network.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace Exceptions {

// A point's number in its layer, never 0: on paths that pass none of the layer's points the classes spell 0.
using Code = std::uint64_t;

class ThroughLayers {
public:
    struct Point {
        Nodes nodes; // of one level
        // The end points of interest: those that the exceptions through the point name, or all.
        bool anyEnd = false;
        std::vector<Design::PinId> endPins; // sorted

        bool isOfInterestAt(Design::PinId endPin) const;
    };
    using Points = Base::IndexVector<AtomId, Point>;
    struct Layer {
        std::vector<AtomId> points;
        unsigned classes = 0;
    };
    static constexpr std::uint64_t usualWalkLimit = 200'000'000; // arcs

    ThroughLayers(const Design::RoutedDesign& design, const Model::Network& network, const Levels& levels,
                  const Points& points, std::uint64_t walkLimit = usualWalkLimit);

    const std::vector<Layer>& layers() const { return layers_; }
    Code code(AtomId point) const { return codes_[point]; }
    // Whether points share numbers, so that only an end point knows which of them a number stands for.
    bool isShared() const { return shared_; }
    // The points of interest that paths to an end point may pass, sorted; none if numbers are not shared.
    const std::vector<AtomId>& pointsAt(Design::PinId endPin) const;
    // The end pin with the most such points; none if numbers are not shared.
    Design::PinId busiestEnd() const;

private:
    class Builder;

    std::vector<Layer> layers_;
    Base::IndexVector<AtomId, Code> codes_;
    bool shared_ = false;
    std::unordered_map<Design::PinId, std::vector<AtomId>> pointsAt_;
};

} // namespace Exceptions
