// A fault at every possible place of a launch: at each processing of events, each call of a listener, each
// call of an adjuster, each allocation. The launch reports the fault, the database is as usable as before,
// the next launch has the results of a first one, and nothing leaks.
//
// VORLEN_SEED chooses other designs.
#include "Allocator.h"
#include "tests/oracle/RandomDesign.h"
#include "tests/oracle/Snapshot.h"
#include "tests/support/Builder.h"

#include "Vorlen/Tool.h"

#include <QAbstractEventDispatcher>
#include <QTime>

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr unsigned long designCount = 12;

unsigned long firstSeed() {
    const char* text = std::getenv("VORLEN_SEED");
    return text && *text ? std::strtoul(text, nullptr, 10) : 1;
}

// Designs that keep the contract, and that are in the state before a first launch.
oracle::Knobs knobs() {
    oracle::Knobs knobs;
    knobs.throwing = false;
    knobs.earlierResults = false;
    knobs.domainsOnly = false;
    knobs.brokenContract = false;
    return knobs;
}

// A fault that is armed during its lifetime, and happens at the n-th opportunity.
class Fault {
public:
    virtual ~Fault() = default;
    virtual bool hasCome() const = 0;
};
using Arm = std::function<std::unique_ptr<Fault>(unsigned long number)>;

std::string marks() {
    std::string text;
    for (const std::string& name : Support::marked())
        text += name + " ";
    return text;
}

struct Seen {
    bool completed = false;
    std::string console, state, marks;
};

// Brings the design back to the state before the first launch. Clearing the results is not enough: the next
// launch would reuse existing domains, even those of an interrupted domain phase, and would not walk over
// arcs that an earlier launch has cut.
class Beginning {
public:
    Beginning() {
        for (Pelko::Edge* edge : Pelko::cell->getEdges())
            if (edge->isActive())
                active_.push_back(edge);
    }
    void restore() const {
        Pelko::analyzer->clearResults();
        while (!Pelko::analyzer->getDomains().isEmpty())
            Pelko::analyzer->getDomains().getFirst()->destroy();
        for (Pelko::Edge* edge : active_)
            edge->activate();
    }

private:
    std::vector<Pelko::Edge*> active_;
};

Seen launch(Vorlen::Tool& tool, oracle::ConsoleRecorder& console) {
    Seen seen;
    seen.completed = tool.launch();
    seen.console = console.take();
    seen.state = oracle::stateOfModel();
    seen.marks = marks();
    return seen;
}

[[noreturn]] void fail() { throw std::runtime_error("whatever"); }

unsigned long adjustmentsLeft = 0; // adjustments until one fails; 0: none fails

// Every exception gets an adjuster that keeps no record of its calls.
void prepare() {
    Pelko::application->setBatch(true);
    Pelko::analyzer->setVerbose(false);
    for (Pelko::CPath* path : Pelko::analyzer->getCPaths())
        path->setAdjuster([](const Pelko::Subdomain&, bool longest) {
            if (adjustmentsLeft != 0 && --adjustmentsLeft == 0)
                fail();
            return Pelko::Delay(longest ? -1 : 1);
        });
}

Seen firstLaunch(unsigned long seed) {
    oracle::RandomDesign design(seed, knobs());
    prepare();
    const Support::ToolPointer tool = Support::makeTool();
    oracle::ConsoleRecorder console;
    return launch(*tool, console);
}

// The lines that report errors, without their indentation: it depends on the phase in debug mode.
std::string errorsIn(const std::string& console) {
    std::string errors;
    std::istringstream lines(console);
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with("error"))
            errors += line.substr(line.find(']') + 2) + "\n";
    return errors;
}

// One launch with the n-th fault, and one after it. Returns false if there is no n-th opportunity.
bool survives(unsigned long seed, unsigned long number, const Arm& arm, const std::string& report,
              const Seen& expected) {
    oracle::RandomDesign design(seed, knobs());
    prepare();
    const Beginning beginning;
    const Support::ToolPointer tool = Support::makeTool();
    oracle::ConsoleRecorder console;
    std::unique_ptr<Fault> fault = arm(number);
    Seen seen;
    seen.completed = tool->launch();
    const bool hasCome = fault->hasCome();
    fault.reset();
    seen.console = console.take();
    if (!hasCome) {
        EXPECT_TRUE(seen.completed);
        return false;
    }
    EXPECT_FALSE(seen.completed);
    EXPECT_EQ(errorsIn(seen.console), report);
    // The last phase marks the poles of failing arcs; all other phases clear their marks.
    if (const std::string left = marks(); !left.empty()) {
        EXPECT_EQ(left, expected.marks);
    }
    prepare();
    beginning.restore();
    seen = launch(*tool, console);
    EXPECT_TRUE(seen.completed);
    EXPECT_EQ(seen.console, expected.console);
    EXPECT_EQ(oracle::firstDifference(seen.state, expected.state), "");
    return true;
}

// Runs all faults of one design, until there is no further opportunity. Returns their number.
unsigned long everyFault(unsigned long seed, const Arm& arm, const std::string& report) {
    const Seen expected = firstLaunch(seed);
    EXPECT_TRUE(expected.completed);
    std::size_t before = Faults::liveBlocks();
    unsigned long number = 1;
    while (survives(seed, number, arm, report, expected) && !testing::Test::HasFailure()) {
        if (number > 1) { // what is created once per process exists now
            EXPECT_EQ(Faults::liveBlocks(), before);
        }
        before = Faults::liveBlocks();
        ++number;
    }
    return number - 1;
}

void onDesigns(const Arm& arm, const std::string& report, unsigned long leastFaults) {
    unsigned long faults = 0;
    const unsigned long first = firstSeed();
    for (unsigned long seed = first; seed < first + designCount && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        faults += everyFault(seed, arm, report);
    }
    std::cout << faults << " faults\n";
    EXPECT_GE(faults, leastFaults);
}

constexpr const char* strange = "Analyzing aborted [something strange...] (Tool, launch, 495)\n";

// --- The user stops the run ---

// Lets every pump process events, and requests a stop that the n-th one obeys.
class Stop final : public Fault {
public:
    explicit Stop(unsigned long number) : number_(number) {
        Pelko::application->setBatch(false);
        makeDue();
        connection_ = QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake,
                                       [this] { onPump(); });
        if (number_ == 1)
            Pelko::application->requestStop();
    }
    ~Stop() override {
        QObject::disconnect(connection_);
        Pelko::application->cancelStop();
    }
    bool hasCome() const override { return pumps_ + 1 >= number_ && !Pelko::application->isStopRequested(); }

private:
    static void makeDue() {
        constexpr int hour = 3'600'000; // ms
        Pelko::application->getEventTimer() = QTime::currentTime().addMSecs(-hour);
    }
    void onPump() {
        makeDue();
        if (++pumps_ + 1 == number_)
            Pelko::application->requestStop();
    }

    unsigned long number_, pumps_ = 0;
    QMetaObject::Connection connection_;
};

TEST(EveryFault, Interruption) {
    onDesigns([](unsigned long number) { return std::make_unique<Stop>(number); },
              "Analyzing aborted [stopped by the user]\n", 100);
}

// --- The host throws ---

// Throws when the n-th object is created or destroyed.
class ListenerFails final : public Fault, private Pelko::ObjectListener {
public:
    explicit ListenerFails(unsigned long number) : left_(number) { Pelko::Object::addListener(this); }
    ~ListenerFails() override { Pelko::Object::removeListener(this); }
    bool hasCome() const override { return left_ == 0; }

private:
    void onCreated(Pelko::Object*) override { count(); }
    void onDestroyed(Pelko::Object*) override { count(); }
    void count() {
        if (left_ != 0 && --left_ == 0)
            fail();
    }

    unsigned long left_;
};

TEST(EveryFault, Listener) {
    onDesigns([](unsigned long number) { return std::make_unique<ListenerFails>(number); }, strange, 100);
}

// The n-th call of an adjuster throws.
class AdjusterFails final : public Fault {
public:
    explicit AdjusterFails(unsigned long number) { adjustmentsLeft = number; }
    ~AdjusterFails() override { adjustmentsLeft = 0; }
    bool hasCome() const override { return adjustmentsLeft == 0; }
};

TEST(EveryFault, Adjuster) {
    onDesigns([](unsigned long number) { return std::make_unique<AdjusterFails>(number); }, strange, 10);
}

// --- There is no memory ---

// The n-th allocation fails. It is armed last in the construction, so that the fault's own allocations come
// before.
class NoMemory final : public Fault {
public:
    explicit NoMemory(unsigned long number) { Faults::failAllocation(number); }
    ~NoMemory() override { Faults::failAllocation(0); }
    bool hasCome() const override { return Faults::hasFailed(); }
};

TEST(EveryFault, Allocation) {
    onDesigns([](unsigned long number) { return std::make_unique<NoMemory>(number); }, strange, 1000);
}

} // namespace
