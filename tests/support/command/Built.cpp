#include "tests/support/command/Built.h"

#include "readers/sdc/Reader.h"
#include "tests/support/command/InputFile.h"

#include <algorithm>
#include <set>

namespace Support {

using namespace Readers;
using namespace Model;

Built::Built(std::string_view cells, const std::string& script, std::optional<std::string_view> netlist,
             const LoopLimits& limits)
    : annotated(cells, netlist) {
    const InputFile file(script);
    Base::Source source(file.path());
    Base::Diagnostics ofScript;
    Sdc::Reader reader(annotated.design, ofScript);
    reader.read(source);
    constraints = reader.take();
    EXPECT_TRUE(ofScript.all().empty()) << toString(ofScript.all().front());
    std::vector<Design::PinId> sources;
    for (const Design::Clock& clock : constraints.clocks)
        if (!clock.removed)
            sources.insert(sources.end(), clock.targets.begin(), clock.targets.end());
    network = std::make_unique<Network>(annotated.design, constraints, sources, diagnostics_, limits);
    clocks = std::make_unique<Clocks>(annotated.design, *network, constraints, ClockOptions{}, diagnostics_);
}

std::string buildErrorOf(std::string_view cells, const std::string& script) {
    try {
        Built(cells, script).poles();
    } catch (const Base::BadInput& bad) {
        const Base::Place& place = bad.diagnostic().place;
        return (place.line == 0 ? "" : std::to_string(place.line) + ": ") + bad.diagnostic().text;
    }
    return "no error";
}

const Clock& Built::clock(std::string_view name) const {
    for (const Clock& clock : clocks->all())
        if (clock.name == name && !clock.removed)
            return clock;
    throw std::out_of_range("no clock " + std::string(name));
}

std::string Built::arcs() const {
    static const char* const kinds[] = {"", " launch", " hidden", " cut"};
    static const char* const edges[] = {"", " rise", " fall"};
    std::string text;
    for (const Arc& arc : network->arcs())
        text += network->nameOf(arc.from) + " > " + network->nameOf(arc.to) + " " +
                std::to_string(arc.delay.early) + " " + std::to_string(arc.delay.late) +
                kinds[static_cast<int>(arc.kind)] + edges[static_cast<int>(arc.edge)] + "\n";
    return text;
}

std::string Built::paths() const {
    struct Path {
        Model::NodeId node;
        std::string text;
    };
    std::vector<Path> open;
    std::set<std::string> found;
    const auto isThrough = [&](Model::ArcId arc) {
        return network->arcs()[arc].kind == Model::ArcKind::through;
    };
    for (const Model::NodeId node : Base::firstIds<Model::NodeId>(network->size()))
        if (std::ranges::none_of(network->in(node), isThrough) &&
            !std::ranges::none_of(network->out(node), isThrough))
            open.push_back({node, network->nameOf(node)});
    while (!open.empty()) {
        const Path path = open.back();
        open.pop_back();
        for (const Model::ArcId number : network->out(path.node))
            if (isThrough(number)) {
                const Model::NodeId to = network->arcs()[number].to;
                open.push_back({to, path.text + " " + network->nameOf(to)});
                if (annotated.design.isPort(network->pinOf(to)))
                    found.insert(open.back().text);
            }
    }
    std::string text;
    for (const std::string& path : found)
        text += path + "\n";
    return text;
}

std::string Built::waves() const {
    std::string text;
    for (const Clock& clock : clocks->all()) {
        if (clock.removed)
            continue;
        text += clock.name + ": " + std::to_string(clock.period) + " {" + std::to_string(clock.rise) + " " +
                std::to_string(clock.fall) + "}" +
                (clock.master != Base::none ? " of " + (*clocks)[clock.master].name : "");
        for (std::size_t target = 0; target < clock.targets.size(); ++target)
            text += " at " + network->nameOf(clock.targets[target]) + " " +
                    std::to_string(clock.insertion[target].early) + " " +
                    std::to_string(clock.insertion[target].late);
        text += "\n";
    }
    return text;
}

std::string Built::reach(std::string_view name) const {
    std::set<std::string> names;
    for (const Model::NodeId node : clock(name).reached)
        names.insert(network->nameOf(node));
    std::string text;
    for (const std::string& reached : names)
        text += (text.empty() ? "" : " ") + reached;
    return text;
}

std::string Built::messages() const {
    std::string text;
    for (const Base::Diagnostic& diagnostic : diagnostics_.all())
        text += (diagnostic.place.line == 0 ? "" : std::to_string(diagnostic.place.line) + ": ") +
                std::string(Base::toString(diagnostic.severity)) + ": " + diagnostic.text + "\n";
    return text;
}

std::string Built::poles(const std::unordered_set<Design::PinId>& timedPorts) {
    constexpr int picoseconds = -12;
    const Design::RoutedDesign& design = annotated.design;
    Model::TimedPorts timed;
    for (const Design::PinId port : timedPorts) {
        if (design.pins[port].direction != Design::Direction::output)
            timed.inputs.insert(port);
        if (design.pins[port].direction != Design::Direction::input)
            timed.outputs.insert(port);
    }
    const TimingModel model(design, *network, *clocks, constraints, timed, picoseconds, diagnostics_);
    const auto edge = [](bool rise) { return rise ? " rise" : " fall"; };
    std::set<std::string> starts, ends;
    for (const Start& start : model.starts())
        starts.insert(design.pinName(start.pin) + edge(start.rise) +
                      (start.kind == Start::Kind::clockSource ? " source" : ""));
    for (const End& end : model.ends())
        ends.insert(design.pinName(end.pin) + (end.isPort() ? "" : " by " + design.pinName(end.clockPin)) +
                    edge(end.rise));
    std::string text = "starts:";
    for (const std::string& start : starts)
        text += " " + start + ",";
    text += " ends:";
    for (const std::string& end : ends)
        text += " " + end + ",";
    std::set<std::string> unclocked;
    for (const Design::PinId pin : model.unclocked())
        unclocked.insert(design.pinName(pin));
    text += unclocked.empty() ? "" : " unclocked:";
    for (const std::string& pin : unclocked)
        text += " " + pin + ",";
    return text;
}

} // namespace Support
