// Any bytes as a JSON netlist: read, or rejected with BadInput. The references of a netlist that was read are
// consistent.
#include "Netlists.h"
#include "readers/netlist/Json.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr const char* name = "fuzz.json";
    Base::Source source(name, std::string_view(reinterpret_cast<const char*>(data), size));
    Base::Diagnostics diagnostics;
    try {
        const Design::Netlist netlist = Readers::readJson(source, "", diagnostics);
        Fuzz::checkNetlist(netlist);
        Fuzz::makeDesign(netlist);
    } catch (const Base::BadInput& bad) {
        Fuzz::require(bad.diagnostic().place.file == name, "a refusal names the file");
    }
    return 0;
}
