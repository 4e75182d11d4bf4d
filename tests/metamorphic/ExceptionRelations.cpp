// Exceptions written in another way, or for no path, or with a known effect.
#include "Relation.h"
#include "Rewrite.h"
#include "Text.h"

#include "Paths.h"
#include "Write.h"

#include <algorithm>

namespace Metamorphic {

namespace {

using Brute::Exception;
using Brute::Object;
using Kind = Exception::Kind;

std::size_t at(int index) { return static_cast<std::size_t>(index); }

Object clockObject(int clock) { return {Object::Kind::clock, clock}; }

// --- Written in another way ---

// Replaces each exception by those that the function makes of it. Returns false if none changed.
bool eachBy(Case& c, const std::function<std::vector<Exception>(const Exception&)>& with) {
    std::vector<Exception> changed;
    for (const Exception& e : c.design.exceptions)
        std::ranges::copy(with(e), std::back_inserter(changed));
    const bool differs = changed.size() != c.design.exceptions.size();
    c.design.exceptions = changed;
    return differs;
}

bool fromsApart(Case& c) {
    return eachBy(c, [](const Exception& e) {
        std::vector<Exception> parts;
        for (const Object& object : e.from) {
            parts.push_back(e);
            parts.back().from = {object};
        }
        return e.from.empty() ? std::vector{e} : parts;
    });
}

bool tosApart(Case& c) {
    return eachBy(c, [](const Exception& e) {
        std::vector<Exception> parts;
        for (const Object& object : e.to) {
            parts.push_back(e);
            parts.back().to = {object};
        }
        return e.to.empty() ? std::vector{e} : parts;
    });
}

bool throughsApart(Case& c) {
    return eachBy(c, [](const Exception& e) {
        std::vector<Exception> parts;
        for (std::size_t group = 0; group < e.through.size(); ++group)
            if (e.through[group].size() > 1) {
                for (const Object& object : e.through[group]) {
                    parts.push_back(e);
                    parts.back().through[group] = {object};
                }
                return parts;
            }
        return std::vector{e};
    });
}

bool sidesApart(Case& c, Kind kind) {
    return eachBy(c, [&](const Exception& e) {
        if (e.kind != kind || e.setup)
            return std::vector{e};
        std::vector<Exception> parts{e, e};
        parts[0].setup = true, parts[1].setup = false;
        if (kind == Kind::multicycle) {
            parts[1].value = 0;
            parts[1].start.reset();
        }
        return parts;
    });
}

bool inAnotherOrder(Case& c) {
    shuffle(c.design.exceptions, c.random);
    return c.design.exceptions.size() > 1;
}

bool saidTwice(Case& c) {
    if (c.design.exceptions.empty())
        return false;
    const std::vector<Exception> once = c.design.exceptions;
    std::ranges::copy(once, std::back_inserter(c.design.exceptions));
    return true;
}

bool groupsOfTwo(Case& c) {
    const std::vector<int> clocks = liveClocks(c);
    if (clocks.size() < 2)
        return false;
    c.design.clockGroups = {{"-asynchronous", {{clocks[0]}, {clocks[1]}}}};
    return true;
}

bool groupsAsFalsePaths(Case& c) {
    const auto groups = c.design.clockGroups.front().groups;
    c.design.clockGroups.clear();
    for (const auto& [from, to] : {std::pair{0, 1}, std::pair{1, 0}}) {
        Exception e;
        e.from = {clockObject(groups[at(from)].front())};
        e.to = {clockObject(groups[at(to)].front())};
        c.design.exceptions.push_back(e);
    }
    return true;
}

// --- For no path ---

// An exception from a register to one that none of its paths reaches.
bool overNothing(Case& c) {
    const Brute::Design& d = c.design;
    const Brute::Options options;
    const auto cellOf = [&](int pin) { return d.pins[at(pin)].cell; };
    std::set<std::pair<int, int>> joined;
    for (const Brute::DataPath& path : Brute::listPaths(d, Brute::resolveClocks(d, options), options))
        joined.emplace(cellOf(path.pins.front()), cellOf(path.pins.back()));
    std::set<int> registers;
    for (const Brute::Check& check : d.checks)
        registers.insert(cellOf(check.clock));
    std::vector<std::pair<int, int>> apart;
    for (int from : registers)
        for (int to : registers)
            if (!joined.contains({from, to}))
                apart.emplace_back(from, to);
    if (apart.empty())
        return false;
    const auto [from, to] = c.random.of(apart);
    Exception e;
    e.kind =
        c.random.of(std::vector{Kind::falsePath, Kind::multicycle, Kind::maximumDelay, Kind::minimumDelay});
    e.value = e.kind == Kind::multicycle ? 3 : 700;
    e.from = {{Object::Kind::cell, from}};
    e.to = {{Object::Kind::cell, to}};
    const int place = c.random.between(0, static_cast<int>(d.exceptions.size()));
    c.design.exceptions.insert(c.design.exceptions.begin() + place, e);
    return true;
}

Brute::Shape withoutMulticycles() {
    Brute::Shape shape;
    shape.kinds = {3, 0, 2, 1};
    return shape;
}

bool multicycleThatIsOne(Case& c, bool setup) {
    for (int clock : liveClocks(c)) {
        Exception e;
        e.kind = Kind::multicycle;
        e.setup = setup;
        e.value = setup ? 1 : 0;
        if (c.random.chance(40))
            e.start = c.random.chance(50);
        (c.random.chance(50) ? e.from : e.to) = {clockObject(clock)};
        c.design.exceptions.push_back(e);
    }
    return true;
}

// --- A known effect ---

bool falsePathToAnEnd(Case& c) {
    std::vector<int> ends;
    for (const Brute::Check& check : c.design.checks)
        ends.push_back(check.data);
    for (std::size_t pin = 0; pin < c.design.pins.size(); ++pin)
        if (c.design.isPort(static_cast<int>(pin)) &&
            c.design.pins[pin].direction == Brute::Direction::output)
            ends.push_back(static_cast<int>(pin));
    const int end = c.random.of(ends);
    c.end = c.design.pinName(end);
    Exception e;
    e.to = {{c.design.isPort(end) ? Object::Kind::port : Object::Kind::pin, end}};
    c.design.exceptions.insert(c.design.exceptions.begin(), e);
    return true;
}

// Both sides of all that one clock launches: setup gets that many more periods, hold is unchanged.
bool multicycleOfAll(Case& c) {
    const Brute::Clocks clocks = Brute::resolveClocks(c.design, {});
    const int count = c.random.between(2, 5);
    c.amount = (count - 1) * clocks.live.front().period;
    for (bool setup : {true, false}) {
        Exception e;
        e.kind = Kind::multicycle;
        e.setup = setup;
        e.value = setup ? count : count - 1;
        e.from = {clockObject(clocks.live.front().index)};
        c.design.exceptions.push_back(e);
    }
    return true;
}

// The delay that the clock edges demand anyway.
Relation relationAsDelay(const char* name, bool maximum) {
    const auto rewrite = [=](Files& files, Brute::Random&) {
        std::string period, clock;
        for (const std::string& line : lines(files.sdc.front()))
            if (line.starts_with("create_clock -name ")) {
                const std::size_t begin = std::string("create_clock -name ").size(),
                                  end = line.find(' ', begin);
                clock = line.substr(begin, end - begin);
                const std::size_t number = line.find("-period ") + std::string("-period ").size();
                period = line.substr(number, line.find(' ', number) - number);
            }
        files.sdc.front() += (maximum ? "set_max_delay " + period : "set_min_delay 0") +
                             " -rise_from [get_clocks " + clock + "] -to [get_clocks " + clock + "]\n";
    };
    return {.name = name,
            .shape = oneClock(),
            .prepare = all({capturesAtRises, withoutNetworkLatency}),
            .rewrite = rewrite,
            .holds = sameSlacks()};
}

} // namespace

std::vector<Relation> exceptionRelations() {
    using Brute::ExceptionMode;
    const Judge slacks = sameSlacks();
    const Judge sameButLines = same({"diagnostics", "line", "exceptions", "overruled_by"});
    return {
        {.name = "FromsApart", .change = fromsApart, .holds = sameButLines},
        {.name = "TosApart", .change = tosApart, .holds = sameButLines},
        {.name = "ThroughsApart", .change = throughsApart, .holds = sameButLines},
        {.name = "FalsePathSidesApart",
         .change = [](Case& c) { return sidesApart(c, Kind::falsePath); },
         .holds = sameButLines},
        {.name = "MulticycleSidesApart",
         .shape = exceptions(ExceptionMode::single),
         .change = [](Case& c) { return sidesApart(c, Kind::multicycle); },
         .holds = slacks},
        {.name = "ExceptionsInAnotherOrder",
         .shape = exceptions(ExceptionMode::single),
         .change = inAnotherOrder,
         .holds = sameButLines},
        {.name = "ExceptionsTwice", .change = saidTwice, .holds = slacks},
        {.name = "GroupsAsFalsePaths",
         .shape = exceptions(ExceptionMode::without),
         .prepare = groupsOfTwo,
         .change = groupsAsFalsePaths,
         .holds = slacks},
        {.name = "ExceptionOverNothing", .change = overNothing, .holds = sameButLines},
        {.name = "MulticycleOfOne",
         .shape = withoutMulticycles(),
         .change = [](Case& c) { return multicycleThatIsOne(c, true); },
         .holds = slacks},
        {.name = "HoldMulticycleOfNone",
         .shape = withoutMulticycles(),
         .change = [](Case& c) { return multicycleThatIsOne(c, false); },
         .holds = slacks},
        {.name = "FalsePathToAnEnd", .change = falsePathToAnEnd, .holds = onlyEndGone()},
        {.name = "MulticycleOfAll",
         .shape = oneClock(),
         .change = multicycleOfAll,
         .holds = slacksShifted(1, 0)},
        relationAsDelay("MaxDelayOfTheRelation", true),
        relationAsDelay("MinDelayOfTheRelation", false),
    };
}

} // namespace Metamorphic
