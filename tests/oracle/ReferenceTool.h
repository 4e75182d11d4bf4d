// The analysis driver once more, in its plainest form: recursive walks over the standard ordered containers,
// every step written out in the order in which it has to happen, no event pump, no regard for speed or depth.
// Tests compare the library's driver with it, phase by phase or over a whole launch.
//
// It works on the same in-memory host, through the same globals, and writes its results there. Do not use it
// on deep graphs: it recurses once per pole.
#pragma once

#include "ReferenceSweep.h"

#include "Pelko/Delay.h"
#include "Pelko/Edges.h"
#include "Pelko/Object.h"

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace oracle {

using PoleSet = std::set<Pelko::Pole*, Pelko::Object::StampLess>;
using EdgeSet = std::set<Pelko::Edge*, Pelko::Object::StampLess>;
using StemPoleSetMap = std::map<Pelko::Pole*, PoleSet, Pelko::Object::StampLess>;
using PoleCountMap = std::map<Pelko::Pole*, unsigned long, Pelko::Object::StampLess>;

class ReferenceTool {
public:
    // The phases of a launch, in their order.
    enum class Phase { Prolog, Domains, Relationship, ConstrainedPaths, Sweeps, Weights, Periods, Epilog };
    // Called for each sweep after its last phase, before the sweep is destroyed.
    using SweepListener = std::function<void(const ReferenceSweep&)>;

    void setSweepListener(SweepListener listener) { listener_ = std::move(listener); }
    // A launch then returns true right after this phase.
    void stopAfter(Phase phase) { last_ = phase; }

    // --- ReferenceTool.cpp ---
    std::string getAlias() const { return "VORLEN-4.0"; }
    bool isExhaustive() const;
    bool launch();
    void prolog();
    void pllFeedbackStem();
    // The delay found so far is undefined while either bound is undefined.
    void pllFeedbackStem(Pelko::Pole* pole, Pelko::Delay& minimum, Pelko::Delay& maximum);

    // --- ReferenceToolLoops.cpp ---
    void loopOpen();
    void loopPush(Pelko::Pole* pole);
    void loopPop();
    bool isLooping(Pelko::Pole* pole) const;
    void loopCutting(Pelko::Pole* pole);
    void loopClose();
    void reset();
    const std::list<Pelko::Pole*>& getLoopPoles() const { return loopStack_; }

    // --- ReferenceToolStems.cpp ---
    void clockStem(StemPoleSetMap& stems);
    void clockStem(Pelko::Pole* pole, StemPoleSetMap& work, Pelko::Pole* root, unsigned long& loops);
    void dataStem(const StemPoleSetMap& clockStems);
    void dataStem(Pelko::Pole* pole, StemPoleSetMap& work, unsigned long& loops);
    void updateStemPoleSetMap(Pelko::Edge* edge, StemPoleSetMap& work);
    void createDomains();
    void updateDomains();
    void createDomains(const StemPoleSetMap& clockStems, Pelko::Pole* launch, Pelko::Pole* latch);

    // --- ReferenceToolRelations.cpp ---
    void updateRelationship();
    // The subtraction loop itself. Both periods are positive, or one or both undefined.
    void calculateRelationship(Pelko::Delay& setup, Pelko::Delay& hold, const Pelko::Delay& launchPeriod,
                               const Pelko::Delay& latchPeriod, const Pelko::Delay& launchEdge,
                               const Pelko::Delay& latchEdge);
    Pelko::Delay calculatePeriod(Pelko::Pole* clockSource);

    // --- ReferenceToolTags.cpp ---
    void tagConstrainedPaths();
    void constrainedPathStem(Pelko::Pole* pole, Pelko::Poles starts, PoleSet& hitPoles,
                             std::list<Pelko::Edge*>& path, EdgeSet& tagged, bool& found,
                             unsigned long& loops);
    void tagWeights(float ratio);
    void tagWeights(const Pelko::Delay& threshold);
    void edgeForwardStem(const Pelko::Delay& threshold, PoleCountMap& counts);
    void edgeForwardStem(Pelko::Pole* pole, const Pelko::Delay& threshold, PoleCountMap& counts);
    void edgeBackwardStem(const Pelko::Delay& threshold, PoleCountMap& counts);
    void edgeBackwardStem(Pelko::Pole* pole, const Pelko::Delay& threshold, PoleCountMap& counts);
    void epilog();

private:
    using Sweeps = std::list<std::unique_ptr<ReferenceSweep>>; // in order of creation

    bool runPhases(PoleSet& clockRoots);
    void analyzeDomain(Pelko::Domain* domain, PoleSet& clockRoots);
    void analyzeDomain(Pelko::Domain* domain, PoleSet& clockRoots, Sweeps& sweeps);
    void setMissingRelations(Pelko::Subdomain* subdomain, const Pelko::Delay& best);
    void endFirst(Sweeps& sweeps);
    void warnOfLoops(unsigned long loops, const std::string& analysis) const;

    std::set<Pelko::Pole*, Pelko::Object::StampLess> loopPoleSet_;
    std::list<Pelko::Pole*> loopStack_; // front: the top of the stack
    bool loopOpen_ = false;
    SweepListener listener_;
    std::optional<Phase> last_;
};

} // namespace oracle
