// A netlist as text, a line for each port, cell and list of nets, and readers of texts.
#pragma once

#include "base/Diagnostics.h"
#include "base/Source.h"
#include "design/Netlist.h"
#include "tests/support/command/InputFile.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace Support {

using NetlistReader = Design::Netlist (*)(Base::Source&, const std::string&, Base::Diagnostics&);

// "top:", "port clk<clk", "DFF ff D<a Q>b", "nets: a b". '?' is an unknown direction, '=' both; '-' is no
// net.
inline std::string dump(const Design::Netlist& netlist) {
    const auto connected = [&](const auto& item) {
        constexpr std::string_view directions = "?<>=";
        const std::string net(item.net == Base::none ? "-"
                                                     : netlist.names[netlist.nets.at(item.net.number())]);
        return std::string(netlist.names[item.name]) + directions[static_cast<std::size_t>(item.direction)] +
               net;
    };
    std::string text = netlist.top + ":\n";
    for (const auto& port : netlist.ports)
        text += "port " + connected(port) + "\n";
    for (const auto& cell : netlist.cells) {
        text += std::string(netlist.names[cell.type]) + " " + std::string(netlist.names[cell.name]);
        for (std::uint32_t i = 0; i < cell.pinCount; ++i)
            text += " " + connected(netlist.pins.at(cell.firstPin.number() + i));
        text += "\n";
    }
    text += "nets:";
    for (const Base::Name net : netlist.nets)
        text += " " + std::string(netlist.names[net]);
    return text + "\n";
}

// Of every line.
inline std::string withoutPath(std::string text, const std::string& path) {
    const std::string file = path + ":";
    for (std::size_t at = 0; at < text.size();) {
        if (text.compare(at, file.size(), file) == 0)
            text.erase(at, text.find_first_not_of(' ', at + file.size()) - at);
        at = std::min(text.find('\n', at), text.size() - 1) + 1;
    }
    return text;
}

// What the text gives: the dump, with the diagnostics in front, or the error. Without the path of the file:
// "3:7: error:
// ..." or "error: ...".
inline std::string outcome(NetlistReader read, std::string_view text, const std::string& top = "") {
    const InputFile file(text);
    Base::Source source(file.path());
    Base::Diagnostics diagnostics;
    std::string result;
    try {
        const Design::Netlist netlist = read(source, top, diagnostics);
        for (const Base::Diagnostic& diagnostic : diagnostics.all())
            result += withoutPath(toString(diagnostic), file.path()) + "\n";
        result += dump(netlist);
    } catch (const Base::BadInput& error) {
        result = withoutPath(error.what(), file.path());
    }
    return result;
}

} // namespace Support
