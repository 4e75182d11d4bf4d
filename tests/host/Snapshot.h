// The whole database as a text, to compare before and after.
#pragma once

#include <string>

namespace HostTest {

// Everything that the global cell, analyzer and application can be asked for, line by line; empty parts where
// there is none.
std::string takeSnapshot();

} // namespace HostTest
