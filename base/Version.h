// The version of the project. It is written in CMakeLists.txt only; tests compare the documents with it.
#pragma once

#include <string_view>

namespace Base {

// "4.0"
extern const std::string_view version;

} // namespace Base
