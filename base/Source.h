// An input file as a stream of bytes: plain, or compressed by gzip (recognised by its first bytes, not by
// its name). Bytes in memory can stand for a file.
//
// The file is read once, in blocks, and its SHA-256 (of the bytes as they are on disk) is known at the end.
// Memory is a few blocks, whatever the file's size.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace Base {

class Source {
public:
    // Throws BadInput if the file cannot be opened ("cannot open: <reason>").
    explicit Source(std::string path);
    // Reads the bytes, which must outlive the source, as the content of a file of that name. No file is
    // opened.
    Source(std::string path, std::string_view bytes);
    // Takes over the open descriptor of the file of that path.
    Source(std::string path, int descriptor);
    ~Source();
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    const std::string& path() const { return path_; }

    // Puts up to size bytes (size > 0) into the buffer and returns how many; 0 at the end of the file.
    // Throws BadInput for a read error and for a damaged or truncated gzip stream.
    std::size_t read(char* buffer, std::size_t size);

    // Returns the rest of the file as one string. Throws BadInput if it has more than `most` bytes, inflated.
    // Holds at most about twice as many.
    std::string readAll(std::size_t most = std::string::npos);

    // Returns the SHA-256 of the whole file in lower-case hexadecimal. Reads what has not been read yet.
    std::string sha256();

private:
    struct State;
    std::string path_;
    std::unique_ptr<State> state_;
};

} // namespace Base
