// A folder for a test's files. It is empty when it is made. The destructor removes it with everything in it.
//
//   const Support::TemporaryFolder folder;
//   options.sdf = folder.write("d.sdf", text);
//   EXPECT_EQ(folder.names(), (std::set<std::string>{"d.sdf"}));
//
// Each object has a folder of its own, so tests can run at the same time. What cannot be made or written
// throws std::runtime_error.
#pragma once

#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include <stdlib.h>

namespace Support {

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string path = (std::filesystem::temp_directory_path() / "vorlen-test.XXXXXX").string();
        if (!mkdtemp(path.data()))
            throw std::runtime_error("cannot make the folder " + path);
        path_ = path;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    // The path of a file in it, whether or not there is one.
    std::string at(std::string_view name) const { return path_.string() + "/" + std::string(name); }

    // Writes a file, byte for byte, and returns its path. Folders in its name are made.
    std::string write(std::string_view name, std::string_view text) const {
        const std::string file = at(name);
        std::filesystem::create_directories(std::filesystem::path(file).parent_path());
        if (!(std::ofstream(file, std::ios::binary | std::ios::trunc) << text).flush())
            throw std::runtime_error("cannot write " + file);
        return file;
    }

    // The names of what is directly in it.
    std::set<std::string> names() const {
        std::set<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(path_))
            found.insert(entry.path().filename().string());
        return found;
    }

    // The text without the folder's own path: the same in each run.
    std::string relative(std::string text) const {
        const std::string prefix = at("");
        for (std::size_t place = text.find(prefix); place != std::string::npos;
             place = text.find(prefix, place))
            text.erase(place, prefix.size());
        return text;
    }

private:
    std::filesystem::path path_;
};

} // namespace Support
