// The clocks as the analysis needs them: waveforms in units, the master of every generated clock, how far
// each clock reaches, and the latencies of both kinds.
//
// A clock starts at its targets, runs along through arcs, and ends where another clock starts and at register
// clock pins. Its edges arrive as they leave. A generated clock's insertion delay is that of its master, from
// its root through any arcs to the target, registers included.
#pragma once

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
    Time period = 0; // 0: without one
    Time rise = 0, fall = 0;
    bool propagated = true;
    std::optional<std::uint32_t> master;
    std::vector<std::uint32_t> targets; // nodes; none: a virtual clock
    std::vector<Latency> insertion;     // by target
    Latency source;                     // at the root, before the insertion delay
    Latency network;                    // of an ideal clock
    Time setupUncertainty = 0, holdUncertainty = 0;
    std::vector<std::uint32_t> reached; // nodes, targets included, each once

    // The time of an edge within the first period.
    Time edge(bool rising) const { return rising ? rise : fall; }
    Time high() const { return fall - rise; }
    // What a port's reference edge is late by: source latency, insertion delay, network latency.
    Latency atPorts(bool withSource, bool withNetwork) const;
};

struct ClockOptions {
    bool propagated = true; // where the constraints do not say
    int scale = -12;
};

class Clocks {
public:
    // Index for index the clocks of the constraints. BadInput: a value that does not fit, a generated clock
    // without a master.
    Clocks(const Design::RoutedDesign& design, const Network& network, const Design::Constraints& constraints,
           const ClockOptions& options, Base::Diagnostics& diagnostics);

    const std::vector<Clock>& all() const { return clocks_; }
    const Clock& operator[](std::uint32_t clock) const { return clocks_[clock]; }
    std::uint32_t size() const { return static_cast<std::uint32_t>(clocks_.size()); }

    // Taken off a setup requirement and added to a hold one: what was said of the pair of clocks, else of the
    // pin that captures, else of the clock that captures.
    Time uncertainty(std::uint32_t launch, std::uint32_t capture, std::uint32_t pin, bool setup) const;

private:
    void take(const Design::Clock& from, const Design::Constraints& constraints, const ClockOptions& options);
    void checkShape(const Clock& clock, const Design::Clock& from) const;
    // `seenBy`: by node, the clock that it was last reached by.
    void flood(std::uint32_t clock, std::vector<std::uint32_t>& seenBy);
    void resolveGenerated(const Design::Constraints& constraints);
    // By a node that some generated clock has as its source: the clocks that reach it.
    using Reaching = std::unordered_map<std::uint32_t, std::vector<std::uint32_t>>;
    Reaching clocksAtSources(const Design::Constraints& constraints) const;
    std::uint32_t masterOf(std::uint32_t clock, const Design::Constraints& constraints,
                           const Reaching& reaching) const;
    void shapeGenerated(Clock& clock, const Clock& master, const Design::GeneratedClock& generated,
                        Base::Place place);
    void insert(Clock& clock, const Clock& master, std::uint32_t source) const;
    Time units(const Base::Decimal& time, const Base::Place& place) const;

    const Design::RoutedDesign& design_;
    const Network& network_;
    const int scale_;
    Base::Diagnostics& diagnostics_;
    std::vector<Clock> clocks_;
    struct Uncertainty {
        std::optional<Time> setup, hold;
    };
    static std::uint64_t pairOf(std::uint32_t launch, std::uint32_t capture) {
        return (std::uint64_t{launch} << 32) | capture;
    }
    std::unordered_map<std::uint64_t, Uncertainty> pairs_;
    std::unordered_map<std::uint32_t, Uncertainty> pins_;
};

// Every time of a constraint in units. BadInput where it does not fit the engine's integers.
Time toUnits(const Base::Decimal& nanoseconds, int scale, const Base::Place& place);

} // namespace Model
