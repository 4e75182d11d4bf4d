#include "tests/support/command/Script.h"

#include <map>

namespace Support {

namespace {

using Base::Decimal;
using Design::Direction;
using Design::Transition;
using namespace Readers::Sdc;

Design::RoutedDesign makeDesign() {
    Design::RoutedDesign design;
    design.name = "top";
    const auto port = [&](const char* name, Design::Direction direction) {
        const Design::PinId pin = design.addPin(Base::none, design.names.add(name));
        design.pins[pin].direction = direction;
        design.pins[pin].net = design.addNet(design.names.add(name));
    };
    const auto pin = [&](const char* cell, const char* type, const char* name, Design::Direction direction,
                         const char* net) {
        const Design::CellId owner = design.addCell(design.names.add(cell), design.names.add(type));
        const Design::PinId added = design.addPin(owner, design.names.add(name));
        design.pins[added].direction = direction;
        if (*net != 0)
            design.pins[added].net = design.addNet(design.names.add(net));
        return added;
    };
    for (const char* name : {"clk", "clk2", "rst", "in[0]", "in[1]", "a", "b"})
        port(name, Design::Direction::input);
    for (const char* name : {"out", "led[3]", "led[4]"})
        port(name, Design::Direction::output);
    port("bidi", Design::Direction::inout);
    const char* nets[][4] = {
        {"r0", "clk", "a", "mid"}, {"r1", "clk", "", "out"}, {"u1/u2/ff", "clk2", "", "led[3]"}};
    for (const auto& [cell, clock, data, output] : nets) {
        const Design::PinId clk = pin(cell, "DFF", "CLK", Design::Direction::input, clock);
        const Design::PinId d = pin(cell, "DFF", "D", Design::Direction::input, data);
        const Design::PinId q = pin(cell, "DFF", "Q", Design::Direction::output, output);
        design.arcs.push_back({.from = clk, .to = q, .fromEdge = Design::Transition::rise, .delay = {1, 1}});
        design.checks.push_back(
            {.data = d, .clock = clk, .clockEdge = Design::Transition::rise, .setup = 1, .hold = 0});
    }
    pin("l0", "LUT", "A", Design::Direction::input, "mid");
    pin("l0", "LUT", "B", Design::Direction::input, "b");
    pin("l0", "LUT", "Z", Design::Direction::output, "");
    design.index();
    design.classify();
    return design;
}

std::string text(const std::optional<Base::Decimal>& value) { return value ? value->toString() : "-"; }

std::string both(const char* name, const std::optional<Base::Decimal>& a,
                 const std::optional<Base::Decimal>& b) {
    return a || b ? std::string(" ") + name + " " + text(a) + " " + text(b) : "";
}

std::string name(const Design::RoutedDesign& design, const Design::Constraints& all,
                 const Design::Object& object) {
    static const char* const kinds[] = {"", "", "cell ", "net ", "clock "};
    const std::string kind = kinds[static_cast<int>(object.kind)];
    if (object.kind == Design::ObjectKind::clock)
        return kind + all.clocks[object.clock()].name;
    if (object.kind == Design::ObjectKind::cell)
        return kind + std::string(design.cellName(object.cell()));
    if (object.kind == Design::ObjectKind::net)
        return kind + std::string(design.netName(object.net()));
    return design.pinName(object.pin());
}

std::string points(const Design::RoutedDesign& design, const Design::Constraints& all, const char* what,
                   const Design::Points& points) {
    static const char* const edges[] = {"", "rise ", "fall "};
    std::string result = std::string(" ") + what + " " + edges[static_cast<int>(points.transition)] + "{";
    for (const Design::Object& object : points.objects)
        result += (result.ends_with('{') ? "" : ", ") + name(design, all, object);
    return result + "}";
}

std::string toText(const Design::RoutedDesign& design, const Design::Clock& clock) {
    std::string line = "clock " + clock.name + (clock.removed ? " removed" : "");
    if (const auto& generated = clock.generated) {
        using Kind = Design::GeneratedClock::Kind;
        line += " from " + design.pinName(generated->source);
        if (generated->kind != Kind::edges)
            line += (generated->kind == Kind::divide ? " / " : " * ") + std::to_string(generated->factor);
        for (const int edge : generated->edges)
            line += " e" + std::to_string(edge);
        for (const Base::Decimal& shift : generated->edgeShifts)
            line += " +" + shift.toString();
        line +=
            generated->master != Base::none ? " master " + std::to_string(generated->master.number()) : "";
        line += generated->dutyCycle ? " duty " + generated->dutyCycle->toString() : "";
        line += generated->invert ? " inverted" : "";
        line += generated->offset.isZero() ? "" : " offset " + generated->offset.toString();
        line += generated->phase.isZero() ? "" : " phase " + generated->phase.toString();
    } else {
        line +=
            " " + clock.period.toString() + " {" + clock.rise.toString() + " " + clock.fall.toString() + "}";
    }
    for (const Design::PinId target : clock.targets)
        line += (target == clock.targets.front() ? " on " : " ") + design.pinName(target);
    if (clock.propagated)
        line += *clock.propagated ? " propagated" : " ideal";
    line += both("source", clock.sourceLatency.early, clock.sourceLatency.late);
    line += both("network", clock.networkLatency.early, clock.networkLatency.late);
    return line + both("uncertainty", clock.uncertainty.setup, clock.uncertainty.hold) + "\n";
}

std::string toText(const Design::RoutedDesign& design, const Design::Constraints& all,
                   const Design::PortDelay& delay) {
    std::string line = (delay.input ? "input " : "output ") + design.pinName(delay.pin) + " " +
                       text(delay.min) + " " + text(delay.max);
    line += delay.clock != Base::none ? " " + all.clocks[delay.clock].name : "";
    line += delay.clockFall ? " fall" : "";
    line += delay.sourceLatencyIncluded ? " with-source" : "";
    return line + (delay.networkLatencyIncluded ? " with-network" : "") + "\n";
}

std::string toText(const Design::RoutedDesign& design, const Design::Constraints& all,
                   const Design::Exception& exception) {
    static const char* const kinds[] = {"false", "multicycle", "max", "min", "group"};
    std::string line = kinds[static_cast<int>(exception.kind)];
    if (exception.kind == Design::Exception::Kind::multicycle)
        line += " " + std::to_string(exception.multiplier);
    if (exception.kind == Design::Exception::Kind::maxDelay ||
        exception.kind == Design::Exception::Kind::minDelay)
        line += " " + exception.value.toString();
    line += exception.group.empty() ? "" : " " + exception.group;
    if (exception.flagged)
        line += std::string(exception.setup ? " setup" : "") + (exception.hold ? " hold" : "");
    if (exception.start)
        line += *exception.start ? " start" : " end";
    line += exception.ignoreClockLatency ? " ignore-latency" : "";
    if (exception.from)
        line += points(design, all, "from", *exception.from);
    for (const Design::Points& through : exception.through)
        line += points(design, all, "through", through);
    if (exception.to)
        line += points(design, all, "to", *exception.to);
    return line + "\n";
}

std::string toText(const Design::Constraints& all, const Design::ClockGroups& groups) {
    std::string line = "groups" + (groups.name.empty() ? "" : " " + groups.name);
    for (const auto& group : groups.groups) {
        line += " {";
        for (const Design::ClockId clock : group)
            line += (line.ends_with('{') ? "" : " ") + all.clocks[clock].name;
        line += "}";
    }
    return line + "\n";
}

Outcome readFiles(const TemporaryFolder& folder, const std::vector<std::string>& paths, const Limits& limits,
                  const Design::RoutedDesign& design) {
    Base::Diagnostics diagnostics;
    Outcome outcome;
    std::string error;
    try {
        Reader reader(design, diagnostics, limits);
        for (const std::string& path : paths) {
            Base::Source source(path);
            reader.read(source);
        }
        outcome.result = reader.take();
        outcome.constraints = Support::toText(design, outcome.result);
    } catch (const Base::BadInput& bad) {
        error = bad.what();
    }
    for (const Base::Diagnostic& diagnostic : diagnostics.all())
        outcome.messages.push_back(folder.relative(toString(diagnostic)));
    if (!error.empty())
        outcome.messages.push_back(folder.relative(error));
    return outcome;
}

} // namespace

const Design::RoutedDesign& smallDesign() {
    static const Design::RoutedDesign design = makeDesign();
    return design;
}

std::string toText(const Design::RoutedDesign& design, const Design::Constraints& all) {
    std::string lines;
    for (const Design::Clock& clock : all.clocks)
        lines += toText(design, clock);
    for (const Design::PinUncertainty& pin : all.pinUncertainties)
        lines += "uncertainty " + design.pinName(pin.pin) + both("=", pin.value.setup, pin.value.hold) + "\n";
    for (const Design::ClockPairUncertainty& pair : all.pairUncertainties)
        lines += "uncertainty " + all.clocks[pair.from].name + " " + all.clocks[pair.to].name +
                 both("=", pair.value.setup, pair.value.hold) + "\n";
    for (const Design::PortDelay& delay : all.portDelays)
        lines += toText(design, all, delay);
    for (const Design::ClockGroups& groups : all.clockGroups)
        lines += toText(all, groups);
    for (const Design::Exception& exception : all.exceptions)
        lines += toText(design, all, exception);
    for (const Design::Disable& disable : all.disables)
        lines += "disable " + name(design, all, disable.object) +
                 (disable.from ? " from " + *disable.from : "") + (disable.to ? " to " + *disable.to : "") +
                 "\n";
    for (const Design::CaseValue& value : all.caseValues)
        lines += "case " + design.pinName(value.pin) + (value.value ? " 1\n" : " 0\n");
    for (const Design::Origin& origin : all.pllClocks)
        lines += "pll line " + std::to_string(origin.line) + "\n";
    if (all.unmatched != 0)
        lines += "unmatched " + std::to_string(all.unmatched) + "\n";
    return lines;
}

std::string Outcome::allMessages() const {
    std::string lines;
    for (const std::string& message : messages)
        lines += message + "\n";
    return lines;
}

Outcome run(const std::vector<std::string>& scripts, const Limits& limits,
            const Design::RoutedDesign& design) {
    const TemporaryFolder folder;
    std::vector<std::string> paths;
    for (const std::string& script : scripts)
        paths.push_back(
            folder.write(paths.empty() ? "x.sdc" : "x" + std::to_string(paths.size() + 1) + ".sdc", script));
    return readFiles(folder, paths, limits, design);
}

Outcome run(const std::string& script, const Limits& limits) { return run(std::vector{script}, limits); }

Outcome runIn(const TemporaryFolder& folder, const std::string& script, const Limits& limits) {
    return readFiles(folder, {folder.write("x.sdc", script)}, limits, smallDesign());
}

} // namespace Support
