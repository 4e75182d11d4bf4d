// Output files: where they are written, and how they come to their place.
#include "Output.h"

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

// Where the file that a link means stands, or will stand.
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

// The name of the file that has not taken its place yet, for abandon().
std::atomic<const char*> begun = nullptr;
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
    begun = nullptr;
    unlink(name_.c_str());
}

void Output::Temporary::hold(std::string name) noexcept {
    name_ = std::move(name);
    begun = name_.c_str();
}

void Output::Temporary::release() noexcept {
    begun = nullptr;
    name_.clear();
}

void Output::abandon() noexcept {
    if (const char* name = begun)
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
    int descriptor = -1;
    std::string name;
    for (int attempt = 0; attempt < temporaryNames && descriptor < 0; ++attempt) {
        name =
            folderOf(target) + ".vorlen-" + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".tmp";
        descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, newFileMode);
        if (descriptor < 0 && errno != EEXIST)
            break;
    }
    if (descriptor < 0)
        throw CannotWrite(path_, errno);
    descriptor_->hold(descriptor);
    temporary_.hold(std::move(name));
    target_ = target;
    if (exists && fchmod(descriptor, mode) != 0)
        throw CannotWrite(path_, errno); // GCOVR_EXCL_LINE: of a file system without permissions
}

void Output::commit() {
    Descriptor& descriptor = *descriptor_;
    const bool complete =
        descriptor.flush() && (target_.empty() || descriptor.synchronize()) && descriptor.close();
    if (!complete || !stream_)
        throw CannotWrite(path_, descriptor.error() != 0 ? descriptor.error() : EIO);
    if (target_.empty())
        return;
    if (std::rename(temporary_.name().c_str(), target_.c_str()) != 0)
        throw CannotWrite(path_, errno);
    temporary_.release();
}

} // namespace Cli
