// The event pump: when a run yields to the host, and that a stop request ends it wherever it is heard.
#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"
#include "tests/support/Thrown.h"

#include "Pelko/CPath.h"
#include "Pelko/Path.h"
#include "Vorlen/Sweep.h"

#include <gtest/gtest.h>

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEvent>
#include <QTime>

#include <functional>

using Pelko::analyzer;
using Pelko::application;
using Pelko::Object;
using Pelko::Pole;
using Support::Builder;
using Support::Lines;
using Support::marked;
using Support::Names;
using Support::namesOf;
using Support::Register;
using Support::subdomains;

namespace {

constexpr int hour = 3'600'000; // in ms

// Sets the event timer to this many milliseconds.
void setElapsed(int milliseconds) {
    application->getEventTimer() = QTime::currentTime().addMSecs(-milliseconds);
}

int elapsed() {
    const int since = application->getEventTimer().msecsTo(QTime::currentTime());
    return since < 0 ? since + 24 * hour : since; // midnight has passed
}

class EventPump : public testing::Test {
protected:
    EventPump() { application->setBatch(false); }

    void addDesign() {
        clk_ = design_.addClockSource("clk", 10);
        const Register a = design_.addRegister("a", clk_);
        const Register b = design_.addRegister("b", clk_);
        const Register c = design_.addRegister("c", clk_, Support::falling);
        design_.connect(a.output, b.data, 2, 5);
        design_.connect(a.output, c.data, 2, 5);
        check_ = b.check;
        clock_ = a.clock;
    }
    // The next launch completes.
    void expectCompletes() {
        const Support::Recorder console;
        EXPECT_EQ(marked(), Names{});
        EXPECT_FALSE(application->isStopRequested()) << "a request is heard once";
        setElapsed(hour);
        EXPECT_TRUE(tool_->launch());
        EXPECT_TRUE(console.isEmpty());
        EXPECT_EQ(namesOf(tool_->getLoopPoles()), Names{});
        tool_->loopOpen();
        tool_->loopClose();
    }

    Builder design_;
    Support::ToolPointer tool_ = Support::makeTool();
    Support::Recorder console_;
    Pole* clk_ = nullptr;
    Pole* clock_ = nullptr;
    Pole* check_ = nullptr;
};

const Lines stopped{"error: Analyzing aborted [stopped by the user]"};

// --- When ---

struct WhenRow {
    bool batch;
    int elapsed;
    bool heard;
};

TEST_F(EventPump, AfterAQuarterOfASecond) {
    const WhenRow rows[] = {
        {false, 0, false}, {false, 100, false}, {false, 251, true},  {false, hour, true},
        {true, 0, false},  {true, 251, false},  {true, hour, false},
    };
    addDesign();
    for (const WhenRow& row : rows) {
        SCOPED_TRACE(testing::Message() << "batch " << row.batch << ", elapsed " << row.elapsed);
        application->setBatch(row.batch);
        bool completed = false;
        // A machine may be so slow that the timer runs up during the launch: then it tries again.
        for (int tries = 0; tries < 50; ++tries) {
            console_.clear();
            setElapsed(row.elapsed);
            application->requestStop();
            completed = tool_->launch();
            if (row.heard || row.batch || (completed && elapsed() <= 250))
                break;
        }
        EXPECT_EQ(completed, !row.heard);
        EXPECT_EQ(console_.getLines(), row.heard ? stopped : Lines{});
        EXPECT_EQ(application->isStopRequested(), !row.heard);
        if (row.elapsed == hour) {
            EXPECT_EQ(elapsed() < hour / 2, row.heard) << "the timer is restarted";
        }
        application->cancelStop();
    }
}

// All events are processed after the timer has been restarted.
TEST_F(EventPump, ProcessesEvents) {
    class Receiver : public QObject {
    public:
        bool event(QEvent* event) override {
            if (event->type() != QEvent::User)
                return QObject::event(event);
            ++heard;
            elapsedThen = elapsed();
            return true;
        }
        int heard = 0;
        int elapsedThen = 0;
    };
    addDesign();
    for (const bool batch : {true, false}) {
        SCOPED_TRACE(batch);
        Receiver receiver;
        for (int i = 0; i < 3; ++i)
            QCoreApplication::postEvent(&receiver, new QEvent(QEvent::User));
        application->setBatch(batch);
        setElapsed(hour);
        EXPECT_TRUE(tool_->launch());
        EXPECT_EQ(receiver.heard, batch ? 0 : 3);
        EXPECT_LT(receiver.elapsedThen, hour / 2);
    }
}

// An exception that leaves an event handler stops the run like an exception of a phase.
TEST_F(EventPump, VerboseClosingLine) {
    addDesign();
    analyzer->setVerbose(true);
    setElapsed(hour);
    application->requestStop();
    EXPECT_FALSE(tool_->launch());
    EXPECT_EQ(console_.getTimelessLines(), (Lines{"Analyzing project with VORLEN-4.0 [exhaustive mode]",
                                                  "  error: Analyzing aborted [stopped by the user]",
                                                  "  Analyzing project not completed in %"}));
}

// --- Where ---

// Each phase called directly: those that walk over the design obey a request, the others leave it pending.
TEST_F(EventPump, InPhases) {
    addDesign();
    Pelko::CPath::create({{clock_}, {check_}});
    Vorlen::StemPoleSetMap stems;
    struct Row {
        const char* what;
        std::function<void()> phase;
        bool heard;
    };
    const Row rows[] = {
        {"prolog", [this] { tool_->prolog(); }, false},
        {"pllFeedbackStem", [this] { tool_->pllFeedbackStem(); }, false},
        {"clockStem", [&] { tool_->clockStem(stems); }, true},
        {"dataStem", [&] { tool_->dataStem(stems); }, true},
        {"createDomains", [this] { tool_->createDomains(); }, true},
        {"updateDomains", [this] { tool_->updateDomains(); }, true},
        {"updateRelationship", [this] { tool_->updateRelationship(); }, false},
        {"tagConstrainedPaths", [this] { tool_->tagConstrainedPaths(); }, true},
        {"calculatePeriod", [this] { tool_->calculatePeriod(clk_); }, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        tool_->reset();
        setElapsed(hour);
        application->requestStop();
        if (row.heard) {
            Support::expectThrown(
                {row.what, row.phase, typeid(Ruvex::Interruption), "stopped by the user", {}});
            EXPECT_EQ(marked(), Names{});
        } else {
            EXPECT_NO_THROW(row.phase());
        }
        EXPECT_EQ(application->isStopRequested(), !row.heard);
        application->cancelStop();
        tool_->reset();
        EXPECT_NO_THROW(row.phase()) << "undisturbed";
    }
}

// One step of a walk obeys at the first pole that it leaves or, if it is a step of constrained paths, that is
// marked.
TEST_F(EventPump, InSteps) {
    addDesign();
    Pole* known = design_.addPole("known");
    known->mark();
    Vorlen::StemPoleSetMap work;
    Vorlen::PoleSet hit;
    Vorlen::EdgeList path;
    Vorlen::EdgeSet tagged;
    bool found = false;
    unsigned long loops = 0;
    const auto constrained = [&](Pole* pole) {
        tool_->constrainedPathStem(pole, Pelko::Poles(), hit, path, tagged, found, loops);
    };
    struct Row {
        const char* what;
        std::function<void()> step;
        Names marked;
    };
    const Row rows[] = {
        {"clockStem", [&] { tool_->clockStem(clock_, work, clock_, loops); }, {"clk", "a/C"}},
        {"dataStem", [&] { tool_->dataStem(check_, work, loops); }, {"a/C"}},
        {"constrainedPathStem", [&] { constrained(clock_); }, {"clk", "a/C"}},
        {"constrainedPathStem, marked", [&] { known->mark(), constrained(known); }, {"known"}},
    };
    for (const Row& row : rows) {
        analyzer->unmark();
        setElapsed(hour);
        application->requestStop();
        Support::expectThrown({row.what, row.step, typeid(Ruvex::Interruption), "stopped by the user", {}});
        EXPECT_EQ(marked(), row.marked) << row.what;
        tool_->reset();
    }
}

// --- Within a launch ---

// Requests a stop, and sets the timer back, when the n-th object of a class is created or destroyed.
template <class Kind>
class StopAt : public Pelko::ObjectListener {
public:
    enum Moment { Created, Destroyed };

    StopAt(Moment moment, int count) : moment_(moment), left_(count) { Object::addListener(this); }
    ~StopAt() override { Object::removeListener(this); }
    void onCreated(Object* object) override { count(Created, object); }
    void onDestroyed(Object* object) override { count(Destroyed, object); }

private:
    void count(Moment moment, Object* object) {
        if (moment != moment_ || !dynamic_cast<Kind*>(object) || --left_ != 0)
            return;
        setElapsed(hour);
        application->requestStop();
    }

    Moment moment_;
    int left_;
};

// Counts created objects, and how many of them still exist.
template <class Kind>
class Counter : public Pelko::ObjectListener {
public:
    Counter() { Object::addListener(this); }
    ~Counter() override { Object::removeListener(this); }
    void onCreated(Object* object) override {
        if (dynamic_cast<Kind*>(object))
            ++created, ++live;
    }
    void onDestroyed(Object* object) override {
        if (dynamic_cast<Kind*>(object))
            --live;
    }
    int created = 0;
    int live = 0;
};

TEST_F(EventPump, BeforeTheDomains) {
    addDesign();
    setElapsed(hour);
    application->requestStop();
    EXPECT_FALSE(tool_->launch());
    EXPECT_EQ(console_.getLines(), stopped);
    EXPECT_EQ(subdomains(), Names{});
    expectCompletes();
}

TEST_F(EventPump, BetweenPhases) {
    // Nothing to walk: only the launch itself can obey the request.
    for (const bool domainsOnly : {true, false}) {
        SCOPED_TRACE(domainsOnly);
        analyzer->setDomainsOnly(domainsOnly);
        setElapsed(hour);
        application->requestStop();
        EXPECT_EQ(tool_->launch(), domainsOnly) << "not before the domains are there";
        EXPECT_EQ(application->isStopRequested(), domainsOnly);
        application->cancelStop();
    }
    EXPECT_EQ(console_.getLines(), stopped);
    expectCompletes();
}

// A stop right after the domains were created: their relations are not set yet.
TEST_F(EventPump, AfterTheDomains) {
    addDesign();
    const StopAt<Pelko::Subdomain> stop(StopAt<Pelko::Subdomain>::Created, 2);
    EXPECT_FALSE(tool_->launch());
    EXPECT_EQ(console_.getLines(), stopped);
    EXPECT_EQ(subdomains(), (Names{"clk:rising -> clk:rising", "clk:rising -> clk:falling"}));
    for (const Pelko::Subdomain* subdomain : analyzer->getDomain(clk_, clk_)->getSubdomains())
        EXPECT_EQ(subdomain->getSetupRelation(), Pelko::Delay::getUndefined());
    expectCompletes();
}

TEST_F(EventPump, InASweep) {
    addDesign();
    const Counter<Vorlen::Sweep> sweeps;
    {
        const StopAt<Vorlen::Sweep> stop(StopAt<Vorlen::Sweep>::Created, 2);
        EXPECT_FALSE(tool_->launch());
    }
    EXPECT_EQ(console_.getLines(), stopped);
    EXPECT_EQ(sweeps.created, 2);
    EXPECT_EQ(sweeps.live, 0);
    EXPECT_EQ(Builder::findSubdomain(clk_, clk_, Support::rising, Support::falling)->getLAT(),
              Pelko::Delay::getUndefined())
        << "in its first walk";
    expectCompletes();
}

TEST_F(EventPump, AfterASweep) {
    addDesign();
    const Counter<Vorlen::Sweep> sweeps;
    const Counter<Pelko::Path> paths;
    {
        const StopAt<Vorlen::Sweep> stop(StopAt<Vorlen::Sweep>::Destroyed, 1);
        EXPECT_FALSE(tool_->launch());
    }
    EXPECT_EQ(console_.getLines(), stopped);
    EXPECT_EQ(sweeps.created, 2);
    EXPECT_EQ(sweeps.live, 0);
    EXPECT_EQ(paths.created, 1) << "of the first sweep";
    expectCompletes();
}

// --- Events that change the design ---

// Host events are due whenever a run checks. At one of the times when they are processed, a pole is created,
// far from all paths.
class Disturbance {
public:
    Disturbance(Builder& design, int at)
        : connection_(QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake,
                                       [this, &design, at] {
                                           if (++count_ == at)
                                               design.addPole();
                                           setElapsed(hour);
                                       })) {
        setElapsed(hour);
    }
    ~Disturbance() { QObject::disconnect(connection_); }
    Disturbance(const Disturbance&) = delete;
    Disturbance& operator=(const Disturbance&) = delete;
    int getCount() const { return count_; }

private:
    int count_ = 0;
    QMetaObject::Connection connection_;
};

struct Result {
    Names subdomains, paths, arcs;
    int processed = 0; // how often events were processed
};

// Launches on a design with long data paths, so that host events are processed in the middle of them.
Result launchDisturbed(int at) {
    Builder design;
    application->setBatch(false);
    Pole* clk = design.addClockSource("clk", 1000);
    const Register a = design.addRegister("a", clk), b = design.addRegister("b", clk),
                   c = design.addRegister("c", clk, Support::falling), d = design.addRegister("d", clk);
    Pole* stem = design.addChain(a.output, 300);
    design.connect(stem, b.data, 2, 5);
    design.connect(stem, c.data, 3, 4);
    design.connect(design.addChain(c.output, 10), d.data, 1, 1);
    Pelko::FPath::create({{a.clock}, {c.check}});
    Pelko::MPath::create({{a.clock}, {b.check}}, 2);
    const Support::ToolPointer tool = Support::makeTool();
    const Disturbance disturbance(design, at);
    EXPECT_TRUE(tool->launch());
    EXPECT_EQ(marked(), Names{});

    Result result;
    result.processed = disturbance.getCount();
    for (const Pelko::Domain* domain : analyzer->getDomains())
        for (const Pelko::Subdomain* subdomain : domain->getSubdomains()) {
            std::string text = subdomain->getName() + " " + subdomain->getSAT()._getLabel() + " " +
                               subdomain->getLAT()._getLabel() + ":";
            for (const Pole* leaf : subdomain->getLaunchLeaves())
                text += " " + Support::nameOf(leaf);
            text += " to";
            for (const Pole* leaf : subdomain->getLatchLeaves())
                text += " " + Support::nameOf(leaf);
            result.subdomains.push_back(text);
            for (const auto& paths : {subdomain->getLongestPaths(), subdomain->getShortestPaths()})
                for (const Pelko::Path* path : paths)
                    result.paths.push_back(path->getSlack()._getLabel() + " " + Support::nameOf(path));
        }
    for (const Pelko::Edge* edge : Pelko::cell->getEdges())
        result.arcs.push_back(edge->getSlack()._getLabel() + " " + edge->getPseudoMask()._getLabel());
    return result;
}

// A multicycle halves the latest arrival, and a false path has no arrival. A phase reads the design again
// after the change, but does nothing twice.
TEST(EventsThatChangeTheDesign, ChangeNoResult) {
    const Result calm = launchDisturbed(0);
    EXPECT_EQ(calm.subdomains, (Names{"clk:rising -> clk:rising 302 153: a/C to b/C",
                                      "clk:rising -> clk:falling undefined undefined: a/C to c/C",
                                      "clk:falling -> clk:rising 11 11: c/C to d/C"}));
    EXPECT_EQ(calm.paths, (Names{"1695 a/C -> b/check", "489 c/C -> d/check", "-489 c/C -> d/check"}));
    EXPECT_GT(calm.processed, 20);
    for (int at = 1; at <= calm.processed; ++at) {
        SCOPED_TRACE(at);
        const Result disturbed = launchDisturbed(at);
        EXPECT_EQ(disturbed.subdomains, calm.subdomains);
        EXPECT_EQ(disturbed.paths, calm.paths);
        EXPECT_EQ(disturbed.arcs, calm.arcs);
    }
}

// --- In a long walk ---

constexpr std::size_t depth = 150'000;

// A stop at the first pole that the walk leaves, when the whole chain is on the stack.
TEST_F(EventPump, AtTheBottomOfALongWalk) {
    Pole* in = design_.addInput("in");
    design_.connect(design_.addChain(in, depth), design_.addOutput("out"));
    setElapsed(hour);
    application->requestStop();
    EXPECT_FALSE(tool_->launch());
    EXPECT_EQ(console_.getLines(), stopped);
    EXPECT_EQ(subdomains(), Names{});
    EXPECT_EQ(tool_->getLoopPoles().getCount(), depth + 1) << "left to the next reset";
    expectCompletes();
    EXPECT_EQ(subdomains(), Names{"none -> none"});
}

// A stop on the way back: an earlier end point is done, the walk of the next one is long, and a third is
// never reached.
TEST_F(EventPump, OnTheWayBackFromALongWalk) {
    Pole* in = design_.addInput("in");
    const auto addOutput = [&](const std::string& name, std::size_t length) {
        Pole* out = design_.addOutput(name);
        design_.constrainOutput(out, design_.addClockSource("clock of " + name));
        design_.connect(design_.addChain(in, length), out);
    };
    addOutput("first", 1);
    addOutput("long", depth);
    addOutput("third", 1);
    {
        const StopAt<Pelko::Domain> stop(StopAt<Pelko::Domain>::Created, 1);
        EXPECT_FALSE(tool_->launch());
    }
    EXPECT_EQ(console_.getLines(), stopped);
    EXPECT_EQ(subdomains(), Names{"none -> clock of first:rising"});
    expectCompletes();
    EXPECT_EQ(subdomains(), (Names{"none -> clock of first:rising", "none -> clock of long:rising",
                                   "none -> clock of third:rising"}));
}

} // namespace
