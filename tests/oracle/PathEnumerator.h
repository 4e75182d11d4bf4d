// Lists every timed path of a design: from every start point, along every chain of active arcs, to every end
// point, for every pair of clock edges that launch and capture there; with the slacks that follow from the
// meaning of a path.
//
//   data, late     launch clock late (or the port's external delay) + maximum delays + setup value
//   data, early    launch clock early (or the port's external delay) + minimum delays - hold value
//   setup slack    demanded separation + capture clock early - external delay - data, late
//   hold slack     data, early - (demanded hold point + capture clock late - external delay)
//
// It has no timing maps, no classes on arcs, no subdomains and no pruning. It costs one step per arc of each
// path. It is meant for small designs without loops, in which at most one exception holds for a path, and
// exceptions open at start points and close at end points. Clocks do not pass registers, ports or other clock
// sources.
#pragma once

#include "Pelko/Model.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace oracle {

// A time; no value if it is not known or not demanded.
using Time = std::optional<std::int64_t>;

// The clock edge that launches and the one that captures. Null for a port side without a clock.
struct EdgePair {
    Pelko::Pole* launchRoot = nullptr;
    Pelko::ClockMode::Code launchMode = Pelko::ClockMode::None;
    Pelko::Pole* latchRoot = nullptr;
    Pelko::ClockMode::Code latchMode = Pelko::ClockMode::None;

    bool operator<(const EdgePair& other) const;
};

// Relative to the launching edge: when data must have arrived, and from when on it may change.
struct Demand {
    Time setup;
    Time hold;
};

// The nearest edges of two clocks that have a waveform. All edges are compared over the time after which both
// clocks repeat: the result holds the smallest time from a launching edge to the next capturing one, and the
// latest time of the capturing edge before that.
Demand demandOfWaveforms(const EdgePair& edges);

struct EnumeratedPath {
    EdgePair clocks;
    std::vector<Pelko::Edge*> edges;
    // The exception that holds for the path, or null. The path has no slack if that is a false path.
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

    // Enumerates the paths of Pelko::cell under the constraints of Pelko::analyzer. If no setup is demanded
    // between two edges, their slowest path has a slack of zero.
    explicit PathEnumerator(DemandOf demandOf);

    const std::vector<EnumeratedPath>& getPaths() const { return paths_; }

private:
    // One clock edge at a start or an end point: its root, its mode, its time, and the delay outside the
    // design.
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
    std::map<Pelko::Pole*, Roots, Pelko::Object::StampLess> clocks_; // by clock pole
    std::vector<Pelko::Edge*> chain_;                                // the arcs of the current walk
    std::vector<EnumeratedPath> paths_;
};

} // namespace oracle
