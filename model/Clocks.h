// The clocks as the analysis needs them: waveforms in units, the master of every generated clock, how far
// each clock reaches, and the latencies of both kinds.
//
// A clock starts at its targets and follows through arcs up to the sources of other clocks and to the clock
// pins of registers. Its edges keep their direction on the way. The insertion delay of a generated clock is
// that of its master, from the root through any arcs to the target, including those through registers.
#pragma once

#include "base/Side.h"
#include "model/Network.h"
#include "model/Phase.h"

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Model {

struct Latency {
    Time early = 0, late = 0;

    bool operator==(const Latency&) const = default;
};

struct Clock {
    std::string name;
    Base::Place place;
    bool removed = false;
    Time period = 0; // 0 if it has none
    Time rise = 0, fall = 0;
    bool propagated = true;
    ClockId master = Base::none;    // of a generated clock
    std::vector<NodeId> targets;    // empty for a virtual clock
    std::vector<Latency> insertion; // by target
    Latency source;                 // at the root, before the insertion delay
    Latency network;                // of an ideal clock
    Base::PerSide<Time> uncertainty;
    std::vector<NodeId> reached; // targets included, each once

    // The time of an edge within the first period.
    Time edge(bool rising) const { return rising ? rise : fall; }
    Time high() const { return fall - rise; }
    // Returns how late a port's reference edge is: source latency, insertion delay, network latency.
    Latency atPorts(bool withSource, bool withNetwork) const;
};

struct ClockOptions {
    bool propagated = true; // unless the constraints state it
    int scale = -12;
};

class Clocks {
public:
    // Has the indices of Constraints::clocks. Throws BadInput for a value that does not fit the engine's
    // integers, and for a generated clock without a master.
    Clocks(const Design::RoutedDesign& design, const Network& network, const Design::Constraints& constraints,
           const ClockOptions& options, Base::Diagnostics& diagnostics);

    const Base::IndexVector<ClockId, Clock>& all() const { return clocks_; }
    const Clock& operator[](ClockId clock) const { return clocks_[clock]; }
    std::size_t size() const { return clocks_.size(); }
    auto ids() const { return clocks_.ids(); }

    // Returns what is subtracted from a setup requirement and added to a hold requirement: the uncertainty of
    // the pair of clocks, else that of the capturing pin, else that of the capturing clock.
    Time uncertainty(ClockId launch, ClockId capture, PinId pin, Base::Side side) const;

private:
    void take(const Design::Clock& from, const Design::Constraints& constraints, const ClockOptions& options);
    void checkShape(const Clock& clock, const Design::Clock& from) const;
    // `seenBy`: the clock that each node was last reached by.
    void flood(ClockId clock, Base::IndexVector<NodeId, ClockId>& seenBy);
    void resolveGenerated(const Design::Constraints& constraints);
    // The clocks that reach each node that is the source of a generated clock.
    using Reaching = std::unordered_map<NodeId, std::vector<ClockId>>;
    Reaching clocksAtSources(const Design::Constraints& constraints) const;
    ClockId masterOf(ClockId clock, const Design::Constraints& constraints, const Reaching& reaching) const;
    void shapeGenerated(Clock& clock, const Clock& master, const Design::GeneratedClock& generated,
                        Base::Place place);
    void insert(Clock& clock, const Clock& master, PinId source) const;
    Time units(const Base::Decimal& time, const Base::Place& place) const;

    const Design::RoutedDesign& design_;
    const Network& network_;
    const int scale_;
    Base::Diagnostics& diagnostics_;
    Base::IndexVector<ClockId, Clock> clocks_;
    using Uncertainty = Base::PerSide<std::optional<Time>>;
    std::unordered_map<std::uint64_t, Uncertainty> pairs_; // launch and capture clock
    std::unordered_map<PinId, Uncertainty> pins_;
};

// Converts a time of a constraint to units. Throws BadInput if it does not fit the engine's integers.
Time toUnits(const Base::Decimal& nanoseconds, int scale, const Base::Place& place);

} // namespace Model
