// Any bytes as a constraint file of a small design: read, or rejected with BadInput, and either way within
// the limits. Constraints that were read refer only to existing objects.
#include "Netlists.h"
#include "tests/support/command/Script.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

using namespace Readers::Sdc;

// The grace allows for a machine under load and for sanitizers. A single command that takes longer is a
// finding.
constexpr Limits limits{.time = std::chrono::milliseconds(200),
                        .commands = 20'000,
                        .depth = 100,
                        .memory = 500,
                        .grace = std::chrono::minutes(2),
                        .giveUp = [](std::string_view line) noexcept {
                            std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
                            std::abort();
                        }};

void check(const Design::Constraints& constraints) {
    const Design::RoutedDesign& design = Support::smallDesign();
    const auto isPin = [&](Design::PinId pin) { return pin.number() < design.pins.size(); };
    const auto isClock = [&](Design::ClockId clock) { return clock.number() < constraints.clocks.size(); };
    for (const Design::Clock& clock : constraints.clocks)
        for (const Design::PinId target : clock.targets)
            Fuzz::require(isPin(target), "a clock's targets are pins");
    for (const Design::PortDelay& delay : constraints.portDelays)
        Fuzz::require(isPin(delay.pin) && (delay.clock == Base::none || isClock(delay.clock)),
                      "a delay's port and clock are there");
    for (const Design::ClockGroups& groups : constraints.clockGroups)
        for (const auto& group : groups.groups)
            for (const Design::ClockId clock : group)
                Fuzz::require(isClock(clock), "a group's clocks are there");
    for (const Design::CaseValue& value : constraints.caseValues)
        Fuzz::require(isPin(value.pin), "a constant's pin is there");
    // Names every object once more.
    Support::toText(design, constraints);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The folder does not exist, so nothing can be sourced.
    Base::Source source("fuzz.none/fuzz.sdc", std::string_view(reinterpret_cast<const char*>(data), size));
    Base::Diagnostics diagnostics;
    try {
        Reader reader(Support::smallDesign(), diagnostics, limits);
        reader.read(source);
        check(reader.take());
    } catch (const Base::BadInput& bad) {
        Fuzz::require(bad.diagnostic().place.file == source.path(), "a refusal names the file");
    }
    return 0;
}
