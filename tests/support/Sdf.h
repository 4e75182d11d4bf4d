// SDF text for tests: a file of cells, of the wires at the top, and of registers.
//
//   using namespace Support;
//   sdf(wires("(INTERCONNECT clk r/C (0))") + flipFlop("r", {.clockToOutput = 100}) +
//       cell("BUF", "b", "(IOPATH A Z (1))"))
#pragma once

#include <string>
#include <string_view>

namespace Support {

// A whole file. The divider is a slash. The cells begin on line 2.
inline std::string sdf(std::string_view cells, std::string_view timescale = "1ps") {
    return "(DELAYFILE (SDFVERSION \"3.0\") (DESIGN \"top\") (DIVIDER /) (TIMESCALE " +
           std::string(timescale) + ")\n" + std::string(cells) + ")";
}

// The entry of one cell, on one line if its parts are. Without delays or checks, it has no such part.
inline std::string cell(std::string_view type, std::string_view instance, std::string_view delays,
                        std::string_view checks = {}, std::string_view how = "ABSOLUTE") {
    std::string text =
        "(CELL (CELLTYPE \"" + std::string(type) + "\") (INSTANCE " + std::string(instance) + ")";
    if (!delays.empty())
        text += " (DELAY (" + std::string(how) + " " + std::string(delays) + "))";
    if (!checks.empty())
        text += " (TIMINGCHECK " + std::string(checks) + ")";
    return text + ")\n";
}

// The entry of the top, which has the INTERCONNECTs.
inline std::string wires(std::string_view entries) { return cell("top", "", entries); }

// A register with the data pin D and the output Q, in the file's unit.
struct FlipFlop {
    std::string_view type = "DFF";
    std::string_view clock = "C";
    long clockToOutput = 100;
    long setup = 5;
    long hold = 5;
};

inline std::string flipFlop(std::string_view instance, const FlipFlop& values = {}) {
    const std::string edge = "(posedge " + std::string(values.clock) + ")";
    return cell(values.type, instance,
                "(IOPATH " + edge + " Q (" + std::to_string(values.clockToOutput) + "))",
                "(SETUPHOLD D " + edge + " (" + std::to_string(values.setup) + ") (" +
                    std::to_string(values.hold) + "))");
}

} // namespace Support
