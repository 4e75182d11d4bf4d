// The files in and below one folder, and no others: links that lead out of it, pipes and devices are refused.
//
// A file is looked up and checked by its descriptor, so that nothing can be exchanged between the check and
// the reading.
#pragma once

#include <string>

namespace Readers::Sdc {

class Folder {
public:
    // The folder is opened at once; the error comes with the first file. `stepwise` selects the way for
    // kernels without openat2, which follows no link at all.
    explicit Folder(const std::string& path, bool stepwise = false);
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    // The descriptor of a regular file, for reading; the caller closes it. The path is relative to the
    // folder. Throws std::runtime_error, whose text is the reason why the file is refused.
    int open(const std::string& path) const;

private:
    int descriptor_ = -1, error_ = 0;
    bool stepwise_;
};

} // namespace Readers::Sdc
