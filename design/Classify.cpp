// What the delays and checks show about pins: which are clocks, which are sets and resets, which cells are
// registers.
//
// All cells of a type are looked at together, since an instance whose data is constant has no checks. So the
// tables below have an entry per pin of a type, and stay small in a large design. The cost is a look-up for
// each check and each arc through a cell.
//
// A pin that checks refer to is a clock, except that a check of a set against a reset makes neither a clock.
// If no such pin sets off an output, its clock is the best of the pins that set it off by only one edge. Any
// other pin that sets off an output with a clock, in one direction only, is a set or a reset.
#include "design/RoutedDesign.h"

#include <algorithm>
#include <span>
#include <utility>

namespace Design {

namespace {

// Into TypeRoles::pins_: a pin of a type.
using TypePinId = Base::Index<struct TypePinTag>;

class TypeRoles {
public:
    explicit TypeRoles(const RoutedDesign& design)
        : design_(design), numbers_(design.pins.size()), edges_(design.pins.size()) {
        for (const Check& check : design.checks)
            take(check);
        for (const PulseCheck& check : design.pulseChecks)
            if (check.period)
                pins_[numberOf(check.pin)].hasPeriod = true;
        for (const Arc& arc : design.arcs)
            if (!arc.wire)
                take(arc);
        for (const PinId pin : edges_.ids())
            if (edges_[pin] != 0)
                takeEdges(pins_[numbers_[pin]], edges_[pin]);
        findCheckedClocks();
        findOtherClocks();
    }

    // Pins of the design, of which there is an arc or a check.
    bool isClock(PinId pin) const { return numbers_[pin] != Base::none && pins_[numbers_[pin]].isClock; }
    bool isReset(const Arc& arc) const {
        const TypePin& from = pins_[numbers_[arc.from]];
        if (from.isClock)
            return false;
        const std::uint64_t way = Base::pairKey(numbers_[arc.from], numbers_[arc.to]);
        return from.isAsynchronous || from.isOneEdge() ||
               (ways_.at(way).isHalf() && claims_.contains(numbers_[arc.to]));
    }

private:
    enum Edges : std::uint8_t { rise = 1, fall = 2, any = 4 };

    struct TypePin {
        bool isAsynchronous = false; // recovery and removal check it
        bool isChecked = false;      // setup and hold do
        bool hasPeriod = false;
        bool isClock = false;
        bool hasWay = false;       // an arc to an output
        bool hasWholeWay = false;  // one to both of its edges
        bool hasOneEdge = false;   // a cell in which only one edge sets off arcs
        bool hasMoreEdges = false; // a cell in which more do
        std::vector<TypePinId> of; // what it checks, as the clock

        bool isOneEdge() const { return hasOneEdge && !hasMoreEdges; }
        bool isHalf() const { return hasWay && !hasWholeWay; }
        // As a set or a reset: checked, and it sets off an output in one direction or by one edge.
        bool isLikeReset() const {
            return isAsynchronous || (isChecked && (isOneEdge() || isHalf())) || (isHalf() && !isOneEdge());
        }
    };
    // From a pin to an output.
    struct Way {
        bool rises = false, falls = false; // the output

        bool isHalf() const { return rises != falls; }
    };

    TypePinId numberOf(PinId pin) {
        if (numbers_[pin] == Base::none) {
            const Pin& of = design_.pins[pin];
            const auto type = of.cell == Base::none ? ~std::uint32_t{0}
                                                    : static_cast<std::uint32_t>(design_.cells[of.cell].type);
            const auto [place, isNew] = numberOf_.try_emplace(
                (std::uint64_t{type} << 32) | static_cast<std::uint32_t>(of.name), pins_.next());
            if (isNew)
                pins_.emplace_back();
            numbers_[pin] = place->second;
        }
        return numbers_[pin];
    }

    void take(const Check& check) {
        const TypePinId data = numberOf(check.data), clock = numberOf(check.clock);
        (check.asynchronous ? pins_[data].isAsynchronous : pins_[data].isChecked) = true;
        if (checks_.try_emplace(Base::pairKey(clock, data), true).second)
            pins_[clock].of.push_back(data);
    }

    void take(const Arc& arc) {
        const TypePinId from = numberOf(arc.from), to = numberOf(arc.to);
        edges_[arc.from] |= arc.fromEdge == Transition::rise   ? rise
                            : arc.fromEdge == Transition::fall ? fall
                                                               : any;
        pins_[from].hasWay = true;
        Way& way = ways_.try_emplace(Base::pairKey(from, to)).first.value();
        way.rises |= arc.rises;
        way.falls |= arc.falls;
        pins_[from].hasWholeWay |= way.rises && way.falls;
    }

    // The clock of one cell may be that of another one inverted.
    static void takeEdges(TypePin& pin, std::uint8_t edges) {
        const bool isOne = edges == rise || edges == fall;
        pin.hasOneEdge |= isOne;
        pin.hasMoreEdges |= !isOne && edges != any;
    }

    bool checks(TypePinId clock, TypePinId data) const {
        return checks_.contains(Base::pairKey(clock, data));
    }

    // Whether another pin checks this one and all that this one checks, as a clock does with a reset and what
    // is checked against the reset. Two clocks that check each other are none of it.
    bool isUnderAnother(TypePinId pin) const {
        const std::span<const TypePinId> own = pins_[pin].of;
        return std::ranges::any_of(checkedBy_.at(pin), [&](TypePinId other) {
            return other != pin && !checks(pin, other) &&
                   std::ranges::all_of(own, [&](TypePinId data) { return checks(other, data); });
        });
    }

    void findCheckedClocks() {
        for (const auto& [pair, unused] : checks_)
            checkedBy_[Base::secondOf<TypePinId>(pair)].push_back(Base::firstOf<TypePinId>(pair));
        for (const TypePinId pin : pins_.ids()) {
            if (pins_[pin].of.empty() ||
                (!pins_[pin].hasPeriod && checkedBy_.contains(pin) && isUnderAnother(pin)))
                continue;
            const bool resetsAlone =
                std::ranges::all_of(pins_[pin].of, [&](TypePinId data) { return pins_[data].isLikeReset(); });
            pins_[pin].isClock = !(pins_[pin].isLikeReset() && resetsAlone);
        }
    }

    // How good a claim a pin has to be the clock of an output; 0: none.
    int claimOf(const TypePin& pin, const Way& way) const {
        if (pin.isClock)
            return 8;
        if (!pin.isOneEdge() || pin.isAsynchronous)
            return 0;
        return (pin.hasPeriod ? 6 : way.isHalf() ? 2 : 4) - (pin.isChecked ? 1 : 0);
    }

    void findOtherClocks() {
        for (const auto& [pair, way] : ways_)
            if (const int claim = claimOf(pins_[Base::firstOf<TypePinId>(pair)], way); claim != 0) {
                int& best = claims_.try_emplace(Base::secondOf<TypePinId>(pair), 0).first.value();
                best = std::max(best, claim);
            }
        std::vector<TypePinId> found;
        for (const auto& [pair, way] : ways_)
            if (const int claim = claimOf(pins_[Base::firstOf<TypePinId>(pair)], way);
                claim != 0 && claim == claims_.at(Base::secondOf<TypePinId>(pair)))
                found.push_back(Base::firstOf<TypePinId>(pair));
        for (const TypePinId pin : found)
            pins_[pin].isClock = true;
    }

    const RoutedDesign& design_;
    Base::IndexVector<PinId, TypePinId> numbers_;
    Base::IndexVector<PinId, std::uint8_t> edges_;     // those that set off the pin's arcs
    Base::HashMap<std::uint64_t, TypePinId> numberOf_; // by type and name
    Base::IndexVector<TypePinId, TypePin> pins_;
    Base::HashMap<std::uint64_t, bool> checks_; // clock and data
    Base::HashMap<std::uint64_t, Way> ways_;    // from and to
    Base::HashMap<TypePinId, std::vector<TypePinId>> checkedBy_;
    Base::HashMap<TypePinId, int> claims_; // the best one, by output
};

} // namespace

void RoutedDesign::classify() {
    const TypeRoles types(*this);
    roles_.assign(pins.size(), 0);
    registers_.assign(cells.size(), false);
    for (const Check& check : checks) {
        if (!types.isClock(check.clock))
            continue;
        roles_[check.clock] |= clockPin;
        roles_[check.data] |= dataPin;
        if (!isPortOfTop(check.clock)) // an SDF has checks in cells only
            registers_[pins[check.clock].cell] = true;
    }
    for (Arc& arc : arcs) {
        if (arc.wire || isPortOfTop(arc.from) || isPortOfTop(arc.to))
            continue;
        if (types.isClock(arc.from)) {
            roles_[arc.from] |= clockPin;
            roles_[arc.to] |= registerOutput;
            registers_[pins[arc.to].cell] = true;
        }
        arc.reset = types.isReset(arc);
    }
}

} // namespace Design
