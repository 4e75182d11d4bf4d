// Opening beneath a folder: by openat2, or folder by folder on kernels that lack it.
#include "readers/sdc/Folder.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Readers::Sdc {

namespace {

// A pipe does not wait for its writer, nor a terminal become the process's own.
constexpr int forReading = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
constexpr int asFolder = O_PATH | O_DIRECTORY | O_CLOEXEC;

// -1 with ENOSYS if the kernel, or what confines the process, does not know the call.
int openBeneath(int folder, const std::string& path) {
    constexpr int attempts = 100; // while others rename folders
    open_how how{};
    how.flags = forReading;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
    long file = -1;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        file = syscall(SYS_openat2, folder, path.c_str(), &how, sizeof how);
        if (file >= 0 || (errno != EAGAIN && errno != EINTR))
            break;
    }
    return static_cast<int>(file);
}

// Without following any link.
int openStepwise(int folder, const std::filesystem::path& path) {
    int at = folder;
    for (const auto& part : path.parent_path()) {
        const int next = openat(at, part.c_str(), asFolder | O_NOFOLLOW);
        const int error = errno;
        if (at != folder)
            close(at);
        at = next;
        if (at < 0) {
            errno = error;
            return -1;
        }
    }
    const int file = openat(at, path.filename().c_str(), forReading | O_NOFOLLOW);
    const int error = errno;
    if (at != folder)
        close(at);
    errno = error;
    return file;
}

std::string reasonOf(int error) {
    if (error == EXDEV)
        return "a link leads out of the folder of the constraint file";
    if (error == ELOOP)
        return "links are not followed here";
    return std::string("cannot open: ") + std::strerror(error);
}

} // namespace

Folder::Folder(const std::string& path, bool stepwise)
    : descriptor_(::open(path.empty() ? "." : path.c_str(), asFolder)), stepwise_(stepwise) {
    error_ = descriptor_ < 0 ? errno : 0;
}

Folder::~Folder() {
    if (descriptor_ >= 0)
        close(descriptor_);
}

int Folder::open(const std::string& path) const {
    if (descriptor_ < 0)
        throw std::runtime_error(reasonOf(error_));
    int file = stepwise_ ? openStepwise(descriptor_, path) : openBeneath(descriptor_, path);
    if (file < 0 && !stepwise_ && (errno == ENOSYS || errno == EPERM))
        file = openStepwise(descriptor_, path); // GCOVR_EXCL_LINE: depends on the kernel
    if (file < 0)
        throw std::runtime_error(reasonOf(errno));
    struct stat status {};
    if (fstat(file, &status) == 0 && S_ISREG(status.st_mode))
        return file;
    close(file);
    throw std::runtime_error(S_ISDIR(status.st_mode) ? reasonOf(EISDIR)
                                                     : "expected a file, found a pipe or a device");
}

} // namespace Readers::Sdc
