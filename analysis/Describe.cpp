// Exceptions, start points and end points in words.
#include "analysis/Describe.h"

namespace Analysis {

namespace {

const char* kindName(Design::Exception::Kind kind) {
    using enum Design::Exception::Kind;
    switch (kind) {
    case falsePath:
        return "false_path";
    case multicycle:
        return "multicycle_path";
    case maxDelay:
        return "max_delay";
    case minDelay:
        return "min_delay";
    case pathGroup:
        break;
    }
    return "path_group";
}

std::string valueOf(const Design::Exception& exception) {
    using enum Design::Exception::Kind;
    switch (exception.kind) {
    case falsePath:
        break;
    case multicycle:
        return std::to_string(exception.multiplier);
    case maxDelay:
    case minDelay:
        return exception.value.toString();
    case pathGroup:
        return exception.group;
    }
    return {};
}

std::string edgeName(bool rise) { return rise ? "rising" : "falling"; }

std::string portName(const std::string& kind, const std::string& clock) {
    return clock.empty() ? kind : kind + " clocked by " + clock;
}

} // namespace

Report::Exception describe(const Design::Constraints& constraints, Design::ExceptionId exception) {
    return describe(constraints, constraints.exceptions[exception]);
}

Report::Exception describe(const Design::Constraints& constraints, const Design::Exception& exception) {
    return {constraints.files[exception.origin.file], exception.origin.line, kindName(exception.kind),
            valueOf(exception)};
}

std::string describe(const Model::Start& start, const std::string& clock) {
    switch (start.kind) {
    case Model::Start::Kind::reg:
        return edgeName(start.rise) + " edge-triggered register clocked by " + clock;
    case Model::Start::Kind::clockSource:
        return edgeName(start.rise) + " edge of clock source " + clock;
    case Model::Start::Kind::port:
        break;
    }
    return portName("input port", clock);
}

std::string describe(const Model::End& end, const std::string& clock) {
    return end.isPort() ? portName("output port", clock)
                        : edgeName(end.rise) + " edge-triggered register clocked by " + clock;
}

} // namespace Analysis
