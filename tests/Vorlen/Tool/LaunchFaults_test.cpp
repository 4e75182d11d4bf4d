// The launch when a phase fails: what is reported, what stays, that the sweeps are ended, and that the next
// launch works.
#include "tests/support/Builder.h"
#include "tests/support/Recorder.h"
#include "tests/support/Thrown.h"

#include "Pelko/Path.h"
#include "Vorlen/Sweep.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>
#include <set>
#include <stdexcept>

#include <pthread.h>

using Pelko::analyzer;
using Pelko::Delay;
using Pelko::Object;
using Pelko::Pole;
using Support::Builder;
using Support::falling;
using Support::Lines;
using Support::Names;
using Support::none;
using Support::Register;
using Support::rising;
using Support::subdomains;

namespace {

// Counts the sweeps that exist.
class SweepCounter : public Pelko::ObjectListener {
public:
    SweepCounter() { Object::addListener(this); }
    ~SweepCounter() override { Object::removeListener(this); }
    void onCreated(Object* object) override {
        if (auto* sweep = dynamic_cast<Vorlen::Sweep*>(object)) {
            live_.insert(sweep);
            ++created_;
        }
    }
    void onDestroyed(Object* object) override { live_.erase(object); }
    std::size_t getLive() const { return live_.size(); }
    std::size_t getCreated() const { return created_; }

private:
    std::set<Object*> live_;
    std::size_t created_ = 0;
};

// Acts once, when the n-th object of a class is created or destroyed.
template <class Kind>
class Saboteur : public Pelko::ObjectListener {
public:
    enum Moment { Created, Destroyed };

    Saboteur(Moment moment, int count, std::function<void()> act)
        : moment_(moment), left_(count), act_(std::move(act)) {
        Object::addListener(this);
    }
    ~Saboteur() override { Object::removeListener(this); }
    void onCreated(Object* object) override { count(Created, object); }
    void onDestroyed(Object* object) override { count(Destroyed, object); }
    bool hasActed() const { return left_ <= 0; }

private:
    void count(Moment moment, Object* object) {
        if (moment == moment_ && dynamic_cast<Kind*>(object) && --left_ == 0)
            act_();
    }

    Moment moment_;
    int left_;
    std::function<void()> act_;
};

class LaunchFaults : public testing::Test {
protected:
    // Two domains; the first has the subdomains rising to rising and rising to falling.
    void addDesign() {
        clk_ = design_.addClockSource("clk", 10);
        a_ = design_.addRegister("a", clk_);
        b_ = design_.addRegister("b", clk_);
        const Register c = design_.addRegister("c", clk_, falling);
        design_.connect(a_.output, b_.data, 2, 5);
        design_.connect(a_.output, c.data, 2, 5);
        design_.connect(c.output, design_.addOutput("out"));
    }
    static Names all() {
        return {"clk:rising -> clk:rising", "clk:rising -> clk:falling", "clk:falling -> none"};
    }
    // A launch now completes, with all its results.
    void expectCompletes() {
        const Support::Recorder console;
        const SweepCounter sweeps;
        EXPECT_TRUE(tool_->launch());
        EXPECT_EQ(console.getLines(Support::Recorder::Level::Error), Lines{});
        EXPECT_EQ(sweeps.getLive(), 0U);
        EXPECT_EQ(sweeps.getCreated(), 3U);
        EXPECT_EQ(subdomains(), all());
        for (const Pelko::Domain* domain : analyzer->getDomains())
            for (const Pelko::Subdomain* subdomain : domain->getSubdomains())
                EXPECT_TRUE(subdomain->getLAT().isDefined()) << subdomain->getName();
        tool_->loopOpen();
        tool_->loopClose();
    }

    Builder design_;
    Support::ToolPointer tool_ = Support::makeTool();
    Support::Recorder console_;
    Pole* clk_ = nullptr;
    Register a_{}, b_{};
};

// --- A thread that is cancelled ---

// The cancellation passes through the launch, which destroys its sweeps and reports nothing.
TEST_F(LaunchFaults, ACancelledThreadEnds) {
    addDesign();
    const SweepCounter sweeps;
    const Saboteur<Vorlen::Sweep> saboteur(Saboteur<Vorlen::Sweep>::Created, 2, [] {
        pthread_cancel(pthread_self());
        pthread_testcancel();
    });
    pthread_t thread{};
    const auto launch = [](void* tool) -> void* {
        static_cast<Vorlen::Tool*>(tool)->launch();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, nullptr, launch, tool_.get()), 0);
    void* result = nullptr;
    ASSERT_EQ(pthread_join(thread, &result), 0);
    EXPECT_EQ(result, PTHREAD_CANCELED);
    EXPECT_EQ(sweeps.getCreated(), 2U);
    EXPECT_EQ(sweeps.getLive(), 0U);
    EXPECT_EQ(console_.getLines(), Lines{});
    expectCompletes();
}

// --- What is reported ---

const Ruvex::Place place = Ruvex::Error::locate("Host", "work", 12);

struct FaultRow {
    const char* what;
    void (*fault)();
    std::string line;
};

const FaultRow faultRows[] = {
    {"interruption", [] { throw Ruvex::Interruption("enough"); }, "error: Analyzing aborted [enough]"},
    {"located interruption", [] { throw Ruvex::Interruption("enough", place); },
     "error: Analyzing aborted [enough]"},
    {"exception", [] { throw Ruvex::Exception("strange"); }, "error: strange"},
    {"error", [] { throw Ruvex::Error("wrong", place); }, "error: wrong (Host, work, 12)"},
    {"critical", [] { throw Ruvex::Critical("broken", place); }, "error: broken (Host, work, 12)"},
    {"internal error", [] { throw Ruvex::InternalError("inside"); }, "error: inside"},
    {"invalid request", [] { throw Ruvex::InvalidRequest(Ruvex::InternalError("refused", place)); },
     "error: refused (Host, work, 12)"},
    {"factory failed", [] { throw Ruvex::FactoryFailed(Ruvex::InternalError("not made", place)); },
     "error: not made (Host, work, 12)"},
    {"fatal", [] { throw Ruvex::Fatal(Ruvex::InternalError("the end", place)); },
     "error: the end (Host, work, 12)"},
    // An exception that does not derive from the framework's.
    {"standard exception", [] { throw std::runtime_error("whatever"); },
     "error: Analyzing aborted [something strange...] (Tool, launch, 495)"},
    {"no memory", [] { throw std::bad_alloc(); },
     "error: Analyzing aborted [something strange...] (Tool, launch, 495)"},
    {"no exception class", [] { throw 42; },
     "error: Analyzing aborted [something strange...] (Tool, launch, 495)"},
};

class Reported : public LaunchFaults, public testing::WithParamInterface<FaultRow> {};

TEST_P(Reported, Row) {
    SCOPED_TRACE(GetParam().what);
    addDesign();
    for (const bool verbose : {false, true}) {
        SCOPED_TRACE(verbose);
        analyzer->setVerbose(verbose);
        const Saboteur<Pelko::Path> saboteur(Saboteur<Pelko::Path>::Created, 1, GetParam().fault);
        EXPECT_FALSE(tool_->launch());
        EXPECT_TRUE(saboteur.hasActed());
        EXPECT_EQ(console_.getTimelessLines(),
                  verbose ? (Lines{"Analyzing project with VORLEN-4.0 [exhaustive mode]",
                                   "  " + GetParam().line, "  Analyzing project not completed in %"})
                          : Lines{GetParam().line});
        EXPECT_EQ(console_.getLines(Support::Recorder::Level::Error).size(), 1U);
        EXPECT_EQ(Ruvex::console.getIndentation(), 0U);
        console_.clear();
    }
    expectCompletes();
}

INSTANTIATE_TEST_SUITE_P(Launch, Reported, testing::ValuesIn(faultRows));

TEST(LaunchWithoutDesign, NullAnalyzer) {
    const Support::ToolPointer tool = Support::makeTool();
    const Support::Recorder console;
    EXPECT_FALSE(tool->launch());
    EXPECT_EQ(console.getLines(), Lines{"error: Null analyzer (Tool, prolog, 650)"});
    const Builder design;
    EXPECT_TRUE(tool->launch());
}

// --- The places of faults ---

[[noreturn]] void fail() { throw std::runtime_error("whatever"); }

struct PlaceRow {
    const char* what;
    std::function<std::unique_ptr<Pelko::ObjectListener>()> sabotage;
    std::size_t sweeps; // number of created ones
    Names subdomains;   // those that remain
};

template <class Kind>
std::unique_ptr<Pelko::ObjectListener> failWhenCreated(int count) {
    return std::make_unique<Saboteur<Kind>>(Saboteur<Kind>::Created, count, fail);
}

template <class Kind>
std::unique_ptr<Pelko::ObjectListener> failWhenDestroyed(int count) {
    return std::make_unique<Saboteur<Kind>>(Saboteur<Kind>::Destroyed, count, fail);
}

class Aborted : public LaunchFaults, public testing::WithParamInterface<PlaceRow> {};

// Sweeps are destroyed and marks are cleared. Everything else stays, and the next run starts clean.
TEST_P(Aborted, Row) {
    const PlaceRow& row = GetParam();
    SCOPED_TRACE(row.what);
    addDesign();
    {
        const SweepCounter sweeps;
        const std::unique_ptr<Pelko::ObjectListener> saboteur = row.sabotage();
        EXPECT_FALSE(tool_->launch());
        EXPECT_EQ(console_.getLines(),
                  Lines{"error: Analyzing aborted [something strange...] (Tool, launch, 495)"});
        EXPECT_EQ(sweeps.getCreated(), row.sweeps);
        EXPECT_EQ(sweeps.getLive(), 0U);
    }
    EXPECT_EQ(Support::marked(), Names{});
    EXPECT_EQ(subdomains(), row.subdomains);
    analyzer->clearResults();
    expectCompletes();
}

const Names afterOne{"clk:rising -> clk:rising"};
const Names afterTwo{"clk:rising -> clk:rising", "clk:rising -> clk:falling"};
const Names afterAll{"clk:rising -> clk:rising", "clk:rising -> clk:falling", "clk:falling -> none"};

const PlaceRow placeRows[] = {
    {"first domain", [] { return failWhenCreated<Pelko::Domain>(1); }, 0, {}},
    {"first subdomain", [] { return failWhenCreated<Pelko::Subdomain>(1); }, 0, afterOne},
    {"second subdomain", [] { return failWhenCreated<Pelko::Subdomain>(2); }, 0, afterTwo},
    {"last subdomain", [] { return failWhenCreated<Pelko::Subdomain>(3); }, 0, afterAll},
    {"first sweep", [] { return failWhenCreated<Vorlen::Sweep>(1); }, 1, afterAll},
    {"second sweep", [] { return failWhenCreated<Vorlen::Sweep>(2); }, 2, afterAll},
    {"search of the first sweep", [] { return failWhenCreated<Pelko::Path>(1); }, 2, afterAll},
    {"search of the second sweep", [] { return failWhenCreated<Pelko::Path>(2); }, 2, afterAll},
    {"search of the last sweep", [] { return failWhenCreated<Pelko::Path>(4); }, 3, afterAll},
    {"end of the first sweep", [] { return failWhenDestroyed<Vorlen::Sweep>(1); }, 2, afterAll},
    {"end of the last sweep", [] { return failWhenDestroyed<Vorlen::Sweep>(3); }, 3, afterAll},
};

INSTANTIATE_TEST_SUITE_P(Launch, Aborted, testing::ValuesIn(placeRows));

// A listener that throws for every sweep throws again while the first exception is in flight. The launch must
// not terminate the program, so it has a process of its own.
TEST_F(LaunchFaults, EveryEndOfASweepFails) {
    class Failing : public Pelko::ObjectListener {
    public:
        void onDestroyed(Object* object) override {
            if (dynamic_cast<Vorlen::Sweep*>(object))
                fail();
        }
    } failing;
    addDesign();
    Object::addListener(&failing);
    EXPECT_EXIT(std::exit(tool_->launch() ? 1 : 0), testing::ExitedWithCode(0), "");
    Object::removeListener(&failing);
}

// The same at the destruction of a sweep, in a listener of sweeps: it is also called for the sweeps that are
// destroyed because of the exception.
TEST_F(LaunchFaults, InAListenerOfSweeps) {
    class Failing : public Pelko::SweepListener {
    public:
        Failing() { Object::addSweepListener(this); }
        ~Failing() override { Object::removeSweepListener(this); }
        void onSweepDestroyed(Object*) override {
            if (++told == 1)
                fail();
        }
        int told = 0;
    };
    addDesign();
    {
        const Failing failing;
        const SweepCounter sweeps;
        EXPECT_FALSE(tool_->launch());
        EXPECT_EQ(console_.getLines(),
                  Lines{"error: Analyzing aborted [something strange...] (Tool, launch, 495)"});
        EXPECT_EQ(sweeps.getLive(), 0U);
        EXPECT_EQ(failing.told, 3); // the first one twice, and the second
    }
    analyzer->clearResults();
    expectCompletes();
}

// An adjuster of an exception is code of the host, called from within a sweep.
TEST_F(LaunchFaults, InAnAdjuster) {
    addDesign();
    auto* exception = Pelko::MPath::create({{a_.clock}, {b_.check}}, 1);
    exception->setAdjuster([](const Pelko::Subdomain&, bool) -> Delay { fail(); });
    const SweepCounter sweeps;
    EXPECT_FALSE(tool_->launch());
    EXPECT_EQ(console_.getLines(),
              Lines{"error: Analyzing aborted [something strange...] (Tool, launch, 495)"});
    EXPECT_EQ(sweeps.getLive(), 0U);
    EXPECT_EQ(Support::marked(), Names{});
}

// A database that contradicts itself.
TEST_F(LaunchFaults, FaultsOfPhases) {
    addDesign();
    struct Row {
        const char* what;
        std::function<void()> breakIt, mendIt;
        std::string line;
    };
    Pelko::Subdomain* stray = design_.addSubdomain(nullptr, nullptr, none, none);
    const Row rows[] = {
        {"launch pole without clock mode", [this] { a_.clock->setClockMode(none); },
         [this] { a_.clock->setClockMode(rising); },
         "error: a/C has not clock mode! (Tool, createDomains, 2065)"},
        {"latch pole without clock mode", [this] { b_.clock->setClockMode(none); },
         [this] { b_.clock->setClockMode(rising); },
         "error: b/C has not clock mode! (Tool, createDomains, 2025)"},
        {"end point that is no port", [&] { stray->captureLatch(a_.output); },
         [] { analyzer->getDomain(nullptr, nullptr)->destroy(); },
         "error: Not an output pole (Sweep, arrivalAnalyze, 1280)"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        row.breakIt();
        EXPECT_FALSE(tool_->launch());
        EXPECT_EQ(console_.getLines(), Lines{row.line});
        EXPECT_EQ(Support::marked(), Names{});
        console_.clear();
        row.mendIt();
    }
    expectCompletes();
}

// An aborted walk leaves its loop state until the next reset.
TEST_F(LaunchFaults, LoopStateUntilTheNextReset) {
    addDesign();
    a_.clock->setClockMode(none);
    EXPECT_FALSE(tool_->launch());
    Support::expectThrown({"still open",
                           [this] { tool_->loopOpen(); },
                           typeid(Ruvex::InvalidRequest),
                           "Already opened",
                           {"Tool", "loopOpen", 525}});
    a_.clock->setClockMode(rising);
    expectCompletes();
}

// In debug mode the domain phase indents the console; an abort leaves the indentation.
TEST_F(LaunchFaults, IndentationAfterAnAbortedDomainPhase) {
    addDesign();
    const Support::DebugMode debug(true);
    analyzer->setVerbose(true);
    const auto saboteur = failWhenCreated<Pelko::Domain>(1);
    EXPECT_FALSE(tool_->launch());
    EXPECT_EQ(console_.getTimelessLines(),
              (Lines{"Analyzing project with VORLEN-4.0 [exhaustive mode]", "  Creating domains",
                     "    error: Analyzing aborted [something strange...] (Tool, launch, 495)",
                     "    Analyzing project not completed in %"}));
    EXPECT_EQ(Ruvex::console.getIndentation(), 1U);
}

} // namespace
