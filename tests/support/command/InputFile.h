// A file with given bytes, for readers that take nothing else. It goes with its object.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <unistd.h>

namespace Support {

class InputFile {
public:
    explicit InputFile(std::string_view bytes)
        : path_((std::filesystem::temp_directory_path() / "readers_test.XXXXXX").string()) {
        const int descriptor = mkstemp(path_.data());
        EXPECT_GE(descriptor, 0) << path_;
        close(descriptor);
        rewrite(bytes);
    }
    ~InputFile() { std::filesystem::remove(path_); }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    void rewrite(std::string_view bytes) const {
        std::ofstream file(path_, std::ios::binary | std::ios::trunc);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        EXPECT_TRUE(file.flush().good()) << path_;
    }
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

} // namespace Support
