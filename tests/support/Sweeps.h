// Sweeps for unit tests, and their timing maps as tables of integers.
#pragma once

#include "tests/support/Builder.h"

#include "Vorlen/Sweep.h"

namespace Support {

struct DestroySweep {
    void operator()(Vorlen::Sweep* sweep) const { sweep->destroy(); }
};
using SweepPointer = std::unique_ptr<Vorlen::Sweep, DestroySweep>;

// A timing map in integers: {{classes, {minimum, maximum}}, ...}; and those of poles by name.
using Entries = std::map<unsigned long, std::pair<int, int>>;
using Table = std::map<std::string, Entries>;

inline Vorlen::TimingMap mapOf(const Entries& entries) {
    Vorlen::TimingMap map;
    for (const auto& [key, bounds] : entries)
        map[key] = Vorlen::Timing(Pelko::Delay(bounds.first), Pelko::Delay(bounds.second));
    return map;
}

inline Entries entriesOf(const Vorlen::TimingMap& map) {
    Entries entries;
    for (const auto& [key, timing] : map)
        entries[key] = {int(timing.getMinimumDelay()), int(timing.getMaximumDelay())};
    return entries;
}

inline Table tableOf(const Vorlen::PoleTimingMap& maps) {
    Table table;
    for (const auto& [pole, map] : maps)
        table[nameOf(pole)] = entriesOf(map);
    return table;
}

// What a look-up finds, over all poles.
inline Table tableOf(const Vorlen::Sweep& sweep,
                     bool (Vorlen::Sweep::*lookUp)(Pelko::Pole*, Vorlen::TimingMap&) const) {
    Table table;
    for (Pelko::Pole* pole : Pelko::cell->getPoles())
        if (Vorlen::TimingMap map; (sweep.*lookUp)(pole, map))
            table[nameOf(pole)] = entriesOf(map);
    return table;
}

// The classes that start, or end, at a pole.
inline void open(Pelko::Pole* pole, unsigned long classes) {
    Pelko::CPath::create({{pole}, {}})->setPseudoMask(Pelko::PseudoMask(classes));
}
inline void close(Pelko::Pole* pole, unsigned long classes) {
    Pelko::CPath::create({{}, {pole}})->setPseudoMask(Pelko::PseudoMask(classes));
}

// The subdomain of one clock, or of ports where the roots are null. A row builds its network and captures the
// leaves.
struct SubdomainBench {
    explicit SubdomainBench(bool fromClock = true, bool toClock = true)
        : subdomain(design.addSubdomain(fromClock ? clk : nullptr, toClock ? clk : nullptr)) {}

    Pelko::Pole* add(const std::string& name, Pelko::Pole* source, int minDelay, int maxDelay) {
        Pelko::Pole* pole = design.addPole(name);
        design.connect(source, pole, minDelay, maxDelay);
        return pole;
    }
    Pelko::Pole* addInput(const std::string& name) {
        Pelko::Pole* pole = design.addInput(name);
        subdomain->captureLaunch(pole);
        return pole;
    }
    Pelko::Pole* addOutput(const std::string& name, Pelko::Pole* source, int minDelay, int maxDelay) {
        Pelko::Pole* pole = design.addOutput(name);
        design.connect(source, pole, minDelay, maxDelay);
        subdomain->captureLatch(pole);
        return pole;
    }
    Pelko::Pole* addOutput(const std::string& name) {
        Pelko::Pole* pole = design.addOutput(name);
        subdomain->captureLatch(pole);
        return pole;
    }
    // A clock pin, later than `source` by this delay.
    Pelko::Pole* addPin(const std::string& name, Pelko::Pole* source, int minDelay, int maxDelay) {
        Pelko::Pole* pin = design.addClock(name);
        design.connect(source, pin, minDelay, maxDelay);
        return pin;
    }
    // A clock pin, later than the clock by this delay.
    Pelko::Pole* addPin(const std::string& name, int minDelay = 0, int maxDelay = 0) {
        return addPin(name, clk, minDelay, maxDelay);
    }
    // A clock pin that launches.
    Pelko::Pole* addLaunch(const std::string& name, int minDelay = 0, int maxDelay = 0) {
        Pelko::Pole* pin = addPin(name, minDelay, maxDelay);
        subdomain->captureLaunch(pin);
        return pin;
    }
    // A clock pin that latches.
    Pelko::Pole* addLatch(const std::string& name, int minDelay = 0, int maxDelay = 0) {
        Pelko::Pole* pin = addPin(name, minDelay, maxDelay);
        subdomain->captureLatch(pin);
        return pin;
    }

    void launch(Pelko::Pole* leaf) { subdomain->captureLaunch(leaf); }
    void latch(Pelko::Pole* leaf) { subdomain->captureLatch(leaf); }

    Builder design;
    Pelko::Pole* clk = design.addClockSource("clk");
    Pelko::Subdomain* subdomain;
};

} // namespace Support
