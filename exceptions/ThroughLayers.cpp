#include "exceptions/ThroughLayers.h"

#include "exceptions/Sorted.h"

#include <algorithm>
#include <bit>
#include <map>

namespace Exceptions {

using Design::PinId;
using Model::NodeId;

namespace {

// The numbers that are taken.
class Numbers {
public:
    void add(Code number) {
        words_.resize(std::max<std::size_t>(words_.size(), number / wordBits + 1));
        words_[number / wordBits] |= std::uint64_t{1} << number % wordBits;
    }
    void add(const Numbers& other) {
        words_.resize(std::max(words_.size(), other.words_.size()));
        for (std::size_t i = 0; i < other.words_.size(); ++i)
            words_[i] |= other.words_[i];
    }
    Code firstFree() const {
        std::size_t i = 0;
        while (i < words_.size() && words_[i] == ~std::uint64_t{0})
            ++i;
        const int rest = i < words_.size() ? std::countr_one(words_[i]) : 0;
        return i * wordBits + static_cast<std::uint64_t>(rest);
    }

private:
    static constexpr std::uint64_t wordBits = 64;
    std::vector<std::uint64_t> words_;
};

unsigned digitsOf(Code number) { return static_cast<unsigned>(std::bit_width(number)); }

} // namespace

bool ThroughLayers::Point::isOfInterestAt(PinId endPin) const {
    return anyEnd || std::ranges::binary_search(endPins, endPin);
}

const std::vector<AtomId>& ThroughLayers::pointsAt(PinId endPin) const {
    static const std::vector<AtomId> empty;
    const auto found = pointsAt_.find(endPin);
    return found == pointsAt_.end() ? empty : found->second;
}

PinId ThroughLayers::busiestEnd() const {
    PinId busiest;
    std::size_t most = 0;
    for (const auto& [end, points] : pointsAt_)
        if (points.size() > most || (points.size() == most && end < busiest)) {
            most = points.size();
            busiest = end;
        }
    return busiest;
}

// What is needed only while the layers are made.
class ThroughLayers::Builder {
public:
    Builder(const Design::RoutedDesign& design, const Model::Network& network, const Levels& levels,
            const Points& points, ThroughLayers& made)
        : design_(design), network_(network), levels_(levels), points_(points), made_(made) {}

    // Walks forwards from every point. Returns false if that passes more arcs than the limit.
    bool walk(std::uint64_t limit);
    void layByChains();
    void layByLevels();

private:
    // What paths through a point arrive at.
    struct Reach {
        std::vector<PinId> ends; // sorted
        std::vector<AtomId> points;
    };

    bool isEnd(NodeId node) const;
    std::uint32_t levelOf(AtomId point) const { return levels_[points_[point].nodes.front()]; }
    void number(Layer& layer);
    void collectPointsAtEnds();

    const Design::RoutedDesign& design_;
    const Model::Network& network_;
    const Levels& levels_;
    const Points& points_;
    ThroughLayers& made_;
    Base::IndexVector<AtomId, Reach> reach_;
};

ThroughLayers::ThroughLayers(const Design::RoutedDesign& design, const Model::Network& network,
                             const Levels& levels, const Points& points, std::uint64_t walkLimit)
    : codes_(points.size()) {
    Builder builder(design, network, levels, points, *this);
    shared_ = builder.walk(walkLimit);
    if (shared_)
        builder.layByChains();
    else
        builder.layByLevels();
}

bool ThroughLayers::Builder::isEnd(NodeId node) const {
    const PinId pin = network_.pinOf(node);
    if (network_.originalOf(node) != network_.sinkOf(pin))
        return false;
    return design_.isPort(pin) ? design_.pins[pin].direction != Design::Direction::input
                               : design_.isDataPin(pin);
}

bool ThroughLayers::Builder::walk(std::uint64_t limit) {
    reach_.resize(points_.size());
    Base::IndexVector<NodeId, AtomId> pointOf(network_.size()), seenFrom(network_.size());
    for (const AtomId point : points_.ids())
        for (const NodeId node : points_[point].nodes)
            pointOf[node] = point;
    std::uint64_t passed = 0;
    Nodes open;
    for (const AtomId point : points_.ids()) {
        Reach& reach = reach_[point];
        open = points_[point].nodes;
        for (const NodeId node : open)
            seenFrom[node] = point;
        while (!open.empty()) {
            const NodeId node = open.back();
            open.pop_back();
            if (isEnd(node))
                reach.ends.push_back(network_.pinOf(node));
            if (pointOf[node] != Base::none && pointOf[node] != point)
                reach.points.push_back(pointOf[node]);
            for (const auto number : network_.out(node)) {
                const Model::Arc& arc = network_.arcs()[number];
                ++passed;
                if (arc.kind == Model::ArcKind::through && seenFrom[arc.to] != point) {
                    seenFrom[arc.to] = point;
                    open.push_back(arc.to);
                }
            }
        }
        sortOnce(reach.ends); // several copies of a node are one pin
        if (passed > limit)
            return false;
    }
    return true;
}

void ThroughLayers::Builder::layByChains() {
    Base::IndexVector<AtomId, std::size_t> before(points_.size()); // points on the longest chain to it
    const auto ids = points_.ids();
    std::vector<AtomId> order(ids.begin(), ids.end());
    std::ranges::stable_sort(order, {}, [&](AtomId point) { return levelOf(point); });
    std::vector<Layer>& layers = made_.layers_;
    for (const AtomId point : order) {
        for (const AtomId next : reach_[point].points)
            before[next] = std::max(before[next], before[point] + 1);
        layers.resize(std::max(layers.size(), before[point] + 1));
        layers[before[point]].points.push_back(point);
    }
    for (Layer& layer : layers)
        number(layer);
    collectPointsAtEnds();
}

void ThroughLayers::Builder::collectPointsAtEnds() {
    for (const AtomId point : points_.ids())
        for (const PinId end : reach_[point].ends)
            if (points_[point].isOfInterestAt(end))
                made_.pointsAt_[end].push_back(point);
}

// The points that reach the most end points choose their numbers first.
void ThroughLayers::Builder::number(Layer& layer) {
    struct Taken {
        Numbers byAll, byThoseOfInterest;
    };
    std::unordered_map<PinId, Taken> takenAt; // by end pin
    std::vector<AtomId> order = layer.points;
    std::ranges::stable_sort(order, std::greater{}, [&](AtomId point) { return reach_[point].ends.size(); });
    for (const AtomId point : order) {
        Numbers taken;
        taken.add(0);
        for (const PinId end : reach_[point].ends)
            if (const auto at = takenAt.find(end); at != takenAt.end())
                taken.add(points_[point].isOfInterestAt(end) ? at->second.byAll
                                                             : at->second.byThoseOfInterest);
        Code& code = made_.codes_[point];
        code = taken.firstFree();
        layer.classes = std::max(layer.classes, digitsOf(code));
        for (const PinId end : reach_[point].ends) {
            takenAt[end].byAll.add(code);
            if (points_[point].isOfInterestAt(end))
                takenAt[end].byThoseOfInterest.add(code);
        }
    }
}

void ThroughLayers::Builder::layByLevels() {
    std::map<std::uint32_t, Layer> byLevel;
    for (const AtomId point : points_.ids()) {
        Layer& layer = byLevel[levelOf(point)];
        layer.points.push_back(point);
        made_.codes_[point] = layer.points.size();
        layer.classes = digitsOf(made_.codes_[point]);
    }
    for (auto& [level, layer] : byLevel)
        made_.layers_.push_back(std::move(layer));
}

} // namespace Exceptions
