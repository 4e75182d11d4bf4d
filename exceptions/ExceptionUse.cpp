// Why an exception covers no path of the analysis: whether there would be some between clocks that
// set_clock_groups separates.
#include "exceptions/Exceptions.h"
#include "model/ClockGroups.h"

#include <algorithm>

namespace Exceptions {

namespace {

// So many arcs and points are passed for all exceptions together; for what is left it stays open.
constexpr std::uint64_t walkLimit = 50'000'000;

bool names(const std::vector<std::uint32_t>& sorted, std::uint32_t value) {
    return sorted.empty() || std::ranges::binary_search(sorted, value);
}

} // namespace

// Start and end points by their pins, and how many arcs and points were passed so far.
struct Exceptions::CutSearch {
    CutSearch(const Model::TimingModel& theModel, const Model::ClockGroups& theGroups)
        : model(theModel), groups(theGroups) {
        for (const Model::Start& start : model.starts())
            starts[start.pin].push_back(&start);
        for (const Model::End& end : model.ends())
            ends[end.pin].push_back(&end);
    }

    // Those of the pins; of all where there are none.
    template <class Point, class Use>
    void forEach(const std::unordered_map<std::uint32_t, std::vector<const Point*>>& points,
                 const std::vector<std::uint32_t>& pins, Use use) const {
        for (const std::uint32_t pin : pins)
            if (const auto found = points.find(pin); found != points.end())
                std::ranges::for_each(found->second, use);
        if (pins.empty())
            for (const auto& [pin, own] : points)
                std::ranges::for_each(own, use);
    }

    const Model::TimingModel& model;
    const Model::ClockGroups& groups;
    std::unordered_map<std::uint32_t, std::vector<const Model::Start*>> starts;
    std::unordered_map<std::uint32_t, std::vector<const Model::End*>> ends;
    std::uint64_t passed = 0;
};

void Exceptions::findCut(const Model::TimingModel& model) {
    if (constraints_.clockGroups.empty())
        return;
    const Model::ClockGroups groups(constraints_.clockGroups, clocks_.size());
    CutSearch search(model, groups);
    for (const Variant& variant : variants_)
        if (!uses_[variant.exception].matchesPath)
            findCut(search, variant);
}

std::vector<std::uint32_t> Exceptions::launchClocks(const Model::TimingModel& model,
                                                    const Model::Start& start) const {
    if (start.kind == Model::Start::Kind::reg)
        return model.clocksAt(start.pin);
    std::vector<std::uint32_t> clocks;
    if (start.delay && start.delay->clock)
        clocks.push_back(*start.delay->clock);
    for (std::uint32_t clock = 0; start.kind == Model::Start::Kind::clockSource && clock < clocks_.size();
         ++clock)
        if (std::ranges::find(clocks_[clock].targets, network_.sourceOf(start.pin)) !=
            clocks_[clock].targets.end())
            clocks.push_back(clock);
    return clocks;
}

std::vector<std::uint32_t> Exceptions::startNodes(const CutSearch& search, const Variant& variant,
                                                  std::uint32_t launch) const {
    std::vector<std::uint32_t> nodes;
    search.forEach(search.starts, variant.from.pins, [&](const Model::Start* start) {
        if (!variant.from.empty() && namedBy(startVariants_[numberOf(*start)], variant) == 0)
            return;
        const std::vector<std::uint32_t> clocks = launchClocks(search.model, *start);
        if (std::ranges::find(clocks, launch) == clocks.end())
            return;
        if (start->kind != Model::Start::Kind::reg)
            nodes.push_back(network_.sourceOf(start->pin));
        else
            for (const std::uint32_t number : network_.out(network_.sinkOf(start->pin)))
                if (const Model::Arc& arc = network_.arcs()[number]; arc.kind == Model::ArcKind::launch)
                    nodes.push_back(arc.to);
    });
    return nodes;
}

// The nodes that paths of a launch clock reach from the variant's start points and through its points.
std::vector<bool> Exceptions::walkVariant(CutSearch& search, const Variant& variant,
                                          std::uint32_t launch) const {
    std::vector<std::uint32_t> open = startNodes(search, variant, launch);
    std::vector<bool> reached;
    for (std::size_t stage = 0; stage <= variant.throughs.size(); ++stage) {
        reached.assign(network_.size(), false);
        for (const std::uint32_t node : open)
            reached[node] = true;
        while (!open.empty()) {
            const std::uint32_t node = open.back();
            open.pop_back();
            for (const std::uint32_t number : network_.out(node)) {
                const Model::Arc& arc = network_.arcs()[number];
                ++search.passed;
                if (arc.kind == Model::ArcKind::through && !reached[arc.to]) {
                    reached[arc.to] = true;
                    open.push_back(arc.to);
                }
            }
        }
        if (stage < variant.throughs.size())
            for (const Mention& mention : variant.throughs[stage])
                if (reached[mention.node])
                    open.push_back(mention.node);
    }
    return reached;
}

void Exceptions::findCut(CutSearch& search, const Variant& variant) {
    std::vector<std::uint32_t>& cut = uses_[variant.exception].cutByGroups;
    const std::uint64_t points =
        (variant.from.pins.empty() ? search.starts.size() : variant.from.pins.size()) +
        (variant.to.pins.empty() ? search.ends.size() : variant.to.pins.size());
    for (std::uint32_t launch = 0; launch < clocks_.size(); ++launch) {
        if (clocks_[launch].removed || !names(variant.fromClocks, launch) || search.passed > walkLimit)
            continue;
        search.passed += points;
        const std::vector<bool> reached = walkVariant(search, variant, launch);
        std::vector<bool> captures(clocks_.size());
        search.forEach(search.ends, variant.to.pins, [&](const Model::End* end) {
            bool arrives = false;
            network_.eachCopy(network_.sinkOf(end->pin),
                              [&](std::uint32_t node) { arrives = arrives || reached[node]; });
            if (!arrives)
                return;
            if (!end->isPort())
                for (const std::uint32_t capture : search.model.clocksAt(end->clockPin))
                    captures[capture] = true;
            else if (end->delay && end->delay->clock)
                captures[*end->delay->clock] = true;
        });
        for (std::uint32_t capture = 0; capture < clocks_.size(); ++capture)
            if (captures[capture] && names(variant.toClocks, capture))
                if (const auto groups = search.groups.separating(launch, capture))
                    cut.push_back(*groups);
    }
    std::ranges::sort(cut);
    cut.erase(std::ranges::unique(cut).begin(), cut.end());
}

} // namespace Exceptions
