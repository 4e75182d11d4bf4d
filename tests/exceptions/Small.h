// A small design under constraints, with its exceptions resolved and encoded, and their parts as lines of
// text.
//
//   r0/Q -> g/A   g/Z -> w/A   r1/Q -> w/B   w/Z -> h/A   h/Z -> r2/D   r2/Q -> r1/D   r2/Q -> q
//
// g and h are buffers, w has two inputs; q is an output port. Clock a (period 10 ns, port a) clocks all
// registers, and clock b (period 5 ns) none of them. The script begins in line 2.
#pragma once

#include "exceptions/Encoding.h"
#include "exceptions/Requirement.h"
#include "exceptions/Resolved.h"
#include "tests/support/command/Built.h"

#include <string>
#include <vector>

namespace Support {

class Small {
public:
    explicit Small(const std::string& script)
        : built(cells(), "create_clock -name a -period 10 a; create_clock -name b -period 5\n" + script),
          resolved(
              Exceptions::resolve(built.annotated.design, *built.network, built.constraints, diagnostics)),
          encoding(built.annotated.design, *built.network, built.constraints, resolved.variants) {}

    Built built;
    Base::Diagnostics diagnostics;
    const Exceptions::Resolved resolved;
    const Exceptions::Encoding encoding;

    static constexpr Design::ClockId a{0}, b{1};

    const Design::RoutedDesign& design() const { return built.annotated.design; }
    // Of "r0/D", or of the port "q".
    Design::PinId pin(const std::string& name) const {
        const std::size_t slash = name.find('/');
        return slash == std::string::npos
                   ? Design::PinId(design().findPort(name))
                   : Design::PinId(
                         design().findPin(design().findCell(name.substr(0, slash)), name.substr(slash + 1)));
    }
    // The driving side of a pin.
    Model::NodeId node(const std::string& name) const { return built.network->sourceOf(pin(name)); }
    Exceptions::StartNumber startNumber(const std::string& clockPin) const {
        Model::Start start;
        start.pin = pin(clockPin);
        return encoding.numbers().numberOf(start);
    }
    unsigned lineOf(Design::ExceptionId exception) const {
        return built.constraints.exceptions[exception].origin.line;
    }

    // "g/Z+h/Z"
    std::string names(const Exceptions::Nodes& nodes) const {
        std::string text;
        for (const Model::NodeId node : nodes)
            text += (text.empty() ? "" : "+") + built.network->nameOf(node);
        return text;
    }
    // "setup shift 10000 by 2, hold false by 3": of each side what is required, and the line that governs.
    std::string text(const Exceptions::Requirement& requirement) const {
        return "setup " + text(requirement, Base::Side::setup) + ", hold " +
               text(requirement, Base::Side::hold) +
               (requirement.group == Base::none ? ""
                                                : ", group by " + std::to_string(lineOf(requirement.group)));
    }

private:
    static std::string cells() {
        std::string text =
            wires("(INTERCONNECT a r0/C (0)) (INTERCONNECT a r1/C (0)) (INTERCONNECT a r2/C (0))"
                  "(INTERCONNECT r0/Q g/A (1)) (INTERCONNECT g/Z w/A (1)) (INTERCONNECT r1/Q w/B (1))"
                  "(INTERCONNECT w/Z h/A (1)) (INTERCONNECT h/Z r2/D (1)) (INTERCONNECT r2/Q r1/D (1))"
                  "(INTERCONNECT r2/Q q (1))");
        for (const char* name : {"g", "h"})
            text += cell("BUF", name, "(IOPATH A Z (1))");
        text += cell("OR", "w", "(IOPATH A Z (1)) (IOPATH B Z (1))");
        for (const char* name : {"r0", "r1", "r2"})
            text += cell("DFF", name, "(IOPATH (posedge C) Q (1))", "(SETUPHOLD D (posedge C) (1) (1))");
        return text;
    }
    std::string text(const Exceptions::Requirement& requirement, Base::Side side) const {
        std::string what = "shift " + std::to_string(requirement.shift[side]);
        if (requirement.delay[side])
            what = "delay " + std::to_string(*requirement.delay[side]) +
                   (requirement.ignoresLatency[side] ? " without latency" : "");
        if (requirement.isFalse[side])
            what = "false";
        const Design::ExceptionId by = requirement.exception[side];
        return by == Base::none ? what : what + " by " + std::to_string(lineOf(by));
    }
};

} // namespace Support
