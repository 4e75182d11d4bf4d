// A design of SDF text under constraints, up to its network and clocks, and their parts as lines of text.
#pragma once

#include "model/TimingModel.h"
#include "tests/support/command/Annotated.h"

#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>

namespace Support {

class Built {
public:
    // Clocks are propagated unless the script says otherwise.
    Built(std::string_view cells, const std::string& script, std::optional<std::string_view> netlist = {},
          const Model::LoopLimits& limits = {});

    Annotated annotated;
    Design::Constraints constraints;
    std::unique_ptr<Model::Network> network;
    std::unique_ptr<Model::Clocks> clocks;

    const Model::Clock& clock(std::string_view name) const;

    // Of the network: "a > b 3 4", with "launch rise", "hidden" or "cut" behind; in reading order.
    std::string arcs() const;
    // The paths along through arcs from where nothing leads to, to ports: "a g/A g/Y y", in byte order.
    std::string paths() const;
    // "name: 20000 {0 10000} of clk", and " at r0/Q 500 600" for each target's insertion delay.
    std::string waves() const;
    // The pins that a clock reaches, in byte order.
    std::string reach(std::string_view name) const;
    // What the network, the clocks and the poles had to say.
    std::string messages() const;
    // The poles: clock pins' edges, starts and ends: "start r0/C rise, ...; end r0/D by r0/C rise, ...".
    std::string poles(const std::unordered_set<Design::PinId>& timedPorts = {});

private:
    Base::Diagnostics diagnostics_;
};

// The error of what cannot be built, without the file's name; or "no error".
std::string buildErrorOf(std::string_view cells, const std::string& script);

} // namespace Support
