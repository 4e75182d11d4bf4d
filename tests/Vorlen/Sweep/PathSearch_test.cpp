// The path search: the paths that it keeps and drops, their order, and the exceptions that govern them.
//
// Networks are lists of arcs. Most are timed so that both searches see the same slacks: an arc of delay d
// takes d off the setup slack, which starts at 100, and off the hold slack too (its least delay is -d, the
// hold relation 100). So one table serves both.
#include "tests/support/Builder.h"
#include "tests/support/Sweeps.h"
#include "tests/support/Thrown.h"

#include "Pelko/Path.h"
#include "Vorlen/Sweep.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace Support;
using Pelko::analyzer;
using Pelko::CPath;
using Pelko::Delay;
using Pelko::DPath;
using Pelko::Edge;
using Pelko::MPath;
using Pelko::Path;
using Pelko::Pole;
using Pelko::PseudoMask;
using Vorlen::EdgeList;
using Vorlen::PoleSet;
using Vorlen::Sweep;

constexpr unsigned long unlimited = ~0UL;

// For example "i > m > o: 60".
std::string describe(const Path& path) {
    std::string text;
    for (const Edge* edge : path.getEdges())
        text += (text.empty() ? nameOf(edge->getSource()) : "") + " > " + nameOf(edge->getTarget());
    return text + ": " + path.getSlack()._getLabel();
}

// Records paths: "+ i > o: 60" for a new one, "- i > o: 60" for one that is destroyed.
class Listener : public Pelko::ObjectListener {
public:
    Listener() { Pelko::Object::addListener(this); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener() override { Pelko::Object::removeListener(this); }

    void onCreated(Pelko::Object* object) override { hear("+ ", object); }
    void onDestroyed(Pelko::Object* object) override { hear("- ", object); }

    Names heard;

private:
    void hear(const char* what, const Pelko::Object* object) {
        if (const auto* path = dynamic_cast<const Path*>(object))
            heard.push_back(what + describe(*path));
    }
};

struct Arc {
    std::string from;
    std::string to;
    int delay;
    unsigned long classes = 0;
};

// Poles are created in the order of the arcs. A pole whose name begins with "i" is an input that launches,
// one with "o" an output that latches.
struct Network {
    explicit Network(const std::vector<Arc>& arcs) {
        subdomain->setSetupRelation(Delay(100));
        subdomain->setHoldRelation(Delay(100));
        for (const Arc& arc : arcs) {
            Pole* source = find(arc.from);
            Edge::create(source, find(arc.to), -Delay(arc.delay), Delay(arc.delay))
                ->sensitize(PseudoMask(arc.classes));
        }
    }

    Pole* find(const std::string& name) {
        Pole*& pole = poles[name];
        if (pole)
            return pole;
        if (name.front() == 'i')
            subdomain->captureLaunch(pole = design.addInput(name));
        else if (name.front() == 'o')
            subdomain->captureLatch(pole = design.addOutput(name));
        else
            pole = design.addPole(name);
        return pole;
    }
    Edge* find(const std::string& from, const std::string& to) {
        return find(to)->getIncomingEdge(find(from));
    }

    // A sweep that is ready for the search.
    SweepPointer propagate() const {
        SweepPointer sweep(Sweep::create(subdomain));
        sweep->clockAnalyze();
        sweep->arrivalAnalyze();
        sweep->requireAnalyze();
        return sweep;
    }
    static void search(Sweep& sweep, bool longest, int bound, unsigned long count) {
        if (longest)
            sweep.searchLongestPaths(Delay(bound), count);
        else
            sweep.searchShortestPaths(Delay(bound), count);
    }
    Ruvex::Collection<Path*> pathsOf(bool longest) const {
        return longest ? subdomain->getLongestPaths() : subdomain->getShortestPaths();
    }
    Names kept(bool longest) const {
        Names texts;
        for (const Path* path : pathsOf(longest))
            texts.push_back(describe(*path));
        return texts;
    }

    Builder design;
    Pole* clk = design.addClockSource("clk", 1000);
    Pelko::Subdomain* subdomain = design.addSubdomain(clk, clk);
    std::map<std::string, Pole*> poles;
};

const char* const sides[] = {"shortest", "longest"};

const std::vector<Arc> fan{{"i", "o1", 10}, {"i", "o2", 20}, {"i", "o3", 30}, {"i", "o4", 40}};

TEST(PathSearch, KeepsTheWorstWithinTheBound) {
    const struct {
        const char* what;
        int bound;
        unsigned long count;
        Names kept;
    } rows[] = {
        {"one", maximum, 1, {"i > o4: 60"}},
        {"three", maximum, 3, {"i > o4: 60", "i > o3: 70", "i > o2: 80"}},
        {"as many as there are", maximum, 4, {"i > o4: 60", "i > o3: 70", "i > o2: 80", "i > o1: 90"}},
        {"more than there are", maximum, 5, {"i > o4: 60", "i > o3: 70", "i > o2: 80", "i > o1: 90"}},
        {"unlimited", maximum, unlimited, {"i > o4: 60", "i > o3: 70", "i > o2: 80", "i > o1: 90"}},
        {"none", maximum, 0, {}},
        {"a slack equal to the bound", 80, unlimited, {"i > o4: 60", "i > o3: 70", "i > o2: 80"}},
        {"one below it", 79, unlimited, {"i > o4: 60", "i > o3: 70"}},
        {"bound and count", 80, 2, {"i > o4: 60", "i > o3: 70"}},
        {"the bound is the worst slack", 60, unlimited, {"i > o4: 60"}},
        {"all above the bound", 59, unlimited, {}},
        {"a negative bound", -1, unlimited, {}},
        {"just below the maximum special",
         maximum - 1,
         unlimited,
         {"i > o4: 60", "i > o3: 70", "i > o2: 80", "i > o1: 90"}},
        {"the minimum special", minimum, unlimited, {}},
    };
    for (const auto& row : rows)
        for (const bool longest : {false, true}) {
            SCOPED_TRACE(std::string(row.what) + ", " + sides[longest]);
            const Network network(fan);
            const SweepPointer sweep = network.propagate();
            Network::search(*sweep, longest, row.bound, row.count);
            EXPECT_EQ(network.kept(longest), row.kept);
            EXPECT_EQ(network.kept(!longest), Names{});
            EXPECT_EQ(marked(), Names{});
        }
}

TEST(PathSearch, ReplacesTheLeastCritical) {
    const struct {
        const char* what;
        std::vector<Arc> arcs;
        unsigned long count;
        Names heard;
    } rows[] = {
        {"worse ones come later: each replaces the last",
         fan,
         1,
         {"+ i > o1: 90", "+ i > o2: 80", "- i > o1: 90", "+ i > o3: 70", "- i > o2: 80", "+ i > o4: 60",
          "- i > o3: 70"}},
        {"of two, the less critical goes",
         fan,
         2,
         {"+ i > o1: 90", "+ i > o2: 80", "+ i > o3: 70", "- i > o1: 90", "+ i > o4: 60", "- i > o2: 80"}},
        {"the worst comes first: better ones behind the same pole are made and dropped",
         {{"i", "o4", 40}, {"i", "o3", 30}, {"i", "o2", 20}},
         1,
         {"+ i > o4: 60", "+ i > o3: 70", "- i > o3: 70", "+ i > o2: 80", "- i > o2: 80"}},
        {"so is an equal one",
         {{"i", "o1", 10}, {"i", "o2", 10}, {"i", "o3", 10}},
         2,
         {"+ i > o1: 90", "+ i > o2: 90", "+ i > o3: 90", "- i > o3: 90"}},
        {"another leaf starts with a tighter bound: better ones are not even made",
         {{"i1", "o", 40}, {"i2", "o", 30}, {"i3", "o", 40}},
         1,
         {"+ i1 > o: 60"}},
        {"so does a pole further on: what lies behind it is not even looked at",
         {{"i", "o1", 40}, {"i", "m", 1}, {"m", "o2", 1}},
         1,
         {"+ i > o1: 60"}},
        {"of equals, the last come goes",
         {{"i", "o1", 10}, {"i", "o2", 10}, {"i", "o3", 11}},
         2,
         {"+ i > o1: 90", "+ i > o2: 90", "+ i > o3: 89", "- i > o2: 90"}},
        {"worse leaves come first",
         {{"i1", "o", 10}, {"i2", "o", 30}, {"i3", "o", 20}},
         unlimited,
         {"+ i2 > o: 70", "+ i3 > o: 80", "+ i1 > o: 90"}},
        {"equally bad ones in the order of their stamps",
         {{"i1", "o", 10}, {"i2", "o", 30}, {"i3", "o", 10}, {"i4", "o", 30}},
         unlimited,
         {"+ i2 > o: 70", "+ i4 > o: 70", "+ i1 > o: 90", "+ i3 > o: 90"}},
        {"a leaf ranks by its worst arc",
         {{"i1", "o1", 20}, {"i2", "o1", 10}, {"i2", "o2", 30}},
         unlimited,
         {"+ i2 > o1: 90", "+ i2 > o2: 70", "+ i1 > o1: 80"}},
        {"depth first, arcs in their order",
         {{"i", "m", 1}, {"m", "o1", 1}, {"m", "o2", 2}, {"i", "n", 3}, {"n", "o1", 4}, {"n", "o2", 5}},
         unlimited,
         {"+ i > m > o1: 98", "+ i > m > o2: 97", "+ i > n > o1: 93", "+ i > n > o2: 92"}},
        {"a pole keeps the bound that it started with",
         {{"i", "m", 1}, {"m", "o1", 9}, {"m", "o2", 1}, {"i", "n", 2}, {"n", "o1", 7}, {"n", "o2", 9}},
         1,
         {"+ i > m > o1: 90", "+ i > m > o2: 98", "- i > m > o2: 98", "+ i > n > o2: 89",
          "- i > m > o1: 90"}},
    };
    for (const auto& row : rows)
        for (const bool longest : {false, true}) {
            SCOPED_TRACE(std::string(row.what) + ", " + sides[longest]);
            const Network network(row.arcs);
            const SweepPointer sweep = network.propagate();
            const Listener listener;
            Network::search(*sweep, longest, maximum, row.count);
            EXPECT_EQ(listener.heard, row.heard);
        }
}

TEST(PathSearch, AddsToWhatIsKept) {
    const struct {
        const char* what;
        unsigned long first;
        unsigned long second;
        int bound; // of the second search
        Names kept;
    } rows[] = {
        {"unlimited, twice: all double",
         unlimited,
         unlimited,
         maximum,
         {"i > o4: 60", "i > o4: 60", "i > o3: 70", "i > o3: 70", "i > o2: 80", "i > o2: 80", "i > o1: 90",
          "i > o1: 90"}},
        {"full: nothing is worse", 1, 1, maximum, {"i > o4: 60"}},
        {"room for two more", 2, 4, maximum, {"i > o4: 60", "i > o4: 60", "i > o3: 70", "i > o3: 70"}},
        {"more than the count are there: each new one replaces the last",
         3,
         1,
         maximum,
         {"i > o4: 60", "i > o4: 60", "i > o3: 70"}},
        {"a bound below the last", 4, 1, 65, {"i > o4: 60", "i > o4: 60", "i > o3: 70", "i > o2: 80"}},
        {"a bound below all", 4, 1, 59, {"i > o4: 60", "i > o3: 70", "i > o2: 80", "i > o1: 90"}},
        {"no count leaves them", 3, 0, maximum, {"i > o4: 60", "i > o3: 70", "i > o2: 80"}},
    };
    for (const auto& row : rows)
        for (const bool longest : {false, true}) {
            SCOPED_TRACE(std::string(row.what) + ", " + sides[longest]);
            const Network network(fan);
            const SweepPointer sweep = network.propagate();
            Network::search(*sweep, longest, maximum, row.first);
            Network::search(*sweep, longest, row.bound, row.second);
            EXPECT_EQ(network.kept(longest), row.kept);
        }
}

TEST(PathSearch, FollowsWhatCanBeAPath) {
    const struct {
        const char* what;
        std::vector<Arc> arcs;
        std::function<void(Network&)> change;
        Names kept;
    } rows[] = {
        {"reconvergent",
         {{"i", "m", 1}, {"i", "n", 2}, {"m", "p", 1}, {"n", "p", 1}, {"p", "o", 1}},
         {},
         {"i > n > p > o: 96", "i > m > p > o: 97"}},
        {"a dead end", {{"i", "m", 1}, {"m", "dead", 50}, {"m", "o", 1}}, {}, {"i > m > o: 98"}},
        {"an end point without a latch",
         {{"i", "m", 1}, {"m", "end", 50}, {"m", "o", 1}},
         [](Network& n) { n.find("end")->setTerminal(true); },
         {"i > m > o: 98"}},
        {"behind a terminal pole there is none", {{"i", "o1", 1}, {"o1", "o2", 50}}, {}, {"i > o1: 99"}},
        {"an inactive arc",
         {{"i", "m", 1}, {"i", "n", 2}, {"m", "o", 1}, {"n", "o", 1}},
         [](Network& n) { n.find("n", "o")->disactivate(); },
         {"i > m > o: 98"}},
        {"an inactive arc to a pole that is timed otherwise",
         {{"i", "m", 1}, {"i", "n", 2}, {"m", "n", 3}, {"n", "o", 1}},
         [](Network& n) { n.find("i", "n")->disactivate(); },
         {"i > m > n > o: 95"}},
        {"a loop is cut where it meets the path",
         {{"i", "m", 1}, {"m", "n", 2}, {"n", "m", 4}, {"n", "o", 8}, {"m", "o", 16}},
         {},
         {"i > m > o: 83", "i > m > n > o: 89"}},
        {"a loop into the launch leaf", {{"i", "m", 1}, {"m", "i", 4}, {"m", "o", 8}}, {}, {"i > m > o: 91"}},
        {"an arc of undefined delay",
         {{"i", "m", 1}, {"i", "n", undefined}, {"m", "o", 1}, {"n", "o", 1}},
         {},
         {"i > m > o: 98"}},
        // The arrival is unchanged after the arc without end has been followed.
        {"a delay without end",
         {{"i", "m", maximum}, {"i", "n", 1}, {"m", "o", 1}, {"n", "o", 1}},
         {},
         {"i > m > o: minimum", "i > n > o: 98"}},
        {"a delay without end inside",
         {{"i", "m", 1}, {"m", "n", maximum}, {"m", "p", 1}, {"n", "o", 1}, {"p", "o", 1}},
         {},
         {"i > m > n > o: minimum", "i > m > p > o: 97"}},
        {"the other special never comes below the bound",
         {{"i", "m", minimum}, {"i", "n", 1}, {"m", "o", 1}, {"n", "o", 1}},
         {},
         {"i > n > o: 98"}},
        {"a launch leaf inside a path launches nothing, since no class of its own arrives",
         {{"i", "m", 10, 1}, {"m", "o", 10, 1}},
         [](Network& n) {
             CPath::create({{n.find("i")}, {}})->setPseudoMask(PseudoMask(1));
             n.subdomain->captureLaunch(n.find("m"));
         },
         {"i > m > o: 80"}},
        {"a launch leaf inside a path, of the same class",
         {{"i", "m", 10}, {"m", "o", 10}},
         [](Network& n) { n.subdomain->captureLaunch(n.find("m")); },
         {"i > m > o: 80", "m > o: 90"}},
        {"a launch leaf that nothing reaches",
         {{"i", "o", 10}, {"q", "o", 90}},
         [](Network& n) { n.subdomain->captureLaunch(n.find("q")); },
         {"i > o: 90"}},
        {"no launch leaf", {{"q", "o", 10}}, {}, {}},
        {"a leaf that is an end point itself",
         {{"i", "o", 10}},
         [](Network& n) {
             Pole* both = n.design.addInput("both");
             both->setOutput(true);
             both->setTerminal(true);
             n.subdomain->captureLaunch(both);
             n.subdomain->captureLatch(both);
         },
         {"i > o: 90", ": 100"}},
    };
    for (const auto& row : rows)
        for (const bool longest : {false, true}) {
            SCOPED_TRACE(std::string(row.what) + ", " + sides[longest]);
            Network network(row.arcs);
            if (row.change)
                row.change(network);
            const SweepPointer sweep = network.propagate();
            Network::search(*sweep, longest, maximum, unlimited);
            EXPECT_EQ(network.kept(longest), row.kept);
        }
}

TEST(PathSearch, AFalsePathEndsWhereItCloses) {
    // A false path of class 1 from i. Class 2 belongs to another exception. All arcs are in both classes.
    const std::vector<Arc> arcs{
        {"i", "m", 1, 3}, {"m", "o1", 1, 3}, {"m", "n", 2, 3}, {"n", "o2", 1, 3}, {"j", "m", 5, 3}};
    const struct {
        const char* what;
        std::vector<std::string> opens; // class 1
        std::vector<std::string> closes;
        unsigned long falseMask;
        Names kept;
    } rows[] = {
        {"nowhere",
         {"i"},
         {},
         1,
         {"j > m > n > o2: 92", "j > m > o1: 94", "i > m > n > o2: 96", "i > m > o1: 98"}},
        {"at an end", {"i"}, {"o2"}, 1, {"j > m > n > o2: 92", "j > m > o1: 94", "i > m > o1: 98"}},
        {"inside", {"i"}, {"n"}, 1, {"j > m > n > o2: 92", "j > m > o1: 94", "i > m > o1: 98"}},
        {"where it opens: not before it has opened",
         {"i"},
         {"i"},
         1,
         {"j > m > n > o2: 92", "j > m > o1: 94", "i > m > n > o2: 96", "i > m > o1: 98"}},
        {"from both starts", {"i", "j"}, {"m"}, 1, {}},
        {"opened inside", {"m"}, {"o2"}, 1, {"j > m > o1: 94", "i > m > o1: 98"}},
        {"no false path",
         {"i"},
         {"o2"},
         2,
         {"j > m > n > o2: 92", "j > m > o1: 94", "i > m > n > o2: 96", "i > m > o1: 98"}},
    };
    for (const auto& row : rows)
        for (const bool longest : {false, true}) {
            SCOPED_TRACE(std::string(row.what) + ", " + sides[longest]);
            Network network(arcs);
            Pole* j = network.find("j");
            j->setInput(true);
            j->setInitial(true);
            network.subdomain->captureLaunch(j);
            CPath::PoleList sources;
            CPath::PoleList targets;
            for (const std::string& name : row.opens)
                sources.push_back(network.find(name));
            for (const std::string& name : row.closes)
                targets.push_back(network.find(name));
            // Only the analyzer's mask makes it a false path.
            CPath::create({sources, targets})->setPseudoMask(PseudoMask(1));
            analyzer->setFalsePathMask(PseudoMask(row.falseMask));
            const SweepPointer sweep = network.propagate();
            Network::search(*sweep, longest, maximum, unlimited);
            EXPECT_EQ(network.kept(longest), row.kept);
        }
}

// The required times do not include an end point that was added later. The search does not pass it, and
// leaves its state unchanged.
TEST(PathSearch, AFalsePathThatClosesOnlyNow) {
    for (const bool longest : {false, true}) {
        SCOPED_TRACE(sides[longest]);
        Network network({{"i", "m", 1, 3}, {"m", "o1", 1, 3}, {"m", "n", 2, 1}, {"n", "o2", 1, 3}});
        CPath::create({{network.find("i")}, {}})->setPseudoMask(PseudoMask(1));
        analyzer->setFalsePathMask(PseudoMask(1));
        const SweepPointer sweep = network.propagate();
        CPath::create({{}, {network.find("n")}})->setPseudoMask(PseudoMask(1));
        Network::search(*sweep, longest, maximum, unlimited);
        EXPECT_EQ(network.kept(longest), Names{"i > m > o1: 98"});

        PseudoMask mask(3);
        PoleSet path;
        EdgeList edges;
        Delay arrival(longest ? 1 : -1);
        if (longest)
            sweep->searchLongestPaths(network.find("m"), mask, path, edges, arrival, Delay(maximum),
                                      unlimited);
        else
            sweep->searchShortestPaths(network.find("m"), mask, path, edges, arrival, Delay(maximum),
                                       unlimited);
        EXPECT_EQ(network.kept(longest), (Names{"i > m > o1: 98", "m > o1: 99"}));
        EXPECT_EQ(mask.getBits(), 3U);
        EXPECT_EQ(int(arrival), longest ? 1 : -1);
        EXPECT_TRUE(path.empty() && edges.empty());
    }
}

// An exception of a network: its kind, its ends, its class, and the amount that it adds to a slack.
enum class Kind { MaxDelay, MinDelay, Multicycle, Other };
struct Exception {
    const char* name;
    Kind kind;
    unsigned long classes;
    int adjust;
    std::string from = "i";
    std::string to = "o";
};

CPath* add(Network& network, const Exception& exception) {
    const CPath::Objects objects{{network.find(exception.from)}, {network.find(exception.to)}};
    const PseudoMask mask(exception.classes);
    CPath* path = nullptr;
    switch (exception.kind) {
    case Kind::MaxDelay:
        path = DPath::createMaximum(objects, Delay(1));
        analyzer->setMaxdelayPathMask(analyzer->getMaxdelayPathMask() | mask);
        break;
    case Kind::MinDelay:
        path = DPath::createMinimum(objects, Delay(1));
        analyzer->setMindelayPathMask(analyzer->getMindelayPathMask() | mask);
        break;
    case Kind::Multicycle:
        path = MPath::create(objects, 2);
        analyzer->setMulticyclePathMask(analyzer->getMulticyclePathMask() | mask);
        break;
    case Kind::Other:
        path = CPath::create(objects);
        break;
    }
    path->setAlias(exception.name);
    path->setPseudoMask(mask);
    path->setAdjuster([&exception](const Pelko::Subdomain&, bool) { return Delay(exception.adjust); });
    return path;
}

TEST(PathSearch, ExceptionsGovern) {
    // One path i > o of slack 90 before exceptions.
    const struct {
        const char* what;
        std::vector<Exception> exceptions;
        int bound;
        Names longest; // "slack, adjustment, exception"
        Names shortest;
        std::map<std::string, std::pair<int, int>> merged; // into the exceptions: longest, shortest slack
    } rows[] = {
        {"none", {}, maximum, {"90, 0, none"}, {"90, 0, none"}, {}},
        {"a maximum delay",
         {{"max", Kind::MaxDelay, 1, 7}},
         maximum,
         {"97, 7, max"},
         {"97, 7, max"},
         {{"max", {97, 97}}}},
        {"a minimum delay",
         {{"min", Kind::MinDelay, 1, 7}},
         maximum,
         {"97, 7, min"},
         {"97, 7, min"},
         {{"min", {97, 97}}}},
        {"a multicycle",
         {{"multi", Kind::Multicycle, 1, 7}},
         maximum,
         {"97, 7, multi"},
         {"97, 7, multi"},
         {{"multi", {97, 97}}}},
        {"maximum before multicycle",
         {{"multi", Kind::Multicycle, 1, 5}, {"max", Kind::MaxDelay, 2, 7}},
         maximum,
         {"97, 7, max"},
         {"97, 7, max"},
         {{"max", {97, 97}}, {"multi", {undefined, undefined}}}},
        {"multicycle before minimum, on the long side",
         {{"min", Kind::MinDelay, 1, 5}, {"multi", Kind::Multicycle, 2, 7}},
         maximum,
         {"97, 7, multi"},
         {"95, 5, min"},
         {{"min", {undefined, 95}}, {"multi", {97, undefined}}}},
        {"maximum before minimum, on the long side",
         {{"min", Kind::MinDelay, 1, 5}, {"max", Kind::MaxDelay, 2, 7}},
         maximum,
         {"97, 7, max"},
         {"95, 5, min"},
         {{"min", {undefined, 95}}, {"max", {97, undefined}}}},
        {"one of no kind governs nothing, and its class is timed",
         {{"other", Kind::Other, 1, 7}},
         maximum,
         {"90, 0, none"},
         {"90, 0, none"},
         {{"other", {undefined, undefined}}}},
        {"one that adds nothing",
         {{"max", Kind::MaxDelay, 1, 0}},
         maximum,
         {"90, 0, max"},
         {"90, 0, max"},
         {{"max", {90, 90}}}},
        {"below the bound by its adjustment",
         {{"max", Kind::MaxDelay, 1, -50}},
         40,
         {"40, -50, max"},
         {"40, -50, max"},
         {{"max", {40, 40}}}},
        {"above the bound by it",
         {{"max", Kind::MaxDelay, 1, -49}},
         40,
         {},
         {},
         {{"max", {undefined, undefined}}}},
        {"an undefined adjustment makes no path",
         {{"max", Kind::MaxDelay, 1, undefined}},
         maximum,
         {},
         {},
         {{"max", {undefined, undefined}}}},
        {"whatever another exception says",
         {{"max", Kind::MaxDelay, 2, undefined}, {"multi", Kind::Multicycle, 1, 7}},
         maximum,
         {},
         {},
         {{"max", {undefined, undefined}}, {"multi", {undefined, undefined}}}},
        {"the maximum special never comes below the bound",
         {{"max", Kind::MaxDelay, 1, maximum}},
         maximum,
         {},
         {},
         {{"max", {undefined, undefined}}}},
        // An exception that does not govern makes the slack of the path worse at first: the path is created,
        // merged and dropped.
        {"dropped, and merged all the same",
         {{"max", Kind::MaxDelay, 1, 50}, {"multi", Kind::Multicycle, 2, -50}},
         60,
         {},
         {},
         {{"max", {140, 140}}, {"multi", {undefined, undefined}}}},
        {"dropped at a slack of just the limit",
         {{"max", Kind::MaxDelay, 1, 50}, {"multi", Kind::Multicycle, 2, -50}},
         139,
         {},
         {},
         {{"max", {140, 140}}, {"multi", {undefined, undefined}}}},
        {"kept where the bound allows",
         {{"max", Kind::MaxDelay, 1, 50}, {"multi", Kind::Multicycle, 2, -50}},
         140,
         {"140, 50, max"},
         {"140, 50, max"},
         {{"max", {140, 140}}, {"multi", {undefined, undefined}}}},
    };
    for (const auto& row : rows)
        for (const bool longest : {false, true}) {
            SCOPED_TRACE(std::string(row.what) + ", " + sides[longest]);
            Network network({{"i", "o", 10, 3}});
            std::map<std::string, CPath*> exceptions;
            for (const Exception& exception : row.exceptions)
                exceptions[exception.name] = add(network, exception);
            const SweepPointer sweep = network.propagate();
            Network::search(*sweep, longest, row.bound, unlimited);
            Names kept;
            for (const Path* path : network.pathsOf(longest)) {
                kept.push_back(path->getSlack()._getLabel() + ", " + path->getAdjustment()._getLabel() +
                               ", " + nameOf(path->getConstrainedPath()));
                EXPECT_EQ(path->isLongest(), longest);
            }
            EXPECT_EQ(kept, longest ? row.longest : row.shortest);
            for (const auto& [name, merged] : row.merged) {
                EXPECT_EQ(int(exceptions[name]->getLongestSlack()), longest ? merged.first : undefined)
                    << name;
                EXPECT_EQ(int(exceptions[name]->getShortestSlack()), longest ? undefined : merged.second)
                    << name;
            }
        }
}

TEST(PathSearch, AnExceptionIsForItsOwnPaths) {
    // Class 1 opens at i and closes at o1; class 2 opens and closes without effect.
    const struct {
        const char* what;
        std::vector<Arc> arcs;
        Names kept;
        int merged;
    } rows[] = {
        {"arcs that are for it",
         {{"i", "m", 1, 1}, {"m", "o1", 1, 1}, {"m", "o2", 1, 1}},
         {"i > m > o1: 48", "i > m > o2: 98"},
         48},
        {"an arc that is not for it",
         {{"i", "m", 1, 0}, {"m", "o1", 1, 1}, {"m", "o2", 1, 1}},
         {"i > m > o1: 98", "i > m > o2: 98"},
         undefined},
        {"another start",
         {{"i", "m", 1, 1}, {"i2", "m", 2, 1}, {"m", "o1", 1, 1}},
         {"i > m > o1: 48", "i2 > m > o1: 97"},
         48},
        {"two ways: the worst is merged",
         {{"i", "m", 1, 1}, {"i", "n", 3, 1}, {"m", "o1", 1, 1}, {"n", "o1", 1, 1}},
         {"i > n > o1: 46", "i > m > o1: 48"},
         46},
        {"one of two ways",
         {{"i", "m", 1, 1}, {"i", "n", 3, 1}, {"m", "o1", 1, 1}, {"n", "o1", 1, 0}},
         {"i > m > o1: 48", "i > n > o1: 96"},
         48},
    };
    const Exception exception{"max", Kind::MaxDelay, 1, -50, "i", "o1"};
    for (const auto& row : rows)
        for (const bool longest : {false, true}) {
            SCOPED_TRACE(std::string(row.what) + ", " + sides[longest]);
            Network network(row.arcs);
            const CPath* path = add(network, exception);
            const SweepPointer sweep = network.propagate();
            Network::search(*sweep, longest, maximum, unlimited);
            EXPECT_EQ(network.kept(longest), row.kept);
            EXPECT_EQ(int(longest ? path->getLongestSlack() : path->getShortestSlack()), row.merged);
        }
}

TEST(PathSearch, RefusesWhatItCannotAnswer) {
    Network network({{"i", "o1", 10, 3}, {"i", "o2", 5, 0}});
    const SweepPointer sweep = network.propagate();
    const auto& kind = typeid(Ruvex::InvalidRequest);
    for (const unsigned long count : {0UL, 1UL, unlimited})
        expectThrown({
            {"no bound, longest",
             [&] { sweep->searchLongestPaths(Delay::getUndefined(), count); },
             kind,
             "Undefined maximumSlack",
             {"Sweep", "searchLongestPaths", 3060}},
            {"no bound, shortest",
             [&] { sweep->searchShortestPaths(Delay::getUndefined(), count); },
             kind,
             "Undefined maximumSlack",
             {"Sweep", "searchShortestPaths", 3145}},
        });
    EXPECT_EQ(network.kept(true), Names{});
    EXPECT_EQ(network.kept(false), Names{});
}

TEST(PathSearch, RefusesTwoExceptionsOfOneClass) {
    // Both have class 1; earlier paths stay.
    const Exception exceptions[] = {{"first", Kind::MaxDelay, 1, 0, "i", "o2"},
                                    {"second", Kind::MaxDelay, 1, 0, "i", "o2"}};
    Network network({{"i", "o1", 10, 1}, {"i", "o2", 5, 1}, {"i", "o3", 50, 1}});
    for (const Exception& exception : exceptions)
        add(network, exception);
    const SweepPointer sweep = network.propagate();
    const auto& kind = typeid(Ruvex::InvalidRequest);
    expectThrown({
        {"longest",
         [&] { sweep->searchLongestPaths(Delay::getMaximum(), 9); },
         kind,
         "Multiple constraints",
         {"Sweep", "searchLongestPaths", 3307}},
        {"shortest",
         [&] { sweep->searchShortestPaths(Delay::getMaximum(), 9); },
         kind,
         "Multiple constraints",
         {"Sweep", "searchShortestPaths", 3567}},
    });
    EXPECT_EQ(network.kept(true), Names{"i > o1: 90"});
    EXPECT_EQ(network.kept(false), Names{"i > o1: 90"});
}

TEST(PathSearch, OneExceptionOfTwoClassesIsOne) {
    Network network({{"i", "o", 10, 3}});
    const Exception exception{"both", Kind::Multicycle, 3, 5};
    add(network, exception);
    const SweepPointer sweep = network.propagate();
    sweep->searchLongestPaths(Delay::getMaximum(), 9);
    EXPECT_EQ(network.kept(true), Names{"i > o: 95"});
}

TEST(PathSearch, APathOfUndefinedSlackIsKept) {
    // Without relations only a leaf that is itself an end point is critical; its slack is undefined.
    const struct {
        unsigned long count;
        Names heard;
    } rows[] = {
        {1, {"+ : undefined", "+ : undefined", "- : undefined"}},
        {2, {"+ : undefined", "+ : undefined"}},
        {unlimited, {"+ : undefined", "+ : undefined"}},
        {0, {}},
    };
    for (const auto& row : rows)
        for (const bool longest : {false, true}) {
            SCOPED_TRACE(std::to_string(row.count) + ", " + sides[longest]);
            Network network({{"i", "o", 10}});
            network.subdomain->setSetupRelation(Delay::getUndefined());
            network.subdomain->setHoldRelation(Delay::getUndefined());
            for (const char* name : {"first", "second"}) {
                Pole* both = network.design.addInput(name);
                both->setOutput(true);
                both->setTerminal(true);
                network.subdomain->captureLaunch(both);
                network.subdomain->captureLatch(both);
            }
            const SweepPointer sweep = network.propagate();
            const Listener listener;
            Network::search(*sweep, longest, maximum, row.count);
            EXPECT_EQ(listener.heard, row.heard);
        }
}

TEST(PathSearch, AnUndefinedSlackComesBeforeAll) {
    // Before there are relations, a leaf that is itself an end point is kept with an undefined slack. Later
    // it remains the worst path, but sets no limit for others: each new one is the last in the list, and is
    // destroyed.
    for (const bool longest : {false, true}) {
        SCOPED_TRACE(sides[longest]);
        Network network({{"i", "o", 10}});
        network.subdomain->setSetupRelation(Delay::getUndefined());
        network.subdomain->setHoldRelation(Delay::getUndefined());
        Pole* both = network.design.addInput("both");
        both->setOutput(true);
        both->setTerminal(true);
        network.subdomain->captureLaunch(both);
        network.subdomain->captureLatch(both);
        Network::search(*network.propagate(), longest, maximum, 1);
        EXPECT_EQ(network.kept(longest), Names{": undefined"});
        network.subdomain->setSetupRelation(Delay(100));
        network.subdomain->setHoldRelation(Delay(100));
        const SweepPointer sweep = network.propagate();
        const Listener listener;
        Network::search(*sweep, longest, maximum, 1);
        EXPECT_EQ(listener.heard, (Names{"+ i > o: 90", "- i > o: 90", "+ : 100", "- : 100"}));
    }
}

TEST(PathSearch, AnExceptionThatAsksForNothingOpensNoWay) {
    // It starts at the input and no way reaches its end: under it the arc has no slack, and without it a
    // slack of 90.
    for (const bool longest : {false, true})
        for (const int bound : {50, 90}) {
            SCOPED_TRACE(sides[longest]);
            Network network({{"i", "o", 10, 1}, {"x", "y", 1, 1}});
            const Exception exception{"max", Kind::MaxDelay, 1, 0, "i", "y"};
            add(network, exception);
            const SweepPointer sweep = network.propagate();
            const Listener listener;
            Network::search(*sweep, longest, bound, unlimited);
            EXPECT_EQ(listener.heard, bound == 50 ? Names{} : Names{"+ i > o: 90"});
        }
}

TEST(PathSearch, TakesTheClocksOfEitherEnd) {
    // Register to register: launch edge (1, 2), latch edge (3, 5), logic (10, 20), hold 4 and setup 6. Port
    // to port: no clock arrival, constraints of (7, 8) and (9, 11).
    Builder design;
    Pole* clk = design.addClockSource("clk");
    Pole* a = design.addClock("a");
    design.connect(clk, a, 1, 2);
    Pole* z = design.addClock("z");
    design.connect(clk, z, 3, 5);
    Pole* d = design.addPole("d");
    design.connect(a, d, 10, 20);
    Pole* check = design.addCheck(z, "check");
    design.connect(d, check, 4, 6);
    Pole* in = design.addInput("in");
    Pole* out = design.addOutput("out");
    design.connect(in, out, 10, 20);
    design.constrainInput(in, clk, rising, 7, 8);
    design.constrainOutput(out, clk, rising, 9, 11);
    Pelko::Subdomain* clocked = design.addSubdomain(clk, clk);
    Pelko::Subdomain* unclocked = design.addSubdomain(nullptr, nullptr);
    for (Pelko::Subdomain* subdomain : {clocked, unclocked}) {
        subdomain->captureLaunch(in);
        subdomain->captureLatch(out);
        subdomain->setSetupRelation(Delay(100));
        subdomain->setHoldRelation(Delay(-1));
    }
    clocked->captureLaunch(a);
    clocked->captureLatch(z);
    const struct {
        Pelko::Subdomain* subdomain;
        bool longest;
        Names kept; // "route: slack, launch, latch"
    } rows[] = {
        // 100 + 3 - (2 + 20 + 6); 100 - (8 + 20) - 11
        {clocked, true, {"in > out: 61, 0, 0", "a > d > check: 75, 2, 3"}},
        // 1 + 10 - 4 - (1 + 5); 7 + 10 + 9 - 1
        {clocked, false, {"a > d > check: 1, 1, 5", "in > out: 25, 0, 0"}},
        {unclocked, true, {"in > out: 80, 0, 0"}},
        {unclocked, false, {"in > out: 9, 0, 0"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.subdomain->getName() + ", " + sides[row.longest]);
        const SweepPointer sweep(Sweep::create(row.subdomain));
        sweep->clockAnalyze();
        sweep->arrivalAnalyze();
        sweep->requireAnalyze();
        Network::search(*sweep, row.longest, maximum, unlimited);
        Names kept;
        for (const Path* path :
             row.longest ? row.subdomain->getLongestPaths() : row.subdomain->getShortestPaths())
            kept.push_back(describe(*path) + ", " + path->getLaunchDelay()._getLabel() + ", " +
                           path->getLatchDelay()._getLabel());
        EXPECT_EQ(kept, row.kept);
    }
}

TEST(PathSearch, OneStepContinuesAPath) {
    const struct {
        const char* what;
        unsigned long mask;
        int arrival;
        bool withFirstArc;
        std::vector<std::string> path; // poles that count as visited
        int bound;
        unsigned long count;
        Names kept;
    } rows[] = {
        {"from a pole on", 0, 10, false, {}, maximum, 9, {"m > o1: 99", "m > n > o2: 97"}},
        {"the arcs so far come first", 0, 10, true, {}, maximum, 9, {"i > m > o1: 89", "i > m > n > o2: 87"}},
        {"the bound is exclusive", 0, 10, true, {}, 89, 9, {"i > m > n > o2: 87"}},
        {"a pole of the path is not entered", 0, 10, true, {"n"}, maximum, 9, {"i > m > o1: 89"}},
        {"a false path that closes here", 1, 10, true, {}, maximum, 9, {}},
        {"an undefined arrival leads nowhere", 0, undefined, true, {}, maximum, 9, {}},
        {"no count", 0, 10, true, {}, maximum, 0, {}},
    };
    for (const auto& row : rows)
        for (const bool longest : {false, true}) {
            SCOPED_TRACE(std::string(row.what) + ", " + sides[longest]);
            Network network({{"i", "m", 10, 3}, {"m", "o1", 1, 3}, {"m", "n", 2, 3}, {"n", "o2", 1, 3}});
            CPath::create({{}, {network.find("m")}})->setPseudoMask(PseudoMask(1));
            // A class that opens here, and to which no arc belongs, is removed at the end of the step.
            CPath::create({{network.find("m")}, {}})->setPseudoMask(PseudoMask(4));
            const SweepPointer sweep = network.propagate();
            analyzer->setFalsePathMask(PseudoMask(1));
            PseudoMask mask(row.mask);
            PoleSet path;
            for (const std::string& name : row.path)
                path.insert(network.find(name));
            EdgeList edges;
            if (row.withFirstArc)
                edges.push_back(network.find("i", "m"));
            Delay arrival(row.arrival);
            // The hold search works with negated delays.
            if (!longest)
                arrival = -arrival;
            const Delay before = arrival;
            const Delay bound(row.bound);
            if (longest)
                sweep->searchLongestPaths(network.find("m"), mask, path, edges, arrival, bound, row.count);
            else
                sweep->searchShortestPaths(network.find("m"), mask, path, edges, arrival, bound, row.count);
            Names kept = network.kept(longest);
            std::sort(kept.begin(), kept.end(), std::greater<>());
            Names expected = row.kept;
            std::sort(expected.begin(), expected.end(), std::greater<>());
            EXPECT_EQ(kept, expected);
            // The state is unchanged.
            EXPECT_EQ(mask.getBits(), row.mask);
            EXPECT_EQ(path.size(), row.path.size());
            EXPECT_EQ(edges.size(), row.withFirstArc ? 1U : 0U);
            EXPECT_EQ(int(arrival), int(before));
        }
}

} // namespace
