// A small design that is ready for the engine: built from SDF text and constraints, with its exceptions and
// its poles.
#pragma once

#include "analysis/AnalyzedDesign.h"
#include "tests/support/command/Built.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace Support {

class Analyzed {
public:
    Analyzed(std::string_view cells, const std::string& script)
        : built_(cells, script), exceptions_(built_.annotated.design, *built_.network, *built_.clocks,
                                             built_.constraints, picoseconds, diagnostics_),
          model_(built_.annotated.design, *built_.network, *built_.clocks, built_.constraints,
                 exceptions_.timedPorts(), picoseconds, diagnostics_) {
        exceptions_.makeClasses(model_);
        model_.host().getApplication()->setBatch(true);
    }

    Analysis::AnalyzedDesign analyzed() {
        return {built_.annotated.design, *built_.network, *built_.clocks,
                built_.constraints,      model_,          exceptions_};
    }
    Pelko::Application& application() { return *model_.host().getApplication(); }
    const Design::RoutedDesign& design() const { return built_.annotated.design; }

    // The pin of a name like "r1/D", or of a port.
    Design::PinId pin(const std::string& name) const {
        for (const Design::PinId pin : Base::firstIds<Design::PinId>(design().pins.size()))
            if (design().pinName(pin) == name)
                return pin;
        ADD_FAILURE() << "no pin " << name;
        return Base::none;
    }

private:
    static constexpr int picoseconds = -12;

    Built built_;
    Base::Diagnostics diagnostics_;
    Exceptions::Exceptions exceptions_;
    Model::TimingModel model_;
};

// Three registers on one clock: r0/Q -> r1/D by way of 10 ps, r0/Q -> r2/D by way of 30 ps. A clock-to-output
// delay is 100 ps; r1 and r2 ask for a setup of 5 ps and a hold of 3 ps. The clock comes to r0 after `skew`
// ps.
inline std::string threeRegisters(int skew = 0) {
    const std::string checks = "(SETUPHOLD D (posedge C) (5) (3))", delays = "(IOPATH (posedge C) Q (100))";
    return wires("(INTERCONNECT clk r0/C (" + std::to_string(skew) +
                 ")) (INTERCONNECT clk r1/C (0)) (INTERCONNECT clk r2/C (0)) "
                 "(INTERCONNECT r0/Q r1/D (10)) (INTERCONNECT r0/Q r2/D (30))") +
           cell("R", "r0", delays) + cell("R", "r1", delays, checks) + cell("R", "r2", delays, checks);
}

} // namespace Support
