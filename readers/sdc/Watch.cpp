// The watching thread, Tcl's panics, and the end of the stack.
#include "readers/sdc/Watch.h"

#include "base/Characters.h"
#include "base/Decimal.h"

#include <tcl.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

namespace Readers::Sdc {

namespace {

constexpr std::size_t longestPanic = 512, longestLine = 8192;
constexpr std::ptrdiff_t widestFrame = 1 << 16; // what a call may step over at once
constexpr int refused = 2;
constexpr std::chrono::milliseconds leastWait{10}, mostWait{20}; // a command takes memory fast

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

// The lowest address of this thread's stack; null if it is not known.
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

std::size_t heldMemory() noexcept {
    constexpr std::size_t unit = std::size_t{1} << 20;
    std::array<char, 128> text{};
    ssize_t size = 0;
    if (const int file = open("/proc/self/statm", O_RDONLY | O_CLOEXEC); file >= 0) {
        size = ::read(file, text.data(), text.size());
        close(file);
    }
    const std::string_view numbers(text.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    std::size_t pages = 0; // the second number
    if (const std::size_t space = numbers.find(' '); space != std::string_view::npos)
        std::from_chars(numbers.data() + space + 1, numbers.data() + numbers.size(), pages);
    if (pages != 0)
        return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / unit;
    rusage usage{};                 // GCOVR_EXCL_LINE: without /proc, the most that it held so far
    getrusage(RUSAGE_SELF, &usage); // GCOVR_EXCL_LINE
    return static_cast<std::size_t>(usage.ru_maxrss) / 1024; // GCOVR_EXCL_LINE
}

void endProcess(std::string_view line) noexcept {
    for (const std::string_view text : {line, std::string_view("\n")})
        [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
    _exit(refused);
}

std::string overTime(const Limits& limits) {
    const Base::Decimal seconds{limits.time.count(), -3};
    return "the script ran for more than " + seconds.toString() + " s";
}

std::string overMemory(const Limits& limits) {
    return "the script took more than " + std::to_string(limits.memory) + " MB of memory";
}

Watch::Watch(const Limits& limits, std::string file)
    : giveUp_(limits.giveUp), overTime_(overTime(limits)), overMemory_(overMemory(limits)),
      clock_(clockOfThisThread()), last_(processorTime(clock_) + limits.time + limits.grace),
      mostMemory_(heldMemory() + limits.memory + limits.memoryGrace), stackEnd_(endOfStack()),
      outer_(current), file_(std::move(file)), shownFile_(Base::printable(file_)) {
    Tcl_SetPanicProc(&Watch::onPanic);
    const SignalsBlocked blocked;
    thread_ = std::jthread([this](const std::stop_token& stop) { wait(stop); });
    current = this;
}

Watch::~Watch() { current = outer_; }

void Watch::moveTo(const std::string& file, unsigned line) {
    const std::lock_guard lock(mutex_);
    if (file_ != file) {
        file_ = file;
        shownFile_ = Base::printable(file);
    }
    line_ = line;
}

void Watch::wait(const std::stop_token& stop) {
    std::unique_lock lock(mutex_);
    while (!stop.stop_requested()) {
        const ProcessorTime left = last_ - processorTime(clock_);
        if (left <= ProcessorTime::zero())
            end(overTime_, "");
        if (heldMemory() > mostMemory_)
            end(overMemory_, "");
        wake_.wait_for(lock, stop, std::clamp<ProcessorTime>(left, leastWait, mostWait),
                       [] { return false; });
    }
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
    line << shownFile_ << ":";
    if (line_ != 0)
        line << line_ << ":";
    giveUp_((line << " error: " << opening << reason).text());
    std::abort();
}

} // namespace Readers::Sdc
