// The user's exceptions, from the objects that they name to what they require of each path. This is what
// other rooms use; behind it four parts follow one another:
//
//   Resolved   what the objects mean: start points, end points, nodes to pass         (Resolved.h, Variant.h)
//   Encoding   how they are encoded in the engine's classes                           (Encoding.h)
//   Judge      which exception governs a path, and what it requires                   (Judge.h)
//   Accounts   what each exception did: its paths, what overrules it, what cuts it    (Accounts.h)
//
//     Exceptions exceptions(design, network, clocks, constraints, scale, diagnostics);
//     TimingModel model(..., exceptions.timedPorts(), ...);   // some ports are timed by exceptions only
//     exceptions.makeClasses(model);
//     ... for each arrival: exceptions.requirement(edges, endPin, classes)
//     exceptions.findCut(model);
//     ... for the report: exceptions.uses()
#pragma once

#include "exceptions/Accounts.h"
#include "exceptions/Encoding.h"
#include "exceptions/Judge.h"
#include "exceptions/Resolved.h"

#include <optional>

namespace Exceptions {

class Exceptions {
public:
    // Resolves the named objects, with warnings and notes. Refers to what it is given as long as it lives.
    // BadInput: a maximum or minimum delay from or to a point within paths.
    Exceptions(const Design::RoutedDesign& design, const Model::Network& network, const Model::Clocks& clocks,
               const Design::Constraints& constraints, int scale, Base::Diagnostics& diagnostics);

    // Ports without a delay, or with one without a clock, that a maximum or minimum delay may time
    // nevertheless.
    const Model::TimedPorts& timedPorts() const { return resolved_.timedPorts; }

    // Creates the constrained paths that carry the classes. To be called once, before the operations below.
    // BadInput: the exceptions need more classes than the engine has.
    void makeClasses(Model::TimingModel& model);

    // What holds for paths between two clock edges that arrive at an end point's pin with these classes.
    // Valid as long as this object lives. BadInput: a delay that does not fit the engine's integers.
    const Requirement& requirement(const ClockEdges& edges, Design::PinId endPin, ClassSet classes) {
        return judge_->requirement(encoding_->keyOf(edges, endPin, classes));
    }
    // Whether paths with these classes may start there.
    bool mayStart(const Model::Start& start, ClassSet classes) const {
        return encoding_->mayStart(start, classes);
    }

    // Finds out, for exceptions that cover no path, whether clock groups cut those that they would cover. To
    // be called after the analysis.
    void findCut(const Model::TimingModel& model);
    // By exception; complete after findCut().
    const Base::IndexVector<Design::ExceptionId, Use>& uses() const { return accounts_.uses(); }

private:
    const Design::RoutedDesign& design_;
    const Model::Network& network_;
    const Model::Clocks& clocks_;
    const Design::Constraints& constraints_;
    const int scale_;
    const Resolved resolved_;
    Accounts accounts_;
    std::optional<Encoding> encoding_; // both are there after makeClasses()
    std::optional<Judge> judge_;
};

} // namespace Exceptions
