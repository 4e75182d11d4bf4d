// Structural Verilog of a design in which some of the cells are in a module of their own, one or two levels
// down.
#include "Case.h"

#include <algorithm>
#include <sstream>

namespace Metamorphic {

namespace {

using Brute::Design;
using Brute::Direction;

std::size_t at(int index) { return static_cast<std::size_t>(index); }

class Writer {
public:
    Writer(const Design& design, const std::string& prefix) : d_(design), prefix_(prefix) {
        for (std::size_t begin = 0, end; (end = prefix.find('/', begin)) != std::string::npos;
             begin = end + 1)
            levels_.push_back(prefix.substr(begin, end - begin));
        for (std::size_t net = 0; net < d_.nets.size(); ++net)
            if (crosses(static_cast<int>(net)))
                crossing_.push_back(static_cast<int>(net));
    }

    std::string run() {
        module("part" + std::to_string(levels_.size()), ports(crossing_));
        wires(true);
        cells(true);
        out_ << "endmodule\n";
        for (std::size_t level = levels_.size() - 1; level > 0; --level) {
            module("part" + std::to_string(level), ports(crossing_));
            inner(level);
            out_ << "endmodule\n";
        }
        top();
        return out_.str();
    }

private:
    bool isInside(int pin) const {
        const int cell = d_.pins[at(pin)].cell;
        return cell != Brute::none && d_.cells[at(cell)].name.starts_with(prefix_);
    }
    bool crosses(int net) const {
        const Brute::Net& n = d_.nets[at(net)];
        return std::ranges::any_of(n.sinks, [&](int sink) { return isInside(sink) != isInside(n.driver); });
    }
    std::string local(const std::string& name) const {
        return name.starts_with(prefix_) ? name.substr(prefix_.size()) : name;
    }
    static std::string verilog(const std::string& name) {
        const bool plain = std::ranges::all_of(
            name, [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; });
        return plain ? name : "\\" + name + " ";
    }

    void module(const std::string& name, const std::string& ports) {
        out_ << "module " << name << "(" << ports << ");\n";
    }

    // The ports of a part have other names than the nets around it.
    std::string ports(const std::vector<int>& nets) const {
        std::string text;
        for (int net : nets)
            text += std::string(text.empty() ? "" : ", ") +
                    (isInside(d_.nets[at(net)].driver) ? "output " : "input ") + "p_" + d_.nets[at(net)].name;
        return text;
    }

    void wires(bool inside) {
        for (std::size_t net = 0; net < d_.nets.size(); ++net)
            if (!std::ranges::count(crossing_, static_cast<int>(net)) &&
                isInside(d_.nets[net].driver) == inside)
                out_ << "  wire " << verilog(local(d_.nets[net].name)) << ";\n";
    }

    void cells(bool inside) {
        for (const Brute::Cell& cell : d_.cells) {
            if (cell.name.starts_with(prefix_) != inside)
                continue;
            out_ << "  " << cell.type << " " << verilog(local(cell.name)) << " (";
            const char* comma = "";
            for (int pin : cell.pins) {
                const int net = d_.pins[at(pin)].net;
                std::string name;
                if (net != Brute::none)
                    name = inside && std::ranges::count(crossing_, net)
                               ? "p_" + d_.nets[at(net)].name
                               : verilog(local(d_.nets[at(net)].name));
                out_ << comma << "." << d_.pins[at(pin)].name << "(" << name << ")";
                comma = ", ";
            }
            out_ << ");\n";
        }
    }

    // Writes the instance of the next part, in the part of this level or in the top (0).
    void inner(std::size_t level) {
        out_ << "  part" << level + 1 << " " << levels_[level] << " (";
        const char* comma = "";
        for (int net : crossing_) {
            const std::string& name = d_.nets[at(net)].name;
            out_ << comma << ".p_" << name << "(" << (level == 0 ? name : "p_" + name) << ")";
            comma = ", ";
        }
        out_ << ");\n";
    }

    void top() {
        std::string list;
        std::map<std::string, std::pair<Direction, int>> ports; // direction and width; width 0 for one bit
        for (const Brute::Pin& pin : d_.pins)
            if (pin.cell == Brute::none) {
                const std::size_t bracket = pin.name.find('[');
                auto& [direction, width] = ports[pin.name.substr(0, bracket)];
                direction = pin.direction;
                if (bracket != std::string::npos)
                    width = std::max(width, std::atoi(pin.name.c_str() + bracket + 1) + 1);
            }
        for (const auto& [name, port] : ports)
            list += std::string(list.empty() ? "" : ", ") +
                    (port.first == Direction::input ? "input " : "output ") +
                    (port.second == 0 ? "" : "[" + std::to_string(port.second - 1) + ":0] ") + name;
        module(d_.name, list);
        for (int net : crossing_)
            out_ << "  wire " << d_.nets[at(net)].name << ";\n";
        wires(false);
        for (const Brute::Pin& pin : d_.pins) {
            if (pin.cell != Brute::none || pin.net == Brute::none)
                continue;
            const std::string& net = d_.nets[at(pin.net)].name;
            const bool in = pin.direction == Direction::input;
            out_ << "  assign " << (in ? net : pin.name) << " = " << (in ? pin.name : net) << ";\n";
        }
        cells(false);
        inner(0);
        out_ << "endmodule\n";
    }

    const Design& d_;
    const std::string prefix_;
    std::vector<std::string> levels_;
    std::vector<int> crossing_; // indices of nets
    std::ostringstream out_;
};

} // namespace

std::string writeHierarchy(const Design& design, const std::string& hierarchy) {
    return Writer(design, hierarchy).run();
}

} // namespace Metamorphic
