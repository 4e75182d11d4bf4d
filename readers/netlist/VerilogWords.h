// The keywords of Verilog that a netlist may hold, and those that make it something else.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace Readers {

// What a keyword begins, or makes impossible.
enum class VerilogWord : std::uint8_t {
    input,
    output,
    inout,
    wire,
    supply,
    variable, // of bits: a wire that a process drives
    number,   // a variable that is no wire
    assign,
    parameter,
    specify,
    gate,     // an output, then inputs
    buffer,   // outputs, then an input
    switched, // an output, an input, a control
    pull,     // an output
    tran,     // two wires that are one
    module,
    end,
    initial,
    process, // always, and what else computes without being structure
    routine, // a function, a task
    generate,
    detail, // of a declaration, without a meaning here
};

// Nothing for a text that is free to be a name.
std::optional<VerilogWord> findWord(std::string_view text);

} // namespace Readers
