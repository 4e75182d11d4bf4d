// The events of an SDF file, in the order of the file. The parser fires them, a handler builds something of
// them.
//
// Texts are without escapes and are valid during the call only. A port path is split where the file's divider
// last stands unescaped (a slash is taken too where the divider is a dot, for writers that use it for pins
// whatever the divider is): the instance before it, relative to the cell's, and the pin behind it. Values are
// in the file's own time unit, as written.
#pragma once

#include "base/Decimal.h"
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
    // Where the instance has a '.' or '/' that was escaped, so that it belongs to a name.
    std::span<const std::uint32_t> escaped = {};
};

// A port with the edge that is asked for: "(posedge clk)" is rise, "(negedge clk)" fall; 01 and its like are
// any. The condition is there where the port stands in "(COND ...)".
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

struct Where {
    unsigned line = 0, column = 0;
};

class Handler {
public:
    virtual ~Handler() = default;

    virtual void header(const Header&) {} // before the first cell
    // A CELL begins. Instance "" is the design's top, "*" is every instance of the type. escaped: as in a
    // Path.
    virtual void cell(std::string_view type, std::string_view instance,
                      std::span<const std::uint32_t> escaped, Where) {
        (void)type, (void)instance, (void)escaped;
    }
    virtual void endCell() {}

    // The values of a delay are the 1, 2, 3, 6 or 12 of its list. increment: the delay adds to what is there.
    virtual void ioPath(const Event& from, const Path& to, std::span<const Value> values, bool conditional,
                        bool increment, Where) {
        (void)from, (void)to, (void)values, (void)conditional, (void)increment;
    }
    virtual void interconnect(const Path& from, const Path& to, std::span<const Value> values, bool increment,
                              Where) {
        (void)from, (void)to, (void)values, (void)increment;
    }
    virtual void port(const Path& to, std::span<const Value> values, bool increment, Where) {
        (void)to, (void)values, (void)increment;
    }
    virtual void netDelay(const Path& net, std::span<const Value> values, bool increment, Where) {
        (void)net, (void)values, (void)increment;
    }
    // Without an output the delay is of all of the cell's outputs.
    virtual void device(const std::optional<Path>& output, std::span<const Value> values, bool increment,
                        Where) {
        (void)output, (void)values, (void)increment;
    }
    // setup, hold and their like: data, clock, one value. setupHold and recoveryRemoval: two. width and
    // period: the pin is in `clock`, `data` is empty. skew: both, one value. noChange: both, two.
    virtual void check(CheckKind, const Event& data, const Event& clock, std::span<const Value> values,
                       Where) {
        (void)data, (void)clock, (void)values;
    }
    // Something that is read and has no effect here (PATHPULSE, RETAIN, LABEL, TIMINGENV ...), by its
    // keyword.
    virtual void ignored(std::string_view keyword, Where) { (void)keyword; }
};

} // namespace Readers::Sdf
