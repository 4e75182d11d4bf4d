// A run of the engine with something that throws at each step: the console, the listeners, the muting and
// what a stop request reaches are then as they were.
#include "analysis/EngineRun.h"

#include "Analyzed.h"
#include "base/Stopping.h"
#include "tests/support/Recorder.h"

#include "Pelko/Analyzer.h"
#include "Pelko/Domain.h"
#include "Vorlen/Sweep.h"

#include <gmock/gmock.h>

#include <sstream>

namespace {

using Analysis::EngineFailure;
using Analysis::EngineRun;
using Support::Analyzed;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using Message = Ruvex::Console::Message;

constexpr const char* clock = "create_clock -period 10 [get_ports clk]\n";

// Counts what it hears, and throws at the chosen object.
struct Listener : Pelko::ObjectListener, Pelko::SweepListener {
    enum At { nothing, domain, sweepCreated, sweepDestroyed };

    explicit Listener(At where = nothing) : at(where) {}
    void onCreated(Pelko::Object* object) override {
        ++heard;
        if ((at == domain && dynamic_cast<Pelko::Domain*>(object)) ||
            (at == sweepCreated && dynamic_cast<Vorlen::Sweep*>(object)))
            throw Ruvex::Exception("no room");
    }
    void onSweepDestroyed(Pelko::Object*) override {
        ++sweeps;
        wasGoingOn = EngineRun::isGoingOn();
        if (at == sweepDestroyed)
            throw std::runtime_error("a listener of ours");
    }

    const At at;
    int heard = 0, sweeps = 0;
    bool wasGoingOn = false;
};

class EngineRunTest : public testing::Test {
protected:
    EngineRunTest() : design_(Support::threeRegisters(), clock) {
        design_.analyzed().model.host().getAnalyzer()->setVerbose(true);
        Ruvex::console.setOutput(&output_);
        Ruvex::console.setRecorder([this](const Message& message) { recorded_.push_back(message.text); });
        Ruvex::console.setIndentation(3);
        Pelko::Analyzer::_muted = muted;
    }
    ~EngineRunTest() override {
        Ruvex::console = Ruvex::Console();
        Pelko::Analyzer::_muted = false;
    }

    // That all is as it was, and that another run completes.
    void expectPutBack(Listener& listener) {
        EXPECT_FALSE(EngineRun::isGoingOn());
        EXPECT_EQ(Pelko::Analyzer::_muted, muted);
        EXPECT_EQ(Pelko::Tool::getTool("Analyzing"), nullptr);
        EXPECT_EQ(Ruvex::console.getIndentation(), 3U);
        recorded_.clear();
        output_.str("");
        Ruvex::console.print("after", "");
        EXPECT_THAT(recorded_, ElementsAre("after"));
        EXPECT_EQ(output_.str(), "      after\n");

        const int heard = listener.heard, sweeps = listener.sweeps;
        while (!Pelko::analyzer->getDomains().isEmpty())
            (*Pelko::analyzer->getDomains().begin())->destroy();
        Pelko::analyzer->clearResults();
        EXPECT_NO_THROW(EngineRun(design_.application(), false).launch());
        EXPECT_EQ(listener.heard, heard);
        EXPECT_EQ(listener.sweeps, sweeps);
    }
    std::string output() const { return output_.str(); }

    static constexpr bool muted = true;
    Analyzed design_;
    std::vector<std::string> recorded_;

private:
    std::ostringstream output_;
};

TEST_F(EngineRunTest, ALaunchThatCompletes) {
    Listener listener;
    std::vector<std::string> heard;
    {
        EngineRun run(design_.application(), true, [&](const Message& message) {
            EXPECT_TRUE(EngineRun::isGoingOn());
            EXPECT_FALSE(Pelko::Analyzer::_muted);
            heard.push_back(message.text);
        });
        EXPECT_FALSE(EngineRun::isGoingOn());
        run.launch(listener);
        EXPECT_FALSE(EngineRun::isGoingOn());
    }
    EXPECT_TRUE(listener.wasGoingOn);
    EXPECT_EQ(listener.sweeps, 1);
    ASSERT_FALSE(heard.empty());
    EXPECT_THAT(heard.front(), StartsWith("Analyzing project with"));
    EXPECT_TRUE(recorded_.empty());
    EXPECT_EQ(output(), "");
    expectPutBack(listener);
}

// The tool of another run: the second one is refused before it hears anything.
TEST_F(EngineRunTest, ATwinIsRefused) {
    Listener listener;
    {
        EngineRun first(design_.application(), false);
        EXPECT_THROW(EngineRun(design_.application(), true), Ruvex::FactoryFailed);
        EXPECT_TRUE(Pelko::Analyzer::_muted);
        EXPECT_NO_THROW(first.launch(listener));
    }
    EXPECT_EQ(listener.sweeps, 1);
    expectPutBack(listener);
}

TEST_F(EngineRunTest, AListenerThatThrowsEndsTheLaunchWithItsReason) {
    struct Row {
        Listener::At at;
        const char* reason;
        bool isOwn; // of the framework's exceptions, which keep their message
    };
    const Row rows[] = {
        {Listener::domain, "no room", true},
        {Listener::sweepCreated, "no room", true},
        {Listener::sweepDestroyed, "", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.at);
        Listener listener(row.at);
        try {
            EngineRun(design_.application(), false).launch(listener);
            ADD_FAILURE() << "completed";
        } catch (const EngineFailure& failure) {
            ASSERT_EQ(failure.errors().size(), 1U);
            EXPECT_EQ(failure.what(), "the analysis was given up: " + failure.errors().front());
            if (row.isOwn) {
                EXPECT_EQ(failure.errors().front(), row.reason);
            }
        }
        EXPECT_GT(listener.heard, 0);
        expectPutBack(listener);
    }
}

// The exception itself comes out, not the engine's words for it: from within the phases, and from the first
// message, which the engine prints before it guards anything.
TEST_F(EngineRunTest, AnExceptionOfTheHearerPasses) {
    for (const int count : {0, 1}) {
        SCOPED_TRACE(count);
        Listener listener;
        int calls = 0;
        const auto launch = [&] {
            EngineRun(design_.application(), true, [&](const Message&) {
                if (calls++ == count)
                    throw std::range_error("no terminal");
            }).launch(listener);
        };
        EXPECT_THAT(launch, testing::ThrowsMessage<std::range_error>("no terminal"));
        EXPECT_EQ(calls, count + 1);
        expectPutBack(listener);
    }
}

// Errors are those of one launch.
TEST_F(EngineRunTest, ALaunchAfterOneThatFailed) {
    Listener failing(Listener::sweepCreated), listener;
    EngineRun run(design_.application(), false);
    EXPECT_THROW(run.launch(failing), EngineFailure);
    try {
        run.launch(failing);
        ADD_FAILURE() << "completed";
    } catch (const EngineFailure& failure) {
        EXPECT_EQ(failure.errors().size(), 1U);
    }
    EXPECT_NO_THROW(run.launch(listener));
    EXPECT_EQ(failing.sweeps, 2); // one of each launch, which is destroyed on the way out
}

// In a process of its own, since a stop cannot be taken back.
TEST_F(EngineRunTest, AStopIsNoFailure) {
    const auto stopped = [&] {
        design_.application().setBatch(false);
        struct Stopping : Listener {
            void onCreated(Pelko::Object* object) override {
                if (dynamic_cast<Pelko::Domain*>(object) && !Analysis::requestStop())
                    std::exit(1);
            }
        } listener;
        try {
            EngineRun(design_.application(), false).launch(listener);
        } catch (const Base::Interrupted&) {
            std::exit(Analysis::requestStop() ? 2 : 3);
        }
        std::exit(4);
    };
    EXPECT_EXIT(stopped(), testing::ExitedWithCode(3), "");
}

TEST(EngineFailure, WithoutAnError) {
    EXPECT_STREQ(EngineFailure({}).what(), "the analysis was given up: no reason was reported");
    const EngineFailure failure({"first", "last"});
    EXPECT_STREQ(failure.what(), "the analysis was given up: last");
    EXPECT_THAT(failure.errors(), ElementsAre("first", "last"));
}

} // namespace
