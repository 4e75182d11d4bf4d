// Compares what a whole launch leaves in the database with the meaning of slacks and paths, on random
// designs: every path is enumerated and timed separately. VORLEN_SEED and VORLEN_DESIGNS choose the designs;
// a failure names the seed.
//
// Compared:
// - subdomains: the pairs of clock edges that have a path between them;
// - the latest and the shortest arrival of each subdomain (without exceptions);
// - the slack of every arc: the worst setup slack of all paths through it, without those under a minimum
//   delay, which is a hold demand only;
// - the reported paths of each subdomain: the worst ones, as many as asked for and no worse than asked for,
//   each with its own slack and exception;
// - port slacks: the worst of all paths from or to the port, if the port's side has a clock;
// - the slacks of exceptions: the worst of all paths under each, if the search keeps all of them.
//
// If an exception has a gate as a through point, an arc that bypasses the gate is timed with and without the
// exception: slacks of arcs and ports are then no better than the worst path's.
#include "MeaningDesign.h"
#include "ReferenceTool.h"
#include "Vorlen/Tool.h"

#include "tests/support/Recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace {

using namespace oracle;
using Pelko::Delay;
using Pelko::Edge;
using Pelko::Path;
using Pelko::Pole;
using Pelko::Subdomain;

std::uint64_t numberFrom(const char* variable, std::uint64_t otherwise) {
    const char* text = std::getenv(variable);
    return text && *text ? std::strtoull(text, nullptr, 10) : otherwise;
}

// How much was really compared: the test must not pass because there was nothing to compare.
struct Counts {
    unsigned long subdomains = 0, arcs = 0, longest = 0, shortest = 0, excepted = 0, falsePaths = 0,
                  ports = 0;
    unsigned long openPorts = 0, dropped = 0, pessimistic = 0;
};

void keepWorst(Time& worst, const Time& slack) {
    if (slack && (!worst || *slack < *worst))
        worst = slack;
}

Time timeOf(const Delay& delay) { return delay.isDefined() ? Time(int(delay)) : Time(); }

std::string textOf(const Time& time) { return time ? std::to_string(*time) : "none"; }

std::string textOf(const std::vector<Edge*>& edges) {
    std::string text = edges.front()->getSource()->getName();
    for (Edge* edge : edges)
        text += " " + edge->getTarget()->getName();
    return text;
}

// Compares one design after its launch with its enumerated paths. Collects disagreements as text.
class Comparison {
public:
    Comparison(const MeaningDesign& design, Counts& counts)
        : design_(design), counts_(counts),
          enumerator_([&design](const EdgePair& clocks) { return design.getDemand(clocks); }) {
        for (const EnumeratedPath& path : enumerator_.getPaths())
            groups_[path.clocks].push_back(&path);
        compareSubdomains();
        compareArcs();
        comparePorts();
        compareExceptions();
    }

    const std::string& getDisagreements() const { return disagreements_; }

private:
    using Group = std::vector<const EnumeratedPath*>;

    void expect(const Time& expected, const Time& found, const std::string& what) {
        if (expected != found)
            disagree(what + ": " + textOf(found) + " instead of " + textOf(expected));
    }
    // Compares the worst slack of an arc or of a port.
    void expectWorst(const Time& expected, const Time& found, const std::string& what) {
        if (!design_.hasBridges() || !expected || !found || *found > *expected)
            expect(expected, found, what);
        else
            counts_.pessimistic += *found < *expected;
    }
    void disagree(const std::string& text) { disagreements_ += text + "\n"; }

    // Whether the slack of an arc counts the path.
    static bool isTagged(const EnumeratedPath& path) {
        const auto* delay = dynamic_cast<Pelko::DPath*>(path.exception);
        return !delay || delay->isMaximum();
    }

    void compareSubdomains() {
        std::set<EdgePair> enumerated;
        for (const auto& group : groups_)
            enumerated.insert(group.first);
        const std::set<EdgePair> made = design_.getSubdomains();
        if (!std::equal(enumerated.begin(), enumerated.end(), made.begin(), made.end(),
                        [](const EdgePair& a, const EdgePair& b) { return !(a < b) && !(b < a); }))
            disagree(std::to_string(made.size()) + " subdomains instead of " +
                     std::to_string(enumerated.size()));
        for (Pelko::Domain* domain : Pelko::analyzer->getDomains())
            for (Subdomain* subdomain : domain->getSubdomains())
                compareSubdomain(subdomain, groups_[MeaningDesign::clocksOf(subdomain)]);
    }

    void compareSubdomain(Subdomain* subdomain, const Group& paths) {
        ++counts_.subdomains;
        if (!design_.hasExceptions()) {
            Time latest, shortest;
            for (const EnumeratedPath* path : paths) {
                if (path->late)
                    latest = std::max(latest.value_or(*path->late), *path->late);
                keepWorst(shortest, path->early);
            }
            expect(latest, timeOf(subdomain->getLAT()), "latest arrival of " + subdomain->getName());
            expect(shortest, timeOf(subdomain->getSAT()), "shortest arrival of " + subdomain->getName());
        }
        compareReports(subdomain->getName() + " longest", subdomain->getLongestPaths(), paths,
                       &EnumeratedPath::setupSlack, counts_.longest);
        if (design_.isHoldMeaningful())
            compareReports(subdomain->getName() + " shortest", subdomain->getShortestPaths(), paths,
                           &EnumeratedPath::holdSlack, counts_.shortest);
    }

    void compareReports(const std::string& what, const Ruvex::Collection<Path*>& reports, const Group& paths,
                        Time EnumeratedPath::*slack, unsigned long& count) {
        const Delay limit = Pelko::analyzer->getPathLimit();
        std::vector<std::int64_t> expected;
        for (const EnumeratedPath* path : paths)
            if (path->*slack && (limit == Delay::getMaximum() || *(path->*slack) <= int(limit)))
                expected.push_back(*(path->*slack));
        std::sort(expected.begin(), expected.end());
        if (expected.size() > Pelko::analyzer->getPathCount()) {
            counts_.dropped += expected.size() - Pelko::analyzer->getPathCount();
            expected.resize(Pelko::analyzer->getPathCount());
        }
        std::vector<std::int64_t> found;
        std::set<std::vector<Edge*>> chains;
        for (Path* report : reports) {
            ++count;
            found.push_back(int(report->getSlack()));
            std::vector<Edge*> chain;
            for (Edge* edge : report->getEdges())
                chain.push_back(edge);
            const auto same = std::find_if(paths.begin(), paths.end(), [&chain](const EnumeratedPath* path) {
                return path->edges == chain;
            });
            if (!chains.insert(chain).second)
                disagree(what + " path twice: " + textOf(chain));
            else if (same == paths.end())
                disagree(what + " path that is none: " + textOf(chain));
            else
                compareReport(what, report, **same, slack);
        }
        if (found != expected) {
            std::string text = what + " slacks:";
            for (const std::int64_t one : found)
                text += " " + std::to_string(one);
            text += " instead of";
            for (const std::int64_t one : expected)
                text += " " + std::to_string(one);
            disagree(text);
        }
    }

    void compareReport(const std::string& what, Path* report, const EnumeratedPath& path,
                       Time EnumeratedPath::*slack) {
        expect(path.*slack, timeOf(report->getSlack()), what + " path " + textOf(path.edges));
        if (report->getConstrainedPath() != path.exception)
            disagree(what + " path under another exception: " + textOf(path.edges));
        if (path.exception)
            ++counts_.excepted;
    }

    void compareArcs() {
        std::map<Edge*, Time, Pelko::Object::StampLess> worst;
        for (const EnumeratedPath& path : enumerator_.getPaths()) {
            counts_.falsePaths += path.isFalse();
            for (Edge* edge : path.edges)
                if (isTagged(path))
                    keepWorst(worst[edge], path.setupSlack);
        }
        for (Edge* edge : Pelko::cell->getEdges())
            if (edge->isActive()) {
                counts_.arcs += worst[edge].has_value();
                expectWorst(worst[edge], timeOf(edge->getSlack()), "slack of " + edge->getAlias());
            }
    }

    // A port that no clocked path uses has no slack. A port whose paths have no slack keeps the maximum
    // special.
    void comparePorts() {
        struct Slacks {
            bool used = false;
            Time longest, shortest;
        };
        std::map<Pole*, Slacks, Pelko::Object::StampLess> ports;
        const auto use = [&ports](Pole* port, const EnumeratedPath& path) {
            Slacks& slacks = ports[port];
            slacks.used = true;
            keepWorst(slacks.longest, path.setupSlack);
            keepWorst(slacks.shortest, path.holdSlack);
        };
        for (const EnumeratedPath& path : enumerator_.getPaths()) {
            if (path.clocks.launchRoot && path.edges.front()->getSource()->isInput())
                use(path.edges.front()->getSource(), path);
            if (path.clocks.latchRoot && path.edges.back()->getTarget()->isOutput())
                use(path.edges.back()->getTarget(), path);
        }
        const auto kept = [](bool used, const Time& slack) {
            return used && !slack ? Time(Delay::maximumValue) : slack;
        };
        for (Pole* pole : Pelko::cell->getPoles()) {
            if (!pole->isInput() && !pole->isOutput())
                continue;
            const Slacks& slacks = ports[pole];
            ++(slacks.used ? counts_.ports : counts_.openPorts);
            expectWorst(kept(slacks.used, slacks.longest),
                        timeOf(Pelko::analyzer->getIODelayLongestSlack(pole)),
                        "longest slack of port " + pole->getName());
            if (design_.isHoldMeaningful())
                expectWorst(kept(slacks.used, slacks.shortest),
                            timeOf(Pelko::analyzer->getIODelayShortestSlack(pole)),
                            "shortest slack of port " + pole->getName());
        }
    }

    void compareExceptions() {
        if (Pelko::analyzer->getPathCount() != ~0UL || Pelko::analyzer->getPathLimit() != Delay::getMaximum())
            return;
        for (Pelko::CPath* exception : Pelko::analyzer->getCPaths()) {
            Time longest, shortest;
            for (const EnumeratedPath& path : enumerator_.getPaths())
                if (path.exception == exception) {
                    keepWorst(longest, path.setupSlack);
                    keepWorst(shortest, path.holdSlack);
                }
            expect(longest, timeOf(exception->getLongestSlack()),
                   "longest slack of " + exception->getAlias());
            expect(shortest, timeOf(exception->getShortestSlack()),
                   "shortest slack of " + exception->getAlias());
        }
    }

    const MeaningDesign& design_;
    Counts& counts_;
    PathEnumerator enumerator_;
    std::map<EdgePair, Group> groups_;
    std::string disagreements_;
};

bool launchLibrary() {
    Vorlen::Tool* tool = Vorlen::Tool::create();
    const bool completed = tool->launch();
    tool->destroy();
    return completed;
}

bool launchReference() { return ReferenceTool().launch(); }

void compareDesigns(bool (*launch)()) {
    const std::uint64_t seed = numberFrom("VORLEN_SEED", 1);
    const std::uint64_t designs = numberFrom("VORLEN_DESIGNS", 10000);
    Counts counts;
    unsigned failures = 0;
    for (std::uint64_t i = 0; i < designs && failures < 3; ++i) {
        MeaningDesign design(seed + i);
        const std::string before = design.getText();
        Support::Recorder recorder;
        const bool completed = launch();
        const Comparison comparison(design, counts);
        if (completed && recorder.getLines(Support::Recorder::Level::Error).empty() &&
            comparison.getDisagreements().empty())
            continue;
        ++failures;
        ADD_FAILURE() << "VORLEN_SEED=" << seed + i << " VORLEN_DESIGNS=1\n"
                      << comparison.getDisagreements() << before
                      << testing::PrintToString(recorder.getLines());
    }
    if (designs < 1000 || failures != 0)
        return;
    struct Row {
        const char* what;
        unsigned long found;
        std::uint64_t least;
    };
    const Row rows[] = {
        {"subdomains", counts.subdomains, 2 * designs},
        {"arcs with a slack", counts.arcs, 10 * designs},
        {"longest paths", counts.longest, 5 * designs},
        {"shortest paths", counts.shortest, 4 * designs},
        {"paths not asked for", counts.dropped, 4 * designs},
        {"paths under exceptions", counts.excepted, designs},
        {"false paths", counts.falsePaths, designs / 4},
        {"ports with a clock", counts.ports, designs / 2},
        {"ports without", counts.openPorts, designs / 2},
        {"arcs and ports with a slack below the worst path's", counts.pessimistic, designs / 500},
    };
    for (const Row& row : rows) {
        EXPECT_GE(row.found, row.least) << row.what;
        std::printf("%10lu %s\n", row.found, row.what);
    }
}

TEST(Meaning, LibraryAgreesWithEnumeratedPaths) { compareDesigns(launchLibrary); }

TEST(Meaning, ReferenceAgreesWithEnumeratedPaths) { compareDesigns(launchReference); }

} // namespace
