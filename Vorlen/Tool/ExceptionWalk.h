// The walk of one exception on a compact copy of the fan-in: which arcs lie on a path from its starts to its
// ends.
//
// The walk goes back from the ends. If it finds a start, or joins a pole that is known to lie on a matching
// path, then the whole current path matches. What of the path was entered before is remembered, so that a
// find costs only the part that is new. Loops are counted and skipped, never cut.
//
// Marks and the loop stack are kept in arrays. They reach the tool when an exception ends the phase. Cost:
// one step per pole and per arc of the fan-in, for each stage of each exception.
#pragma once

#include "Vorlen/Cone/FanIn.h"
#include "Vorlen/Tool.h"
#include "Vorlen/detail/EventPump.h"

#include <cstdint>
#include <vector>

namespace Vorlen {

// An exception without bridges takes one stage, one with bridges two. Every arc is walked once in a stage, so
// none is tagged twice. One object serves all exceptions of a phase.
class ExceptionWalk {
public:
    // Adds each loop that it meets to `loops`.
    ExceptionWalk(Tool& tool, detail::FanIn& fanIn, unsigned long& loops)
        : tool_(tool), fanIn_(fanIn), loops_(loops) {}

    // One stage: back from every end to the starts. Returns whether a start was found.
    bool run(const Pelko::Poles& ends, const Pelko::Poles& starts);

    // Whether the pole lies on a matching path of this stage.
    bool isHit(Pelko::Pole* pole) { return (states_[getSlot(pole)] & Hit) != 0; }
    // The arcs on matching paths, of all stages since the last `forget()`.
    const std::vector<detail::FanIn::Place>& getTagged() const { return tagged_; }

    // For the next stage: the arcs tagged so far stay.
    void unmark();
    // For the next exception.
    void forget();

private:
    using Slot = detail::FanIn::Slot;
    using Place = detail::FanIn::Place;
    using State = std::uint8_t;
    enum : State { Visited = 1, Hit = 2, OnStack = 4, Start = 8 };

    struct Frame {
        Slot slot;
        Place via; // the arc by which the pole was reached; none at an end
        Place next;
        Place end;
    };

    Slot getSlot(Pelko::Pole* pole);
    void addStates();
    void set(Slot slot, State bits) { states_[slot] = static_cast<State>(states_[slot] | bits); }
    void clear(Slot slot, State bits) { states_[slot] = static_cast<State>(states_[slot] & ~bits); }
    void prepare(const Pelko::Poles& starts);
    void walk(Slot end);
    void enter(Slot slot, Place via);
    void leave();
    void addPath();
    void tag(Place place);
    void pump();

    Tool& tool_;
    detail::FanIn& fanIn_;
    unsigned long& loops_;
    std::vector<State> states_; // by slot
    std::vector<Frame> frames_;
    std::size_t known_ = 0;   // frames that are hit and tagged
    std::vector<Slot> below_; // of the tool's loop stack, under the frames; none once they are hit
    std::vector<Place> tagged_;
    bool found_ = false;
    detail::WalkPump pump_;
};

} // namespace Vorlen
