// Attributes by kind of object; and filters, read by operator precedence into postfix steps (! before &&
// before ||).
#include "readers/sdc/Filter.h"

#include "readers/sdc/Interpreter.h"
#include "readers/sdc/Objects.h"

#include <algorithm>

namespace Readers::Sdc {

namespace {

std::string truth(bool value) { return value ? "true" : "false"; }

std::string_view directionName(Design::Direction direction) {
    switch (direction) {
    case Design::Direction::input:
        return "input";
    case Design::Direction::output:
        return "output";
    case Design::Direction::inout:
        return "inout";
    case Design::Direction::unknown:
        break;
    }
    return "unknown";
}

bool isClockSource(const Design::ClockTable& clocks, Design::PinId pin) {
    return std::ranges::any_of(clocks, [pin](const Design::Clock& clock) {
        return !clock.removed && std::ranges::find(clock.targets, pin) != clock.targets.end();
    });
}

std::string ownName(const Design::RoutedDesign& design, std::string_view name) {
    const char dividers[] = {'/', design.divider};
    const std::size_t divider = name.find_last_of(std::string_view(dividers, 2));
    return std::string(divider == std::string_view::npos ? name : name.substr(divider + 1));
}

std::optional<std::string> pinAttribute(const Design::RoutedDesign& design, const Design::ClockTable& clocks,
                                        Design::PinId index, std::string_view name) {
    const Design::Pin& pin = design.pins[index];
    if (name == "name" || name == "pin_name" || name == "lib_pin_name")
        return std::string(design.names[pin.name]);
    if (name == "full_name")
        return design.pinName(index);
    if (name == "direction" || name == "pin_direction" || name == "port_direction")
        return std::string(directionName(pin.direction));
    if (name == "is_clock" || name == "is_clock_pin" || name == "is_register_clock")
        return truth(design.isClockPin(index) || isClockSource(clocks, index));
    if (name == "is_clock_source")
        return truth(isClockSource(clocks, index));
    if (name == "is_data" || name == "is_data_pin")
        return truth(design.isDataPin(index));
    if (name == "net" || name == "net_name")
        return pin.net == Base::none ? std::string() : std::string(design.netName(pin.net));
    if ((name == "cell" || name == "cell_name") && !design.isPortOfTop(index))
        return std::string(design.cellName(pin.cell));
    if (name == "ref_name" && !design.isPortOfTop(index))
        return std::string(design.names[design.cells[pin.cell].type]);
    return std::nullopt;
}

std::optional<std::string> cellAttribute(const Design::RoutedDesign& design, Design::CellId index,
                                         std::string_view name) {
    if (name == "name" || name == "base_name")
        return ownName(design, design.cellName(index));
    if (name == "full_name")
        return std::string(design.cellName(index));
    if (name == "ref_name" || name == "type" || name == "cell_type" || name == "lib_cell")
        return std::string(design.names[design.cells[index].type]);
    if (name == "is_sequential" || name == "is_register")
        return truth(design.isRegister(index));
    if (name == "is_hierarchical")
        return truth(false);
    return std::nullopt;
}

std::optional<std::string> clockAttribute(const Design::RoutedDesign& design, const Design::Clock& clock,
                                          std::string_view name) {
    if (name == "name" || name == "full_name")
        return clock.name;
    if (name == "period")
        return clock.generated ? std::string() : clock.period.toString();
    if (name == "waveform")
        return clock.generated ? std::string() : clock.rise.toString() + " " + clock.fall.toString();
    if (name == "is_generated")
        return truth(clock.generated.has_value());
    if (name == "is_virtual")
        return truth(clock.targets.empty());
    if (name == "is_propagated" || name == "propagated_clock")
        return truth(clock.propagated.value_or(false));
    if (name == "sources") {
        std::string text;
        for (const Design::PinId pin : clock.targets)
            text += (text.empty() ? "" : " ") + design.pinName(pin);
        return text;
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> attribute(const Design::RoutedDesign& design, const Design::ClockTable& clocks,
                                     const Design::Object& object, std::string_view name) {
    if (name == "object_class" || name == "object_type" || name == "class")
        return std::string(kindName(object.kind));
    switch (object.kind) {
    case Design::ObjectKind::cell:
        return cellAttribute(design, object.cell(), name);
    case Design::ObjectKind::clock:
        return clockAttribute(design, clocks[object.clock()], name);
    case Design::ObjectKind::net:
        if (name == "name")
            return ownName(design, design.netName(object.net()));
        return name == "full_name" ? std::optional(std::string(design.netName(object.net()))) : std::nullopt;
    case Design::ObjectKind::port:
    case Design::ObjectKind::pin:
        break;
    }
    return pinAttribute(design, clocks, object.pin(), name);
}

// --- Reading ---

struct Filter::Parser {
    explicit Parser(std::string_view filter) : text(filter) {}

    [[noreturn]] void fail(const std::string& what) const {
        throw CommandError("-filter: " + what + " in '" + std::string(text) + "'");
    }

    void skipSpace() {
        while (at < text.size() && (text[at] == ' ' || text[at] == '\t' || text[at] == '\n'))
            ++at;
    }

    bool take(std::string_view token) {
        skipSpace();
        if (!text.substr(at).starts_with(token))
            return false;
        at += token.size();
        return true;
    }

    // A word, or text in quotes or braces.
    std::string word(const char* what) {
        skipSpace();
        if (at < text.size() && (text[at] == '"' || text[at] == '{')) {
            const char close = text[at] == '"' ? '"' : '}';
            const std::size_t end = text.find(close, at + 1);
            if (end == std::string_view::npos)
                fail(std::string("expected '") + close + "'");
            const std::string result(text.substr(at + 1, end - at - 1));
            at = end + 1;
            return result;
        }
        const std::size_t end = std::min(text.find_first_of(" \t\n()&|", at), text.size());
        std::string result(text.substr(at, end - at));
        if (result.empty())
            fail(std::string("expected ") + what);
        at = end;
        return result;
    }

    std::string attributeName() {
        skipSpace();
        take("@");
        const std::size_t end = std::min(text.find_first_of(" \t\n()&|=!~<>", at), text.size());
        std::string result(text.substr(at, end - at));
        if (result.empty())
            fail("expected an attribute");
        at = end;
        std::ranges::transform(result, result.begin(), [](char c) {
            return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        });
        return result;
    }

    Step comparison() {
        Step step{Operator::test, attributeName(), "", std::nullopt};
        for (const auto& [token, action] :
             {std::pair{"==", Operator::equal}, std::pair{"!=", Operator::unequal},
              std::pair{"=~", Operator::match}, std::pair{"!~", Operator::noMatch}}) {
            if (!take(token))
                continue;
            step.action = action;
            step.value = word("a value");
            if (action == Operator::match || action == Operator::noMatch)
                step.pattern.emplace(step.value);
            break;
        }
        return step;
    }

    void apply(Operator action) { steps.push_back({action, "", "", std::nullopt}); }

    // Applies the waiting operators that bind at least as tightly. The enumeration stands in that order.
    void applyTighter(Operator than) {
        while (!waiting.empty() && waiting.back() <= than) {
            apply(waiting.back());
            waiting.pop_back();
        }
    }

    void operand() {
        for (;;) {
            if (take("("))
                waiting.push_back(Operator::open);
            else if (take("!"))
                waiting.push_back(Operator::negate);
            else
                break;
        }
        steps.push_back(comparison());
    }

    void closeParentheses() {
        while (take(")")) {
            applyTighter(Operator::either);
            if (waiting.empty())
                fail("unexpected ')'");
            waiting.pop_back();
        }
    }

    std::vector<Step> parse() {
        for (;;) {
            operand();
            closeParentheses();
            skipSpace();
            if (at == text.size())
                break;
            const bool both = take("&&") || take("and ");
            if (!both && !take("||") && !take("or "))
                fail("expected && or ||");
            const Operator action = both ? Operator::both : Operator::either;
            applyTighter(action);
            waiting.push_back(action);
        }
        applyTighter(Operator::either);
        if (!waiting.empty())
            fail("expected ')'");
        return std::move(steps);
    }

    std::string_view text;
    std::size_t at = 0;
    std::vector<Operator> waiting;
    std::vector<Step> steps;
};

Filter::Filter(std::string_view text) : steps_(Parser(text).parse()) {}

// --- Asking ---

bool Filter::compare(const Step& step, const std::optional<std::string>& value) const {
    switch (step.action) {
    case Operator::test:
        return value == "true" || value == "1";
    case Operator::equal:
    case Operator::unequal: {
        // Truth may be written as a number too.
        const bool truth = value == "true" || value == "false";
        const std::string& wanted = step.value == "1" && truth   ? "true"
                                    : step.value == "0" && truth ? "false"
                                                                 : step.value;
        return (value == wanted) == (step.action == Operator::equal);
    }
    default:
        return (value && step.pattern->matches(*value)) == (step.action == Operator::match);
    }
}

bool Filter::accepts(const Design::RoutedDesign& design, const Design::ClockTable& clocks,
                     const Design::Object& object) const {
    std::vector<bool> results;
    for (const Step& step : steps_) {
        if (step.action < Operator::negate) {
            const std::optional<std::string> value = attribute(design, clocks, object, step.name);
            if (!value)
                throw CommandError("-filter: a " + std::string(kindName(object.kind)) +
                                   " has no attribute '" + step.name + "'");
            results.push_back(compare(step, value));
        } else if (step.action == Operator::negate) {
            results.back() = !results.back();
        } else {
            const bool last = results.back();
            results.pop_back();
            results.back() = step.action == Operator::both ? results.back() && last : results.back() || last;
        }
    }
    return results.back();
}

} // namespace Readers::Sdc
