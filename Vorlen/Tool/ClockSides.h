// The two sides of a pair of launch and latch pole: the clock edge of each, and the roots behind it. The
// sides alone determine the domains and subdomains of the pair.
#pragma once

#include "Pelko/ClockMode.h"
#include "Vorlen/TimingMap.h"

namespace Vorlen {

// One side. A root may be null, for the side of a port without a clock.
struct ClockSide {
    Pelko::ClockMode mode;
    Pelko::Pole* root = nullptr;   // the only root, if there is no stem
    const PoleSet* stem = nullptr; // the roots of a clock pole
    bool hasRoot = true;

    template <class Visit>
    void forEachRoot(Visit visit) const {
        if (stem)
            for (Pelko::Pole* each : *stem)
                visit(each);
        else if (hasRoot)
            visit(root);
    }
};

// The side of a launch pole or of a latch pole. `stem` is the set of roots behind a clock pole, or null.
// Critical: "<pole> has not clock mode!".
ClockSide launchSideOf(const PoleSet* stem, Pelko::Pole* launch);
ClockSide latchSideOf(const PoleSet* stem, Pelko::Pole* latch);

// Calls `visit(launchRoot, latchRoot, launchMode, latchMode)` for every subdomain of a pair, in order of
// creation.
template <class Visit>
void forEachSubdomain(const ClockSide& launch, const ClockSide& latch, Visit visit) {
    using Pelko::ClockMode;
    launch.forEachRoot([&](Pelko::Pole* launchRoot) {
        latch.forEachRoot([&](Pelko::Pole* latchRoot) {
            if (!launchRoot || launch.mode.getCode() != ClockMode::None) {
                visit(launchRoot, latchRoot, launch.mode, latch.mode);
                return;
            }
            // A plain clock source launches on both edges.
            for (const ClockMode::Code code : {ClockMode::Falling, ClockMode::Rising})
                visit(launchRoot, latchRoot, ClockMode(code), latch.mode);
        });
    });
}

} // namespace Vorlen
