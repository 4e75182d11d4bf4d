// One loop, and the copies of its nodes in the exact and in the layered form. Only Loops.cpp includes this.
#pragma once

#include "model/Loops.h"

#include <algorithm>
#include <span>
#include <unordered_map>
#include <vector>

namespace Model {

// --- One loop ---

struct Loops::Part {
    struct Out {
        PlaceId to;
        ArcId arc;
    };

    std::uint32_t size = 0;
    std::vector<PlaceId> entries;
    std::vector<std::uint32_t> first; // into outs, by place, and the end
    std::vector<Out> outs;

    std::span<const Out> out(PlaceId node) const {
        return std::span(outs).subspan(first[node.number()], first[node.number() + 1] - first[node.number()]);
    }
};

// --- The exact form ---

// What can still be reached from two copies of a node is the same or the copies differ; nothing else of the
// way to them counts for what follows.
class Loops::Exact {
public:
    struct Move {
        CopyId from, to;
        ArcId arc;
    };

    Exact(const Part& part, std::uint64_t nodeLimit, std::uint64_t arcLimit, std::uint64_t workLimit)
        : part_(part), words_((part.size + wordBits - 1) / wordBits), nodeLimit_(nodeLimit),
          arcLimit_(arcLimit), workLimit_(workLimit), allowed_(words_), reached_(words_) {}

    // False if a limit is met.
    bool build() {
        for (const PlaceId entry : part_.entries) {
            std::ranges::fill(allowed_, ~std::uint64_t{0});
            add(entry);
        }
        for (CopyId copy(0U); copy < nodeOf_.next(); ++copy)
            for (const Part::Out& out : part_.out(nodeOf_[copy])) {
                if (nodeOf_.size() > nodeLimit_ || moves_.size() > arcLimit_ || work_ > workLimit_)
                    return false;
                const auto ahead = aheadOf(copy);
                if (!holds(ahead, out.to))
                    continue;
                std::ranges::copy(ahead, allowed_.begin());
                moves_.push_back({copy, add(out.to), out.arc});
            }
        return nodeOf_.size() <= nodeLimit_;
    }

    std::uint64_t work() const { return work_; }
    const Base::IndexVector<CopyId, PlaceId>& nodes() const { return nodeOf_; }
    const std::vector<Move>& moves() const { return moves_; }

private:
    static constexpr std::uint32_t wordBits = 64;

    static bool holds(std::span<const std::uint64_t> set, PlaceId node) {
        return (set[node.number() / wordBits] >> node.number() % wordBits & 1U) != 0;
    }
    static void set(std::vector<std::uint64_t>& words, PlaceId node) {
        words[node.number() / wordBits] |= std::uint64_t{1} << node.number() % wordBits;
    }
    std::span<const std::uint64_t> aheadOf(CopyId copy) const {
        return std::span(ahead_).subspan(std::size_t{copy.number()} * words_, words_);
    }

    // The copy of a node from which the allowed nodes may be passed.
    CopyId add(PlaceId node) {
        reach(node);
        std::uint64_t hash = node.number();
        for (const std::uint64_t word : reached_)
            hash = (hash ^ word ^ hash >> 32) * 0x9E3779B97F4A7C15U;
        const auto [begin, end] = known_.equal_range(hash);
        for (auto known = begin; known != end; ++known)
            if (nodeOf_[known->second] == node && std::ranges::equal(aheadOf(known->second), reached_))
                return known->second;
        const CopyId copy = nodeOf_.next();
        known_.emplace(hash, copy);
        nodeOf_.push_back(node);
        ahead_.insert(ahead_.end(), reached_.begin(), reached_.end());
        return copy;
    }

    // Those of the allowed nodes that the node leads to, without itself.
    void reach(PlaceId node) {
        std::ranges::fill(reached_, 0);
        allowed_[node.number() / wordBits] &= ~(std::uint64_t{1} << node.number() % wordBits);
        open_ = {node};
        work_ += words_;
        while (!open_.empty()) {
            const std::span<const Part::Out> outs = part_.out(open_.back());
            open_.pop_back();
            work_ += outs.size();
            for (const Part::Out& out : outs)
                if (holds(allowed_, out.to) && !holds(reached_, out.to)) {
                    set(reached_, out.to);
                    open_.push_back(out.to);
                }
        }
    }

    const Part& part_;
    const std::uint32_t words_;
    const std::uint64_t nodeLimit_, arcLimit_, workLimit_;
    std::uint64_t work_ = 0;
    Base::IndexVector<CopyId, PlaceId> nodeOf_;
    std::vector<std::uint64_t> ahead_; // by copy, the nodes that can be reached from it
    std::unordered_multimap<std::uint64_t, CopyId> known_;
    std::vector<Move> moves_;
    std::vector<std::uint64_t> allowed_, reached_;
    std::vector<PlaceId> open_;
};

// --- The layered form ---

// Which arcs close a cycle, in a depth-first walk from the entries, or from the first node if there are none.
class Loops::Walk {
public:
    explicit Walk(const Part& part) : part_(part), states_(part.size), closes_(part.outs.size()) {
        for (const PlaceId entry : part.entries)
            from(entry);
        from(PlaceId(0U));
    }

    bool closes(const Part::Out& out) const {
        return closes_[static_cast<std::size_t>(&out - part_.outs.data())];
    }

    // How many of these arcs a path that passes no node twice can use, at most: no two into one node, and no
    // two out of one.
    std::uint32_t mostOnAPath() const {
        Base::IndexVector<PlaceId, bool> isHead(part_.size);
        std::uint32_t heads = 0, tails = 0;
        for (const PlaceId node : isHead.ids()) {
            bool isTail = false;
            for (const Part::Out& out : part_.out(node))
                if (closes(out)) {
                    isTail = true;
                    heads += isHead[out.to] ? 0 : 1;
                    isHead[out.to] = true;
                }
            tails += isTail ? 1 : 0;
        }
        return std::min(heads, tails);
    }

private:
    enum class State : std::uint8_t { unseen, open, done };
    struct Step {
        PlaceId node;
        std::uint32_t next; // of the arcs out of it
    };

    void from(PlaceId start) {
        if (states_[start] != State::unseen)
            return;
        enter(start);
        while (!walk_.empty()) {
            Step& step = walk_.back();
            const std::span<const Part::Out> outs = part_.out(step.node);
            if (step.next == outs.size()) {
                states_[step.node] = State::done;
                walk_.pop_back();
                continue;
            }
            const Part::Out& out = outs[step.next++];
            if (states_[out.to] == State::unseen)
                enter(out.to);
            else if (states_[out.to] == State::open)
                closes_[static_cast<std::size_t>(&out - part_.outs.data())] = true;
        }
    }

    void enter(PlaceId node) {
        states_[node] = State::open;
        walk_.push_back({node, 0});
    }

    const Part& part_;
    Base::IndexVector<PlaceId, State> states_;
    std::vector<bool> closes_;
    std::vector<Step> walk_;
};

// The copies of the layers that paths reach.
class Loops::Layered {
public:
    using Move = Exact::Move;

    Layered(const Part& part, const Walk& walk, std::uint32_t layers) {
        std::vector<CopyId> copyOf(std::size_t{part.size} * layers);
        Base::IndexVector<CopyId, std::uint32_t> layerOf;
        const auto add = [&](PlaceId node, std::uint32_t layer) {
            CopyId& copy = copyOf[std::size_t{layer} * part.size + node.number()];
            if (copy == Base::none) {
                copy = nodeOf_.next();
                nodeOf_.push_back(node);
                layerOf.push_back(layer);
            }
            return copy;
        };
        for (const PlaceId entry : part.entries)
            add(entry, 0);
        for (CopyId copy(0U); copy < nodeOf_.next(); ++copy)
            for (const Part::Out& out : part.out(nodeOf_[copy])) {
                const std::uint32_t layer = layerOf[copy] + (walk.closes(out) ? 1 : 0);
                if (layer < layers)
                    moves_.push_back({copy, add(out.to, layer), out.arc});
            }
    }

    const Base::IndexVector<CopyId, PlaceId>& nodes() const { return nodeOf_; }
    const std::vector<Move>& moves() const { return moves_; }

private:
    Base::IndexVector<CopyId, PlaceId> nodeOf_;
    std::vector<Move> moves_;
};

} // namespace Model
