// Clocks, latencies, uncertainties and port delays: written in another way, or moved by a known time.
#include "Relation.h"
#include "Rewrite.h"

#include "Clocks.h"

#include <algorithm>

namespace Metamorphic {

namespace {

using Brute::Arc;
using Brute::Clock;
using Brute::Exception;
using Brute::Latency;
using Brute::Object;
using Brute::PortDelay;

std::size_t at(int index) { return static_cast<std::size_t>(index); }

// --- Waveforms ---

bool largerPeriod(Case& c) {
    c.amount = c.random.between(1, 9000);
    for (Clock& clock : c.design.clocks) {
        clock.waveform = true;
        clock.period += c.amount;
    }
    return true;
}

bool shiftedWaveforms(Case& c) {
    int most = c.design.clocks.front().period;
    for (const Brute::LiveClock& clock : Brute::resolveClocks(c.design, {}).live)
        most = std::min(most, clock.period - 1 - clock.rise);
    if (most < 1)
        return false;
    c.amount = c.random.between(1, most);
    for (Clock& clock : c.design.clocks)
        if (!clock.generated) {
            clock.waveform = true;
            clock.rise += c.amount, clock.fall += c.amount;
        }
    return true;
}

bool tenfoldTimes(Case& c) {
    constexpr int factor = 10;
    const auto scale = [](Brute::Triple& t) {
        t = {t.minimum * factor, t.typical * factor, t.maximum * factor};
    };
    for (Arc& arc : c.design.arcs)
        std::ranges::for_each(arc.values, scale);
    for (Brute::Check& check : c.design.checks)
        for (std::optional<Brute::Triple>* t : {&check.setup, &check.hold})
            if (*t)
                scale(**t);
    for (Clock& clock : c.design.clocks) {
        clock.period *= factor, clock.rise *= factor, clock.fall *= factor;
        if (clock.generated) {
            clock.generated->offset *= factor;
            if (clock.generated->edgeShift)
                *clock.generated->edgeShift *= factor;
        }
    }
    for (Latency& latency : c.design.latencies)
        latency.value *= factor;
    for (Brute::Uncertainty& uncertainty : c.design.uncertainties)
        uncertainty.value *= factor;
    for (PortDelay& delay : c.design.portDelays)
        delay.value *= factor;
    for (Brute::Exception& e : c.design.exceptions)
        if (e.kind == Brute::Exception::Kind::maximumDelay || e.kind == Brute::Exception::Kind::minimumDelay)
            e.value *= factor;
    return true;
}

bool finerUnit(Case& c) {
    c.options.scale = -13;
    return true;
}

// All times become a tenth of what they were.
void tenthOfTheUnits(Files& files, Brute::Random&) {
    files.sdf.replace(files.sdf.find("TIMESCALE 1ps"), std::string("TIMESCALE 1ps").size(),
                      "TIMESCALE 100fs");
    files.sdc.front().insert(0, "set_units -time 100ps\n");
}

// --- The source of a clock ---

Brute::Shape withoutPads() {
    Brute::Shape shape;
    shape.pads = false;
    return shape;
}

// Puts a gate without delay behind each clock's port, and defines the clock there.
bool clocksBehindAGate(Case& c) {
    std::set<int> ports;
    for (const Clock& clock : c.design.clocks)
        for (int target : clock.targets)
            if (c.design.isPort(target) && c.design.pins[at(target)].net != Brute::none)
                ports.insert(target);
    for (int port : ports) {
        Builder build(c.design);
        std::vector<Arc> old;
        for (const Arc& arc : c.design.arcs)
            if (arc.kind == Arc::Kind::wire && arc.from == port)
                old.push_back(arc);
        const int made = build.cell("mm" + std::to_string(port), "MMBUF");
        const int in = build.pin(made, "A", Brute::Direction::input);
        const int out = build.pin(made, "Z", Brute::Direction::output);
        for (const Arc& arc : old) {
            build.disconnect(arc.to);
            build.wire(out, arc.to, arc.values);
        }
        build.wire(port, in, 0);
        build.gateArc(in, out, exactly(0));
        for (Clock& clock : c.design.clocks) {
            std::ranges::replace(clock.targets, port, out);
            if (clock.generated && clock.generated->source == port)
                clock.generated->source = out;
        }
        // A constraint that names the data of the clock's source still names it.
        const auto isPort = [&](const Object& object) {
            return (object.kind == Object::Kind::port || object.kind == Object::Kind::pin) &&
                   object.index == port;
        };
        for (Exception& exception : c.design.exceptions) {
            std::ranges::replace_if(exception.from, isPort, Object{Object::Kind::pin, out});
            for (std::vector<Object>& through : exception.through)
                std::ranges::replace_if(through, isPort, Object{Object::Kind::pin, out});
        }
    }
    return !ports.empty();
}

// Defines the same clock once more behind a buffer, as a generated one of the same period.
bool dividedByOne(Case& c) {
    const Brute::Clocks clocks = Brute::resolveClocks(c.design, {});
    for (const Clock& clock : c.design.clocks)
        if (clock.generated)
            return false;
    std::vector<std::pair<int, int>> places; // output pin and clock
    for (std::size_t pin = 0; pin < c.design.pins.size(); ++pin) {
        const int out = static_cast<int>(pin), cell = c.design.pins[pin].cell;
        if (cell == Brute::none || c.design.cells[at(cell)].type != "CKBUF" || clocks.sources.contains(out) ||
            c.design.pins[pin].direction != Brute::Direction::output)
            continue;
        std::vector<const Brute::LiveClock*> there;
        for (const Brute::LiveClock& clock : clocks.live)
            if (clock.arrivals.contains(out))
                there.push_back(&clock);
        if (there.size() == 1 && 2 * (there[0]->fall - there[0]->rise) == there[0]->period)
            places.emplace_back(out, there[0]->index);
    }
    if (places.empty())
        return false;
    const auto [target, master] = c.random.of(places);
    Clock made;
    made.name = "same";
    made.targets = {target};
    made.generated.emplace();
    made.generated->source = c.design.cells[at(c.design.pins[at(target)].cell)].pins[0];
    made.generated->master = master;
    c.design.clocks.push_back(made);
    return true;
}

bool renamedClocks(Case& c) {
    for (Clock& clock : c.design.clocks) {
        const std::string name = "z." + clock.name + "/x";
        c.names[name] = clock.name;
        clock.name = name;
    }
    return true;
}

// --- Latency and uncertainty ---

bool withoutIncludedLatency(Case& c) {
    for (PortDelay& delay : c.design.portDelays)
        delay.sourceIncluded = false;
    return true;
}

bool equalSourceLatency(Case& c) {
    const int value = c.random.between(-2000, 4000);
    for (int clock : liveClocks(c))
        if (!c.design.clocks[at(clock)].generated)
            c.design.latencies.push_back({Latency::Kind::source, clock, {}, value});
    return true;
}

bool propagatedAgain(Case& c) {
    for (int clock : liveClocks(c))
        c.design.latencies.push_back({Latency::Kind::propagated, clock, {}, 0});
    return true;
}

bool latencySidesApart(Case& c) {
    std::vector<Latency> all;
    for (const Latency& latency : c.design.latencies) {
        all.push_back(latency);
        if (latency.kind == Latency::Kind::source && !latency.late) {
            all.back().late = true;
            all.push_back(latency);
            all.back().late = false;
        }
    }
    c.design.latencies = all;
    return true;
}

bool uncertaintyEverywhere(Case& c) {
    c.amount = c.random.between(1, 3000);
    for (int clock : liveClocks(c))
        c.design.uncertainties.push_back({Brute::none, clock, {}, c.amount});
    return true;
}

bool simpleUncertainties(Case& c) {
    c.design.uncertainties.clear();
    for (int clock : liveClocks(c))
        for (bool setup : {true, false})
            if (c.random.chance(60))
                c.design.uncertainties.push_back({Brute::none, clock, setup, c.random.between(0, 900)});
    return true;
}

bool uncertaintiesAsPairs(Case& c) {
    std::vector<Brute::Uncertainty> pairs;
    for (const Brute::Uncertainty& simple : c.design.uncertainties)
        for (int from : liveClocks(c))
            pairs.push_back({from, simple.to, simple.setup, simple.value});
    c.design.uncertainties = pairs;
    return true;
}

// --- Port delays ---

bool portDelaySidesApart(Case& c) {
    std::vector<PortDelay> all;
    for (const PortDelay& delay : c.design.portDelays) {
        all.push_back(delay);
        if (!delay.maximum) {
            all.back().maximum = true;
            all.push_back(delay);
            all.back().maximum = false;
        }
    }
    c.design.portDelays = all;
    return true;
}

// Moves a part of a port's delays into its wires.
bool portDelayInWires(Case& c, bool input) {
    std::vector<int> ports;
    for (const PortDelay& delay : c.design.portDelays) {
        const auto isBare = [&](const Arc& arc) {
            return (input ? arc.from : arc.to) == delay.port && arc.values.empty();
        };
        if (delay.input == input && std::ranges::none_of(c.design.arcs, isBare))
            ports.push_back(delay.port);
    }
    if (ports.empty())
        return false;
    const int port = c.random.of(ports), part = c.random.between(1, 3000);
    for (Arc& arc : c.design.arcs)
        if ((input ? arc.from : arc.to) == port)
            arc.values = plus(arc.values, part);
    for (PortDelay& delay : c.design.portDelays)
        if (delay.port == port)
            delay.value -= part;
    return true;
}

} // namespace

std::vector<Relation> clockRelations() {
    const Judge slacks = sameSlacks();
    return {
        {.name = "LargerPeriod",
         .shape = oneClock(),
         .prepare = capturesAtRises,
         .change = largerPeriod,
         .holds = slacksShifted(1, 0)},
        {.name = "ShiftedWaveforms", .change = shiftedWaveforms, .holds = slacks},
        {.name = "TenfoldTimes", .change = tenfoldTimes, .holds = slacksTimes(10, 1)},
        {.name = "TenthOfTheUnits",
         .change = finerUnit,
         .rewrite = tenthOfTheUnits,
         .holds = slacksTimes(1, 10)},
        {.name = "ClocksBehindAGate", .shape = withoutPads(), .change = clocksBehindAGate, .holds = slacks},
        {.name = "DividedByOne",
         .shape = exceptions(Brute::ExceptionMode::without),
         .prepare = all({allPropagated, withoutUncertainty, withoutGroups}),
         .change = dividedByOne,
         .holds = slacks},
        {.name = "RenamedClocks", .change = renamedClocks, .holds = sameEndsRenamed()},
        {.name = "EqualSourceLatency",
         .shape = withoutDelayExceptions(),
         .prepare = all({allPropagated, withoutIncludedLatency}),
         .change = equalSourceLatency,
         .holds = slacks},
        {.name = "PropagatedAgain",
         .prepare = withoutNetworkLatency,
         .change = propagatedAgain,
         .holds = same({"diagnostics", "line", "overruled_by"})},
        {.name = "LatencySidesApart",
         .change = latencySidesApart,
         .holds = same({"diagnostics", "line", "overruled_by"})},
        {.name = "UncertaintyEverywhere",
         .shape = withoutDelayExceptions(),
         .prepare = withoutUncertainty,
         .change = uncertaintyEverywhere,
         .holds = slacksShifted(-1, -1)},
        {.name = "UncertaintiesAsPairs",
         .shape = withoutDelayExceptions(),
         .prepare = simpleUncertainties,
         .change = uncertaintiesAsPairs,
         .holds = same({"diagnostics", "line", "overruled_by"})},
        {.name = "PortDelaySidesApart",
         .change = portDelaySidesApart,
         .holds = same({"diagnostics", "line", "overruled_by"})},
        {.name = "InputDelayInWires",
         .shape = withoutDelayExceptions(),
         .change = [](Case& c) { return portDelayInWires(c, true); },
         .holds = slacks},
        {.name = "OutputDelayInWires",
         .shape = withoutDelayExceptions(),
         .change = [](Case& c) { return portDelayInWires(c, false); },
         .holds = slacks},
    };
}

} // namespace Metamorphic
