// set_input_delay, set_output_delay.
#include "readers/sdc/Session.h"

namespace Readers::Sdc {

namespace {

const Syntax& portDelaySyntax() {
    static const Syntax syntax{{{"-clock", Takes::objects},
                                {"-clock_fall"},
                                {"-max"},
                                {"-min"},
                                {"-rise"},
                                {"-fall"},
                                {"-add_delay"},
                                {"-source_latency_included"},
                                {"-network_latency_included"},
                                {"-comment", Takes::name}},
                               {Takes::time, Takes::objects}};
    return syntax;
}

// Ports that go the other way get nothing, with a warning each.
bool fits(Session& session, const Arguments& arguments, Design::PinId port, bool input) {
    const Design::Direction direction = session.design.pins[port].direction;
    if (direction != (input ? Design::Direction::output : Design::Direction::input))
        return true;
    session.warning(arguments.command() + ": '" + session.design.pinName(port) + "' is no " +
                    (input ? "input" : "output") + ": it gets no delay");
    return false;
}

void setPortDelay(Session& session, Words words, bool input) {
    const Arguments arguments(portDelaySyntax(), words);
    if (!arguments.has("-clock"))
        for (const std::string_view option :
             {"-clock_fall", "-source_latency_included", "-network_latency_included"})
            if (arguments.has(option))
                arguments.fail(std::string(option) + " needs -clock");
    PortDelays::Setting setting;
    setting.entry.input = input;
    setting.entry.clockFall = arguments.has("-clock_fall");
    setting.entry.sourceLatencyIncluded = arguments.has("-source_latency_included");
    setting.entry.networkLatencyIncluded = arguments.has("-network_latency_included");
    setting.entry.origin = session.tcl.origin();
    setting.value = session.time(arguments.decimalArgument(0));
    setting.max = arguments.has("-max") || !arguments.has("-min");
    setting.min = arguments.has("-min") || !arguments.has("-max");
    setting.rise = arguments.has("-rise") || !arguments.has("-fall");
    setting.fall = arguments.has("-fall") || !arguments.has("-rise");
    setting.add = arguments.has("-add_delay");
    if (arguments.has("-clock"))
        setting.entry.clock = session.one(arguments, "-clock", {Design::ObjectKind::clock}).clock();
    for (const Design::Object& object :
         session.objects(arguments, "", arguments.argument(1), {Design::ObjectKind::port})) {
        setting.entry.pin = object.pin();
        if (fits(session, arguments, object.pin(), input))
            session.portDelays.set(setting);
    }
}

} // namespace

void addPortCommands(Session& session) {
    session.add("set_input_delay", [](Session& self, Words words) { setPortDelay(self, words, true); });
    session.add("set_output_delay", [](Session& self, Words words) { setPortDelay(self, words, false); });
}

} // namespace Readers::Sdc
