// Two launches on a design, with a change between them, by the library and by the reference: all that they
// leave in the database and say on the console, and every map of every pole in every sweep at the moment when
// the sweep ends, as text to compare line by line.
#pragma once

#include "RandomDesign.h"
#include "Snapshot.h"

#include <string>

namespace oracle {

std::string launchLibrary(RandomDesign& design);
std::string launchReference(RandomDesign& design);

} // namespace oracle
