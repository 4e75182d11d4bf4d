// Lines: of the command that is being carried out, from Tcl's frames; and of an error, from the trace that
// Tcl leaves.
//
// A frame's line counts from where its text begins: the top-level command, or a procedure's body. Text that
// was put together by the script has no line in the file; its frames are recognised by lines outside of the
// command around them, and are passed over.
#include "readers/sdc/Interpreter.h"

#include <algorithm>
#include <charconv>

namespace Readers::Sdc {

namespace {

constexpr std::size_t npos = std::string_view::npos;

unsigned linesIn(std::string_view text) { return static_cast<unsigned>(std::ranges::count(text, '\n')); }

unsigned toNumber(std::string_view text) {
    unsigned value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

std::vector<std::string_view> split(std::string_view text) {
    std::vector<std::string_view> lines;
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

// A line of Tcl's trace such as `    ("foreach" body line 2)` or `    (procedure "name" line 2)`.
struct TraceLine {
    bool valid = false;
    unsigned line = 0;
    std::string procedure;
};

TraceLine readTraceLine(std::string_view text) {
    constexpr std::string_view opening = "    (", procedure = "    (procedure \"", number = " line ";
    const std::size_t at = text.rfind(number);
    if (!text.starts_with(opening) || !text.ends_with(')') || at == npos)
        return {};
    TraceLine result{true, toNumber(text.substr(at + number.size())), ""};
    if (text.starts_with(procedure) && at > procedure.size())
        result.procedure = text.substr(procedure.size(), at - procedure.size() - 1);
    return result;
}

// The command with which the trace begins, as far as it was written down.
std::string_view executed(std::string_view trace) {
    constexpr std::string_view marker = "\n    while executing\n\"";
    const std::size_t start = trace.find(marker);
    if (start == npos)
        return {};
    const std::string_view rest = trace.substr(start + marker.size());
    const std::size_t end = rest.find("\"\n    "), cut = rest.find("...\"");
    if (const std::size_t stop = std::min(end, cut); stop != npos)
        return rest.substr(0, stop);
    return rest.ends_with('"') ? rest.substr(0, rest.size() - 1) : rest;
}

// The line on which `command` begins in `text` (whose first line is `first`), the one that is closest to the
// guess.
unsigned closest(std::string_view text, std::string_view command, unsigned first, unsigned guess) {
    unsigned best = guess, line = first;
    bool found = false;
    std::size_t counted = 0;
    for (std::size_t at = text.find(command); !command.empty() && at != npos;
         at = text.find(command, at + 1)) {
        line += linesIn(text.substr(counted, at - counted));
        counted = at;
        const auto distance = [guess](unsigned l) { return l > guess ? l - guess : guess - l; };
        if (!found || distance(line) < distance(best))
            best = line;
        found = true;
    }
    return best;
}

} // namespace

std::string Interpreter::fetch(Tcl_Obj* dict, const char* key) {
    Tcl_Obj* const name = Tcl_NewStringObj(key, -1);
    Tcl_IncrRefCount(name);
    Tcl_Obj* value = nullptr;
    Tcl_DictObjGet(nullptr, dict, name, &value);
    Tcl_DecrRefCount(name);
    return value == nullptr ? std::string() : Tcl_GetString(value);
}

// --- The command that is being carried out ---

Tcl_Obj* Interpreter::askFrame(Tcl_Obj* level) {
    Tcl_Obj* const name = Tcl_NewStringObj("frame", -1);
    Tcl_IncrRefCount(name);
    Tcl_Obj* const words[] = {name, level};
    infoFrame_.objProc(infoFrame_.objClientData, tcl_, level == nullptr ? 1 : 2, words);
    Tcl_Obj* const result = Tcl_GetObjResult(tcl_);
    Tcl_IncrRefCount(result);
    Tcl_DecrRefCount(name);
    Tcl_ResetResult(tcl_);
    return result;
}

int Interpreter::frameCount() {
    Tcl_Obj* const answer = askFrame(nullptr);
    int count = 0;
    Tcl_GetIntFromObj(nullptr, answer, &count);
    Tcl_DecrRefCount(answer);
    return count;
}

Interpreter::Frame Interpreter::frame(int level) {
    Tcl_Obj* const number = Tcl_NewIntObj(level);
    Tcl_IncrRefCount(number);
    Tcl_Obj* const answer = askFrame(number);
    Frame result{toNumber(fetch(answer, "line")), fetch(answer, "proc"), fetch(answer, "cmd")};
    Tcl_DecrRefCount(answer);
    Tcl_DecrRefCount(number);
    return result;
}

Design::Origin Interpreter::origin() {
    const File& file = stack_.back();
    Design::Origin at{file.index, file.line};
    unsigned first = file.line, last = first + linesIn(file.command);
    const int top = frameCount();
    if (top == file.frames + 1 && first == last)
        return at;
    for (int level = file.frames + 1; level <= top; ++level) {
        const Frame inner = frame(level);
        if (const auto known = procedures_.find(inner.procedure); known != procedures_.end()) {
            first = known->second.body.line;
            last = first + linesIn(known->second.text);
            at = {known->second.body.file, first};
        }
        const unsigned line = first + inner.line - 1;
        if (line >= at.line && line <= last)
            at.line = line;
    }
    return at;
}

// --- An error ---

// Gives the error a place, unless the command that failed, or a file inside, has given it one.
void Interpreter::markError() {
    const File& file = stack_.back();
    if (Tcl_LimitExceeded(tcl_) != 0) {
        fail(limitText(), {files_[file.index], file.line, 0});
    } else if (!markedPlace()) {
        const std::string text = Tcl_GetStringResult(tcl_);
        fail(text, place(errorOrigin()));
    }
}

std::string Interpreter::limitText() const {
    if (Tcl_LimitTypeExceeded(tcl_, TCL_LIMIT_TIME) == 0)
        return "the script ran for more than " + std::to_string(limits_.commands) + " commands";
    if (isTooLarge_)
        return overMemory(limits_);
    return overTime(limits_);
}

// Tcl's trace has the innermost text first. A body's first line is taken as that of the command which has the
// body; the failed command's own text then corrects that where an `else` or a multi-line condition stands
// before.
Design::Origin Interpreter::errorOrigin() {
    const File& file = stack_.back();
    Design::Origin at{file.index, file.line};
    std::string_view text = file.command;
    unsigned first = at.line;
    const std::string trace = errorOption("-errorinfo");
    std::vector<std::string_view> lines = split(trace);
    for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
        const TraceLine entry = readTraceLine(*line);
        if (!entry.valid || entry.line == 0)
            continue;
        if (!entry.procedure.empty()) {
            const bool full = entry.procedure.starts_with("::");
            const auto known = procedures_.find(full ? entry.procedure : "::" + entry.procedure);
            if (known == procedures_.end())
                break;
            text = known->second.text;
            first = known->second.body.line;
            at = {known->second.body.file, first};
        }
        at.line = std::min(at.line + entry.line - 1, first + linesIn(text));
    }
    at.line = closest(text, executed(trace), first, at.line);
    return at;
}

// What Tcl keeps about the error that is on its way.
std::string Interpreter::errorOption(const char* name) {
    Tcl_Obj* const options = Tcl_GetReturnOptions(tcl_, TCL_ERROR);
    Tcl_IncrRefCount(options);
    std::string value = fetch(options, name);
    Tcl_DecrRefCount(options);
    return value;
}

std::optional<Base::Place> Interpreter::markedPlace() {
    const std::string code = errorOption("-errorcode");
    int count = 0;
    const char** parts = nullptr;
    if (Tcl_SplitList(nullptr, code.c_str(), &count, &parts) != TCL_OK)
        return std::nullopt; // GCOVR_EXCL_LINE: a script can set no error code that is no list
    std::optional<Base::Place> place;
    if (count == 3 && std::string_view(parts[0]) == placeCode)
        place = Base::Place{parts[1], toNumber(parts[2]), 0};
    Tcl_Free(reinterpret_cast<char*>(parts));
    return place;
}

} // namespace Readers::Sdc
