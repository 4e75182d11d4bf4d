// The roots behind clock pins, by a walk back from each.
#include "Roots.h"

#include <algorithm>
#include <map>
#include <unordered_set>

namespace Cli {

using Readers::none;
using Readers::Model::Arc;
using Readers::Model::ArcKind;

namespace {

// How many roots without a clock are named one by one.
constexpr std::size_t namedRoots = 20;

// The roots behind clock pins: what nothing drives through nets and combinational cells, with the number of
// clock pins behind each; of a loop that nothing drives the pin where it is cut. Register outputs count only
// where a pin has no other root.
std::map<std::uint32_t, std::size_t> rootsBehind(const Readers::Design& design,
                                                 const Readers::Model::Network& network,
                                                 const std::vector<std::uint32_t>& clockPins) {
    std::map<std::uint32_t, std::size_t> roots;
    for (const std::uint32_t clockPin : clockPins) {
        std::vector<std::uint32_t> next;
        network.eachCopy(network.sinkOf(clockPin), [&](std::uint32_t node) { next.push_back(node); });
        std::unordered_set<std::uint32_t> seen(next.begin(), next.end());
        std::vector<std::uint32_t> own, registers;
        while (!next.empty()) {
            const std::uint32_t node = next.back();
            next.pop_back();
            bool driven = false;
            for (const std::uint32_t number : network.in(node)) {
                const Arc& arc = network.arcs()[number];
                driven |= arc.kind != ArcKind::launch && arc.kind != ArcKind::cut;
                if (arc.kind == ArcKind::through && seen.insert(arc.from).second)
                    next.push_back(arc.from);
            }
            if (driven)
                continue;
            const std::uint32_t pin = network.pinOf(node);
            (design.isRegisterOutput(pin) ? registers : own).push_back(pin);
        }
        for (const std::uint32_t root : own.empty() ? registers : own)
            ++roots[root];
    }
    return roots;
}

} // namespace

Readers::Sdc::Constraints clocksAtRoots(const Readers::Design& design, Readers::Diagnostics& diagnostics) {
    Readers::Sdc::Constraints constraints;
    constraints.files = {""};
    Readers::Diagnostics unheard; // of loops, which are told when the clocks are known
    const Readers::Model::Network network(design, constraints, {}, unheard);
    std::vector<std::uint32_t> clockPins;
    for (std::uint32_t pin = 0; pin < design.pins.size(); ++pin)
        if (design.isClockPin(pin))
            clockPins.push_back(pin);
    for (const auto& [root, count] : rootsBehind(design, network, clockPins)) {
        Readers::Sdc::Clock clock;
        clock.name = design.pinName(root);
        clock.targets = {root};
        constraints.clocks.push_back(std::move(clock));
    }
    std::ranges::sort(constraints.clocks, {}, &Readers::Sdc::Clock::name);
    const std::size_t count = constraints.clocks.size();
    diagnostics.note({}, "no constraints are given: " + std::to_string(count) +
                             (count == 1 ? " clock root" : " clock roots") + " found, without a period");
    return constraints;
}

void warnOfUnclocked(const Readers::Design& design, const Readers::Model::Network& network,
                     const Readers::Model::TimingModel& model, Readers::Diagnostics& diagnostics) {
    std::size_t named = 0;
    const auto roots = rootsBehind(design, network, model.unclocked());
    for (const auto& [root, count] : roots) {
        if (named++ == namedRoots) {
            diagnostics.warning({}, std::to_string(roots.size() - namedRoots) +
                                        " more roots of clock pins have no clock");
            return;
        }
        const std::string behind = std::to_string(count) + (count == 1 ? " clock pin" : " clock pins") +
                                   " behind '" + design.pinName(root) + "'";
        diagnostics.warning({},
                            "no clock reaches " + behind +
                                (design.isRegisterOutput(root)
                                     ? ": a clock does not pass a register; expected a generated clock there"
                                     : ""));
    }
}

} // namespace Cli
