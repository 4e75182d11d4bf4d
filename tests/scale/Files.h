// The files of a large design, described piece by piece. They are deleted with the object.
//
// All delays are in ps. Registers are of type DFF (C, D, Q): 100 from a rising C to Q, setup 50, hold 20.
#pragma once

#include "analysis/Session.h"
#include "tests/support/Sdf.h"
#include "tests/support/TemporaryFolder.h"

#include <map>
#include <string>
#include <vector>

namespace Scale {

constexpr long clockToOutput = 100, setup = 50, hold = 20;

class Files {
public:
    void wire(const std::string& from, const std::string& to, long delay = 0) {
        ++arcs_;
        wires_ += "(INTERCONNECT " + from + " " + to + " (" + std::to_string(delay) + "))\n";
    }
    void flipFlop(const std::string& name) {
        arcs_ += 2;
        cells_ += Support::flipFlop(name, {.clockToOutput = clockToOutput, .setup = setup, .hold = hold});
    }
    // A cell with arcs from each input to Z.
    void gate(const std::string& name, const std::vector<std::string>& inputs, long delay) {
        arcs_ += inputs.size();
        std::string delays;
        for (const std::string& input : inputs)
            delays += "\n(IOPATH " + input + " Z (" + std::to_string(delay) + "))";
        cells_ += Support::cell("GATE", name, delays);
    }
    void constrain(const std::string& command) { constraints_ += command + "\n"; }

    // Writes them, and begins a new design.
    Analysis::SessionOptions write() {
        Analysis::SessionOptions options;
        options.sdf = folder_.write("d.sdf", Support::sdf(Support::wires(wires_) + cells_));
        options.sdc = {folder_.write("d.sdc", constraints_)};
        wires_ = cells_ = constraints_ = {};
        return options;
    }
    std::size_t getArcCount() const { return arcs_; }

private:
    Support::TemporaryFolder folder_;
    std::string wires_, cells_, constraints_;
    std::size_t arcs_ = 0;
};

struct Slacks {
    Report::MaybeTime setup, hold;

    bool operator==(const Slacks&) const = default;
};

using SlacksByEnd = std::map<std::string, Slacks>; // key: end point

inline SlacksByEnd slacksOf(const Report::Report& report) {
    SlacksByEnd slacks;
    for (const Report::Endpoint& endpoint : report.endpoints)
        slacks[endpoint.pin] = {endpoint.setupSlack, endpoint.holdSlack};
    return slacks;
}

} // namespace Scale
