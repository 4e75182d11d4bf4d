// A file to write that appears whole or not at all.
//
// A regular file is written in the same folder under another name, and takes its place by commit(). Until
// then, and after any failure, the old file stays as it was and no other file is left. Everything else (a
// terminal, a pipe, a device, and standard output or error under any name) is written directly.
//
//     Output output("report.json"); // throws if the place cannot be written, before any work is done
//     writeJson(report, output.stream());
//     output.finish();              // throws if any byte did not arrive
//     output.commit();              // the file takes its place
//
// Several outputs appear together if all of them are finished before the first is committed. A stream that
// failed takes no more bytes; finish() throws the first reason.
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
    // Without a commit it leaves everything as if there had been no output.
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    std::ostream& stream() { return stream_; }

    // Flushes everything that was written, to the disk if it is a file. Throws CannotWrite. Nothing can be
    // written after it. Call it once.
    void finish();
    // Puts the file in its place, and finishes it first if that was not done. An output that is written
    // directly is in its place already. Throws CannotWrite.
    void commit();

    // Removes the files of all outputs that are not committed, for a process that ends at once. Safe in a
    // signal handler.
    static void abandon() noexcept;

private:
    class Descriptor;
    // The file that has not taken its place. It is removed with its object, also if the constructor of Output
    // throws.
    class Temporary {
    public:
        Temporary() = default;
        ~Temporary();
        Temporary(const Temporary&) = delete;
        Temporary& operator=(const Temporary&) = delete;

        // Creates a file in the target's folder. Returns its descriptor, or -1.
        int create(const std::string& target);
        // Gives the file the name of the target. Returns 0 or the error's number.
        int rename(const std::string& target);

    private:
        void forget() noexcept;

        std::string name_; // empty if there is no file
    };

    void open();
    void openBeside(const std::string& target, unsigned mode, bool exists);

    std::string path_;
    std::string target_; // the file's final path; empty: written directly
    Temporary temporary_;
    std::unique_ptr<Descriptor> descriptor_;
    std::ostream stream_{nullptr};
    bool finished_ = false;
};

// Whether an output of that name ("-" is standard output) would overwrite or replace the input, also if the
// two names differ or are links. It is false for inputs that are not regular files, since they cannot be
// lost.
bool wouldOverwrite(const std::string& output, const std::string& input);

} // namespace Cli
