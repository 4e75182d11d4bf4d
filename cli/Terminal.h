// Properties of a terminal: colour, whether a progress line is shown, the width.
#pragma once

#include "cli/Options.h"

#include <cstddef>

namespace Cli {

// Whether it is a terminal that understands more than plain text.
bool isCapableTerminal(int descriptor);

// 'auto' means colour on a capable terminal, unless the environment has NO_COLOR.
bool wantsColor(ColorWhen when, int descriptor);

bool wantsProgress(ProgressWhen when, int descriptor);

// The number of its columns; `otherwise` if it is no terminal, or does not report it.
std::size_t columnsOf(int descriptor, std::size_t otherwise);

} // namespace Cli
