// Signals, no memory, and the end in the middle of a script.
#include "Ending.h"

#include "../readers/sdc/Watch.h"
#include "Options.h"
#include "Output.h"
#include "Progress.h"
#include "Session.h"

#include <array>
#include <csignal>
#include <new>

#include <unistd.h>

namespace Cli {

namespace {

struct sigaction beforeFault {};

[[noreturn]] void end(std::string_view line, ExitStatus status) noexcept {
    Output::abandon();
    Progress::abandon();
    for (const std::string_view text : {line, std::string_view("\n")})
        [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
    _exit(status);
}

// Where nothing would heed the request, and when it is made again, the process ends here: nothing is written
// yet but a file that has not taken its place.
void onInterrupt(int) {
    static volatile std::sig_atomic_t requests = 0;
    requests = requests + 1;
    if (requestStop() && requests == 1)
        return;
    end("vorlen: interrupted", interrupted);
}

void onEnd(int signal) {
    Output::abandon();
    Progress::abandon();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// What the program did itself happens again when the handler is left, and then ends it as ever.
void onFault(int signal, siginfo_t* info, void*) {
    Readers::Sdc::Watch::onFault(info->si_addr);
    Output::abandon();
    sigaction(signal, &beforeFault, nullptr);
    if (info->si_code <= 0) // sent by kill()
        std::raise(signal);
}

// On a stack of its own: that of the program may be at its end.
void handleFaults() {
    static std::array<char, std::size_t{1} << 16> stack;
    stack_t own{};
    own.ss_sp = stack.data();
    own.ss_size = stack.size();
    sigaltstack(&own, nullptr);
    struct sigaction action {};
    action.sa_sigaction = onFault;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigaction(SIGSEGV, &action, &beforeFault);
}

} // namespace

void handleSignals() {
    std::signal(SIGINT, onInterrupt);
    std::signal(SIGTERM, onEnd);
    std::signal(SIGHUP, onEnd);
    std::signal(SIGABRT, onEnd);
    handleFaults();
    std::signal(SIGXFSZ, SIG_IGN); // a limit of the files' size is told as any other failure to write
}

void handleLackOfMemory() {
    std::set_new_handler([] { end("vorlen: error: out of memory", internalError); });
}

void endBadScript(std::string_view line) noexcept { end(line, badInput); }

} // namespace Cli
