// The analysis driver. A host creates it once, under the tool name "Analyzing", and launches it as often as
// it likes: every launch is one complete static timing analysis of `Pelko::cell` under the constraints and
// settings of `Pelko::analyzer`.
//
// Operations stand in the order in which a launch calls them; each group names its file. All run on the
// caller's thread, and throw the framework's exceptions: `launch()` is the one place that catches them. Every
// walk keeps its own stack, and costs one visit a pole and one an arc unless it says otherwise.
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
    // --- Tool/Object.cpp: the tool itself

    static Tool* create();

    std::string _getLabel() const override;
    Ruvex::Record* _getRecord() const override;
    // "VORLEN-4.0"
    std::string getAlias() const override;

    // Whether every domain is analysed, not only the critical ones.
    bool isExhaustive() const;

    // --- Tool/Launch.cpp: the phases in order

    // True when the run finished normally, also when it stopped after the domains because the analyzer says
    // so; false when an exception ended it. The exception is reported on the console; what was written so far
    // stays.
    bool launch() override;

    // --- Tool/Prolog.cpp: constraints get their classes

    // InvalidRequest: "Null analyzer".
    void prolog();

    // --- Tool/PllFeedback.cpp: the delay of PLL feedback paths

    void pllFeedbackStem();
    // The backward walk from one pole; `timing` is updated in place.
    void pllFeedbackStem(Pelko::Pole* pole, Timing& timing);

    // --- Tool/Domains.cpp: launch and latch pairs become domains

    void createDomains();
    // The same, printing nothing.
    void updateDomains();
    // The domains and subdomains of one launch pole and one latch pole. Critical: "<pole> has not clock
    // mode!".
    void createDomains(const StemPoleSetMap& clockStems, Pelko::Pole* launch, Pelko::Pole* latch);

    // --- Tool/ClockStem.cpp: the clock roots behind every clock pole

    void clockStem(StemPoleSetMap& stems);
    // One step of the walk; `root` is the clock pole whose stem is sought, `loops` counts the loops met.
    void clockStem(Pelko::Pole* pole, StemPoleSetMap& work, Pelko::Pole* root, unsigned long& loops);

    // --- Tool/DataStem.cpp: the launch poles behind every end point

    // Costs a step for every pair of launch pole and end point, and for every pole the size of its stem.
    void dataStem(const StemPoleSetMap& clockStems);
    void dataStem(Pelko::Pole* pole, StemPoleSetMap& work, unsigned long& loops);
    // Moves the stem of the edge's source into that of its target, and frees it when nobody will need it
    // again.
    void updateStemPoleSetMap(Pelko::Edge* edge, StemPoleSetMap& work);

    // --- Tool/Loops.cpp: the loop protocol of all walks
    // ------------------------------------------------------------------- InvalidRequest: "Already opened",
    // "Not opened", "Null pole", "Empty stack", "No looping".

    void loopOpen();
    void loopPush(Pelko::Pole* pole);
    void loopPop();
    bool isLooping(Pelko::Pole* pole) const;
    // Breaks the loop just closed on `pole` for good, by deactivating one arc; marks the loop where no arc
    // can go.
    void loopCutting(Pelko::Pole* pole);
    // The descent stack, from its top; a view of the live stack.
    Ruvex::Collection<Pelko::Pole*> getLoopPoles() const;
    void loopClose();
    // The closed, empty state, without checks.
    void reset();

    // --- Tool/Relationship.cpp: setup and hold relations

    void updateRelationship();
    // The relations of two different clocks. Costs a logarithm of the periods. Periods that are not positive
    // give undefined relations.
    void calculateRelationship(Pelko::Delay& setup, Pelko::Delay& hold, const Pelko::Delay& launchPeriod,
                               const Pelko::Delay& latchPeriod, const Pelko::Delay& launchEdge,
                               const Pelko::Delay& latchEdge);

    // --- Tool/ConstrainedPaths.cpp: the arcs that exceptions may use

    // Costs one walk of the fan-in of its targets for each exception.
    void tagConstrainedPaths();
    void constrainedPathStem(Pelko::Pole* pole, Pelko::Poles starts, PoleSet& hitPoles, EdgeList& path,
                             EdgeSet& tagged, bool& found, unsigned long& loops);

    // --- Tool/Weights.cpp: criticality classes of arcs

    // About `ratio` of all arcs count as critical.
    void tagWeights(float ratio);
    // Arcs of a slack up to the threshold do.
    void tagWeights(const Pelko::Delay& threshold);
    void edgeForwardStem(const Pelko::Delay& threshold, PoleCountMap& counts);
    void edgeForwardStem(Pelko::Pole* pole, const Pelko::Delay& threshold, PoleCountMap& counts);
    void edgeBackwardStem(const Pelko::Delay& threshold, PoleCountMap& counts);
    void edgeBackwardStem(Pelko::Pole* pole, const Pelko::Delay& threshold, PoleCountMap& counts);

    // --- Tool/Period.cpp: what a clock achieves

    // Undefined where the source roots no same-clock domain. InvalidRequest: "Null clock source".
    Pelko::Delay calculatePeriod(Pelko::Pole* clockSource);

    // --- Tool/Epilog.cpp: marks and remarks for the user

    void epilog();

protected:
    Tool();
    ~Tool() override;

    static void preCreate();
    void postCreate();
    void preDestroy() override;

private:
    PoleFlags loopPoleSet_; // the poles of the stack
    PoleList loopStack_;    // front: the top
    bool loopOpen_ = false;
};

} // namespace Vorlen
