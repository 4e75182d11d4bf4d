// Running constraint files: commands, nested files and limits. What a script may call is chosen in
// Sandbox.cpp, lines are found in Lines.cpp.
#include "readers/sdc/Interpreter.h"

#include <algorithm>
#include <filesystem>
#include <mutex>

namespace Readers::Sdc {

namespace {

constexpr int deepestBrackets = 5'000; // Tcl's own parser calls itself for each open bracket or brace
constexpr std::chrono::milliseconds checkInterval{100};
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

// The text with Unix line ends, and without a byte order mark.
std::string cleaned(std::string text) {
    if (text.starts_with(byteOrderMark))
        text.erase(0, byteOrderMark.size());
    std::size_t kept = 0;
    for (std::size_t at = 0; at < text.size(); ++at)
        if (text[at] != '\r' || at + 1 == text.size() || text[at + 1] != '\n')
            text[kept++] = text[at];
    text.resize(kept);
    return text;
}

unsigned linesIn(std::string_view text) { return static_cast<unsigned>(std::ranges::count(text, '\n')); }

// Returns the first line on which brackets or braces are nested too deep for Tcl's parser; 0 if there is
// none.
unsigned lineTooDeep(std::string_view text) {
    int depth = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\\')
            ++at;
        else if (text[at] == '[' || text[at] == '{')
            ++depth;
        else if ((text[at] == ']' || text[at] == '}') && depth > 0)
            --depth;
        if (depth > deepestBrackets)
            return 1 + linesIn(text.substr(0, at));
    }
    return 0;
}

// Whether the text has the name, and not only as a part of a longer one.
bool names(std::string_view text, std::string_view name) {
    const auto isInName = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
               c == '-';
    };
    for (std::size_t at = text.find(name); at != std::string_view::npos; at = text.find(name, at + 1)) {
        const std::size_t end = at + name.size();
        if ((at == 0 || !isInName(text[at - 1])) && (end == text.size() || !isInName(text[end])))
            return true;
    }
    return false;
}

// Returns the text between the opening and the next quote; empty for another text.
std::string_view quoted(std::string_view text, std::string_view opening, char quote) {
    if (!text.starts_with(opening))
        return {};
    text.remove_prefix(opening.size());
    return text.substr(0, text.find(quote));
}

} // namespace

Interpreter::Interpreter(Design::Constraints& constraints, const Limits& limits)
    : limits_(limits), files_(constraints.files), fileHashes_(constraints.fileHashes) {
    static std::once_flag once; // Tcl wants to know its encodings before the first interpreter
    std::call_once(once, [] { Tcl_FindExecutable(nullptr); });
    tcl_ = Tcl_CreateInterp();
    Tcl_GetCommandInfo(tcl_, "::tcl::info::frame", &infoFrame_);
    Tcl_GetCommandInfo(tcl_, "proc", &proc_);
    confine();
    define("source", [this](Words words) { source(words); });
    define("proc", [this](Words words) { defineProcedure(words); });
    define("unknown", [this](Words words) { unknown(words); });
    Tcl_SetRecursionLimit(tcl_, limits.depth);
    Tcl_LimitAddHandler(tcl_, TCL_LIMIT_TIME, &Interpreter::onTime, this, nullptr);
    Tcl_LimitSetGranularity(tcl_, TCL_LIMIT_TIME, 1);
}

Interpreter::~Interpreter() { Tcl_DeleteInterp(tcl_); }

void Interpreter::define(const std::string& name, Handler handler) {
    commands_.push_back(std::make_unique<Command>(Command{this, std::move(handler)}));
    Tcl_CreateObjCommand(tcl_, name.c_str(), &Interpreter::call, commands_.back().get(), nullptr);
}

void Interpreter::alias(const char* name, const char* known) {
    Tcl_CmdInfo info{};
    Tcl_GetCommandInfo(tcl_, known, &info);
    Tcl_CreateObjCommand(tcl_, name, info.objProc, info.objClientData, nullptr);
}

// Nothing may be thrown through Tcl's frames: errors become Tcl's, anything else waits until Tcl is out of
// the way.
int Interpreter::call(ClientData data, Tcl_Interp* tcl, int count, Tcl_Obj* const words[]) {
    const Command& command = *static_cast<Command*>(data);
    Interpreter& self = *command.interpreter;
    try {
        Tcl_ResetResult(tcl);
        return self.carryOut(command.handler, Words(words, static_cast<std::size_t>(count)));
    } catch (...) {
        self.internal_ = std::current_exception();
        Tcl_SetObjResult(tcl, Tcl_NewStringObj("internal error", -1));
        return TCL_ERROR;
    }
}

int Interpreter::carryOut(const Handler& handler, Words words) {
    try {
        handler(words);
        return TCL_OK;
    } catch (const Raised&) {
        return TCL_ERROR;
    } catch (const CommandError& error) {
        return fail(error.what(), place()); // for which there may be no memory
    }
}

int Interpreter::fail(std::string_view text, const Base::Place& place) {
    Tcl_SetObjResult(tcl_, Tcl_NewStringObj(text.data(), static_cast<int>(text.size())));
    Tcl_SetErrorCode(tcl_, placeCode, place.file.c_str(), std::to_string(place.line).c_str(), nullptr);
    return TCL_ERROR;
}

// --- Files ---

// How long the file's bytes take to come, through a pipe perhaps, is not the script's matter.
void Interpreter::run(Base::Source& source) {
    const std::string text = cleaned(source.readAll(limits_.text << 20));
    main_ = source.path();
    folder_.reset();
    // Inside of a command of its own, gone before the script sees it: at its outermost level Tcl does not
    // tell a `return` from a command that ends as usual.
    constexpr const char* name = "read constraints";
    define(name, [this, &source, &text](Words) {
        Tcl_DeleteCommand(tcl_, name);
        if (evaluate(source, text, {}) != TCL_OK)
            throw Raised{};
    });
    Tcl_Obj* const word = Tcl_NewStringObj(name, -1);
    Tcl_IncrRefCount(word);
    startLimits();
    int code = TCL_OK;
    {
        Watch watch(limits_, source.path());
        watch_ = &watch;
        code = Tcl_EvalObjv(tcl_, 1, &word, TCL_EVAL_GLOBAL);
        watch_ = nullptr;
    }
    Tcl_DecrRefCount(word);
    if (internal_)
        std::rethrow_exception(internal_);
    if (code != TCL_OK)
        errors_.add(markedPlace().value_or(Base::Place{source.path(), 0, 0}), Tcl_GetStringResult(tcl_));
    errors_.finish();
}

void Interpreter::startLimits() {
    end_ = processorTime(CLOCK_THREAD_CPUTIME_ID) + limits_.time;
    heldBefore_ = heldMemory();
    isTooLarge_ = false;
    setTimeLimit(std::min(limits_.time, checkInterval));
    Tcl_LimitTypeSet(tcl_, TCL_LIMIT_TIME);

    Tcl_EvalEx(tcl_, "info cmdcount", -1, TCL_EVAL_GLOBAL);
    int count = 0;
    Tcl_GetIntFromObj(nullptr, Tcl_GetObjResult(tcl_), &count);
    Tcl_LimitSetCommands(tcl_, count + limits_.commands);
    Tcl_LimitTypeSet(tcl_, TCL_LIMIT_COMMANDS);
}

// After so long, as Tcl counts: by the clock on the wall.
void Interpreter::setTimeLimit(std::chrono::milliseconds left) {
    const auto micros = std::chrono::duration_cast<std::chrono::microseconds>(left).count();
    constexpr long second = 1'000'000;
    Tcl_Time end;
    Tcl_GetTime(&end);
    const long total = end.usec + static_cast<long>(micros);
    end.sec += total / second;
    end.usec = total % second;
    Tcl_LimitSetTime(tcl_, &end);
}

// Between commands, where the interval is over: the limit stands unless it is set anew. The time that others
// had the processor is not the script's.
void Interpreter::onTime(ClientData data, Tcl_Interp*) {
    Interpreter& self = *static_cast<Interpreter*>(data);
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(self.end_ - processorTime(CLOCK_THREAD_CPUTIME_ID));
    self.isTooLarge_ = heldMemory() > self.heldBefore_ + self.limits_.memory;
    if (left > left.zero() && !self.isTooLarge_)
        self.setTimeLimit(std::min(left, checkInterval));
}

void Interpreter::tellWatch() {
    if (watch_ != nullptr && !stack_.empty())
        watch_->moveTo(files_[stack_.back().index], stack_.back().line);
}

// Returns the file's index. A file that is read again keeps its index.
Design::FileId Interpreter::addFile(Base::Source& source) {
    const auto known = std::ranges::find(files_, source.path());
    const Design::FileId index(static_cast<std::uint32_t>(known - files_.begin()));
    if (known == files_.end()) {
        files_.push_back(source.path());
        fileHashes_.push_back(source.sha256());
    }
    return index;
}

int Interpreter::evaluate(Base::Source& source, const std::string& text, File file) {
    file.index = addFile(source);
    file.frames = stack_.empty() ? 0 : frameCount(); // Tcl cannot be asked while it runs nothing
    if (const unsigned line = lineTooDeep(text); line != 0)
        return fail("brackets or braces stand in one another too deep", {source.path(), line, 0});

    stack_.push_back(std::move(file));
    const int code = evaluateText(text);
    if (code != TCL_OK)
        markError();
    stack_.pop_back();
    tellWatch();
    return code;
}

// Command by command, so that each one's line is known.
int Interpreter::evaluateText(std::string_view text) {
    const std::size_t depth = stack_.size() - 1;
    std::string_view rest = text;
    unsigned line = 1; // of the rest
    while (!rest.empty()) {
        Tcl_Parse parse;
        const int parsed = Tcl_ParseCommand(tcl_, rest.data(), static_cast<int>(rest.size()), 0, &parse);
        const char* const start = parse.commandStart != nullptr ? parse.commandStart : rest.data();
        line += linesIn({rest.data(), start});
        rest.remove_prefix(static_cast<std::size_t>(start - rest.data()));
        const std::string_view command =
            parsed == TCL_OK ? rest.substr(0, static_cast<std::size_t>(parse.commandSize)) : rest;
        stack_[depth].line = line;
        stack_[depth].command = command;
        tellWatch();
        if (parsed != TCL_OK)
            return fail(Tcl_GetStringResult(tcl_), {files_[stack_[depth].index], line, 0});
        const bool empty = parse.numWords == 0;
        Tcl_FreeParse(&parse);
        rest.remove_prefix(command.size());
        int code = empty ? TCL_OK : evaluateCommand(command);
        if (internal_)
            return TCL_ERROR;
        const bool returned = hasReturned(code);
        line += linesIn(command);
        if (returned && code == TCL_OK)
            noteRest(rest, line, "return");
        if (returned)
            return code;
        if (code != TCL_OK && !goesOnBehindError()) {
            if (!stack_[depth].goesOn)
                noteRest(rest, line, "the command fails");
            return TCL_ERROR;
        }
    }
    return TCL_OK;
}

int Interpreter::evaluateCommand(std::string_view command) {
    const Base::Place where{files_[stack_.back().index], stack_.back().line, 0};
    const int code = Tcl_EvalEx(tcl_, command.data(), static_cast<int>(command.size()), TCL_EVAL_GLOBAL);
    if (code == TCL_BREAK || code == TCL_CONTINUE)
        return fail("'break' and 'continue' work inside of a loop only", where);
    if (code != TCL_OK && code != TCL_ERROR && code != TCL_RETURN)
        return fail("the command returns the code " + std::to_string(code) + ", which has no meaning here",
                    where);
    return code;
}

// Whether a `return` ends the file, as it ends one for Tcl's own source; then the code is TCL_OK, or
// TCL_ERROR for one that asks for something else than the end.
bool Interpreter::hasReturned(int& code) {
    if (code != TCL_RETURN)
        return false;
    const std::string text = Tcl_GetStringResult(tcl_);
    Tcl_Obj* const options = Tcl_GetReturnOptions(tcl_, code);
    Tcl_IncrRefCount(options);
    const std::string level = fetch(options, "-level"), asked = fetch(options, "-code");
    Tcl_DecrRefCount(options);
    if (level == "1" && asked == "0") {
        code = TCL_OK;
        return true;
    }
    const File& file = stack_.back();
    const std::string_view command = file.command;
    const std::size_t at = std::min(command.find("return"), command.size());
    const Base::Place where{files_[file.index], file.line + linesIn(command.substr(0, at)), 0};
    if (level == "1" && asked == "1")
        code = fail(text.empty() ? "return -code error" : text, where);
    else
        code = fail("return: a file can end by 'return' or 'return -code error' only", where);
    return true;
}

// Keeps the error of a top-level command.
bool Interpreter::goesOnBehindError() {
    const File& file = stack_.back();
    if (!file.goesOn || Tcl_LimitExceeded(tcl_) != 0)
        return false;
    const std::string trace = errorOption("-errorinfo");
    markError();
    const std::string error = Tcl_GetStringResult(tcl_);
    const Base::Place where = markedPlace().value_or(Base::Place{files_[file.index], file.line, 0});
    if (!followsEarlierError(error))
        errors_.add(where, error);
    for (const char* maker : {"create_clock", "create_generated_clock", "source"})
        lacksClocks_ = lacksClocks_ || names(file.command, maker) || names(trace, maker);
    failed_.emplace_back(file.command);
    Tcl_ResetResult(tcl_);
    return true;
}

// A variable or a procedure that a command which failed, or a file that could not be read, would have made.
bool Interpreter::followsEarlierError(const std::string& error) const {
    std::string_view variable = quoted(error, "can't read \"", '"');
    variable = variable.substr(0, variable.find('('));
    const std::string_view command = quoted(error, "unknown command '", '\'');
    if (variable.empty() && command.empty())
        return false;
    return std::ranges::any_of(failed_, [&](const std::string& text) {
        return names(text, "source") ||
               (variable.empty() ? names(text, "proc") && names(text, command) : names(text, variable));
    });
}

// Commands of a file that are passed over.
void Interpreter::noteRest(std::string_view rest, unsigned line, const std::string& reason) {
    while (!rest.empty()) {
        Tcl_Parse parse;
        const int parsed = Tcl_ParseCommand(nullptr, rest.data(), static_cast<int>(rest.size()), 0, &parse);
        const char* const start = parse.commandStart != nullptr ? parse.commandStart : rest.data();
        line += linesIn({rest.data(), start});
        rest.remove_prefix(static_cast<std::size_t>(start - rest.data()));
        const bool empty = parsed == TCL_OK && parse.numWords == 0;
        const std::string_view command =
            parsed == TCL_OK ? rest.substr(0, static_cast<std::size_t>(parse.commandSize)) : rest;
        if (parsed == TCL_OK)
            Tcl_FreeParse(&parse);
        if (!empty && !command.empty()) {
            const File& file = stack_.back();
            onNote({files_[file.index], file.line, 0},
                   reason + ": the rest of the file, from line " + std::to_string(line) + " on, is not read");
            return;
        }
        line += linesIn(command);
        rest.remove_prefix(command.size());
    }
}

// The text of a file, by its path below the folder of the one that is run.
std::string Interpreter::readNested(const std::filesystem::path& path, std::optional<Base::Source>& nested) {
    if (!folder_)
        folder_.emplace(main_.parent_path().string());
    nested.emplace((main_.parent_path() / path).lexically_normal().string(), folder_->open(path.string()));
    return cleaned(nested->readAll(limits_.text << 20));
}

void Interpreter::source(Words words) {
    std::size_t at = 1;
    while (at < words.size() && Tcl_GetString(words[at])[0] == '-')
        if (const std::string_view option = Tcl_GetString(words[at++]);
            option != "-echo" && option != "-verbose")
            throw CommandError("source: unknown option '" + std::string(option) + "'");
    if (at + 1 != words.size())
        throw CommandError("source: expected one file");

    const std::string name = Tcl_GetString(words[at]), opening = "source: '" + name + "'";
    const File& outer = stack_.back();
    const std::filesystem::path path = (outer.folder / name).lexically_normal();
    if (std::filesystem::path(name).is_absolute())
        throw CommandError(opening + ": expected a path relative to this file");
    if (!path.empty() && *path.begin() == "..")
        throw CommandError(opening + ": only files in the folder of '" + main_.string() +
                           "', or below it, can be read");
    const std::filesystem::path whole = (main_.parent_path() / path).lexically_normal();
    for (const File& open : stack_)
        if (std::filesystem::path(files_[open.index]).lexically_normal() == whole)
            throw CommandError(opening + " is being read already");
    // Inside of `catch`, or of any other body, an error is that command's matter.
    const bool goesOn = outer.goesOn && frameCount() == outer.frames + 1;
    std::optional<Base::Source> nested;
    std::string text;
    try {
        text = readNested(path, nested);
    } catch (const Base::BadInput& error) {
        throw CommandError(opening + ": " + error.diagnostic().text);
    } catch (const std::runtime_error& error) {
        throw CommandError(opening + ": " + error.what());
    }
    File file;
    file.folder = path.parent_path();
    file.goesOn = goesOn;
    if (evaluate(*nested, text, std::move(file)) != TCL_OK)
        throw Raised{};
}

// --- Commands of the interpreter itself ---

// Calls Tcl's own command, and remembers the place of the body.
void Interpreter::defineProcedure(Words words) {
    if (proc_.objProc(proc_.objClientData, tcl_, static_cast<int>(words.size()), words.data()) != TCL_OK)
        throw Raised{};
    Procedure procedure{origin(), Tcl_GetString(words[3])};
    const std::string command = frame(frameCount()).command;
    Tcl_Parse parse;
    if (Tcl_ParseCommand(nullptr, command.data(), static_cast<int>(command.size()), 0, &parse) == TCL_OK) {
        const Tcl_Token* word = parse.tokenPtr;
        for (int i = 0; i + 1 < parse.numWords; ++i)
            word += word->numComponents + 1;
        procedure.body.line += linesIn({parse.commandStart, word->start});
        Tcl_FreeParse(&parse);
    }
    std::string name = Tcl_GetString(words[1]);
    procedures_[name.starts_with("::") ? name : "::" + name] = std::move(procedure);
}

void Interpreter::unknown(Words words) {
    const std::string name = words.size() > 1 ? Tcl_GetString(words[1]) : "";
    if (!name.empty() && name.find_first_not_of("0123456789*?:") == std::string::npos)
        throw CommandError("unknown command '" + name +
                           "': brackets call a command; a name with brackets stands in braces, {name[" +
                           name + "]}");
    throw CommandError("unknown command '" + name + "'");
}

} // namespace Readers::Sdc
