// Replaces the loops of the network by copies, and reports which loops there are and what that means for the
// slacks after them.
#include "model/Network.h"

#include <algorithm>
#include <stdexcept>

namespace Model {

namespace {

// How much is named one by one.
constexpr std::size_t namedLoops = 20, namedLoopsOfNote = 5, namedPins = 10, namedEnds = 20;

std::string counted(std::size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

} // namespace

void Network::openLoops(const LoopLimits& limits, Base::Diagnostics& diagnostics) {
    const Loops loops(
        size(), arcs_, [this](NodeId node) { return out(node); },
        [this](NodeId node) {
            const PinId pin = pinOf(node);
            return design_.isPort(pin) && node == sourceOf(pin);
        },
        limits);
    takeCopies(loops);
    copyArcs(loops);
    link();
    if (!putInOrder())
        throw std::logic_error("a loop is left"); // GCOVR_EXCL_LINE
    tellOfCopies(loops, diagnostics);
    warnOfCuts(loops, diagnostics);
}

void Network::takeCopies(const Loops& loops) {
    originalOfCopy_ = loops.copied();
    for (const NodeId original : originalOfCopy_)
        pinOfNode_.push_back(pinOf(original));
    copies_.assign(originals_, size(),
                   [this](NodeId node) { return node.number() < originals_ ? NodeId() : originalOf(node); });
    // Neither constants nor clock sources lie in a loop: no arc leads through them.
    constant_.resize(size());
    clockSource_.resize(size());
    loopOf_.resize(originals_);
    repeated_.resize(originals_);
    for (const NodeId node : loopOf_.ids()) {
        loopOf_[node] = loops.loopOf(node);
        repeated_[node] =
            loopOf_[node] != Base::none && loops.all()[loopOf_[node]].form == Loops::Form::layered;
    }
}

// Arcs into a loop lead to the nodes at which paths enter it. Arcs out of it leave from every copy.
void Network::copyArcs(const Loops& loops) {
    Base::IndexVector<ArcId, Arc> all;
    all.reserve(arcs_.size() + loops.steps().size());
    auto step = loops.steps().begin();
    auto cut = loops.cuts().begin();
    for (const ArcId number : arcs_.ids()) {
        Arc arc = arcs_[number];
        const LoopId loop = loops.loopOf(arc.from);
        if (loop == Base::none || loops.all()[loop].form == Loops::Form::cut) {
            if (cut != loops.cuts().end() && *cut == number) {
                arc.kind = ArcKind::cut;
                ++cut;
            }
            all.push_back(arc);
        } else if (arc.kind == ArcKind::through && loops.loopOf(arc.to) == loop) {
            for (; step != loops.steps().end() && step->arc == number; ++step) {
                arc.from = step->from;
                arc.to = step->to;
                all.push_back(arc);
            }
        } else {
            eachCopy(arcs_[number].from, [&](NodeId from) {
                arc.from = from;
                all.push_back(arc);
            });
        }
    }
    arcs_ = std::move(all);
}

// --- Messages ---

// "a, b, c and 5 more pins".
std::string Network::pinsOf(const Loops::Loop& loop) const {
    std::string text;
    for (std::size_t at = 0; at < std::min(loop.nodes.size(), namedPins); ++at)
        text += (at == 0 ? "" : ", ") + nameOf(loop.nodes[at]);
    return loop.nodes.size() > namedPins ? text + " and " + counted(loop.nodes.size() - namedPins, "more pin")
                                         : text;
}

void Network::tellOfCopies(const Loops& loops, Base::Diagnostics& diagnostics) const {
    std::size_t exact = 0, layered = 0;
    std::string pins;
    for (const Loops::Loop& loop : loops.all()) {
        if (loop.form == Loops::Form::layered) {
            if (++layered <= namedLoops)
                diagnostics.note({},
                                 "a combinational loop of " + counted(loop.nodes.size(), "pin") +
                                     " is too large to be timed exactly: some paths that pass a pin twice "
                                     "are timed too, so slacks behind it are safe, but may be too small: " +
                                     pinsOf(loop));
        } else if ((loop.form == Loops::Form::exact || !loop.isEntered) && ++exact <= namedLoopsOfNote) {
            pins += (exact == 1 ? "" : "; ") + pinsOf(loop);
        }
    }
    if (layered > namedLoops)
        diagnostics.note({}, counted(layered - namedLoops, "more combinational loop") +
                                 (layered - namedLoops == 1 ? " is" : " are") +
                                 " too large to be timed exactly");
    if (exact == 0)
        return;
    if (exact > namedLoopsOfNote)
        pins += "; and " + std::to_string(exact - namedLoopsOfNote) + " more";
    diagnostics.note({}, counted(exact, "combinational loop") + (exact == 1 ? " is" : " are") +
                             " timed along every path that passes no pin twice: " + pins);
}

void Network::warnOfCuts(const Loops& loops, Base::Diagnostics& diagnostics) const {
    std::size_t named = 0, count = 0;
    std::vector<ArcId> cuts;
    for (const ArcId number : arcs_.ids()) {
        const Arc& arc = arcs_[number];
        if (arc.kind != ArcKind::cut || !loops.all()[loops.loopOf(arc.from)].isEntered)
            continue;
        cuts.push_back(number);
        if (++count > namedLoops)
            continue;
        ++named;
        diagnostics.warning({}, "a combinational loop of " +
                                    counted(loops.all()[loops.loopOf(arc.from)].nodes.size(), "pin") +
                                    " is too large to be timed: it is cut from " + nameOf(arc.from) + " to " +
                                    nameOf(arc.to));
    }
    if (count > named)
        diagnostics.warning({}, counted(count - named, "more arc") + " of combinational loops " +
                                    (count - named == 1 ? "is" : "are") + " cut");
    const std::vector<PinId> ends = endsBehind(cuts);
    if (ends.empty())
        return;
    std::string text;
    for (std::size_t at = 0; at < std::min(ends.size(), namedEnds); ++at)
        text += (at == 0 ? "" : ", ") + design_.pinName(ends[at]);
    if (ends.size() > namedEnds)
        text += " and " + counted(ends.size() - namedEnds, "more end point");
    diagnostics.warning({},
                        "the arcs at which loops are cut hide paths: the slacks of these end points may be "
                        "too large: " +
                            text + "; expected set_disable_timing on arcs that no signal takes");
}

// The end points, by their pins, whose slack the arcs may have to do with: what they lead to, what they
// clock, and, if the delay to a generated clock depends on them, what ports that name it lead to.
std::vector<PinId> Network::endsBehind(const std::vector<ArcId>& arcs) const {
    Base::IndexVector<NodeId, bool> reached(size());
    Base::IndexVector<PinId, bool> isEnd(design_.pins.size());
    std::vector<NodeId> open;
    bool withPorts = false;
    const auto reach = [&](NodeId node) {
        if (!reached[node])
            open.push_back(node);
        reached[node] = true;
    };
    for (const ArcId number : arcs)
        reach(arcs_[number].to);
    while (!open.empty()) {
        const NodeId node = open.back();
        const PinId pin = pinOf(node);
        open.pop_back();
        if (originalOf(node) == sinkOf(pin) &&
            (design_.isPort(pin) ? design_.pins[pin].direction != Design::Direction::input
                                 : design_.isDataPin(pin)))
            isEnd[pin] = true;
        for (const ArcId number : out(node)) {
            if (arcs_[number].kind == ArcKind::hidden && !withPorts) {
                withPorts = true;
                for (const PinId port : design_.ports()) {
                    reach(sourceOf(port));
                    reach(sinkOf(port));
                }
            }
            if (arcs_[number].kind != ArcKind::cut)
                reach(arcs_[number].to);
        }
    }
    for (const Design::Check& check : design_.checks)
        eachCopy(sinkOf(check.clock), [&](NodeId node) {
            if (reached[node])
                isEnd[check.data] = true;
        });
    std::vector<PinId> ends;
    for (const PinId pin : isEnd.ids())
        if (isEnd[pin])
            ends.push_back(pin);
    return ends;
}

} // namespace Model
