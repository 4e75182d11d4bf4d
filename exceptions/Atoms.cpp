#include "exceptions/Atoms.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace Exceptions {

using Model::NodeId;

namespace {

// A list that names a node, and by which object. Equal lists of several variants are one.
struct Occurrence {
    std::uint32_t list = 0;
    By by = By::pin;
    Base::Name clockPin{};

    auto operator<=>(const Occurrence&) const = default;
};
using Occurrences = std::vector<Occurrence>; // sorted

// Of the nodes in loops whose order with others matters: the pins of the same loop, among these nodes, that a
// path can still pass behind the node. On a path that passes two of the nodes, the second lies ahead of the
// first, and the first not ahead of the second.
using PointsAhead = std::unordered_map<NodeId, Nodes>;

// The nodes of a loop from which a path inside the loop leads to one of a point's copies, these included.
std::unordered_set<NodeId> leadingTo(const Model::Network& network, NodeId point, Model::LoopId loop) {
    std::unordered_set<NodeId> leads;
    Nodes open;
    const auto add = [&](NodeId node) {
        if (leads.insert(node).second)
            open.push_back(node);
    };
    network.eachCopy(point, add);
    while (!open.empty()) {
        const NodeId node = open.back();
        open.pop_back();
        for (const Model::ArcId number : network.in(node))
            if (const Model::Arc& arc = network.arcs()[number];
                arc.kind == Model::ArcKind::through && network.loopOf(arc.from) == loop)
                add(arc.from);
    }
    return leads;
}

PointsAhead findPointsAhead(const Model::Network& network, const Nodes& ordered) {
    std::map<Model::LoopId, Nodes> ofLoops;
    for (const NodeId node : ordered)
        if (const Model::LoopId loop = network.loopOf(node); loop != Base::none && !network.isRepeated(node))
            ofLoops[loop].push_back(node);
    PointsAhead ahead;
    for (const auto& [loop, nodes] : ofLoops) {
        std::set<NodeId> points;
        for (const NodeId node : nodes)
            points.insert(network.originalOf(node));
        for (const NodeId point : points) {
            const std::unordered_set<NodeId> leads = leadingTo(network, point, loop);
            for (const NodeId node : nodes)
                if (network.originalOf(node) != point && leads.contains(node))
                    ahead[node].push_back(point);
        }
    }
    return ahead;
}

} // namespace

// What is needed only while the atoms are made.
class Atoms::Builder {
public:
    Builder(const Model::Network& network, const Variants& variants, Atoms& made)
        : network_(network), variants_(variants), made_(made) {}

    // Returns whether there are through lists.
    bool collect();
    void makeAtoms();
    void fillLists();

private:
    // What the nodes of one atom whose order matters have in common: the pin (or the node, if a path may pass
    // several copies), the lists and the points ahead.
    using OrderedPoint = std::tuple<NodeId, Occurrences, Nodes>;

    void add(Nodes nodes);
    void addOrdered(NodeId node, const Occurrences& named);
    Nodes orderedNodes() const;

    const Model::Network& network_;
    const Variants& variants_;
    Atoms& made_;
    std::map<NodeId, Occurrences> namedIn_;
    std::unordered_set<NodeId> ordered_; // nodes whose order with others matters
    std::unordered_set<NodeId> plain_;   // the other nodes that only one list names
    PointsAhead ahead_;
    std::map<OrderedPoint, AtomId> orderedPoints_;
    std::unordered_map<NodeId, AtomId> atomOf_;
};

Atoms::Atoms(const Model::Network& network, const Variants& variants) : lists_(variants.size()) {
    Builder builder(network, variants, *this);
    if (!builder.collect())
        return;
    levels_.emplace(network);
    builder.makeAtoms();
    builder.fillLists();
}

bool Atoms::Builder::collect() {
    std::map<Mentions, std::uint32_t> lists;
    for (const Variant& variant : variants_)
        for (const Mentions& list : variant.throughs) {
            const auto [known, isNew] = lists.try_emplace(list, static_cast<std::uint32_t>(lists.size()));
            for (const Mention& mention : list) {
                if (isNew)
                    namedIn_[mention.node].push_back({known->second, mention.by, mention.clockPin});
                if (variant.throughs.size() > 1)
                    ordered_.insert(mention.node);
            }
        }
    return !lists.empty();
}

void Atoms::Builder::add(Nodes nodes) {
    for (const NodeId node : nodes)
        atomOf_[node] = made_.nodes_.next();
    made_.nodes_.push_back(std::move(nodes));
}

// A node whose order with others matters, or that a path may pass together with another of its group.
void Atoms::Builder::addOrdered(NodeId node, const Occurrences& named) {
    const auto found = ahead_.find(node);
    const NodeId point = network_.isRepeated(node) ? node : NodeId(network_.originalOf(node));
    const auto [place, isNew] = orderedPoints_.try_emplace(
        {point, named, found == ahead_.end() ? Nodes() : found->second}, made_.nodes_.next());
    if (isNew)
        return add({node});
    atomOf_[node] = place->second;
    made_.nodes_[place->second].push_back(node);
}

Nodes Atoms::Builder::orderedNodes() const {
    Nodes nodes;
    for (const auto& [node, named] : namedIn_)
        if (ordered_.contains(node))
            nodes.push_back(node);
    return nodes;
}

void Atoms::Builder::makeAtoms() {
    ahead_ = findPointsAhead(network_, orderedNodes());
    std::map<Occurrences, Nodes> together;
    for (auto& [node, named] : namedIn_) {
        if (ordered_.contains(node)) {
            addOrdered(node, named);
            continue;
        }
        if (named.front().list == named.back().list) {
            plain_.insert(node);
            named = {{named.front().list}};
        }
        together[named].push_back(node);
    }
    for (auto& [named, nodes] : together) {
        if (made_.levels_->isAntichain(nodes))
            add(std::move(nodes));
        else
            for (const NodeId node : nodes)
                addOrdered(node, named);
    }
}

void Atoms::Builder::fillLists() {
    for (const VariantId variant : variants_.ids())
        for (const Mentions& list : variants_[variant].throughs) {
            std::set<ThroughPoint> named;
            for (const Mention& mention : list)
                named.insert(plain_.contains(mention.node)
                                 ? ThroughPoint{atomOf_.at(mention.node)}
                                 : ThroughPoint{atomOf_.at(mention.node), mention.by, mention.clockPin});
            made_.lists_[variant].emplace_back(named.begin(), named.end());
        }
}

void Atoms::splitByLevel() {
    const Base::IndexVector<AtomId, Nodes> whole = std::exchange(nodes_, {});
    Base::IndexVector<AtomId, std::vector<AtomId>> parts(whole.size());
    for (const AtomId atom : whole.ids()) {
        std::map<std::uint32_t, Nodes> byLevel;
        for (const NodeId node : whole[atom])
            byLevel[levels()[node]].push_back(node);
        for (auto& [level, nodes] : byLevel) {
            parts[atom].push_back(nodes_.next());
            nodes_.push_back(std::move(nodes));
        }
    }
    for (std::vector<ThroughList>& lists : lists_)
        for (ThroughList& list : lists) {
            ThroughList split;
            for (const ThroughPoint& point : list)
                for (const AtomId part : parts[point.atom])
                    split.push_back({part, point.by, point.clockPin});
            std::ranges::sort(split);
            list = std::move(split);
        }
}

} // namespace Exceptions
