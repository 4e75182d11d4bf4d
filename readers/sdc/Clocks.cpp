// create_clock, create_generated_clock, set_clock_groups, derive_pll_clocks.
//
// A clock keeps its index for good. Without -add a new clock takes its targets away from those that were
// there; one that has none left is removed, and with it what named it. A clock of the same name is redefined
// in place, and what named it stays.
#include "readers/sdc/Objects.h"
#include "readers/sdc/Session.h"

#include <algorithm>
#include <set>

namespace Readers::Sdc {

namespace {

constexpr int comparedScale = 9; // times are compared in 10^-9 ns

std::optional<std::int64_t> comparable(const Base::Decimal& time) { return time.scaled(comparedScale); }

std::vector<Base::Decimal> decimals(const Session& session, const Arguments& arguments,
                                    std::string_view option, std::size_t count, std::string_view what) {
    std::vector<Base::Decimal> values;
    Tcl_Obj* const list = arguments.find(option);
    for (Tcl_Obj* const element : elementsOf(list)) {
        const std::optional<Base::Decimal> value = toDecimal(element);
        if (!value)
            arguments.failValue(option, what, list);
        values.push_back(session.time(*value));
    }
    if (values.size() != count)
        arguments.failValue(option, what, list);
    return values;
}

// --- Replacing ---

bool dropFrom(std::optional<Design::Points>& points, const Design::Object& clock) {
    return points && std::erase(points->objects, clock) != 0 && points->objects.empty();
}

std::size_t forgetPairs(Session& session, Design::ClockId index) {
    std::vector<Design::ClockPairUncertainty>& all = session.result.pairUncertainties;
    const std::size_t count = std::erase_if(all, [index](const Design::ClockPairUncertainty& pair) {
        return pair.from == index || pair.to == index;
    });
    if (count != 0) {
        session.uncertaintyOfPair.clear();
        for (std::size_t at = 0; at < all.size(); ++at)
            session.uncertaintyOfPair[Base::pairKey(all[at].from, all[at].to)] = at;
    }
    return count;
}

// Removes the clock from everything that names it. Returns how many entries were dropped because of that.
std::size_t forget(Session& session, Design::ClockId index) {
    Design::Constraints& result = session.result;
    const Design::Object clock(index);
    std::size_t count = session.portDelays.forgetClock(index);
    count += std::erase_if(result.exceptions, [&clock](Design::Exception& exception) {
        const bool from = dropFrom(exception.from, clock), to = dropFrom(exception.to, clock);
        return from || to;
    });
    count += forgetPairs(session, index);
    count += std::erase_if(result.clockGroups, [index](Design::ClockGroups& groups) {
        const std::size_t before = groups.groups.size();
        for (std::vector<Design::ClockId>& group : groups.groups)
            std::erase(group, index);
        std::erase_if(groups.groups, [](const auto& group) { return group.empty(); });
        // A single group that is left over would be separate from all other clocks.
        return groups.groups.empty() || (before > 1 && groups.groups.size() == 1);
    });
    for (Design::Clock& other : result.clocks)
        if (other.generated && other.generated->master == index)
            other.generated->master = Base::none;
    return count;
}

void remove(Session& session, Design::ClockId index, const std::string& by) {
    Design::Clock& clock = session.result.clocks[index];
    clock.removed = true;
    session.finder.forgetClock(clock.name);
    const std::size_t lost = forget(session, index);
    std::string text = "the clock '" + by + "' replaces '" + clock.name + "'";
    if (lost != 0)
        text +=
            ", and what named it is dropped (" + std::to_string(lost) + (lost == 1 ? " entry)" : " entries)");
    if (lost != 0)
        session.warning(text);
    else
        session.note(text);
}

void takeTargets(Session& session, const Design::Clock& clock) {
    std::set<Design::ClockId> others;
    for (const Design::PinId pin : clock.targets)
        for (const Design::ClockId index : session.clocksOn(pin))
            others.insert(index);
    for (const Design::ClockId index : others) {
        Design::Clock& other = session.result.clocks[index];
        if (other.name == clock.name)
            continue;
        std::erase_if(other.targets, [&clock](Design::PinId pin) {
            return std::ranges::find(clock.targets, pin) != clock.targets.end();
        });
        if (other.targets.empty())
            remove(session, index, clock.name);
    }
}

void define(Session& session, Design::Clock clock, bool add) {
    if (!add)
        takeTargets(session, clock);
    const Design::ClockId known = session.finder.clock(clock.name);
    const Design::ClockId index = known != Base::none ? known : session.result.clocks.next();
    for (const Design::PinId pin : clock.targets)
        if (std::vector<Design::ClockId>& here = session.clocksOfPin[pin];
            std::ranges::find(here, index) == here.end())
            here.push_back(index);
    if (known == Base::none) {
        session.finder.nameClock(clock.name, index);
        session.result.clocks.push_back(std::move(clock));
        session.sourceLatency.emplace_back();
        session.networkLatency.emplace_back();
        return;
    }
    Design::Clock& old = session.result.clocks[known];
    clock.propagated = old.propagated;
    clock.sourceLatency = old.sourceLatency;
    clock.networkLatency = old.networkLatency;
    clock.uncertainty = old.uncertainty;
    old = std::move(clock);
}

// The clock's name and targets, which both kinds of clock have.
Design::Clock named(Session& session, const Arguments& arguments) {
    Design::Clock clock;
    clock.origin = session.tcl.origin();
    clock.timeExponent = session.timeExponent;
    if (Tcl_Obj* const targets = arguments.argument(0))
        clock.targets = session.sources(arguments, "", targets);
    clock.name = arguments.text("-name");
    if (arguments.has("-name") && clock.name.empty())
        arguments.failValue("-name", "a name", arguments.find("-name"));
    if (clock.name.empty() && !clock.targets.empty())
        clock.name = session.design.pinName(clock.targets.front());
    return clock;
}

// --- create_clock ---

void readWaveform(const Session& session, const Arguments& arguments, Design::Clock& clock) {
    if (!arguments.has("-waveform")) {
        clock.fall = {clock.period.mantissa * 5, clock.period.exponent - 1};
        if (clock.period.mantissa % 2 == 0)
            clock.fall = {clock.period.mantissa / 2, clock.period.exponent};
        return;
    }
    constexpr std::string_view what = "two increasing times within one period";
    const std::vector<Base::Decimal> edges = decimals(session, arguments, "-waveform", 2, what);
    const auto rise = comparable(edges[0]), fall = comparable(edges[1]), period = comparable(clock.period);
    if (!rise || !fall || !period || *rise < 0 || *fall <= *rise || *fall - *rise >= *period)
        arguments.failValue("-waveform", what, arguments.find("-waveform"));
    clock.rise = edges[0];
    clock.fall = edges[1];
}

void createClock(Session& session, Words words) {
    static const Syntax syntax{{{"-period", Takes::time},
                                {"-name", Takes::name},
                                {"-waveform", Takes::list},
                                {"-add"},
                                {"-comment", Takes::name}},
                               {Takes::objects},
                               1};
    const Arguments arguments(syntax, words);
    arguments.needsOne({"-period"});
    const Base::Decimal period = session.time(*arguments.decimal("-period"));
    if (period.isZero() || period.isNegative())
        arguments.failValue("-period", "a time above 0", arguments.find("-period"));
    if (arguments.argument(0) == nullptr)
        arguments.needsOne({"-name", "targets"});
    Design::Clock clock = named(session, arguments);
    clock.period = period;
    readWaveform(session, arguments, clock);
    define(session, std::move(clock), arguments.has("-add"));
}

// --- create_generated_clock ---

std::vector<int> readEdges(const Arguments& arguments) {
    constexpr std::string_view what = "three increasing edge numbers";
    Tcl_Obj* const list = arguments.find("-edges");
    std::vector<int> edges;
    for (Tcl_Obj* const element : elementsOf(list)) {
        const std::optional<int> edge = toInteger(element);
        if (!edge || *edge < 1 || (!edges.empty() && *edge <= edges.back()))
            arguments.failValue("-edges", what, list);
        edges.push_back(*edge);
    }
    if (edges.size() != 3)
        arguments.failValue("-edges", what, list);
    return edges;
}

int readFactor(const Arguments& arguments, std::string_view option) {
    const int factor = *arguments.integer(option);
    if (factor < 1)
        arguments.failValue(option, "a whole number above 0", arguments.find(option));
    return factor;
}

void readShape(const Session& session, const Arguments& arguments, Design::GeneratedClock& generated) {
    using Kind = Design::GeneratedClock::Kind;
    arguments.atMostOne({"-divide_by", "-multiply_by", "-edges", "-combinational"});
    if (arguments.has("-divide_by"))
        generated.factor = readFactor(arguments, "-divide_by");
    if (arguments.has("-multiply_by")) {
        generated.kind = Kind::multiply;
        generated.factor = readFactor(arguments, "-multiply_by");
    }
    if (arguments.has("-edges")) {
        generated.kind = Kind::edges;
        generated.edges = readEdges(arguments);
    }
    if (arguments.has("-edge_shift")) {
        if (generated.kind != Kind::edges)
            arguments.fail("-edge_shift goes with -edges only");
        generated.edgeShifts = decimals(session, arguments, "-edge_shift", 3, "three times");
    }
    generated.dutyCycle = arguments.decimal("-duty_cycle");
    if (generated.dutyCycle && (!isLess(Base::Decimal::of(0), *generated.dutyCycle) ||
                                !isLess(*generated.dutyCycle, Base::Decimal::of(100))))
        arguments.failValue("-duty_cycle", "a percentage between 0 and 100", arguments.find("-duty_cycle"));
    if (generated.dutyCycle && generated.kind == Kind::edges)
        arguments.fail("-duty_cycle does not go with -edges");
    generated.invert = arguments.has("-invert");
    generated.offset = session.time(arguments.decimal("-offset").value_or(Base::Decimal()));
    generated.phase = arguments.decimal("-phase").value_or(Base::Decimal());
    if (isLess(generated.phase, Base::Decimal::of(-360)) || isLess(Base::Decimal::of(360), generated.phase))
        arguments.failValue("-phase", "degrees from -360 to 360", arguments.find("-phase"));
}

void createGeneratedClock(Session& session, Words words) {
    static const Syntax syntax{{{"-source", Takes::objects},
                                {"-name", Takes::name},
                                {"-master_clock", Takes::objects},
                                {"-divide_by", Takes::integer},
                                {"-multiply_by", Takes::integer},
                                {"-edges", Takes::list},
                                {"-edge_shift", Takes::list},
                                {"-combinational"},
                                {"-duty_cycle", Takes::number},
                                {"-invert"},
                                {"-phase", Takes::number},
                                {"-offset", Takes::time},
                                {"-add"},
                                {"-comment", Takes::name}},
                               {Takes::objects}};
    const Arguments arguments(syntax, words);
    arguments.needsOne({"-source"});
    Design::GeneratedClock generated;
    readShape(session, arguments, generated);
    const std::vector<Design::PinId> source =
        session.sources(arguments, "-source", arguments.find("-source"));
    if (source.size() > 1)
        arguments.fail("-source: expected one port or pin, found " + std::to_string(source.size()));
    generated.source = source.front();
    if (arguments.has("-master_clock"))
        generated.master = session.one(arguments, "-master_clock", {Design::ObjectKind::clock}).clock();
    Design::Clock clock = named(session, arguments);
    clock.generated = std::move(generated);
    define(session, std::move(clock), arguments.has("-add"));
}

// --- Groups and PLLs ---

void setClockGroups(Session& session, Words words) {
    static const Syntax syntax{{{"-asynchronous"},
                                {"-logically_exclusive"},
                                {"-physically_exclusive"},
                                {"-exclusive"},
                                {"-name", Takes::name},
                                {"-group", Takes::objects, true},
                                {"-comment", Takes::name}},
                               {}};
    const Arguments arguments(syntax, words);
    arguments.needsOne({"-asynchronous", "-logically_exclusive", "-physically_exclusive", "-exclusive"});
    arguments.needsOne({"-group"});
    Design::ClockGroups groups;
    groups.name = arguments.text("-name");
    groups.origin = session.tcl.origin();
    std::size_t given = 0;
    for (const Arguments::Given& option : arguments.given()) {
        if (option.option != "-group")
            continue;
        ++given;
        std::vector<Design::ClockId> group;
        for (const Design::Object& object :
             session.resolve(arguments, "-group", option.value, {Design::ObjectKind::clock}))
            group.push_back(object.clock());
        if (!group.empty())
            groups.groups.push_back(std::move(group));
    }
    // A single group that is left of several must not be separate from all other clocks.
    if (groups.groups.empty() || (given > 1 && groups.groups.size() == 1))
        throw NoObjects{"set_clock_groups: -group: too few clocks"};
    session.result.clockGroups.push_back(std::move(groups));
}

void derivePllClocks(Session& session, Words words) {
    static const Syntax syntax{{{"-create_base_clocks"}, {"-use_net_name"}}, {}};
    const Arguments arguments(syntax, words);
    session.result.pllClocks.push_back(session.tcl.origin());
    session.warning("derive_pll_clocks: the parameters of PLLs are not read: no clock is made; expected "
                    "create_generated_clock for each PLL output");
}

} // namespace

void addClockCommands(Session& session) {
    session.add("create_clock", createClock);
    session.add("create_generated_clock", createGeneratedClock);
    session.add("set_clock_groups", setClockGroups);
    session.add("derive_pll_clocks", derivePllClocks);
}

} // namespace Readers::Sdc
