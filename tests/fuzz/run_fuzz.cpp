// Bytes as a small design: every choice in drawing it takes the next byte. Two launches on it, with a change
// between them, leave and say what the plain reference does.
#include "Netlists.h"
#include "tests/oracle/Launches.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> bytes(data, size);
    const auto runOn = [bytes](std::string (*side)(oracle::RandomDesign&)) {
        oracle::RandomDesign design{oracle::Dice(bytes)};
        return side(design);
    };
    const std::string difference =
        oracle::firstDifference(runOn(oracle::launchLibrary), runOn(oracle::launchReference));
    Fuzz::require(difference.empty(), difference.c_str());
    return 0;
}
