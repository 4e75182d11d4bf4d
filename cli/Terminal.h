// What a terminal takes: colour, a progress line, how wide it is.
#pragma once

#include "cli/Options.h"

#include <cstddef>

namespace Cli {

// A terminal that understands more than plain text.
bool isCapableTerminal(int descriptor);

// 'auto' is colour on such a terminal, unless the environment has NO_COLOR.
bool wantsColor(ColorWhen when, int descriptor);

bool wantsProgress(ProgressWhen when, int descriptor);

// Its columns; otherwise where it is none, or does not say.
std::size_t columnsOf(int descriptor, std::size_t otherwise);

} // namespace Cli
