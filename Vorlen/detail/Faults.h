// The fault table: every exception that the library throws, with its kind, text and place. Places are fixed
// data, so that moving code between files changes no message.
#pragma once

#include <string>

namespace Vorlen::detail {

enum class Fault {
    // Tool
    LoopingNullPole,
    AnalyzingAborted,
    LoopAlreadyOpened,
    LoopNotOpened,
    LoopEmptyStack,
    PushNullPole,
    CuttingNoLooping,
    NullAnalyzer,
    NullClockSource,
    LatchWithoutClockMode,
    LaunchWithoutClockMode,
    // Sweep
    NullSubdomain,
    AbnormalMulticycle,
    LongNullEdge,
    ShortNullEdge,
    NotAnOutput,
    NotAnInput,
    LongestUndefinedSlack,
    ShortestUndefinedSlack,
    LongestMultipleConstraints,
    ShortestMultipleConstraints,
};

// Throws the fault. `subject` is put before its text.
[[noreturn]] void raise(Fault fault, const std::string& subject = {});

// Throws the fault if the condition is false.
inline void require(bool condition, Fault fault) {
    if (!condition) [[unlikely]]
        raise(fault);
}

} // namespace Vorlen::detail
