// Attributes of objects, and the expressions of -filter over them:
//   direction == input && (full_name =~ u1/* || !is_clock)
// == and != compare text, =~ and !~ match a pattern; an attribute without an operator is tested for truth.
#pragma once

#include "design/Constraints.h"
#include "readers/sdc/Finder.h"
#include "readers/sdc/Glob.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Readers::Sdc {

// Returns the attribute's value; nothing if objects of the kind have no such attribute. A truth value is
// "true" or "false".
std::optional<std::string> attribute(const Design::RoutedDesign& design, const Design::ClockTable& clocks,
                                     const Design::Object& object, std::string_view name);

class Filter {
public:
    // Throws CommandError for an expression that cannot be read.
    explicit Filter(std::string_view text);

    bool accepts(const Design::RoutedDesign& design, const Design::ClockTable& clocks,
                 const Design::Object& object) const;

private:
    enum class Operator : std::uint8_t { test, equal, unequal, match, noMatch, negate, both, either, open };
    // In postfix order: a comparison, or what joins the results before it.
    struct Step {
        Operator action = Operator::test;
        std::string name, value;
        std::optional<Glob> pattern;
    };

    struct Parser;
    bool compare(const Step& step, const std::optional<std::string>& value) const;

    std::vector<Step> steps_;
};

} // namespace Readers::Sdc
