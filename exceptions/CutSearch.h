// Why an exception covers no path of the analysis: whether there would be some between clocks that
// set_clock_groups separates.
//
// The search walks forwards from the start points of each launch clock, through the exception's through
// lists, to its end points. All searches together pass a limited number of arcs and points; after that
// nothing more is found.
#pragma once

#include "exceptions/PointNumbers.h"
#include "exceptions/Variant.h"
#include "model/ClockGroups.h"
#include "model/TimingModel.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace Exceptions {

class CutSearch {
public:
    // Refers to all of them as long as it lives. Costs the start and end points.
    CutSearch(const Model::TimingModel& model, const Model::Network& network, const Model::Clocks& clocks,
              const Model::ClockGroups& groups, const PointNumbers& numbers);

    // The statements that separate the clocks of paths that the variant would cover; one may be there several
    // times.
    std::vector<Design::ClockGroupsId> groupsThatCut(const Variant& variant, VariantId number);

private:
    template <class Point>
    using ByPin = std::unordered_map<Design::PinId, std::vector<const Point*>>;

    // Of a variant that is searched for.
    struct Sought {
        const Variant& variant;
        VariantId number;
    };

    std::vector<Design::ClockId> launchClocks(const Model::Start& start) const;
    std::vector<Model::NodeId> startNodes(const Sought& sought, Design::ClockId launch) const;
    std::vector<bool> walk(const Sought& sought, Design::ClockId launch);
    void walkOn(std::vector<Model::NodeId>& open, std::vector<bool>& reached);
    std::vector<bool> capturing(const Variant& variant, const std::vector<bool>& reached) const;

    const Model::TimingModel& model_;
    const Model::Network& network_;
    const Model::Clocks& clocks_;
    const Model::ClockGroups& groups_;
    const PointNumbers& numbers_;
    ByPin<Model::Start> starts_;
    ByPin<Model::End> ends_;
    std::uint64_t passed_ = 0; // arcs and points
};

} // namespace Exceptions
