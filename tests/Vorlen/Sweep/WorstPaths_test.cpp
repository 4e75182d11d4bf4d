// The path search on reconvergent logic with far more paths than are kept. It keeps the same paths as a
// search of all paths. It creates few others if it can compute a bound on the last path to be kept.
//
// VORLEN_SEED chooses other random designs.
#include "tests/support/Builder.h"
#include "tests/support/Sweeps.h"

#include "Pelko/Path.h"
#include "Vorlen/Sweep.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <memory>
#include <random>

namespace {

using namespace Support;
using Pelko::Delay;
using Pelko::Edge;
using Pelko::Pole;
using Pelko::PseudoMask;
using Vorlen::Sweep;

constexpr int relation = 1'000'000;
const char* const sides[] = {"shortest", "longest"};

class PathCounter : public Pelko::ObjectListener {
public:
    PathCounter() { Pelko::Object::addListener(this); }
    PathCounter(const PathCounter&) = delete;
    PathCounter& operator=(const PathCounter&) = delete;
    ~PathCounter() override { Pelko::Object::removeListener(this); }

    unsigned long made = 0;

private:
    void onCreated(Pelko::Object* object) override {
        if (dynamic_cast<Pelko::Path*>(object))
            ++made;
    }
};

// A path and its slack.
struct Found {
    std::vector<Edge*> edges;
    int slack;
    bool operator==(const Found&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Found& found) {
    for (const Edge* edge : found.edges)
        out << edge->getSource()->getName() << " > ";
    return out << found.edges.back()->getTarget()->getName() << ": " << found.slack;
}

// Stages of two poles between inputs and outputs. Each pole drives both poles of the next stage. A delay d
// reduces the setup slack by d, and the hold slack too.
struct Lattice {
    using DelayOf = std::function<int(unsigned stage, unsigned from, unsigned to)>;

    Lattice(unsigned stages, const DelayOf& delayOf) {
        subdomain->fixSetupRelation(Delay(relation));
        subdomain->fixHoldRelation(Delay(relation));
        std::vector<Pole*> here;
        for (const char* name : {"i0", "i1"}) {
            here.push_back(design.addInput(name));
            subdomain->captureLaunch(here.back());
        }
        for (unsigned stage = 0; stage <= stages; ++stage) {
            std::vector<Pole*> next;
            for (unsigned place = 0; place < 2; ++place) {
                const std::string name = std::to_string(place);
                next.push_back(stage < stages ? design.addPole("s" + std::to_string(stage) + "." + name)
                                              : design.addOutput("o" + name));
            }
            for (unsigned from = 0; from < 2; ++from)
                for (unsigned to = 0; to < 2; ++to) {
                    const int delay = delayOf(stage, from, to);
                    design.connect(here[from], next[to], -delay, delay);
                }
            poles.push_back(here.front());
            here = next;
        }
        for (Pole* end : here)
            subdomain->captureLatch(end);
    }

    // A sweep that is ready for the search.
    std::unique_ptr<Sweep, DestroySweep> propagate() const {
        std::unique_ptr<Sweep, DestroySweep> sweep(Sweep::create(subdomain));
        sweep->clockAnalyze();
        sweep->arrivalAnalyze();
        sweep->requireAnalyze();
        return sweep;
    }

    std::vector<Found> kept(bool longest) const {
        std::vector<Found> found;
        for (const Pelko::Path* path :
             longest ? subdomain->getLongestPaths() : subdomain->getShortestPaths()) {
            Found& each = found.emplace_back(Found{{}, int(path->getSlack())});
            for (Edge* edge : path->getEdges())
                each.edges.push_back(edge);
        }
        return found;
    }

    Builder design;
    Pelko::Subdomain* subdomain = design.addSubdomain(nullptr, nullptr, none, none);
    std::vector<Pole*> poles; // the first of each stage
};

// All paths from a pole, in the order of arcs. No pole is twice on a path.
void enumerate(const Pole* pole, Found& path, std::vector<Found>& all) {
    if (pole->isOutput())
        all.push_back(path);
    const auto isBehind = [&](const Pole* target) {
        return std::ranges::any_of(path.edges, [=](Edge* edge) { return edge->getSource() == target; });
    };
    for (Edge* edge : pole->getOutgoingEdges())
        if (edge->isActive() && !isBehind(edge->getTarget())) {
            path.edges.push_back(edge);
            path.slack -= int(edge->getMaxDelay());
            enumerate(edge->getTarget(), path, all);
            path.slack += int(edge->getMaxDelay());
            path.edges.pop_back();
        }
}

// The paths of them that a search keeps: inputs with the worst paths come first, and the first of equal
// paths.
std::vector<Found> worstOf(const Lattice& lattice, unsigned long count) {
    std::vector<std::vector<Found>> starts;
    for (Pole* leaf : lattice.subdomain->getLaunchLeaves()) {
        Found path{{}, relation};
        enumerate(leaf, path, starts.emplace_back());
    }
    const auto bySlack = [](const Found& a, const Found& b) { return a.slack < b.slack; };
    const auto worst = [&](const std::vector<Found>& paths) {
        return std::min_element(paths.begin(), paths.end(), bySlack)->slack;
    };
    std::stable_sort(starts.begin(), starts.end(),
                     [&](const auto& a, const auto& b) { return worst(a) < worst(b); });
    std::vector<Found> all;
    for (const std::vector<Found>& paths : starts)
        all.insert(all.end(), paths.begin(), paths.end());
    std::stable_sort(all.begin(), all.end(), bySlack);
    all.resize(std::min<std::size_t>(all.size(), count));
    return all;
}

// Returns the number of paths that the search created.
unsigned long search(const Lattice& lattice, bool longest, unsigned long count) {
    const auto sweep = lattice.propagate();
    const PathCounter counter;
    longest ? sweep->searchLongestPaths(Delay::getMaximum(), count)
            : sweep->searchShortestPaths(Delay::getMaximum(), count);
    return counter.made;
}

// The less critical way comes first, and the later a stage, the smaller its difference: each path is worse
// than the one before.
constexpr unsigned stages = 11;
int worstOrder(unsigned stage, unsigned, unsigned to) { return to == 0 ? 0 : 1 << (stages - stage); }

constexpr unsigned long allPaths = 2UL << (stages + 1);
// The paths before the search computes the bound, while it does, and after it.
unsigned long mostMade(unsigned long count) { return 1024 + 50 + 4 * count + count + 2 * count; }

TEST(WorstPaths, ASearchMakesFewPathsThatItDoesNotKeep) {
    const struct {
        const char* what;
        Lattice::DelayOf delayOf;
    } rows[] = {
        {"each worse than the one before", worstOrder},
        {"each better than the one before",
         [](unsigned stage, unsigned from, unsigned to) { return worstOrder(stage, from, 1 - to); }},
        {"all equal", [](unsigned, unsigned, unsigned) { return 7; }},
        {"equal at either end, worst order between",
         [](unsigned stage, unsigned from, unsigned to) {
             return stage < 3 || stage > 8 ? 5 : worstOrder(stage, from, to);
         }},
        {"by where the arc comes from",
         [](unsigned stage, unsigned from, unsigned to) { return worstOrder(stage, to, from); }},
        {"below zero",
         [](unsigned stage, unsigned from, unsigned to) { return worstOrder(stage, from, to) - 99; }},
    };
    for (const auto& row : rows)
        for (const unsigned long count : {1UL, 2UL, 10UL, 300UL})
            for (const bool longest : {false, true}) {
                SCOPED_TRACE(std::string(row.what) + ", " + sides[longest] + ", " + std::to_string(count));
                const Lattice lattice(stages, row.delayOf);
                EXPECT_LE(search(lattice, longest, count), mostMade(count));
                EXPECT_EQ(lattice.kept(longest), worstOf(lattice, count));
            }
}

// Adds an input that drives the pole and is far from all others in time.
void addFarInput(Lattice& lattice, Pole* pole) {
    constexpr int far = (1 << 30) + 5;
    Pole* input = lattice.design.addInput("far");
    lattice.subdomain->captureLaunch(input);
    lattice.design.connect(input, pole, -far, far);
}

// Adds a twin of the pole, with arcs without delay in both directions, before all other arcs out of them.
void addRing(Lattice& lattice, Pole* pole) {
    struct Arc {
        Pole* end;
        int delay;
    };
    std::vector<Arc> in, out;
    for (const Edge* edge : pole->getIncomingEdges())
        in.push_back({edge->getSource(), int(edge->getMaxDelay())});
    for (const Edge* edge : pole->getOutgoingEdges())
        out.push_back({edge->getTarget(), int(edge->getMaxDelay())});
    while (!pole->getOutgoingEdges().isEmpty())
        pole->getOutgoingEdges().getFirst()->destroy();
    Pole* twin = lattice.design.addPole("twin");
    lattice.design.connect(pole, twin, 0, 0);
    lattice.design.connect(twin, pole, 0, 0);
    for (const Arc& arc : in)
        lattice.design.connect(arc.end, twin, -arc.delay, arc.delay);
    for (Pole* source : {pole, twin})
        for (const Arc& arc : out)
            lattice.design.connect(source, arc.end, -arc.delay, arc.delay);
}

TEST(WorstPaths, ASearchThatCannotTellMakesThemAll) {
    const struct {
        const char* what;
        std::function<void(Lattice&)> change;
        bool tells;
    } rows[] = {
        {"as it is", [](Lattice&) {}, true},
        {"a class of exceptions opens at a start",
         [](Lattice& lattice) {
             Pelko::CPath::create({{lattice.poles[0]}, {}})->setPseudoMask(PseudoMask(4));
         },
         false},
        {"a class opens on the way",
         [](Lattice& lattice) {
             Pelko::CPath::create({{lattice.poles[5]}, {}})->setPseudoMask(PseudoMask(4));
         },
         false},
        {"a class closes on the way",
         [](Lattice& lattice) {
             Pelko::CPath::create({{}, {lattice.poles[5]}})->setPseudoMask(PseudoMask(4));
         },
         true},
        {"a time far from all others",
         [](Lattice& lattice) { lattice.subdomain->fixSetupRelation(Delay(maximum - 5)); }, false},
        {"an arrival far from all others", [](Lattice& lattice) { addFarInput(lattice, lattice.poles[1]); },
         false},
        {"a walk that may go round",
         [](Lattice& lattice) {
             addRing(lattice, lattice.poles[4]->getOutgoingEdges().getLast()->getTarget());
         },
         false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Lattice lattice(stages, worstOrder);
        row.change(lattice);
        const unsigned long made = search(lattice, true, 10);
        if (row.tells)
            EXPECT_LE(made, mostMade(10));
        else
            EXPECT_GT(made, mostMade(10));
        const int shift = int(lattice.subdomain->getSetupRelation()) - relation;
        std::vector<Found> expected = worstOf(lattice, 10);
        for (Found& each : expected)
            each.slack += shift;
        EXPECT_EQ(lattice.kept(true), expected);
    }
}

// Required times are not used if an arc has changed since.
TEST(WorstPaths, LooksAtTheArcsAsTheyAre) {
    Lattice lattice(stages, worstOrder);
    const auto sweep = lattice.propagate();
    Edge* edge = lattice.poles[stages]->getOutgoingEdges().getFirst();
    edge->setMaxDelay(Delay(2)); // the other arc of its source has 1
    const PathCounter counter;
    sweep->searchLongestPaths(Delay::getMaximum(), 10);
    EXPECT_GT(counter.made, allPaths / 3);
}

// The host's slacks count: here they are less than those that follow from the sweep's times.
TEST(WorstPaths, BelievesTheHostsSlacks) {
    const Lattice lattice(stages, worstOrder);
    const auto sweep = lattice.propagate();
    lattice.subdomain->fixSetupRelation(Delay(relation - 1));
    const PathCounter counter;
    sweep->searchLongestPaths(Delay::getMaximum(), 10);
    EXPECT_GT(counter.made, mostMade(10));
    EXPECT_EQ(lattice.kept(true).front().slack, worstOf(lattice, 1).front().slack - 1);
}

TEST(WorstPaths, RandomDelays) {
    const char* text = std::getenv("VORLEN_SEED");
    const unsigned long first = text && *text ? std::strtoul(text, nullptr, 10) : 1;
    std::cout << "seeds from " << first << "\n";
    for (unsigned long seed = first; seed < first + 40 && !HasFailure(); ++seed) {
        std::mt19937_64 random(seed);
        const unsigned long count = 1 + random() % 60;
        const int range = random() % 2 == 0 ? 4 : 4000; // few values: many equal paths
        const bool longest = random() % 2 == 0;
        SCOPED_TRACE("seed " + std::to_string(seed));
        const Lattice lattice(stages, [&](unsigned, unsigned, unsigned) {
            return static_cast<int>(random() % static_cast<unsigned>(range)) - range / 4;
        });
        EXPECT_LE(search(lattice, longest, count), mostMade(count));
        EXPECT_EQ(lattice.kept(longest), worstOf(lattice, count));
    }
}

} // namespace
