// Terminals: what the system and the environment say of them.
#include "cli/Terminal.h"

#include <cstdlib>
#include <string_view>

#include <sys/ioctl.h>
#include <unistd.h>

namespace Cli {

namespace {

std::string_view environment(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : "";
}

} // namespace

bool isCapableTerminal(int descriptor) {
    const std::string_view kind = environment("TERM");
    return isatty(descriptor) == 1 && !kind.empty() && kind != "dumb";
}

bool wantsColor(ColorWhen when, int descriptor) {
    if (when == ColorWhen::automatic)
        return isCapableTerminal(descriptor) && environment("NO_COLOR").empty();
    return when == ColorWhen::always;
}

bool wantsProgress(ProgressWhen when, int descriptor) {
    return when == ProgressWhen::automatic && isCapableTerminal(descriptor);
}

std::size_t columnsOf(int descriptor, std::size_t otherwise) {
    winsize size{};
    if (ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return otherwise;
    return size.ws_col;
}

} // namespace Cli
