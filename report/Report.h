// The result of a run as plain data. It has everything that the printers print, so that they compute nothing.
//
// Times are integers in units of 10^scale s, as in the engine; printers convert them to ns exactly. A slack
// or a time that does not exist is an empty optional.
#pragma once

#include "base/Diagnostics.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Report {

using Time = std::int64_t;
using MaybeTime = std::optional<Time>;

struct Input {
    std::string path;
    std::string kind; // "sdf", "sdc" or "netlist"
    std::string sha256;
};

// Of all end points with a slack on that side.
struct Summary {
    Time worst = 0;       // 0 if none fails
    Time total = 0;       // of the failing ones
    MaybeTime worstSlack; // also if it is met; nothing if there is no end point
    std::uint64_t failing = 0;
    std::uint64_t endpoints = 0;
};

struct Clock {
    std::string name;
    MaybeTime period;           // nothing: a clock without constraint
    std::vector<Time> waveform; // rise and fall, or empty
    std::vector<std::string> sources;
    bool propagated = true;
    std::optional<std::string> generatedFrom;
    MaybeTime achievedPeriod; // positive
    Summary setup, hold;      // of the end points that this clock captures
};

// The exception that governs a path or an end point.
struct Exception {
    std::string file;
    unsigned line = 0;
    std::string kind;  // "false_path", "multicycle_path", "max_delay", "min_delay", "path_group"
    std::string value; // "2", "3.5", or empty
};

struct Endpoint {
    std::string pin;
    MaybeTime setupSlack, holdSlack;
    std::string setupClocks[2], holdClocks[2]; // launch and capture, of the worst; empty if there is none
    std::optional<Exception> setupException, holdException; // that govern the worst
};

enum class PointKind : std::uint8_t { clock, port, cell, net };

// One pin of a path.
struct Point {
    std::string pin;
    Time delay = 0;   // from the point before
    Time arrival = 0; // since the launch edge
    PointKind kind = PointKind::cell;
    char edge = 0;    // '^', 'v', or 0 if it is not known
    std::string cell; // the cell's type, or empty
};

// Points' arrivals, arrival and required count from the launch edge. The first point's arrival is
// launchClockDelay (and inputDelay); every other one's is that of the point before plus its delay; the last
// one's is the path's arrival. Setup: required = relation + captureClockDelay - uncertainty - check -
// outputDelay, slack = required - arrival. Hold: required = relation + captureClockDelay + uncertainty +
// check - outputDelay, slack = arrival - required. If a slack does not follow from these, printers
// show the difference as an adjustment.
struct Path {
    bool setup = true;
    std::string group; // path group
    std::string startpoint, endpoint;
    std::string startDescription,
        endDescription;                   // "rising edge-triggered register clocked by clk", "input port ..."
    std::string sourceClock, targetClock; // empty: none
    bool sourceRise = true, targetRise = true;
    Time launchEdge = 0, captureEdge = 0;             // captureEdge - launchEdge = relation
    Time launchClockDelay = 0, captureClockDelay = 0; // network and source latency together
    bool sourcePropagated = true, targetPropagated = true;
    Time inputDelay = 0; // external, if it starts at a port
    bool startsAtPort = false;
    Time outputDelay = 0;
    bool endsAtPort = false;
    Time relation = 0;
    Time uncertainty = 0;      // positive: it makes the requirement harder
    MaybeTime check;           // the setup or hold value of the end point's check
    std::vector<Point> points; // from the start point (its clock pin or port) to the end point
    Time arrival = 0, required = 0, slack = 0;
    std::optional<Exception> exception;
    std::optional<Exception> groupedBy; // the command behind its group; nothing: the capture clock's own
};

// What an exception does, for --exceptions.
struct ExceptionUse {
    Exception exception;
    std::string text;                                    // the command
    std::uint64_t setupEndpoints = 0, holdEndpoints = 0; // that it governs
    std::uint64_t paths = 0;                             // reported ones that it governs
    std::string status;                // "governs", "matches nothing", "matches no path", "always overruled"
    std::vector<unsigned> overruledBy; // lines, if it is always overruled
};

struct PulseCheck {
    std::string pin;
    bool period = false; // else width
    std::string clock;
    Time required = 0, actual = 0, slack = 0;
};

struct Report {
    int scale = -12; // of the times
    std::vector<Input> inputs;
    std::string design;
    Summary setup, hold;
    std::vector<Clock> clocks;
    std::vector<Endpoint> endpoints; // by name, in byte order
    std::vector<Path> paths;         // setup paths first, each kind worst first
    std::uint64_t unconstrainedEndpoints = 0;
    std::vector<std::string> unconstrained; // their names, if they were asked for
    std::vector<PulseCheck> pulseChecks;
    std::vector<ExceptionUse> exceptions;
    std::uint64_t arcs = 0, arcsWithoutDelay = 0, constraintsUnmatched = 0;
    std::vector<Base::Diagnostic> diagnostics;

    // Setup, hold or a pulse check fails.
    bool isViolated() const;
};

} // namespace Report
