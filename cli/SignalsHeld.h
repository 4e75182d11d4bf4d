// A part of the program that no signal interrupts.
#pragma once

#include <csignal>

namespace Cli {

// While it lives, signals of other programs and of the terminal wait in this thread. Faults of the program
// itself do not wait.
class SignalsHeld {
public:
    SignalsHeld() noexcept {
        sigset_t all;
        sigfillset(&all);
        for (const int fault : {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGSYS, SIGTRAP})
            sigdelset(&all, fault);
        pthread_sigmask(SIG_BLOCK, &all, &before_);
    }
    ~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

private:
    sigset_t before_{};
};

} // namespace Cli
