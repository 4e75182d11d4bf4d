// Reading, inflating and hashing an input in one pass.
//
// Plain bytes go from the file into the caller's buffer, save for the first block, in which the kind of the
// file is determined. Compressed bytes pass through one block of input. Every byte is hashed when it leaves
// the file, so the sum does not depend on how it was decoded.
#include "base/Source.h"

#include "base/Diagnostics.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <openssl/evp.h>
#include <optional>
#include <span>
#include <stdexcept>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

namespace Base {

namespace {

constexpr std::size_t blockSize = std::size_t{1} << 16;
constexpr std::array<unsigned char, 2> gzipMagic{0x1f, 0x8b};
constexpr int gzipWindow = 15 + 16; // the largest window, and a gzip header around the stream

// A file descriptor with an end.
class File {
public:
    explicit File(const std::string& path)
        : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY)) {}
    explicit File(int descriptor) : descriptor_(descriptor) {}
    ~File() {
        if (descriptor_ >= 0)
            close(descriptor_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool isOpen() const { return descriptor_ >= 0; }
    bool isFolder() const {
        struct stat status {};
        return fstat(descriptor_, &status) == 0 && S_ISDIR(status.st_mode);
    }
    // Bytes read, 0 at the end, negative for an error, which is in errno.
    ssize_t read(char* buffer, std::size_t size) const {
        ssize_t got = 0;
        do
            got = ::read(descriptor_, buffer, size);
        while (got < 0 && errno == EINTR);
        return got;
    }

private:
    int descriptor_;
};

class Sha256 {
public:
    Sha256() : context_(EVP_MD_CTX_new()) {
        if (!context_ || EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) != 1)
            throw std::runtime_error("SHA-256 is not available"); // GCOVR_EXCL_LINE: OpenSSL has it
    }
    void add(const char* bytes, std::size_t size) {
        if (EVP_DigestUpdate(context_.get(), bytes, size) != 1)
            throw std::runtime_error("SHA-256 failed"); // GCOVR_EXCL_LINE: a context that began does not fail
    }
    std::string finish() {
        std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
        unsigned size = 0;
        if (EVP_DigestFinal_ex(context_.get(), digest.data(), &size) != 1)
            throw std::runtime_error("SHA-256 failed"); // GCOVR_EXCL_LINE: as above
        constexpr std::string_view hexadecimal = "0123456789abcdef";
        std::string text;
        for (const unsigned char byte : std::span(digest).first(size)) {
            text += hexadecimal[byte >> 4];
            text += hexadecimal[byte & 0xf];
        }
        return text;
    }

private:
    struct Free {
        void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
    };
    std::unique_ptr<EVP_MD_CTX, Free> context_;
};

// zlib's state, with an end.
class Inflater {
public:
    Inflater() {
        if (inflateInit2(&stream_, gzipWindow) != Z_OK)
            throw std::runtime_error(
                "the inflater does not start"); // GCOVR_EXCL_LINE: only if memory runs out
    }
    ~Inflater() { inflateEnd(&stream_); }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    z_stream& stream() { return stream_; }

private:
    z_stream stream_{};
};

} // namespace

struct Source::State {
    explicit State(const std::string& name) : path(name) {
        file.emplace(name);
        if (!file->isOpen())
            fail("cannot open: ", errno);
        if (file->isFolder())
            fail("cannot open: ", EISDIR);
    }
    State(const std::string& name, std::string_view bytes) : path(name), memory(bytes) {}
    State(const std::string& name, int descriptor) : path(name) { file.emplace(descriptor); }

    [[noreturn]] void fail(const char* what, int reason) const {
        throw BadInput({path}, what + std::string(std::strerror(reason)));
    }

    // Bytes as they are on disk; every one of them passes here once.
    std::size_t readRaw(char* buffer, std::size_t size) {
        const std::size_t count = file ? readFile(buffer, size) : readMemory(buffer, size);
        sum.add(buffer, count);
        return count;
    }

    std::size_t readFile(char* buffer, std::size_t size) const {
        const ssize_t got = file->read(buffer, size);
        if (got < 0)
            fail("cannot read: ", errno);
        return static_cast<std::size_t>(got);
    }

    std::size_t readMemory(char* buffer, std::size_t size) {
        const std::size_t count = memory.copy(buffer, size);
        memory.remove_prefix(count);
        return count;
    }

    void fillBlock() {
        unread = block.data();
        left = readRaw(block.data(), block.size());
    }

    // Reads the first block, which shows the kind of file. A pipe may bring it in pieces.
    void begin() {
        begun = true;
        unread = block.data();
        while (left < gzipMagic.size()) {
            const std::size_t got = readRaw(block.data() + left, block.size() - left);
            if (got == 0)
                return;
            left += got;
        }
        if (std::memcmp(block.data(), gzipMagic.data(), gzipMagic.size()) == 0)
            inflater.emplace();
    }

    std::size_t readPlain(char* buffer, std::size_t size) {
        if (left == 0)
            return readRaw(buffer, size);
        const std::size_t count = std::min(left, size);
        std::memcpy(buffer, unread, count);
        unread += count;
        left -= count;
        return count;
    }

    // Whether another member follows. Zeros that pad a file to the blocks of some medium are no member.
    bool nextMember() {
        for (;;) {
            if (left == 0)
                fillBlock();
            if (left == 0)
                return false;
            if (*unread != 0)
                return true;
            ++unread;
            --left;
        }
    }

    // One call of the inflater over what is left of the block.
    std::size_t inflateSome(char* buffer, std::size_t size) {
        z_stream& stream = inflater->stream();
        stream.next_in = reinterpret_cast<Bytef*>(unread);
        stream.avail_in = static_cast<uInt>(left);
        stream.next_out = reinterpret_cast<Bytef*>(buffer);
        stream.avail_out = static_cast<uInt>(size);
        const int result = inflate(&stream, Z_NO_FLUSH);
        unread = reinterpret_cast<char*>(stream.next_in);
        left = stream.avail_in;
        if (result == Z_STREAM_END)
            inMember = false;
        else if (result != Z_OK && result != Z_BUF_ERROR)
            throw BadInput({path},
                           "damaged gzip stream: " + std::string(stream.msg ? stream.msg : zError(result)));
        return size - stream.avail_out;
    }

    std::size_t readInflated(char* buffer, std::size_t size) {
        size = std::min(size, std::size_t{1} << 30); // zlib counts in 32 bits
        for (;;) {
            if (!inMember) {
                if (!nextMember())
                    return 0;
                inflateReset(&inflater->stream());
                inMember = true;
            }
            if (left == 0)
                fillBlock();
            const bool dry = left == 0;
            // Without input there may still be output that did not fit before.
            const std::size_t got = inflateSome(buffer, size);
            if (got != 0)
                return got;
            if (dry && inMember)
                throw BadInput({path}, "gzip stream ends too early");
        }
    }

    const std::string& path;
    std::optional<File> file; // without it the bytes are those in memory
    std::string_view memory;  // what is left of them
    Sha256 sum;
    std::string digest; // empty as long as the sum goes on
    std::array<char, blockSize> block;
    char* unread = nullptr; // in the block
    std::size_t left = 0;
    bool begun = false;
    bool inMember = true; // of a gzip file; the first begins where the file does
    std::optional<Inflater> inflater;
};

Source::Source(std::string path) : path_(std::move(path)), state_(std::make_unique<State>(path_)) {}

Source::Source(std::string path, std::string_view bytes)
    : path_(std::move(path)), state_(std::make_unique<State>(path_, bytes)) {}

Source::Source(std::string path, int descriptor)
    : path_(std::move(path)), state_(std::make_unique<State>(path_, descriptor)) {}

Source::~Source() = default;

std::size_t Source::read(char* buffer, std::size_t size) {
    if (!state_->digest.empty())
        return 0;
    if (!state_->begun)
        state_->begin();
    return state_->inflater ? state_->readInflated(buffer, size) : state_->readPlain(buffer, size);
}

std::string Source::readAll(std::size_t most) {
    std::string text;
    std::size_t size = 0;
    for (;;) {
        if (text.size() - size < blockSize)
            text.resize(std::max(text.size() * 2, 2 * blockSize));
        const std::size_t got = read(text.data() + size, text.size() - size);
        if (got == 0)
            break;
        size += got;
        if (size > most)
            throw BadInput({path_}, "the text has more than " + std::to_string(most >> 20) + " MB");
    }
    text.resize(size);
    return text;
}

std::string Source::sha256() {
    if (state_->digest.empty()) {
        while (state_->readRaw(state_->block.data(), state_->block.size()) != 0) {
        }
        state_->digest = state_->sum.finish();
    }
    return state_->digest;
}

} // namespace Base
