// Any bytes as an SDF file: read, or refused with BadInput. The events do not depend on how the bytes come in
// blocks, and what was read makes a design or is refused there.
#include "Netlists.h"
#include "readers/sdf/Parser.h"
#include "tests/readers/sdf/EventLog.h"

#include <cstddef>
#include <cstdint>

namespace {

constexpr const char* name = "fuzz.sdf";

// The events, and the rejection if there is one.
std::vector<std::string> eventsOf(std::string_view bytes, std::size_t blockSize) {
    Support::EventLog log;
    log.withPlaces = true;
    Base::Diagnostics diagnostics;
    Base::Source source(name, bytes);
    std::vector<std::string> end;
    try {
        Readers::Sdf::parse(source, log, diagnostics, blockSize);
    } catch (const Base::BadInput& bad) {
        end.emplace_back(bad.what());
    }
    for (const Base::Diagnostic& diagnostic : diagnostics.all())
        end.push_back(toString(diagnostic));
    std::vector<std::string> events = log.lines();
    events.insert(events.end(), end.begin(), end.end());
    return events;
}

void annotate(std::string_view bytes) {
    Design::RoutedDesign design;
    Base::Diagnostics diagnostics;
    Readers::Annotator annotator(design, nullptr, {}, name, diagnostics);
    Base::Source source(name, bytes);
    try {
        Readers::Sdf::parse(source, annotator, diagnostics);
        annotator.finish();
    } catch (const Base::BadInput& bad) {
        Fuzz::require(bad.diagnostic().place.file == name, "a refusal names the file");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t smallBlock = 16;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    Fuzz::require(eventsOf(bytes, Readers::Sdf::Lexer::defaultBlock) == eventsOf(bytes, smallBlock),
                  "blocks do not matter");
    annotate(bytes);
    return 0;
}
