// The JSON netlist that place-and-route tools write: modules with ports, cells and netnames, whose bits are
// numbers of nets or the constants "0", "1", "x" and "z".
#pragma once

#include "Input.h"
#include "Modules.h"

namespace Readers {

// One flat netlist of the top module (empty: to be found). Throws BadInput.
Netlist readJson(Source& source, const std::string& top, Diagnostics& diagnostics);
// The modules alone.
Modules readJsonModules(Input& input);

} // namespace Readers
