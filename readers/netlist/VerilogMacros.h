// The macros of a Verilog text: `define, and what a use of one becomes.
//
// Text is replaced by text, as the language has it: arguments by name, outside of strings, and ``
// joins what stands on either side of it. Macros within the result are the caller's.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Readers {

class VerilogMacros {
public:
    struct Macro {
        bool hasParameters = false;
        std::vector<std::string> parameters;
        std::string body;
    };

    // Of the texts of all macros together.
    static constexpr std::size_t mostBytes = std::size_t{1} << 24;
    // Of what one use becomes.
    static constexpr std::size_t longestExpansion = std::size_t{1} << 20;

    // Null if the name is not defined.
    const Macro* find(const std::string& name) const;
    // Replaces one that is there. False if there is no room for it.
    bool define(const std::string& name, Macro macro);
    void undefine(const std::string& name);
    void clear();

    // REQUIRES: an argument for each parameter. False if the text becomes too long.
    static bool expand(const Macro& macro, const std::vector<std::string>& arguments, std::string& text);

private:
    std::unordered_map<std::string, Macro> macros_;
    std::size_t bytes_ = 0;
};

} // namespace Readers
