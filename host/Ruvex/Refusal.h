// How an operation of the host refuses a request: a typed exception with its message and its place, thrown
// before anything is changed.
#pragma once

#include "Ruvex/Exception.h"

namespace Ruvex {

// Kind: InvalidRequest, FactoryFailed or Fatal. `file` is the class, `line` a fixed number within it.
template <class Kind>
[[noreturn]] void refuse(const char* file, const char* function, unsigned line, const std::string& message) {
    throw Kind(InternalError(message, Error::locate(file, function, line)));
}

template <class Kind>
void require(bool condition, const char* file, const char* function, unsigned line, const char* message) {
    if (!condition)
        refuse<Kind>(file, function, line, message);
}

} // namespace Ruvex
