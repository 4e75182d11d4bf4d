// Constrained paths: which arcs lie on a path from the sources of an exception, through its bridges, to its
// targets. Those are sensitised to the exception's class.
//
// The walk goes back from the targets. Where it finds a start, or joins a pole already known to lie on a
// matching path, the whole current path matches. What of the path was entered before is remembered, so that a
// find costs only the part that is new. Loops are counted and passed over, never cut.
#include "Pelko/Analyzer.h"
#include "Ruvex/Utility.h"
#include "Vorlen/Tool.h"
#include "Vorlen/detail/EventPump.h"
#include "Vorlen/detail/Messages.h"
#include "Vorlen/detail/Walk.h"

#include <algorithm>
#include <unordered_set>

namespace Vorlen {

namespace {

// The sets that one exception fills, and the run's loop count.
struct Findings {
    PoleSet& hitPoles;
    EdgeList& path;
    EdgeSet& tagged;
    bool& found;
    unsigned long& loops;
};

class ConstrainedVisitor {
public:
    ConstrainedVisitor(Tool& tool, const Pelko::Poles& starts, const Findings& findings)
        : tool_(tool), findings_(findings) {
        for (Pelko::Pole* pole : starts)
            starts_.insert(pole);
    }

    bool enter(Pelko::Pole* pole) {
        if (pole->isMarked()) {
            if (findings_.hitPoles.count(pole) != 0)
                addPath();
            pump_();
            return false;
        }
        pole->mark();
        tool_.loopPush(pole);
        isStart_ = starts_.count(pole) != 0;
        if (isStart_) {
            findings_.found = true;
            addPath();
        }
        return true;
    }

    // Asked right after the pole was entered.
    Pelko::Edges fan(const Pelko::Pole* pole) const {
        return isStart_ ? Pelko::Edges() : pole->getIncomingEdges();
    }

    Pelko::Pole* follow(Pelko::Edge* edge) {
        if (!edge->isActive())
            return nullptr;
        if (tool_.isLooping(edge->getSource())) {
            ++findings_.loops;
            return nullptr;
        }
        findings_.path.push_front(edge);
        return edge->getSource();
    }

    void back(const Pelko::Edge*) {
        findings_.path.pop_front();
        addedEdges_ = std::min(addedEdges_, findings_.path.size());
    }

    void leave(Pelko::Pole*) {
        tool_.loopPop();
        addedPoles_ = std::min(addedPoles_, tool_.getLoopPoles().getCount());
        pump_();
    }

private:
    // The current path matches. Its lower `added…` entries are in the sets already.
    void addPath() {
        const Ruvex::Collection<Pelko::Pole*> poles = tool_.getLoopPoles();
        std::size_t fresh = poles.getCount() - addedPoles_;
        for (auto pole = poles.begin(); fresh != 0; ++pole, --fresh)
            findings_.hitPoles.insert(*pole);
        addedPoles_ = poles.getCount();
        fresh = findings_.path.size() - addedEdges_;
        for (auto edge = findings_.path.begin(); fresh != 0; ++edge, --fresh)
            findings_.tagged.insert(*edge);
        addedEdges_ = findings_.path.size();
    }

    Tool& tool_;
    Findings findings_;
    std::unordered_set<Pelko::Pole*> starts_; // for membership only
    bool isStart_ = false;
    std::size_t addedPoles_ = 0;
    std::size_t addedEdges_ = 0;
    detail::WalkPump pump_;
};

// One stage: back from every end to the starts.
template <class Ends>
void walkStage(Tool& tool, const Ends& ends, const Pelko::Poles& starts, const Findings& findings) {
    tool.loopOpen();
    ConstrainedVisitor visitor(tool, starts, findings);
    detail::Walk walk;
    for (Pelko::Pole* end : ends)
        walk.run(end, visitor);
    tool.loopClose();
}

void tagConstrainedPath(Tool& tool, Pelko::CPath& constrained, unsigned long& loops) {
    PoleSet hitPoles;
    EdgeList path;
    EdgeSet tagged;
    bool found = false;
    const Findings findings{hitPoles, path, tagged, found, loops};
    const Pelko::Poles bridges = constrained.getBridges();
    if (bridges.isEmpty()) {
        walkStage(tool, constrained.getTargets(), constrained.getSources(), findings);
    } else {
        walkStage(tool, constrained.getTargets(), bridges, findings);
        if (found) {
            PoleSet hitBridges;
            for (Pelko::Pole* bridge : bridges)
                if (hitPoles.count(bridge) != 0)
                    hitBridges.insert(bridge);
            Pelko::analyzer->unmark();
            hitPoles.clear();
            path.clear();
            found = false;
            walkStage(tool, hitBridges, constrained.getSources(), findings);
        }
    }
    if (found) {
        constrained.validate();
        for (Pelko::Edge* edge : tagged)
            edge->sensitize(constrained.getPseudoMask());
    }
    Pelko::analyzer->unmark();
}

} // namespace

void Tool::tagConstrainedPaths() {
    const detail::MarkGuard guard;
    unsigned long loops = 0;
    for (Pelko::CPath* path : Pelko::analyzer->getCPaths())
        if (!path->isInsulated())
            tagConstrainedPath(*this, *path, loops);
    if (Ruvex::isDebug())
        warnOfLoops(detail::messages::constrainedLoops, loops);
}

void Tool::constrainedPathStem(Pelko::Pole* pole, Pelko::Poles starts, PoleSet& hitPoles, EdgeList& path,
                               EdgeSet& tagged, bool& found, unsigned long& loops) {
    ConstrainedVisitor visitor(*this, starts, {hitPoles, path, tagged, found, loops});
    detail::Walk().run(pole, visitor);
}

} // namespace Vorlen
