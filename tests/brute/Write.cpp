#include "Write.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>
#include <sstream>

namespace Brute {

namespace {

std::size_t at(int index) { return static_cast<std::size_t>(index); }

bool isPlain(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

// --- SDF ---

std::string escaped(const std::string& name) {
    std::string text;
    for (char c : name) {
        if (!isPlain(c) && c != '/' && c != '[' && c != ']')
            text += '\\';
        text += c;
    }
    return text;
}

std::string text(const Triple& t) {
    return "(" + std::to_string(t.minimum) + ":" + std::to_string(t.typical) + ":" +
           std::to_string(t.maximum) + ")";
}

std::string text(const Values& values) {
    std::string sum;
    for (const Triple& t : values)
        sum += (sum.empty() ? "" : " ") + text(t);
    return sum;
}

std::string onEdge(Edge edge, const std::string& pin) {
    if (edge == Edge::any)
        return pin;
    return (edge == Edge::rise ? "(posedge " : "(negedge ") + pin + ")";
}

void writeCheck(std::ostringstream& out, const Design& d, const Check& c) {
    const std::string events =
        onEdge(c.dataEdge, d.pins[at(c.data)].name) + " " + onEdge(c.clockEdge, d.pins[at(c.clock)].name);
    const char* word = c.asynchronous ? (c.setup && c.hold ? "RECREM"
                                         : c.setup         ? "RECOVERY"
                                                           : "REMOVAL")
                                      : (c.setup && c.hold ? "SETUPHOLD"
                                         : c.setup         ? "SETUP"
                                                           : "HOLD");
    out << "      (" << word << " " << events;
    for (const std::optional<Triple>& value : {c.setup, c.hold})
        if (value)
            out << " " << text(*value);
    out << ")\n";
}

void writeCell(std::ostringstream& out, const Design& d, int index) {
    const Cell& cell = d.cells[at(index)];
    out << "  (CELL\n    (CELLTYPE \"" << cell.type << "\")\n    (INSTANCE " << escaped(cell.name) << ")\n";
    std::ostringstream delays, checks;
    for (const Arc& a : d.arcs)
        if (a.kind != Arc::Kind::wire && d.pins[at(a.from)].cell == index && !a.values.empty())
            delays << "        (IOPATH " << onEdge(a.edge, d.pins[at(a.from)].name) << " "
                   << d.pins[at(a.to)].name << " " << text(a.values) << ")\n";
    for (const Check& c : d.checks)
        if (d.pins[at(c.data)].cell == index)
            writeCheck(checks, d, c);
    if (!delays.str().empty())
        out << "    (DELAY\n      (ABSOLUTE\n" << delays.str() << "      )\n    )\n";
    if (!checks.str().empty())
        out << "    (TIMINGCHECK\n" << checks.str() << "    )\n";
    out << "  )\n";
}

// --- SDC ---

class SdcWriter {
public:
    explicit SdcWriter(const Design& design) : d_(design) {}

    std::string run() {
        for (std::size_t i = 0; i < d_.clocks.size(); ++i) {
            clock(d_.clocks[i]);
            for (const PortDelay& p : d_.portDelays)
                if (p.early && p.clock == static_cast<int>(i))
                    portDelay(p);
        }
        for (const Latency& l : d_.latencies)
            latency(l);
        for (const Uncertainty& u : d_.uncertainties)
            uncertainty(u);
        for (const ClockGroups& g : d_.clockGroups)
            groups(g);
        for (const PortDelay& p : d_.portDelays)
            if (!p.early)
                portDelay(p);
        for (const Disable& v : d_.disables)
            disable(v);
        for (const CaseValue& c : d_.caseValues)
            out_ << "set_case_analysis " << (c.value ? 1 : 0) << " " << pin(c.port) << "\n";
        for (const Exception& e : d_.exceptions)
            exception(e);
        return out_.str();
    }

private:
    std::string pin(int index) const {
        return std::string(d_.isPort(index) ? "[get_ports {" : "[get_pins {") + d_.pinName(index) + "}]";
    }
    std::string clockNames(const std::vector<int>& clocks) const {
        std::string names;
        for (int c : clocks)
            names += (names.empty() ? "" : " ") + d_.clocks[at(c)].name;
        return "[get_clocks {" + names + "}]";
    }

    std::string one(const Object& o) const {
        switch (o.kind) {
        case Object::Kind::clock:
            return d_.clocks[at(o.index)].name;
        case Object::Kind::cell:
            return d_.cells[at(o.index)].name;
        case Object::Kind::net:
            return d_.nets[at(o.index)].name;
        default:
            return d_.pinName(o.index);
        }
    }

    // One query per kind of object; a list of queries if there are several kinds.
    std::string list(const std::vector<Object>& objects) const {
        static const std::map<Object::Kind, std::string> queries{{Object::Kind::clock, "get_clocks"},
                                                                 {Object::Kind::port, "get_ports"},
                                                                 {Object::Kind::pin, "get_pins"},
                                                                 {Object::Kind::cell, "get_cells"},
                                                                 {Object::Kind::net, "get_nets"}};
        std::map<Object::Kind, std::string> names;
        for (const Object& o : objects)
            names[o.kind] += (names[o.kind].empty() ? "" : " ") + one(o);
        std::string text;
        for (const auto& [kind, these] : names)
            text += (text.empty() ? "[" : " [") + queries.at(kind) + " {" + these + "}]";
        return names.size() == 1 ? text : "[list " + text + "]";
    }

    void targets(const Clock& c) {
        if (c.add)
            out_ << " -add";
        std::vector<Object> objects;
        for (int target : c.targets)
            objects.push_back({d_.isPort(target) ? Object::Kind::port : Object::Kind::pin, target});
        if (!objects.empty())
            out_ << " " << list(objects);
        out_ << "\n";
    }

    void clock(const Clock& c) {
        if (c.generated) {
            generated(c, *c.generated);
            return;
        }
        out_ << "create_clock -name " << c.name << " -period " << nanoseconds(c.period);
        if (c.waveform)
            out_ << " -waveform {" << nanoseconds(c.rise) << " " << nanoseconds(c.fall) << "}";
        targets(c);
    }

    void generated(const Clock& c, const Generated& g) {
        out_ << "create_generated_clock -name " << c.name << " -source " << pin(g.source);
        if (g.master != none)
            out_ << " -master_clock " << clockNames({g.master});
        if (g.kind == Generated::Kind::edges) {
            out_ << " -edges {" << g.edges[0] << " " << g.edges[1] << " " << g.edges[2] << "}";
            if (g.edgeShift) {
                const std::string shift = nanoseconds(*g.edgeShift);
                out_ << " -edge_shift {" << shift << " " << shift << " " << shift << "}";
            }
        } else {
            out_ << (g.kind == Generated::Kind::divide ? " -divide_by " : " -multiply_by ") << g.factor;
        }
        if (g.dutyCycle)
            out_ << " -duty_cycle " << *g.dutyCycle;
        if (g.invert)
            out_ << " -invert";
        if (g.offset)
            out_ << " -offset " << nanoseconds(g.offset);
        if (g.phase)
            out_ << " -phase " << g.phase;
        targets(c);
    }

    void latency(const Latency& l) {
        if (l.kind == Latency::Kind::propagated) {
            out_ << "set_propagated_clock " << clockNames({l.clock}) << "\n";
            return;
        }
        out_ << "set_clock_latency" << (l.kind == Latency::Kind::source ? " -source" : "")
             << (!l.late   ? ""
                 : *l.late ? " -late"
                           : " -early")
             << " " << nanoseconds(l.value) << " " << clockNames({l.clock}) << "\n";
    }

    static std::string sideFlag(const std::optional<bool>& setup) {
        return !setup ? "" : *setup ? " -setup" : " -hold";
    }

    void uncertainty(const Uncertainty& u) {
        out_ << "set_clock_uncertainty" << sideFlag(u.setup) << " " << nanoseconds(u.value);
        if (u.from == none)
            out_ << " " << clockNames({u.to}) << "\n";
        else
            out_ << " -from " << clockNames({u.from}) << " -to " << clockNames({u.to}) << "\n";
    }

    void groups(const ClockGroups& g) {
        out_ << "set_clock_groups " << g.option;
        for (const std::vector<int>& group : g.groups)
            out_ << " -group " << clockNames(group);
        out_ << "\n";
    }

    void portDelay(const PortDelay& p) {
        out_ << (p.input ? "set_input_delay " : "set_output_delay ") << nanoseconds(p.value);
        if (p.clock != none)
            out_ << " -clock " << clockNames({p.clock});
        out_ << (p.fall ? " -clock_fall" : "")
             << (!p.maximum   ? ""
                 : *p.maximum ? " -max"
                              : " -min")
             << (p.add ? " -add_delay" : "") << (p.sourceIncluded ? " -source_latency_included" : "")
             << (p.networkIncluded ? " -network_latency_included" : "") << " " << pin(p.port) << "\n";
    }

    void disable(const Disable& v) {
        out_ << "set_disable_timing" << (v.from.empty() ? "" : " -from " + v.from)
             << (v.to.empty() ? "" : " -to " + v.to) << " " << list({v.object}) << "\n";
    }

    void exception(const Exception& e) {
        using Kind = Exception::Kind;
        const char* words[]{"set_false_path", "set_multicycle_path", "set_max_delay", "set_min_delay"};
        const bool delay = e.kind == Kind::maximumDelay || e.kind == Kind::minimumDelay;
        out_ << words[static_cast<int>(e.kind)];
        if (e.kind == Kind::multicycle)
            out_ << " " << e.value;
        if (delay)
            out_ << " " << nanoseconds(e.value) << (e.ignoreLatency ? " -ignore_clock_latency" : "");
        else
            out_ << sideFlag(e.setup) << (!e.start ? "" : *e.start ? " -start" : " -end");
        if (!e.from.empty())
            out_ << " -from " << list(e.from);
        for (const std::vector<Object>& group : e.through)
            out_ << " -through " << list(group);
        if (!e.to.empty())
            out_ << " -to " << list(e.to);
        out_ << "\n";
    }

    const Design& d_;
    std::ostringstream out_;
};

// --- Netlists ---

// Bits of a vector port, from their names: "in[3]" is bit 3 of "in".
struct Vector {
    Direction direction = Direction::input;
    std::map<int, int> bits; // bit to pin
    bool isVector = false;
};

std::map<std::string, Vector> portVectors(const Design& d) {
    std::map<std::string, Vector> ports;
    for (int p = 0; p < static_cast<int>(d.pins.size()); ++p) {
        if (!d.isPort(p))
            continue;
        const std::string& name = d.pins[at(p)].name;
        const std::size_t bracket = name.find('[');
        Vector& v = ports[name.substr(0, bracket)];
        v.direction = d.pins[at(p)].direction;
        v.isVector = bracket != std::string::npos;
        v.bits[v.isVector ? std::atoi(name.c_str() + bracket + 1) : 0] = p;
    }
    return ports;
}

const char* text(Direction direction) {
    return direction == Direction::input ? "input" : direction == Direction::output ? "output" : "inout";
}

std::string quoted(const std::string& name) { return "\"" + name + "\""; }

// The bit of a pin or port in the netlist; empty if it has no net. Two ports on one net have the same bit.
std::string bit(const Design& d, int pin) {
    constexpr int firstBit = 2;
    const int net = d.pins[at(pin)].net;
    return net == none ? std::string() : std::to_string(net + firstBit);
}

std::string verilogName(const std::string& name) {
    if (std::ranges::all_of(name, [](char c) { return isPlain(c); }))
        return name;
    return "\\" + name + " ";
}

} // namespace

std::string nanoseconds(long picoseconds) {
    constexpr long scale = 1000;
    std::string digits = std::to_string(std::labs(picoseconds) % scale);
    digits.insert(0, 3 - digits.size(), '0');
    return (picoseconds < 0 ? "-" : "") + std::to_string(std::labs(picoseconds) / scale) + "." + digits;
}

std::string writeSdf(const Design& d) {
    std::ostringstream out;
    out << "(DELAYFILE\n  (SDFVERSION \"3.0\")\n  (DESIGN \"" << d.name
        << "\")\n  (DIVIDER /)\n  (TIMESCALE 1ps)\n  (CELL\n    (CELLTYPE \"" << d.name
        << "\")\n    (INSTANCE )\n    (DELAY\n      (ABSOLUTE\n";
    for (const Arc& a : d.arcs)
        if (a.kind == Arc::Kind::wire && !a.values.empty())
            out << "        (INTERCONNECT " << escaped(d.pinName(a.from)) << " " << escaped(d.pinName(a.to))
                << " " << text(a.values) << ")\n";
    out << "      )\n    )\n  )\n";
    for (int i = 0; i < static_cast<int>(d.cells.size()); ++i)
        writeCell(out, d, i);
    out << ")\n";
    return out.str();
}

std::string writeSdc(const Design& design) { return SdcWriter(design).run(); }

std::string writeJson(const Design& d) {
    std::ostringstream out;
    out << "{\"creator\": \"random\", \"modules\": {" << quoted(d.name)
        << ": {\n \"attributes\": {\"top\": \"1\"},\n \"ports\": {";
    const char* comma = "\n";
    for (const auto& [name, v] : portVectors(d)) {
        out << comma << "  " << quoted(name) << ": {\"direction\": \"" << text(v.direction)
            << "\", \"bits\": [";
        const int least = v.bits.begin()->first;
        const char* inner = "";
        for (const auto& [index, pin] : v.bits)
            out << inner << (bit(d, pin).empty() ? "\"x\"" : bit(d, pin)), inner = ", ";
        out << "]" << (v.isVector && least != 0 ? ", \"offset\": " + std::to_string(least) : "") << "}";
        comma = ",\n";
    }
    out << "\n },\n \"cells\": {";
    comma = "\n";
    for (const Cell& cell : d.cells) {
        std::string directions, connections;
        for (int p : cell.pins) {
            const Pin& pin = d.pins[at(p)];
            if (pin.omitted)
                continue;
            const std::string lead = directions.empty() ? "" : ", ";
            directions += lead + quoted(pin.name) + ": \"" + text(pin.direction) + "\"";
            connections += lead + quoted(pin.name) + ": [" + bit(d, p) + "]";
        }
        out << comma << "  " << quoted(cell.name) << ": {\"hide_name\": 0, \"type\": " << quoted(cell.type)
            << ", \"parameters\": {}, \"attributes\": {},\n   \"port_directions\": {" << directions
            << "},\n   \"connections\": {" << connections << "}}";
        comma = ",\n";
    }
    out << "\n },\n \"netnames\": {";
    comma = "\n";
    for (int i = 0; i < static_cast<int>(d.nets.size()); ++i) {
        out << comma << "  " << quoted(d.nets[at(i)].name) << ": {\"hide_name\": 0, \"bits\": [" << i + 2
            << "], \"attributes\": {}}";
        comma = ",\n";
    }
    out << "\n }\n}}}\n";
    return out.str();
}

std::string writeVerilog(const Design& d) {
    std::ostringstream out;
    const std::map<std::string, Vector> ports = portVectors(d);
    const auto list = [&](const auto& item) {
        std::string text;
        for (const auto& [name, v] : ports)
            text += (text.empty() ? "" : ", ") + item(name, v);
        return text;
    };
    out << "module " << d.name << "(" << list([](const std::string& name, const Vector&) { return name; })
        << ");\n";
    for (const auto& [name, v] : ports) {
        out << "  " << text(v.direction);
        if (v.isVector)
            out << " [" << v.bits.rbegin()->first << ":" << v.bits.begin()->first << "]";
        out << " " << name << ";\n";
    }
    for (const Net& net : d.nets)
        out << "  wire " << net.name << ";\n";
    for (int p = 0; p < static_cast<int>(d.pins.size()); ++p) {
        const Pin& pin = d.pins[at(p)];
        if (!d.isPort(p) || pin.net == none)
            continue;
        const std::string& net = d.nets[at(pin.net)].name;
        const bool in = pin.direction == Direction::input;
        out << "  assign " << (in ? net : pin.name) << " = " << (in ? pin.name : net) << ";\n";
    }
    for (const Cell& cell : d.cells) {
        out << "  " << cell.type << " " << verilogName(cell.name) << " (";
        const char* comma = "";
        for (int p : cell.pins) {
            const int net = d.pins[at(p)].net;
            if (d.pins[at(p)].omitted)
                continue;
            out << comma << "." << d.pins[at(p)].name << "(" << (net == none ? "" : d.nets[at(net)].name)
                << ")";
            comma = ", ";
        }
        out << ");\n";
    }
    out << "endmodule\n";
    return out.str();
}

} // namespace Brute
