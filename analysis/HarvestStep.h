// The steps of paths that are traced back from their end point, and how they hang together.
#pragma once

#include "analysis/Harvest.h"
#include "analysis/PinOrder.h"

namespace Analysis {

// The pole that the path is traced back to so far, the classes it has there, and the delay from there to the
// end.
struct Harvest::Step {
    Pelko::Pole* pole = nullptr;
    std::uint64_t classes = 0;
    Time behind = 0;
    Pelko::Edge* edge = nullptr;           // to the step behind; null at the end point
    std::uint32_t next = Base::none;       // the step behind
    std::uint32_t pins = Sequences::empty; // from the end point to here
};

// All steps of a search by their numbers; what lies behind them is shared. They are destroyed together, so
// that a path may have any length.
class Harvest::Trail {
public:
    explicit Trail(const Design::RoutedDesign& design) : pins_(design) {}

    // The pin is that of the step's pole.
    std::uint32_t add(Step step, std::uint32_t pin) {
        step.pins = pins_.append(step.next == Base::none ? Sequences::empty : steps_[step.next].pins, pin);
        steps_.push_back(step);
        return static_cast<std::uint32_t>(steps_.size() - 1);
    }
    const Step& operator[](std::uint32_t number) const { return steps_[number]; }
    bool isBefore(std::uint32_t a, std::uint32_t b) const {
        return pins_.isBefore(steps_[a].pins, steps_[b].pins);
    }
    // From the step to the end point.
    std::vector<Pelko::Edge*> edgesFrom(const Step& step) const {
        std::vector<Pelko::Edge*> edges;
        for (const Step* at = &step; at->edge; at = &steps_[at->next])
            edges.push_back(at->edge);
        return edges;
    }

private:
    std::vector<Step> steps_;
    Sequences pins_;
};

} // namespace Analysis
