// Changes of a design's structs.
#pragma once

#include "Case.h"

#include <functional>
#include <string>
#include <vector>

namespace Metamorphic {

class Builder {
public:
    explicit Builder(Brute::Design& design) : d_(design) {}

    struct Register {
        int clock, data, out;
    };
    int port(const std::string& name, Brute::Direction direction);
    int cell(const std::string& name, const std::string& type);
    int pin(int cell, const std::string& name, Brute::Direction direction);
    // Connects a sink that has no driver.
    void wire(int driver, int sink, const Brute::Values& values);
    void wire(int driver, int sink, int delay);
    void gateArc(int from, int to, const Brute::Values& values);
    Register addRegister(const std::string& name); // 400 ps from clock to output, setup 100, hold 50
    // Removes a sink from its net, and the wire to it.
    void disconnect(int sink);

private:
    Brute::Design& d_;
};

// A delay without edges and without spread.
Brute::Values exactly(int picoseconds);
Brute::Values plus(Brute::Values values, int picoseconds);
// The smallest of all values.
int least(const Brute::Values& values);

// The wires that have a delay, by index into Design::arcs. Wires at pads have none.
std::vector<int> wires(const Brute::Design& design);
// Those of `wires` that lead to a data gate, a checked pin or an output port.
std::vector<int> dataWires(const Brute::Design& design);
// Those of `wires` that lead to the end of a path.
std::vector<int> endWires(const Brute::Design& design);

// Inserts a gate into a wire, with the delays before the gate, through it and behind it.
void insertGate(Brute::Design& design, int wire, const Brute::Values& before, const Brute::Values& gate,
                const Brute::Values& after);

// The clocks that exist after the last command, by index into Design::clocks.
std::vector<int> liveClocks(const Case& c);
// Whether all of them exist.
bool noneIsReplaced(const Case& c);

// Preparations, for Relation::prepare.
using Preparation = std::function<bool(Case&)>;
Preparation all(std::vector<Preparation> steps);
bool allPropagated(Case& c);         // no latency except the delays
bool withoutNetworkLatency(Case& c); // propagated, with their source latencies
bool withoutUncertainty(Case& c);
bool withoutGroups(Case& c);
bool capturesAtRises(Case& c); // registers and output ports

// Shapes.
Brute::Shape exceptions(Brute::ExceptionMode mode);
Brute::Shape withoutDelayExceptions(); // only false paths and multicycles
Brute::Shape oneClock();               // and no exceptions

} // namespace Metamorphic
