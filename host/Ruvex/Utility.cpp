#include "Ruvex/Utility.h"

#include <algorithm>

namespace Ruvex {

namespace {
bool debugMode = false;
} // namespace

bool isDebug() { return debugMode; }

void setDebug(bool debug) { debugMode = debug; }

std::string getLowered(const std::string& text) {
    std::string lowered = text;
    std::transform(lowered.begin(), lowered.end(), lowered.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lowered;
}

} // namespace Ruvex
