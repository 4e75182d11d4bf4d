// Clocks that are found at roots, and roots without a clock.
#include "analysis/Roots.h"

#include "Analyzed.h"

#include <gtest/gtest.h>

namespace {

// A port that drives r0 and a buffer; the buffer drives r1, and r1 drives the clock pin of r2.
std::string cells() {
    return Support::wires("(INTERCONNECT b r0/C (0)) (INTERCONNECT b g/A (0)) (INTERCONNECT g/Y r1/C (0)) "
                          "(INTERCONNECT r1/Q r2/C (0)) (INTERCONNECT a r3/C (0))") +
           Support::cell("R", "r0", "(IOPATH (posedge C) Q (1))") +
           Support::cell("R", "r1", "(IOPATH (posedge C) Q (1))") +
           Support::cell("R", "r2", "(IOPATH (posedge C) Q (1))") +
           Support::cell("R", "r3", "(IOPATH (posedge C) Q (1))") +
           Support::cell("G", "g", "(IOPATH A Y (1))");
}

std::string messagesOf(const Base::Diagnostics& diagnostics) {
    std::string text;
    for (const Base::Diagnostic& diagnostic : diagnostics.all())
        text += toString(diagnostic) + "\n";
    return text;
}

TEST(Roots, AClockAtEachWithoutConstraints) {
    const Support::Annotated annotated(cells());
    Base::Diagnostics diagnostics;
    const Design::Constraints constraints = Analysis::clocksAtRoots(annotated.design, diagnostics);
    std::vector<std::string> names;
    for (const Design::Clock& clock : constraints.clocks) {
        names.push_back(clock.name);
        ASSERT_EQ(clock.targets.size(), 1U);
        EXPECT_EQ(annotated.design.pinName(clock.targets[0]), clock.name);
        EXPECT_TRUE(clock.period.isZero());
    }
    EXPECT_EQ(names, (std::vector<std::string>{"a", "b", "r1/Q"}));
    EXPECT_EQ(messagesOf(diagnostics),
              "note: no constraints are given: 3 clock roots found, without a period\n");
}

TEST(Roots, AreWarnedOfIfNoClockReachesTheirPins) {
    Support::Analyzed design(cells(), "create_clock -period 10 [get_ports a]\n");
    const Analysis::AnalyzedDesign of = design.analyzed();
    Base::Diagnostics diagnostics;
    Analysis::warnOfUnclocked(of.design, of.network, of.model, diagnostics);
    EXPECT_EQ(
        messagesOf(diagnostics),
        "warning: no clock reaches 2 clock pins behind 'b'\n"
        "warning: no clock reaches 1 clock pin behind 'r1/Q': a clock does not pass a register; expected a "
        "generated clock there\n");
}

} // namespace
