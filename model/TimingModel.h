// The timing graph in the host database: the poles and arcs that the engine walks, made of a network and its
// clocks.
//
// There are two planes. The clock plane has the pins that propagated clocks reach, the data plane those that
// lead to an end point. A pin in both has a pole in each, so that data never enters the clock network and a
// clock that is used as data starts anew at its source. Every clock is a root of its own:
//
//   root ─► target ─► … ─► clock pin ─► working edge ─► output ─► … ─► data pin ─► check
//   root ─► working edge                 (an ideal clock: its network latency on one arc)
//   root ─► source edge ─► target        (a clock used as data: both edges)
//   port entry ─► port                   (one pole for each reference edge of a delay)
//
// Poles are made in the order of the network, sources first. Pins that are needed neither for a clock nor for
// an end point have no pole.
#pragma once

#include "Pelko/Model.h"
#include "model/Clocks.h"

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace Model {

// The start of data paths: a register's working edge, a port's reference edge, an edge at a clock's source.
struct Start {
    enum class Kind : std::uint8_t { reg, port, clockSource } kind = Kind::reg;
    PinId pin = Base::none; // clock pin, port, or the source
    bool rise = true;
    const Design::PortDelay* delay = nullptr; // of a port; null if it has no delay
    Pelko::Pole* pole = nullptr;
};

// The ports that a maximum or minimum delay may time although they have no delay, or one without a clock.
struct TimedPorts {
    std::unordered_set<PinId> inputs, outputs; // bidirectional ports may be in both
};

// The end of data paths: a check, or a port's reference edge.
struct End {
    PinId pin = Base::none; // data pin or port
    PinId clockPin = Base::none;
    bool rise = true;
    std::optional<std::int32_t> setup, hold;  // of a check
    const Design::PortDelay* delay = nullptr; // of a port; null if it has no delay
    Pelko::Pole* pole = nullptr;
    bool isPort() const { return clockPin == Base::none; }
};

class TimingModel {
public:
    // The ports of timedPorts get poles even if no clock refers to them.
    TimingModel(const Design::RoutedDesign& design, const Network& network, const Clocks& clocks,
                const Design::Constraints& constraints, const TimedPorts& timedPorts, int scale,
                Base::Diagnostics& diagnostics);

    Pelko::Model& host() { return host_; }
    const Base::IndexVector<StartId, Start>& starts() const { return starts_; }
    const Base::IndexVector<EndId, End>& ends() const { return ends_; }
    // Returns the start or end that the pole belongs to; null if there is none.
    const Start* startAt(const Pelko::Pole* pole) const;
    const End* endAt(const Pelko::Pole* pole) const;
    Pelko::Pole* root(ClockId clock) const { return roots_[clock]; }
    // Returns the latency of a port's clock at the port; zero if the port has no delay, or one without a
    // clock.
    Latency latencyAt(const Design::PortDelay* delay) const;
    // Returns none for a null pole and for one that is not a root.
    ClockId clockOf(const Pelko::Pole* root) const;
    // Returns the node that a pole stands for; none for roots and other auxiliary poles.
    NodeId nodeOf(const Pelko::Pole* pole) const { return nodeOfPole_[pole->getIndex()]; }
    Pelko::Pole* dataPole(NodeId node) const { return data_[node]; }
    // The clocks that reach a clock pin, or a pin whose pulses are checked.
    const std::vector<ClockId>& clocksAt(PinId pin) const;
    // The clock pins that no clock reaches.
    const std::vector<PinId>& unclocked() const { return unclocked_; }

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
    void makeClockPin(PinId pin, ClockPin& clockPin);
    Pelko::Pole* makeEdge(PinId pin, bool rising, Pelko::Pole* behind);
    void makeInputs();
    void makeInput(const Design::PortDelay* delay, PinId pin);
    void makeSourceEdges();
    void makeEntry(const Start& start, Pelko::Pole* port);
    void makeDataPlane();
    void makeLaunches(PinId pin, const ClockPin& clockPin);
    void makeChecks();
    void makeOutputs();
    void makeOutput(const Design::PortDelay* delay, PinId pin);
    void separateGroups();
    Pelko::Instance* instanceOf(CellId cell);
    Pelko::Pole* note(Pelko::Pole* pole, NodeId node);
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
    std::unordered_map<PinId, ClockPin> clockPins_; // those that a clock reaches
    std::vector<PinId> clockPinOrder_, unclocked_;
    std::unordered_map<PinId, std::vector<ClockId>> clocksAt_;
    std::vector<const Design::Check*> checks_; // that are timed
    Base::IndexVector<NodeId, bool> needsData_, needsClock_;
    Base::IndexVector<ClockId, Pelko::Pole*> roots_;
    Base::IndexVector<NodeId, Pelko::Pole*> clock_, data_; // of each plane
    std::unordered_map<CellId, Pelko::Instance*> instances_;
    Base::IndexVector<StartId, Start> starts_;
    Base::IndexVector<EndId, End> ends_;
    std::vector<NodeId> nodeOfPole_; // these three by the index of a pole
    std::vector<StartId> startOfPole_;
    std::vector<EndId> endOfPole_;
    std::unordered_map<const Pelko::Pole*, ClockId> clockOfRoot_;
};

} // namespace Model
