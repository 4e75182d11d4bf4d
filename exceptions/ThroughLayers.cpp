#include "exceptions/ThroughLayers.h"

#include <algorithm>
#include <bit>
#include <map>

namespace Exceptions {

namespace {

// The numbers that are taken.
class Numbers {
public:
    void add(std::uint64_t number) {
        words_.resize(std::max<std::size_t>(words_.size(), number / wordBits + 1));
        words_[number / wordBits] |= std::uint64_t{1} << number % wordBits;
    }
    void add(const Numbers& other) {
        words_.resize(std::max(words_.size(), other.words_.size()));
        for (std::size_t i = 0; i < other.words_.size(); ++i)
            words_[i] |= other.words_[i];
    }
    std::uint64_t firstFree() const {
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

unsigned digitsOf(std::uint64_t number) { return static_cast<unsigned>(std::bit_width(number)); }

} // namespace

bool ThroughLayers::Point::isOfInterestAt(std::uint32_t endPin) const {
    return anyEnd || std::ranges::binary_search(endPins, endPin);
}

ThroughLayers::ThroughLayers(const Design::RoutedDesign& design, const Model::Network& network,
                             const std::vector<std::uint32_t>& level, const std::vector<Point>& points,
                             std::uint64_t walkLimit)
    : design_(design), network_(network), level_(level), points_(points), codes_(points.size()) {
    shared_ = walk(walkLimit);
    if (shared_)
        layByChains();
    else
        layByLevels();
}

const std::vector<std::uint32_t>& ThroughLayers::pointsAt(std::uint32_t endPin) const {
    static const std::vector<std::uint32_t> empty;
    const auto found = pointsAt_.find(endPin);
    return found == pointsAt_.end() ? empty : found->second;
}

std::uint32_t ThroughLayers::busiestEnd() const {
    std::uint32_t busiest = Base::none;
    std::size_t most = 0;
    for (const auto& [end, points] : pointsAt_)
        if (points.size() > most || (points.size() == most && end < busiest)) {
            most = points.size();
            busiest = end;
        }
    return busiest;
}

bool ThroughLayers::isEnd(std::uint32_t node) const {
    const std::uint32_t pin = network_.pinOf(node);
    if (network_.originalOf(node) != network_.sinkOf(pin))
        return false;
    return design_.isPort(pin) ? design_.pins[pin].direction != Design::Direction::input
                               : design_.isDataPin(pin);
}

// Forwards from every point. False where that passes more arcs than the limit.
bool ThroughLayers::walk(std::uint64_t limit) {
    reach_.resize(points_.size());
    std::vector<std::uint32_t> pointOf(network_.size(), Base::none), seenFrom(network_.size(), Base::none),
        open;
    for (std::uint32_t point = 0; point < points_.size(); ++point)
        for (const std::uint32_t node : points_[point].nodes)
            pointOf[node] = point;
    std::uint64_t passed = 0;
    for (std::uint32_t point = 0; point < points_.size(); ++point) {
        Reach& reach = reach_[point];
        open = points_[point].nodes;
        for (const std::uint32_t node : open)
            seenFrom[node] = point;
        while (!open.empty()) {
            const std::uint32_t node = open.back();
            open.pop_back();
            if (isEnd(node))
                reach.ends.push_back(network_.pinOf(node));
            if (pointOf[node] != Base::none && pointOf[node] != point)
                reach.points.push_back(pointOf[node]);
            for (const std::uint32_t number : network_.out(node)) {
                const Model::Arc& arc = network_.arcs()[number];
                ++passed;
                if (arc.kind == Model::ArcKind::through && seenFrom[arc.to] != point) {
                    seenFrom[arc.to] = point;
                    open.push_back(arc.to);
                }
            }
        }
        std::ranges::sort(reach.ends); // several copies are one pin
        const auto again = std::ranges::unique(reach.ends);
        reach.ends.erase(again.begin(), again.end());
        if (passed > limit)
            return false;
    }
    return true;
}

void ThroughLayers::layByChains() {
    std::vector<std::uint32_t> order(points_.size()), before(points_.size());
    for (std::uint32_t point = 0; point < order.size(); ++point)
        order[point] = point;
    std::ranges::stable_sort(order, {},
                             [&](std::uint32_t point) { return level_[points_[point].nodes.front()]; });
    for (const std::uint32_t point : order) {
        for (const std::uint32_t next : reach_[point].points)
            before[next] = std::max(before[next], before[point] + 1);
        layers_.resize(std::max<std::size_t>(layers_.size(), before[point] + 1));
        layers_[before[point]].points.push_back(point);
    }
    for (Layer& layer : layers_)
        number(layer);
    for (std::uint32_t point = 0; point < points_.size(); ++point)
        for (const std::uint32_t end : reach_[point].ends)
            if (points_[point].isOfInterestAt(end))
                pointsAt_[end].push_back(point);
}

// The points that most end points have to do with choose first.
void ThroughLayers::number(Layer& layer) {
    struct Taken {
        Numbers byAll, byThoseOfInterest;
    };
    std::unordered_map<std::uint32_t, Taken> takenAt; // by end pin
    std::vector<std::uint32_t> order = layer.points;
    std::ranges::stable_sort(order, std::greater{},
                             [&](std::uint32_t point) { return reach_[point].ends.size(); });
    for (const std::uint32_t point : order) {
        Numbers taken;
        taken.add(0);
        for (const std::uint32_t end : reach_[point].ends)
            if (const auto at = takenAt.find(end); at != takenAt.end())
                taken.add(points_[point].isOfInterestAt(end) ? at->second.byAll
                                                             : at->second.byThoseOfInterest);
        codes_[point] = taken.firstFree();
        layer.classes = std::max(layer.classes, digitsOf(codes_[point]));
        for (const std::uint32_t end : reach_[point].ends) {
            takenAt[end].byAll.add(codes_[point]);
            if (points_[point].isOfInterestAt(end))
                takenAt[end].byThoseOfInterest.add(codes_[point]);
        }
    }
}

void ThroughLayers::layByLevels() {
    std::map<std::uint32_t, Layer> byLevel;
    for (std::uint32_t point = 0; point < points_.size(); ++point) {
        Layer& layer = byLevel[level_[points_[point].nodes.front()]];
        layer.points.push_back(point);
        codes_[point] = layer.points.size();
        layer.classes = digitsOf(codes_[point]);
    }
    for (auto& [level, layer] : byLevel)
        layers_.push_back(std::move(layer));
}

} // namespace Exceptions
