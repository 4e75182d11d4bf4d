// Ends of the process that do not come back: what is said, the status, and that no begun file stays.
#include "cli/Ending.h"

#include "cli/Output.h"
#include "readers/sdc/Reader.h"
#include "tests/support/Rows.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using testing::ExitedWithCode;

constexpr int badInput = 2;

class EndingDeathTest : public testing::Test {
protected:
    // Handles signals and has a file begun.
    template <class Act>
    void whileWriting(Act act) const {
        Cli::handleSignals();
        Cli::Output output(folder_.at("report.json"));
        output.stream() << "half" << std::flush;
        act();
    }
    bool isEmpty() const { return fs::is_empty(folder_.path()); }

private:
    Support::TemporaryFolder folder_;
};

void readScript(std::string_view script) {
    Design::RoutedDesign design;
    design.index();
    design.classify();
    Base::Diagnostics diagnostics;
    Base::Source source("x.sdc", script);
    Readers::Sdc::Reader(design, diagnostics, {.giveUp = Cli::endBadScript}).read(source);
}

TEST_F(EndingDeathTest, ofAScript) {
    EXPECT_EXIT(whileWriting([] { Cli::endBadScript("x.sdc:1: error: no more"); }), ExitedWithCode(badInput),
                testing::Eq("x.sdc:1: error: no more\n"));
    EXPECT_TRUE(isEmpty());
}

TEST_F(EndingDeathTest, ofAScriptThatNestsTooDeep) {
    struct Row {
        const char *script, *expected;
    };
    const Row rows[] = {
        {"set x 1\nregexp [string repeat ( 1000000] x",
         "x.sdc:2: error: the script is given up: it nests too deep\n"},
        {"set x {}\nfor {set i 0} {$i < 1000000} {incr i} { set x [list $x] }\n\nstring length $x",
         "x.sdc:4: error: the script is given up: it nests too deep\n"},
        {"catch {subst [string repeat {[} 1000000]}",
         "x.sdc:1: error: the script is given up: it nests too deep\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Support::rowOf(rows, row));
        EXPECT_EXIT(whileWriting([&] { readScript(row.script); }), ExitedWithCode(badInput),
                    testing::Eq(row.expected))
            << row.script;
        EXPECT_TRUE(isEmpty());
    }
}

// As ever; with the sanitizers that is their own report and status.
bool diedOfFault(int status) {
    constexpr int sanitizersStatus = 1;
    return WIFSIGNALED(status) ? WTERMSIG(status) == SIGSEGV : WEXITSTATUS(status) == sanitizersStatus;
}

void touchWhatIsNotThere() {
    const auto size = static_cast<std::size_t>(getpagesize());
    void* const page = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    *static_cast<volatile char*>(page) = 'x';
}

TEST_F(EndingDeathTest, byFaultsOfTheProgram) {
    EXPECT_EXIT(whileWriting([] { raise(SIGSEGV); }), diedOfFault, "");
    EXPECT_TRUE(isEmpty());
    EXPECT_EXIT(whileWriting(touchWhatIsNotThere), diedOfFault, "");
    EXPECT_TRUE(isEmpty());
    EXPECT_EXIT(whileWriting([] { std::abort(); }), testing::KilledBySignal(SIGABRT), testing::Eq(""));
    EXPECT_TRUE(isEmpty());
}

TEST_F(EndingDeathTest, aStatusThatStands) {
    using Cli::conclude;
    const auto raiseIn = [](int signal) { return [signal] { raise(signal); }; };
    for (const int signal : {SIGINT, SIGTERM, SIGPIPE}) {
        SCOPED_TRACE(signal);
        EXPECT_EXIT(whileWriting([&] { conclude(Cli::timingViolated, raiseIn(signal)); }), ExitedWithCode(1),
                    testing::Eq(""));
        const auto after = [&] {
            conclude(Cli::timingMet, [] {});
            raise(signal);
        };
        EXPECT_EXIT(whileWriting(after), ExitedWithCode(0), testing::Eq(""));
    }
    // What failed is not concluded.
    const auto fail = [] {
        try {
            conclude(Cli::timingMet, [] { throw std::runtime_error("no"); });
        } catch (const std::runtime_error&) {
            raise(SIGINT);
        }
    };
    EXPECT_EXIT(whileWriting(fail), ExitedWithCode(130), testing::Eq("vorlen: interrupted\n"));
}

TEST_F(EndingDeathTest, bySignals) {
    EXPECT_EXIT(whileWriting([] { raise(SIGTERM); }), testing::KilledBySignal(SIGTERM), testing::Eq(""));
    EXPECT_TRUE(isEmpty());
    EXPECT_EXIT(whileWriting([] { raise(SIGINT); }), ExitedWithCode(130),
                testing::Eq("vorlen: interrupted\n"));
    EXPECT_TRUE(isEmpty());
}

} // namespace
