// Output files: under which name they are written, and how they are put in their place.
#include "cli/Output.h"

#include "cli/SignalsHeld.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <streambuf>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Cli {

namespace {

constexpr std::size_t bufferSize = std::size_t{1} << 16;
constexpr mode_t newFileMode = 0666; // less the process's mask
constexpr mode_t permissionBits = 07777;
constexpr int temporaryNames = 1000; // that are tried

bool isSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// The standard stream that the file is, or -1. It keeps its place in the file when it is written through
// that.
int standardStream(const struct stat& file) {
    for (const int standard : {STDOUT_FILENO, STDERR_FILENO}) {
        struct stat known {};
        if (fstat(standard, &known) == 0 && isSameFile(file, known))
            return standard;
    }
    return -1;
}

// The path of the file that a link points to, whether it exists or not.
std::string resolved(const std::string& path) {
    std::filesystem::path at = path;
    std::error_code unknown; // of what is no link
    while (std::filesystem::is_symlink(at, unknown)) {
        const std::filesystem::path link = std::filesystem::read_symlink(at, unknown);
        if (unknown)
            break;
        at = at.parent_path() / link;
    }
    return at.string();
}

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

// The names of files that have not taken their place yet, for abandon(). More outputs than there is room for
// are not removed by a signal.
constexpr std::size_t room = 8;
std::array<std::atomic<const char*>, room> begun{};
static_assert(std::atomic<const char*>::is_always_lock_free);

} // namespace

CannotWrite::CannotWrite(const std::string& file, int errorNumber)
    : std::runtime_error(file + ": error: cannot write: " + std::strerror(errorNumber)) {}

// A buffer before a file descriptor. The first error is kept, and ends all writing.
class Output::Descriptor : public std::streambuf {
public:
    Descriptor() { setp(buffer_.data(), buffer_.data() + buffer_.size()); }
    ~Descriptor() override {
        if (descriptor_ >= 0)
            ::close(descriptor_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    void hold(int descriptor) noexcept { descriptor_ = descriptor; }
    int error() const { return error_; }
    bool flush() { return sync() == 0; }
    bool synchronize() { return check(fsync(descriptor_)); }
    bool close() { return check(::close(std::exchange(descriptor_, -1))); }

protected:
    int_type overflow(int_type c) override {
        if (sync() != 0)
            return traits_type::eof();
        if (!traits_type::eq_int_type(c, traits_type::eof()))
            sputc(traits_type::to_char_type(c));
        return traits_type::not_eof(c);
    }

    int sync() override {
        const char* from = pbase();
        while (error_ == 0 && from != pptr()) {
            const ssize_t written = ::write(descriptor_, from, static_cast<std::size_t>(pptr() - from));
            if (written >= 0)
                from += written;
            else if (errno != EINTR)
                error_ = errno;
        }
        setp(buffer_.data(), buffer_.data() + buffer_.size());
        return error_ == 0 ? 0 : -1;
    }

private:
    bool check(int result) {
        if (result != 0 && error_ == 0)
            error_ = errno; // GCOVR_EXCL_LINE: of a disk that fails late
        return error_ == 0;
    }

    int descriptor_ = -1;
    int error_ = 0;
    std::array<char, bufferSize> buffer_{};
};

Output::Output(std::string path) : path_(std::move(path)), descriptor_(std::make_unique<Descriptor>()) {
    open();
    stream_.rdbuf(descriptor_.get());
}

Output::~Output() = default;

Output::Temporary::~Temporary() {
    if (name_.empty())
        return;
    unlink(name_.c_str());
    forget();
}

// No signal comes between the file and its entry in the list.
int Output::Temporary::create(const std::string& target) {
    int descriptor = -1;
    const SignalsHeld held;
    for (int attempt = 0; attempt < temporaryNames && descriptor < 0; ++attempt) {
        name_ =
            folderOf(target) + ".vorlen-" + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".tmp";
        descriptor = ::open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, newFileMode);
        if (descriptor < 0 && errno != EEXIST)
            break;
    }
    if (descriptor < 0) {
        name_.clear();
        return descriptor;
    }
    for (std::atomic<const char*>& entry : begun)
        if (const char* none = nullptr; entry.compare_exchange_strong(none, name_.c_str()))
            break;
    return descriptor;
}

int Output::Temporary::rename(const std::string& target) {
    const SignalsHeld held;
    if (std::rename(name_.c_str(), target.c_str()) != 0)
        return errno;
    forget();
    return 0;
}

void Output::Temporary::forget() noexcept {
    for (std::atomic<const char*>& entry : begun)
        if (const char* own = name_.c_str(); entry.compare_exchange_strong(own, nullptr))
            break;
    name_.clear();
}

void Output::abandon() noexcept {
    for (const std::atomic<const char*>& entry : begun)
        if (const char* name = entry)
            unlink(name);
}

void Output::open() {
    const bool standard = path_ == "-";
    if (standard)
        path_ = "standard output";
    struct stat file {};
    const bool exists = (standard ? fstat(STDOUT_FILENO, &file) : stat(path_.c_str(), &file)) == 0;
    if (!exists && (standard || errno != ENOENT))
        throw CannotWrite(path_, errno);

    const int stream = exists ? standardStream(file) : -1;
    if (exists && stream < 0 && S_ISREG(file.st_mode)) {
        if (access(path_.c_str(), W_OK) != 0)
            throw CannotWrite(path_, errno);
        openBeside(resolved(path_), file.st_mode & permissionBits, true);
        return;
    }
    if (!exists) {
        openBeside(resolved(path_), 0, false);
        return;
    }
    const int descriptor = stream >= 0 ? fcntl(stream, F_DUPFD_CLOEXEC, 0)
                                       : ::open(path_.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0)
        throw CannotWrite(path_, errno);
    descriptor_->hold(descriptor);
}

// A file that replaces another one keeps its permissions.
void Output::openBeside(const std::string& target, unsigned mode, bool exists) {
    const int descriptor = temporary_.create(target);
    if (descriptor < 0)
        throw CannotWrite(path_, errno);
    descriptor_->hold(descriptor);
    target_ = target;
    if (exists && fchmod(descriptor, mode) != 0)
        throw CannotWrite(path_, errno); // GCOVR_EXCL_LINE: of a file system without permissions
}

void Output::finish() {
    finished_ = true;
    Descriptor& descriptor = *descriptor_;
    const bool complete =
        descriptor.flush() && (target_.empty() || descriptor.synchronize()) && descriptor.close();
    if (!complete || !stream_)
        throw CannotWrite(path_, descriptor.error() != 0 ? descriptor.error() : EIO);
}

void Output::commit() {
    if (!finished_)
        finish();
    if (target_.empty())
        return;
    if (const int error = temporary_.rename(target_); error != 0)
        throw CannotWrite(path_, error);
}

bool wouldOverwrite(const std::string& output, const std::string& input) {
    struct stat written {
    }, read{};
    const bool known = (output == "-" ? fstat(STDOUT_FILENO, &written) : stat(output.c_str(), &written)) == 0;
    return known && stat(input.c_str(), &read) == 0 && S_ISREG(read.st_mode) && isSameFile(written, read);
}

} // namespace Cli
