// Constrained paths: finds the arcs on paths from the sources of an exception, through its bridges, to its
// targets, and adds the exception's class to them.
//
// The phase walks the fan-in once for each exception, on a compact copy (ExceptionWalk.h). Tags are kept in
// an array of its own and reach the arcs at the end of the phase, also when an exception ends it.
#include "Pelko/Analyzer.h"
#include "Ruvex/Utility.h"
#include "Vorlen/Tool.h"
#include "Vorlen/Tool/ExceptionWalk.h"
#include "Vorlen/detail/Messages.h"
#include "Vorlen/detail/Walk.h"

#include <vector>

namespace Vorlen {

namespace {

using detail::FanIn;

// The classes that the exceptions of a run give to arcs.
class Tags {
public:
    explicit Tags(const FanIn& fanIn) : fanIn_(fanIn) {}
    Tags(const Tags&) = delete;
    Tags& operator=(const Tags&) = delete;
    // Writes the classes on the arcs, also if an exception ends the run.
    ~Tags() {
        for (FanIn::Place place = 0; place < bits_.size(); ++place)
            if (bits_[place] != 0)
                fanIn_.getEdge(place)->sensitize(Pelko::PseudoMask(bits_[place]));
    }

    void add(const std::vector<FanIn::Place>& places, const Pelko::PseudoMask& mask) {
        bits_.resize(fanIn_.getPlaceCount());
        for (const FanIn::Place place : places)
            bits_[place] |= mask.getBits();
    }

private:
    const FanIn& fanIn_;
    std::vector<unsigned long> bits_; // by place
};

// Walks from the targets to the bridges, then from the bridges that were hit to the sources. Returns whether
// a source was found.
bool walkBridged(const Pelko::CPath& constrained, ExceptionWalk& walk) {
    const Pelko::Poles bridges = constrained.getBridges();
    if (!walk.run(constrained.getTargets(), bridges))
        return false;
    PoleSet hitBridges;
    for (Pelko::Pole* bridge : bridges)
        if (walk.isHit(bridge))
            hitBridges.insert(bridge);
    walk.unmark();
    return walk.run(Ruvex::SetCollection<Pelko::Pole*, Pelko::Object::StampLess>(hitBridges),
                    constrained.getSources());
}

void tagConstrainedPath(Pelko::CPath& constrained, ExceptionWalk& walk, Tags& tags) {
    const bool found = constrained.getBridges().isEmpty()
                           ? walk.run(constrained.getTargets(), constrained.getSources())
                           : walkBridged(constrained, walk);
    if (found) {
        constrained.validate();
        tags.add(walk.getTagged(), constrained.getPseudoMask());
    }
    walk.forget();
}

// Tags the arcs of all exceptions. Returns the number of loops.
unsigned long tagAll(Tool& tool) {
    unsigned long loops = 0;
    FanIn fanIn;
    Tags tags(fanIn);
    ExceptionWalk walk(tool, fanIn, loops);
    for (Pelko::CPath* path : Pelko::analyzer->getCPaths())
        if (!path->isInsulated())
            tagConstrainedPath(*path, walk, tags);
    return loops;
}

} // namespace

void Tool::tagConstrainedPaths() {
    const detail::MarkGuard guard;
    const unsigned long loops = tagAll(*this);
    if (Ruvex::isDebug())
        warnOfLoops(detail::messages::constrainedLoops, loops);
}

} // namespace Vorlen
