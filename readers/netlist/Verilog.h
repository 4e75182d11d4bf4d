// Structural Verilog, as tools write it after placing and routing: modules, instances, gates, wires and
// assignments of wires.
#pragma once

#include "Input.h"
#include "Modules.h"

namespace Readers {

// One flat netlist of the top module (empty: to be found). Cells of modules that the file does not define
// have no directions of pins, and a pin's bits are numbered by their position from 0. Throws BadInput.
Netlist readVerilog(Source& source, const std::string& top, Diagnostics& diagnostics);
// The modules alone. Throws BadInputs.
Modules readVerilogModules(Input& input, Diagnostics& diagnostics);

} // namespace Readers
