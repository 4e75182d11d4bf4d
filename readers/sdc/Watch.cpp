// The watching thread, Tcl's panics, and the end of the stack.
#include "Watch.h"

#include "../Decimal.h"

#include <tcl.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include <pthread.h>
#include <unistd.h>

namespace Readers::Sdc {

namespace {

constexpr std::size_t longestPanic = 512, longestLine = 8192;
constexpr std::ptrdiff_t widestFrame = 1 << 16; // what a call may step over at once
constexpr int refused = 2;
constexpr std::chrono::milliseconds leastWait{10};

thread_local Watch* current = nullptr;

// A text that is put together where no memory may be asked for. What does not fit is cut off.
class Line {
public:
    Line& operator<<(std::string_view part) noexcept {
        const std::size_t count = std::min(part.size(), text_.size() - size_);
        std::copy_n(part.data(), count, text_.data() + size_);
        size_ += count;
        return *this;
    }
    Line& operator<<(unsigned number) noexcept {
        std::array<char, 16> digits{};
        const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        return *this << std::string_view(digits.data(), end);
    }
    std::string_view text() const noexcept { return {text_.data(), size_}; }

private:
    std::array<char, longestLine> text_{};
    std::size_t size_ = 0;
};

// Signals are for the threads of the program: its handlers may count on that.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t before_{};
};

clockid_t clockOfThisThread() {
    clockid_t clock = CLOCK_THREAD_CPUTIME_ID;
    pthread_getcpuclockid(pthread_self(), &clock);
    return clock;
}

// The lowest address of this thread's stack; null where it is not known.
const char* endOfStack() {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0)
        return nullptr;
    void* lowest = nullptr;
    std::size_t size = 0;
    pthread_attr_getstack(&attributes, &lowest, &size);
    pthread_attr_destroy(&attributes);
    return static_cast<const char*>(lowest);
}

} // namespace

ProcessorTime processorTime(clockid_t thread) {
    timespec time{};
    clock_gettime(thread, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

void endProcess(std::string_view line) noexcept {
    for (const std::string_view text : {line, std::string_view("\n")})
        [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
    _exit(refused);
}

std::string overTime(const Limits& limits) {
    const Decimal seconds{limits.time.count(), -3};
    return "the script ran for more than " + seconds.toString() + " s";
}

Watch::Watch(const Limits& limits, std::string file)
    : giveUp_(limits.giveUp), overTime_(overTime(limits)), clock_(clockOfThisThread()),
      last_(processorTime(clock_) + limits.time + limits.grace), stackEnd_(endOfStack()), outer_(current),
      file_(std::move(file)) {
    Tcl_SetPanicProc(&Watch::onPanic);
    const SignalsBlocked blocked;
    thread_ = std::jthread([this](const std::stop_token& stop) { wait(stop); });
    current = this;
}

Watch::~Watch() { current = outer_; }

void Watch::moveTo(const std::string& file, unsigned line) {
    const std::lock_guard lock(mutex_);
    if (file_ != file)
        file_ = file;
    line_ = line;
}

// Where all of the processor is the script's, one sleep is enough.
void Watch::wait(const std::stop_token& stop) {
    std::unique_lock lock(mutex_);
    const auto left = [this] { return last_ - processorTime(clock_); };
    while (left() > ProcessorTime::zero()) {
        wake_.wait_for(lock, stop, std::max<ProcessorTime>(left(), leastWait), [] { return false; });
        if (stop.stop_requested())
            return;
    }
    end(overTime_, "");
}

// Outside of a watch as Tcl does it by itself.
void Watch::onPanic(const char* format, ...) noexcept {
    std::array<char, longestPanic> text{};
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    if (current != nullptr) {
        current->mutex_.lock();
        current->end("the script is given up: ", text.data());
    }
    std::fprintf(stderr, "%s\n", text.data());
    std::abort();
}

// This thread cannot hold the lock: it takes it for a moment between commands only.
void Watch::onFault(const void* address) noexcept {
    if (current == nullptr || current->stackEnd_ == nullptr)
        return;
    const std::ptrdiff_t beyond = current->stackEnd_ - static_cast<const char*>(address);
    if (beyond < -widestFrame || beyond > widestFrame)
        return;
    current->mutex_.lock();
    current->end("the script is given up: ", "it nests too deep");
}

void Watch::end(std::string_view opening, std::string_view reason) noexcept {
    Line line;
    line << file_ << ":";
    if (line_ != 0)
        line << line_ << ":";
    giveUp_((line << " error: " << opening << reason).text());
    std::abort();
}

} // namespace Readers::Sdc
