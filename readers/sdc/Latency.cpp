// set_clock_latency, set_propagated_clock, set_clock_uncertainty.
#include "readers/sdc/Session.h"

#include <algorithm>

namespace Readers::Sdc {

namespace {

constexpr Kinds clockOrSource = {Design::ObjectKind::clock, Design::ObjectKind::port,
                                 Design::ObjectKind::pin};

// The clocks that the value names: by themselves, or by a port or pin that they are defined on.
std::vector<Design::ClockId> clocksOf(Session& session, const Arguments& arguments, Tcl_Obj* value) {
    std::vector<Design::ClockId> clocks;
    for (const Design::Object& object : session.objects(arguments, "", value, clockOrSource)) {
        if (object.kind == Design::ObjectKind::clock) {
            clocks.push_back(object.clock());
            continue;
        }
        const std::vector<Design::ClockId> here = session.clocksOn(object.pin());
        clocks.insert(clocks.end(), here.begin(), here.end());
        if (here.empty())
            session.unmatched(arguments.command() + ": no clock is defined on '" +
                                  session.finder.name(object) + "'",
                              {Design::ObjectKind::clock});
    }
    if (clocks.empty())
        throw NoObjects{arguments.command() + ": no objects"};
    return clocks;
}

void put(EdgeLatency& latency, const Arguments& arguments, const Base::Decimal& value) {
    if (!arguments.has("-fall") || arguments.has("-rise"))
        latency.rise = value;
    if (!arguments.has("-rise") || arguments.has("-fall"))
        latency.fall = value;
}

std::optional<Base::Decimal> worse(const EdgeLatency& latency, bool largest) {
    if (!latency.rise || !latency.fall)
        return latency.rise ? latency.rise : latency.fall;
    return isLess(*latency.rise, *latency.fall) == largest ? latency.fall : latency.rise;
}

// The values of a clock's rising and falling edge may be given apart: the later one is late, the earlier one
// early.
Design::EarlyLate bounds(const ClockLatency& latency) {
    return {worse(latency.early, false), worse(latency.late, true)};
}

void setClockLatency(Session& session, Words words) {
    static const Syntax syntax{{{"-source"}, {"-early"}, {"-late"}, {"-min"}, {"-max"}, {"-rise"}, {"-fall"}},
                               {Takes::time, Takes::objects}};
    const Arguments arguments(syntax, words);
    const bool source = arguments.has("-source");
    const Base::Decimal value = session.time(arguments.decimalArgument(0));
    bool early = arguments.has("-early"), late = arguments.has("-late");
    if (!early && !late) {
        early = arguments.has("-min");
        late = arguments.has("-max");
    }
    if (!early && !late)
        early = late = true;
    for (const Design::ClockId index : clocksOf(session, arguments, arguments.argument(1))) {
        ClockLatency& latency = (source ? session.sourceLatency : session.networkLatency)[index];
        if (early)
            put(latency.early, arguments, value);
        if (late)
            put(latency.late, arguments, value);
        Design::Clock& clock = session.result.clocks[index];
        (source ? clock.sourceLatency : clock.networkLatency) = bounds(latency);
        if (!source)
            clock.propagated = false;
    }
}

void setPropagatedClock(Session& session, Words words) {
    static const Syntax syntax{{}, {Takes::objects}};
    const Arguments arguments(syntax, words);
    for (const Design::ClockId index : clocksOf(session, arguments, arguments.argument(0))) {
        session.networkLatency[index] = {};
        session.result.clocks[index].networkLatency = {};
        session.result.clocks[index].propagated = true;
    }
}

// --- Uncertainty ---

void put(Design::SetupHold& place, const Arguments& arguments, const Base::Decimal& value) {
    if (!arguments.has("-hold") || arguments.has("-setup"))
        place.setup = value;
    if (!arguments.has("-setup") || arguments.has("-hold"))
        place.hold = value;
}

void putOnPin(Session& session, const Arguments& arguments, Design::PinId pin, const Base::Decimal& value) {
    std::vector<Design::PinUncertainty>& all = session.result.pinUncertainties;
    const auto [known, isNew] = session.uncertaintyOfPin.try_emplace(pin, all.size());
    if (isNew)
        all.push_back({pin, {}, {}});
    put(all[known->second].value, arguments, value);
    all[known->second].origin = session.tcl.origin();
}

void putOnObject(Session& session, const Arguments& arguments, const Design::Object& object,
                 const Base::Decimal& value) {
    if (object.kind == Design::ObjectKind::clock) {
        put(session.result.clocks[object.clock()].uncertainty, arguments, value);
    } else if (object.kind == Design::ObjectKind::cell) {
        for (const Design::PinId pin : session.design.pinsOfCell(object.cell()))
            if (session.design.isClockPin(pin))
                putOnPin(session, arguments, pin, value);
    } else {
        putOnPin(session, arguments, object.pin(), value);
    }
}

void putBetween(Session& session, const Arguments& arguments, const std::vector<Design::Object>& from,
                const std::vector<Design::Object>& to, const Base::Decimal& value) {
    std::vector<Design::ClockPairUncertainty>& all = session.result.pairUncertainties;
    const Design::Origin origin = session.tcl.origin();
    for (const Design::Object& end : to)
        for (const Design::Object& start : from) {
            const auto [known, isNew] =
                session.uncertaintyOfPair.try_emplace(Base::pairKey(start.clock(), end.clock()), all.size());
            if (isNew)
                all.push_back({start.clock(), end.clock(), {}, {}});
            put(all[known->second].value, arguments, value);
            all[known->second].origin = origin;
        }
}

// The one of an option's three forms that is given: the option itself, or for one edge only; null for none.
const Arguments::Given* givenForm(const Arguments& arguments, std::initializer_list<std::string_view> forms) {
    for (const Arguments::Given& given : arguments.given())
        if (std::ranges::find(forms, given.option) != forms.end())
            return &given;
    return nullptr;
}

void setClockUncertainty(Session& session, Words words) {
    static const Syntax syntax{{{"-setup"},
                                {"-hold"},
                                {"-rise"},
                                {"-fall"},
                                {"-from", Takes::objects},
                                {"-rise_from", Takes::objects},
                                {"-fall_from", Takes::objects},
                                {"-to", Takes::objects},
                                {"-rise_to", Takes::objects},
                                {"-fall_to", Takes::objects}},
                               {Takes::number, Takes::objects},
                               1};
    const Arguments arguments(syntax, words);
    arguments.atMostOne({"-from", "-rise_from", "-fall_from"});
    arguments.atMostOne({"-to", "-rise_to", "-fall_to"});
    const Base::Decimal value = session.time(arguments.decimalArgument(0));
    const Arguments::Given* const from = givenForm(arguments, {"-from", "-rise_from", "-fall_from"});
    const Arguments::Given* const to = givenForm(arguments, {"-to", "-rise_to", "-fall_to"});
    const bool pair = from != nullptr || to != nullptr;
    if (pair && (from == nullptr || to == nullptr))
        arguments.fail("-from and -to go together");
    if (pair == (arguments.argument(1) != nullptr))
        arguments.fail(pair ? "objects do not go with -from and -to" : "needs objects, or -from and -to");
    const bool oneEdge = arguments.has("-rise") != arguments.has("-fall");
    if (oneEdge || (pair && (from->option != "-from" || to->option != "-to")))
        session.warning(
            "set_clock_uncertainty: a clock's edges are not told apart: the value holds for both");
    if (!pair) {
        for (const Design::Object& object :
             session.objects(arguments, "", arguments.argument(1),
                             {Design::ObjectKind::clock, Design::ObjectKind::port, Design::ObjectKind::pin,
                              Design::ObjectKind::cell}))
            putOnObject(session, arguments, object, value);
        return;
    }
    const std::vector<Design::Object> starts =
        session.objects(arguments, from->option, from->value, {Design::ObjectKind::clock});
    const std::vector<Design::Object> ends =
        session.objects(arguments, to->option, to->value, {Design::ObjectKind::clock});
    putBetween(session, arguments, starts, ends, value);
}

} // namespace

void addLatencyCommands(Session& session) {
    session.add("set_clock_latency", setClockLatency);
    session.add("set_propagated_clock", setPropagatedClock);
    session.add("set_clock_uncertainty", setClockUncertainty);
}

} // namespace Readers::Sdc
