// Whole runs on a small design under exceptions, and their results as text.
//
//   din -> r0/D   r0/Q -> g/A  g/Z -> r1/D   r1/Q -> dout   s/Q -> t/D
//
// r0, r1 and s are clocked by a (period 10), t by b (period 10). From Q to D it takes 3 ns, from din and to
// dout 1 ns; checks take nothing.
#pragma once

#include "analysis/Session.h"
#include "tests/support/Rows.h"
#include "tests/support/Sdf.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace Support::Runs {

inline std::string cell(const std::string& type, const std::string& name) {
    return type == "BUF"
               ? Support::cell("BUF", name, "(IOPATH A Z (1))")
               : Support::flipFlop(name, {.clock = "CLK", .clockToOutput = 1, .setup = 0, .hold = 0});
}

inline std::string sdfOf(const std::string& wires, const std::string& cells) {
    return Support::sdf(Support::wires(wires) + cells, "1ns");
}

inline const std::string& smallSdf() {
    static const std::string text =
        sdfOf("(INTERCONNECT a r0/CLK (0)) (INTERCONNECT a r1/CLK (0)) (INTERCONNECT a s/CLK (0))\n"
              "(INTERCONNECT b t/CLK (0)) (INTERCONNECT din r0/D (1)) (INTERCONNECT r0/Q g/A (1))\n"
              "(INTERCONNECT g/Z r1/D (0)) (INTERCONNECT r1/Q dout (0)) (INTERCONNECT s/Q t/D (2))\n",
              cell("DFF", "r0") + cell("DFF", "r1") + cell("DFF", "s") + cell("DFF", "t") + cell("BUF", "g"));
    return text;
}

inline constexpr const char* clocks = "create_clock -period 10 a; create_clock -period 10 b; "
                                      "set_input_delay 0 -clock a din; set_output_delay 0 -clock a dout\n";

class ExceptionRuns : public testing::Test {
protected:
    // Runs under the clocks, which are line 1, and then these lines.
    Report::Report run(const std::string& lines, const std::string& sdf = smallSdf(),
                       const std::string& json = "") {
        folder_.write("d.sdf", sdf);
        folder_.write("d.sdc", clocks + lines + "\n");
        Analysis::SessionOptions options;
        options.sdf = folder_.at("d.sdf");
        options.sdc = {folder_.at("d.sdc")};
        if (!json.empty()) {
            folder_.write("d.json", json);
            options.netlist = folder_.at("d.json");
        }
        return Analysis::Session().run(options);
    }
    // What is reported of the constraints: warnings and notes with their lines, and the error that ends the
    // run.
    std::string messages(const std::string& lines, const std::string& sdf = smallSdf()) {
        std::string text;
        const auto add = [&](const Base::Place& place, const std::string& message) {
            text += (text.empty() ? "" : "\n") + std::to_string(place.line) + ": " + message;
        };
        try {
            for (const Base::Diagnostic& diagnostic : run(lines, sdf).diagnostics)
                add(diagnostic.place,
                    std::string(Base::toString(diagnostic.severity)) + ": " + diagnostic.text);
        } catch (const Base::BadInput& error) {
            const std::string whole = error.what();
            text += (text.empty() ? "" : "\n") + whole.substr(whole.find("d.sdc:") + 6);
        }
        return text;
    }

private:
    Support::TemporaryFolder folder_;
};

// Of each exception: its line, kind, end points of setup and of hold, reported paths, status, overruling
// lines.
inline std::string table(const Report::Report& report) {
    std::string text;
    for (const Report::ExceptionUse& use : report.exceptions) {
        text += (text.empty() ? "" : "; ") + std::to_string(use.exception.line) + " " + use.exception.kind +
                " " + std::to_string(use.setupEndpoints) + " " + std::to_string(use.holdEndpoints) + " " +
                std::to_string(use.paths) + " " + use.status;
        for (const unsigned line : use.overruledBy)
            text += " " + std::to_string(line);
    }
    return text;
}

// Setup and hold slack of an end point; "-" for none.
inline std::string slacksAt(const Report::Report& report, const std::string& pin) {
    const auto shown = [](const Report::MaybeTime& slack) {
        return slack ? std::to_string(*slack) : std::string("-");
    };
    const auto end = std::ranges::find(report.endpoints, pin, &Report::Endpoint::pin);
    return end == report.endpoints.end() ? "- -" : shown(end->setupSlack) + " " + shown(end->holdSlack);
}

struct Row {
    const char *lines, *expected;
};

} // namespace Support::Runs
