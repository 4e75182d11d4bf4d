// The same design as another netlist: of another kind, in another order, with other names, or with parts that
// have no effect.
#include "Relation.h"
#include "Rewrite.h"
#include "Text.h"

#include "Clocks.h"

#include <algorithm>

namespace Metamorphic {

namespace {

using Brute::Random;

// Designs that every kind of netlist can represent.
Brute::Shape plain() {
    Brute::Shape shape;
    shape.pads = shape.bareWires = false;
    return shape;
}

bool asVerilog(Case& c) {
    c.netlist = NetlistKind::verilog;
    return true;
}

// Delays name no nets, and ports that no delay names do not exist: without a netlist, constraints on them
// would be lost.
bool isAllInDelays(Case& c) {
    for (const Brute::Exception& e : c.design.exceptions)
        for (const std::vector<Brute::Object>& group : e.through)
            for (const Brute::Object& object : group)
                if (object.kind == Brute::Object::Kind::net)
                    return false;
    std::set<int> named;
    for (const Brute::Arc& arc : c.design.arcs)
        named.insert(arc.from), named.insert(arc.to);
    for (std::size_t pin = 0; pin < c.design.pins.size(); ++pin)
        if (c.design.pins[pin].cell == Brute::none && !named.contains(static_cast<int>(pin)))
            return false;
    return true;
}

bool withoutNetlist(Case& c) {
    c.netlist = NetlistKind::none;
    return true;
}

void shuffleMembers(nlohmann::ordered_json& object, Random& random) {
    std::vector<std::pair<std::string, nlohmann::ordered_json>> members;
    for (const auto& [key, value] : object.items())
        members.emplace_back(key, value);
    shuffle(members, random);
    object = nlohmann::ordered_json::object();
    for (const auto& [key, value] : members)
        object[key] = value;
}

void netlistInAnotherOrder(Files& files, Random& random) {
    auto netlist = nlohmann::ordered_json::parse(files.netlist);
    auto& top = netlist["modules"].front();
    for (const char* part : {"cells", "netnames", "ports"})
        shuffleMembers(top[part], random);
    for (auto& cell : top["cells"])
        for (const char* part : {"connections", "port_directions"})
            shuffleMembers(cell[part], random);
    shuffleMembers(top, random);
    files.netlist = netlist.dump(random.chance(50) ? -1 : 4);
}

void besideAnotherModule(Files& files, Random& random) {
    auto netlist = nlohmann::ordered_json::parse(files.netlist);
    auto& modules = netlist["modules"];
    nlohmann::ordered_json other = modules["top"];
    other["attributes"] = nlohmann::ordered_json::object();
    modules["other"] = other;
    modules["top"]["attributes"] = nlohmann::ordered_json::object();
    shuffleMembers(modules, random);
    files.netlist = netlist.dump();
    files.top = "top";
}

// Names a clock's port by the net that it drives. The driver of a pad's net is the pad's own pin as well.
void clocksOfNets(Files& files, Random&) {
    const auto netlist = nlohmann::json::parse(files.netlist);
    const auto& top = netlist["modules"]["top"];
    std::string text;
    for (std::string line : lines(files.sdc.front())) {
        const std::string query = "[get_ports {";
        const std::size_t begin = line.find(query), end = line.find("}]", begin);
        if (line.starts_with("create_clock ") && begin != std::string::npos) {
            const std::string name = line.substr(begin + query.size(), end - begin - query.size());
            for (const auto& [net, value] : top["netnames"].items())
                if (top["ports"].contains(name) && value["bits"] == top["ports"][name]["bits"])
                    line.replace(begin, end + 2 - begin, "[get_nets " + net + "]");
        }
        text += line + "\n";
    }
    files.sdc.front() = text;
}

void verilogWithAttributes(Files& files, Random& random) {
    std::string text = "`timescale 1ns/1ps\n";
    for (const std::string& line : lines(files.netlist)) {
        if (line.starts_with("  ") && random.chance(30))
            text += "(* keep = 1, src = \"a.v:1\" *) // endmodule\r\n/* module x(\n */ ";
        text += line + "\n";
    }
    files.netlist = text;
}

// --- Names ---

bool renamedCells(Case& c) {
    const std::vector<std::string> forms{"u.#",      "$auto$x.cc:12:run$#", "x#[3]", "a-#", "_#_", "gen:#",
                                         "\xc3\xa4#"};
    int number = static_cast<int>(c.design.cells.size());
    for (Brute::Cell& cell : c.design.cells) {
        const std::string name = replaced(c.random.of(forms), "#", std::to_string(--number));
        c.names[name] = cell.name;
        cell.name = name;
    }
    return true;
}

bool renamedNets(Case& c) {
    int number = 1000;
    for (Brute::Net& net : c.design.nets)
        net.name = (c.random.chance(50) ? "w" : "r0.n$") + std::to_string(--number);
    return true;
}

bool partInModules(Case& c) {
    c.hierarchy = c.random.chance(50) ? "h/" : "outer/h/";
    for (Brute::Cell& cell : c.design.cells)
        if (c.random.chance(50)) {
            c.names[c.hierarchy + cell.name] = cell.name;
            cell.name = c.hierarchy + cell.name;
        }
    const auto isInside = [&](int pin) {
        const int cell = c.design.pins[static_cast<std::size_t>(pin)].cell;
        return cell != Brute::none &&
               c.design.cells[static_cast<std::size_t>(cell)].name.starts_with(c.hierarchy);
    };
    for (Brute::Net& net : c.design.nets)
        if (isInside(net.driver) && std::ranges::all_of(net.sinks, isInside))
            net.name = c.hierarchy + net.name;
    return !c.names.empty();
}

// --- Additions ---

bool unrelatedDomain(Case& c) {
    Builder build(c.design);
    const int clk = build.port("unrelated", Brute::Direction::input);
    const Builder::Register first = build.addRegister("x0"), second = build.addRegister("x1");
    build.wire(clk, first.clock, 100), build.wire(clk, second.clock, 150);
    build.wire(first.out, second.data, 1200), build.wire(second.out, first.data, 30000);
    Brute::Clock clock;
    clock.name = "unrelated_clock";
    clock.period = 10000, clock.fall = 5000;
    clock.targets = {clk};
    c.design.clocks.push_back(clock);
    return true;
}

} // namespace

std::vector<Relation> netlistRelations() {
    return {
        {.name = "VerilogInsteadOfJson",
         .shape = plain(),
         .change = asVerilog,
         .holds = same({"diagnostics"})},
        {.name = "NoNetlist",
         .shape = plain(),
         .prepare = isAllInDelays,
         .change = withoutNetlist,
         .holds = sameSlacks()},
        {.name = "NetlistInAnotherOrder", .rewrite = netlistInAnotherOrder, .holds = same({"diagnostics"})},
        {.name = "ClocksOfNets", .shape = plain(), .rewrite = clocksOfNets, .holds = same({"diagnostics"})},
        {.name = "BesideAnotherModule", .rewrite = besideAnotherModule, .holds = same()},
        {.name = "VerilogWithAttributes",
         .shape = plain(),
         .prepare = asVerilog,
         .rewrite = verilogWithAttributes,
         .holds = same()},
        {.name = "RenamedCells", .change = renamedCells, .holds = sameEndsRenamed()},
        {.name = "RenamedNets", .change = renamedNets, .holds = same({"text"})},
        {.name = "PartInModules",
         .shape = plain(),
         .prepare = asVerilog,
         .change = partInModules,
         .holds = sameEndsRenamed()},
        {.name = "UnrelatedDomain", .change = unrelatedDomain, .holds = othersAdded()},
    };
}

} // namespace Metamorphic
