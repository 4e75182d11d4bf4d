// Two launches on a design, with a change between them, by the library and by the reference. The result is
// text to compare line by line: all that the launches leave in the database and print on the console, and
// every map of every pole in every sweep at the moment when the sweep is destroyed.
#pragma once

#include "RandomDesign.h"
#include "Snapshot.h"

#include <string>

namespace oracle {

std::string launchLibrary(RandomDesign& design);
std::string launchReference(RandomDesign& design);

} // namespace oracle
