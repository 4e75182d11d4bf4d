// The steps of paths that are traced back from their end point, and how they hang together.
#pragma once

#include "analysis/PinOrder.h"
#include "analysis/Slack.h"
#include "exceptions/ClassSet.h"

#include "Pelko/Edge.h"
#include "Pelko/Pole.h"

#include <vector>

namespace Analysis {

using StepId = Base::Index<struct StepTag>;

// A pole that a path is traced back to.
struct Step {
    Pelko::Pole* pole = nullptr;
    Exceptions::ClassSet classes;       // of the path at the pole
    Time behind = 0;                    // the delay from the pole to the end point
    Pelko::Edge* edge = nullptr;        // to the step behind; null at the end point
    StepId next = {};                   // the step behind
    SequenceId pins = Sequences::empty; // from the end point to the pole
};

// All steps of a search. What lies behind two steps is shared. The steps are destroyed together, so that a
// path may have any length.
class Trail {
public:
    explicit Trail(const Design::RoutedDesign& design) : pins_(design) {}

    // Adds the step. The pin is that of the step's pole; the step's `pins` are set here.
    StepId add(Step step, Design::PinId pin) {
        step.pins = pins_.append(step.next == Base::none ? Sequences::empty : steps_[step.next].pins, pin);
        const StepId added = steps_.next();
        steps_.push_back(step);
        return added;
    }
    const Step& operator[](StepId step) const { return steps_[step]; }
    // By the names of the pins from the end point to the step.
    bool isBefore(StepId a, StepId b) const { return pins_.isBefore(steps_[a].pins, steps_[b].pins); }
    // From the step to the end point.
    std::vector<Pelko::Edge*> edgesFrom(const Step& step) const {
        std::vector<Pelko::Edge*> edges;
        for (const Step* at = &step; at->edge; at = &steps_[at->next])
            edges.push_back(at->edge);
        return edges;
    }

private:
    Base::IndexVector<StepId, Step> steps_;
    Sequences pins_;
};

} // namespace Analysis
