// From modules to one flat module.
#pragma once

#include "readers/netlist/Modules.h"

namespace Readers {

// Cells come depth first, in the order of their modules. A net is what ports and connections join through
// the hierarchy. Throws BadInput for modules that instantiate themselves, for connections that do not fit,
// and for a result that is too large; a warning reports names that more than one net, cell or port has.
Design::Netlist flatten(Modules modules, const std::string& top, Base::Diagnostics& diagnostics);

} // namespace Readers
