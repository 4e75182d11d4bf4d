// Constrained paths: which arcs lie on a path from the sources of an exception,
// through its bridges, to its targets. Those are sensitised to the exception's
// class.
//
// The walk goes back from the targets. Where it finds a start, or joins a pole
// already known to lie on a matching path, the whole current path matches. What
// of the path was entered before is remembered, so that a find costs only the
// part that is new. Loops are counted and passed over, never cut.
#include "Pelko/Analyzer.h"
#include "Ruvex/Utility.h"
#include "Vorlen/Tool.h"
#include "Vorlen/detail/EventPump.h"
#include "Vorlen/detail/Messages.h"
#include "Vorlen/detail/Walk.h"

#include <algorithm>
#include <vector>

namespace Vorlen {

namespace {

// What one exception finds, in the containers of a caller.
class CallerFindings {
public:
    CallerFindings(PoleSet& hitPoles, EdgeList& path, EdgeSet& tagged)
        : hitPoles_(hitPoles), path_(path), tagged_(tagged) {}

    bool isHit(Pelko::Pole* pole) const { return hitPoles_.count(pole) != 0; }
    void addHit(Pelko::Pole* pole) { hitPoles_.insert(pole); }
    void push(Pelko::Edge* edge) { path_.push_front(edge); }
    void pop() { path_.pop_front(); }
    std::size_t getLength() const { return path_.size(); }
    // Tags the arcs of the path but the lowest `known`.
    void tagPath(std::size_t known) {
        std::size_t fresh = path_.size() - known;
        for (auto edge = path_.begin(); fresh != 0; ++edge, --fresh)
            tagged_.insert(*edge);
    }

private:
    PoleSet& hitPoles_;
    EdgeList& path_;
    EdgeSet& tagged_;
};

// The same in containers of a stage. Every arc is walked once a stage, so none
// is tagged twice.
class StageFindings {
public:
    bool isHit(const Pelko::Pole* pole) const { return hitPoles_.contains(pole); }
    void addHit(const Pelko::Pole* pole) { hitPoles_.insert(pole); }
    void push(Pelko::Edge* edge) { path_.push_back(edge); }
    void pop() { path_.pop_back(); }
    std::size_t getLength() const { return path_.size(); }
    void tagPath(std::size_t known) {
        tagged_.insert(tagged_.end(), path_.begin() + static_cast<std::ptrdiff_t>(known), path_.end());
    }

    const std::vector<Pelko::Edge*>& getTagged() const { return tagged_; }
    // For the next stage: the arcs tagged so far stay.
    void startStage() {
        hitPoles_.clear();
        path_.clear();
    }

private:
    PoleFlags hitPoles_;
    std::vector<Pelko::Edge*> path_;
    std::vector<Pelko::Edge*> tagged_;
};

template <class Findings>
class ConstrainedVisitor {
public:
    ConstrainedVisitor(Tool& tool, const Pelko::Poles& starts, Findings& findings, bool& found,
                       unsigned long& loops)
        : tool_(tool), findings_(findings), found_(found), loops_(loops),
          depth_(tool.getLoopPoles().getCount()) {
        for (Pelko::Pole* pole : starts)
            starts_.insert(pole);
    }

    bool enter(Pelko::Pole* pole) {
        if (pole->isMarked()) {
            if (findings_.isHit(pole))
                addPath();
            pump_();
            return false;
        }
        pole->mark();
        tool_.loopPush(pole);
        ++depth_;
        isStart_ = starts_.contains(pole);
        if (isStart_) {
            found_ = true;
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
            ++loops_;
            return nullptr;
        }
        findings_.push(edge);
        return edge->getSource();
    }

    void back(const Pelko::Edge*) {
        findings_.pop();
        knownEdges_ = std::min(knownEdges_, findings_.getLength());
    }

    void leave(Pelko::Pole*) {
        tool_.loopPop();
        knownPoles_ = std::min(knownPoles_, --depth_);
        pump_();
    }

private:
    // The current path matches. The lowest of its poles and arcs are known to
    // already.
    void addPath() {
        if (std::size_t fresh = depth_ - knownPoles_; fresh != 0) {
            const Ruvex::Collection<Pelko::Pole*> poles = tool_.getLoopPoles();
            for (auto pole = poles.begin(); fresh != 0; ++pole, --fresh)
                findings_.addHit(*pole);
            knownPoles_ = depth_;
        }
        findings_.tagPath(knownEdges_);
        knownEdges_ = findings_.getLength();
    }

    Tool& tool_;
    Findings& findings_;
    bool& found_;
    unsigned long& loops_;
    PoleFlags starts_;
    bool isStart_ = false;
    std::size_t depth_; // of the loop stack
    std::size_t knownPoles_ = 0;
    std::size_t knownEdges_ = 0;
    detail::WalkPump pump_;
};

// One stage: back from every end to the starts. Says whether a start was found.
bool walkStage(Tool& tool, const Pelko::Poles& ends, const Pelko::Poles& starts, StageFindings& findings,
               unsigned long& loops) {
    bool found = false;
    tool.loopOpen();
    ConstrainedVisitor<StageFindings> visitor(tool, starts, findings, found, loops);
    detail::Walk walk;
    for (Pelko::Pole* end : ends)
        walk.run(end, visitor);
    tool.loopClose();
    return found;
}

// From the targets to the bridges, then from the bridges that were hit to the
// sources.
bool walkBridged(Tool& tool, const Pelko::CPath& constrained, StageFindings& findings, unsigned long& loops) {
    const Pelko::Poles bridges = constrained.getBridges();
    if (!walkStage(tool, constrained.getTargets(), bridges, findings, loops))
        return false;
    PoleSet hitBridges;
    for (Pelko::Pole* bridge : bridges)
        if (findings.isHit(bridge))
            hitBridges.insert(bridge);
    Pelko::analyzer->unmark();
    findings.startStage();
    return walkStage(tool, Ruvex::SetCollection<Pelko::Pole*, Pelko::Object::StampLess>(hitBridges),
                     constrained.getSources(), findings, loops);
}

void tagConstrainedPath(Tool& tool, Pelko::CPath& constrained, unsigned long& loops) {
    StageFindings findings;
    const bool found =
        constrained.getBridges().isEmpty()
            ? walkStage(tool, constrained.getTargets(), constrained.getSources(), findings, loops)
            : walkBridged(tool, constrained, findings, loops);
    if (found) {
        constrained.validate();
        for (Pelko::Edge* edge : findings.getTagged())
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
    CallerFindings findings(hitPoles, path, tagged);
    ConstrainedVisitor<CallerFindings> visitor(*this, starts, findings, found, loops);
    detail::Walk().run(pole, visitor);
}

} // namespace Vorlen
