// The places of a JSON netlist in which a value may stand.
#pragma once

#include <cstdint>
#include <string_view>

namespace Readers {

// What a value of the file is to the netlist.
enum class JsonSlot : std::uint8_t {
    ignored,
    document,
    modules,
    module,
    attributes,
    topFlag,
    boxFlag,
    ports,
    port,
    portDirection,
    offset,
    upto,
    cells,
    cell,
    cellType,
    pinDirections,
    pinDirection,
    connections,
    nets,
    net,
    bits,
    bit,
};

enum class JsonKind : std::uint8_t { null, boolean, number, fraction, string, array, object };

// A value that is neither an array nor an object.
struct JsonScalar {
    JsonKind kind = JsonKind::null;
    std::int64_t number = 0; // also of a boolean
    std::string_view text = {};
};

const char* toString(JsonKind kind);
// What must stand in the slot, for messages.
const char* expected(JsonSlot slot);
// Whether the slot takes an array, or an object.
bool takes(JsonSlot slot, JsonKind kind);
// The slot of an object's member, where its key alone says it.
JsonSlot member(JsonSlot slot, std::string_view key);

} // namespace Readers
