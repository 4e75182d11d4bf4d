// Small services: the debug switch, and text.
#pragma once

#include "Ruvex/Export.h"

#include <string>

namespace Ruvex {

// Whether the host runs in debug mode: debug messages are printed, and records are made. Off at start.
RUVEX_API bool isDebug();
RUVEX_API void setDebug(bool debug);

// A copy in lower case. Only ASCII letters change.
RUVEX_API std::string getLowered(const std::string& text);

} // namespace Ruvex
