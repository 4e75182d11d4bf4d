// The options of a command, declared as a table and read in one way for all commands.
//
// An option may be shortened as long as it stays unique. A word that begins with '-' and then a letter is an
// option; "-0.5" is a value. Times, numbers and whole numbers are checked as they are read, so that a command
// only asks for them.
#pragma once

#include "base/Decimal.h"
#include "readers/sdc/Interpreter.h"

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Readers::Sdc {

// The kind of value that follows an option, or of an argument.
enum class Takes : std::uint8_t { nothing, name, time, number, integer, list, objects };

struct Option {
    std::string_view name; // with its dash
    Takes takes = Takes::nothing;
    bool repeats = false;
};

struct Syntax {
    std::vector<Option> options;
    std::vector<Takes> arguments;      // without a dash, in their order
    std::size_t optionalArguments = 0; // so many at the end may be missing
};

class Arguments {
public:
    struct Given {
        std::string_view option;
        Tcl_Obj* value = nullptr;
    };

    // Throws CommandError for what does not fit the syntax. The words must outlive the arguments.
    Arguments(const Syntax& syntax, Words words);

    const std::string& command() const { return command_; }
    Words words() const { return words_; }

    bool has(std::string_view option) const { return find(option) != nullptr; }
    // Returns the option's value; null if the option was not given. Not null for an option that takes no
    // value.
    Tcl_Obj* find(std::string_view option) const;
    // All options, in the order of the command.
    const std::vector<Given>& given() const { return given_; }
    Tcl_Obj* argument(std::size_t index) const {
        return index < arguments_.size() ? arguments_[index] : nullptr;
    }

    std::string text(std::string_view option) const;
    std::optional<Base::Decimal> decimal(std::string_view option) const;
    std::optional<int> integer(std::string_view option) const;
    Base::Decimal decimalArgument(std::size_t index) const;
    int integerArgument(std::size_t index) const;

    [[noreturn]] void fail(std::string_view text) const;
    // "command: -option: expected <what>, found '<value>'"; without an option, of an argument.
    [[noreturn]] void failValue(std::string_view option, std::string_view what, Tcl_Obj* value) const;
    // At most one, or exactly one, of the options.
    void atMostOne(std::initializer_list<std::string_view> options) const;
    void needsOne(std::initializer_list<std::string_view> options) const;

private:
    const Option& match(std::string_view word) const;
    bool isOption(std::string_view word) const;
    void check(std::string_view option, Takes takes, Tcl_Obj* value) const;
    std::string listed(std::initializer_list<std::string_view> options) const;

    const Syntax& syntax_;
    Words words_;
    std::string command_;
    std::vector<Given> given_;
    std::vector<Tcl_Obj*> arguments_;
};

// Return the value as a decimal or as a whole number; nothing if it is not one.
std::optional<Base::Decimal> toDecimal(Tcl_Obj* value);
std::optional<int> toInteger(Tcl_Obj* value);

} // namespace Readers::Sdc
