// The slack of a path: the one place where it is computed, for end points and for traced paths.
//
// Setup asks that the latest data comes no later than the earliest capture; hold asks that the earliest data
// comes no earlier than the latest capture. All times are in units; arrivals and requirements count from the
// launch edge.
#pragma once

#include "base/Side.h"
#include "model/Phase.h"

namespace Analysis {

using Base::PerSide;
using Base::Side;
using Model::Time;

// What a slack is made of. The values are those of one side: the latest arrival and the earliest capture for
// setup, the earliest arrival and the latest capture for hold.
struct SlackTerms {
    // Of the data at the end point.
    Time arrival = 0;
    // The capture edge minus the launch edge, or the delay that an exception puts in its place.
    Time relation = 0;
    // By how much the capture clock is late at the end point.
    Time captureLatency = 0;
    // Of the distance between the two clock edges.
    Time uncertainty = 0;
    // The setup or hold value of the check. 0 if the arrival includes it already.
    Time check = 0;
    // Of the path behind an output port: the maximum for setup, the minimum for hold.
    Time outputDelay = 0;
};

// When the data must be there (setup), or until when the old data must stay (hold).
constexpr Time requiredTime(Side side, const SlackTerms& terms) {
    // A late capture clock captures late, on both sides. The path behind a port delays the data once it has
    // left the port, so it has to leave the port by so much earlier, and may leave by so much earlier.
    const Time capture = terms.relation + terms.captureLatency - terms.outputDelay;
    // The capture edge may come early by the uncertainty, or late: each side takes the case that is worse for
    // it. A setup value asks for data before the edge, a hold value for data that stays after it.
    const Time margin = terms.uncertainty + terms.check;
    return side == Side::setup ? capture - margin : capture + margin;
}

// By how much the requirement is met; negative if it is violated. Setup is met by data that comes before the
// required time, hold by data that comes after it.
constexpr Time slackOf(Side side, const SlackTerms& terms) {
    const Time required = requiredTime(side, terms);
    return side == Side::setup ? required - terms.arrival : terms.arrival - required;
}

} // namespace Analysis
