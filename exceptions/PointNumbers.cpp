#include "exceptions/PointNumbers.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace Exceptions {

namespace {

// Up to so many registers get numbers of their own for their latency alone.
constexpr std::size_t fewRegisters = 500;

} // namespace

template <class Point, class Number>
Number PointNumbers::Numbering<Point, Number>::find(const Point& point) const {
    const auto found = numbers.find(point);
    return found == numbers.end() ? Number{0} : found->second;
}

template <class Point, class Number>
void PointNumbers::Numbering<Point, Number>::number(const std::map<Point, Namings>& named,
                                                    const std::set<Point>& alone) {
    namings.resize(1); // of the points that nobody names
    std::map<std::pair<Namings, std::optional<Point>>, Number> known;
    for (const auto& [point, own] : named) {
        const auto [place, isNew] = known.try_emplace(
            {own, alone.contains(point) ? std::optional<Point>(point) : std::nullopt}, namings.next());
        if (isNew)
            namings.push_back(own);
        numbers[point] = place->second;
    }
}

PointNumbers::PointNumbers(const Design::RoutedDesign& design, const Model::Network& network,
                           const Design::Constraints& constraints, const Variants& variants)
    : design_(design), network_(network) {
    numberStarts(constraints, variants);
    numberEnds(variants);
}

StartNumber PointNumbers::numberOf(const Model::Start& start) const {
    return starts_.find({start.pin, start.kind == Model::Start::Kind::clockSource});
}

EndNumber PointNumbers::numberOf(Design::PinId endPin) const { return ends_.find(endPin); }

BySet PointNumbers::find(const Namings& namings, VariantId variant) {
    const auto found = std::ranges::lower_bound(namings, variant, {}, &Naming::variant);
    return found == namings.end() || found->variant != variant ? BySet() : found->by;
}

// A register's cell names the data that starts at a clock's source on one of its pins too; its clock pin does
// not.
void PointNumbers::numberStarts(const Design::Constraints& constraints, const Variants& variants) {
    std::map<StartPoint, Namings> named;
    for (const VariantId variant : variants.ids()) {
        const NamedPins& points = variants[variant].from.points;
        for (std::size_t i = 0; i < points.pins.size(); ++i)
            for (const StartPoint& start : startsAt(points.pins[i]))
                if (const BySet by = start.clockSource ? points.by[i] & (By::pin | By::cell) : points.by[i];
                    !by.isEmpty())
                    named[start].push_back({variant, by});
    }
    const std::set<StartPoint> alone = startsAlone(constraints, variants);
    for (const StartPoint& start : alone)
        named.try_emplace(start);
    starts_.number(named, alone);
}

void PointNumbers::numberEnds(const Variants& variants) {
    std::map<Design::PinId, Namings> named;
    for (const VariantId variant : variants.ids()) {
        const NamedPins& points = variants[variant].to.points;
        for (std::size_t i = 0; i < points.pins.size(); ++i)
            named[points.pins[i]].push_back({variant, points.by[i]});
    }
    ends_.number(named, {});
}

std::vector<PointNumbers::StartPoint> PointNumbers::startsAt(Design::PinId pin) const {
    const bool source = network_.isClockSource(network_.sourceOf(pin));
    std::vector<StartPoint> starts;
    if (!source || design_.isClockPin(pin))
        starts.push_back({pin, false});
    if (source)
        starts.push_back({pin, true});
    return starts;
}

// The start points that a delay without clock latency must know one by one: those that it names, or, if it
// names none, all whose latency may differ from the others'.
std::set<PointNumbers::StartPoint> PointNumbers::startsAlone(const Design::Constraints& constraints,
                                                             const Variants& variants) const {
    std::set<StartPoint> alone;
    bool all = false;
    for (const Variant& variant : variants) {
        if (!constraints.exceptions[variant.exception].ignoreClockLatency)
            continue;
        all |= variant.from.points.empty();
        for (const Design::PinId pin : variant.from.points.pins)
            for (const StartPoint& start : startsAt(pin))
                alone.insert(start);
    }
    if (all)
        addLatencyDependent(alone);
    return alone;
}

// Ports and clock sources, at which a clock may have another latency than at registers. Registers too, if
// there are few of them.
void PointNumbers::addLatencyDependent(std::set<StartPoint>& starts) const {
    std::vector<Design::PinId> pins, registers;
    for (const auto pin : Base::firstIds<Design::PinId>(design_.pins.size())) {
        if (design_.isPort(pin) || network_.isClockSource(network_.sourceOf(pin)))
            pins.push_back(pin);
        else if (design_.isClockPin(pin))
            registers.push_back(pin);
    }
    if (registers.size() <= fewRegisters)
        pins.insert(pins.end(), registers.begin(), registers.end());
    for (const Design::PinId pin : pins)
        for (const StartPoint& start : startsAt(pin))
            starts.insert(start);
}

} // namespace Exceptions
