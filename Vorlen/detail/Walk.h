// The depth-first walk that the phases share. It keeps its own stack, so that a chain of a million poles is
// an ordinary input.
//
// A visitor says what a step does, in the order in which a recursive function would:
//   bool enter(Pole* pole)      start of a step; false: the step returns at once
//   Edges fan(Pole* pole)       the arcs to follow; empty for none
//   Pole* follow(Edge* edge)    before an arc is followed: the pole to step on, or null to pass the arc over
//   void back(Edge* edge)       after the step on that pole has returned, entered or not
//   void leave(Pole* pole)      end of a step that was entered
//
// The arcs of a pole are copied when it is entered: a visitor may deactivate arcs on the way. Space: 32 bytes
// a pole and 8 an arc of the poles on the stack. One Walk serves many starts without allocating anew.
#pragma once

#include "Pelko/Edge.h"
#include "Vorlen/detail/Prefetch.h"
#include "Vorlen/detail/Work.h"

#include <exception>
#include <vector>

namespace Vorlen::detail {

class Walk {
public:
    template <class Visitor>
    void run(Pelko::Pole* start, Visitor& visitor) {
        frames_.clear();
        edges_.clear();
        if (!visitor.enter(start))
            return;
        push(start, nullptr, visitor.fan(start));
        while (!frames_.empty()) {
            Frame& top = frames_.back();
            if (top.next == top.end) {
                const Frame done = top;
                frames_.pop_back();
                edges_.resize(frames_.empty() ? 0 : frames_.back().end);
                visitor.leave(done.pole);
                if (done.via)
                    visitor.back(done.via);
                continue;
            }
            Pelko::Edge* edge = edges_[top.next++];
            Pelko::Pole* pole = visitor.follow(edge);
            if (!pole)
                continue;
            if (visitor.enter(pole))
                push(pole, edge, visitor.fan(pole));
            else
                visitor.back(edge);
        }
    }

private:
    struct Frame {
        Pelko::Pole* pole;
        Pelko::Edge* via; // the arc by which the pole was reached; null at the start
        std::size_t next; // into edges_
        std::size_t end;
    };

    void push(Pelko::Pole* pole, Pelko::Edge* via, const Pelko::Edges& fan) {
        const std::size_t begin = edges_.size();
        for (Pelko::Edge* edge : fan) {
            prefetchEdge(edge);
            edges_.push_back(edge);
        }
        visitArcs(edges_.size() - begin);
        frames_.push_back({pole, via, begin, edges_.size()});
    }

    std::vector<Frame> frames_;
    std::vector<Pelko::Edge*> edges_;
};

// Clears all marks where a walk ends by an exception: the next run must not take its poles for visited.
class MarkGuard {
public:
    MarkGuard() : exceptions_(std::uncaught_exceptions()) {}
    MarkGuard(const MarkGuard&) = delete;
    MarkGuard& operator=(const MarkGuard&) = delete;
    ~MarkGuard();

private:
    int exceptions_;
};

} // namespace Vorlen::detail
