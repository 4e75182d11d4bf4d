// A netlist in either format.
#pragma once

#include "base/Diagnostics.h"
#include "base/Source.h"
#include "design/Netlist.h"

#include <string>

namespace Readers {

// The format is that of the file's name, .json or .v, with or without .gz after it. For other names the first
// byte decides: JSON begins with a brace. Throws BadInput.
Design::Netlist readNetlist(Base::Source& source, const std::string& top, Base::Diagnostics& diagnostics);
Design::Netlist readNetlist(const std::string& path, const std::string& top, Base::Diagnostics& diagnostics);

} // namespace Readers
