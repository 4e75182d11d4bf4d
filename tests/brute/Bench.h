// A design small enough to be timed by hand, for the checks of the analyser.
//
//   clkA -> r0/CLK   clkB -> r1/CLK   in -500-> r0/D   r0/Q -> g -600-> h -> r1/D   r1/Q -300-> out
//
// Registers take 400 from CLK to Q and work on the rising edge; checks, clock wires and everything else take
// 0. So r0 to r1 takes 1000, in to r0 takes 500, and r1 to out takes 700.
#pragma once

#include "Analyse.h"

#include <algorithm>
#include <stdexcept>

namespace Brute {

struct Bench {
    Design d;
    Options options;
    int a = 0, b = 1; // indices of the clocks on clkA and clkB

    Bench(int periodA = 10000, int periodB = 10000) {
        const int clkA = port("clkA", Direction::input), clkB = port("clkB", Direction::input);
        const int in = port("in", Direction::input), out = port("out", Direction::output);
        addRegister("r0"), addRegister("r1");
        addGate("g", 600), addGate("h", 0);
        wire(clkA, at("r0/CLK"), 0), wire(clkB, at("r1/CLK"), 0), wire(in, at("r0/D"), 500);
        wire(at("r0/Q"), at("g/A"), 0), wire(at("g/Z"), at("h/A"), 0), wire(at("h/Z"), at("r1/D"), 0);
        wire(at("r1/Q"), out, 300);
        addClock("a", periodA, {"clkA"});
        addClock("b", periodB, {"clkB"});
    }

    // --- Building ---

    int port(const std::string& name, Direction direction) {
        d.pins.push_back({name, none, direction, none});
        return count(d.pins) - 1;
    }
    int pin(int cell, const std::string& name, Direction direction) {
        d.pins.push_back({name, cell, direction, none});
        d.cells[static_cast<std::size_t>(cell)].pins.push_back(count(d.pins) - 1);
        return count(d.pins) - 1;
    }
    void wire(int from, int to, int delay) {
        int& net = d.pins[static_cast<std::size_t>(from)].net;
        if (net == none) {
            net = count(d.nets);
            d.nets.push_back({"n" + std::to_string(net), from, {}});
        }
        d.nets[static_cast<std::size_t>(net)].sinks.push_back(to);
        d.pins[static_cast<std::size_t>(to)].net = net;
        d.arcs.push_back({Arc::Kind::wire, from, to, Edge::any, {{delay, delay, delay}}});
    }
    void addRegister(const std::string& name) {
        d.cells.push_back({name, "DFF", {}});
        const int cell = count(d.cells) - 1;
        const int clock = pin(cell, "CLK", Direction::input), data = pin(cell, "D", Direction::input);
        const int out = pin(cell, "Q", Direction::output);
        d.arcs.push_back({Arc::Kind::clockToOutput, clock, out, Edge::any, {{400, 400, 400}}});
        d.checks.push_back({data, clock, Edge::any, Edge::rise, false, Triple{}, Triple{}});
    }
    void addGate(const std::string& name, int delay) {
        d.cells.push_back({name, "BUF", {}});
        const int cell = count(d.cells) - 1;
        const int in = pin(cell, "A", Direction::input), out = pin(cell, "Z", Direction::output);
        d.arcs.push_back({Arc::Kind::gate, in, out, Edge::any, {{delay, delay, delay}}});
    }
    int addClock(const std::string& name, int period, const std::vector<std::string>& targets) {
        Clock clock;
        clock.name = name, clock.period = period, clock.fall = period / 2;
        for (const std::string& target : targets)
            clock.targets.push_back(at(target));
        d.clocks.push_back(clock);
        return count(d.clocks) - 1;
    }
    int addGenerated(const std::string& name, const std::string& source, const std::string& target,
                     Generated g) {
        Clock clock;
        clock.name = name, clock.targets = {at(target)};
        g.source = at(source);
        clock.generated = g;
        d.clocks.push_back(clock);
        return count(d.clocks) - 1;
    }
    void delay(bool input, int clock, std::optional<bool> maximum, int value, bool add = false,
               bool fall = false) {
        PortDelay p;
        p.input = input, p.port = at(input ? "in" : "out"), p.clock = clock, p.maximum = maximum,
        p.value = value;
        p.add = add, p.fall = fall;
        d.portDelays.push_back(p);
    }
    void except(Exception::Kind kind, int value, std::vector<Object> from,
                std::vector<std::vector<Object>> through, std::vector<Object> to,
                std::optional<bool> setup = {}, std::optional<bool> start = {}) {
        d.exceptions.push_back(
            {kind, setup, start, value, false, std::move(from), std::move(to), std::move(through)});
    }
    Arc& arc(const std::string& from, const std::string& to) {
        return *std::ranges::find_if(d.arcs,
                                     [&](const Arc& x) { return x.from == at(from) && x.to == at(to); });
    }
    Check& check(const std::string& data) {
        return *std::ranges::find_if(d.checks, [&](const Check& x) { return x.data == at(data); });
    }

    // --- Naming ---

    int at(const std::string& name) const {
        for (int i = 0; i < count(d.pins); ++i)
            if (d.pinName(i) == name)
                return i;
        throw std::logic_error("no pin " + name);
    }
    Object pin(const std::string& name) const { return {Object::Kind::pin, at(name)}; }
    Object port(const std::string& name) const { return {Object::Kind::port, at(name)}; }
    Object net(const std::string& driver) const {
        return {Object::Kind::net, d.pins[static_cast<std::size_t>(at(driver))].net};
    }
    Object cell(const std::string& name) const {
        for (int i = 0; i < count(d.cells); ++i)
            if (d.cells[static_cast<std::size_t>(i)].name == name)
                return {Object::Kind::cell, i};
        throw std::logic_error("no cell " + name);
    }
    static Object clock(int index) { return {Object::Kind::clock, index}; }

    // --- Answers ---

    std::optional<std::int64_t> setup(const std::string& end) const { return slack(end, &EndResult::setup); }
    std::optional<std::int64_t> hold(const std::string& end) const { return slack(end, &EndResult::hold); }

private:
    template <class T>
    static int count(const T& list) {
        return static_cast<int>(list.size());
    }
    std::optional<std::int64_t> slack(const std::string& end,
                                      std::optional<SideResult> EndResult::*side) const {
        const Result result = analyse(d, options);
        const auto place = result.find(end);
        if (place == result.end() || !(place->second.*side))
            return {};
        return (place->second.*side)->slack;
    }
};

} // namespace Brute
