// What arrives at an end point on one side of the analysis under one set of exception classes, and what is
// required of it.
#pragma once

#include "analysis/ClockRelations.h"
#include "analysis/Slack.h"
#include "exceptions/ClassSet.h"
#include "exceptions/Exceptions.h"

namespace Analysis {

using Exceptions::ClassSet;

struct Arrival {
    const Model::End* end = nullptr;
    ClassSet classes;
    // Lives as long as the Exceptions.
    const Exceptions::Requirement* requirement = nullptr;
    Side side = Side::setup;
    // Governed by a false path: it has no terms and no slack.
    bool isFalse = false;
    // The arrival includes the check's value, since the engine's does.
    SlackTerms terms = {};
    Time slack = 0;
};

// What decides between equal slacks of an end point, before the pins of the paths do.
struct Standing {
    ClockEdges edges;
    Design::ExceptionId exception;
    const Model::End* end = nullptr;
};

inline Standing standingOf(const ClockEdges& edges, const Arrival& arrival) {
    return {edges, arrival.requirement->exception[arrival.side], arrival.end};
}

} // namespace Analysis
