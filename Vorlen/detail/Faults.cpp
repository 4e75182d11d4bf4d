#include "Vorlen/detail/Faults.h"

#include "Ruvex/Exception.h"

#include <array>

namespace Vorlen::detail {

namespace {

enum class Kind { InvalidRequest, FactoryFailed, Critical, Fatal };

struct Entry {
    Fault fault;
    Kind kind;
    const char* text;
    const char* file;
    const char* function;
    unsigned line;
};

// The faults, in the order of the enumeration Fault.
constexpr std::array table{
    Entry{Fault::LoopingNullPole, Kind::InvalidRequest, "Null pole", "Tool", "isLooping", 173},
    Entry{Fault::AnalyzingAborted, Kind::Fatal, "Analyzing aborted [something strange...]", "Tool", "launch",
          495},
    Entry{Fault::LoopAlreadyOpened, Kind::InvalidRequest, "Already opened", "Tool", "loopOpen", 525},
    Entry{Fault::LoopNotOpened, Kind::InvalidRequest, "Not opened", "Tool", "loopClose", 537},
    Entry{Fault::LoopEmptyStack, Kind::InvalidRequest, "Empty stack", "Tool", "loopPop", 552},
    Entry{Fault::PushNullPole, Kind::InvalidRequest, "Null pole", "Tool", "loopPush", 566},
    Entry{Fault::CuttingNoLooping, Kind::InvalidRequest, "No looping", "Tool", "loopCutting", 580},
    Entry{Fault::NullAnalyzer, Kind::InvalidRequest, "Null analyzer", "Tool", "prolog", 650},
    Entry{Fault::NullClockSource, Kind::InvalidRequest, "Null clock source", "Tool", "calculatePeriod", 1255},
    Entry{Fault::LatchWithoutClockMode, Kind::Critical, " has not clock mode!", "Tool", "createDomains",
          2025},
    Entry{Fault::LaunchWithoutClockMode, Kind::Critical, " has not clock mode!", "Tool", "createDomains",
          2065},
    Entry{Fault::NullSubdomain, Kind::FactoryFailed, "Null subdomain", "Sweep", "preCreate", 73},
    Entry{Fault::AbnormalMulticycle, Kind::InvalidRequest, "Abnormal multicycle Path", "Sweep",
          "divideCycleCount", 549},
    Entry{Fault::LongNullEdge, Kind::InvalidRequest, "Null edge", "Sweep", "calculateLSlack", 811},
    Entry{Fault::ShortNullEdge, Kind::InvalidRequest, "Null edge", "Sweep", "calculateSSlack", 908},
    Entry{Fault::NotAnOutput, Kind::InvalidRequest, "Not an output pole", "Sweep", "arrivalAnalyze", 1280},
    Entry{Fault::NotAnInput, Kind::InvalidRequest, "Not an input pole", "Sweep", "requireAnalyze", 1598},
    Entry{Fault::LongestUndefinedSlack, Kind::InvalidRequest, "Undefined maximumSlack", "Sweep",
          "searchLongestPaths", 3060},
    Entry{Fault::ShortestUndefinedSlack, Kind::InvalidRequest, "Undefined maximumSlack", "Sweep",
          "searchShortestPaths", 3145},
    Entry{Fault::LongestMultipleConstraints, Kind::InvalidRequest, "Multiple constraints", "Sweep",
          "searchLongestPaths", 3307},
    Entry{Fault::ShortestMultipleConstraints, Kind::InvalidRequest, "Multiple constraints", "Sweep",
          "searchShortestPaths", 3567},
};

constexpr bool isInOrder() {
    for (std::size_t i = 0; i < table.size(); ++i)
        if (static_cast<std::size_t>(table[i].fault) != i)
            return false;
    return true;
}
static_assert(isInOrder());

} // namespace

void raise(Fault fault, const std::string& subject) {
    const Entry& entry = table[static_cast<std::size_t>(fault)];
    const std::string message = subject + entry.text;
    const Ruvex::Place place = Ruvex::Error::locate(entry.file, entry.function, entry.line);
    switch (entry.kind) {
    case Kind::FactoryFailed:
        throw Ruvex::FactoryFailed(Ruvex::InternalError(message, place));
    case Kind::Critical:
        throw Ruvex::Critical(message, place);
    case Kind::Fatal:
        throw Ruvex::Fatal(Ruvex::InternalError(message, place));
    case Kind::InvalidRequest:
        break;
    }
    throw Ruvex::InvalidRequest(Ruvex::InternalError(message, place));
}

} // namespace Vorlen::detail
