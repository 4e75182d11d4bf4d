#include "Rewrite.h"

#include "Clocks.h"

#include <algorithm>

namespace Metamorphic {

namespace {

using Brute::Arc;
using Brute::Design;
using Brute::Direction;
using Brute::Values;

std::size_t at(int index) { return static_cast<std::size_t>(index); }

bool isChecked(const Design& d, int pin) {
    return std::ranges::any_of(d.checks, [&](const Brute::Check& c) { return c.data == pin; });
}

std::vector<int> wiresIf(const Design& d, const std::function<bool(const Arc&)>& wanted) {
    std::vector<int> list;
    for (std::size_t i = 0; i < d.arcs.size(); ++i)
        if (d.arcs[i].kind == Arc::Kind::wire && !d.arcs[i].values.empty() && wanted(d.arcs[i]))
            list.push_back(static_cast<int>(i));
    return list;
}

} // namespace

int Builder::port(const std::string& name, Direction direction) { return pin(Brute::none, name, direction); }

int Builder::cell(const std::string& name, const std::string& type) {
    d_.cells.push_back({name, type, {}});
    return static_cast<int>(d_.cells.size()) - 1;
}

int Builder::pin(int cell, const std::string& name, Direction direction) {
    d_.pins.push_back({name, cell, direction, Brute::none});
    const int made = static_cast<int>(d_.pins.size()) - 1;
    if (cell != Brute::none)
        d_.cells[at(cell)].pins.push_back(made);
    return made;
}

void Builder::wire(int driver, int sink, const Values& values) {
    int& net = d_.pins[at(driver)].net;
    if (net == Brute::none) {
        net = static_cast<int>(d_.nets.size());
        d_.nets.push_back({"mm" + std::to_string(net), driver, {}});
    }
    d_.nets[at(net)].sinks.push_back(sink);
    d_.pins[at(sink)].net = net;
    d_.arcs.push_back({Arc::Kind::wire, driver, sink, Brute::Edge::any, values});
}

void Builder::wire(int driver, int sink, int delay) { wire(driver, sink, exactly(delay)); }

void Builder::gateArc(int from, int to, const Values& values) {
    d_.arcs.push_back({Arc::Kind::gate, from, to, Brute::Edge::any, values});
}

Builder::Register Builder::addRegister(const std::string& name) {
    const int made = cell(name, "DFFX");
    const Register r{pin(made, "CLK", Direction::input), pin(made, "D", Direction::input),
                     pin(made, "Q", Direction::output)};
    d_.arcs.push_back({Arc::Kind::clockToOutput, r.clock, r.out, Brute::Edge::rise, exactly(400)});
    d_.checks.push_back({r.data, r.clock, Brute::Edge::any, Brute::Edge::rise, false,
                         Brute::Triple{100, 100, 100}, Brute::Triple{50, 50, 50}});
    return r;
}

void Builder::disconnect(int sink) {
    std::erase_if(d_.arcs, [&](const Arc& a) { return a.kind == Arc::Kind::wire && a.to == sink; });
    std::erase(d_.nets[at(d_.pins[at(sink)].net)].sinks, sink);
    d_.pins[at(sink)].net = Brute::none;
}

Values exactly(int picoseconds) { return {{picoseconds, picoseconds, picoseconds}}; }

Values plus(Values values, int picoseconds) {
    for (Brute::Triple& t : values)
        t = {t.minimum + picoseconds, t.typical + picoseconds, t.maximum + picoseconds};
    return values;
}

int least(const Values& values) {
    int result = values.front().minimum;
    for (const Brute::Triple& t : values)
        result = std::min(result, t.minimum);
    return result;
}

std::vector<int> wires(const Design& d) {
    return wiresIf(d, [](const Arc&) { return true; });
}

std::vector<int> dataWires(const Design& d) {
    return wiresIf(d, [&](const Arc& a) {
        const Brute::Pin& pin = d.pins[at(a.to)];
        return pin.cell == Brute::none || d.cells[at(pin.cell)].name.starts_with("g") || isChecked(d, a.to);
    });
}

std::vector<int> endWires(const Design& d) {
    return wiresIf(d, [&](const Arc& a) { return d.isPort(a.to) || isChecked(d, a.to); });
}

void insertGate(Design& d, int wire, const Values& before, const Values& gate, const Values& after) {
    Builder build(d);
    const int driver = d.arcs[at(wire)].from, sink = d.arcs[at(wire)].to;
    const int made = build.cell("mm" + std::to_string(d.cells.size()), "MMBUF");
    const int in = build.pin(made, "A", Direction::input), out = build.pin(made, "Z", Direction::output);
    build.disconnect(sink);
    build.wire(driver, in, before), build.wire(out, sink, after);
    build.gateArc(in, out, gate);
}

std::vector<int> liveClocks(const Case& c) {
    std::vector<int> live;
    for (const Brute::LiveClock& clock : Brute::resolveClocks(c.design, {}).live)
        live.push_back(clock.index);
    return live;
}

bool noneIsReplaced(const Case& c) { return liveClocks(c).size() == c.design.clocks.size(); }

Preparation all(std::vector<Preparation> steps) {
    return
        [=](Case& c) { return std::ranges::all_of(steps, [&](const Preparation& step) { return step(c); }); };
}

bool withoutNetworkLatency(Case& c) {
    c.options.clocks = Analysis::ClockDefault::propagated;
    std::erase_if(c.design.latencies,
                  [](const Brute::Latency& l) { return l.kind != Brute::Latency::Kind::source; });
    // An ideal generated clock may have had a latency of its own.
    std::erase_if(c.design.latencies, [&](const Brute::Latency& l) {
        return c.design.clocks[at(l.clock)].generated.has_value();
    });
    return true;
}

bool allPropagated(Case& c) {
    c.options.clocks = Analysis::ClockDefault::propagated;
    c.design.latencies.clear();
    return true;
}

bool withoutUncertainty(Case& c) {
    c.design.uncertainties.clear();
    return true;
}

bool withoutGroups(Case& c) {
    c.design.clockGroups.clear();
    return true;
}

bool capturesAtRises(Case& c) {
    for (Brute::Check& check : c.design.checks)
        check.clockEdge = Brute::Edge::rise;
    for (Arc& arc : c.design.arcs)
        if (arc.kind == Arc::Kind::clockToOutput)
            arc.edge = Brute::Edge::rise;
    for (Brute::PortDelay& delay : c.design.portDelays)
        if (!delay.input)
            delay.fall = false;
    return true;
}

Brute::Shape exceptions(Brute::ExceptionMode mode) {
    Brute::Shape shape;
    shape.exceptions = mode;
    return shape;
}

Brute::Shape withoutDelayExceptions() {
    Brute::Shape shape;
    shape.kinds = {3, 4, 0, 0};
    return shape;
}

Brute::Shape oneClock() {
    Brute::Shape shape = exceptions(Brute::ExceptionMode::without);
    shape.maximumClocks = 1;
    return shape;
}

} // namespace Metamorphic
