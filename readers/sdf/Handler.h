// The events of an SDF file, in the order of the file. The parser calls a handler for each.
//
// Texts are without escapes and are valid during the call only. A port path is split at the last divider that
// is not escaped: the instance before it, relative to the cell's, and the pin after it. If the divider is a
// dot, a slash is taken as well, since some writers always use it before pins. Values are in the file's own
// time unit, as written.
#pragma once

#include "base/Decimal.h"
#include "base/Diagnostics.h"
#include "design/RoutedDesign.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace Readers::Sdf {

// One value, or a triple of which some may be missing. A single value is all three. "()" has none.
struct Value {
    std::optional<Base::Decimal> minimum, typical, maximum;

    bool isEmpty() const { return !minimum && !typical && !maximum; }
};

struct Path {
    std::string_view instance; // may be empty: the cell's own instance
    std::string_view pin;      // with its bit: "in[3]"
    // The offsets in the instance of each '.' or '/' that was escaped, so that it belongs to a name.
    std::span<const std::uint32_t> escaped = {};
};

// A port with the edge that is asked for: "(posedge clk)" is rise, "(negedge clk)" fall; 01 and the like are
// any. It is conditional if the port is in "(COND ...)".
struct Event {
    Path path;
    Design::Transition edge = Design::Transition::any;
    bool conditional = false;
};

struct Header {
    std::string_view version, design, program;
    char divider = '.';
    int scale = -9; // the time unit is 10^scale s
};

enum class CheckKind : std::uint8_t {
    setup,
    hold,
    setupHold,
    recovery,
    removal,
    recoveryRemoval,
    skew,
    width,
    period,
    noChange
};

class Handler {
public:
    virtual ~Handler() = default;

    virtual void header(const Header&) {} // before the first cell
    // A CELL begins. Instance "" is the design's top, "*" is every instance of the type. escaped: as in a
    // Path.
    virtual void cell(std::string_view type, std::string_view instance,
                      std::span<const std::uint32_t> escaped, Base::Position) {
        (void)type, (void)instance, (void)escaped;
    }
    virtual void endCell() {}

    // The values of a delay are the 1, 2, 3, 6 or 12 of its list. increment: the delay adds to what is there.
    virtual void ioPath(const Event& from, const Path& to, std::span<const Value> values, bool conditional,
                        bool increment, Base::Position) {
        (void)from, (void)to, (void)values, (void)conditional, (void)increment;
    }
    virtual void interconnect(const Path& from, const Path& to, std::span<const Value> values, bool increment,
                              Base::Position) {
        (void)from, (void)to, (void)values, (void)increment;
    }
    virtual void port(const Path& to, std::span<const Value> values, bool increment, Base::Position) {
        (void)to, (void)values, (void)increment;
    }
    virtual void netDelay(const Path& net, std::span<const Value> values, bool increment, Base::Position) {
        (void)net, (void)values, (void)increment;
    }
    // Without an output the delay is of all of the cell's outputs.
    virtual void device(const std::optional<Path>& output, std::span<const Value> values, bool increment,
                        Base::Position) {
        (void)output, (void)values, (void)increment;
    }
    // setup, hold and their like: data, clock, one value. setupHold and recoveryRemoval: two. width and
    // period: the pin is in `clock`, `data` is empty. skew: both, one value. noChange: both, two.
    virtual void check(CheckKind, const Event& data, const Event& clock, std::span<const Value> values,
                       Base::Position) {
        (void)data, (void)clock, (void)values;
    }
    // Something that is read and has no effect here (PATHPULSE, RETAIN, LABEL, TIMINGENV ...), by its
    // keyword.
    virtual void ignored(std::string_view keyword, Base::Position) { (void)keyword; }
};

} // namespace Readers::Sdf
