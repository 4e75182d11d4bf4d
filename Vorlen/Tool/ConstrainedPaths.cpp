// Constrained paths: which arcs lie on a path from the sources of an exception, through its bridges, to its
// targets. Those are sensitised to the exception's class.
//
// The walk goes back from the targets. Where it finds a start, or joins a pole already known to lie on a
// matching path, the whole current path matches. What of the path was entered before is remembered, so that a
// find costs only the part that is new. Loops are counted and passed over, never cut.
//
// The phase walks the same fan-in once an exception, so it does that on a compact copy, and keeps marks, loop
// stack and tags in arrays of its own. They reach the database and the tool when somebody can see them: tags
// and loop stack also where an exception ends the phase.
#include "Pelko/Analyzer.h"
#include "Ruvex/Utility.h"
#include "Vorlen/Cone/FanIn.h"
#include "Vorlen/Tool.h"
#include "Vorlen/detail/EventPump.h"
#include "Vorlen/detail/Messages.h"
#include "Vorlen/detail/Walk.h"

#include <algorithm>
#include <vector>

namespace Vorlen {

namespace {

// --- A phase ---

using detail::FanIn;

// The classes that the exceptions of a run give to arcs.
class Tags {
public:
    explicit Tags(const FanIn& fanIn) : fanIn_(fanIn) {}
    Tags(const Tags&) = delete;
    Tags& operator=(const Tags&) = delete;
    // Also where the run ends early: what was found until then stays.
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

// The walk of one exception, in one stage or two. Every arc is walked once a stage, so none is tagged twice.
class ExceptionWalk {
public:
    ExceptionWalk(Tool& tool, FanIn& fanIn, unsigned long& loops)
        : tool_(tool), fanIn_(fanIn), loops_(loops) {}

    // Back from every end to the starts. Says whether a start was found.
    bool run(const Pelko::Poles& ends, const Pelko::Poles& starts) {
        tool_.loopOpen();
        prepare(starts);
        try {
            for (Pelko::Pole* end : ends)
                walk(getSlot(end));
        } catch (...) {
            for (const Frame& frame : frames_)
                tool_.loopPush(fanIn_.getPole(frame.slot));
            throw;
        }
        tool_.loopClose();
        return found_;
    }

    bool isHit(Pelko::Pole* pole) { return (states_[getSlot(pole)] & Hit) != 0; }
    // The arcs on matching paths, of all stages since the last `forget()`.
    const std::vector<FanIn::Place>& getTagged() const { return tagged_; }

    // For the next stage: the arcs tagged so far stay.
    void unmark() {
        Pelko::analyzer->unmark();
        std::fill(states_.begin(), states_.end(), State{0});
    }
    // For the next exception.
    void forget() {
        unmark();
        tagged_.clear();
    }

private:
    using State = std::uint8_t;
    enum : State { Visited = 1, Hit = 2, OnStack = 4, Start = 8 };

    struct Frame {
        FanIn::Slot slot;
        FanIn::Place via; // the arc by which the pole was reached; none at an end
        FanIn::Place next;
        FanIn::Place end;
    };

    FanIn::Slot getSlot(Pelko::Pole* pole) {
        const FanIn::Slot slot = fanIn_.getSlot(pole);
        addStates();
        return slot;
    }

    // For slots that are new. A pole marked before the phase counts as visited until marks are cleared.
    void addStates() {
        while (states_.size() < fanIn_.getSlotCount()) {
            const Pelko::Pole* pole = fanIn_.getPole(static_cast<FanIn::Slot>(states_.size()));
            states_.push_back(pole->isMarked() ? State{Visited} : State{0});
        }
    }

    void set(FanIn::Slot slot, State bits) { states_[slot] = static_cast<State>(states_[slot] | bits); }
    void clear(FanIn::Slot slot, State bits) { states_[slot] = static_cast<State>(states_[slot] & ~bits); }

    void prepare(const Pelko::Poles& starts) {
        found_ = false;
        pump_ = {};
        below_.clear();
        for (Pelko::Pole* pole : tool_.getLoopPoles()) {
            below_.push_back(getSlot(pole));
            set(below_.back(), OnStack);
        }
        for (Pelko::Pole* pole : starts)
            set(getSlot(pole), Start);
    }

    void walk(FanIn::Slot end) {
        enter(end, FanIn::none);
        while (!frames_.empty()) {
            Frame& top = frames_.back();
            if (top.next == top.end) {
                leave();
                continue;
            }
            const FanIn::Place place = top.next++;
            const FanIn::Slot source = fanIn_.getSource(place);
            if (source == FanIn::none)
                continue;
            if ((states_[source] & OnStack) != 0)
                ++loops_;
            else
                enter(source, place);
        }
    }

    void enter(FanIn::Slot slot, FanIn::Place via) {
        const State state = states_[slot];
        if ((state & Visited) != 0) {
            if ((state & Hit) != 0) {
                addPath();
                tag(via);
            }
            pump();
            return;
        }
        set(slot, Visited | OnStack);
        if ((state & Start) != 0) {
            found_ = true;
            frames_.push_back({slot, via, 0, 0});
            addPath();
            return;
        }
        const FanIn::Fan fan = fanIn_.open(slot);
        addStates();
        frames_.push_back({slot, via, fan.begin, fan.end});
    }

    void leave() {
        clear(frames_.back().slot, OnStack);
        frames_.pop_back();
        known_ = std::min(known_, frames_.size());
        pump();
    }

    // The current path matches. Its lowest frames are known to already.
    void addPath() {
        for (const FanIn::Slot slot : below_)
            set(slot, Hit);
        below_.clear();
        for (; known_ < frames_.size(); ++known_) {
            set(frames_[known_].slot, Hit);
            tag(frames_[known_].via);
        }
    }

    void tag(FanIn::Place place) {
        if (place != FanIn::none)
            tagged_.push_back(place);
    }

    void pump() {
        if (!pump_())
            return;
        fanIn_.renew();
        for (const Frame& frame : frames_)
            fanIn_.reread(frame.next, frame.end);
        addStates();
    }

    Tool& tool_;
    FanIn& fanIn_;
    unsigned long& loops_;
    std::vector<State> states_; // by slot
    std::vector<Frame> frames_;
    std::size_t known_ = 0;          // frames that are hit and tagged
    std::vector<FanIn::Slot> below_; // of the tool's loop stack, under the frames; none once they are hit
    std::vector<FanIn::Place> tagged_;
    bool found_ = false;
    detail::WalkPump pump_;
};

// From the targets to the bridges, then from the bridges that were hit to the sources.
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

// The arcs of all exceptions. Says how many loops were met.
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

// --- One step, in the containers of a caller ---

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
    // The current path matches. The lowest of its poles and arcs are known to already.
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

void Tool::tagConstrainedPaths() {
    const detail::MarkGuard guard;
    const unsigned long loops = tagAll(*this);
    if (Ruvex::isDebug())
        warnOfLoops(detail::messages::constrainedLoops, loops);
}

void Tool::constrainedPathStem(Pelko::Pole* pole, Pelko::Poles starts, PoleSet& hitPoles, EdgeList& path,
                               EdgeSet& tagged, bool& found, unsigned long& loops) {
    StepVisitor visitor(*this, starts, hitPoles, path, tagged, found, loops);
    detail::Walk().run(pole, visitor);
}

} // namespace Vorlen
