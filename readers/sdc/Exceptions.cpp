// set_false_path, set_multicycle_path, set_max_delay, set_min_delay, group_path: what stands between points,
// and what they ask of the paths there.
#include "readers/sdc/Session.h"

#include <algorithm>

namespace Readers::Sdc {

namespace {

constexpr Kinds ends = {Design::ObjectKind::clock, Design::ObjectKind::port, Design::ObjectKind::cell,
                        Design::ObjectKind::pin};
constexpr Kinds between = {Design::ObjectKind::port, Design::ObjectKind::pin, Design::ObjectKind::cell,
                           Design::ObjectKind::net};

Syntax withPoints(std::vector<Option> options, std::vector<Takes> arguments = {}) {
    const Option points[] = {{"-from", Takes::objects},
                             {"-rise_from", Takes::objects},
                             {"-fall_from", Takes::objects},
                             {"-to", Takes::objects},
                             {"-rise_to", Takes::objects},
                             {"-fall_to", Takes::objects},
                             {"-through", Takes::objects, true},
                             {"-rise_through", Takes::objects, true},
                             {"-fall_through", Takes::objects, true},
                             {"-comment", Takes::name}};
    options.insert(options.end(), std::begin(points), std::end(points));
    return {std::move(options), std::move(arguments)};
}

Design::Transition transitionOf(std::string_view option) {
    if (option.starts_with("-rise"))
        return Design::Transition::rise;
    return option.starts_with("-fall") ? Design::Transition::fall : Design::Transition::any;
}

Design::Points readPoints(Session& session, const Arguments& arguments, const Arguments::Given& given,
                          Kinds kinds) {
    Design::Points points{session.objects(arguments, given.option, given.value, kinds),
                          transitionOf(given.option)};
    std::ranges::sort(points.objects);
    return points;
}

// -rise and -fall are about the edge at the path's end.
void readEndEdge(const Arguments& arguments, Design::Exception& exception) {
    if (arguments.has("-rise") == arguments.has("-fall"))
        return;
    if (!exception.to)
        arguments.fail("-rise and -fall need -to");
    if (exception.to->transition == Design::Transition::any)
        exception.to->transition =
            arguments.has("-rise") ? Design::Transition::rise : Design::Transition::fall;
}

void readAllPoints(Session& session, const Arguments& arguments, Design::Exception& exception) {
    arguments.atMostOne({"-from", "-rise_from", "-fall_from"});
    arguments.atMostOne({"-to", "-rise_to", "-fall_to"});
    for (const Arguments::Given& given : arguments.given()) {
        if (given.option.ends_with("from"))
            exception.from = readPoints(session, arguments, given, ends);
        else if (given.option.ends_with("to"))
            exception.to = readPoints(session, arguments, given, ends);
        else if (given.option.ends_with("through"))
            exception.through.push_back(readPoints(session, arguments, given, between));
    }
    if (!exception.from && !exception.to && exception.through.empty())
        arguments.fail("needs -from, -through or -to");
    readEndEdge(arguments, exception);
}

void add(Session& session, const Arguments& arguments, Design::Exception exception) {
    exception.origin = session.tcl.origin();
    exception.text = describe(session, arguments.words());
    const Design::Exception bare = exception;
    try {
        readAllPoints(session, arguments, exception);
    } catch (const NoObjects&) {
        session.result.skippedExceptions.push_back({session.result.exceptions.size(), bare});
        throw;
    }
    session.result.exceptions.push_back(std::move(exception));
}

void readSides(const Arguments& arguments, Design::Exception& exception) {
    exception.flagged = arguments.has("-setup") || arguments.has("-hold");
    exception.setup = arguments.has("-setup") || !exception.flagged;
    exception.hold = arguments.has("-hold") || !exception.flagged;
}

void setFalsePath(Session& session, Words words) {
    static const Syntax syntax = withPoints({{"-setup"}, {"-hold"}, {"-rise"}, {"-fall"}});
    const Arguments arguments(syntax, words);
    Design::Exception exception;
    exception.kind = Design::Exception::Kind::falsePath;
    readSides(arguments, exception);
    add(session, arguments, std::move(exception));
}

void setMulticyclePath(Session& session, Words words) {
    static const Syntax syntax =
        withPoints({{"-setup"}, {"-hold"}, {"-rise"}, {"-fall"}, {"-start"}, {"-end"}}, {Takes::integer});
    const Arguments arguments(syntax, words);
    arguments.atMostOne({"-start", "-end"});
    Design::Exception exception;
    exception.kind = Design::Exception::Kind::multicycle;
    readSides(arguments, exception);
    exception.multiplier = arguments.integerArgument(0);
    constexpr int largest = 1'000'000;
    if (exception.multiplier < -largest || exception.multiplier > largest)
        arguments.failValue("", "a number of cycles", arguments.argument(0));
    if (arguments.has("-start") || arguments.has("-end"))
        exception.start = arguments.has("-start");
    add(session, arguments, std::move(exception));
}

void setDelayLimit(Session& session, Words words, Design::Exception::Kind kind) {
    static const Syntax syntax = withPoints({{"-rise"}, {"-fall"}, {"-ignore_clock_latency"}}, {Takes::time});
    const Arguments arguments(syntax, words);
    Design::Exception exception;
    exception.kind = kind;
    exception.setup = kind == Design::Exception::Kind::maxDelay;
    exception.hold = !exception.setup;
    exception.value = session.time(arguments.decimalArgument(0));
    exception.ignoreClockLatency = arguments.has("-ignore_clock_latency");
    add(session, arguments, std::move(exception));
}

void groupPath(Session& session, Words words) {
    static const Syntax syntax = withPoints(
        {{"-name", Takes::name}, {"-default"}, {"-weight", Takes::number}, {"-critical_range", Takes::time}});
    const Arguments arguments(syntax, words);
    arguments.needsOne({"-name", "-default"});
    arguments.atMostOne({"-name", "-default"});
    if (arguments.has("-weight") || arguments.has("-critical_range"))
        session.note("group_path: -weight and -critical_range are accepted, and not applied");
    Design::Exception exception;
    exception.kind = Design::Exception::Kind::pathGroup;
    exception.group = arguments.has("-default") ? "default" : arguments.text("-name");
    add(session, arguments, std::move(exception));
}

} // namespace

void addExceptionCommands(Session& session) {
    session.add("set_false_path", setFalsePath);
    session.add("set_multicycle_path", setMulticyclePath);
    session.add("set_max_delay", [](Session& self, Words words) {
        setDelayLimit(self, words, Design::Exception::Kind::maxDelay);
    });
    session.add("set_min_delay", [](Session& self, Words words) {
        setDelayLimit(self, words, Design::Exception::Kind::minDelay);
    });
    session.add("group_path", groupPath);
}

} // namespace Readers::Sdc
