// A file to write that appears whole or not at all.
//
// A regular file is written beside its place under another name and takes its place by commit(); until then,
// and after any failure, what was there stays as it was and nothing else is left. What is not a regular file
// (a terminal, a pipe, a device), and standard output or error under whatever name, is written directly.
//
//     Output output("report.json"); // throws if the place cannot be written, before any work is done
//     writeJson(report, output.stream());
//     output.finish();              // throws if any byte did not arrive
//     output.commit();              // the file takes its place
//
// Several outputs appear together if all of them are finished before the first is committed. A stream that
// failed takes no more bytes; finish() tells the first reason.
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

    // Everything that was written leaves the process, and lies on disk if it is a file. Nothing can be
    // written after it. Call it once.
    void finish();
    // The file takes its place; finishes it first if that is not done. What is written directly is in its
    // place already.
    void commit();

    // Removes the files of all outputs that are not committed, for a process that ends at once. Safe in a
    // signal handler.
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

        // Creates a file beside the target; its descriptor, or -1.
        int create(const std::string& target);
        // Gives it the name of the target; 0 or the error's number.
        int rename(const std::string& target);

    private:
        void forget() noexcept;

        std::string name_; // empty: none there
    };

    void open();
    void openBeside(const std::string& target, unsigned mode, bool exists);

    std::string path_;
    std::string target_; // where the file will stand; empty: written directly
    Temporary temporary_;
    std::unique_ptr<Descriptor> descriptor_;
    std::ostream stream_{nullptr};
    bool finished_ = false;
};

// Whether an output of that name ("-" is standard output) would write over the input or replace it, by
// whatever name and through links. Only regular files can be lost so.
bool wouldOverwrite(const std::string& output, const std::string& input);

} // namespace Cli
