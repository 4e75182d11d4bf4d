// Refusals: an operation of the host throws a typed exception, with its message and its place, before it
// changes anything.
#pragma once

#include "Ruvex/Exception.h"

namespace Ruvex {

// Throws a Kind, which is InvalidRequest, FactoryFailed or Fatal. `file` is the class, `line` a fixed number
// in it.
template <class Kind>
[[noreturn]] void refuse(const char* file, const char* function, unsigned line, const std::string& message) {
    throw Kind(InternalError(message, Error::locate(file, function, line)));
}

// Refuses if the condition is false.
template <class Kind>
void require(bool condition, const char* file, const char* function, unsigned line, const char* message) {
    if (!condition)
        refuse<Kind>(file, function, line, message);
}

} // namespace Ruvex
