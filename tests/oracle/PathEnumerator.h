// Every timed path of a design, one by one: from every start point, along every chain of active arcs, to
// every end point, for every pair of clock edges that launch and capture there; with the slacks that follow
// from the meaning of a path.
//
//   data, late     launch clock late (or the port's external delay) + maximum delays + setup value
//   data, early    launch clock early (or the port's external delay) + minimum delays - hold value
//   setup slack    demanded separation + capture clock early - external delay - data, late
//   hold slack     data, early - (demanded hold point + capture clock late - external delay)
//
// It knows nothing of timing maps, classes on arcs, subdomains or pruning. It costs a step for every arc of
// every path, and is meant for small designs without loops in which at most one exception holds for a path,
// and exceptions open at start points and close at end points. Clocks do not pass registers, ports or other
// clock sources.
#pragma once

#include "Pelko/Model.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace oracle {

// A time; nothing where it is not known, or not demanded.
using Time = std::optional<std::int64_t>;

// Which clock edge launches, and which captures. Null: a port side without a clock.
struct EdgePair {
    Pelko::Pole* launchRoot = nullptr;
    Pelko::ClockMode::Code launchMode = Pelko::ClockMode::None;
    Pelko::Pole* latchRoot = nullptr;
    Pelko::ClockMode::Code latchMode = Pelko::ClockMode::None;

    bool operator<(const EdgePair& other) const;
};

// Relative to the launching edge: when data must be there, and from when on it may change.
struct Demand {
    Time setup;
    Time hold;
};

// The nearest edges of two clocks that have a waveform, looked for one by one over the time after which both
// repeat: the smallest time from a launching edge to the next capturing one, and where the capturing edge
// before that lies at the latest.
Demand demandOfWaveforms(const EdgePair& edges);

struct EnumeratedPath {
    EdgePair clocks;
    std::vector<Pelko::Edge*> edges;
    // The exception that holds for the path, or null. A false path has no slack.
    Pelko::CPath* exception = nullptr;
    // The data's arrival, relative to the capturing clock's.
    Time late;
    Time early;
    Time setupSlack;
    Time holdSlack;

    bool isFalse() const { return dynamic_cast<Pelko::FPath*>(exception) != nullptr; }
};

class PathEnumerator {
public:
    using DemandOf = std::function<Demand(const EdgePair&)>;

    // Enumerates the paths of Pelko::cell under the constraints of Pelko::analyzer. Where no setup is
    // demanded between two edges, their slowest path counts as just in time.
    explicit PathEnumerator(DemandOf demandOf);

    const std::vector<EnumeratedPath>& getPaths() const { return paths_; }

private:
    // One clock edge at a start or an end point: its root, its mode, when it comes, and what happens outside
    // the design.
    struct Event {
        Pelko::Pole* root = nullptr;
        Pelko::ClockMode::Code mode = Pelko::ClockMode::None;
        Time early = 0;
        Time late = 0;
        Time outsideMinimum = 0;
        Time outsideMaximum = 0;
    };
    struct Interval {
        std::int64_t early;
        std::int64_t late;
    };
    using Roots = std::map<Pelko::Pole*, Interval, Pelko::Object::StampLess>;

    void walkClock(Pelko::Pole* root, Pelko::Pole* pole, const Interval& arrival);
    std::vector<Event> launchesOf(Pelko::Pole* pole) const;
    std::vector<Event> capturesOf(Pelko::Pole* pole) const;
    void walkData(Pelko::Pole* start, Pelko::Pole* pole);
    void add(const Event& launch, const Event& capture);
    void relateToSlowest();

    DemandOf demandOf_;
    std::map<Pelko::Pole*, Roots, Pelko::Object::StampLess> clocks_; // at the clock poles
    std::vector<Pelko::Edge*> chain_;                                // of the walk
    std::vector<EnumeratedPath> paths_;
};

} // namespace oracle
