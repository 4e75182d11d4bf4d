// What the commands share: the design, the constraints so far, and how a command finds the objects that it
// names.
#pragma once

#include "Constraints.h"
#include "Finder.h"
#include "Interpreter.h"
#include "Options.h"
#include "PortDelays.h"

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Readers::Sdc {

// The kinds of object that a command takes, in the order in which a bare name is looked up.
using Kinds = std::initializer_list<ObjectKind>;

// Thrown where nothing is left of what a command names: it is then skipped with a warning.
struct NoObjects {
    std::string text;
};

// A clock's latency by the edges of its source, where they were given apart.
struct EdgeLatency {
    std::optional<Decimal> rise, fall;
};
struct ClockLatency {
    EdgeLatency early, late;
};

class Session {
public:
    using Command = void (*)(Session&, Words);

    Session(const Design& design, Diagnostics& diagnostics, const Limits& limits);

    void add(const char* name, Command command);
    void note(std::string text) { diagnostics.note(tcl.place(), std::move(text)); }
    void warning(std::string text) { diagnostics.warning(tcl.place(), std::move(text)); }
    // The elements of a list, with those of lists in it.
    std::vector<Tcl_Obj*> flatElementsOf(Tcl_Obj* value) const;
    // A warning about a name without object; it counts.
    void unmatched(std::string text);
    // Remembers a command that has no effect here, for one note per name at the end.
    void withoutEffect(const std::string& command);
    void noteWithoutEffect();
    // What a script prints, as a note; beyond a limit nothing more.
    void print(const std::string& text);

    // A time of the file, in ns.
    Decimal time(Decimal value) const;

    // The objects that the value names, each once, in order. Names that match nothing are warned of; handles
    // of other kinds are errors. `option` is for messages; empty for an argument.
    std::vector<Object> resolve(const Arguments& arguments, std::string_view option, Tcl_Obj* value,
                                Kinds kinds);
    // Likewise, and at least one: throws NoObjects.
    std::vector<Object> objects(const Arguments& arguments, std::string_view option, Tcl_Obj* value,
                                Kinds kinds);
    // Exactly one.
    Object one(const Arguments& arguments, std::string_view option, Kinds kinds);
    // Pins and ports; nets stand for what drives them.
    std::vector<std::uint32_t> sources(const Arguments& arguments, std::string_view option, Tcl_Obj* value);

    const Design& design;
    Diagnostics& diagnostics;
    Constraints result;
    PortDelays portDelays;
    std::vector<ClockLatency> sourceLatency, networkLatency; // by clock
    // Where a pin's entry stands in the result.
    std::unordered_map<std::uint32_t, std::size_t> caseOfPin, uncertaintyOfPin;
    Interpreter tcl;
    Finder finder;
    int timeExponent = 0; // the file's unit is 10^timeExponent ns

private:
    struct Ignored {
        std::string command;
        Origin first;
        unsigned count = 0;
    };

    void resolveName(const Arguments& arguments, std::string_view option, Tcl_Obj* value, Kinds kinds,
                     std::vector<Object>& found);
    void resolveHandle(const Arguments& arguments, std::string_view option, const Object& object, Kinds kinds,
                       std::vector<Object>& found);

    std::vector<Ignored> ignored_;
    unsigned printed_ = 0;
};

void removeDuplicates(std::vector<Object>& objects);
// "clock, port or pin"
std::string kindNames(Kinds kinds);
// The command as its words say it, objects by their names, long lists cut.
std::string describe(const Session& session, Words words);

// Each adds the commands of its file.
void addClockCommands(Session& session);
void addLatencyCommands(Session& session);
void addPortCommands(Session& session);
void addExceptionCommands(Session& session);
void addQueryCommands(Session& session);
void addCollectionCommands(Session& session);
void addOtherCommands(Session& session);

} // namespace Readers::Sdc
