// Waits for a child process with a deadline: a child that hangs fails its own test, by name, instead of
// stopping all.
#pragma once

#include <cerrno>
#include <chrono>
#include <optional>
#include <string>
#include <thread>

#include <csignal>

#include <fcntl.h>
#include <sys/wait.h>

namespace Support {

// What any child of a test needs at most, on a busy machine and under the sanitizers.
constexpr std::chrono::seconds patience{60};

// The child's status as waitpid() reports it. If the child still runs after that time, it is killed and the
// result is empty.
inline std::optional<int> waitFor(pid_t child, std::chrono::milliseconds atMost = patience) {
    const auto last = std::chrono::steady_clock::now() + atMost;
    int status = 0;
    for (pid_t ended = 0; (ended = waitpid(child, &status, WNOHANG)) != child;) {
        if (ended < 0)
            return {};
        if (std::chrono::steady_clock::now() > last) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            return {};
        }
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return status;
}

// Opens a named pipe for writing when a reader has opened it. -1 if none does in that time.
inline int openForReader(const std::string& pipe, std::chrono::milliseconds atMost = patience) {
    const auto last = std::chrono::steady_clock::now() + atMost;
    for (;;) {
        const int file = open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        if (file >= 0 || errno != ENXIO || std::chrono::steady_clock::now() > last)
            return file;
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
}

} // namespace Support
