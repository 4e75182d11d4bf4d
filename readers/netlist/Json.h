// The JSON netlist that place-and-route tools write: modules with ports, cells and netnames, whose bits are
// numbers of nets or the constants "0", "1", "x" and "z".
#pragma once

#include "readers/netlist/Input.h"
#include "readers/netlist/Modules.h"

namespace Readers {

// One flat netlist of the top module (empty: to be found). Throws BadInput.
Design::Netlist readJson(Base::Source& source, const std::string& top, Base::Diagnostics& diagnostics);
// The modules, not flattened.
Modules readJsonModules(Input& input);

} // namespace Readers
