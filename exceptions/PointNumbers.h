// The numbers of start and end points: points that the same variants name, by the same kinds of objects,
// share a number.
//
//   set_false_path -from {r0 r1}         variant 0
//   set_multicycle_path 2 -from r1       variant 1
//     r0 has start number 1 (named by variant 0), r1 has 2 (by 0 and 1), all other points have 0
//
// A path's start number is what its classes spell (Encoding.h), so the fewer numbers, the fewer classes. An
// end point is known without a class.
//
// It costs n log n for n points named, each as often as a variant names it.
#pragma once

#include "exceptions/Variant.h"
#include "model/TimingModel.h"

#include <compare>
#include <map>
#include <set>
#include <unordered_map>
#include <vector>

namespace Exceptions {

// A variant that names a start or end point, and by which objects.
struct Naming {
    VariantId variant;
    BySet by;

    auto operator<=>(const Naming&) const = default;
};
using Namings = std::vector<Naming>; // by variant, each once

class PointNumbers {
public:
    PointNumbers(const Design::RoutedDesign& design, const Model::Network& network,
                 const Design::Constraints& constraints, const Variants& variants);

    StartNumber numberOf(const Model::Start& start) const;
    EndNumber numberOf(Design::PinId endPin) const;
    // How many numbers start points have, unnamedStart among them.
    std::size_t starts() const { return starts_.namings.size(); }

    // Who names the points of a number.
    const Namings& namings(StartNumber start) const { return starts_.namings[start]; }
    const Namings& namings(EndNumber end) const { return ends_.namings[end]; }
    // By which objects a variant names the points of a number; empty if it does not name them.
    BySet namedBy(StartNumber start, VariantId variant) const { return find(namings(start), variant); }
    BySet namedBy(EndNumber end, VariantId variant) const { return find(namings(end), variant); }

private:
    // Data that starts at a pin: a register's, or from outside, or that of the clock with its source there.
    struct StartPoint {
        Design::PinId pin;
        bool clockSource = false;

        auto operator<=>(const StartPoint&) const = default;
    };
    struct Hash {
        std::size_t operator()(const StartPoint& start) const {
            return std::hash<std::uint64_t>()(std::uint64_t{start.pin.number()} << 1 |
                                              (start.clockSource ? 1U : 0U));
        }
        std::size_t operator()(Design::PinId pin) const { return std::hash<Design::PinId>()(pin); }
    };
    template <class Point, class Number>
    struct Numbering {
        std::unordered_map<Point, Number, Hash> numbers; // of the points that have one
        Base::IndexVector<Number, Namings> namings;

        Number find(const Point& point) const;
        // Points of `alone` share their number with no other.
        void number(const std::map<Point, Namings>& named, const std::set<Point>& alone);
    };

    static BySet find(const Namings& namings, VariantId variant);
    void numberStarts(const Design::Constraints& constraints, const Variants& variants);
    void numberEnds(const Variants& variants);
    std::vector<StartPoint> startsAt(Design::PinId pin) const;
    std::set<StartPoint> startsAlone(const Design::Constraints& constraints, const Variants& variants) const;
    void addLatencyDependent(std::set<StartPoint>& starts) const;

    const Design::RoutedDesign& design_;
    const Model::Network& network_;
    Numbering<StartPoint, StartNumber> starts_;
    Numbering<Design::PinId, EndNumber> ends_;
};

} // namespace Exceptions
