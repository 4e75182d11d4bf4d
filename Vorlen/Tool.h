// The analysis driver. A host creates it once, under the tool name "Analyzing", and launches it any number of
// times. Every launch is one complete static timing analysis of `Pelko::cell` under the constraints and
// settings of `Pelko::analyzer`:
//
//   Vorlen::Tool* tool = Vorlen::Tool::create();
//   const bool completed = tool->launch();
//   tool->destroy();
//
// The operations are the phases of a launch, grouped by file; docs/flow.md lists them in the order of the
// calls. All run on the caller's thread and throw the framework's exceptions, which only `launch()` catches.
// Every walk keeps its own stack, and costs one visit for each pole and each arc, unless its comment states
// another cost.
#pragma once

#include "Pelko/Delay.h"
#include "Pelko/Edges.h"
#include "Pelko/Tool.h"
#include "Vorlen/Export.h"
#include "Vorlen/PoleFlags.h"
#include "Vorlen/TimingMap.h"

namespace Vorlen {

class VORLEN_API Tool : public Pelko::Tool {
public:
    // --- Tool/Object.cpp: the tool itself ---

    // FactoryFailed: "Tool exists already".
    static Tool* create();

    std::string _getLabel() const override;
    // Null outside debug mode. The caller owns it.
    Ruvex::Record* _getRecord() const override;
    // "VORLEN-4.0"
    std::string getAlias() const override;

    // Whether all domains are analysed, not only the critical ones. Follows the analyzer's mode.
    bool isExhaustive() const;

    // --- Tool/Launch.cpp: the phases in order ---

    // Returns true if the run completed, or if it stopped after the domains because the analyzer is set to
    // that; false if an exception ended it. The exception is printed on the console, and what was written
    // until then stays.
    bool launch() override;

    // --- Tool/Prolog.cpp: constraints get their classes ---

    // InvalidRequest: "Null analyzer".
    void prolog();

    // --- Tool/PllFeedback.cpp: the delay of PLL feedback paths ---

    // Measures the feedback of all PLLs that compensate it, and stores it in the analyzer.
    void pllFeedbackStem();
    // The backward walk from one pole, which updates `timing` in place.
    void pllFeedbackStem(Pelko::Pole* pole, Timing& timing);

    // --- Tool/Domains.cpp: pairs of launch and latch poles become domains ---

    // Creates the domains and subdomains of the design. Prints messages in debug mode.
    void createDomains();
    // The same without messages.
    void updateDomains();
    // The domains and subdomains of one launch pole and one latch pole. Costs a look-up for each pole, and
    // O(1) for each domain. Critical: "<pole> has not clock mode!".
    void createDomains(const StemPoleSetMap& clockStems, Pelko::Pole* launch, Pelko::Pole* latch);

    // --- Tool/ClockStem.cpp: the clock roots behind every clock pole ---

    // Adds to `stems` the roots of all clock poles, and the reference clocks of constrained ports.
    void clockStem(StemPoleSetMap& stems);
    // The walk from one pole. `root` is the clock pole whose stem is wanted; `loops` is increased by the
    // number of loops.
    void clockStem(Pelko::Pole* pole, StemPoleSetMap& work, Pelko::Pole* root, unsigned long& loops);

    // --- Tool/DataStem.cpp: the launch poles behind every end point ---

    // Creates domains and subdomains for all pairs of launch pole and end point. Costs a few steps for each
    // arc; if the design has loops, a step for each pair, and for each pole the size of its stem.
    void dataStem(const StemPoleSetMap& clockStems);
    // The walk from one pole.
    void dataStem(Pelko::Pole* pole, StemPoleSetMap& work, unsigned long& loops);
    // Merges the stem of the arc's source into that of its target, and frees it if no later step needs it.
    void updateStemPoleSetMap(Pelko::Edge* edge, StemPoleSetMap& work);

    // --- Tool/Loops.cpp: the loop protocol of all walks ---
    //
    // A walk keeps the poles of its current descent on a stack. A pole that is met again on the stack closes
    // a loop. Every operation is O(1), except `loopCutting`.

    // InvalidRequest: "Already opened".
    void loopOpen();
    // InvalidRequest: "Null pole".
    void loopPush(Pelko::Pole* pole);
    // InvalidRequest: "Empty stack".
    void loopPop();
    // Whether the pole is on the stack. InvalidRequest: "Null pole".
    bool isLooping(Pelko::Pole* pole) const;
    // Breaks the loop that has just closed on `pole`, by making one arc inactive. If no arc can be cut, it
    // marks the poles of the stack. Costs a walk of the loop. InvalidRequest: "No looping".
    void loopCutting(Pelko::Pole* pole);
    // The stack, from its top. A view of the live stack.
    Ruvex::Collection<Pelko::Pole*> getLoopPoles() const;
    // InvalidRequest: "Not opened".
    void loopClose();
    // Empties the stack and closes the protocol, without checks.
    void reset();

    // --- Tool/Relationship.cpp: setup and hold relations ---

    // Sets the relations of all subdomains of synchronous domains.
    void updateRelationship();
    // The relations of two different clocks, undefined if a period is not positive. Costs the logarithm of
    // the periods.
    void calculateRelationship(Pelko::Delay& setup, Pelko::Delay& hold, const Pelko::Delay& launchPeriod,
                               const Pelko::Delay& latchPeriod, const Pelko::Delay& launchEdge,
                               const Pelko::Delay& latchEdge);

    // --- Tool/ConstrainedPaths.cpp: the arcs that exceptions may use ---

    // Adds the class of each exception to the arcs that its paths may use. Costs a walk of the fan-in of its
    // targets for each exception.
    void tagConstrainedPaths();
    // The walk from one pole (Tool/ConstrainedPathStep.cpp): adds the poles and arcs of matching paths to
    // `hitPoles` and `tagged`, sets `found` if it meets one of the starts, and counts loops.
    void constrainedPathStem(Pelko::Pole* pole, Pelko::Poles starts, PoleSet& hitPoles, EdgeList& path,
                             EdgeSet& tagged, bool& found, unsigned long& loops);

    // --- Tool/Weights.cpp: criticality classes of arcs ---

    // Writes weights on critical arcs: the worst share `ratio` of all arcs.
    void tagWeights(float ratio);
    // The same for the arcs whose slack is at most the threshold.
    void tagWeights(const Pelko::Delay& threshold);
    // Count, for each pole, the critical paths from path starts (forward) or to path ends (backward).
    void edgeForwardStem(const Pelko::Delay& threshold, PoleCountMap& counts);
    void edgeForwardStem(Pelko::Pole* pole, const Pelko::Delay& threshold, PoleCountMap& counts);
    void edgeBackwardStem(const Pelko::Delay& threshold, PoleCountMap& counts);
    void edgeBackwardStem(Pelko::Pole* pole, const Pelko::Delay& threshold, PoleCountMap& counts);

    // --- Tool/Period.cpp: the period that a clock achieves ---

    // The period that the latest arrivals of the clock's own subdomains allow. Undefined if the clock has
    // none. InvalidRequest: "Null clock source".
    Pelko::Delay calculatePeriod(Pelko::Pole* clockSource);

    // --- Tool/Epilog.cpp: marks and remarks for the user ---

    // Marks the poles with failing arcs, and prints remarks on paths that cross clock poles.
    void epilog();

protected:
    Tool();
    ~Tool() override;

    static void preCreate();
    void postCreate();
    void preDestroy() override;

private:
    PoleFlags loopPoleSet_; // the poles of the stack
    PoleList loopStack_;    // the top is at the front
    bool loopOpen_ = false;
};

} // namespace Vorlen
