#include "tests/support/command/Annotated.h"

#include "readers/sdf/Parser.h"
#include "tests/support/command/InputFile.h"

#include <map>
#include <sstream>

namespace Support {

using namespace Readers;

namespace {

struct Connection {
    std::string name, net;
    Design::Direction direction = Design::Direction::unknown;
};

// "C<n1"
Connection connectionOf(const std::string& word) {
    const std::size_t mark = word.find_first_of("<>?");
    const std::size_t net = word.find_first_not_of("<>?", mark);
    const std::string how = word.substr(mark, net == std::string::npos ? net : net - mark);
    return {word.substr(0, mark), net == std::string::npos ? "" : word.substr(net),
            how == "<"   ? Design::Direction::input
            : how == ">" ? Design::Direction::output
            : how == "?" ? Design::Direction::unknown
                         : Design::Direction::inout};
}

std::string edge(Design::Transition transition) {
    static const char* const names[] = {"", " rise", " fall"};
    return names[static_cast<int>(transition)];
}

std::string number(const std::optional<std::int32_t>& value) { return value ? std::to_string(*value) : "-"; }

// The file of a text, without its name in messages.
std::string withoutFile(const std::string& text, const std::string& file) {
    return text.starts_with(file + ":") ? text.substr(file.size() + 1) : text;
}

void annotate(const InputFile& file, Design::RoutedDesign& design, const Design::Netlist* netlist,
              const AnnotateOptions& options, Base::Diagnostics& diagnostics, std::uint64_t& bareArcs,
              Base::Rounding& rounding) {
    Annotator annotator(design, netlist, options, file.path(), diagnostics);
    Base::Source source(file.path());
    Sdf::parse(source, annotator, diagnostics);
    annotator.finish();
    bareArcs = annotator.bareArcs();
    rounding = annotator.rounding();
}

std::string fileOf(std::string_view cells) {
    return cells.starts_with("(DELAYFILE") ? std::string(cells) : sdf(cells);
}

} // namespace

Design::Netlist netlistOf(std::string_view text) {
    Design::Netlist netlist;
    netlist.top = "top";
    std::map<std::string, Design::Netlist::NetId> nets;
    const auto netOf = [&](const std::string& name) -> Design::Netlist::NetId {
        if (name.empty())
            return Base::none;
        const auto [place, isNew] = nets.try_emplace(name, netlist.nets.next());
        if (isNew)
            netlist.nets.push_back(netlist.names.add(name));
        return place->second;
    };
    std::istringstream words{std::string(text)};
    bool inCell = false;
    for (std::string word; words >> word;) {
        if (const std::size_t open = word.find('('); open != std::string::npos) {
            const std::size_t colon = word.find(':');
            netlist.cells.push_back({netlist.names.add(word.substr(0, colon)),
                                     netlist.names.add(word.substr(colon + 1, open - colon - 1)),
                                     netlist.pins.next(), 0});
            word.erase(0, open + 1);
            inCell = true;
        }
        const bool last = word.ends_with(')');
        if (last)
            word.pop_back();
        const Connection made = connectionOf(word);
        if (inCell) {
            netlist.pins.push_back({netlist.names.add(made.name), made.direction, netOf(made.net)});
            ++netlist.cells.back().pinCount;
        } else {
            netlist.ports.push_back({netlist.names.add(made.name), made.direction, netOf(made.net)});
        }
        inCell &= !last;
    }
    return netlist;
}

Annotated::Annotated(std::string_view cells, std::optional<std::string_view> netlist,
                     const AnnotateOptions& options) {
    const InputFile file(fileOf(cells));
    const std::optional<Design::Netlist> read = netlist ? std::optional(netlistOf(*netlist)) : std::nullopt;
    Base::Diagnostics found;
    annotate(file, design, read ? &*read : nullptr, options, found, bareArcs, rounding);
    for (Base::Diagnostic diagnostic : found.all()) {
        diagnostic.place.file.clear();
        diagnostics.add(diagnostic);
    }
}

std::string errorOf(std::string_view cells, std::optional<std::string_view> netlist,
                    const AnnotateOptions& options) {
    const InputFile file(fileOf(cells));
    const std::optional<Design::Netlist> read = netlist ? std::optional(netlistOf(*netlist)) : std::nullopt;
    Design::RoutedDesign design;
    Base::Diagnostics diagnostics;
    std::uint64_t bareArcs = 0;
    Base::Rounding rounding;
    try {
        annotate(file, design, read ? &*read : nullptr, options, diagnostics, bareArcs, rounding);
    } catch (const Base::BadInput& bad) {
        return withoutFile(bad.what(), file.path());
    }
    return "no error";
}

std::string Annotated::arcs() const {
    std::string text;
    for (const Design::Arc& arc : design.arcs)
        text +=
            design.pinName(arc.from) + edge(arc.fromEdge) + (arc.wire ? " ~ " : " > ") +
            design.pinName(arc.to) +
            (arc.bare ? " ?" : " " + std::to_string(arc.delay.early) + " " + std::to_string(arc.delay.late)) +
            "\n";
    return text;
}

std::string Annotated::checks() const {
    std::string text;
    for (const Design::Check& check : design.checks)
        text += design.pinName(check.data) + " at " + design.pinName(check.clock) + edge(check.clockEdge) +
                ": " + number(check.setup) + " " + number(check.hold) + (check.asynchronous ? " reset" : "") +
                "\n";
    return text;
}

std::string Annotated::pulses() const {
    std::string text;
    for (const Design::PulseCheck& check : design.pulseChecks)
        text += design.pinName(check.pin) + edge(check.edge) + (check.period ? " period " : " width ") +
                std::to_string(check.required) + "\n";
    return text;
}

std::string Annotated::ports() const {
    static const char* const directions[] = {"?", "in", "out", "inout"};
    std::string text;
    for (const Design::PinId pin : design.ports())
        text += (text.empty() ? "" : ", ") + design.pinName(pin) + " " +
                directions[static_cast<int>(design.pins[pin].direction)];
    return text;
}

std::string Annotated::roles() const {
    const auto list = [&](const char* role, bool (Design::RoutedDesign::*is)(Design::PinId) const) {
        std::string text;
        for (const Design::PinId pin : design.pins.ids())
            if ((design.*is)(pin))
                text += " " + design.pinName(pin);
        return role + std::string(":") + text;
    };
    return list("clock", &Design::RoutedDesign::isClockPin) +
           list("; data", &Design::RoutedDesign::isDataPin) +
           list("; output", &Design::RoutedDesign::isRegisterOutput);
}

std::string Annotated::resets() const {
    std::string text;
    for (const Design::Arc& arc : design.arcs)
        if (design.isReset(arc))
            text += (text.empty() ? "" : ", ") + design.pinName(arc.from) + " > " + design.pinName(arc.to);
    return text;
}

std::string Annotated::messages() const {
    std::string text;
    for (const Base::Diagnostic& diagnostic : diagnostics.all())
        text += (diagnostic.place.line == 0 ? ""
                                            : std::to_string(diagnostic.place.line) + ":" +
                                                  std::to_string(diagnostic.place.column) + ": ") +
                std::string(Base::toString(diagnostic.severity)) + ": " + diagnostic.text + "\n";
    return text;
}

} // namespace Support
