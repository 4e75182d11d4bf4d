// Combinational loops, opened so that no arc leads backwards and no path is lost.
//
// A path passes a pin at most once, and every such path counts. A loop is a strongly connected component of
// the through arcs. It is replaced by copies of its nodes, in the first of three forms that fits the limits:
//
//   exact    A copy is a node together with the nodes of the loop that a path can still reach from there
//            without passing a node twice. The copies' paths are exactly the paths that pass no node twice.
//            Two gates that drive each other take two copies of each of their pins.
//   layered  The arcs that close a cycle in a depth-first walk lead into the next layer of copies, and there
//            are as many layers as such arcs can follow one another when no node is passed twice. All those
//            paths are there, and some that pass a node twice: slacks are safe, and may be too small.
//   cut      The arcs that close a cycle are cut. Paths that use them are lost.
//
// The nodes where paths enter a loop, from outside or because they start there, keep their number as the copy
// from which nothing has been passed yet. So arcs into a loop stay as they are.
//
// Finding the loops is linear. The exact form costs a walk through the loop for each copy, the others are
// linear in the copies that they make.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace Model {

struct Arc;

struct LoopLimits {
    std::uint32_t exactNodes = 10'000;     // in the exact form of one loop
    std::uint64_t exactWork = 200'000'000; // arcs and words passed in search of exact forms, in all loops
    // What copies may add to the design: so much, and so many times what it has. Exact forms leave half of
    // it.
    std::uint64_t addedNodes = 1'000'000;
    std::uint64_t addedArcs = 4'000'000;
    std::uint64_t timesDesign = 4;
};

class Loops {
public:
    enum class Form : std::uint8_t { exact, layered, cut };
    struct Loop {
        std::vector<std::uint32_t> nodes; // in order
        Form form = Form::cut;
        std::uint32_t layers = 0; // of the layered form
        bool isEntered = false;   // else no path passes it, and its arcs are cut
    };
    // A copy of an arc within a loop.
    struct Step {
        std::uint32_t arc = 0;
        std::uint32_t from = 0, to = 0; // nodes, copies counted on from the last node
    };
    // The arcs out of a node.
    using Out = std::function<std::span<const std::uint32_t>(std::uint32_t)>;

    // mayStart: whether paths may start at a node otherwise than by an arc into it.
    Loops(std::uint32_t nodes, std::span<const Arc> arcs, const Out& out,
          const std::function<bool(std::uint32_t)>& mayStart, const LoopLimits& limits);

    // By their first node.
    const std::vector<Loop>& all() const { return loops_; }
    // The loop of a node; none if it has no loop.
    std::uint32_t loopOf(std::uint32_t node) const { return loopOf_[node]; }
    // Within loops that are copied, by arc.
    const std::vector<Step>& steps() const { return steps_; }
    // The nodes that the copies stand for, copies in order.
    const std::vector<std::uint32_t>& copied() const { return copied_; }
    // Arcs that are cut, in order.
    const std::vector<std::uint32_t>& cuts() const { return cuts_; }

private:
    struct Part; // of the graph: one loop, its nodes counted from 0
    class Exact;
    class Layered;
    class Walk;

    void find();
    void findEntries(const std::function<bool(std::uint32_t)>& mayStart);
    Part partOf(const Loop& loop) const;
    void open(Loop& loop, const LoopLimits& limits);
    template <class Copies>
    void take(const Loop& loop, const Copies& copies);

    const std::span<const Arc> arcs_;
    const Out& out_;
    std::vector<std::uint32_t> loopOf_, placeInLoop_; // by node
    std::vector<bool> entry_, taken_;                 // by node
    std::vector<Loop> loops_;
    std::vector<Step> steps_;
    std::vector<std::uint32_t> copied_, cuts_;
    std::uint64_t work_ = 0, nodeLimit_ = 0, arcLimit_ = 0;
};

} // namespace Model
