// What the commands share: the design, the constraints so far, and how a command finds the objects that it
// names.
#pragma once

#include "design/Constraints.h"
#include "readers/sdc/Finder.h"
#include "readers/sdc/Interpreter.h"
#include "readers/sdc/Options.h"
#include "readers/sdc/PortDelays.h"

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Readers::Sdc {

// The kinds of object that a command takes, in the order in which a bare name is looked up.
using Kinds = std::initializer_list<Design::ObjectKind>;

// Thrown if nothing is left of the objects that a command names. The command is then skipped with a warning.
struct NoObjects {
    std::string text;
};

// A clock's latency by the edges of its source, if they were given separately.
struct EdgeLatency {
    std::optional<Base::Decimal> rise, fall;
};
struct ClockLatency {
    EdgeLatency early, late;
};

class Session {
public:
    using Command = void (*)(Session&, Words);

    Session(const Design::RoutedDesign& design, Base::Diagnostics& diagnostics, const Limits& limits);

    void add(const char* name, Command command);
    void note(std::string text) { diagnostics.note(tcl.place(), std::move(text)); }
    void warning(std::string text) { diagnostics.warning(tcl.place(), std::move(text)); }
    // The elements of a list, with those of lists in it.
    std::vector<Tcl_Obj*> flatElementsOf(Tcl_Obj* value) const;
    // A warning about a name without object; it counts.
    void unmatched(std::string text);
    // Likewise; none about clocks once a command that would have made one has failed.
    void unmatched(std::string text, Kinds kinds);
    // Remembers a command that has no effect here, for one note per name at the end.
    void withoutEffect(const std::string& command);
    void noteWithoutEffect();
    // What a script prints, as a note; beyond a limit nothing more.
    void print(const std::string& text);

    // The clocks that are defined on a pin, in order.
    std::vector<Design::ClockId> clocksOn(Design::PinId pin) const;
    // A list that has each object once, as a command has made it last. That another list takes its place
    // unseen does no harm: a collection's objects count once wherever they are used.
    bool isKnownUnique(Tcl_Obj* list) const { return list == unique_ && lengthOf(list) == uniqueLength_; }
    void noteUnique(Tcl_Obj* list) { unique_ = list, uniqueLength_ = lengthOf(list); }
    // A time of the file, in ns.
    Base::Decimal time(Base::Decimal value) const;

    // The objects that the value names, each once, in order. Names that match nothing are warned of; handles
    // of other kinds are errors. `option` is for messages; empty for an argument.
    std::vector<Design::Object> resolve(const Arguments& arguments, std::string_view option, Tcl_Obj* value,
                                        Kinds kinds);
    // Likewise, and at least one: throws NoObjects.
    std::vector<Design::Object> objects(const Arguments& arguments, std::string_view option, Tcl_Obj* value,
                                        Kinds kinds);
    // Exactly one.
    Design::Object one(const Arguments& arguments, std::string_view option, Kinds kinds);
    // Pins and ports; nets stand for what drives them.
    std::vector<Design::PinId> sources(const Arguments& arguments, std::string_view option, Tcl_Obj* value);

    const Design::RoutedDesign& design;
    Base::Diagnostics& diagnostics;
    Design::Constraints result;
    PortDelays portDelays;
    Base::IndexVector<Design::ClockId, ClockLatency> sourceLatency, networkLatency;
    // The place of a pin's entry in the result.
    std::unordered_map<Design::PinId, std::size_t> caseOfPin, uncertaintyOfPin;
    // The place of the entry of a pair of clocks, by the pair of from and to.
    std::unordered_map<std::uint64_t, std::size_t> uncertaintyOfPair;
    // The clocks that are, or once were, defined on a pin.
    std::unordered_map<Design::PinId, std::vector<Design::ClockId>> clocksOfPin;
    Interpreter tcl;
    Finder finder;
    int timeExponent = 0; // the file's unit is 10^timeExponent ns

private:
    struct Ignored {
        std::string command;
        Design::Origin first;
        unsigned count = 0;
    };

    void resolveName(const Arguments& arguments, std::string_view option, Tcl_Obj* value, Kinds kinds,
                     std::vector<Design::Object>& found);
    void resolveHandle(const Arguments& arguments, std::string_view option, const Design::Object& object,
                       Kinds kinds, std::vector<Design::Object>& found);

    static int lengthOf(Tcl_Obj* list) {
        int length = 0;
        Tcl_ListObjLength(nullptr, list, &length);
        return length;
    }

    const Tcl_Obj* unique_ = nullptr;
    int uniqueLength_ = 0;
    std::vector<Ignored> ignored_;
    unsigned printed_ = 0;
};

void removeDuplicates(std::vector<Design::Object>& objects);
// "clock, port or pin"
std::string kindNames(Kinds kinds);
// Returns the command as text, with the names of objects. Long lists are cut.
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
