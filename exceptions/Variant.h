// What an exception means: the points of a design that it names, and by which objects it names them.
//
// An exception whose lists hold objects of several kinds can be read in several ways. Each of them is a
// variant, with objects of one kind at either end:
//
//   set_false_path -from [list [get_cells r0] [get_clocks a]] -to r1
//     variant 0: from the clock a, to the end points of the register r1
//     variant 1: from the start points of the register r0, to the end points of r1
//
// The variants of one exception may differ in how specific they are, so each of them is judged separately.
//
// Several objects can name one point: a register's start point has the name of its cell and of its clock pin,
// a node those of its pin, its cell and its net. These are different objects, and a later command replaces an
// earlier one on the same objects only. So every point carries the objects that named it.
#pragma once

#include "base/Names.h"
#include "design/Ids.h"
#include "design/RoutedDesign.h"
#include "exceptions/Ids.h"
#include "exceptions/Sorted.h"
#include "model/Ids.h"

#include <compare>
#include <cstdint>
#include <vector>

namespace Exceptions {

// A kind of object that names a point, in the order of a path: a clock pin comes before what it launches, a
// cell before its output, a net behind its driver. `output` is a register's output that names a start point.
enum class By : std::uint8_t { clockPin = 1, cell = 2, pin = 4, net = 8, output = 16 };

// A set of these kinds.
class BySet {
public:
    constexpr BySet() = default; // empty
    constexpr BySet(By by) : bits_(static_cast<std::uint8_t>(by)) {}

    constexpr bool isEmpty() const { return bits_ == 0; }
    constexpr BySet operator|(BySet other) const { return ofBits(bits_ | other.bits_); }
    constexpr BySet operator&(BySet other) const { return ofBits(bits_ & other.bits_); }
    // The members, each as a set of its own. Of the empty set: the empty set.
    std::vector<BySet> singles() const;

    auto operator<=>(const BySet&) const = default;

private:
    static constexpr BySet ofBits(unsigned bits) {
        BySet set;
        set.bits_ = static_cast<std::uint8_t>(bits);
        return set;
    }

    std::uint8_t bits_ = 0;
};

constexpr BySet operator|(By a, By b) { return BySet(a) | b; }

// A node of a -through list, and the object that names it there.
struct Mention {
    Model::NodeId node;
    By by = By::pin;
    Base::Name clockPin{}; // the name of the clock pin, because a node may have several of them

    auto operator<=>(const Mention&) const = default;
};
using Mentions = std::vector<Mention>; // sorted

// Start or end points: their pins, and by which objects each of them is named.
struct NamedPins {
    std::vector<Design::PinId> pins; // sorted after sort()
    std::vector<BySet> by;           // by position in `pins`

    void add(Design::PinId pin, By object);
    // Keeps each pin once, with all objects that name it.
    void sort();
    bool empty() const { return pins.empty(); }
};

// The two ends of an exception's paths.
enum class PathEnd : std::uint8_t { from, to };

struct Variant {
    // What an exception asks of one end of its paths. At most one of `points` and `clocks` is filled.
    struct End {
        bool isGiven = false; // false: any point will do
        NamedPins points;
        std::vector<Design::ClockId> clocks;               // any of them; sorted
        Design::Transition edge = Design::Transition::any; // of the clocks

        // Whether the end may have this clock, if points do not matter.
        bool admits(Design::ClockId clock) const { return !isGiven || isIn(clocks, clock); }
        // Whether the end may be a point that the variant names by these objects (none: does not name), at
        // this edge of a clock.
        bool covers(BySet namedBy, Design::ClockId clock, bool rise) const;
    };

    Design::ExceptionId exception;
    End from, to;
    Design::PinId
        fromOutput; // the register's output that names the start points; none if they are not named so
    std::vector<Mentions> throughs; // in the order of the paths: any node of each

    End& at(PathEnd end) { return end == PathEnd::from ? from : to; }
    const End& at(PathEnd end) const { return end == PathEnd::from ? from : to; }
    // Whether it names start or end points.
    bool namesPoints() const { return !from.points.empty() || !to.points.empty(); }
    // How specific it is: the higher, the more so. Start points weigh most, then end points, then through
    // points, then launch clocks, then capture clocks.
    unsigned rank() const;
};

using Variants = Base::IndexVector<VariantId, Variant>;

} // namespace Exceptions
