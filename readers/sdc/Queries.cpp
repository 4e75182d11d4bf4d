// get_clocks, get_ports, get_pins, get_cells, get_nets, all_clocks, all_inputs, all_outputs, all_registers.
#include "readers/sdc/Filter.h"
#include "readers/sdc/Objects.h"
#include "readers/sdc/Session.h"

#include <algorithm>
#include <unordered_set>

namespace Readers::Sdc {

namespace {

const Syntax& querySyntax() {
    static const Syntax syntax{{{"-regexp"},
                                {"-nocase"},
                                {"-exact"},
                                {"-quiet"},
                                {"-hierarchical"},
                                {"-hsc", Takes::name},
                                {"-filter", Takes::name},
                                {"-of_objects", Takes::objects}},
                               {Takes::objects},
                               1};
    return syntax;
}

void addPatterns(Session& session, const Arguments& arguments, Design::ObjectKind kind, Tcl_Obj* patterns,
                 std::vector<Design::Object>& found) {
    const FindOptions options{arguments.has("-regexp"), arguments.has("-nocase"),
                              arguments.has("-hierarchical")};
    for (Tcl_Obj* const element : elementsOf(patterns)) {
        const std::optional<Design::Object> object = session.finder.toKnown(element);
        if (object && object->kind != kind)
            arguments.fail("expected a " + std::string(kindName(kind)) + ", found the " +
                           std::string(kindName(object->kind)) + " '" + session.finder.name(*object) + "'");
        const std::size_t before = found.size();
        if (object && session.finder.exists(*object))
            found.push_back(*object);
        else if (arguments.has("-exact"))
            session.finder.findExact(kind, Tcl_GetString(element), found);
        else if (!object)
            session.finder.find(kind, Tcl_GetString(element), options, found);
        if (found.size() == before && !arguments.has("-quiet"))
            session.unmatched(arguments.command() + ": no " + std::string(kindName(kind)) + " matches '" +
                                  (object ? session.finder.name(*object) : Tcl_GetString(element)) + "'",
                              {kind});
    }
}

// --- -of_objects ---

void addPinsOf(const Session& session, const Design::Object& object, bool ports,
               std::vector<Design::Object>& found) {
    const auto add = [&](Design::PinId pin) {
        if (ports ? session.design.isPort(pin) : !session.design.isPortOfTop(pin))
            found.push_back({ports ? Design::ObjectKind::port : Design::ObjectKind::pin, pin});
    };
    if (object.kind == Design::ObjectKind::cell)
        std::ranges::for_each(session.design.pinsOfCell(object.cell()), add);
    else if (object.kind == Design::ObjectKind::net)
        std::ranges::for_each(session.design.pinsOfNet(object.net()), add);
    else if (object.kind == Design::ObjectKind::clock)
        std::ranges::for_each(session.result.clocks[object.clock()].targets, add);
    else
        add(object.pin());
}

void addNetsOf(const Session& session, const Design::Object& object, std::vector<Design::Object>& found) {
    const auto add = [&](Design::PinId pin) {
        if (const Design::NetId net = session.design.pins[pin].net; net != Base::none)
            found.emplace_back(net);
    };
    if (object.kind == Design::ObjectKind::cell)
        std::ranges::for_each(session.design.pinsOfCell(object.cell()), add);
    else
        add(object.pin());
}

void addCellsOf(const Session& session, const Design::Object& object, std::vector<Design::Object>& found) {
    const auto add = [&](Design::PinId pin) {
        if (!session.design.isPortOfTop(pin))
            found.emplace_back(session.design.pins[pin].cell);
    };
    if (object.kind == Design::ObjectKind::net)
        std::ranges::for_each(session.design.pinsOfNet(object.net()), add);
    else
        add(object.pin());
}

void addClocksOf(const Session& session, const Design::Object& object, std::vector<Design::Object>& found) {
    for (const Design::ClockId clock : session.clocksOn(object.pin()))
        found.emplace_back(clock);
}

Kinds sourcesOf(Design::ObjectKind kind) {
    static constexpr Kinds ofPins = {Design::ObjectKind::cell, Design::ObjectKind::net,
                                     Design::ObjectKind::clock},
                           ofPorts = {Design::ObjectKind::net, Design::ObjectKind::clock,
                                      Design::ObjectKind::port},
                           ofNets = {Design::ObjectKind::port, Design::ObjectKind::pin,
                                     Design::ObjectKind::cell},
                           ofCells = {Design::ObjectKind::pin, Design::ObjectKind::net},
                           ofClocks = {Design::ObjectKind::port, Design::ObjectKind::pin};
    switch (kind) {
    case Design::ObjectKind::port:
        return ofPorts;
    case Design::ObjectKind::pin:
        return ofPins;
    case Design::ObjectKind::net:
        return ofNets;
    case Design::ObjectKind::cell:
        return ofCells;
    case Design::ObjectKind::clock:
        break;
    }
    return ofClocks;
}

void addRelated(Session& session, const Arguments& arguments, Design::ObjectKind kind,
                std::vector<Design::Object>& found) {
    Tcl_Obj* const value = arguments.find("-of_objects");
    for (const Design::Object& object : session.resolve(arguments, "-of_objects", value, sourcesOf(kind))) {
        if (kind == Design::ObjectKind::port || kind == Design::ObjectKind::pin)
            addPinsOf(session, object, kind == Design::ObjectKind::port, found);
        else if (kind == Design::ObjectKind::net)
            addNetsOf(session, object, found);
        else if (kind == Design::ObjectKind::cell)
            addCellsOf(session, object, found);
        else
            addClocksOf(session, object, found);
    }
}

// --- Commands ---

void query(Session& session, Words words, Design::ObjectKind kind) {
    const Arguments arguments(querySyntax(), words);
    const bool related = arguments.has("-of_objects");
    std::vector<Design::Object> found;
    if (related && arguments.argument(0) != nullptr)
        arguments.fail("patterns do not go with -of_objects");
    if (related)
        addRelated(session, arguments, kind, found);
    else if (arguments.argument(0) != nullptr)
        addPatterns(session, arguments, kind, arguments.argument(0), found);
    else
        session.finder.find(kind, "*", {}, found);
    removeDuplicates(found);
    if (arguments.has("-filter") && !found.empty()) {
        const Filter filter(arguments.text("-filter"));
        std::erase_if(found, [&](const Design::Object& object) {
            return !filter.accepts(session.design, session.result.clocks, object);
        });
        if (found.empty() && !arguments.has("-quiet"))
            session.unmatched(arguments.command() + ": no " + std::string(kindName(kind)) +
                              " passes the filter '" + arguments.text("-filter") + "'");
    }
    session.tcl.setResult(newCollection(found));
}

void allClocks(Session& session, Words words) {
    static const Syntax syntax{{}, {}};
    const Arguments arguments(syntax, words);
    std::vector<Design::Object> found;
    session.finder.find(Design::ObjectKind::clock, "*", {}, found);
    session.tcl.setResult(newCollection(found));
}

void allPorts(Session& session, Words words, Design::Direction direction) {
    static const Syntax syntax{{{"-no_clocks"}}, {}};
    const Arguments arguments(syntax, words);
    std::unordered_set<Design::PinId> left;
    if (arguments.has("-no_clocks"))
        for (const Design::Clock& clock : session.result.clocks)
            left.insert(clock.targets.begin(), clock.targets.end());
    std::vector<Design::Object> found;
    for (const Design::PinId port : session.design.ports()) {
        const Design::Direction is = session.design.pins[port].direction;
        if ((is == direction || is == Design::Direction::inout) && !left.contains(port))
            found.push_back({Design::ObjectKind::port, port});
    }
    session.tcl.setResult(newCollection(found));
}

void allRegisters(Session& session, Words words) {
    static const Syntax syntax{{{"-cells"},
                                {"-data_pins"},
                                {"-clock_pins"},
                                {"-output_pins"},
                                {"-edge_triggered"},
                                {"-clock", Takes::objects}},
                               {}};
    const Arguments arguments(syntax, words);
    if (arguments.has("-clock"))
        arguments.fail(
            "-clock is not supported: what a clock reaches is not known while constraints are read");
    const Design::RoutedDesign& design = session.design;
    const bool data = arguments.has("-data_pins"), clock = arguments.has("-clock_pins"),
               output = arguments.has("-output_pins");
    const bool cells = arguments.has("-cells") || (!data && !clock && !output);
    std::vector<Design::Object> found;
    for (const Design::CellId cell : design.cells.ids()) {
        if (!design.isRegister(cell))
            continue;
        if (cells)
            found.emplace_back(cell);
        for (const Design::PinId pin : design.pinsOfCell(cell))
            if ((data && design.isDataPin(pin)) || (clock && design.isClockPin(pin)) ||
                (output && design.isRegisterOutput(pin)))
                found.push_back({Design::ObjectKind::pin, pin});
    }
    session.tcl.setResult(newCollection(found));
}

} // namespace

void addQueryCommands(Session& session) {
    session.add("get_ports",
                [](Session& self, Words words) { query(self, words, Design::ObjectKind::port); });
    session.add("get_pins", [](Session& self, Words words) { query(self, words, Design::ObjectKind::pin); });
    session.add("get_cells",
                [](Session& self, Words words) { query(self, words, Design::ObjectKind::cell); });
    session.add("get_nets", [](Session& self, Words words) { query(self, words, Design::ObjectKind::net); });
    session.add("get_clocks",
                [](Session& self, Words words) { query(self, words, Design::ObjectKind::clock); });
    session.add("all_clocks", allClocks);
    session.add("all_inputs",
                [](Session& self, Words words) { allPorts(self, words, Design::Direction::input); });
    session.add("all_outputs",
                [](Session& self, Words words) { allPorts(self, words, Design::Direction::output); });
    session.add("all_registers", allRegisters);
}

} // namespace Readers::Sdc
