// Handlers of signals and of failed allocations, and the end in the middle of a script.
#include "cli/Ending.h"

#include "base/Characters.h"
#include "cli/Options.h"
#include "cli/Output.h"
#include "cli/Progress.h"
#include "cli/SignalsHeld.h"
#include "readers/sdc/Watch.h"

#include <array>
#include <atomic>
#include <csignal>
#include <new>

#include <unistd.h>

namespace Cli {

namespace {

struct sigaction beforeFault {};

// The status of a run whose outputs are in their places; `none` before that.
constexpr int none = -1;
std::atomic<int> concluded = none;
static_assert(std::atomic<int>::is_always_lock_free);

void write(std::string_view bytes) noexcept {
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, bytes.data(), bytes.size());
}

// The same as Base::printable(), piece by piece, since it must not allocate.
void writeShown(std::string_view line) noexcept {
    constexpr std::string_view digits = "0123456789ABCDEF";
    while (!line.empty()) {
        const std::size_t plain = Base::lengthWithoutControls(line);
        write(line.substr(0, plain));
        line.remove_prefix(plain);
        const std::size_t control = Base::controlLength(line);
        for (const char c : line.substr(0, control)) {
            const auto byte = static_cast<unsigned char>(c);
            const std::array<char, 4> escape{'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
            write({escape.data(), escape.size()});
        }
        line.remove_prefix(control);
    }
}

[[noreturn]] void end(std::string_view line, ExitStatus status) noexcept {
    Output::abandon();
    Progress::abandon();
    writeShown(line);
    write("\n");
    _exit(status);
}

bool isFault(int signal) {
    return signal == SIGBUS || signal == SIGFPE || signal == SIGILL || signal == SIGSYS || signal == SIGTRAP;
}

// A fault of the program itself happens again when the handler returns, and then ends the process as if it
// were not handled.
void onEnd(int signal, siginfo_t* info, void*) {
    if (const int status = concluded; status != none && !isFault(signal) && signal != SIGABRT)
        _exit(status);
    if (signal == SIGINT)
        end("vorlen: interrupted", interrupted);
    Output::abandon();
    Progress::abandon();
    std::signal(signal, SIG_DFL);
    if (info->si_code <= 0 || !isFault(signal))
        std::raise(signal);
}

void onFault(int signal, siginfo_t* info, void*) {
    Readers::Sdc::Watch::onFault(info->si_addr);
    Output::abandon();
    sigaction(signal, &beforeFault, nullptr);
    if (info->si_code <= 0) // sent by kill()
        std::raise(signal);
}

// Whether the signal ends a process that does not handle it.
bool isEnding(int signal) {
    for (const int other : {SIGCHLD, SIGCONT, SIGKILL, SIGSTOP, SIGTSTP, SIGTTIN, SIGTTOU, SIGURG, SIGWINCH})
        if (signal == other)
            return false;
    return true;
}

// The handler has a stack of its own, since that of the program may be exhausted.
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

// Handlers that others have installed, to profile or to check the program, stay.
void handleSignals() {
    handleFaults();
    std::signal(SIGXFSZ, SIG_IGN); // a limit of file sizes is reported like any other failure to write
    struct sigaction action {};
    action.sa_sigaction = onEnd;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESTART;
    sigfillset(&action.sa_mask);
    for (int signal = 1; signal < NSIG; ++signal) {
        struct sigaction inherited {};
        if (isEnding(signal) && sigaction(signal, nullptr, &inherited) == 0 &&
            (inherited.sa_flags & SA_SIGINFO) == 0 && inherited.sa_handler == SIG_DFL)
            sigaction(signal, &action, nullptr);
    }
}

void conclude(ExitStatus status, const std::function<void()>& putInPlace) {
    const SignalsHeld held;
    putInPlace();
    concluded = status;
}

void handleLackOfMemory() {
    std::set_new_handler([] { end("vorlen: error: out of memory", internalError); });
}

void endBadScript(std::string_view line) noexcept { end(line, badInput); }

} // namespace Cli
