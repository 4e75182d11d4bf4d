// Finds the loops, and gives each the best form that fits the limits.
#include "model/Loops.h"

#include "model/LoopForms.h"
#include "model/Network.h"

#include <algorithm>

namespace Model {

namespace {

// The strongly connected components that have a cycle, in one depth-first walk: a node is of one component
// with the earliest open node that can be reached from it.
class CycleSearch {
public:
    using Nodes = std::vector<NodeId>; // of one component, in order

    CycleSearch(const Base::IndexVector<ArcId, Arc>& arcs, const Loops::Out& out, std::size_t nodes)
        : arcs_(arcs), out_(out), number_(nodes, unseen), lowest_(nodes, unseen), isOpen_(nodes),
          hasSelfArc_(nodes) {}

    std::vector<Nodes> run() {
        for (const NodeId start : number_.ids())
            if (number_[start] == unseen)
                walkFrom(start);
        return std::move(found_);
    }

private:
    struct Visit {
        NodeId node;
        std::uint32_t next; // of the arcs out of it
    };
    static constexpr std::uint32_t unseen = ~std::uint32_t{0};

    void enter(NodeId node) {
        number_[node] = lowest_[node] = count_++;
        isOpen_[node] = true;
        open_.push_back(node);
        walk_.push_back({node, 0});
    }
    void walkFrom(NodeId start) {
        enter(start);
        while (!walk_.empty()) {
            Visit& visit = walk_.back();
            const NodeId node = visit.node;
            const std::span<const ArcId> outs = out_(node);
            if (visit.next == outs.size())
                leave(node);
            else if (const Arc& arc = arcs_[outs[visit.next++]]; arc.kind == ArcKind::through)
                follow(node, arc.to);
        }
    }
    void follow(NodeId node, NodeId to) {
        hasSelfArc_[node] = hasSelfArc_[node] || to == node;
        if (number_[to] == unseen)
            enter(to);
        else if (isOpen_[to])
            lowest_[node] = std::min(lowest_[node], number_[to]);
    }
    void leave(NodeId node) {
        walk_.pop_back();
        if (!walk_.empty())
            lowest_[walk_.back().node] = std::min(lowest_[walk_.back().node], lowest_[node]);
        if (lowest_[node] == number_[node])
            close(node);
    }
    // The open nodes from this one on are a component.
    void close(NodeId node) {
        Nodes nodes;
        do {
            nodes.push_back(open_.back());
            isOpen_[open_.back()] = false;
            open_.pop_back();
        } while (nodes.back() != node);
        if (nodes.size() == 1 && !hasSelfArc_[node])
            return;
        std::ranges::sort(nodes);
        found_.push_back(std::move(nodes));
    }

    const Base::IndexVector<ArcId, Arc>& arcs_;
    const Loops::Out& out_;
    Base::IndexVector<NodeId, std::uint32_t> number_, lowest_;
    Base::IndexVector<NodeId, bool> isOpen_, hasSelfArc_;
    std::vector<NodeId> open_;
    std::vector<Visit> walk_;
    std::uint32_t count_ = 0;
    std::vector<Nodes> found_;
};

} // namespace

Loops::Loops(std::size_t nodes, const Base::IndexVector<ArcId, Arc>& arcs, const Out& out,
             const std::function<bool(NodeId)>& mayStart, const LoopLimits& limits)
    : arcs_(arcs), out_(out), loopOf_(nodes), placeInLoop_(nodes), entry_(nodes), taken_(nodes),
      nodeLimit_(limits.addedNodes + limits.timesDesign * nodes),
      arcLimit_(limits.addedArcs + limits.timesDesign * arcs.size()) {
    find();
    findEntries(mayStart);
    // The smallest first, so that they are exact.
    std::vector<LoopId> order(loops_.ids().begin(), loops_.ids().end());
    std::ranges::stable_sort(order, {}, [&](LoopId loop) { return loops_[loop].nodes.size(); });
    for (const LoopId loop : order)
        open(loops_[loop], limits);
    std::ranges::stable_sort(steps_, {}, &Step::arc);
    std::ranges::sort(cuts_);
}

void Loops::find() {
    CycleSearch search(arcs_, out_, loopOf_.size());
    for (CycleSearch::Nodes& nodes : search.run())
        loops_.emplace_back().nodes = std::move(nodes);
    std::ranges::sort(loops_, {}, [](const Loop& loop) { return loop.nodes.front(); });
    for (const LoopId loop : loops_.ids()) {
        PlaceId place(0U);
        for (const NodeId node : loops_[loop].nodes) {
            loopOf_[node] = loop;
            placeInLoop_[node] = place++;
        }
    }
}

void Loops::findEntries(const std::function<bool(NodeId)>& mayStart) {
    for (const Arc& arc : arcs_)
        if (loopOf_[arc.to] != Base::none &&
            (arc.kind != ArcKind::through || loopOf_[arc.from] != loopOf_[arc.to]))
            entry_[arc.to] = true;
    for (const Loop& loop : loops_)
        for (const NodeId node : loop.nodes)
            if (mayStart(node))
                entry_[node] = true;
}

Loops::Part Loops::partOf(const Loop& loop) const {
    Part part;
    part.size = static_cast<std::uint32_t>(loop.nodes.size());
    for (const NodeId node : loop.nodes) {
        part.first.push_back(static_cast<std::uint32_t>(part.outs.size()));
        for (const ArcId number : out_(node))
            if (const Arc& arc = arcs_[number];
                arc.kind == ArcKind::through && loopOf_[arc.to] == loopOf_[node])
                part.outs.push_back({placeInLoop_[arc.to], number});
        if (entry_[node])
            part.entries.push_back(placeInLoop_[node]);
    }
    part.first.push_back(static_cast<std::uint32_t>(part.outs.size()));
    return part;
}

void Loops::open(Loop& loop, const LoopLimits& limits) {
    const Part part = partOf(loop);
    loop.isEntered = !part.entries.empty();
    const std::uint64_t nodesLeft = nodeLimit_ - std::min<std::uint64_t>(nodeLimit_, copied_.size());
    const std::uint64_t arcsLeft = arcLimit_ - std::min<std::uint64_t>(arcLimit_, steps_.size());
    const std::uint64_t workLeft = limits.exactWork - std::min(limits.exactWork, work_);
    if (loop.isEntered && part.size <= limits.exactNodes) {
        const auto half = [](std::uint64_t left, std::uint64_t limit) {
            return left - std::min(left, limit / 2);
        };
        Exact exact(part, std::min<std::uint64_t>(limits.exactNodes, half(nodesLeft, nodeLimit_) + part.size),
                    half(arcsLeft, arcLimit_), workLeft);
        const bool fits = exact.build();
        work_ += exact.work();
        if (fits) {
            loop.form = Form::exact;
            take(loop, exact);
            return;
        }
    }
    const Walk walk(part);
    const std::uint64_t layers = std::uint64_t{walk.mostOnAPath()} + 1;
    if (loop.isEntered && part.size * (layers - 1) <= nodesLeft && part.outs.size() * layers <= arcsLeft) {
        loop.form = Form::layered;
        loop.layers = static_cast<std::uint32_t>(layers);
        take(loop, Layered(part, walk, loop.layers));
        return;
    }
    for (const Part::Out& out : part.outs)
        if (walk.closes(out))
            cuts_.push_back(out.arc);
}

// The first copy of a node takes the node's own number: that of an entry comes before all others.
template <class Copies>
void Loops::take(const Loop& loop, const Copies& copies) {
    NodeId next(static_cast<std::uint32_t>(loopOf_.size() + copied_.size()));
    Base::IndexVector<CopyId, NodeId> numberOf;
    numberOf.reserve(copies.nodes().size());
    for (const PlaceId place : copies.nodes()) {
        const NodeId node = loop.nodes[place.number()];
        if (taken_[node]) {
            numberOf.push_back(next++);
            copied_.push_back(node);
        } else {
            taken_[node] = true;
            numberOf.push_back(node);
        }
    }
    for (const auto& move : copies.moves())
        steps_.push_back({move.arc, numberOf[move.from], numberOf[move.to]});
}

} // namespace Model
