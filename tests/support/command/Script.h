// Runs a constraint script on a small design, and writes down what comes of it, line by line.
//
// The design: ports clk clk2 rst in[0] in[1] a b (inputs) and out led[3] led[4] (outputs), bidi (both ways);
// registers r0, r1 and u1/u2/ff of type DFF (CLK, D, Q), and l0 of type LUT (A, B, Z); nets of the ports'
// names and "mid", from r0/Q to l0/A.
#pragma once

#include "base/Diagnostics.h"
#include "design/Constraints.h"
#include "design/RoutedDesign.h"
#include "readers/sdc/Reader.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace Support {

const Design::RoutedDesign& smallDesign();

struct Outcome {
    std::string constraints; // as described by toText()
    std::vector<std::string>
        messages;               // diagnostics and, as the last one, the error; files relative to the folder
    Design::Constraints result; // empty after an error

    std::string allMessages() const;
};

// Reads the scripts, in order, as x.sdc, x2.sdc, x3.sdc ...
Outcome run(const std::vector<std::string>& scripts, const Readers::Sdc::Limits& limits = {},
            const Design::RoutedDesign& design = smallDesign());
Outcome run(const std::string& script, const Readers::Sdc::Limits& limits = {});
// Reads x.sdc of the folder.
Outcome runIn(const TemporaryFolder& folder, const std::string& script,
              const Readers::Sdc::Limits& limits = {});

std::string toText(const Design::RoutedDesign& design, const Design::Constraints& constraints);

// A row of a table: what the script leaves behind, and what it says.
struct Row {
    const char* script;
    const char* expected;
};

} // namespace Support
