// A small random design on a fresh model: the same for the same seed, on every platform and in every build.
//
// A design has 1 to 40 poles: ports, clock sources, a clock network, registers with checks, logic, PLLs; and
// clocks, port constraints, exceptions, clock groups and settings, all drawn at random. Most designs keep the
// host's contract. A small share breaks it, so that errors are compared as well. Knobs switch features off.
//
// The number of simple paths is bounded while the design is drawn: arcs are left out until a search of every
// path from every possible start takes a few hundred steps at most.
#pragma once

#include "Pelko/Model.h"

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace oracle {

struct Knobs {
    unsigned poles = 40;        // at most; PLLs and their generators are not counted
    unsigned searchSteps = 600; // at most, over all starts
    bool loops = true;
    bool shuffledPoles = true; // poles are made in random order, not in the order of the flow
    bool inactiveArcs = true;
    bool generatedClocks = true; // data that clocks registers, clock sources inside the clock network
    bool plls = true;
    bool inversion = true;
    bool ioConstraints = true;
    bool exceptions = true;
    bool bridges = true;
    bool adjusters = true; // exceptions with slack adjustments of their own, undefined ones too
    bool throwing = true;  // adjusters that throw occasionally
    bool clockGroups = true;
    bool specials = true;       // delays that are zero, negative, huge or special
    bool earlierResults = true; // marks, slacks and weights that exist before the first run
    bool domainsOnly = true;
    bool brokenContract = true;
};

// A random sequence that depends only on its seed. If constructed from bytes, it uses one byte per number as
// long as there are any.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15U + 0x632BE59BD9B4E019U) {}
    // The bytes must outlive the dice.
    explicit Dice(std::span<const std::uint8_t> bytes) : Dice(std::uint64_t{0}) { bytes_ = bytes; }

    std::uint64_t next();
    unsigned below(std::size_t bound) { return static_cast<unsigned>(next() % bound); }
    int between(int least, int greatest) {
        return least + static_cast<int>(below(static_cast<unsigned>(greatest - least + 1)));
    }
    bool percent(unsigned chance) { return below(100) < chance; }
    bool oneIn(unsigned n) { return below(n) == 0; }

    template <class T>
    const T& pick(const std::vector<T>& from) {
        return from[below(from.size())];
    }
    template <class T>
    void shuffle(std::vector<T>& elements) {
        for (std::size_t left = elements.size(); left > 1; --left)
            std::swap(elements[left - 1], elements[below(left)]);
    }

private:
    std::uint64_t state_;
    std::span<const std::uint8_t> bytes_;
};

class RandomDesign {
public:
    // There must be no other model. Mutes the library and sets the debug mode as the design has it, until it
    // is destroyed.
    explicit RandomDesign(std::uint64_t seed, const Knobs& knobs = {}) : RandomDesign(Dice(seed), knobs) {}
    explicit RandomDesign(const Dice& dice, const Knobs& knobs = {});
    RandomDesign(const RandomDesign&) = delete;
    RandomDesign& operator=(const RandomDesign&) = delete;
    ~RandomDesign();

    // A random step of a user between two runs: nothing, other settings, other clocks, cleared results, a
    // lost domain …
    void change();
    // Writes random slacks on arcs and random arrivals in subdomains, for the phases that read them.
    void scatterResults();

    // In order of creation.
    const std::vector<Pelko::Pole*>& getPoles() const { return poles_; }
    // The poles at which clocks are defined.
    const std::vector<Pelko::Pole*>& getRoots() const { return roots_; }

private:
    // --- RandomDesign.cpp ---
    using Arcs = std::vector<std::pair<Pelko::Pole*, Pelko::Pole*>>;
    Arcs drawPolesAndArcs();

    // --- RandomDesignConstraints.cpp ---
    Pelko::Delay drawDelay(int least, int greatest);
    void drawDelays(const Arcs& arcs);
    void drawClock(Pelko::Pole* root);
    void drawClocks();
    void drawClockGroups();
    Pelko::IOConstraint drawPortConstraint();
    void drawPortConstraints();
    Pelko::CPath::PoleList drawPoles(bool starts);
    Pelko::CPath::Objects drawObjects();
    Pelko::CPath::Adjuster drawAdjuster();
    void drawException();
    void drawExceptions();
    void drawEarlierResults();
    void breakContract();
    void drawSettings();

    Pelko::Model model_;
    Dice dice_;
    Knobs knobs_;
    std::vector<Pelko::Pole*> poles_;
    std::vector<Pelko::Pole*> roots_;
    bool wildDelays_ = false;
    Pelko::CPath::Objects lastObjects_; // of the exception drawn last
};

} // namespace oracle
