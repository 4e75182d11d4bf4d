// The whole database as a text, to compare before and after.
#pragma once

#include <string>

namespace HostTest {

// All that can be read from the global cell, analyzer and application, line by line. The part of a null
// global is empty.
std::string takeSnapshot();

} // namespace HostTest
