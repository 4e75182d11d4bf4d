// A file to write that appears whole or not at all.
//
// A regular file is written beside its place under another name and takes its place by commit(); until then,
// and after any failure, what was there stays as it was and nothing else is left. What is not a regular file
// (a terminal, a pipe, a device), and standard output or error under whatever name, is written directly.
//
//     Output output("report.json"); // throws where the place cannot be written, before any work is done
//     writeJson(report, output.stream());
//     output.commit();              // throws where any byte did not arrive
//
// A stream that failed takes no more bytes; commit() tells the first reason.
#pragma once

#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>

namespace Cli {

// "FILE: error: cannot write: <reason>"
class CannotWrite : public std::runtime_error {
public:
    CannotWrite(const std::string& file, int errorNumber);
};

class Output {
public:
    // "-" is standard output. A link is followed.
    explicit Output(std::string path);
    ~Output(); // without a commit: as if there had been nothing
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    std::ostream& stream() { return stream_; }

    // Everything to its place. Once.
    void commit();

    // Takes away the file that the last Output has begun, for a process that ends at once. Safe in a signal
    // handler.
    static void abandon() noexcept;

private:
    class Descriptor;
    // The file that has not taken its place; it goes with its object, also where the constructor fails.
    class Temporary {
    public:
        Temporary() = default;
        ~Temporary();
        Temporary(const Temporary&) = delete;
        Temporary& operator=(const Temporary&) = delete;

        void hold(std::string name) noexcept;
        void release() noexcept;
        const std::string& name() const { return name_; }

    private:
        std::string name_; // empty: none there
    };

    void open();
    void openBeside(const std::string& target, unsigned mode, bool exists);

    std::string path_;
    std::string target_; // where the file will stand; empty: written directly
    Temporary temporary_;
    std::unique_ptr<Descriptor> descriptor_;
    std::ostream stream_{nullptr};
};

} // namespace Cli
