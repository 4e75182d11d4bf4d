// A netlist in either format.
#pragma once

#include "base/Diagnostics.h"
#include "base/Source.h"
#include "design/Netlist.h"

#include <string>

namespace Readers {

// The name of the file tells the format: .json or .v, with or without .gz behind. Otherwise its first byte
// does: JSON begins with a brace. Throws BadInput.
Design::Netlist readNetlist(Base::Source& source, const std::string& top, Base::Diagnostics& diagnostics);
Design::Netlist readNetlist(const std::string& path, const std::string& top, Base::Diagnostics& diagnostics);

} // namespace Readers
