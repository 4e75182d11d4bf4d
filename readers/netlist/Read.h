// A netlist in either format.
#pragma once

#include "../Diagnostics.h"
#include "../Source.h"
#include "Netlist.h"

#include <string>

namespace Readers {

// The name of the file tells the format: .json or .v, with or without .gz behind. Otherwise its first byte
// does: JSON begins with a brace. Throws BadInput.
Netlist readNetlist(Source& source, const std::string& top, Diagnostics& diagnostics);
Netlist readNetlist(const std::string& path, const std::string& top, Diagnostics& diagnostics);

} // namespace Readers
