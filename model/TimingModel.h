// The timing graph in the host database: the poles and arcs that the engine walks, made of a network and its
// clocks.
//
// There are two planes. In the clock plane are the pins that propagated clocks reach; in the data plane those
// that lead to an end point. A pin in both has a pole in each, so that data never enters the clock network
// and a clock that is used as data starts anew at its source. Every clock is a root of its own:
//
//   root ─► target ─► … ─► clock pin ─► working edge ─► output ─► … ─► data pin ─► check
//   root ─► working edge                 (an ideal clock: its network latency on one arc)
//   root ─► source edge ─► target        (a clock used as data: both edges)
//   port entry ─► port                   (one pole for each reference edge of a delay)
//
// Poles are made sources first. A pin that no clock's path and no end point needs has no pole.
#pragma once

#include "Pelko/Model.h"
#include "model/Clocks.h"

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace Model {

// Where data paths start: a register's working edge, a port's reference edge, an edge at a clock's source.
struct Start {
    enum class Kind : std::uint8_t { reg, port, clockSource } kind = Kind::reg;
    std::uint32_t pin = Base::none; // clock pin, port, or the source
    bool rise = true;
    const Design::PortDelay* delay = nullptr; // of a port; null: undelayed
    Pelko::Pole* pole = nullptr;
};

// The ports that a maximum or minimum delay may time although they have no delay, or one without a clock.
struct TimedPorts {
    std::unordered_set<std::uint32_t> inputs, outputs; // ports that go both ways may be in both
};

// Where data paths end: a check, or a port's reference edge.
struct End {
    std::uint32_t pin = Base::none; // data pin or port
    std::uint32_t clockPin = Base::none;
    bool rise = true;
    std::optional<std::int32_t> setup, hold;  // of a check
    const Design::PortDelay* delay = nullptr; // of a port; null: undelayed
    Pelko::Pole* pole = nullptr;
    bool isPort() const { return clockPin == Base::none; }
};

class TimingModel {
public:
    // The ports that some exception times get poles too, if no clock refers to them.
    TimingModel(const Design::RoutedDesign& design, const Network& network, const Clocks& clocks,
                const Design::Constraints& constraints, const TimedPorts& timedPorts, int scale,
                Base::Diagnostics& diagnostics);

    Pelko::Model& host() { return host_; }
    const std::vector<Start>& starts() const { return starts_; }
    const std::vector<End>& ends() const { return ends_; }
    // By the pole of a start or an end; null where it is none.
    const Start* startAt(const Pelko::Pole* pole) const;
    const End* endAt(const Pelko::Pole* pole) const;
    Pelko::Pole* root(std::uint32_t clock) const { return roots_[clock]; }
    // What a port's clock is late by at the port; nothing if the port has no delay, or one without a clock.
    Latency latencyAt(const Design::PortDelay* delay) const;
    // None for a null pole and for one that is no root.
    std::optional<std::uint32_t> clockOf(const Pelko::Pole* root) const;
    // The node that a pole stands for; none for roots and other auxiliary poles.
    std::uint32_t nodeOf(const Pelko::Pole* pole) const { return nodeOfPole_[pole->getIndex()]; }
    Pelko::Pole* dataPole(std::uint32_t node) const { return data_[node]; }
    // The clocks that reach a clock pin, or a pin whose pulses are checked; the clock pins that none reaches.
    const std::vector<std::uint32_t>& clocksAt(std::uint32_t pin) const;
    const std::vector<std::uint32_t>& unclocked() const { return unclocked_; }

private:
    struct Edges {
        bool rise = false, fall = false;

        void add(Design::Transition edge) { (edge == Design::Transition::fall ? fall : rise) = true; }
        bool any() const { return rise || fall; }
    };
    // A register's clock pin: the edges of its outputs and of its checks, and the poles of the edges.
    struct ClockPin {
        Edges outputs, checks;
        Pelko::Pole *rise = nullptr, *fall = nullptr;

        Edges launchEdges() const;
        Edges checkEdges() const;
        Pelko::Pole* pole(bool rising) const { return rising ? rise : fall; }
    };

    void checkRange() const;
    void findClockPins();
    void findEnds();
    void pruneData();
    void pruneClocks();
    void makeRoots();
    void makeClockPlane();
    void makeClockPin(std::uint32_t pin, ClockPin& clockPin);
    Pelko::Pole* makeEdge(std::uint32_t pin, bool rising, Pelko::Pole* behind);
    void makeInputs();
    void makeInput(const Design::PortDelay* delay, std::uint32_t pin);
    void makeSourceEdges();
    void makeEntry(const Start& start, Pelko::Pole* port);
    void makeDataPlane();
    void makeLaunches(std::uint32_t pin, const ClockPin& clockPin);
    void makeChecks();
    void makeOutputs();
    void makeOutput(const Design::PortDelay* delay, std::uint32_t pin);
    void separateGroups();
    Pelko::Instance* instanceOf(std::uint32_t cell);
    Pelko::Pole* note(Pelko::Pole* pole, std::uint32_t node);
    void connect(Pelko::Pole* from, Pelko::Pole* to, const Design::Interval& delay);
    Pelko::Delay bound(const std::optional<Base::Decimal>& value, const Design::PortDelay& delay,
                       Time latency) const;
    bool isTimed(const Design::PortDelay& delay) const;

    const Design::RoutedDesign& design_;
    const Network& network_;
    const Clocks& clocks_;
    const Design::Constraints& constraints_;
    const TimedPorts& timedPorts_;
    const int scale_;
    Base::Diagnostics& diagnostics_;

    Pelko::Model host_;
    std::unordered_map<std::uint32_t, ClockPin> clockPins_; // those that a clock reaches
    std::vector<std::uint32_t> clockPinOrder_, unclocked_;
    std::unordered_map<std::uint32_t, std::vector<std::uint32_t>> clocksAt_;
    std::vector<const Design::Check*> checks_; // that are timed
    std::vector<bool> needsData_, needsClock_;
    std::vector<Pelko::Pole*> roots_, clock_, data_; // by clock | by node
    std::vector<std::uint32_t> nodeOfPole_;
    std::unordered_map<std::uint32_t, Pelko::Instance*> instances_;
    std::vector<Start> starts_;
    std::vector<End> ends_;
    std::vector<std::uint32_t> startOfPole_, endOfPole_;
    std::unordered_map<const Pelko::Pole*, std::uint32_t> clockOfRoot_;
};

} // namespace Model
