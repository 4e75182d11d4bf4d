// Structural Verilog, as tools write it after placing and routing: modules, instances, gates, wires and
// assignments of wires.
#pragma once

#include "readers/netlist/Input.h"
#include "readers/netlist/Modules.h"

namespace Readers {

// One flat netlist of the top module (empty: to be found). Cells of modules that the file does not define
// have no directions of pins, and a pin's bits are numbered by their position from 0. Throws BadInput.
Design::Netlist readVerilog(Base::Source& source, const std::string& top, Base::Diagnostics& diagnostics);
// The modules, not flattened. Throws BadInputs.
Modules readVerilogModules(Input& input, Base::Diagnostics& diagnostics);

} // namespace Readers
