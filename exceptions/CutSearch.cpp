#include "exceptions/CutSearch.h"

#include <algorithm>

namespace Exceptions {

using Design::ClockId;
using Model::NodeId;

namespace {

// So many arcs and points are passed for all exceptions together.
constexpr std::uint64_t walkLimit = 50'000'000;

// Whether a variant's list of clocks names one; an empty list names all.
bool names(const std::vector<ClockId>& clocks, ClockId clock) {
    return clocks.empty() || isIn(clocks, clock);
}

// The points at the pins; all points if there are no pins.
template <class Points, class Use>
void forEach(const Points& points, const std::vector<Design::PinId>& pins, Use use) {
    for (const Design::PinId pin : pins)
        if (const auto found = points.find(pin); found != points.end())
            std::ranges::for_each(found->second, use);
    if (pins.empty())
        for (const auto& [pin, own] : points)
            std::ranges::for_each(own, use);
}

} // namespace

CutSearch::CutSearch(const Model::TimingModel& model, const Model::Network& network,
                     const Model::Clocks& clocks, const Model::ClockGroups& groups,
                     const PointNumbers& numbers)
    : model_(model), network_(network), clocks_(clocks), groups_(groups), numbers_(numbers) {
    for (const Model::Start& start : model.starts())
        starts_[start.pin].push_back(&start);
    for (const Model::End& end : model.ends())
        ends_[end.pin].push_back(&end);
}

std::vector<ClockId> CutSearch::launchClocks(const Model::Start& start) const {
    if (start.kind == Model::Start::Kind::reg) {
        const auto& clocks = model_.clocksAt(start.pin);
        return {clocks.begin(), clocks.end()};
    }
    std::vector<ClockId> clocks;
    if (start.delay && start.delay->clock != Base::none)
        clocks.push_back(start.delay->clock);
    if (start.kind == Model::Start::Kind::clockSource)
        for (const auto clock : Base::firstIds<ClockId>(clocks_.size()))
            if (const auto& targets = clocks_[clock].targets;
                std::ranges::find(targets, network_.sourceOf(start.pin)) != targets.end())
                clocks.push_back(clock);
    return clocks;
}

// The nodes at which the data of a launch clock leaves the variant's start points.
std::vector<NodeId> CutSearch::startNodes(const Sought& sought, ClockId launch) const {
    const std::vector<Design::PinId>& pins = sought.variant.from.points.pins;
    std::vector<NodeId> nodes;
    forEach(starts_, pins, [&](const Model::Start* start) {
        if (!pins.empty() && numbers_.namedBy(numbers_.numberOf(*start), sought.number).isEmpty())
            return;
        const std::vector<ClockId> clocks = launchClocks(*start);
        if (std::ranges::find(clocks, launch) == clocks.end())
            return;
        if (start->kind != Model::Start::Kind::reg) {
            nodes.emplace_back(network_.sourceOf(start->pin));
            return;
        }
        for (const auto number : network_.out(network_.sinkOf(start->pin)))
            if (const Model::Arc& arc = network_.arcs()[number]; arc.kind == Model::ArcKind::launch)
                nodes.emplace_back(arc.to);
    });
    return nodes;
}

// From the open nodes forwards. Empties `open`.
void CutSearch::walkOn(std::vector<NodeId>& open, std::vector<bool>& reached) {
    for (const NodeId node : open)
        reached[node.number()] = true;
    while (!open.empty()) {
        const NodeId node = open.back();
        open.pop_back();
        for (const auto number : network_.out(node)) {
            const Model::Arc& arc = network_.arcs()[number];
            ++passed_;
            if (const NodeId next = arc.to; arc.kind == Model::ArcKind::through && !reached[next.number()]) {
                reached[next.number()] = true;
                open.push_back(next);
            }
        }
    }
}

// The nodes that paths of a launch clock reach from the variant's start points through its through lists.
std::vector<bool> CutSearch::walk(const Sought& sought, ClockId launch) {
    std::vector<NodeId> open = startNodes(sought, launch);
    std::vector<bool> reached(network_.size());
    walkOn(open, reached);
    for (const Mentions& list : sought.variant.throughs) {
        for (const Mention& mention : list)
            if (reached[mention.node.number()])
                open.push_back(mention.node);
        reached.assign(network_.size(), false);
        walkOn(open, reached);
    }
    return reached;
}

// The clocks that capture at those of the variant's end points that are reached.
std::vector<bool> CutSearch::capturing(const Variant& variant, const std::vector<bool>& reached) const {
    std::vector<bool> captures(clocks_.size());
    forEach(ends_, variant.to.points.pins, [&](const Model::End* end) {
        bool arrives = false;
        network_.eachCopy(network_.sinkOf(end->pin),
                          [&](NodeId node) { arrives = arrives || reached[node.number()]; });
        if (!arrives)
            return;
        if (!end->isPort())
            for (const ClockId capture : model_.clocksAt(end->clockPin))
                captures[capture.number()] = true;
        else if (end->delay && end->delay->clock != Base::none)
            captures[end->delay->clock.number()] = true;
    });
    return captures;
}

std::vector<Design::ClockGroupsId> CutSearch::groupsThatCut(const Variant& variant, VariantId number) {
    const auto countOf = [](const NamedPins& named, std::size_t all) {
        return named.empty() ? all : named.pins.size();
    };
    const std::size_t points =
        countOf(variant.from.points, starts_.size()) + countOf(variant.to.points, ends_.size());
    std::vector<Design::ClockGroupsId> cut;
    for (const auto launch : Base::firstIds<ClockId>(clocks_.size())) {
        if (clocks_[launch].removed || !names(variant.from.clocks, launch) || passed_ > walkLimit)
            continue;
        passed_ += points;
        const std::vector<bool> captures = capturing(variant, walk({variant, number}, launch));
        for (const auto capture : Base::firstIds<ClockId>(clocks_.size()))
            if (captures[capture.number()] && names(variant.to.clocks, capture))
                if (const Design::ClockGroupsId groups = groups_.separating(launch, capture);
                    groups != Base::none)
                    cut.push_back(groups);
    }
    return cut;
}

} // namespace Exceptions
