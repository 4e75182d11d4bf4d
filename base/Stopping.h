// A request to stop the run that goes on: by a signal handler or another thread, heeded by long loops.
#pragma once

#include <stdexcept>

namespace Base {

// The user asked to stop, and the run did.
class Interrupted : public std::runtime_error {
public:
    Interrupted() : std::runtime_error("interrupted") {}
};

// From now on throwIfStopped() throws. It cannot be taken back. Safe in a signal handler.
void askToStop() noexcept;

// For long loops of a run: throws Interrupted after askToStop(). Costs a load.
void throwIfStopped();

} // namespace Base
