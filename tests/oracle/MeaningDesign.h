// A random design whose slacks can be computed without knowing how an engine works: one or two clocks with
// their trees, registers on one edge or both, ports with and without constraints, layered logic without
// loops. Every relation between two different clocks is fixed as soon as its subdomain exists. If there are
// exceptions, all relations are fixed.
//
// If a clock is data too, no register is right behind what data uses: the clock's root would launch in
// addition to its registers, and what it launches would be followed through their clock pins. Poles are
// created in the direction of the flow. Delays and periods are small, so that ties are frequent.
#pragma once

#include "PathEnumerator.h"

#include <random>
#include <set>
#include <string>

namespace oracle {

class MeaningDesign : private Pelko::ObjectListener {
public:
    explicit MeaningDesign(std::uint64_t seed);
    MeaningDesign(const MeaningDesign&) = delete;
    MeaningDesign& operator=(const MeaningDesign&) = delete;
    ~MeaningDesign() override;

    // What the relations of the subdomains made so far demand of a pair of edges.
    Demand getDemand(const EdgePair& edges) const;
    // The pairs of edges that have a subdomain.
    std::set<EdgePair> getSubdomains() const;
    // False if the driver's own hold relation between the two edges of one clock is in force.
    bool isHoldMeaningful() const { return holdMeaningful_; }
    bool hasExceptions() const { return exceptions_; }
    // Whether an exception names a gate as a through point.
    bool hasBridges() const { return bridged_; }

    // The arcs with their delays, the clocks, constraints, exceptions and settings.
    std::string getText() const;

    static EdgePair clocksOf(const Pelko::Subdomain* subdomain);

private:
    void onCreated(Pelko::Object* object) override;

    int draw(int low, int high);
    bool chance(int percentage) { return draw(1, 100) <= percentage; }
    Pelko::Pole* pick(const std::vector<Pelko::Pole*>& poles);
    void join(const std::vector<Pelko::Pole*>& sources, Pelko::Pole* target, int count);
    Pelko::Edge* arc(Pelko::Pole* source, Pelko::Pole* target);
    std::string name(const std::string& kind);

    void makeClocks();
    void makeRegisters();
    Pelko::Pole* makeClockPin(Pelko::ClockMode::Code mode);
    void makeInputs();
    void makeLogic();
    void makeEnds();
    void makeOutputs();
    void makeExceptions();
    Pelko::IOConstraint makeConstraint(bool input);

    Pelko::Model model_{"meaning"};
    std::mt19937_64 random_;
    bool exceptions_;
    bool bridged_;
    bool fixesAll_;  // includes ports without a clock
    bool fixesSame_; // includes pairs with the same clock on both sides
    bool holdMeaningful_ = true;
    unsigned count_ = 0;
    std::vector<Pelko::Pole*> sources_;
    std::vector<Pelko::Pole*> tapped_;     // sources that data may use
    std::vector<Pelko::Pole*> clockPoles_; // sources, or their trunks, and the buffers behind them
    std::vector<std::vector<Pelko::Pole*>> registers_; // the clock pins of each
    std::vector<Pelko::Pole*> starts_;                 // start points of exceptions
    std::vector<Pelko::Pole*> data_;                   // what can drive logic
    std::vector<Pelko::Pole*> gates_;
    std::vector<Pelko::Pole*> ends_;
    std::map<EdgePair, Demand> fixed_;
};

} // namespace oracle
