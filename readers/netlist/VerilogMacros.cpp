// Replacing parameters by arguments, in one pass over the body.
#include "readers/netlist/VerilogMacros.h"

#include <algorithm>
#include <utility>

namespace Readers {

namespace {

bool isNameStart(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool isNamePart(char c) { return isNameStart(c) || (c >= '0' && c <= '9') || c == '$'; }

std::size_t endOfName(std::string_view text, std::size_t at) {
    while (at < text.size() && isNamePart(text[at]))
        ++at;
    return at;
}

// Behind the quote that ends the string.
std::size_t endOfString(std::string_view text, std::size_t at) {
    for (++at; at < text.size() && text[at] != '"'; ++at)
        if (text[at] == '\\')
            ++at;
    return std::min(at + 1, text.size());
}

// Behind a name, a string, a joint, or any one character. A number's letters are no name.
std::size_t endOfPart(std::string_view text, std::size_t at) {
    if (isNamePart(text[at]))
        return endOfName(text, at);
    if (text[at] == '"')
        return endOfString(text, at);
    return at + (text.substr(at, 2) == "``" ? 2 : 1);
}

std::size_t sizeOf(const std::string& name, const VerilogMacros::Macro& macro) {
    std::size_t size = name.size() + macro.body.size() + sizeof(VerilogMacros::Macro);
    for (const std::string& parameter : macro.parameters)
        size += parameter.size() + sizeof(std::string);
    return size;
}

} // namespace

const VerilogMacros::Macro* VerilogMacros::find(const std::string& name) const {
    const auto found = macros_.find(name);
    return found == macros_.end() ? nullptr : &found->second;
}

bool VerilogMacros::define(const std::string& name, Macro macro) {
    undefine(name);
    bytes_ += sizeOf(name, macro);
    if (bytes_ > mostBytes)
        return false;
    macros_.insert_or_assign(name, std::move(macro));
    return true;
}

void VerilogMacros::undefine(const std::string& name) {
    const auto found = macros_.find(name);
    if (found == macros_.end())
        return;
    bytes_ -= sizeOf(name, found->second);
    macros_.erase(found);
}

void VerilogMacros::clear() {
    macros_.clear();
    bytes_ = 0;
}

bool VerilogMacros::expand(const Macro& macro, const std::vector<std::string>& arguments, std::string& text) {
    const std::string_view body = macro.body;
    for (std::size_t at = 0; at < body.size() && text.size() <= longestExpansion;) {
        const std::size_t end = endOfPart(body, at);
        const std::string_view part = body.substr(at, end - at);
        const auto parameter = isNameStart(part.front())
                                   ? std::find(macro.parameters.begin(), macro.parameters.end(), part)
                                   : macro.parameters.end();
        if (parameter != macro.parameters.end())
            text += arguments[static_cast<std::size_t>(parameter - macro.parameters.begin())];
        else if (part != "``")
            text += part;
        at = end;
    }
    return text.size() <= longestExpansion;
}

} // namespace Readers
