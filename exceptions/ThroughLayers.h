// How the through points of exceptions share classes.
//
// A layer is a set of points that no path passes two of. Its points are numbered in binary, a class a digit.
// Two points of a layer have one number where no end point has to tell them apart: where neither is of
// interest at an end point that paths through both arrive at. So what is needed grows with how many points
// meet at one end point, and with how many follow one another, but not with their number.
//
// A point's layer is the longest chain of points that leads to it, which makes as few layers as can be. A
// point's nodes are all of one level (the longest way to them), so that chains never close.
//
// It costs one walk forwards from every point. Where these would pass more arcs than the limit, the layers
// are the levels and every point of one has a number of its own.
#pragma once

#include "model/Network.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace Exceptions {

class ThroughLayers {
public:
    struct Point {
        std::vector<std::uint32_t> nodes;
        // The end points of interest: those that the exceptions through the point name, or all.
        bool anyEnd = false;
        std::vector<std::uint32_t> endPins; // sorted

        bool isOfInterestAt(std::uint32_t endPin) const;
    };
    struct Layer {
        std::vector<std::uint32_t> points;
        unsigned classes = 0;
    };
    static constexpr std::uint64_t usualWalkLimit = 200'000'000; // arcs

    ThroughLayers(const Design::RoutedDesign& design, const Model::Network& network,
                  const std::vector<std::uint32_t>& level, const std::vector<Point>& points,
                  std::uint64_t walkLimit = usualWalkLimit);

    const std::vector<Layer>& layers() const { return layers_; }
    // By point, its number in its layer; never 0.
    const std::vector<std::uint64_t>& codes() const { return codes_; }
    // Whether points share numbers, so that only an end point knows which of them a number stands for.
    bool isShared() const { return shared_; }
    // The points of interest that paths to an end point may pass; none where numbers are not shared.
    const std::vector<std::uint32_t>& pointsAt(std::uint32_t endPin) const;
    // The end pin of the most such points; none where numbers are not shared.
    std::uint32_t busiestEnd() const;

private:
    struct Reach {
        std::vector<std::uint32_t> ends, points; // end pins, and other points
    };

    bool walk(std::uint64_t limit);
    bool isEnd(std::uint32_t node) const;
    void layByChains();
    void layByLevels();
    void number(Layer& layer);

    const Design::RoutedDesign& design_;
    const Model::Network& network_;
    const std::vector<std::uint32_t>& level_;
    const std::vector<Point>& points_;
    std::vector<Reach> reach_; // by point
    std::vector<Layer> layers_;
    std::vector<std::uint64_t> codes_;
    bool shared_ = false;
    std::unordered_map<std::uint32_t, std::vector<std::uint32_t>> pointsAt_;
};

} // namespace Exceptions
