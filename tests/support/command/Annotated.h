// Small designs out of SDF text, with or without a netlist, and their parts as lines of text.
//
// A netlist is written as "clk<n1 q>n2 b<>n3 r0:DFF(C<n1 D<n4 Q>n2)": ports and cells, with < for what
// receives, > for what drives, <> for both ways and ? where the direction is not known. A port is seen from
// outside: "clk<n1" is an input. A pin without a net is "D<".
#pragma once

#include "readers/sdf/Annotate.h"
#include "tests/support/Sdf.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Support {

Design::Netlist netlistOf(std::string_view text);

// In ps, with a slash as divider, unless the text brings its own head ("(DELAYFILE ...").
class Annotated {
public:
    Annotated(std::string_view cells, std::optional<std::string_view> netlist = {},
              const Readers::AnnotateOptions& options = {});

    Design::RoutedDesign design;
    Base::Diagnostics diagnostics;
    std::uint64_t bareArcs = 0;
    Base::Rounding rounding; // its file is the place's, which messages() leaves out

    // "r0/C rise > r0/Q 400 400", wires as "clk ~ r0/C 100 100", arcs that nothing gave a delay with a "?".
    std::string arcs() const;
    // "r0/D at r0/C rise: 50 20", "-" for what is missing, "reset" for recovery and removal.
    std::string checks() const;
    // "r1/C period 9900", "r1/C rise width 4900"
    std::string pulses() const;
    // "clk in, q out, b inout", pads' pins too.
    std::string ports() const;
    // Pins by what they are to a register: "clock: r0/C; data: r0/D; output: r0/Q"
    std::string roles() const;
    // Arcs of sets and resets: "r0/R > r0/Q, r0/S > r0/Q".
    std::string resets() const;
    // One on a line, without the file's name.
    std::string messages() const;
};

// The same for what cannot be read: the error without the file's name.
std::string errorOf(std::string_view cells, std::optional<std::string_view> netlist = {},
                    const Readers::AnnotateOptions& options = {});

} // namespace Support
