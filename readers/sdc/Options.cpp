// Reading a command's words by its syntax.
#include "readers/sdc/Options.h"

#include "readers/sdc/Objects.h"

#include <algorithm>
#include <charconv>

namespace Readers::Sdc {

namespace {

std::string_view expectation(Takes takes) {
    switch (takes) {
    case Takes::time:
        return "a time";
    case Takes::number:
        return "a number";
    case Takes::integer:
        return "a whole number";
    case Takes::list:
        return "a list";
    case Takes::objects:
        return "objects";
    case Takes::name:
    case Takes::nothing:
        break;
    }
    return "a name";
}

// "-0.5" is a value, "-setup" an option, and so is "-" with anything else that no number has.
bool looksLikeOption(std::string_view word) {
    return word.size() > 1 && word[0] == '-' &&
           ((word[1] >= 'a' && word[1] <= 'z') || word[1] == '_' || (word[1] >= 'A' && word[1] <= 'Z'));
}

// Returns the word's text if it may be an option. Objects never are.
std::string_view possibleOption(Tcl_Obj* word) {
    return holdsHandles(word) ? std::string_view() : Tcl_GetString(word);
}

} // namespace

std::optional<Base::Decimal> toDecimal(Tcl_Obj* value) { return Base::Decimal::parse(Tcl_GetString(value)); }

std::optional<int> toInteger(Tcl_Obj* value) {
    std::string_view text = Tcl_GetString(value);
    if (text.starts_with('+'))
        text.remove_prefix(1);
    int result = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), result);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return result;
}

Arguments::Arguments(const Syntax& syntax, Words words)
    : syntax_(syntax), words_(words), command_(Tcl_GetString(words[0])) {
    if (command_.starts_with("::"))
        command_.erase(0, 2);
    for (std::size_t at = 1; at < words.size(); ++at) {
        const std::string_view word = possibleOption(words[at]);
        if (!looksLikeOption(word)) {
            if (arguments_.size() == syntax.arguments.size())
                fail("unexpected argument '" + std::string(Tcl_GetString(words[at])) + "'");
            check("", syntax.arguments[arguments_.size()], words[at]);
            arguments_.push_back(words[at]);
            continue;
        }
        const Option& option = match(word);
        if (!option.repeats && has(option.name))
            fail(std::string(option.name) + " is given twice");
        Tcl_Obj* value = words[at];
        if (option.takes != Takes::nothing) {
            value = at + 1 < words.size() && !isOption(possibleOption(words[at + 1])) ? words[++at] : nullptr;
            check(option.name, option.takes, value);
        }
        given_.push_back({option.name, value});
    }
    if (arguments_.size() + syntax.optionalArguments < syntax.arguments.size())
        failValue("", expectation(syntax.arguments[arguments_.size()]), nullptr);
}

const Option& Arguments::match(std::string_view word) const {
    const Option* found = nullptr;
    std::string candidates;
    for (const Option& option : syntax_.options) {
        if (option.name == word)
            return option;
        if (option.name.starts_with(word)) {
            candidates += (found == nullptr ? "" : ", ") + std::string(option.name);
            found = &option;
        }
    }
    if (found == nullptr)
        fail("unknown option '" + std::string(word) + "'");
    if (candidates.find(',') != std::string::npos)
        fail("ambiguous option '" + std::string(word) + "': it could be " + candidates);
    return *found;
}

bool Arguments::isOption(std::string_view word) const {
    return std::ranges::find(syntax_.options, word, &Option::name) != syntax_.options.end();
}

void Arguments::check(std::string_view option, Takes takes, Tcl_Obj* value) const {
    const bool decimal = takes == Takes::time || takes == Takes::number;
    if (value == nullptr || (decimal && !toDecimal(value)) || (takes == Takes::integer && !toInteger(value)))
        failValue(option, expectation(takes), value);
}

Tcl_Obj* Arguments::find(std::string_view option) const {
    const auto known = std::ranges::find(given_, option, &Given::option);
    return known == given_.end() ? nullptr : known->value;
}

std::string Arguments::text(std::string_view option) const {
    Tcl_Obj* const value = find(option);
    return value == nullptr ? std::string() : Tcl_GetString(value);
}

std::optional<Base::Decimal> Arguments::decimal(std::string_view option) const {
    Tcl_Obj* const value = find(option);
    return value == nullptr ? std::nullopt : toDecimal(value);
}

std::optional<int> Arguments::integer(std::string_view option) const {
    Tcl_Obj* const value = find(option);
    return value == nullptr ? std::nullopt : toInteger(value);
}

Base::Decimal Arguments::decimalArgument(std::size_t index) const { return *toDecimal(arguments_[index]); }

int Arguments::integerArgument(std::size_t index) const { return *toInteger(arguments_[index]); }

// --- Errors ---

void Arguments::fail(std::string_view text) const { throw CommandError(command_ + ": " + std::string(text)); }

void Arguments::failValue(std::string_view option, std::string_view what, Tcl_Obj* value) const {
    std::string text = option.empty() ? "" : std::string(option) + ": ";
    text += "expected " + std::string(what) + ", found ";
    fail(text + (value == nullptr ? "nothing" : "'" + std::string(Tcl_GetString(value)) + "'"));
}

std::string Arguments::listed(std::initializer_list<std::string_view> options) const {
    std::string text;
    std::size_t left = options.size();
    for (const std::string_view option : options) {
        text += option;
        --left;
        text += left > 1 ? ", " : left == 1 ? " or " : "";
    }
    return text;
}

void Arguments::atMostOne(std::initializer_list<std::string_view> options) const {
    if (std::ranges::count_if(options, [this](std::string_view option) { return has(option); }) > 1)
        fail("only one of " + listed(options) + " can be given");
}

void Arguments::needsOne(std::initializer_list<std::string_view> options) const {
    if (std::ranges::none_of(options, [this](std::string_view option) { return has(option); }))
        fail("needs " + listed(options));
}

} // namespace Readers::Sdc
