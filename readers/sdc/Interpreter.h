// The Tcl interpreter for constraint files: the language, without access to the machine.
//
// A file can use variables, loops, procedures and expressions, and source files in its folder or below. It
// cannot run programs, open files or sockets, or change the interpreter: an error names each such command.
// Time, commands and depth are limited. Every error has the file and the line of the innermost command that
// is known. Files are evaluated command by command; inside bodies the line comes from Tcl's own frames.
//
// Reading goes on after a top-level command that fails, so that one run reports several errors. A failure
// that only follows from an earlier one is not reported.
#pragma once

#include "base/Diagnostics.h"
#include "base/Source.h"
#include "design/Constraints.h"
#include "readers/sdc/Folder.h"
#include "readers/sdc/Limits.h"
#include "readers/sdc/Watch.h"

#include <tcl.h>

#include <chrono>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Readers::Sdc {

// A command's words; the first one is its name.
using Words = std::span<Tcl_Obj* const>;

// Thrown by a command that cannot be carried out. The text begins with the command's name.
class CommandError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Interpreter {
public:
    using Handler = std::function<void(Words)>;

    // Files that are read are added to the constraints' files.
    Interpreter(Design::Constraints& constraints, const Limits& limits);
    ~Interpreter();
    Interpreter(const Interpreter&) = delete;
    Interpreter& operator=(const Interpreter&) = delete;

    void define(const std::string& name, Handler handler);
    // A second name for a command that is there.
    void alias(const char* name, const char* known);

    // Evaluates the file. Throws BadInput with the places of its errors.
    void run(Base::Source& source);

    // Some command that would have made a clock has failed: a clock that is missing needs no further message.
    bool lacksClocks() const { return lacksClocks_; }
    // Called for commands that a file leaves out itself.
    std::function<void(Base::Place, std::string)> onNote = [](Base::Place, std::string) {};

    // The place of the command that is being carried out.
    Design::Origin origin();
    Base::Place place() { return place(origin()); }

    void setResult(Tcl_Obj* value) { Tcl_SetObjResult(tcl_, value); }
    Tcl_Interp* raw() { return tcl_; }

private:
    struct Command {
        Interpreter* interpreter = nullptr;
        Handler handler;
    };
    // A file that is being evaluated.
    struct File {
        Design::FileId index;
        int frames = 0;               // Tcl's count of frames outside of it
        std::filesystem::path folder; // below that of the file that is run
        bool goesOn = true;           // behind a command that fails
        unsigned line = 1;            // of the top-level command that is being evaluated
        std::string_view command;     // its text
    };
    struct Procedure {
        Design::Origin body;
        std::string text;
    };
    struct Frame {
        unsigned line = 0;
        std::string procedure, command;
    };
    // Begins the error code of an error that has its place.
    static constexpr const char* placeCode = "PLACE";
    // The command whose error is already in the interpreter's result.
    struct Raised {};

    static int call(ClientData data, Tcl_Interp* tcl, int count, Tcl_Obj* const words[]);
    int carryOut(const Handler& handler, Words words);
    int fail(std::string_view text, const Base::Place& place);

    void confine();
    void source(Words words);
    void defineProcedure(Words words);
    void unknown(Words words);

    int evaluate(Base::Source& source, const std::string& text, File file);
    Design::FileId addFile(Base::Source& source);
    int evaluateText(std::string_view text);
    int evaluateCommand(std::string_view command);
    bool hasReturned(int& code);
    bool goesOnBehindError();
    bool followsEarlierError(const std::string& error) const;
    void noteRest(std::string_view rest, unsigned line, const std::string& reason);
    std::string readNested(const std::filesystem::path& path, std::optional<Base::Source>& nested);
    std::string limitText() const;
    void startLimits();
    static void onTime(ClientData data, Tcl_Interp* tcl);
    void setTimeLimit(std::chrono::milliseconds left);
    void tellWatch();
    Base::Place place(const Design::Origin& origin) const { return {files_[origin.file], origin.line, 0}; }

    static std::string fetch(Tcl_Obj* dict, const char* key); // the value as text; empty without the key
    int frameCount();
    Frame frame(int level);
    Tcl_Obj* askFrame(Tcl_Obj* level);
    void markError();
    std::string errorOption(const char* name);
    Design::Origin errorOrigin();
    std::optional<Base::Place> markedPlace();

    Limits limits_;
    Base::IndexVector<Design::FileId, std::string>&files_, &fileHashes_;
    std::filesystem::path main_;   // the file that is run
    std::optional<Folder> folder_; // its folder, once a file was sourced
    Base::ErrorList errors_;
    std::vector<std::string> failed_; // the texts of top-level commands that failed
    bool lacksClocks_ = false;
    Tcl_Interp* tcl_ = nullptr;
    Tcl_CmdInfo infoFrame_{}, proc_{};
    std::vector<std::unique_ptr<Command>> commands_;
    std::vector<File> stack_;
    Watch* watch_ = nullptr;     // while files are evaluated
    ProcessorTime end_{};        // of the thread, at which the time for the file is over
    std::size_t heldBefore_ = 0; // of memory, by the process, in MB
    bool isTooLarge_ = false;    // that is what ends the script
    std::unordered_map<std::string, Procedure> procedures_; // by full name
    std::exception_ptr internal_;                           // thrown by a command, on its way past Tcl
};

} // namespace Readers::Sdc
