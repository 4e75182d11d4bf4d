// Delays and checks moved along a path, spread over more gates, or changed by a known time.
#include "Relation.h"
#include "Rewrite.h"

#include <algorithm>

namespace Metamorphic {

namespace {

using Brute::Arc;
using Brute::Values;

std::size_t at(int index) { return static_cast<std::size_t>(index); }

bool withMinmax(Case& c) {
    c.options.delays = Analysis::Delays::minmax;
    return true;
}

// --- More gates ---

bool gatesWithoutDelay(Case& c) {
    const std::vector<int> list = wires(c.design);
    if (list.empty())
        return false;
    const int wire = c.random.of(list);
    const Values values = c.design.arcs[at(wire)].values;
    if (c.random.chance(50))
        insertGate(c.design, wire, values, exactly(0), exactly(0));
    else
        insertGate(c.design, wire, exactly(0), exactly(0), values);
    return true;
}

bool delayOverGates(Case& c) {
    const std::vector<int> list = wires(c.design);
    if (list.empty())
        return false;
    const int wire = c.random.of(list);
    const Values values = c.design.arcs[at(wire)].values;
    const int most = least(values), first = c.random.between(0, most),
              second = c.random.between(0, most - first);
    insertGate(c.design, wire, exactly(first), exactly(second), plus(values, -first - second));
    return true;
}

// Moves delay from a wire into all arcs of the gate behind it that begin there.
bool delayIntoGate(Case& c) {
    std::vector<int> list;
    for (int wire : wires(c.design))
        for (const Arc& arc : c.design.arcs)
            if (arc.kind == Arc::Kind::gate && !arc.values.empty() && arc.from == c.design.arcs[at(wire)].to)
                list.push_back(wire);
    if (list.empty())
        return false;
    Arc& wire = c.design.arcs[at(c.random.of(list))];
    const int part = c.random.between(0, least(wire.values));
    wire.values = plus(wire.values, -part);
    for (Arc& arc : c.design.arcs)
        if (arc.from == wire.to)
            arc.values = plus(arc.values, part);
    return true;
}

// Adds a second way with other delays from the same driver, and a gate in which both ways meet.
bool parallelWay(Case& c, bool slower) {
    const std::vector<int> list = dataWires(c.design);
    if (list.empty())
        return false;
    const Arc wire = c.design.arcs[at(c.random.of(list))];
    const int more = slower ? c.random.between(0, 5000) : -c.random.between(0, least(wire.values));
    Builder build(c.design);
    const int made = build.cell("mmpair", "MMPAIR");
    const int first = build.pin(made, "A", Brute::Direction::input);
    const int second = build.pin(made, "B", Brute::Direction::input);
    const int out = build.pin(made, "Z", Brute::Direction::output);
    build.disconnect(wire.to);
    build.wire(wire.from, first, wire.values), build.wire(wire.from, second, plus(wire.values, more));
    build.wire(out, wire.to, 0);
    build.gateArc(first, out, exactly(0)), build.gateArc(second, out, exactly(0));
    return true;
}

// --- Other delays ---

bool widerDelays(Case& c) {
    for (Arc& arc : c.design.arcs)
        for (Brute::Triple& t : arc.values) {
            if (c.random.chance(30))
                t.minimum -= c.random.between(0, t.minimum);
            if (c.random.chance(30))
                t.maximum += c.random.between(0, 2000);
        }
    return true;
}

bool slowerMaximumOfData(Case& c) {
    const std::vector<int> list = dataWires(c.design);
    for (int wire : list)
        if (c.random.chance(30))
            for (Brute::Triple& t : c.design.arcs[at(wire)].values)
                t.maximum += c.random.between(0, 2000);
    return !list.empty();
}

bool fasterMinimumOfData(Case& c) {
    const std::vector<int> list = dataWires(c.design);
    for (int wire : list)
        if (c.random.chance(30))
            for (Brute::Triple& t : c.design.arcs[at(wire)].values)
                t.minimum -= c.random.between(0, t.minimum);
    return !list.empty();
}

bool delayBeforeAnEnd(Case& c) {
    const std::vector<int> list = endWires(c.design);
    if (list.empty())
        return false;
    Arc& wire = c.design.arcs[at(c.random.of(list))];
    c.amount = c.random.between(1, 4000);
    c.end = c.design.pinName(wire.to);
    wire.values = plus(wire.values, c.amount);
    return true;
}

bool largerCheck(Case& c, std::optional<Brute::Triple> Brute::Check::*side) {
    const int data = c.random.of(c.design.checks).data;
    c.amount = c.random.between(1, 4000);
    c.end = c.design.pinName(data);
    for (Brute::Check& check : c.design.checks)
        if (check.data == data && check.*side)
            check.*side = plus({*(check.*side)}, c.amount).front();
    return true;
}

bool withoutDriver(Case& c) {
    const std::vector<int> list = endWires(c.design);
    if (list.empty())
        return false;
    const int end = c.design.arcs[at(c.random.of(list))].to;
    c.end = c.design.pinName(end);
    Builder(c.design).disconnect(end);
    return true;
}

} // namespace

std::vector<Relation> delayRelations() {
    const Judge slacks = sameSlacks();
    return {
        {.name = "GatesWithoutDelay", .change = gatesWithoutDelay, .holds = slacks},
        {.name = "DelayOverGates", .change = delayOverGates, .holds = slacks},
        {.name = "DelayIntoGate", .change = delayIntoGate, .holds = slacks},
        {.name = "SlowerParallelWay",
         .change = [](Case& c) { return parallelWay(c, true); },
         .holds = slacksOnly(Change::worse, Change::none)},
        {.name = "FasterParallelWay",
         .change = [](Case& c) { return parallelWay(c, false); },
         .holds = slacksOnly(Change::none, Change::worse)},
        {.name = "WiderDelays",
         .prepare = withMinmax,
         .change = widerDelays,
         .holds = slacksOnly(Change::worse, Change::worse)},
        {.name = "SlowerMaximumOfData",
         .prepare = withMinmax,
         .change = slowerMaximumOfData,
         .holds = slacksOnly(Change::worse, Change::none)},
        {.name = "FasterMinimumOfData",
         .prepare = withMinmax,
         .change = fasterMinimumOfData,
         .holds = slacksOnly(Change::none, Change::worse)},
        {.name = "DelayBeforeAnEnd", .change = delayBeforeAnEnd, .holds = slacksShifted(-1, 1)},
        {.name = "LargerSetup",
         .change = [](Case& c) { return largerCheck(c, &Brute::Check::setup); },
         .holds = slacksShifted(-1, 0)},
        {.name = "LargerHold",
         .change = [](Case& c) { return largerCheck(c, &Brute::Check::hold); },
         .holds = slacksShifted(0, -1)},
        {.name = "WithoutDriver", .change = withoutDriver, .holds = onlyEndGone()},
    };
}

} // namespace Metamorphic
