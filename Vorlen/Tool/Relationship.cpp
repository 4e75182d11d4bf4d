// The setup and hold relation of every synchronous subdomain, from the clocks' periods, shifts and widths.
//
// For two clocks the relation is determined on the grid of common edge positions, by the grid value nearest
// to the offset of the edges. The grid is walked with Euclid's algorithm. Its form with subtractions visits
// one value at a time; here these values are arithmetic progressions, so that the cost is the logarithm of
// the periods.
#include "Pelko/Analyzer.h"
#include "Pelko/Subdomain.h"
#include "Vorlen/Tool.h"

#include <algorithm>
#include <cstdint>

namespace Vorlen {

using Pelko::analyzer;
using Pelko::ClockMode;
using Pelko::Delay;

namespace {

// The relations of one clock to itself. Opposite edges are one phase apart: the low phase from the falling to
// the rising edge, the high phase otherwise.
void relateToItself(Pelko::Subdomain& subdomain) {
    subdomain.setCriticity(1);
    const Pelko::Pole* root = subdomain.getLaunchRoot();
    const ClockMode::Code launch = subdomain.getLaunchClockMode().getCode();
    const ClockMode::Code latch = subdomain.getLatchClockMode().getCode();
    const Delay period = analyzer->getRequiredPeriod(root);
    if (period.isDefined()) {
        subdomain.setCriticity(2);
        const Delay high = analyzer->getHighWidth(root);
        const Delay low = analyzer->getLowWidth(root);
        if (launch == latch && launch != ClockMode::None) {
            subdomain.setSetupRelation(period);
        } else if (launch == ClockMode::Falling && latch == ClockMode::Rising) {
            subdomain.setSetupRelation(low);
            subdomain.setHoldRelation(-high);
        } else if (launch == ClockMode::Rising && latch == ClockMode::Falling) {
            subdomain.setSetupRelation(high);
            subdomain.setHoldRelation(-low);
        }
    }
    if (launch != latch)
        subdomain.setCriticity(subdomain.getCriticity() + 1);
}

// The time of the first such edge of the clock: the falling edge comes a high width after the shift.
Delay edgeOf(const Pelko::Pole* root, const ClockMode& mode) {
    const Delay shift = analyzer->getShift(root);
    return mode.getCode() == ClockMode::Falling ? shift + analyzer->getHighWidth(root) : shift;
}

// The position of the offset of two edges among the values that Euclid's algorithm visits.
class Grid {
public:
    Grid(bool later, std::int64_t offset, std::int64_t best)
        : later_(later), offset_(offset), best_(best), exact_(offset == 0) {}

    // Visits the values high, high - step, … down to low, which have the same remainder modulo `step`.
    void visit(std::int64_t low, std::int64_t high, std::int64_t step) {
        if (offset_ == 0 || low > high)
            return;
        exact_ = exact_ || (low <= offset_ && offset_ <= high && (offset_ - low) % step == 0);
        if (later_) {
            // The smallest value above the offset.
            const std::int64_t value = low > offset_ ? low : low + ((offset_ - low) / step + 1) * step;
            if (value <= high && value < best_)
                best_ = value;
        } else if (low < offset_) {
            // The largest value below it.
            const std::int64_t value = high < offset_ ? high : low + (offset_ - 1 - low) / step * step;
            if (best_ < value)
                best_ = value;
        }
    }

    // Walks from two periods to the final grid step, which it returns. `gap` is the difference at which the
    // walk stops early; with 0 it does not.
    std::int64_t walk(std::int64_t a, std::int64_t b, std::int64_t gap) {
        while (a != b) {
            if (a < b)
                std::swap(a, b);
            const std::int64_t rest = a % b;
            if (gap != 0 && rest == gap) {
                visit(rest + b, a - b, b);
                visit(b, b, b);
                return b;
            }
            const std::int64_t last = rest == 0 ? b : rest;
            visit(last, a - b, b);
            a = last;
        }
        return a;
    }

    bool isExact() const { return exact_; }
    Delay getBest() const { return Delay(static_cast<int>(best_)); }

private:
    bool later_;
    std::int64_t offset_;
    std::int64_t best_;
    bool exact_;
};

// Whether the delay is a period, or undefined.
bool isPeriod(const Delay& delay) { return !delay.isDefined() || (delay.isOrdinary() && int(delay) > 0); }

} // namespace

void Tool::updateRelationship() {
    for (const Pelko::Domain* domain : analyzer->getDomains()) {
        if (domain->isAsynchronous())
            continue;
        const Pelko::Pole* launchRoot = domain->getLaunchRoot();
        const Pelko::Pole* latchRoot = domain->getLatchRoot();
        const Delay launchPeriod = analyzer->getRequiredPeriod(launchRoot);
        const Delay latchPeriod = analyzer->getRequiredPeriod(latchRoot);
        for (Pelko::Subdomain* subdomain : domain->getSubdomains()) {
            if (launchRoot == latchRoot) {
                relateToItself(*subdomain);
            } else if (launchPeriod.isDefined() && latchPeriod.isDefined()) {
                Delay setup = Delay::getUndefined();
                Delay hold = Delay::getUndefined();
                calculateRelationship(setup, hold, launchPeriod, latchPeriod,
                                      edgeOf(launchRoot, subdomain->getLaunchClockMode()),
                                      edgeOf(latchRoot, subdomain->getLatchClockMode()));
                subdomain->setSetupRelation(setup);
                subdomain->setHoldRelation(hold);
            }
        }
    }
}

void Tool::calculateRelationship(Delay& setup, Delay& hold, const Delay& launchPeriod,
                                 const Delay& latchPeriod, const Delay& launchEdge, const Delay& latchEdge) {
    if (!isPeriod(launchPeriod) || !isPeriod(latchPeriod)) {
        setup = hold = Delay::getUndefined();
        return;
    }
    const bool later = latchEdge < launchEdge;
    const Delay offset(later ? int(launchEdge - latchEdge) % int(latchPeriod)
                             : int(latchEdge - launchEdge) % int(launchPeriod));
    if (!launchPeriod.isDefined() || !latchPeriod.isDefined()) {
        // If a period is missing, there is no grid, and only the offset counts.
        const Delay best = launchPeriod == latchPeriod ? launchPeriod
                           : later                     ? Delay::getMaximum()
                                                       : Delay(0);
        if (int(offset) == 0)
            setup = Delay::getUndefined();
        else
            setup = later ? best - offset : offset - best;
        hold = Delay::getUndefined();
        return;
    }
    const std::int64_t high = std::max(int(launchPeriod), int(latchPeriod));
    const std::int64_t low = std::min(int(launchPeriod), int(latchPeriod));
    const std::int64_t gap = low == high / (high / low) ? high % low : 0;
    const std::int64_t start = launchPeriod == latchPeriod ? low : later ? Delay::maximumValue : 0;
    Grid grid(later, int(offset), start);
    const Delay step(static_cast<int>(grid.walk(high, low, gap)));
    if (grid.isExact())
        setup = step;
    else
        setup = later ? grid.getBest() - offset : offset - grid.getBest();
    hold = setup - step;
}

} // namespace Vorlen
