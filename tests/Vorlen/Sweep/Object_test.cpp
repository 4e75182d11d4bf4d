// The sweep as an object: its creation and end, look-ups, record, names, and the sequence of analyze().
#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"
#include "tests/support/Sweeps.h"
#include "tests/support/Thrown.h"

#include "Pelko/Path.h"
#include "Ruvex/Record.h"
#include "Vorlen/Sweep.h"
#include "tests/support/Rows.h"

#include <gtest/gtest.h>

#include <QTime>

namespace {

using namespace Support;
using Pelko::Delay;
using Pelko::Pole;
using Vorlen::Sweep;
using Vorlen::Timing;
using Vorlen::TimingMap;

// Records sweeps and reported paths: "+ label" at the creation, "- label" at the destruction.
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
        if (const auto* path = dynamic_cast<const Pelko::Path*>(object))
            heard.push_back(what + std::string(path->isLongest() ? "longest " : "shortest ") +
                            path->getAlias());
        else if (dynamic_cast<const Sweep*>(object))
            heard.push_back(what + object->_getLabel());
        else
            heard.push_back(what + object->getClass());
    }
};

// Two registers on one clock of period 10, and their subdomain with its relations.
struct TwoRegisters {
    Builder design;
    Pole* clk = design.addClockSource("clk", 10);
    Register a = design.addRegister("a", clk);
    Register b = design.addRegister("b", clk, rising, 0, 1, 2);
    Pelko::Edge* arc = design.connect(a.output, b.data, 3, 4);
    Pelko::Subdomain* subdomain = design.addSubdomain(clk, clk);

    TwoRegisters() {
        subdomain->captureLaunch(a.clock);
        subdomain->captureLatch(b.clock);
        subdomain->setSetupRelation(Delay(10));
        subdomain->setHoldRelation(Delay(0));
    }
};

const std::vector<std::pair<const char*, bool (*)(const Sweep&, Pole*, TimingMap&)>> lookUps = {
    {"arrival", [](const Sweep& sweep, Pole* pole, TimingMap&) { return sweep.hasArrivalTimingMap(pole); }},
    {"required", [](const Sweep& sweep, Pole* pole, TimingMap&) { return sweep.hasRequireTimingMap(pole); }},
    {"arrival map", [](const Sweep& s, Pole* p, TimingMap& out) { return s.hasArrivalTimingMap(p, out); }},
    {"required map", [](const Sweep& s, Pole* p, TimingMap& out) { return s.hasRequireTimingMap(p, out); }},
    {"latch map", [](const Sweep& s, Pole* p, TimingMap& out) { return s.hasLatchTimingMap(p, out); }},
    {"launch map", [](const Sweep& s, Pole* p, TimingMap& out) { return s.hasLaunchTimingMap(p, out); }},
};

TEST(SweepObject, LivesBetweenCreateAndDestroy) {
    TwoRegisters bench;
    Listener listener;
    Sweep* sweep = Sweep::create(bench.subdomain);
    EXPECT_EQ(sweep->getSubdomain(), bench.subdomain);
    EXPECT_GT(sweep->getStamp(), bench.subdomain->getStamp());
    EXPECT_TRUE(sweep->isDestroyable());
    EXPECT_FALSE(sweep->isTouchable());
    sweep->destroy();
    EXPECT_EQ(listener.heard,
              (Names{"+ Sweep SWEEP[clk:rising -> clk:rising]", "- Sweep SWEEP[clk:rising -> clk:rising]"}));
}

TEST(SweepObject, RefusesNoSubdomain) {
    const Builder design;
    const Listener listener;
    expectThrown({"null subdomain",
                  [] { Sweep::create(nullptr); },
                  typeid(Ruvex::FactoryFailed),
                  "Null subdomain",
                  {"Sweep", "preCreate", 73}});
    EXPECT_EQ(listener.heard, Names{});
}

// Throws at the creation of an object, at its destruction, or at both.
class Refuser : public Pelko::ObjectListener {
public:
    Refuser(bool creation, bool end) : creation_(creation), end_(end) { Pelko::Object::addListener(this); }
    Refuser(const Refuser&) = delete;
    Refuser& operator=(const Refuser&) = delete;
    ~Refuser() override { Pelko::Object::removeListener(this); }

    void onCreated(Pelko::Object*) override { refuse(creation_, "no beginning"); }
    void onDestroyed(Pelko::Object*) override { refuse(end_, "no end"); }

private:
    static void refuse(bool refuses, const char* message) {
        if (refuses)
            throw Ruvex::Error(message);
    }

    bool creation_;
    bool end_;
};

TEST(SweepObject, AListenerMayRefuseItsCreation) {
    const TwoRegisters bench;
    for (const bool refusesEnd : {false, true}) {
        SCOPED_TRACE(refusesEnd);
        // The listener before it is called for the creation and, since the sweep is destroyed again, for the
        // destruction.
        Listener listener;
        const Refuser refuser(true, refusesEnd);
        expectThrown(
            {"refused", [&] { Sweep::create(bench.subdomain); }, typeid(Ruvex::Error), "no beginning", {}});
        EXPECT_EQ(listener.heard, (Names{"+ Sweep SWEEP[clk:rising -> clk:rising]",
                                         "- Sweep SWEEP[clk:rising -> clk:rising]"}));
    }
}

TEST(SweepObject, AnAbandonedSweepGoesWhateverListenersSay) {
    const TwoRegisters bench;
    for (const bool refusesEnd : {false, true}) {
        SCOPED_TRACE(refusesEnd);
        Listener listener;
        const Refuser refuser(false, refusesEnd);
        Sweep::abandon(Sweep::create(bench.subdomain));
        EXPECT_EQ(listener.heard, (Names{"+ Sweep SWEEP[clk:rising -> clk:rising]",
                                         "- Sweep SWEEP[clk:rising -> clk:rising]"}));
    }
}

// Records what the host's listeners of sweeps can read of a sweep that is about to be destroyed.
class SweepReader : public Pelko::SweepListener {
public:
    SweepReader() { Pelko::Object::addSweepListener(this); }
    SweepReader(const SweepReader&) = delete;
    SweepReader& operator=(const SweepReader&) = delete;
    ~SweepReader() override { Pelko::Object::removeSweepListener(this); }

    void onSweepDestroyed(Pelko::Object* object) override {
        const auto* sweep = dynamic_cast<const Sweep*>(object);
        ASSERT_NE(sweep, nullptr);
        heard.push_back(sweep->getAlias());
        arrivals = tableOf(*sweep, &Sweep::hasArrivalTimingMap);
        required = tableOf(*sweep, &Sweep::hasRequireTimingMap);
        if (fails)
            throw Ruvex::Error("no end");
    }

    Names heard;
    Table arrivals, required;
    bool fails = false;
};

TEST(SweepObject, ListenersOfSweepsReadItsTimesAtItsEnd) {
    TwoRegisters bench;
    SweepReader reader;
    Sweep* sweep = Sweep::create(bench.subdomain);
    sweep->analyze();
    // A reported path is created and destroyed; it is no sweep.
    (*bench.subdomain->getLongestPaths().begin())->destroy();
    EXPECT_EQ(reader.heard, Names{});
    sweep->destroy();
    EXPECT_EQ(reader.heard, Names{"SWEEP[clk:rising -> clk:rising]"});
    EXPECT_EQ(reader.arrivals, (Table{{"a/C", {{0, {0, 0}}}},
                                      {"a/Q", {{0, {0, 0}}}},
                                      {"b/D", {{0, {3, 4}}}},
                                      {"b/check", {{0, {2, 6}}}}}));
    EXPECT_EQ(reader.required.at("b/D"), (Entries{{0, {8, 1}}}));
}

TEST(SweepObject, AListenerOfSweepsMayRefuseItsEnd) {
    const TwoRegisters bench;
    SweepReader reader;
    Sweep* sweep = Sweep::create(bench.subdomain);
    reader.fails = true;
    expectThrown({"refused", [&] { sweep->destroy(); }, typeid(Ruvex::Error), "no end", {}});
    Sweep::abandon(sweep);
    EXPECT_EQ(reader.heard, Names(2, "SWEEP[clk:rising -> clk:rising]"));
}

TEST(SweepObject, IsNamedAfterItsSubdomain) {
    Builder design;
    Pole* clk = design.addClockSource("clk");
    Pole* gen = design.addClockSource("gen");
    const struct {
        Pole* launch;
        Pole* latch;
        Pelko::ClockMode::Code launchMode;
        Pelko::ClockMode::Code latchMode;
        const char* alias;
    } rows[] = {
        {clk, clk, rising, rising, "SWEEP[clk:rising -> clk:rising]"},
        {clk, gen, rising, falling, "SWEEP[clk:rising -> gen:falling]"},
        {nullptr, gen, none, falling, "SWEEP[none -> gen:falling]"},
        {clk, nullptr, falling, none, "SWEEP[clk:falling -> none]"},
        {nullptr, nullptr, none, none, "SWEEP[none -> none]"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        const SweepPointer sweep(
            Sweep::create(design.addSubdomain(row.launch, row.latch, row.launchMode, row.latchMode)));
        EXPECT_EQ(sweep->getAlias(), row.alias);
        EXPECT_EQ(sweep->getReprLabel(), row.alias);
        EXPECT_EQ(sweep->_getLabel(), std::string("Sweep ") + row.alias);
        EXPECT_EQ(sweep->getClass(), "Sweep");
    }
}

TEST(SweepObject, NewOneAnswersFalseAndLeavesTheArgumentAlone) {
    TwoRegisters bench;
    const SweepPointer sweep(Sweep::create(bench.subdomain));
    for (const auto& [what, lookUp] : lookUps)
        for (Pole* pole : {bench.a.clock, bench.b.clock, bench.b.check, static_cast<Pole*>(nullptr)}) {
            SCOPED_TRACE(std::string(what) + " of " + nameOf(pole));
            TimingMap out{{7, Timing(Delay(1), Delay(2))}};
            EXPECT_FALSE(lookUp(*sweep, pole, out));
            EXPECT_EQ(out, (TimingMap{{7, Timing(Delay(1), Delay(2))}}));
        }
}

TEST(SweepObject, LookUpsCopyOut) {
    TwoRegisters bench;
    const SweepPointer sweep(Sweep::create(bench.subdomain));
    sweep->analyze();
    // Launch at 0, arc (3, 4), hold 1 and setup 2 at the check; requirements from the relations 10 and 0.
    const struct {
        std::size_t lookUp;
        Pole* pole;
        bool found;
        TimingMap map;
    } rows[] = {
        {0, bench.b.data, true, {}},
        {0, bench.clk, false, {}},
        {1, bench.b.data, true, {}},
        {1, bench.clk, false, {}},
        {2, bench.b.data, true, {{0, Timing(Delay(3), Delay(4))}}},
        {2, bench.b.check, true, {{0, Timing(Delay(2), Delay(6))}}},
        {2, bench.clk, false, {}},
        {3, bench.b.check, true, {{0, Timing(Delay(10), Delay(0))}}},
        {3, bench.b.data, true, {{0, Timing(Delay(8), Delay(1))}}},
        {3, bench.b.clock, false, {}},
        {4, bench.b.clock, true, {{0, Timing(Delay(0), Delay(0))}}},
        {4, bench.a.clock, false, {}},
        {5, bench.a.clock, true, {{0, Timing(Delay(0), Delay(0))}}},
        {5, bench.b.clock, false, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(lookUps[row.lookUp].first) + " of " + nameOf(row.pole));
        TimingMap out;
        EXPECT_EQ(lookUps[row.lookUp].second(*sweep, row.pole, out), row.found);
        EXPECT_EQ(out, row.map);
        // The result is a copy.
        out[9] = Timing();
        TimingMap again;
        lookUps[row.lookUp].second(*sweep, row.pole, again);
        EXPECT_EQ(again, row.map);
    }
}

struct Line {
    std::string name;
    std::string label;
    bool operator==(const Line&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Line& line) {
        return out << line.name << "=" << line.label;
    }
};

std::vector<Line> linesOf(const Ruvex::Record& record) {
    std::vector<Line> lines;
    for (const auto& slot : record.getSlots()) {
        lines.push_back({slot->getName(), slot->isHeader() ? "header" : slot->getDataLabel()});
        EXPECT_EQ(slot->getOwner(), &record) << slot->getName();
    }
    return lines;
}

TEST(SweepObject, HasNoRecordOutsideDebugMode) {
    TwoRegisters bench;
    const SweepPointer sweep(Sweep::create(bench.subdomain));
    const DebugMode quiet(false);
    EXPECT_EQ(std::unique_ptr<Ruvex::Record>(sweep->_getRecord()), nullptr);
    EXPECT_FALSE(sweep->_hasRecord());
}

TEST(SweepObject, RecordShowsTheMaps) {
    TwoRegisters bench;
    const SweepPointer sweep(Sweep::create(bench.subdomain));
    const DebugMode debug(true);
    {
        // A look-up inserts nothing.
        TimingMap out;
        for (const auto& lookUp : lookUps)
            lookUp.second(*sweep, bench.a.clock, out);
        const std::unique_ptr<Ruvex::Record> record(sweep->_getRecord());
        ASSERT_NE(record, nullptr);
        EXPECT_EQ(record->_getLabel(), "Sweep SWEEP[clk:rising -> clk:rising]");
        EXPECT_EQ(linesOf(*record), (std::vector<Line>{{"Sweep", "header"},
                                                       {"Subdomain", "Subdomain clk:rising -> clk:rising"},
                                                       {"DataAT Map", "map:{empty}"},
                                                       {"DataRT Map", "map:{empty}"},
                                                       {"LatchAT Map", "map:{empty}"},
                                                       {"LaunchAT Map", "map:{empty}"},
                                                       {"Arrival Timing", "[undefined]"}}));
    }
    sweep->analyze();
    const std::unique_ptr<Ruvex::Record> record(sweep->_getRecord());
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(linesOf(*record), (std::vector<Line>{{"Sweep", "header"},
                                                   {"Subdomain", "Subdomain clk:rising -> clk:rising"},
                                                   {"DataAT Map", "map:{4 elements}"},
                                                   {"DataRT Map", "map:{4 elements}"},
                                                   {"LatchAT Map", "map:{1 element}"},
                                                   {"LaunchAT Map", "map:{1 element}"},
                                                   {"Arrival Timing", "[2:6]"}}));
    // The record of the maps can be opened down to the timings.
    const std::unique_ptr<Ruvex::Record> poles(record->getSlots()[2]->getDataRecord());
    ASSERT_NE(poles, nullptr);
    EXPECT_EQ(linesOf(*poles), (std::vector<Line>{{"Pole a/C", "map:{1 element}"},
                                                  {"Pole a/Q", "map:{1 element}"},
                                                  {"Pole b/D", "map:{1 element}"},
                                                  {"Pole b/check", "map:{1 element}"}}));
    const std::unique_ptr<Ruvex::Record> classes(poles->getSlots()[2]->getDataRecord());
    ASSERT_NE(classes, nullptr);
    EXPECT_EQ(linesOf(*classes), (std::vector<Line>{{"0", "[3:4]"}}));
}

TEST(SweepAnalyze, SearchesWhatTheAnalyzerAsksFor) {
    const struct {
        const char* what;
        bool longest;
        bool shortest;
        unsigned long count;
        int limit;
        Names heard;
    } rows[] = {
        {"neither", false, false, 1, maximum, {}},
        {"longest", true, false, 1, maximum, {"+ longest a/C -> b/check"}},
        {"shortest", false, true, 1, maximum, {"+ shortest a/C -> b/check"}},
        {"both, longest first",
         true,
         true,
         1,
         maximum,
         {"+ longest a/C -> b/check", "+ shortest a/C -> b/check"}},
        {"both, none to be kept", true, true, 0, maximum, {}},
        // The longest path has a slack of 10 - 6, the shortest one of 2 - 0.
        {"a limit that both pass",
         true,
         true,
         1,
         4,
         {"+ longest a/C -> b/check", "+ shortest a/C -> b/check"}},
        {"a limit that only hold passes", true, true, 1, 3, {"+ shortest a/C -> b/check"}},
        {"a limit that none passes", true, true, 1, 1, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        TwoRegisters bench;
        Pelko::analyzer->setLongestPath(row.longest);
        Pelko::analyzer->setShortestPath(row.shortest);
        Pelko::analyzer->setPathCount(row.count);
        Pelko::analyzer->setPathLimit(Delay(row.limit));
        const SweepPointer sweep(Sweep::create(bench.subdomain));
        const Listener listener;
        sweep->analyze();
        EXPECT_EQ(listener.heard, row.heard);
        // Only the three propagations ran: no slack is written.
        TimingMap map;
        EXPECT_TRUE(sweep->hasLaunchTimingMap(bench.a.clock, map));
        EXPECT_TRUE(sweep->hasArrivalTimingMap(bench.b.check));
        EXPECT_TRUE(sweep->hasRequireTimingMap(bench.a.clock));
        EXPECT_EQ(int(bench.subdomain->getLAT()), 6);
        EXPECT_EQ(namesOf(Pelko::cell->getEdges(),
                          [](const Pelko::Edge* edge) { return edge->getSlack().isDefined(); }),
                  Names{});
        EXPECT_EQ(marked(), Names{});
    }
}

TEST(SweepAnalyze, MergesNoPortSlacks) {
    Builder design;
    Pole* clk = design.addClockSource("clk", 10);
    Pole* in = design.addInput("in");
    Pole* out = design.addOutput("out");
    design.connect(in, out, 1, 2);
    Pelko::Subdomain* subdomain = design.addSubdomain(clk, clk);
    subdomain->captureLaunch(in);
    subdomain->captureLatch(out);
    subdomain->setSetupRelation(Delay(10));
    subdomain->setHoldRelation(Delay(0));
    const SweepPointer sweep(Sweep::create(subdomain));
    sweep->analyze();
    EXPECT_EQ(int(Pelko::analyzer->getIODelayLongestSlack(in)), undefined);
    EXPECT_EQ(int(Pelko::analyzer->getIODelayShortestSlack(out)), undefined);
}

TEST(SweepAnalyze, PassesExceptionsOn) {
    Builder design;
    Pole* in = design.addInput("in");
    Pole* first = design.addOutput("first");
    Pole* second = design.addPole("second");
    design.connect(in, first, 1, 2);
    design.connect(in, second, 1, 2);
    Pelko::Subdomain* subdomain = design.addSubdomain(nullptr, nullptr, none, none);
    subdomain->captureLaunch(in);
    subdomain->captureLatch(first);
    subdomain->captureLatch(second);
    const SweepPointer sweep(Sweep::create(subdomain));
    expectThrown({"a latch leaf that is no port",
                  [&] { sweep->analyze(); },
                  typeid(Ruvex::InvalidRequest),
                  "Not an output pole",
                  {"Sweep", "arrivalAnalyze", 1280}});
    // The maps keep what was filled so far; later phases have not run.
    EXPECT_TRUE(sweep->hasArrivalTimingMap(first));
    EXPECT_FALSE(sweep->hasArrivalTimingMap(second));
    EXPECT_FALSE(sweep->hasRequireTimingMap(first));
    EXPECT_EQ(subdomain->getLongestPaths().getCount(), 0U);
}

TEST(SweepAnalyze, AStopRequestEndsEveryPhase) {
    const struct {
        const char* what;
        void (*phase)(Sweep&);
    } phases[] = {
        {"clock", [](Sweep& sweep) { sweep.clockAnalyze(); }},
        {"arrival", [](Sweep& sweep) { sweep.arrivalAnalyze(); }},
        {"required", [](Sweep& sweep) { sweep.requireAnalyze(); }},
        {"longest", [](Sweep& sweep) { sweep.searchLongestPaths(Delay::getMaximum(), 1); }},
        {"shortest", [](Sweep& sweep) { sweep.searchShortestPaths(Delay::getMaximum(), 1); }},
    };
    const struct {
        const char* what;
        bool batch;
        int elapsed; // in ms
        bool stops;
    } rows[] = {
        {"in batch mode nothing is pumped", true, 1000, false},
        {"the timer shows too little", false, 0, false},
        {"pumped", false, 1000, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        TwoRegisters bench;
        const SweepPointer sweep(Sweep::create(bench.subdomain));
        for (const auto& [what, phase] : phases) {
            SCOPED_TRACE(what);
            const auto prepare = [&](bool batch, int elapsed) {
                Pelko::application->setBatch(batch);
                Pelko::application->getEventTimer() = QTime::currentTime().addMSecs(-elapsed);
            };
            prepare(row.batch, row.elapsed);
            Pelko::application->requestStop();
            if (row.stops)
                expectThrown({what,
                              [&, run = phase] { run(*sweep); },
                              typeid(Ruvex::Interruption),
                              "stopped by the user",
                              {}});
            else
                EXPECT_NO_THROW(phase(*sweep));
            EXPECT_EQ(Pelko::application->isStopRequested(), !row.stops);
            // A stopped phase leaves no marks for the next one.
            EXPECT_EQ(marked(), Names{});
            // The next phase uses the results of this one.
            Pelko::application->cancelStop();
            prepare(true, 0);
            phase(*sweep);
        }
    }
}

} // namespace
