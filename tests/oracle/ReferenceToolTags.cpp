// What a launch writes on arcs and poles: the classes of exceptions, the weights, and the marks of the
// epilogue.
#include "ReferenceTool.h"

#include "Pelko/Analyzer.h"
#include "Pelko/Cell.h"
#include "Pelko/Edge.h"
#include "Pelko/Subdomain.h"
#include "Ruvex/Console.h"
#include "Ruvex/Utility.h"

#include <iterator>

namespace oracle {

using Pelko::analyzer;
using Pelko::Delay;
using Pelko::Edge;
using Pelko::Pole;
using Pelko::Poles;

// --- Constrained paths ---

void ReferenceTool::tagConstrainedPaths() {
    const auto constrainedPaths = analyzer->getCPaths();
    if (constrainedPaths.isNull() || constrainedPaths.isEmpty())
        return;
    unsigned long loops = 0;
    for (Pelko::CPath* constrained : constrainedPaths) {
        if (constrained->isInsulated())
            continue;
        const Poles sources = constrained->getSources();
        const Poles targets = constrained->getTargets();
        const Poles bridges = constrained->getBridges();
        PoleSet hit;
        std::list<Edge*> path;
        EdgeSet tagged;
        bool found = false;
        const bool bridged = !bridges.isNull() && !bridges.isEmpty();
        loopOpen();
        for (Pole* target : targets)
            constrainedPathStem(target, bridged ? bridges : sources, hit, path, tagged, found, loops);
        loopClose();
        if (bridged && found) {
            PoleSet hitBridges;
            for (Pole* bridge : bridges)
                if (hit.count(bridge) != 0)
                    hitBridges.insert(bridge);
            analyzer->unmark();
            hit.clear();
            path.clear();
            found = false;
            loopOpen();
            for (Pole* bridge : hitBridges)
                constrainedPathStem(bridge, sources, hit, path, tagged, found, loops);
            loopClose();
        }
        if (found) {
            constrained->validate();
            for (Edge* edge : tagged)
                edge->sensitize(constrained->getPseudoMask());
        }
        analyzer->unmark();
    }
    if (Ruvex::isDebug())
        warnOfLoops(loops, "false paths");
}

void ReferenceTool::constrainedPathStem(Pole* pole, Poles starts, PoleSet& hitPoles, std::list<Edge*>& path,
                                        EdgeSet& tagged, bool& found, unsigned long& loops) {
    if (pole->isMarked()) {
        if (hitPoles.count(pole) != 0) {
            hitPoles.insert(loopStack_.begin(), loopStack_.end());
            tagged.insert(path.begin(), path.end());
        }
        return;
    }
    pole->mark();
    loopPush(pole);
    if (!starts.isNull() && starts.contains(pole)) {
        found = true;
        hitPoles.insert(loopStack_.begin(), loopStack_.end());
        tagged.insert(path.begin(), path.end());
    } else {
        for (Edge* edge : pole->getIncomingEdges()) {
            if (!edge->isActive())
                continue;
            path.push_front(edge);
            if (isLooping(edge->getSource()))
                ++loops;
            else
                constrainedPathStem(edge->getSource(), starts.getClone(), hitPoles, path, tagged, found,
                                    loops);
            path.pop_front();
        }
    }
    loopPop();
}

// --- Weights ---

void ReferenceTool::tagWeights(float ratio) {
    const auto edges = Pelko::cell->getEdges();
    const auto wanted = static_cast<unsigned long>(static_cast<float>(edges.getCount()) * ratio);
    Delay threshold = Delay::getMaximum();
    std::multiset<Delay> smallest;
    unsigned long count = 0;
    for (Edge* edge : edges) {
        const Delay slack = edge->getSlack();
        if (!slack.isDefined() || !(slack < threshold))
            continue;
        smallest.insert(slack);
        if (count < wanted)
            ++count;
        else
            smallest.erase(std::prev(smallest.end()));
        if (count != 0 && count == wanted)
            threshold = *smallest.rbegin();
    }
    if (count != 0 && count <= wanted)
        threshold = *smallest.rbegin();
    tagWeights(threshold);
}

namespace {

bool isCritical(const Edge* edge, const Delay& threshold) {
    return edge->getSlack().isDefined() && int(edge->getSlack()) <= int(threshold);
}

} // namespace

void ReferenceTool::tagWeights(const Delay& threshold) {
    PoleCountMap forward;
    PoleCountMap backward;
    edgeForwardStem(threshold, forward);
    edgeBackwardStem(threshold, backward);
    std::set<unsigned long> weights;
    unsigned long greatest = 0;
    for (const auto& [pole, paths] : forward)
        for (Edge* edge : pole->getOutgoingEdges()) {
            if (!isCritical(edge, threshold) || backward.count(edge->getTarget()) == 0)
                continue;
            const unsigned long weight = paths * backward[edge->getTarget()];
            edge->setWeight(weight);
            weights.insert(weight);
            greatest = std::max(greatest, weight);
        }
    const unsigned long step = weights.size() > 9 ? weights.size() / 9 : 1;
    std::set<unsigned long> boundaries;
    unsigned long position = 0;
    for (const unsigned long weight : weights)
        if (position++ % step == 0)
            boundaries.insert(weight);
    boundaries.insert(greatest + 1);
    for (Edge* edge : Pelko::cell->getEdges()) {
        const unsigned long weight = edge->getWeight();
        if (weight == 0)
            continue;
        unsigned long number = 1;
        for (auto low = boundaries.begin(), high = std::next(low); high != boundaries.end();
             ++low, ++high, ++number)
            if (*low <= weight && weight < *high) {
                edge->setWeight(number);
                break;
            }
    }
}

void ReferenceTool::edgeForwardStem(const Delay& threshold, PoleCountMap& counts) {
    loopOpen();
    for (Pole* pole : Pelko::cell->getPoles())
        if (pole->isTerminal())
            edgeForwardStem(pole, threshold, counts);
    loopClose();
    analyzer->unmark();
}

void ReferenceTool::edgeForwardStem(Pole* pole, const Delay& threshold, PoleCountMap& counts) {
    if (pole->isMarked())
        return;
    loopPush(pole);
    if (pole->isInitial()) {
        counts[pole] = 1;
    } else {
        for (Edge* edge : pole->getIncomingEdges()) {
            Pole* source = edge->getSource();
            if (!edge->isActive() || !isCritical(edge, threshold) || isLooping(source))
                continue;
            edgeForwardStem(source, threshold, counts);
            if (counts.count(source) != 0)
                counts[pole] += counts[source];
        }
    }
    loopPop();
    pole->mark();
}

void ReferenceTool::edgeBackwardStem(const Delay& threshold, PoleCountMap& counts) {
    loopOpen();
    for (Pole* pole : Pelko::cell->getPoles())
        if (pole->isInitial())
            edgeBackwardStem(pole, threshold, counts);
    loopClose();
    analyzer->unmark();
}

void ReferenceTool::edgeBackwardStem(Pole* pole, const Delay& threshold, PoleCountMap& counts) {
    if (pole->isMarked())
        return;
    loopPush(pole);
    if (pole->isTerminal()) {
        counts[pole] = 1;
    } else {
        for (Edge* edge : pole->getOutgoingEdges()) {
            Pole* target = edge->getTarget();
            if (!edge->isActive() || !isCritical(edge, threshold) || isLooping(target))
                continue;
            edgeBackwardStem(target, threshold, counts);
            if (counts.count(target) != 0)
                counts[pole] += counts[target];
        }
    }
    loopPop();
    pole->mark();
}

// --- Epilogue ---

namespace {

bool hasFailingEdge(const Pole* pole) {
    for (const Pelko::Edges& edges : {pole->getIncomingEdges(), pole->getOutgoingEdges()})
        for (Edge* edge : edges)
            if (edge->getSlack().isDefined() && int(edge->getSlack()) <= 0)
                return true;
    return false;
}

bool crossesClockPole(const Pelko::Domain* domain) {
    for (const auto& paths : {domain->getLongestPaths(), domain->getShortestPaths()})
        for (Pelko::Path* path : paths)
            for (Edge* edge : path->getEdges())
                if (edge->getTarget()->isClock())
                    return true;
    return false;
}

} // namespace

void ReferenceTool::epilog() {
    for (Pole* pole : Pelko::cell->getPoles())
        if (hasFailingEdge(pole))
            pole->mark();
    for (Pelko::Domain* domain : analyzer->getDomains())
        if (crossesClockPole(domain))
            Ruvex::console.remark(
                domain->getAlias() +
                    ": Listed timing path(s) may traverse intermediate clock timing point(s)!",
                "");
}

} // namespace oracle
