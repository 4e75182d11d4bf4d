// A report with two paths, one met and one violated, and something in every section.
#pragma once

#include "report/Report.h"

namespace ReportTests {

// Times in ps, or multiplied by 1000 for fs.
inline Report::Path setupPath(Report::Time unit = 1) {
    Report::Path path;
    path.setup = true;
    path.group = "clk";
    path.startpoint = "r0/CLK";
    path.endpoint = "r1/D";
    path.startDescription = "rising edge-triggered register clocked by clk";
    path.endDescription = "rising edge-triggered register clocked by clk";
    path.sourceClock = path.targetClock = "clk";
    path.launchEdge = 0;
    path.captureEdge = 10000 * unit;
    path.relation = 10000 * unit;
    path.launchClockDelay = 1625 * unit;
    path.captureClockDelay = 1600 * unit;
    path.uncertainty = 250 * unit;
    path.check = 470 * unit;
    path.points = {{"r0/CLK", 0, 1625 * unit, Report::PointKind::clock, '^', "DFF"},
                   {"r0/Q", 540 * unit, 2165 * unit, Report::PointKind::cell, 'v', "DFF"},
                   {"r1/D", 588 * unit, 2753 * unit, Report::PointKind::net, 0, "DFF"}};
    path.arrival = 2753 * unit;
    path.required = 10880 * unit;
    path.slack = 8127 * unit;
    return path;
}

// From an input port to a register that works on the falling edge at 5 ns; the hold check fails by 120 ps.
inline Report::Path holdPath() {
    Report::Path path;
    path.setup = false;
    path.group = "half";
    path.startpoint = "in[3]";
    path.endpoint = "u1/u2/ff/D";
    path.startDescription = "input port clocked by half";
    path.endDescription = "falling edge-triggered register clocked by half";
    path.sourceClock = path.targetClock = "half";
    path.sourceRise = path.targetRise = false;
    path.sourcePropagated = path.targetPropagated = false;
    path.launchEdge = path.captureEdge = 5000;
    path.launchClockDelay = 0;
    path.captureClockDelay = 300;
    path.inputDelay = 400;
    path.startsAtPort = true;
    path.uncertainty = 20;
    path.check = 350;
    path.points = {{"in[3]", 0, 400, Report::PointKind::port, 0, ""},
                   {"u1/u2/ff/D", 150, 550, Report::PointKind::net, 0, "DFFN"}};
    path.arrival = 550;
    path.required = 670;
    path.slack = -120;
    path.exception = Report::Exception{"x.sdc", 14, "multicycle_path", "2"};
    return path;
}

inline Report::Report sample() {
    Report::Report report;
    report.inputs = {{"a.sdf", "sdf", std::string(64, '0')}, {"x.sdc", "sdc", std::string(64, 'f')}};
    report.design = "two";
    report.setup = {0, 0, 8127, 0, 1};
    report.hold = {-120, -120, -120, 1, 2};

    Report::Clock clk{"clk", 10000, {0, 5000},          {"clk"},          true,
                      {},    7410,  {0, 0, 8127, 0, 1}, {0, 0, 300, 0, 1}};
    Report::Clock half{"half", {}, {}, {"r7/Q"}, false, "clk", {}, {}, {-120, -120, -120, 1, 1}};
    report.clocks = {clk, half};

    report.endpoints = {
        {"r1/D", 8127, 300, {"clk", "clk"}, {"clk", "clk"}, {}, {}},
        {"u1/u2/ff/D", {}, -120, {"", ""}, {"", "half"}, {}, {{"x.sdc", 14, "multicycle_path", "2"}}}};
    report.paths = {setupPath(), holdPath()};
    report.unconstrainedEndpoints = 2;
    report.unconstrained = {"led[0]", "led[1]"};
    report.pulseChecks = {{"r0/CLK", true, "clk", 1200, 10000, 8800},
                          {"ram/WCLK", false, "clk", 5100, 5000, -100}};
    report.exceptions = {
        {{"x.sdc", 14, "multicycle_path", "2"}, "set_multicycle_path 2 -to u1/u2/ff", 1, 1, 1, "governs", {}},
        {{"x.sdc", 15, "false_path", ""}, "set_false_path -to nothing", 0, 0, 0, "matches nothing", {}},
        {{"x.sdc", 16, "max_delay", "3.50"},
         "set_max_delay 3.50 -to r1",
         0,
         0,
         0,
         "always overruled",
         {17, 20}},
        {{"x.sdc", 18, "path_group", "7"}, "group_path -name 7 -to r1", 0, 0, 0, "matches no path", {}}};
    report.arcs = 100;
    report.arcsWithoutDelay = 1;
    report.constraintsUnmatched = 1;
    report.diagnostics = {{Base::Severity::warning, {"x.sdc", 15, 3}, "matches nothing: 'nothing'"},
                          {Base::Severity::note, {}, "no netlist"}};
    return report;
}

} // namespace ReportTests
