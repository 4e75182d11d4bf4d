// Which of Tcl's commands a constraint file can use. Everything that is not kept here is refused by its name,
// so that a new version of Tcl opens nothing new.
#include "readers/sdc/Interpreter.h"

#include <algorithm>
#include <array>

namespace Readers::Sdc {

namespace {

constexpr std::array kept = {"append",   "apply",    "array",   "break",   "catch",   "concat",  "continue",
                             "dict",     "error",    "eval",    "expr",    "for",     "foreach", "format",
                             "global",   "if",       "incr",    "info",    "join",    "lappend", "lassign",
                             "lindex",   "linsert",  "list",    "llength", "lmap",    "lrange",  "lrepeat",
                             "lreplace", "lreverse", "lsearch", "lset",    "lsort",   "proc",    "regexp",
                             "regsub",   "return",   "scan",    "set",     "split",   "string",  "subst",
                             "switch",   "throw",    "try",     "unset",   "uplevel", "upvar",   "while"};

// Not there in a bare interpreter, or hidden by its safe mode, and still worth a clear refusal.
constexpr std::array refused = {"auto_load", "cd",     "encoding", "exec",   "exit",  "fconfigure",
                                "file",      "glob",   "history",  "load",   "open",  "parray",
                                "pwd",       "socket", "tclLog",   "thread", "unload"};

// What the commands that are kept could still reach of the machine, or of chance.
constexpr auto removed = R"(
    foreach space {::oo ::zlib ::tcl::chan ::tcl::clock ::tcl::encoding ::tcl::file ::tcl::process ::tcl::unsupported
                   ::tcl::zlib ::tcl::binary ::tcl::namespace} {
        if {[namespace exists $space]} { namespace delete $space }
    }
    foreach command {::tcl::info::hostname ::tcl::info::library ::tcl::info::loaded ::tcl::info::nameofexecutable
                     ::tcl::info::script ::tcl::mathfunc::rand ::tcl::mathfunc::srand ::tcl::pkgconfig
                     ::tcl::Bgerror} {
        catch { rename $command {} }
    }
    unset -nocomplain space command errorInfo errorCode tcl_platform
)";

} // namespace

void Interpreter::confine() {
    Tcl_MakeSafe(tcl_);
    Tcl_EvalEx(tcl_, "info commands", -1, TCL_EVAL_GLOBAL);
    Tcl_Obj* const list = Tcl_GetObjResult(tcl_);
    Tcl_IncrRefCount(list);
    int count = 0;
    Tcl_Obj** names = nullptr;
    Tcl_ListObjGetElements(nullptr, list, &count, &names);
    Tcl_EvalEx(tcl_, removed, -1, TCL_EVAL_GLOBAL); // after the list: a command goes with its name space

    const auto refuse = [this](const std::string& name) {
        define(name,
               [name](Words) { throw CommandError("'" + name + "' is not available in a constraint file"); });
    };
    for (int i = 0; i < count; ++i)
        if (const std::string name = Tcl_GetString(names[i]); std::ranges::find(kept, name) == kept.end())
            refuse(name);
    for (const char* name : refused)
        refuse(name);
    Tcl_DecrRefCount(list);
    Tcl_ResetResult(tcl_);
}

} // namespace Readers::Sdc
