// set_disable_timing, set_case_analysis, set_units, current_design, puts; and the commands that are accepted
// without effect: loads, drives, power and design rules say nothing where delays come with the design.
#include "readers/sdc/Objects.h"
#include "readers/sdc/Session.h"

#include <algorithm>
#include <array>

namespace Readers::Sdc {

namespace {

constexpr std::array withoutEffect = {"create_voltage_area",
                                      "current_instance",
                                      "derive_clock_uncertainty",
                                      "get_lib_cells",
                                      "get_lib_pins",
                                      "get_libs",
                                      "set_clock_gating_check",
                                      "set_clock_sense",
                                      "set_clock_transition",
                                      "set_data_check",
                                      "set_drive",
                                      "set_driving_cell",
                                      "set_fanout_load",
                                      "set_hierarchy_separator",
                                      "set_ideal_latency",
                                      "set_ideal_net",
                                      "set_ideal_network",
                                      "set_ideal_transition",
                                      "set_input_transition",
                                      "set_level_shifter_strategy",
                                      "set_level_shifter_threshold",
                                      "set_load",
                                      "set_logic_dc",
                                      "set_logic_one",
                                      "set_logic_zero",
                                      "set_max_area",
                                      "set_max_capacitance",
                                      "set_max_dynamic_power",
                                      "set_max_fanout",
                                      "set_max_leakage_power",
                                      "set_max_time_borrow",
                                      "set_max_transition",
                                      "set_min_capacitance",
                                      "set_min_fanout",
                                      "set_min_porosity",
                                      "set_min_pulse_width",
                                      "set_min_transition",
                                      "set_operating_conditions",
                                      "set_port_fanout_number",
                                      "set_resistance",
                                      "set_sense",
                                      "set_timing_derate",
                                      "set_voltage",
                                      "set_wire_load_min_block_size",
                                      "set_wire_load_mode",
                                      "set_wire_load_model",
                                      "set_wire_load_selection_group"};

// --- set_disable_timing ---

// Returns the name of a pin of the cell; nothing, with a warning, if the cell has no such pin.
std::optional<std::string> pinOf(Session& session, const Arguments& arguments, std::string_view option,
                                 Design::CellId cell) {
    const std::string name = Glob(arguments.text(option)).literal();
    if (session.design.findPin(cell, name) != Base::none)
        return name;
    session.unmatched("set_disable_timing: " + std::string(option) + ": the cell '" +
                      std::string(session.design.cellName(cell)) + "' has no pin '" + name + "'");
    return std::nullopt;
}

void setDisableTiming(Session& session, Words words) {
    static const Syntax syntax{{{"-from", Takes::name}, {"-to", Takes::name}}, {Takes::objects}};
    const Arguments arguments(syntax, words);
    const bool from = arguments.has("-from"), to = arguments.has("-to");
    for (const Design::Object& object :
         session.objects(arguments, "", arguments.argument(0),
                         {Design::ObjectKind::port, Design::ObjectKind::cell, Design::ObjectKind::pin})) {
        if ((from || to) && object.kind != Design::ObjectKind::cell)
            arguments.fail("-from and -to are pins of a cell; '" + session.finder.name(object) + "' is a " +
                           std::string(kindName(object.kind)));
        Design::Disable disable{object, std::nullopt, std::nullopt, session.tcl.origin()};
        if (from && !(disable.from = pinOf(session, arguments, "-from", object.cell())))
            continue;
        if (to && !(disable.to = pinOf(session, arguments, "-to", object.cell())))
            continue;
        session.result.disables.push_back(std::move(disable));
    }
}

// --- set_case_analysis ---

void setCaseAnalysis(Session& session, Words words) {
    static const Syntax syntax{{}, {Takes::name, Takes::objects}};
    const Arguments arguments(syntax, words);
    const std::string_view text = Tcl_GetString(arguments.argument(0));
    const bool one = text == "1" || text == "one";
    if (!one && text != "0" && text != "zero")
        arguments.failValue("", "0 or 1", arguments.argument(0));
    for (const Design::Object& object : session.objects(
             arguments, "", arguments.argument(1), {Design::ObjectKind::port, Design::ObjectKind::pin})) {
        std::vector<Design::CaseValue>& all = session.result.caseValues;
        const auto [known, isNew] = session.caseOfPin.try_emplace(object.pin(), all.size());
        if (isNew)
            all.emplace_back();
        all[known->second] = {object.pin(), one, session.tcl.origin()};
    }
}

// --- set_units and the like ---

// The power of ten of "10ps" relative to 1 ns.
std::optional<int> unitExponent(std::string_view text) {
    int exponent = 0;
    const std::size_t letters = std::min(text.find_first_not_of("0123456789. "), text.size());
    std::string_view number = text.substr(0, letters);
    while (number.ends_with(' '))
        number.remove_suffix(1);
    if (!number.empty()) {
        const std::optional<Base::Decimal> factor = Base::Decimal::parse(number);
        for (exponent = 0; factor && exponent <= 2; ++exponent)
            if (*factor == Base::Decimal{1, exponent})
                break;
        if (!factor || exponent > 2)
            return std::nullopt;
    }
    const std::string_view unit = text.substr(letters);
    constexpr std::array<std::pair<std::string_view, int>, 6> units = {
        {{"fs", -6}, {"ps", -3}, {"ns", 0}, {"us", 3}, {"ms", 6}, {"s", 9}}};
    for (const auto& [name, power] : units)
        if (unit == name)
            return exponent + power;
    return std::nullopt;
}

void setUnits(Session& session, Words words) {
    static const Syntax syntax{{{"-time", Takes::name},
                                {"-capacitance", Takes::name},
                                {"-resistance", Takes::name},
                                {"-voltage", Takes::name},
                                {"-current", Takes::name},
                                {"-power", Takes::name}},
                               {}};
    const Arguments arguments(syntax, words);
    if (!arguments.has("-time"))
        return;
    const std::optional<int> exponent = unitExponent(arguments.text("-time"));
    if (!exponent)
        arguments.failValue("-time", "a unit such as 1ns", arguments.find("-time"));
    session.timeExponent = *exponent;
}

void currentDesign(Session& session, Words words) {
    static const Syntax syntax{{}, {Takes::name}, 1};
    const Arguments arguments(syntax, words);
    if (arguments.argument(0) != nullptr && Tcl_GetString(arguments.argument(0)) != session.design.name)
        session.warning("current_design: '" + std::string(Tcl_GetString(arguments.argument(0))) +
                        "' is not the design that is read, '" + session.design.name + "'");
    session.tcl.setResult(Tcl_NewStringObj(session.design.name.c_str(), -1));
}

void setSdcVersion(Session&, Words words) {
    static const Syntax syntax{{}, {Takes::name}};
    const Arguments arguments(syntax, words);
}

// What a script prints becomes a note: standard output belongs to the report.
void put(Session& session, Words words) {
    std::size_t at = 1;
    const auto isWord = [&](std::string_view text) {
        return at + 1 < words.size() && Tcl_GetString(words[at]) == text;
    };
    if (isWord("-nonewline"))
        ++at;
    if (isWord("stdout") || isWord("stderr"))
        ++at;
    if (at + 1 != words.size())
        throw CommandError("puts: expected one text; files cannot be written");
    session.print(Tcl_GetString(words[at]));
}

void skip(Session& session, Words words) {
    std::string name = Tcl_GetString(words[0]);
    session.withoutEffect(name.starts_with("::") ? name.substr(2) : name);
}

} // namespace

void addOtherCommands(Session& session) {
    session.add("set_disable_timing", setDisableTiming);
    session.add("set_case_analysis", setCaseAnalysis);
    session.add("set_units", setUnits);
    session.add("current_design", currentDesign);
    session.add("set_sdc_version", setSdcVersion);
    session.add("puts", put);
    for (const char* name : withoutEffect)
        session.add(name, skip);
}

} // namespace Readers::Sdc
