// The depth-first walk that the phases share. It keeps its own stack, so that a chain of a million poles is
// an ordinary input.
//
// A visitor implements the parts of a step, which are called as in a recursive function:
//
//   bool enter(Pole* pole)      the start of a step; if it returns false, the step is over
//   Edges fan(Pole* pole)       the arcs to follow
//   Pole* follow(Edge* edge)    the pole at which the next step starts, or null to skip the arc
//   void back(Edge* edge)       after the step at that pole, also if `enter` returned false
//   void leave(Pole* pole)      the end of a step for which `enter` returned true
//
// The arcs of a pole are copied when it is entered, so a visitor may deactivate arcs. Space: 32 bytes for
// each pole on the stack and 8 for each of its arcs. One Walk can be used for many starts without further
// allocations.
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

// Clears all marks if an exception ends the scope, so that the next run does not take poles for visited.
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
