// One step of the constrained path walk on the database itself, in the containers of the caller. The phase
// takes the same steps on a copy (ExceptionWalk.h).
#include "Vorlen/Tool.h"
#include "Vorlen/detail/EventPump.h"
#include "Vorlen/detail/Walk.h"

#include <algorithm>

namespace Vorlen {

namespace {

class StepVisitor {
public:
    StepVisitor(Tool& tool, const Pelko::Poles& starts, PoleSet& hitPoles, EdgeList& path, EdgeSet& tagged,
                bool& found, unsigned long& loops)
        : tool_(tool), hitPoles_(hitPoles), path_(path), tagged_(tagged), found_(found), loops_(loops),
          depth_(tool.getLoopPoles().getCount()) {
        for (Pelko::Pole* pole : starts)
            starts_.insert(pole);
    }

    bool enter(Pelko::Pole* pole) {
        if (pole->isMarked()) {
            if (hitPoles_.count(pole) != 0)
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

    // Called right after the pole was entered.
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
        path_.push_front(edge);
        return edge->getSource();
    }

    void back(const Pelko::Edge*) {
        path_.pop_front();
        knownEdges_ = std::min(knownEdges_, path_.size());
    }

    void leave(Pelko::Pole*) {
        tool_.loopPop();
        knownPoles_ = std::min(knownPoles_, --depth_);
        pump_();
    }

private:
    // Called if the current path matches. The lowest of its poles and arcs are known to match already.
    void addPath() {
        if (std::size_t fresh = depth_ - knownPoles_; fresh != 0) {
            const Ruvex::Collection<Pelko::Pole*> poles = tool_.getLoopPoles();
            for (auto pole = poles.begin(); fresh != 0; ++pole, --fresh)
                hitPoles_.insert(*pole);
            knownPoles_ = depth_;
        }
        std::size_t fresh = path_.size() - knownEdges_;
        for (auto edge = path_.begin(); fresh != 0; ++edge, --fresh)
            tagged_.insert(*edge);
        knownEdges_ = path_.size();
    }

    Tool& tool_;
    PoleSet& hitPoles_;
    EdgeList& path_;
    EdgeSet& tagged_;
    bool& found_;
    unsigned long& loops_;
    PoleFlags starts_;
    bool isStart_ = false;
    std::size_t depth_; // of the loop stack
    std::size_t knownPoles_ = 0;
    std::size_t knownEdges_ = 0;
    detail::WalkPump pump_;
};

} // namespace

void Tool::constrainedPathStem(Pelko::Pole* pole, Pelko::Poles starts, PoleSet& hitPoles, EdgeList& path,
                               EdgeSet& tagged, bool& found, unsigned long& loops) {
    StepVisitor visitor(*this, starts, hitPoles, path, tagged, found, loops);
    detail::Walk().run(pole, visitor);
}

} // namespace Vorlen
